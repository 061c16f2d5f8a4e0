#include "host/loaders/macho_format.h"

#include "host/error.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>

namespace standin
{

namespace
{

constexpr std::uint32_t machMagic = 0xFEEDFACE;
constexpr std::uint32_t machMagic64 = 0xFEEDFACF;
constexpr std::uint32_t fatMagicSwapped = 0xBEBAFECA;
constexpr std::uint32_t cpuI386 = 7;
constexpr std::uint32_t fileIsBundle = 8;

constexpr std::uint32_t commandSegment = 1;
constexpr std::uint32_t commandSymbolTable = 2;
constexpr std::uint32_t commandDyldInfo = 0x22;
constexpr std::uint32_t commandDyldInfoOnly = 0x80000022;

constexpr std::uint8_t opcodeMask = 0xF0;
constexpr std::uint8_t immediateMask = 0x0F;

constexpr std::uint32_t sectionTypeMask = 0xFF;
constexpr std::uint32_t sectionIsInitialisers = 9;

constexpr std::uint32_t mayWrite = 2;
constexpr std::uint32_t mayExecute = 4;

struct Header
{
    std::uint32_t magic, cpu, subtype, fileType, commandCount, commandsSize, flags;
};

struct Command
{
    std::uint32_t type, size;
};

struct SegmentCommand
{
    Command command;
    char name[16];
    std::uint32_t address, memorySize, fileOffset, fileSize, maximalProtection, protection, sectionCount,
        flags;
};

struct Section
{
    char name[16];
    char segment[16];
    std::uint32_t address, size, offset, alignment, relocations, relocationCount, flags, reserved[2];
};

struct Symbol
{
    std::uint32_t name;
    std::uint8_t type, section;
    std::uint16_t description;
    std::uint32_t value;
};

} // namespace

MachOBytes::MachOBytes(std::vector<std::uint8_t> content, std::string filePath)
    : bytes(std::move(content)),
      path(std::move(filePath))
{
}

const std::uint8_t* MachOBytes::range(std::uint64_t offset, std::uint64_t size) const
{
    if (offset + size > bytes.size())
        fail("truncated");
    return bytes.data() + offset;
}

bool MachOBytes::textIs(std::uint64_t offset, std::string_view wanted) const
{
    return offset + wanted.size() < bytes.size() &&
           std::equal(wanted.begin(), wanted.end(), range(offset, wanted.size())) &&
           *range(offset + wanted.size(), 1) == 0;
}

std::string MachOBytes::text(std::uint64_t offset) const
{
    constexpr std::size_t longest = 1000;
    std::string result;
    while (const std::uint8_t character = *range(offset++, 1))
    {
        result += static_cast<char>(character);
        if (result.size() > longest)
            fail("damaged: a name goes on for ever");
    }
    return result;
}

void MachOBytes::fail(const std::string& what) const
{
    throw Error(path + ": " + what);
}

void MachOBytes::copy(void* target, std::uint64_t offset, std::size_t size) const
{
    std::memcpy(target, range(offset, size), size);
}

/// Reads opcodes and numbers of variable length out of a part of the file.
class MachOFile::Stream
{
public:
    Stream(const MachOBytes& source, Part part)
        : image(source),
          next(source.range(part.offset, part.size)),
          end(next + part.size)
    {
    }

    bool atEnd() const
    {
        return next == end;
    }

    std::uint8_t byte()
    {
        if (atEnd())
            image.fail("damaged: its linking instructions break off");
        return *next++;
    }

    std::uint32_t unsignedNumber()
    {
        return static_cast<std::uint32_t>(number().value);
    }

    /// Addresses wrap, so a negative number is as good as the unsigned one of the same bits.
    std::uint32_t signedNumber()
    {
        Number read = number();
        if ((read.lastPiece & 0x40U) != 0 && read.bits < 64)
            read.value |= ~std::uint64_t{0} << read.bits;
        return static_cast<std::uint32_t>(read.value);
    }

    std::string text()
    {
        std::string result;
        while (const std::uint8_t character = byte())
            result += static_cast<char>(character);
        return result;
    }

