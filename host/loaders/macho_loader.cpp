#include "host/file.h"
#include "host/loaders/macho_image.h"
#include "host/loaders/plugin.h"
#include "host/loaders/plugin_file.h"

namespace standin
{

namespace
{

class MachOPlugin : public Plugin
{
public:
    explicit MachOPlugin(const std::string& path) : image({readFile(path), path})
    {
        for (const std::uintptr_t function : image.initialisers())
            reinterpret_cast<void (*)()>(function)();
    }

    EntryPoint entryPoint() const override
    {
        return reinterpret_cast<EntryPoint>(reinterpret_cast<std::uintptr_t>(image.entryPoint()));
    }

    void* symbol(std::string_view name) const override
    {
        return image.symbol(name);
    }

    std::vector<std::span<std::uint8_t>> variables() const override
    {
        return image.variables();
    }

private:
    MachOImage image;
};

} // namespace

std::unique_ptr<Plugin> loadMachO(const std::string& path)
{
    return std::make_unique<MachOPlugin>(machineCodeOf(path));
}

} // namespace standin
