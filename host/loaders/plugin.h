#pragma once

#include "abi/host_abi.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{

/// A loaded copy of the plug-in; unloaded by the destructor.
class Plugin
{
public:
    using EntryPoint = void (*)(REALresolver);

    virtual ~Plugin() = default;
    virtual EntryPoint entryPoint() const = 0;
    /// Where a symbol of the file lies now, by its C name; null when the file's symbol table lacks it.
    virtual void* symbol(std::string_view name) const = 0;
    /// Where its variables lie.
    virtual std::vector<std::span<std::uint8_t>> variables() const = 0;
};

/// What a plug-in's variables held at one moment.
class Snapshot
{
public:
    explicit Snapshot(const Plugin& plugin);
    /// Gives them those values again, while the plug-in is loaded.
    void restore() const;

private:
    struct Part
    {
        std::span<std::uint8_t> place;
        std::unique_ptr<std::uint8_t[]> bytes;
    };

    std::vector<Part> parts;
};

/// The address of a function or variable of the system that the plug-in may import, by its C name; null when
/// there is none.
void* findImport(std::string_view name);

/// The host's own "malloc", "calloc" or "free", which count; null for other names. Both loaders put them in
/// the place of the C library's.
void* findReplacement(std::string_view name);

/// Maps an i386 Mach-O bundle. Throws Error when the file is none or damaged, or imports what `findImport`
/// lacks.
std::unique_ptr<Plugin> loadMachO(const std::string& path);

/// Loads an i386 ELF shared object: a copy of its own, whatever else the process has loaded. Throws Error
/// likewise.
std::unique_ptr<Plugin> loadElf(const std::string& path);

} // namespace standin