    void skip(std::uint32_t count)
    {
        for (; count > 0; --count)
            byte();
    }

private:
    /// A number of variable length (LEB128), not yet extended to its sign.
    struct Number
    {
        std::uint64_t value = 0;
        unsigned bits = 0;
        std::uint8_t lastPiece = 0;
    };

    Number number()
    {
        Number read;
        do
        {
            read.lastPiece = byte();
            if (read.bits < 64)
                read.value |= static_cast<std::uint64_t>(read.lastPiece & 0x7FU) << read.bits;
            read.bits += 7;
        }
        while ((read.lastPiece & 0x80U) != 0);
        return read;
    }

    const MachOBytes& image;
    const unsigned char* next;
    const unsigned char* end;
};

MachOFile::MachOFile(MachOBytes content) : image(std::move(content))
{
    readHeader();
    measure();
}

void MachOFile::readHeader()
{
    if (image.size() < sizeof(std::uint32_t))
        image.fail("no Mach-O file");
    const auto magic = image.read<std::uint32_t>(0);
    if (magic == machMagic64)
        image.fail("a 64-bit Mach-O file; an i386 bundle is needed");
    if (magic == fatMagicSwapped)
        image.fail("a universal file; an i386 bundle of its own is needed");
    if (magic != machMagic)
        image.fail("no Mach-O file");
    const auto header = image.read<Header>(0);
    if (header.cpu != cpuI386)
        image.fail("built for another processor; an i386 bundle is needed");
    if (header.fileType != fileIsBundle)
        image.fail("no loadable bundle");

    std::uint64_t offset = sizeof header;
    for (std::uint32_t index = 0; index < header.commandCount; ++index)
    {
        const auto command = image.read<Command>(offset);
        if (command.size < sizeof command)
            image.fail("damaged: a load command is too short");
        image.range(offset, command.size);
        readCommand(command.type, offset);
        offset += command.size;
    }
    if (segmentList.empty())
        image.fail("damaged: it has no segments");
}

void MachOFile::readCommand(std::uint32_t type, std::uint64_t offset)
{
    switch (type)
    {
    case commandSegment:
        readSegment(offset);
        break;
    case commandSymbolTable:
        symbolTable = image.read<SymbolTable>(offset + sizeof(Command));
        break;
    case commandDyldInfo:
    case commandDyldInfoOnly:
        linkInfo = image.read<LinkInfo>(offset + sizeof(Command));
        break;
    default:
        break;
    }
}

void MachOFile::readSegment(std::uint64_t offset)
{
    const auto segment = image.read<SegmentCommand>(offset);
    if (segment.fileSize > segment.memorySize)
        image.fail("damaged: a segment is larger in the file than in memory");
    image.range(segment.fileOffset, segment.fileSize);
    segmentList.push_back({segment.address, segment.memorySize, segment.fileOffset, segment.fileSize,
                           (segment.protection & mayWrite) != 0, (segment.protection & mayExecute) != 0});
    for (std::uint32_t index = 0; index < segment.sectionCount; ++index)
    {
        const auto section = image.read<Section>(offset + sizeof segment + index * sizeof(Section));
        if ((section.flags & sectionTypeMask) == sectionIsInitialisers)
            initialisers.push_back({section.address, section.size});
    }
}

/// Finds out where the segments begin and end.
void MachOFile::measure()
{
    constexpr std::uint64_t largestImage = 0x20000000;
    std::uint64_t begin = std::numeric_limits<std::uint32_t>::max();
    std::uint64_t end = 0;
    for (const MachOSegment& segment : segmentList)
    {
        begin = std::min<std::uint64_t>(begin, segment.address);
        end = std::max<std::uint64_t>(end, std::uint64_t{segment.address} + segment.memorySize);
    }
    if (end <= begin || end - begin > largestImage)
        image.fail("damaged: its segments make no sense");
    lowest = static_cast<std::uint32_t>(begin);
    extent = static_cast<std::uint32_t>(end - begin);
    for (const WordRange& range : initialisers)
        if (range.address < begin || std::uint64_t{range.address} + range.size > end)
            image.fail("damaged: its initialisers lie outside of its segments");
}

std::uint32_t MachOFile::segmentAddress(std::uint8_t index) const
{
    if (index >= segmentList.size())
        image.fail("damaged: its linking instructions name a segment that is not there");
    return segmentList[index].address;
}

/// Runs through linking instructions: what both kinds of them say about the place of the next word.
class MachOFile::Places
{
public:
    struct Instruction
    {
        std::uint8_t opcode;
        std::uint8_t immediate;
    };

