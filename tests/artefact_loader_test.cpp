// What the system's loader demands of the bundle, beyond what the stand-in's own loader does: read anew from
// the file, by another reader.
#include "host/file.h"
#include "tests/support/artefact_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

constexpr std::uint32_t page = 4096;

/// The fields of a record of the file, by the names in the format's description.
struct Record
{
    std::map<std::string, std::string> fields;

    std::string text(const std::string& field) const
    {
        const auto found = fields.find(field);
        if (found == fields.end())
            throw std::runtime_error("no field " + field);
        return found->second;
    }
    std::uint32_t number(const std::string& field) const
    {
        return static_cast<std::uint32_t>(std::stoul(text(field), nullptr, 0));
    }
};

struct Range
{
    std::uint32_t begin = 0;
    std::uint32_t end = 0;

    bool contains(std::uint32_t place) const
    {
        return place >= begin && place < end;
    }
    bool contains(const Range& other) const
    {
        return other.begin >= begin && other.end <= end;
    }
};

Range rangeOf(const Record& record, const char* begin, const char* size)
{
    return {record.number(begin), record.number(begin) + record.number(size)};
}
Range memoryOf(const Record& segment)
{
    return rangeOf(segment, "vmaddr", "vmsize");
}
Range fileRangeOf(const Record& segment)
{
    return rangeOf(segment, "fileoff", "filesize");
}
Range sectionRangeOf(const Record& section)
{
    return rangeOf(section, "addr", "size");
}

/// A place that the loader writes to.
struct PatchedPlace
{
    std::string segment;
    std::string section;
    std::uint32_t address;
    std::string type;
};

/// The bundle's binary, as the loader goes through it.
class LoadersView : public testing::Test
{
protected:
    LoadersView()
    {
        Record* record = nullptr;
        for (const Row& row : wordsOf("llvm-objdump-14 --macho --private-headers " + path))
            if (row.size() > 6 && row.front() == "MH_MAGIC")
                commandsSize = static_cast<std::uint32_t>(std::stoul(row[6]));
            else if (row.size() > 1 && row[0] + row[1] == "Loadcommand")
                record = &commands.emplace_back();
            else if (row.size() == 1 && row[0] == "Section")
                record = &sections.emplace_back();
            else if (record != nullptr && row.size() > 1)
                record->fields.emplace(row[0], row[1]);
        for (const Record& command : commands)
            if (command.text("cmd") == "LC_SEGMENT")
                segments.push_back(command);
    }

    const Record& command(const std::string& type) const
    {
        for (const Record& command : commands)
            if (command.text("cmd") == type)
                return command;
        throw std::runtime_error("no load command " + type);
    }
    const Record& segment(const std::string& name) const
    {
        for (const Record& segment : segments)
            if (segment.text("segname") == name)
                return segment;
        throw std::runtime_error("no segment " + name);
    }
    /// The section at an address; null where there is none.
    const Record* sectionAt(std::uint32_t address) const
    {
        for (const Record& section : sections)
            if (sectionRangeOf(section).contains(address))
                return &section;
        return nullptr;
    }

    /// A table of places, and the name of each one's segment, section and type.
    std::vector<PatchedPlace> placesIn(const std::string& table) const
    {
        std::vector<PatchedPlace> places;
        for (const Row& row : wordsOf("llvm-objdump-14 --macho --" + table + " " + path))
            if (row.size() >= 4 && row.front().starts_with("__"))
                places.push_back(
                    {row[0], row[1], static_cast<std::uint32_t>(std::stoul(row[2], nullptr, 16)), row[3]});
        return places;
    }

    /// What the file has for a word of memory.
    std::uint32_t wordAt(std::uint32_t address) const
    {
        for (const Record& segment : segments)
            if (memoryOf(segment).contains(address))
            {
                std::uint32_t word = 0;
                const std::uint32_t offset = address - segment.number("vmaddr");
                if (offset + sizeof word <= segment.number("filesize"))
                    std::memcpy(&word, bytes.data() + segment.number("fileoff") + offset, sizeof word);
                return word;
            }
        throw std::runtime_error("no memory at " + std::to_string(address));
    }

    const std::string path = binaryOf(standin::Artefact::MacBundle);
    const std::vector<unsigned char> bytes = standin::readFile(path);
    std::uint32_t commandsSize = 0;
    std::vector<Record> commands;
    std::vector<Record> segments;
    std::vector<Record> sections;
};

// Segments are mapped one by one, in whole pages, at one distance from where they want to be; what overlapped
// would be mapped over. The tables for linking are looked for in the last one.
TEST_F(LoadersView, SegmentsArePagesOneAfterTheOther)
{
    ASSERT_EQ(segments.size(), 3U);
    Range memoryBefore;
    Range fileBefore;
    for (const Record& segment : segments)
    {
        SCOPED_TRACE(segment.text("segname"));
        const Range memory = memoryOf(segment);
        const Range file = fileRangeOf(segment);
        EXPECT_EQ(memory.begin % page, 0U);
        EXPECT_EQ(memory.end % page, 0U);
        EXPECT_EQ(file.begin % page, 0U);
        EXPECT_GE(memory.begin, memoryBefore.end);
        EXPECT_GE(file.begin, fileBefore.end);
        EXPECT_GT(memory.end, memory.begin);
        EXPECT_LE(file.end - file.begin, memory.end - memory.begin);
        memoryBefore = memory;
        fileBefore = file;
    }
    EXPECT_EQ(segments.back().text("segname"), "__LINKEDIT");
    EXPECT_EQ(fileBefore.end, bytes.size());
}

