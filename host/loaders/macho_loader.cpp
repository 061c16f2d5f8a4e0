#include "host/error.h"
#include "host/file.h"
#include "host/loaders/plugin.h"
#include "host/objects/guarded_block.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <limits>

namespace standin
{

namespace
{

// The parts of the Mach-O format that an i386 bundle has; all numbers are little-endian.

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

struct SymbolTableCommand
{
    Command command;
    std::uint32_t symbols, symbolCount, strings, stringsSize;
};

struct Symbol
{
    std::uint32_t name;
    std::uint8_t type, section;
    std::uint16_t description;
    std::uint32_t value;
};

struct Part
{
    std::uint32_t offset, size;
};

struct DyldInfoCommand
{
    Command command;
    Part rebase, bind, weakBind, lazyBind, exports;
};

/// The bytes of the file; every access is checked.
class Image
{
public:
    Image(std::vector<unsigned char> content, std::string filePath)
        : bytes(std::move(content)),
          path(std::move(filePath))
    {
    }

    template <class Record>
    Record read(std::uint64_t offset) const
    {
        Record record;
        std::memcpy(&record, range(offset, sizeof record), sizeof record);
        return record;
    }

    const unsigned char* range(std::uint64_t offset, std::uint64_t size) const
    {
        if (offset + size > bytes.size())
            fail("truncated");
        return bytes.data() + offset;
    }

    std::string_view text(std::uint64_t offset) const
    {
        const unsigned char* begin = range(offset, 0);
        const unsigned char* end = std::find(begin, bytes.data() + bytes.size(), '\0');
        if (end == bytes.data() + bytes.size())
            fail("damaged: a name does not end");
        return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin)};
    }

    std::size_t size() const
    {
        return bytes.size();
    }
    [[noreturn]] void fail(const std::string& what) const
    {
        throw Error(path + ": " + what);
    }

private:
    std::vector<unsigned char> bytes;
    std::string path;
};

/// Reads opcodes and numbers of variable length out of a part of the file.
class Stream
{
public:
    Stream(const Image& source, Part part)
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

    const Image& image;
    const unsigned char* next;
    const unsigned char* end;
};

class MachOPlugin : public Plugin
{
public:
    explicit MachOPlugin(const std::string& path) : image(readFile(path), path)
    {
        readHeader();
        map();
        if (hasDyldInfo)
        {
            rebase();
            bind(dyldInfo.bind);
            bind(dyldInfo.weakBind);
            bind(dyldInfo.lazyBind);
        }
        entry = findEntryPoint();
        protect();
        runInitialisers();
    }

    EntryPoint entryPoint() const override
    {
        return entry;
    }

    void* symbol(std::string_view name) const override
    {
        const std::uint32_t address = symbolAddress("_" + std::string(name));
        return address == 0 ? nullptr : at(address, wordSize);
    }

private:
    struct Unmap
    {
        std::size_t size = 0;
        void operator()(std::uint8_t* mapped) const
        {
            munmap(mapped, size);
        }
    };

    static constexpr std::string_view entryName = "_REALPluginMain";

