#include "host/loaders/plugin_file.h"

#include "host/file.h"
#include "host/loaders/elf_format.h"
#include "host/loaders/macho_format.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

namespace standin
{

namespace
{

void sortOut(std::vector<std::string>& names)
{
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
}

/// Symbols of C have an underscore in front.
std::string cName(const std::string& symbol)
{
    return symbol.starts_with('_') ? symbol.substr(1) : symbol;
}

} // namespace

std::string machineCodeOf(const std::string& path)
{
    const std::filesystem::path given = std::filesystem::path(path) / "";
    if (!std::filesystem::is_directory(given))
        return path;
    const std::filesystem::path folder = given.parent_path();
    return folder / "Contents" / "MacOS" / std::filesystem::absolute(folder).lexically_normal().stem();
}

Artefact artefactOf(const std::string& path)
{
    std::array<char, 4> magic{};
    std::ifstream(path, std::ios::binary).read(magic.data(), magic.size());
    return magic == std::array{'\x7F', 'E', 'L', 'F'} ? Artefact::SharedObject : Artefact::MacBundle;
}

PluginFile readPluginFile(const std::string& path)
{
    PluginFile result;
    result.path = machineCodeOf(path);
    result.artefact = artefactOf(result.path);
    std::vector<std::uint8_t> bytes = readFile(result.path);
    result.size = bytes.size();
    if (result.artefact == Artefact::SharedObject)
    {
        const ElfFile file(std::move(bytes), result.path);
        result.exports = file.exports();
        result.imports = file.imports();
    }
    else
    {
        const MachOFile file({std::move(bytes), result.path});
        for (const std::string& name : file.exports())
            result.exports.push_back(cName(name));
        file.forEachBind([&](std::uint32_t, const std::string& name, std::uint32_t) {
            result.imports.push_back(cName(name));
        });
    }
    sortOut(result.exports);
    sortOut(result.imports);
    return result;
}

} // namespace standin
