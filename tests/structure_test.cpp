// Who may include whom, as the diagram in ARCHITECTURE.md shows it.
#include "host/file.h"

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

/// What each folder with code may include, as docs/rooms.dot draws it.
class Rooms
{
public:
    Rooms()
    {
        static const std::regex arrow{R"rx(^ *"([a-z/]+)" -> "([a-z/]+)"(?: \[(.*)\])?$)rx"};
        std::ifstream file{fs::path{build::sourceDirectory} / "docs" / "rooms.dot"};
        std::smatch match;
        for (std::string line; std::getline(file, line);)
            if (std::regex_match(line, match, arrow))
            {
                const bool alone = match[3].str().starts_with("style = dashed");
                (alone ? ownOnly : withAllBelow)[match[1]].insert(match[2]);
                folders.insert({match[1], match[2]});
                arrows.insert(match[1].str() + "->" + match[2].str());
            }
    }

    Folders allowedFor(const std::string& folder) const
    {
        Folders allowed;
        addBelow(folder, allowed);
        if (const auto found = ownOnly.find(folder); found != ownOnly.end())
            allowed.insert(found->second.begin(), found->second.end());
        return allowed;
    }

    /// The folder that a path within the project, or below src/, lies in.
    std::string folderOf(std::string path) const
    {
        const std::string first = path.substr(0, path.find('/'));
        if (folders.contains("src/" + first))
            return "src/" + first;
        while (!path.empty() && !folders.contains(path))
            path.resize(path.rfind('/') == std::string::npos ? 0 : path.rfind('/'));
        return path;
    }

    Folders folders;
    Folders arrows; ///< "A->B"

private:
    void addBelow(const std::string& folder, Folders& allowed) const
    {
        if (!allowed.insert(folder).second)
            return;
        if (const auto found = withAllBelow.find(folder); found != withAllBelow.end())
            for (const std::string& below : found->second)
                addBelow(below, allowed);
    }

    std::map<std::string, Folders> withAllBelow;
    std::map<std::string, Folders> ownOnly;
};

TEST(Structure, EveryFolderIncludesOnlyWhatTheDiagramAllows)
{
    const Rooms rooms;
    std::set<std::string> seen;
    for (const std::string& room : rooms.folders)
        for (const Include& include : includesUnder(room))
        {
            const std::string folder = rooms.folderOf(include.file);
            seen.insert(folder);
            // Headers beside a file, and those that the build makes, are named without a folder.
            if (!include.angled && include.name.find('/') != std::string::npos)
                EXPECT_TRUE(rooms.allowedFor(folder).contains(rooms.folderOf(include.name)))
                    << include.file << " includes " << include.name;
        }
    EXPECT_EQ(seen, rooms.folders) << "drawn, but without code";
}

TEST(Structure, TheDiagramShowsEveryFolderWithCode)
{
    const Rooms rooms;
    const fs::path root = build::sourceDirectory;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root))
    {
        const std::string path = fs::relative(entry.path(), root);
        // Peers are programs of their own; machines keep what they build where version control does not look.
        if (path.starts_with("out") || path.starts_with(".") || path.starts_with("bench/peers"))
            continue;
        if (entry.path().extension() == ".cpp")
            EXPECT_TRUE(rooms.folders.contains(rooms.folderOf(path))) << path;
    }
}

TEST(Structure, ThePictureOfTheDiagramIsUpToDate)
{
    static const std::regex edge{
        "<g id=\"edge\\d+\" class=\"edge\">\\s*<title>([a-z/]+)&#45;&gt;([a-z/]+)</title>"};
    const std::string picture = standin::readText(std::string(build::sourceDirectory) + "/docs/rooms.svg");
    Folders drawn;
    for (std::sregex_iterator match{picture.begin(), picture.end(), edge}; match != std::sregex_iterator();
         ++match)
        drawn.insert((*match)[1].str() + "->" + (*match)[2].str());
    EXPECT_EQ(drawn, Rooms().arrows) << "docs/rooms.dot tells how to make it";
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

TEST(Structure, ThePlugInUsesNoSystemHeaders)
{
    static const std::regex freestanding{R"((stdint|stddef|limits|float|cpuid|[a-z0-9]+intrin)\.h)"};
    for (const Include& include : includesUnder("src"))
        EXPECT_TRUE(!include.angled || std::regex_match(include.name, freestanding))
            << include.file << " includes " << include.name;
}

} // namespace