    void readHeader()
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
            readCommand(command, offset);
            offset += command.size;
        }
        if (segments.empty())
            image.fail("damaged: it has no segments");
    }

    void readCommand(Command command, std::uint64_t offset)
    {
        switch (command.type)
        {
        case commandSegment:
        {
            const auto segment = image.read<SegmentCommand>(offset);
            if (segment.fileSize > segment.memorySize)
                image.fail("damaged: a segment is larger in the file than in memory");
            image.range(segment.fileOffset, segment.fileSize);
            segments.push_back(segment);
            for (std::uint32_t index = 0; index < segment.sectionCount; ++index)
                sections.push_back(image.read<Section>(offset + sizeof segment + index * sizeof(Section)));
            break;
        }
        case commandSymbolTable:
            symbolTable = image.read<SymbolTableCommand>(offset);
            break;
        case commandDyldInfo:
        case commandDyldInfoOnly:
            dyldInfo = image.read<DyldInfoCommand>(offset);
            hasDyldInfo = true;
            break;
        default:
            break;
        }
    }

    void map()
    {
        constexpr std::uint64_t largestImage = 0x20000000;
        std::uint64_t begin = std::numeric_limits<std::uint32_t>::max();
        std::uint64_t end = 0;
        for (const SegmentCommand& segment : segments)
        {
            begin = std::min<std::uint64_t>(begin, segment.address);
            end = std::max<std::uint64_t>(end, std::uint64_t{segment.address} + segment.memorySize);
        }
        if (end <= begin || end - begin > largestImage)
            image.fail("damaged: its segments make no sense");
        memorySize = static_cast<std::size_t>(end - begin);
        lowest = static_cast<std::uint32_t>(begin);
        void* mapped = mmap(nullptr, memorySize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED)
            image.fail("no memory to load it");
        memory = {static_cast<std::uint8_t*>(mapped), Unmap{memorySize}};
        for (const SegmentCommand& segment : segments)
            std::memcpy(at(segment.address, segment.fileSize),
                        image.range(segment.fileOffset, segment.fileSize), segment.fileSize);
    }

    /// Where an address of the file lies now.
    std::uint8_t* at(std::uint32_t address, std::uint32_t size) const
    {
        const std::uint32_t offset = address - lowest;
        if (std::uint64_t{offset} + size > memorySize)
            image.fail("damaged: an address lies outside of its segments");
        return memory.get() + offset;
    }

    std::uint32_t word(std::uint32_t address) const
    {
        std::uint32_t value = 0;
        std::memcpy(&value, at(address, sizeof value), sizeof value);
        return value;
    }

    void setWord(std::uint32_t address, std::uint32_t value) const
    {
        std::memcpy(at(address, sizeof value), &value, sizeof value);
    }

    std::uint32_t slide() const
    {
        return reinterpret_cast<std::uintptr_t>(memory.get()) - lowest;
    }

    std::uint32_t segmentAddress(std::uint8_t index) const
    {
        if (index >= segments.size())
            image.fail("damaged: its linking instructions name a segment that is not there");
        return segments[index].address;
    }

    void checkCount(std::uint32_t count) const
    {
        if (count > memorySize / wordSize)
            image.fail("damaged: its linking instructions name more places than there are");
    }

    void rebase() const
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
        std::uint32_t address = 0;
        const auto rebaseMany = [&](std::uint32_t count, std::uint32_t step) {
            checkCount(count);
            for (; count > 0; --count, address += step)
                setWord(address, word(address) + slide());
        };
        Stream stream(image, dyldInfo.rebase);
        while (!stream.atEnd())
        {
            const std::uint8_t opcode = stream.byte();
            const std::uint8_t immediate = opcode & immediateMask;
            switch (opcode & opcodeMask)
            {
            case done:
                return;
            case setType:
                break;
            case setSegmentAndOffset:
                address = segmentAddress(immediate) + stream.unsignedNumber();
                break;
            case addAddress:
                address += stream.unsignedNumber();
                break;
            case addAddressScaled:
                address += immediate * wordSize;
                break;
            case rebaseImmediateTimes:
                rebaseMany(immediate, wordSize);
                break;
            case rebaseTimes:
                rebaseMany(stream.unsignedNumber(), wordSize);
                break;
            case rebaseAndAdd:
                rebaseMany(1, wordSize + stream.unsignedNumber());
                break;
            case rebaseTimesSkipping:
            {
                const std::uint32_t count = stream.unsignedNumber();
                rebaseMany(count, wordSize + stream.unsignedNumber());
                break;
            }
            default:
                image.fail("damaged: an unknown rebase instruction");
            }
        }
    }

    void bind(Part part) const
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
        std::uint32_t address = 0;
        std::uint32_t addend = 0;
        std::string symbol;
        const auto bindMany = [&](std::uint32_t count, std::uint32_t step) {
            checkCount(count);
            for (; count > 0; --count, address += step)
                setWord(address, importAddress(symbol) + addend);
        };
        Stream stream(image, part);
        while (!stream.atEnd())
        {
            const std::uint8_t opcode = stream.byte();
            const std::uint8_t immediate = opcode & immediateMask;
            switch (opcode & opcodeMask)
            {
            case done: // ends each symbol of the lazy part, and pads the others
            case setLibraryImmediate:
            case setLibrarySpecial:
            case setType:
                break;
            case setLibrary:
                stream.unsignedNumber();
                break;
            case setSymbol:
                symbol = stream.text();
                break;
            case setAddend:
                addend = stream.signedNumber();
                break;
            case setSegmentAndOffset:
                address = segmentAddress(immediate) + stream.unsignedNumber();
                break;
            case addAddress:
                address += stream.unsignedNumber();
                break;
            case doBind:
                bindMany(1, wordSize);
                break;
            case bindAndAdd:
                bindMany(1, wordSize + stream.unsignedNumber());
                break;
            case bindAndAddScaled:
                bindMany(1, wordSize + immediate * wordSize);
                break;
            case bindTimesSkipping:
            {
                const std::uint32_t count = stream.unsignedNumber();
                bindMany(count, wordSize + stream.unsignedNumber());
                break;
            }
            default:
                image.fail("damaged: an unknown bind instruction");
            }
        }
    }

    std::uint32_t importAddress(const std::string& symbol) const
    {
        // Symbols of C have an underscore in front; the binder's own helper has none.
        const bool isC = symbol.starts_with('_');
        const void* found = findImport(isC ? symbol.substr(1) : symbol);
        if (found == nullptr)
            image.fail("imports " + symbol + ", which does not exist here");
        return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(found));
    }

    EntryPoint findEntryPoint() const
    {
        std::uint32_t address = hasDyldInfo && dyldInfo.exports.size != 0 ? exportedAddress() : 0;
        if (address == 0)
            address = symbolAddress(entryName);
        if (address == 0)
            image.fail("exports no REALPluginMain");
        return reinterpret_cast<EntryPoint>(at(address, 1));
    }

    /// Walks down the trie of exported names; 0 when the entry point is not in it.
    std::uint32_t exportedAddress() const
    {
        const Part trie = dyldInfo.exports;
        std::string_view rest = entryName;
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

    std::uint32_t symbolAddress(std::string_view name) const
    {
        for (std::uint32_t index = 0; index < symbolTable.symbolCount; ++index)
        {
            const auto symbol =
                image.read<Symbol>(symbolTable.symbols + std::uint64_t{index} * sizeof(Symbol));
            if (symbol.section != 0 && image.text(std::uint64_t{symbolTable.strings} + symbol.name) == name)
                return symbol.value;
        }
        return 0;
    }

    void protect() const
    {
        for (const SegmentCommand& segment : segments)
        {
            const auto page = static_cast<std::uint32_t>(pageSize());
            const std::uint32_t size = (segment.memorySize + page - 1) / page * page;
            // Both systems number the rights read, write and execute alike, but for their order.
            const int rights = ((segment.protection & 1U) != 0 ? PROT_READ : 0) |
                               ((segment.protection & 2U) != 0 ? PROT_WRITE : 0) |
                               ((segment.protection & 4U) != 0 ? PROT_EXEC : 0);
            if (segment.memorySize != 0 && segment.address % page == 0 &&
                mprotect(at(segment.address, segment.memorySize), size, rights) != 0)
                image.fail("its segments cannot be protected");
        }
    }

    void runInitialisers() const
    {
        for (const Section& section : sections)
            if ((section.flags & sectionTypeMask) == sectionIsInitialisers)
                for (std::uint32_t offset = 0; offset + wordSize <= section.size; offset += wordSize)
                    reinterpret_cast<void (*)()>(word(section.address + offset))();
    }

    static constexpr std::uint32_t wordSize = 4;

    Image image;
    std::vector<SegmentCommand> segments;
    std::vector<Section> sections;
    SymbolTableCommand symbolTable{};
    DyldInfoCommand dyldInfo{};
    bool hasDyldInfo = false;
    std::size_t memorySize = 0;
    std::unique_ptr<std::uint8_t, Unmap> memory{nullptr, Unmap{}};
    std::uint32_t lowest = 0;
    EntryPoint entry = nullptr;
};

} // namespace

std::unique_ptr<Plugin> loadMachO(const std::string& path)
{
    const std::filesystem::path given(path);
    const bool isBundleFolder = std::filesystem::is_directory(given);
    return std::make_unique<MachOPlugin>(isBundleFolder ? (given / "Contents/MacOS" / given.stem()).string()
                                                        : path);
}

} // namespace standin
