#include "host/error.h"
#include "host/file.h"
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
class File
{
public:
    explicit File(int fileDescriptor) : descriptor(fileDescriptor)
    {
    }
    ~File()
    {
        if (descriptor >= 0)
            close(descriptor);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int number() const
    {
        return descriptor;
    }

private:
    int descriptor;
};

/// Refuses what the dynamic linker would refuse with less words, or crash on.
void checkElf(const std::vector<unsigned char>& bytes, const std::string& path)
{
    Elf32_Ehdr header;
    if (bytes.size() < sizeof header || std::memcmp(bytes.data(), ELFMAG, SELFMAG) != 0)
        throw Error(path + ": no ELF shared object");
    std::memcpy(&header, bytes.data(), sizeof header);
    if (header.e_ident[EI_CLASS] != ELFCLASS32 || header.e_machine != EM_386)
        throw Error(path + ": built for another processor; a 32-bit x86 shared object is needed");
    if (header.e_type != ET_DYN)
        throw Error(path + ": no shared object");
    for (unsigned index = 0; index < header.e_phnum; ++index)
    {
        Elf32_Phdr segment;
        const std::uint64_t offset = header.e_phoff + std::uint64_t{index} * sizeof segment;
        if (offset + sizeof segment > bytes.size())
            throw Error(path + ": truncated");
        std::memcpy(&segment, bytes.data() + offset, sizeof segment);
        if (segment.p_type == PT_LOAD && std::uint64_t{segment.p_offset} + segment.p_filesz > bytes.size())
            throw Error(path + ": truncated");
    }
}

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

/// The offset from the load address of a symbol, those included that are not exported; 0 when there is none.
Elf32_Addr symbolOffset(const std::vector<unsigned char>& bytes, std::string_view name)
{
    const auto read = [&bytes](auto& record, std::uint64_t offset) {
        const bool inside = offset + sizeof record <= bytes.size();
        if (inside)
            std::memcpy(&record, bytes.data() + offset, sizeof record);
        return inside;
    };
    Elf32_Ehdr header{};
    read(header, 0);
    for (unsigned index = 0; index < header.e_shnum; ++index)
    {
        Elf32_Shdr table{};
        Elf32_Shdr names{};
        if (!read(table, header.e_shoff + std::uint64_t{index} * sizeof table) ||
            table.sh_type != SHT_SYMTAB ||
            !read(names, header.e_shoff + std::uint64_t{table.sh_link} * sizeof names))
            continue;
        Elf32_Sym symbol{};
        for (std::uint64_t at = 0; at + sizeof symbol <= table.sh_size && read(symbol, table.sh_offset + at);
             at += sizeof symbol)
        {
            const std::size_t text = names.sh_offset + symbol.st_name;
            if (text + name.size() < bytes.size() && bytes[text + name.size()] == 0 &&
                std::memcmp(bytes.data() + text, name.data(), name.size()) == 0)
                return symbol.st_value;
        }
    }
    return 0;
}

class ElfPlugin : public Plugin
{
public:
    explicit ElfPlugin(const std::string& path)
        : copy(memfd_create("PictureQVR", MFD_CLOEXEC)),
          bytes(readFile(path))
    {
        checkElf(bytes, path);
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
        const Elf32_Addr offset = symbolOffset(bytes, name);
        return offset == 0 ? nullptr : reinterpret_cast<void*>(base + offset);
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
    File copy;
    std::vector<unsigned char> bytes;
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
