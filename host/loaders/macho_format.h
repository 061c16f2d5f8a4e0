/// \file
/// The parts of the Mach-O format that an i386 bundle has. Everything is read with its limits checked: a
/// damaged file throws Error, whatever is damaged.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{

/// The bytes of a file, in little-endian order as in memory.
class MachOBytes
{
public:
    MachOBytes(std::vector<std::uint8_t> content, std::string filePath);

    template <class Record>
    Record read(std::uint64_t offset) const
    {
        Record record;
        copy(&record, offset, sizeof record);
        return record;
    }
    const std::uint8_t* range(std::uint64_t offset, std::uint64_t size) const;
    /// Whether a text with a zero behind it stands there.
    bool textIs(std::uint64_t offset, std::string_view wanted) const;
    std::size_t size() const
    {
        return bytes.size();
    }
    /// The text there, up to its zero.
    std::string text(std::uint64_t offset) const;
    /// Throws an Error about this file.
    [[noreturn]] void fail(const std::string& what) const;

private:
    void copy(void* target, std::uint64_t offset, std::size_t size) const;

    std::vector<std::uint8_t> bytes;
    std::string path;
};

/// A part of the file that is mapped. Addresses are those that the file was linked for.
struct MachOSegment
{
    std::uint32_t address = 0;
    std::uint32_t memorySize = 0;
    std::uint32_t fileOffset = 0;
    std::uint32_t fileSize = 0;
    bool writable = false;
    bool executable = false;
};

/// A bundle, taken apart.
class MachOFile
{
public:
    static constexpr std::uint32_t wordSize = 4;

    using BindVisitor =
        std::function<void(std::uint32_t address, const std::string& symbol, std::uint32_t addend)>;

    explicit MachOFile(MachOBytes content);

    const MachOBytes& bytes() const
    {
        return image;
    }
    const std::vector<MachOSegment>& segments() const
    {
        return segmentList;
    }
    /// The lowest address, and the bytes from there to the end of the last segment.
    std::uint32_t lowestAddress() const
    {
        return lowest;
    }
    std::uint32_t memorySize() const
    {
        return extent;
    }

    /// Visits every word that holds an address.
    void forEachRebase(const std::function<void(std::uint32_t address)>& visit) const;
    /// Visits every word that is to hold the address of `symbol`, plus `addend`.
    void forEachBind(const BindVisitor& visit) const;
    /// Where the words lie that hold addresses of functions to run first.
    std::vector<std::uint32_t> initialiserAddresses() const;

    /// The names of the symbols that the file offers to others.
    std::vector<std::string> exports() const;
    /// Address of an exported symbol, of any symbol; 0 when there is none.
    std::uint32_t exportedAddress(std::string_view name) const;
    std::uint32_t symbolAddress(std::string_view name) const;

private:
    /// A range of the file.
    struct Part
    {
        std::uint32_t offset = 0;
        std::uint32_t size = 0;
    };
    struct WordRange
    {
        std::uint32_t address = 0;
        std::uint32_t size = 0;
    };
    struct SymbolTable
    {
        std::uint32_t symbols = 0;
        std::uint32_t symbolCount = 0;
        std::uint32_t strings = 0;
        std::uint32_t stringsSize = 0;
    };
    struct LinkInfo
    {
        Part rebase, bind, weakBind, lazyBind, exports;
    };
    class Stream;
    class Places;

    void readHeader();
    void readCommand(std::uint32_t type, std::uint64_t offset);
    void readSegment(std::uint64_t offset);
    void measure();
    std::uint32_t segmentAddress(std::uint8_t index) const;
    void bindPart(Part part, const BindVisitor& visit) const;

    MachOBytes image;
    std::vector<MachOSegment> segmentList;
    std::vector<WordRange> initialisers;
    SymbolTable symbolTable;
    LinkInfo linkInfo;
    std::uint32_t lowest = 0;
    std::uint32_t extent = 0;
};

} // namespace standin
