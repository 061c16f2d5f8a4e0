// What the two artefacts look like from outside: what they export, what they ask of the system, and that the
// bundle has nothing which its linker cannot relocate.
#include "tests/support/artefact_file.h"

#include <gtest/gtest.h>
#include <rapidxml/rapidxml.hpp>
#include <rapidxml/rapidxml_utils.hpp>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "build_info.h"

namespace
{

using Names = std::set<std::string>;

const std::string bundle = build::bundle;
const std::string bundleBinary = binaryOf(standin::Artefact::MacBundle);
const std::string sharedObject = build::sharedObject;

const Names systemFunctions{
    "malloc",
    "calloc",
    "free",
    "memcpy",
    "memset",
    "strlen",
    "CFBundleCreate",
    "CFBundleLoadExecutable",
    "CFRelease",
    "CFBundleGetFunctionPointerForName",
    "FSFindFolder",
    "CFURLCreateFromFSRef",
    "CFURLCreateCopyAppendingPathComponent",
    "__CFConstantStringClassReference",
};

/// Names of a Mach-O table that `llvm-objdump` prints with the segment in the first column and the name in
/// the last.
Names namesInTable(const std::string& option)
{
    Names names;
    for (const Row& row : wordsOf("llvm-objdump-14 --macho " + option + " " + bundleBinary))
        if (row.size() > 2 && row.front().starts_with("__"))
            names.insert(row.back());
    return names;
}

/// Values that `llvm-readobj` prints for `key`, as in "Name: __text".
Names valuesOf(const std::string& key, const std::string& option, const std::string& file)
{
    Names values;
    for (const Row& row : wordsOf("llvm-readobj-14 " + option + " " + file))
        if (row.size() > 1 && row.front() == key + ":")
            values.insert(row[1]);
    return values;
}

/// Mach-O names carry one more underscore than C names.
Names withUnderscore(const Names& names)
{
    Names result;
    for (const std::string& name : names)
        result.insert("_" + name);
    return result;
}

TEST(Bundle, IsA32BitIntelBundleFor10_6)
{
    EXPECT_EQ(valuesOf("Arch", "--file-header", bundleBinary), Names{"i386"});
    EXPECT_EQ(valuesOf("FileType", "--file-header", bundleBinary), Names{"Bundle"});
    EXPECT_EQ(valuesOf("Version", "--macho-version-min", bundleBinary), Names{"10.6"});
}

TEST(Bundle, ExportsOnlyItsEntryPoint)
{
    Names exported;
    for (const Row& row : wordsOf("llvm-objdump-14 --macho --exports-trie " + bundleBinary))
        if (row.size() == 2 && row.front().starts_with("0x"))
            exported.insert(row.back());
    EXPECT_EQ(exported, Names{"_REALPluginMain"});
}

TEST(Bundle, ImportsOnlyDeclaredSystemFunctions)
{
    const Names allowed = withUnderscore(systemFunctions);
    const Names imported = namesInTable("--bind");
    EXPECT_TRUE(imported.contains("_malloc"));
    for (const std::string& name : imported)
        EXPECT_TRUE(allowed.contains(name)) << name;
    EXPECT_EQ(namesInTable("--lazy-bind"), Names{});
    EXPECT_EQ(namesInTable("--weak-bind"), Names{});
}

TEST(Bundle, HasNothingItsLinkerCannotRelocate)
{
    const Names sections = valuesOf("Name", "--sections", bundleBinary);
    EXPECT_TRUE(sections.contains("__text"));
    EXPECT_FALSE(sections.contains("__stubs"));
    EXPECT_FALSE(sections.contains("__pointers"));
    const Names segments = valuesOf("Name", "--macho-segment", bundleBinary);
    EXPECT_TRUE(segments.contains("__TEXT"));
    EXPECT_FALSE(segments.contains("__IMPORT"));
}

TEST(Bundle, NeedsNoStartUpCode)
{
    EXPECT_FALSE(valuesOf("Name", "--sections", bundleBinary).contains("__mod_init_func"));
}

TEST(Bundle, PropertyListNamesThePlugInAndItsVersion)
{
    rapidxml::file<> text{(bundle + "/Contents/Info.plist").c_str()};
    rapidxml::xml_document<> document;
    document.parse<rapidxml::parse_validate_closing_tags>(text.data());
    const rapidxml::xml_node<>* plist = document.first_node("plist");
    ASSERT_NE(plist, nullptr);
    const rapidxml::xml_node<>* dictionary = plist->first_node("dict");
    ASSERT_NE(dictionary, nullptr);

    std::map<std::string, std::string> entries;
    for (auto* key = dictionary->first_node("key"); key != nullptr; key = key->next_sibling("key"))
    {
        const rapidxml::xml_node<>* value = key->next_sibling();
        ASSERT_NE(value, nullptr) << key->value();
        entries[key->value()] = value->value();
    }
    EXPECT_EQ(entries["CFBundleExecutable"], "PictureQVR");
    EXPECT_EQ(entries["CFBundleName"], "PictureQVR");
    EXPECT_EQ(entries["CFBundlePackageType"], "BNDL");
    EXPECT_EQ(entries["CFBundleShortVersionString"], build::version);
    EXPECT_EQ(entries["CFBundleVersion"], build::version);
    EXPECT_EQ(entries["LSMinimumSystemVersion"], "10.6");
    EXPECT_NE(entries["CFBundleIdentifier"], "");
}

/// Dynamic symbols of the shared object without their version, by the letter that `nm` gives them.
std::map<std::string, Names> dynamicSymbols()
{
    std::map<std::string, Names> symbols;
    for (const Row& row : wordsOf("llvm-nm-14 --dynamic --format=posix " + sharedObject))
        if (row.size() >= 2)
            symbols[row[1]].insert(row[0].substr(0, row[0].find('@')));
    return symbols;
}

TEST(SharedObject, IsA32BitIntelLibrary)
{
    EXPECT_EQ(valuesOf("Arch", "--file-header", sharedObject), Names{"i386"});
    EXPECT_EQ(valuesOf("Type", "--file-header", sharedObject), Names{"SharedObject"});
}

TEST(SharedObject, ExportsOnlyItsEntryPointAndImportsOnlyDeclaredSystemFunctions)
{
    const Names cLibrary{"malloc", "calloc", "free", "memcpy", "memset", "strlen"};
    Names system = systemFunctions;
    for (const std::string& name : cLibrary)
        system.erase(name);

    const std::map<std::string, Names> expected{
        {"T", {"REALPluginMain"}},
        {"U", cLibrary},
        {"w", system}, // weak: a process without them loads the plug-in all the same
    };
    EXPECT_EQ(dynamicSymbols(), expected);
}

TEST(SharedObject, NeedsNoStartUpCodeAndNoWritableText)
{
    Names tags;
    for (const Row& row : wordsOf("llvm-readelf-14 --dynamic-table " + sharedObject))
        if (row.size() > 1 && row.front().starts_with("0x"))
            tags.insert(row[1]);
    EXPECT_TRUE(tags.contains("(SYMTAB)"));
    for (const char* unwanted : {"(INIT)", "(INIT_ARRAY)", "(FINI)", "(FINI_ARRAY)", "(TEXTREL)"})
        EXPECT_FALSE(tags.contains(unwanted)) << unwanted;
}

} // namespace
