#include "tests/support/small_files.h"

#include <elf.h>

#include <algorithm>

Bytes smallBundle()
{
    namespace places = smallBundlePlaces;
    constexpr std::uint32_t segmentSize = 124;
    constexpr std::uint32_t symbolsSize = 24;
    constexpr std::uint32_t linkSize = 48;
    constexpr std::uint32_t textsSize = places::end - places::texts;
    constexpr std::uint32_t memorySize = 0x1000;

    Bytes file;
    file.words({0xFEEDFACE, 7, 3, 8, 3, segmentSize + symbolsSize + linkSize, 0});
    file.words({1, segmentSize}).text("__DATA").zeros(10);
    file.words({0, memorySize, 0, places::end, 7, 3, 1, 0});
    file.text("__mod_init_func").zeros(1).text("__DATA").zeros(10);
    file.words({0x200, 4, 0x200, 2, 0, 0, 9, 0, 0});
    file.words({2, symbolsSize, places::symbols, 2, places::texts, textsSize});
    file.words({0x80000022, linkSize, places::rebase, 8, places::bind, 24, 0, 0, 0, 0, places::exports, 32});
    file.bytes({0x11, 0x20, 0x80, 0x04, 0x52, 0, 0, 0});
    file.bytes({0x11, 0x40}).text("_malloc").bytes({0, 0x51, 0x70, 0x90, 0x04, 0x90, 0});
    file.fillTo(places::exports);
    file.bytes({0, 1}).text("_REALPluginMain").bytes({0, 19, 3, 0, 0x80, 0x02, 0});
    file.fillTo(places::symbols);
    file.words({1}).bytes({0x0F, 1, 0, 0}).words({0x100});
    file.words({17}).bytes({0x0F, 1, 0, 0}).words({places::variable});
    file.zeros(1).text("_REALPluginMain").zeros(1).text("_qvrLaneLimit").zeros(1);
    return file.fillTo(places::end);
}

Bytes smallSharedObject()
{
    constexpr std::uint32_t segmentsAt = sizeof(Elf32_Ehdr);
    constexpr std::uint32_t sectionsAt = segmentsAt + 2 * sizeof(Elf32_Phdr);
    constexpr std::uint32_t symbolsAt = sectionsAt + 4 * sizeof(Elf32_Shdr);
    constexpr std::uint32_t textsAt = symbolsAt + 2 * sizeof(Elf32_Sym);
    constexpr std::uint32_t textSize = 48;
    constexpr std::uint32_t dataAt = textsAt + textSize;

    Elf32_Ehdr header{};
    std::copy_n(ELFMAG, SELFMAG, header.e_ident);
    header.e_ident[EI_CLASS] = ELFCLASS32;
    header.e_type = ET_DYN;
    header.e_machine = EM_386;
    header.e_phoff = segmentsAt;
    header.e_phentsize = sizeof(Elf32_Phdr);
    header.e_phnum = 2;
    header.e_shoff = sectionsAt;
    header.e_shentsize = sizeof(Elf32_Shdr);
    header.e_shnum = 4;
    header.e_shstrndx = 2;
    Bytes file;
    file.put(header);
    file.put(Elf32_Phdr{PT_LOAD, 0, 0, 0, dataAt + 64, dataAt + 128, PF_R | PF_W, 0x1000});
    file.put(Elf32_Phdr{PT_GNU_RELRO, 0, 0, 0, 16, 16, PF_R, 1});
    file.put(Elf32_Shdr{});
    file.put(Elf32_Shdr{1, SHT_SYMTAB, 0, 0, symbolsAt, 2 * sizeof(Elf32_Sym), 2, 0, 4, sizeof(Elf32_Sym)});
    file.put(Elf32_Shdr{1, SHT_STRTAB, 0, 0, textsAt, textSize, 0, 0, 1, 0});
    file.put(Elf32_Shdr{14, SHT_PROGBITS, SHF_ALLOC | SHF_WRITE, dataAt, dataAt, 64, 0, 0, 4, 0});
    file.put(Elf32_Sym{});
    file.put(Elf32_Sym{1, dataAt, 4, 0, 0, 3});
    file.zeros(1).text("qvrLaneLimit").zeros(1).text("__sancov_cntrs").zeros(1);
    return file.fillTo(dataAt).zeros(64);
}
