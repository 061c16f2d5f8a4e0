#include "host/loaders/elf_format.h"

#include "host/error.h"

#include <elf.h>

#include <algorithm>
#include <cstring>

namespace standin
{

ElfFile::ElfFile(std::vector<std::uint8_t> content, const std::string& path) : image(std::move(content))
{
    Elf32_Ehdr header;
    if (!read(header, 0) || std::memcmp(image.data(), ELFMAG, SELFMAG) != 0)
        throw Error(path + ": no ELF shared object");
    if (header.e_ident[EI_CLASS] != ELFCLASS32 || header.e_machine != EM_386)
        throw Error(path + ": built for another processor; a 32-bit x86 shared object is needed");
    if (header.e_type != ET_DYN)
        throw Error(path + ": no shared object");
    // The linker reads no sections, but their headers are the last that a file has.
    if (header.e_shoff + std::uint64_t{header.e_shnum} * sizeof(Elf32_Shdr) > image.size())
        throw Error(path + ": truncated");
    forEachSegment([&](bool inside, const Elf32_Phdr& segment) {
        if (!inside ||
            (segment.p_type == PT_LOAD && std::uint64_t{segment.p_offset} + segment.p_filesz > image.size()))
            throw Error(path + ": truncated");
    });
}

template <class Record>
bool ElfFile::read(Record& record, std::uint64_t offset) const
{
    if (offset + sizeof record > image.size())
        return false;
    std::memcpy(&record, image.data() + offset, sizeof record);
    return true;
}

/// Calls `visit(inside, segment)`; a segment whose header is not inside the file is empty.
template <class Visit>
void ElfFile::forEachSegment(Visit visit) const
{
    Elf32_Ehdr header{};
    read(header, 0);
    for (unsigned index = 0; index < header.e_phnum; ++index)
    {
        Elf32_Phdr segment{};
        const bool inside = read(segment, header.e_phoff + std::uint64_t{index} * sizeof segment);
        visit(inside, segment);
    }
}

/// Calls `visit(header, section)` for the sections that are there.
template <class Visit>
void ElfFile::forEachSection(Visit visit) const
{
    Elf32_Ehdr header{};
    read(header, 0);
    Elf32_Shdr section{};
    for (unsigned index = 0; index < header.e_shnum; ++index)
        if (read(section, header.e_shoff + std::uint64_t{index} * sizeof section))
            visit(header, section);
}

std::string ElfFile::text(std::uint64_t offset) const
{
    constexpr std::uint64_t longest = 1000;
    const std::uint64_t end = std::min<std::uint64_t>(image.size(), offset + longest);
    std::string result;
    for (; offset < end && image[static_cast<std::size_t>(offset)] != 0; ++offset)
        result += static_cast<char>(image[static_cast<std::size_t>(offset)]);
    return result;
}

bool ElfFile::textStarts(std::uint64_t offset, std::string_view start) const
{
    return offset + start.size() <= image.size() &&
           std::memcmp(image.data() + offset, start.data(), start.size()) == 0;
}

bool ElfFile::textIs(std::uint64_t offset, std::string_view text) const
{
    return offset + text.size() < image.size() && textStarts(offset, text) &&
           image[static_cast<std::size_t>(offset + text.size())] == 0;
}

template <class Visit>
void ElfFile::forEachSymbol(std::uint32_t tableType, Visit visit) const
{
    bool searched = false;
    forEachSection([&](const Elf32_Ehdr& header, const Elf32_Shdr& table) {
        Elf32_Shdr names{};
        // A file has one such table only.
        if (searched || table.sh_type != tableType ||
            !read(names, header.e_shoff + std::uint64_t{table.sh_link} * sizeof names))
            return;
        searched = true;
        Elf32_Sym symbol{};
        for (std::uint64_t at = 0; at + sizeof symbol <= table.sh_size && read(symbol, table.sh_offset + at);
             at += sizeof symbol)
            visit(symbol, std::uint64_t{names.sh_offset});
    });
}

std::uint32_t ElfFile::symbolAddress(std::string_view name) const
{
    std::uint32_t found = 0;
    forEachSymbol(SHT_SYMTAB, [&](const Elf32_Sym& symbol, std::uint64_t names) {
        if (found == 0 && textIs(names + symbol.st_name, name))
            found = symbol.st_value;
    });
    return found;
}

std::vector<std::string> ElfFile::exports() const
{
    std::vector<std::string> exported;
    forEachSymbol(SHT_DYNSYM, [&](const Elf32_Sym& symbol, std::uint64_t names) {
        if (symbol.st_shndx != SHN_UNDEF && ELF32_ST_BIND(symbol.st_info) != STB_LOCAL)
            exported.push_back(text(names + symbol.st_name));
    });
    return exported;
}

std::vector<std::string> ElfFile::imports() const
{
    std::vector<std::string> imported;
    forEachSymbol(SHT_DYNSYM, [&](const Elf32_Sym& symbol, std::uint64_t names) {
        // Weak ones may stay without an address.
        if (symbol.st_shndx == SHN_UNDEF && ELF32_ST_BIND(symbol.st_info) == STB_GLOBAL)
            imported.push_back(text(names + symbol.st_name));
    });
    return imported;
}

std::vector<ElfFile::Range> ElfFile::variables() const
{
    constexpr std::string_view ofInstruments[] = {"__sancov_", "__llvm_prf_"};
    constexpr std::uint32_t wanted = SHF_ALLOC | SHF_WRITE;

    std::uint64_t constantEnd = 0;
    forEachSegment([&](bool, const Elf32_Phdr& segment) {
        if (segment.p_type == PT_GNU_RELRO)
            constantEnd = std::uint64_t{segment.p_vaddr} + segment.p_memsz;
    });
    std::vector<Range> ranges;
    forEachSection([&](const Elf32_Ehdr& header, const Elf32_Shdr& section) {
        Elf32_Shdr names{};
        if ((section.sh_flags & wanted) != wanted || section.sh_addr < constantEnd ||
            !read(names, header.e_shoff + std::uint64_t{header.e_shstrndx} * sizeof names))
            return;
        const std::uint64_t name = std::uint64_t{names.sh_offset} + section.sh_name;
        if (std::none_of(std::begin(ofInstruments), std::end(ofInstruments),
                         [&](std::string_view start) { return textStarts(name, start); }))
            ranges.push_back({section.sh_addr, section.sh_size});
    });
    return ranges;
}

} // namespace standin