// The loader goes on reading the commands where it has mapped the first segment, and would take the code for
// commands if they reached into it.
TEST_F(LoadersView, CommandsLieInFrontOfTheCode)
{
    constexpr std::uint32_t headerSize = 28;
    const Record& text = segment("__TEXT");
    EXPECT_EQ(text.number("fileoff"), 0U);
    ASSERT_GT(commandsSize, 0U);
    EXPECT_LE(headerSize + commandsSize, text.number("filesize"));
    std::uint32_t size = 0;
    for (const Record& command : commands)
        size += command.number("cmdsize");
    EXPECT_EQ(size, commandsSize);
    for (const Record& section : sections)
        if (section.text("type") != "S_ZEROFILL")
            EXPECT_GE(section.number("offset"), headerSize + commandsSize) << section.text("sectname");
}

TEST_F(LoadersView, SectionsLieInTheirSegments)
{
    ASSERT_FALSE(sections.empty());
    for (const Record& section : sections)
    {
        SCOPED_TRACE(section.text("segname") + "," + section.text("sectname"));
        const Range memory = sectionRangeOf(section);
        const Record& home = segment(section.text("segname"));
        EXPECT_TRUE(memoryOf(home).contains(memory));
        for (const Record& other : sections)
            if (&other != &section)
                EXPECT_FALSE(sectionRangeOf(other).contains(memory.begin)) << other.text("sectname");
        if (section.text("type") != "S_ZEROFILL")
            EXPECT_EQ(section.number("offset") - home.number("fileoff"), memory.begin - memoryOf(home).begin);
    }
}

// Symbols are looked up in the middle part only, and imports bound by the last.
TEST_F(LoadersView, SymbolsAreLocalsThenExportsThenImports)
{
    const Record& parts = command("LC_DYSYMTAB");
    const std::uint32_t locals = parts.number("nlocalsym");
    const std::uint32_t exports = parts.number("nextdefsym");
    const std::uint32_t imports = parts.number("nundefsym");
    EXPECT_EQ(parts.number("ilocalsym"), 0U);
    EXPECT_EQ(parts.number("iextdefsym"), locals);
    EXPECT_EQ(parts.number("iundefsym"), locals + exports);
    EXPECT_EQ(command("LC_SYMTAB").number("nsyms"), locals + exports + imports);

    // Rows are "00001360 t name", or "U name", in the file's order.
    std::string kinds;
    for (const Row& row : wordsOf("llvm-nm-14 --no-sort " + path))
    {
        ASSERT_GE(row.size(), 2U);
        const char letter = row[row.size() - 2].front();
        kinds += letter == 'U' ? 'U' : letter >= 'a' ? 'l' : 'E';
    }
    EXPECT_EQ(kinds, std::string(locals, 'l') + std::string(exports, 'E') + std::string(imports, 'U'));
}

// The loader adds its distance to every place that it is told of, as often as it is told. It writes words,
// and makes no memory writable for that.
TEST_F(LoadersView, PatchedPlacesAreSingleWordsOfWritableSections)
{
    std::vector<PatchedPlace> places = placesIn("rebase");
    const std::vector<PatchedPlace> bound = placesIn("bind");
    ASSERT_FALSE(places.empty());
    ASSERT_FALSE(bound.empty());
    places.insert(places.end(), bound.begin(), bound.end());

    std::set<std::uint32_t> addresses;
    for (const PatchedPlace& place : places)
    {
        SCOPED_TRACE(place.segment + "," + place.section + " " + std::to_string(place.address));
        EXPECT_TRUE(addresses.insert(place.address).second);
        EXPECT_EQ(place.type, "pointer");
        EXPECT_EQ(place.address % 4, 0U);
        EXPECT_EQ(segment(place.segment).text("initprot"), "rw-");
        const Record* section = sectionAt(place.address);
        ASSERT_NE(section, nullptr);
        EXPECT_EQ(section->text("segname") + section->text("sectname"), place.segment + place.section);
        EXPECT_TRUE(sectionRangeOf(*section).contains({place.address, place.address + 4}));
    }
}

TEST_F(LoadersView, MovedPointersPointIntoSections)
{
    for (const PatchedPlace& place : placesIn("rebase"))
        EXPECT_NE(sectionAt(wordAt(place.address)), nullptr)
            << "the pointer at " << place.address << " is " << wordAt(place.address);
}

// A command that a loader does not know is passed over, unless it is marked as one that must be understood.
// Among these only the compressed linking information has that mark, and 10.6 introduced it.
TEST_F(LoadersView, NoCommandDemandsANewerLoader)
{
    const std::set<std::string> known{
        "LC_SEGMENT", "LC_DYLD_INFO_ONLY",     "LC_SYMTAB",         "LC_DYSYMTAB",        "LC_LOAD_DYLIB",
        "LC_UUID",    "LC_VERSION_MIN_MACOSX", "LC_SOURCE_VERSION", "LC_FUNCTION_STARTS", "LC_DATA_IN_CODE"};
    for (const Record& command : commands)
        EXPECT_TRUE(known.contains(command.text("cmd"))) << command.text("cmd");
}

// Relocations of the older kind, which are the only ones that code can have.
TEST_F(LoadersView, HasNoRelocationsBesideTheCompressedOnes)
{
    EXPECT_EQ(command("LC_DYSYMTAB").number("nextrel"), 0U);
    EXPECT_EQ(command("LC_DYSYMTAB").number("nlocrel"), 0U);
    for (const Record& section : sections)
        EXPECT_EQ(section.number("nreloc"), 0U) << section.text("sectname");
}

} // namespace
