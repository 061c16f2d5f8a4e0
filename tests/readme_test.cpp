// The first page that anybody reads says nothing that is not so.
#include "host/file.h"
#include "media/image.h"
#include "tests/support/program.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "build_info.h"

namespace
{

namespace fs = std::filesystem;

const fs::path project = build::sourceDirectory;

std::vector<std::string> linesOf(const fs::path& file)
{
    std::vector<std::string> lines;
    std::istringstream text{standin::readText(file)};
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

/// A command of the page, and what is shown below it.
struct Command
{
    std::string text;
    std::vector<std::string> output; ///< "..." stands for any lines
};

std::vector<Command> commandsIn(const fs::path& page)
{
    std::vector<Command> commands;
    bool inBlock = false;
    for (const std::string& line : linesOf(page))
        if (line.starts_with("```"))
            inBlock = !inBlock;
        else if (inBlock && line.starts_with("$ "))
            commands.push_back({line.substr(2), {}});
        else if (inBlock && !commands.empty())
            commands.back().output.push_back(line);
    return commands;
}

class Readme : public ProgramTest
{
};

ON_EVERY_ARTEFACT(Readme);

TEST_P(Readme, CommandsOfTheProgramDoWhatIsShown)
{
    const fs::path built = fs::path{build::sharedObject}.parent_path().parent_path();
    fs::create_directory_symlink(built, folder / "out");
    fs::copy("/usr/share/backgrounds/mate/nature/LadyBird.jpg", folder / "photo.jpg");
    fs::create_directory_symlink(project / "examples", folder / "examples");
    int ran = 0;
    for (const Command& command : commandsIn(project / "README.md"))
    {
        if (!command.text.starts_with("out/"))
            continue;
        const Outcome outcome = runInShell(command.text);
        EXPECT_EQ(outcome.code, success) << command.text << "\n" << outcome.errors;
        std::string shown;
        for (const std::string& line : command.output)
            shown += line + "\n";
        EXPECT_EQ(outcome.output, shown) << command.text;
        ++ran;
    }
    EXPECT_GE(ran, 4);
}

TEST_P(Readme, TheStripIsWhatThePlugInMakes)
{
    const Outcome outcome = run("run " + (project / "docs/strip.bas").string() +
                                " --file photo.jpg=/usr/share/backgrounds/mate/nature/LadyBird.jpg");
    ASSERT_EQ(outcome.code, success) << outcome.errors;
    const media::Image made = media::readImage(folder / "strip.png", 3);
    const media::Image kept = media::readImage(project / "docs/strip.png", 3);
    EXPECT_EQ(made.width, kept.width);
    EXPECT_EQ(made.height, kept.height);
    EXPECT_TRUE(made.bytes == kept.bytes) << "README.md tells how to make it anew";
}

TEST(ReadmePage, CommandsOfTheProjectExist)
{
    const std::string help = standin::readText(project / "dev");
    std::set<std::string> named;
    for (const std::string& line : linesOf(project / "README.md"))
    {
        static const std::regex call{R"(\./dev ([a-z]+))"};
        for (std::sregex_iterator match{line.begin(), line.end(), call}; match != std::sregex_iterator();
             ++match)
            named.insert((*match)[1]);
    }
    EXPECT_TRUE(named.contains("demo") && named.contains("test"));
    for (const std::string& command : named)
        EXPECT_THAT(help, testing::ContainsRegex("\n  " + command + " ")) << "./dev help has no " << command;
}

/// The rows of a table of families, with links as from the project's folder.
std::set<std::string> familiesIn(const fs::path& page, const std::string& folder)
{
    std::set<std::string> rows;
    for (std::string line : linesOf(page))
        if (line.starts_with("| [") && line.find("QVR`") != std::string::npos)
            rows.insert(line.insert(line.find("](") + 2, folder));
    return rows;
}

TEST(ReadmePage, HasTheMethodsOfTheReference)
{
    const std::set<std::string> rows = familiesIn(project / "README.md", "");
    EXPECT_FALSE(rows.empty());
    EXPECT_EQ(rows, familiesIn(project / "docs/reference/index.md", "docs/reference/"));
}

TEST(ReadmePage, LinksLeadSomewhere)
{
    for (const char* page : {"README.md", "ARCHITECTURE.md", "CONTRIBUTING.md", "RELIABILITY.md"})
    {
        const std::string text = standin::readText(project / page);
        static const std::regex link{R"(\]\(([^)#:]+)\))"};
        for (std::sregex_iterator match{text.begin(), text.end(), link}; match != std::sregex_iterator();
             ++match)
            EXPECT_TRUE(fs::exists(project / (*match)[1].str())) << page << " links to " << (*match)[1];
    }
}

} // namespace
