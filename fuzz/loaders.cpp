// Files that claim to be a plug-in. A bundle is read, mapped and linked by the host's own code, up to where
// its code would run; of a shared object the host reads what it needs before and after the system's linker.
#include "fuzz/expect.h"
#include "host/error.h"
#include "host/loaders/elf_format.h"
#include "host/loaders/macho_image.h"

namespace
{

constexpr const char* variable = "qvrLaneLimit";

void readSharedObject(std::vector<std::uint8_t> content)
{
    const standin::ElfFile file(std::move(content), "plugin.so");
    file.symbolAddress(variable);
    file.exports();
    file.imports();
    file.variables();
}

void readBundle(std::vector<std::uint8_t> content)
{
    standin::MachOFile({content, "plugin"}).exports();
    const standin::MachOImage image({std::move(content), "plugin"});
    fuzz::expect(image.entryPoint() != nullptr, "an image without an entry point");
    image.initialisers();
    image.variables();
    image.symbol(variable);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try
    {
        const std::vector<std::uint8_t> content(data, data + size);
        if (size != 0 && data[0] == 0x7F)
            readSharedObject(content);
        else
            readBundle(content);
    }
    catch (const standin::Error&)
    {
        // That is how a file is refused.
    }
    return 0;
}