    Places(const MachOFile& bundle, Part part)
        : file(bundle),
          stream(bundle.image, part),
          placesLeft(bundle.image.size() / wordSize)
    {
    }

    /// Nothing at the end.
    std::optional<Instruction> next()
    {
        if (stream.atEnd())
            return std::nullopt;
        const std::uint8_t byte = stream.byte();
        return Instruction{static_cast<std::uint8_t>(byte & opcodeMask),
                           static_cast<std::uint8_t>(byte & immediateMask)};
    }

    // What follows an instruction.
    std::uint32_t number()
    {
        return stream.unsignedNumber();
    }
    std::uint32_t signedNumber()
    {
        return stream.signedNumber();
    }
    std::string text()
    {
        return stream.text();
    }

    void goTo(std::uint8_t segment)
    {
        address = file.segmentAddress(segment) + number();
    }
    void skip(std::uint32_t size)
    {
        address += size;
    }
    /// Visits so many words, and leaves `gap` bytes out behind each. A word is linked in one way, and is in
    /// the file: together there cannot be more of them.
    template <class Visit>
    void visit(std::uint32_t count, std::uint32_t gap, Visit visitWord)
    {
        if (count > placesLeft)
            file.image.fail("damaged: its linking instructions name more places than there are");
        placesLeft -= count;
        for (; count > 0; --count, address += wordSize + gap)
            visitWord(address);
    }
    template <class Visit>
    void visitWithGaps(Visit visitWord)
    {
        const std::uint32_t count = number();
        visit(count, number(), visitWord);
    }

private:
    const MachOFile& file;
    Stream stream;
    std::size_t placesLeft;
    std::uint32_t address = 0;
};

void MachOFile::forEachRebase(const std::function<void(std::uint32_t address)>& visit) const
{
    enum Opcode : std::uint8_t
    {
        done = 0x00,
        setType = 0x10,
        setSegmentAndOffset = 0x20,
        addAddress = 0x30,
        addAddressScaled = 0x40,
        rebaseImmediateTimes = 0x50,
        rebaseTimes = 0x60,
        rebaseAndAdd = 0x70,
        rebaseTimesSkipping = 0x80
    };
    Places places(*this, linkInfo.rebase);
    while (const auto instruction = places.next())
    {
        switch (instruction->opcode)
        {
        case done:
            return;
        case setType:
            break;
        case setSegmentAndOffset:
            places.goTo(instruction->immediate);
            break;
        case addAddress:
            places.skip(places.number());
            break;
        case addAddressScaled:
            places.skip(instruction->immediate * wordSize);
            break;
        case rebaseImmediateTimes:
            places.visit(instruction->immediate, 0, visit);
            break;
        case rebaseTimes:
            places.visit(places.number(), 0, visit);
            break;
        case rebaseAndAdd:
            places.visit(1, places.number(), visit);
            break;
        case rebaseTimesSkipping:
            places.visitWithGaps(visit);
            break;
        default:
            image.fail("damaged: an unknown rebase instruction");
        }
    }
}

void MachOFile::forEachBind(const BindVisitor& visit) const
{
    for (const Part part : {linkInfo.bind, linkInfo.weakBind, linkInfo.lazyBind})
        bindPart(part, visit);
}

void MachOFile::bindPart(Part part, const BindVisitor& visit) const
{
    enum Opcode : std::uint8_t
    {
        done = 0x00,
        setLibraryImmediate = 0x10,
        setLibrary = 0x20,
        setLibrarySpecial = 0x30,
        setSymbol = 0x40,
        setType = 0x50,
        setAddend = 0x60,
        setSegmentAndOffset = 0x70,
        addAddress = 0x80,
        doBind = 0x90,
        bindAndAdd = 0xA0,
        bindAndAddScaled = 0xB0,
        bindTimesSkipping = 0xC0
    };
    std::uint32_t addend = 0;
    std::string symbol;
    const auto bindTo = [&](std::uint32_t address) { visit(address, symbol, addend); };
    Places places(*this, part);
    while (const auto instruction = places.next())
    {
        switch (instruction->opcode)
        {
        case done: // ends each symbol of the lazy part, and pads the others
        case setLibraryImmediate:
        case setLibrarySpecial:
        case setType:
            break;
        case setLibrary:
            places.number();
            break;
        case setSymbol:
            symbol = places.text();
            break;
        case setAddend:
            addend = places.signedNumber();
            break;
        case setSegmentAndOffset:
            places.goTo(instruction->immediate);
            break;
        case addAddress:
            places.skip(places.number());
            break;
        case doBind:
            places.visit(1, 0, bindTo);
            break;
        case bindAndAdd:
            places.visit(1, places.number(), bindTo);
            break;
        case bindAndAddScaled:
            places.visit(1, instruction->immediate * wordSize, bindTo);
            break;
        case bindTimesSkipping:
            places.visitWithGaps(bindTo);
            break;
        default:
            image.fail("damaged: an unknown bind instruction");
        }
    }
}

std::vector<std::uint32_t> MachOFile::initialiserAddresses() const
{
    std::vector<std::uint32_t> addresses;
    for (const WordRange& range : initialisers)
        for (std::uint32_t offset = 0; offset + wordSize <= range.size; offset += wordSize)
            addresses.push_back(range.address + offset);
    return addresses;
}

/// Walks down the trie of exported names.
std::uint32_t MachOFile::exportedAddress(std::string_view name) const
{
    if (linkInfo.exports.size == 0)
        return 0;
    const Part trie = linkInfo.exports;
    std::string_view rest = name;
    std::uint32_t node = 0;
    // Each step takes at least one character, so a damaged trie cannot keep this going.
    for (;;)
    {
        if (node >= trie.size)
            image.fail("damaged: its table of exports leads nowhere");
        Stream stream(image, {trie.offset + node, trie.size - node});
        const std::uint32_t terminalSize = stream.unsignedNumber();
        if (rest.empty())
        {
            if (terminalSize == 0)
                return 0;
            stream.unsignedNumber(); // flags
            return lowest + stream.unsignedNumber();
        }
        stream.skip(terminalSize);
        bool descended = false;
        for (std::uint8_t children = stream.byte(); children > 0 && !descended; --children)
        {
            const std::string edge = stream.text();
            const std::uint32_t child = stream.unsignedNumber();
            if (!edge.empty() && rest.starts_with(edge))
            {
                rest.remove_prefix(edge.size());
                node = child;
                descended = true;
            }
        }
        if (!descended)
            return 0;
    }
}

std::vector<std::string> MachOFile::exports() const
{
    constexpr unsigned external = 0x01;
    constexpr unsigned hiddenOrDebugging = 0xF0;
    std::vector<std::string> names;
    for (std::uint32_t index = 0; index < symbolTable.symbolCount; ++index)
    {
        const auto symbol = image.read<Symbol>(symbolTable.symbols + std::uint64_t{index} * sizeof(Symbol));
        if (symbol.section != 0 && (symbol.type & (external | hiddenOrDebugging)) == external)
            names.push_back(image.text(std::uint64_t{symbolTable.strings} + symbol.name));
    }
    return names;
}

std::uint32_t MachOFile::symbolAddress(std::string_view name) const
{
    for (std::uint32_t index = 0; index < symbolTable.symbolCount; ++index)
    {
        const auto symbol = image.read<Symbol>(symbolTable.symbols + std::uint64_t{index} * sizeof(Symbol));
        if (symbol.section != 0 && image.textIs(std::uint64_t{symbolTable.strings} + symbol.name, name))
            return symbol.value;
    }
    return 0;
}

} // namespace standin
