// Who may include whom. The layers of the plug-in know only those below them, and nothing outside but the
// platform's few C declarations; the stand-in host knows the records it shares with the plug-in and nothing
// else of it.
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
    {"frame", {"abi", "frame", "platform"}},
    {"editor", {"abi", "frame", "editor", "platform"}},
    {"operations", {"abi", "frame", "editor", "operations", "platform"}},
    {"globals", {"abi", "frame", "editor", "globals", "platform"}},
    {"filters", {"abi", "frame", "editor", "filters", "platform"}},
};

/// The registration tables name every handler, so this file alone looks up at the layers above them.
bool isRegistration(const std::string& file)
{
    return file == "src/frame/registration.cpp";
}

class Layer : public testing::TestWithParam<std::string>
{
};

TEST_P(Layer, IncludesOnlyWhatLiesBelow)
{
    for (const Include& include : includesUnder(fs::path{"src"} / GetParam()))
    {
        if (include.angled)
            continue;
        const bool names = isRegistration(include.file) && layers.contains(include.folder());
        EXPECT_TRUE(names || layers.at(GetParam()).contains(include.folder()))
            << include.file << " includes " << include.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Structure, Layer,
                         testing::Values("abi", "frame", "editor", "operations", "globals", "filters"),
                         [](const auto& info) { return info.param; });

TEST(Structure, EveryFolderOfThePlugInIsAKnownLayer)
{
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path{build::sourceDirectory} / "src"))
        EXPECT_TRUE(layers.contains(entry.path().filename())) << entry.path();
}

TEST(Structure, ThePlugInUsesNoSystemHeaders)
{
    static const std::regex freestanding{R"((stdint|stddef|limits|float|cpuid|[a-z0-9]+intrin)\.h)"};
    for (const char* folder : {"src", "platform"})
        for (const Include& include : includesUnder(folder))
            EXPECT_TRUE(!include.angled || std::regex_match(include.name, freestanding))
                << include.file << " includes " << include.name;
}

TEST(Structure, ThePlatformKnowsOnlyTheSharedRecords)
{
    for (const Include& include : includesUnder("platform"))
        EXPECT_TRUE(include.angled || Folders({"abi", "platform"}).contains(include.folder()))
            << include.file << " includes " << include.name;
}

TEST(Structure, TheStandInHostKnowsOnlyTheSharedRecordsOfThePlugIn)
{
    const Folders ofThePlugIn{"src", "platform", "frame", "editor", "operations", "globals", "filters"};
    for (const Include& include : includesUnder("host"))
        EXPECT_FALSE(!include.angled && ofThePlugIn.contains(include.folder()))
            << include.file << " includes " << include.name;
}

} // namespace
