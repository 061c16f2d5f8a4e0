// Who may include whom. The layers of the plug-in know only those below them, and nothing outside; the
// stand-in host knows the records it shares with the plug-in and nothing else of it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "build_info.h"

namespace
{

namespace fs = std::filesystem;

using Folders = std::set<std::string>;

struct Include
{
    std::string file; ///< relative to the source tree
    std::string name; ///< as written, without the brackets
    bool angled = false;

    std::string folder() const
    {
        return name.substr(0, name.find('/'));
    }
};

std::vector<Include> includesUnder(const fs::path& folder)
{
    static const std::regex directive{R"(^\s*#\s*(?:include|include_next|import)\s*([<"])([^>"]+)[>"])"};
    const fs::path root = build::sourceDirectory;
    std::vector<Include> includes;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root / folder))
    {
        const std::string extension = entry.path().extension();
        if (extension != ".h" && extension != ".cpp" && extension != ".inc")
            continue;
        std::ifstream file{entry.path()};
        std::smatch match;
        for (std::string line; std::getline(file, line);)
            if (std::regex_search(line, match, directive))
                includes.push_back({fs::relative(entry.path(), root), match[2], match[1] == "<"});
    }
    return includes;
}

/// The folders of src/ that each of them may include.
const std::map<std::string, Folders> layers{
    {"abi", {"abi"}},
    {"system", {"abi", "system"}},
    {"runtime", {"abi", "system", "runtime"}},
    {"editor", {"abi", "system", "runtime", "editor"}},
    {"operations", {"abi", "system", "runtime", "editor", "operations"}},
    {"globals", {"abi", "system", "runtime", "editor", "globals"}},
    {"filters", {"abi", "system", "runtime", "editor", "filters"}},
    {"frame", {"abi", "system", "runtime", "operations", "globals", "filters", "frame"}},
};

TEST(Structure, EveryLayerIncludesOnlyWhatLiesBelow)
{
    for (const auto& [layer, allowed] : layers)
        for (const Include& include : includesUnder(fs::path{"src"} / layer))
            EXPECT_TRUE(include.angled || allowed.contains(include.folder()))
                << include.file << " includes " << include.name;
}

/// The namespaces that a file opens, outermost first, each with its enclosing ones; `(anonymous)` has no
/// name.
std::set<std::string> namespacesIn(const fs::path& path)
{
    static const std::regex opening{R"(^namespace(?: ([\w:]+))?$)"};
    static const std::regex closing{R"(^\} // namespace(?: .*)?$)"};
    std::set<std::string> names;
    std::vector<std::string> enclosing{""};
    std::ifstream file{path};
    std::smatch match;
    for (std::string line; std::getline(file, line);)
        if (std::regex_match(line, match, opening))
        {
            const std::string name = match[1].matched ? match[1].str() : "(anonymous)";
            enclosing.push_back(enclosing.back().empty() ? name : enclosing.back() + "::" + name);
            names.insert(enclosing.back());
        }
        else if (std::regex_match(line, closing))
            enclosing.pop_back();
    return names;
}

// One translation unit: two files' local names would meet in an anonymous namespace that they share.
TEST(Structure, NoTwoFamiliesShareAnAnonymousNamespace)
{
    // Files that belong to another one's family.
    const std::map<std::string, std::string> families{
        {"frame/plugin_main", "frame/registration"},
        {"frame/record_adaptation", "frame/registration"},
        {"globals/sample_sums", "globals/waveform"},
        {"globals/wu_line", "globals/waveform"},
        {"operations/coloured_areas", "operations/colour_search"},
    };
    const fs::path source = fs::path{build::sourceDirectory} / "src";
    std::map<std::string, std::string> owners;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(source))
        if (entry.path().extension() == ".cpp")
        {
            const std::string file = fs::relative(entry.path(), source).replace_extension();
            const auto family = families.find(file);
            const std::string owner = family == families.end() ? file : family->second;
            for (const std::string& name : namespacesIn(entry.path()))
                if (name.ends_with("(anonymous)"))
                    EXPECT_EQ(owners.emplace(name, owner).first->second, owner) << name;
        }
    EXPECT_FALSE(owners.empty());
    EXPECT_FALSE(owners.contains("qvr::(anonymous)"));
}

TEST(Structure, EveryFolderOfThePlugInIsAKnownLayer)
{
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path{build::sourceDirectory} / "src"))
        EXPECT_TRUE(layers.contains(entry.path().filename())) << entry.path();
}

TEST(Structure, ThePlugInUsesNoSystemHeaders)
{
    static const std::regex freestanding{R"((stdint|stddef|limits|float|cpuid|[a-z0-9]+intrin)\.h)"};
    for (const Include& include : includesUnder("src"))
        EXPECT_TRUE(!include.angled || std::regex_match(include.name, freestanding))
            << include.file << " includes " << include.name;
}

TEST(Structure, TheStandInHostKnowsOnlyTheSharedRecordsOfThePlugIn)
{
    for (const Include& include : includesUnder("host"))
        EXPECT_TRUE(include.angled || Folders({"abi", "host"}).contains(include.folder()))
            << include.file << " includes " << include.name;
}

} // namespace
