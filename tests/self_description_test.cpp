// What the program says of itself: its help, its manual page and what it tells shells.
#include "tests/support/program.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "build_info.h"

namespace
{

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Lines = std::vector<std::string>;

Lines linesIn(const std::string& text)
{
    Lines lines;
    std::istringstream stream{text};
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

class SelfDescription : public ProgramTest
{
protected:
    bool has(const std::string& tool) const
    {
        return runInShell("command -v " + tool).code == success;
    }

    /// The names of all commands, as the help lists them.
    Lines commands() const
    {
        static const std::regex row{"^  ([a-z]+)  .*"};
        Lines names;
        std::smatch match;
        bool listed = false;
        for (const std::string& line : linesIn(run("--help").output))
        {
            listed = line == "Commands:" || (listed && !line.empty());
            if (listed && std::regex_match(line, match, row))
                names.push_back(match[1]);
        }
        return names;
    }
};

ON_EVERY_ARTEFACT(SelfDescription);

TEST_P(SelfDescription, TheHelpIsAPlaceToBegin)
{
    const Outcome help = run("--help");
    EXPECT_EQ(help.code, success);
    for (const char* text : {"\nCommands:\n", "\nStart with:\n  pictureqvr list ", "\nExit codes:\n",
                             "\nEnvironment:\n  PICTUREQVR_PLUGIN ", "\nFiles:\n"})
        EXPECT_THAT(help.output, HasSubstr(text));
    for (const std::string& line : linesIn(help.output))
        EXPECT_LE(line.size(), 120U) << line;
    EXPECT_THAT(commands(), AllOf(Contains("apply"), Contains("completion"), Not(Contains("complete"))));
    for (const std::string& command : commands())
        EXPECT_THAT(run(command + " --help").output, HasSubstr("Usage: pictureqvr " + command + " "));
}

TEST_P(SelfDescription, EveryExitCodeIsExplainedAndGiven)
{
    static const std::regex row{"^  ([0-9])  .*"};
    Lines codes;
    std::smatch match;
    for (const std::string& line : linesIn(run("--help").output))
        if (std::regex_match(line, match, row))
            codes.push_back(match[1]);
    EXPECT_THAT(codes, ElementsAre("0", "1", "2"));
    EXPECT_EQ(run("list").code, success);
    EXPECT_EQ(run("help NoSuchQVR").code, failure);
    EXPECT_EQ(run("list >/dev/full").code, failure);
    EXPECT_EQ(run("nonsense").code, usage);
    EXPECT_EQ(run("list --nonsense").code, usage);
}

/// The page as people read it, without what makes letters bold.
TEST_P(SelfDescription, TheManualPageHasAllThatTheHelpHas)
{
    if (!has("man"))
        GTEST_SKIP() << "there is no man here";
    const std::string page = runInShell("pictureqvr man | MANWIDTH=1000 man -E ascii -l -").output;
    const auto expectOnPage = [&](const std::string& text) {
        EXPECT_TRUE(page.find(text) != std::string::npos) << text;
    };
    for (const char* title : {"NAME\n", "SYNOPSIS\n", "DESCRIPTION\n", "COMMANDS\n", "OPTIONS\n",
                              "HOST OPTIONS\n", "EXIT CODES\n", "ENVIRONMENT\n", "FILES\n"})
        expectOnPage("\n" + std::string(title));
    expectOnPage(std::string("PictureQVR ") + build::version);
    static const std::regex option{"--[a-z-]+"};
    static const std::regex usageLine{"Usage: pictureqvr ([a-z]+ .OPTIONS.)"};
    for (const std::string& command : commands())
    {
        const std::string help = run(command + " --help").output;
        std::smatch usageMatch;
        ASSERT_TRUE(std::regex_search(help, usageMatch, usageLine)) << help;
        expectOnPage("\n   " + usageMatch[1].str());
        for (std::sregex_iterator match{help.begin(), help.end(), option}; match != std::sregex_iterator();
             ++match)
            expectOnPage(match->str());
        for (const std::string& line : linesIn(help))
            if (line.starts_with("  pictureqvr "))
                expectOnPage(line);
    }
}

TEST_P(SelfDescription, TheManualPageHasNoFaults)
{
    if (has("man"))
        EXPECT_EQ(runInShell("pictureqvr man | man --warnings -E UTF-8 -l - >/dev/null").errors, "");
    if (!has("mandoc"))
        GTEST_SKIP() << "there is no mandoc here";
    for (const std::string& line : linesIn(runInShell("pictureqvr man | mandoc -T lint 2>&1").output))
        // Before the first release there is none.
        EXPECT_TRUE(std::string(build::date).empty() && line.find("missing date") != std::string::npos)
            << line;
}

/// What comes next on command lines, and what is offered there.
const std::map<std::string, Lines> offers{
    {"appl", {"apply"}},
    {"list --js", {"--json"}},
    {"list --art", {"--artefact"}},
    {"--artefact ''", {"mac", "linux"}},
    {"--host d", {"desktop"}},
    {"list --storage gworld3", {"gworld32"}},
    {"apply isG", {"isGrayQVR"}},
    {"apply --format p", {"png", "pnm"}},
    {"apply --quality ''", {}},
    {"apply --mask x.png picturetob", {"PicturetoBinaryStringQVR"}},
    {"help PictureL", {"PictureLut3DQVR"}},
    {"filter ''", {"PictureSepiaQVR", "PictureLut3DQVR"}},
    {"filter PictureSepiaQVR --set SepiaR", {"SepiaRed="}},
    {"completion z", {"zsh"}},
    {"apply InvertQVR pho", {"photo.jpg"}},
    {"list --plugin pho", {"photo.jpg"}},
    {"demo --out fol", {"folder"}},
    {"apply --save re", {}},
    {"list --host-version ''", {}},
};

class Completion : public SelfDescription
{
protected:
    void SetUp() override
    {
        write("photo.jpg", "");
        std::filesystem::create_directory(folder / "folder");
    }

    /// Runs a program of a shell, whose arguments are the words of a line.
    void expectOffers(const std::string& shell, const std::string& program,
                      const std::string& folderEnd = "") const
    {
        if (!has(shell))
            GTEST_SKIP() << "there is no " << shell << " here";
        for (const auto& [line, wanted] : offers)
        {
            write("line", line);
            write("program", program);
            const Outcome outcome =
                runInShell("HOME=$PWD XDG_DATA_HOME=$PWD " + shell + " ./program " + line);
            std::set<std::string> expected;
            for (const std::string& word : wanted)
                expected.insert(word == "folder" ? word + folderEnd : word);
            const Lines got = linesIn(outcome.output);
            EXPECT_EQ(std::set<std::string>(got.begin(), got.end()), expected) << line;
            EXPECT_EQ(outcome.errors, "") << line;
        }
    }
};

ON_EVERY_ARTEFACT(Completion);

TEST_P(Completion, BashOffersWhatFits)
{
    const std::string asking = "source <(pictureqvr completion bash)\n"
                               "COMP_WORDS=(pictureqvr \"$@\")\n"
                               "COMP_CWORD=$#\n"
                               "_pictureqvr\n"
                               "((${#COMPREPLY[@]} == 0)) || printf '%s\\n' \"${COMPREPLY[@]}\"\n";
    expectOffers("bash", asking);
    // This shell takes an equals sign for a word.
    write("program", asking);
    for (const auto& [line, word] : {std::pair{"list --artefact = l", "linux"},
                                     {"list --host =", "desktop\nconsole\nweb\nunknown"},
                                     {"apply InvertQVR --save red = fol", "folder"}})
        EXPECT_EQ(runInShell(std::string("bash ./program ") + line).output, std::string(word) + "\n") << line;
}

/// With stand-ins for what the shell's own completion puts on the screen.
TEST_P(Completion, ZshOffersWhatFits)
{
    expectOffers("zsh", "function compdef { }\n"
                        "function compset { }\n"
                        "function _describe { print -l -- ${candidates%%:*} }\n"
                        "function _files { print -l -- ${words[CURRENT]##*=}*(N${1+/}) }\n"
                        "source <(pictureqvr completion zsh)\n"
                        "words=(pictureqvr \"$@\")\n"
                        "CURRENT=$#words\n"
                        "_pictureqvr\n");
}

TEST_P(Completion, FishOffersWhatFits)
{
    expectOffers(
        "fish",
        "pictureqvr completion fish | source\n"
        "complete -C \"pictureqvr $(cat line | string replace \"''\" '')\" | string replace -r '\\t.*' ''\n",
        "/");
}

TEST_P(Completion, OfAnEqualsSignIsOneWordElsewhere)
{
    expectSuccess("complete list --artefact=l", "--artefact=linux\n");
    expectSuccess("complete apply --save red=", ":files\n");
}

/// A shell that is completing shows nobody a message.
TEST_P(Completion, OffersNoNamesWithoutAPlugin)
{
    const Outcome outcome = runInShell("PICTUREQVR_PLUGIN=missing pictureqvr complete apply Inv");
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.code, failure);
}

} // namespace
