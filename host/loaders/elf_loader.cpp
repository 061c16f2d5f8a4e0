#include "host/error.h"
#include "host/file.h"
#include "host/loaders/elf_format.h"
#include "host/loaders/plugin.h"
#include "host/objects/guarded_block.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

namespace standin
{

namespace
{

/// A file descriptor that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int fileDescriptor) : descriptor(fileDescriptor)
    {
    }
    ~Descriptor()
    {
        if (descriptor >= 0)
            close(descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const
    {
        return descriptor;
    }

private:
    int descriptor;
};

/// Puts the host's malloc, calloc and free into the places where the loaded object keeps the addresses of the
/// C library's.
class ImportPatch
{
public:
    explicit ImportPatch(const link_map& map) : base(map.l_addr)
    {
        for (const ElfW(Dyn)* item = map.l_ld; item->d_tag != DT_NULL; ++item)
            switch (item->d_tag)
            {
            case DT_SYMTAB:
                symbols = at<Elf32_Sym>(item->d_un.d_ptr);
                break;
            case DT_STRTAB:
                names = at<char>(item->d_un.d_ptr);
                break;
            case DT_REL:
                data.first = at<Elf32_Rel>(item->d_un.d_ptr);
                break;
            case DT_RELSZ:
                data.count = item->d_un.d_val / sizeof(Elf32_Rel);
                break;
            case DT_JMPREL:
                calls.first = at<Elf32_Rel>(item->d_un.d_ptr);
                break;
            case DT_PLTRELSZ:
                calls.count = item->d_un.d_val / sizeof(Elf32_Rel);
                break;
            default:
                break;
            }
    }

    void apply() const
    {
        apply(data);
        apply(calls);
    }

private:
    struct Relocations
    {
        const Elf32_Rel* first = nullptr;
        std::size_t count = 0;
    };

    /// The dynamic linker may have relocated the pointers of the dynamic section, or not.
    template <class Item>
    const Item* at(Elf32_Addr address) const
    {
        return reinterpret_cast<const Item*>(address < base ? address + base : address);
    }

    void apply(const Relocations& relocations) const
    {
        for (std::size_t index = 0; index < relocations.count; ++index)
        {
            const Elf32_Rel& relocation = relocations.first[index];
            const auto type = ELF32_R_TYPE(relocation.r_info);
            if (type != R_386_JMP_SLOT && type != R_386_GLOB_DAT && type != R_386_32)
                continue;
            void* replacement = findReplacement(names + symbols[ELF32_R_SYM(relocation.r_info)].st_name);
            if (replacement != nullptr)
                store(relocation.r_offset + base, replacement);
        }
    }

    static void store(Elf32_Addr address, void* value)
    {
        const Elf32_Addr page = address & ~static_cast<Elf32_Addr>(pageSize() - 1);
        const std::size_t size = address + sizeof value - page;
        // The page may be read-only since relocation ended, and stays writable: nothing depends on that.
        if (mprotect(reinterpret_cast<void*>(page), size, PROT_READ | PROT_WRITE) != 0)
            throw Error("the plug-in's table of imports cannot be changed");
        std::memcpy(reinterpret_cast<void*>(address), &value, sizeof value);
    }

    Elf32_Addr base;
    const Elf32_Sym* symbols = nullptr;
    const char* names = nullptr;
    Relocations data;
    Relocations calls;
};

class ElfPlugin : public Plugin
{
public:
    explicit ElfPlugin(const std::string& path)
        : copy(memfd_create("PictureQVR", MFD_CLOEXEC)),
          file(readFile(path), path)
    {
        const std::vector<std::uint8_t>& bytes = file.bytes();
        // The dynamic linker loads a file once only; a copy without name is a file of its own, with variables
        // of its own.
        if (copy.number() < 0 ||
            write(copy.number(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            throw Error(path + ": no memory for a copy");
        const std::string copyPath = "/proc/self/fd/" + std::to_string(copy.number());
        library.reset(dlopen(copyPath.c_str(), RTLD_NOW | RTLD_LOCAL));
        if (library == nullptr)
        {
            const char* reason = dlerror();
            throw Error(path + ": " + (reason == nullptr ? "cannot be loaded" : reason));
        }
        entry = reinterpret_cast<EntryPoint>(dlsym(library.get(), "REALPluginMain"));
        if (entry == nullptr)
            throw Error(path + ": exports no REALPluginMain");

        link_map* map = nullptr;
        if (dlinfo(library.get(), RTLD_DI_LINKMAP, &map) != 0)
            throw Error(path + ": its imports cannot be read");
        base = map->l_addr;
        ImportPatch(*map).apply();
    }

    EntryPoint entryPoint() const override
    {
        return entry;
    }

    void* symbol(std::string_view name) const override
    {
        const std::uint32_t address = file.symbolAddress(name);
        return address == 0 ? nullptr : reinterpret_cast<void*>(base + address);
    }

    std::vector<std::span<std::uint8_t>> variables() const override
    {
        std::vector<std::span<std::uint8_t>> places;
        for (const ElfFile::Range& range : file.variables())
            places.emplace_back(reinterpret_cast<std::uint8_t*>(base + range.address), range.size);
        return places;
    }

private:
    struct Close
    {
        void operator()(void* handle) const
        {
            dlclose(handle);
        }
    };

    /// Stays open as long as the library is loaded: the linker knows libraries by path, and the number is in
    /// it.
    Descriptor copy;
    ElfFile file;
    Elf32_Addr base = 0;
    std::unique_ptr<void, Close> library;
    EntryPoint entry = nullptr;
};

} // namespace

std::unique_ptr<Plugin> loadElf(const std::string& path)
{
    return std::make_unique<ElfPlugin>(path);
}

} // namespace standin
