// What `pictureqvr check` and `pictureqvr info` say of the artefacts, and of plug-ins that have something
// wrong.
#include "host/file.h"
#include "host/loaders/plugin_file.h"
#include "tests/support/artefact_file.h"
#include "tests/support/program.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "build_info.h"

namespace
{

namespace fs = std::filesystem;
using standin::Artefact;
using testing::Contains;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

class Check : public ProgramTest
{
protected:
    /// All ways to name what is tested.
    static std::vector<std::string> paths()
    {
        const std::string binary = binaryOf(artefact());
        if (artefact() == Artefact::SharedObject)
            return {binary};
        const std::string bundle = build::bundle;
        return {bundle, bundle + "/", binary};
    }
};
ON_EVERY_ARTEFACT(Check);

TEST_P(Check, FindsNothingInTheArtefacts)
{
    const std::string path = paths().front();
    expectSuccess("check " + path, path + ": 0 findings in 11904 calls on 32 hosts\n");
}

TEST_P(Check, TakesEveryNameOfAPlugin)
{
    for (const std::string& path : paths())
        EXPECT_EQ(run("check --host web --host-version 2012.5 " + path).output,
                  path + ": 0 findings in 372 calls on 1 host\n");
}

TEST_P(Check, RefusesWhatIsNoPlugin)
{
    const std::vector<std::uint8_t> whole = standin::readFile(binaryOf(artefact()));
    for (const std::size_t size : {std::size_t{10}, whole.size() / 2, whole.size() - 5000})
    {
        write("half", std::string(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        const Outcome outcome = run("check half");
        EXPECT_EQ(outcome.code, failure) << size;
        EXPECT_THAT(outcome.output + outcome.errors, HasSubstr("half: ")) << size;
    }
    write("text", "no plug-in\n");
    expectFailure("check text", "text: no Mach-O file");
    expectFailure("check missing", "cannot read missing: No such file");
    expectFailure("info --plugin text", "text: no Mach-O file");
}

/// Bytes of the machine code and of the tables are changed here and there.
TEST_P(Check, SurvivesWhateverAFileDoes)
{
    const std::vector<std::uint8_t> whole = standin::readFile(binaryOf(artefact()));
    int found = 0;
    for (std::uint32_t seed = 1; seed <= 6; ++seed)
    {
        std::string damaged(whole.begin(), whole.end());
        for (std::uint32_t i = 1; i <= 200; ++i)
            damaged[seed * 7919U * i * i % damaged.size()] ^= 0x55;
        write("damaged", damaged);
        const Outcome outcome = run("check --host desktop --host-version 2013.03 --seconds 1 damaged");
        EXPECT_THAT(outcome.code, testing::AnyOf(success, failure)) << seed;
        found += outcome.code == failure ? 1 : 0;
    }
    EXPECT_GT(found, 0);
}

/// Plug-ins with one fault each.
class PlantedFaults : public ProgramTest
{
protected:
    Outcome check(const std::string& fault, const std::string& options = "") const
    {
        const std::string file = fs::path(build::sharedObject).parent_path() / "faulty_plugin.so";
        return runInShell("PLANTED_FAULT='" + fault + "' pictureqvr check --host-version 2013.03 " + options +
                          " " + file);
    }

    /// Demands that a line of the findings is this one, and that the exit code tells of it.
    void expectFinding(const std::string& fault, const std::string& line,
                       const std::string& options = "--host console") const
    {
        const Outcome outcome = check(fault, options);
        EXPECT_EQ(outcome.code, failure) << fault;
        EXPECT_THAT("\n" + outcome.output, HasSubstr("\n" + line + "\n")) << fault;
        EXPECT_THAT(outcome.errors, MatchesRegex("pictureqvr: .*/faulty_plugin.so: [0-9]+ findings in [0-9]+ "
                                                 "calls on [0-9]+ hosts?\n"))
            << fault;
    }
};
INSTANTIATE_TEST_SUITE_P(SharedObject, PlantedFaults, testing::Values(Artefact::SharedObject));

/// What stands between the real plug-in and its host needs more than hosts have, which is the one fault then.
TEST_P(PlantedFaults, ImportsAreNamed)
{
    const Outcome outcome = check("", "--host console");
    EXPECT_EQ(outcome.code, failure);
    EXPECT_THAT(outcome.output, HasSubstr("the file: imports dlopen, which a host need not have\n"));
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'),
              std::count(outcome.output.begin(), outcome.output.end(), ':'))
        << outcome.output;
}

TEST_P(PlantedFaults, RowsThatAreMissingOrWrongAreNamed)
{
    expectFinding("missing method",
                  "what is registered on console 2013.03: missing: extension Picture: method "
                  "isGrayQVR(tolerance as integer, left as integer,top as integer,width as integer,height as "
                  "integer) as boolean, on consoles");
    expectFinding("wrong flag",
                  "what is registered on console 2013.03: wrong: extension Picture: method HasMaskQVR as "
                  "boolean (wanted: extension Picture: method HasMaskQVR as boolean, on consoles)");
}

TEST_P(PlantedFaults, CallsThatDoNotComeBackAreNamed)
{
    expectFinding("crash", "HasMaskQVR as boolean on console 2013.03, gworld32: ended by signal 11 "
                           "(Segmentation fault)");
    expectFinding("exit",
                  "HasMaskQVR as boolean on console 2013.03, gworld32: ended the process with exit code 3");
    expectFinding("hang",
                  "HasMaskQVR as boolean on console 2013.03, gworld32: did not return within 1 second",
                  "--host console --seconds 1");
    expectFinding("abort", "loading on desktop 2013.03 and in 3 other places: ended by signal 6 (Aborted)",
                  "");
    // What comes after them is called all the same.
    EXPECT_THAT(check("crash", "--host console").errors, HasSubstr(" in 372 calls on 1 host\n"));
}

TEST_P(PlantedFaults, WhatIsKeptIsNamed)
{
    expectFinding("left locked",
                  "InvertQVR as picture on console 2013.03, bitmap: picture was freed while locked");
    expectFinding("leak",
                  "TransformColorsQVR(red as memoryblock, blue as memoryblock, green as memoryblock, dest as "
                  "picture = nil) as picture on console 2013.03, gworld32 and in 5 other places: "
                  "memoryblock: reference not given back");
}

TEST_P(PlantedFaults, WhatIsWrittenElsewhereIsNamed)
{
    EXPECT_THAT(check("stray write", "--host console").output,
                testing::AnyOf(HasSubstr(": bytes outside of its pixels were written\n"),
                               HasSubstr("bitmap: ended by signal 11")));
    expectFinding("changed source", "isWhiteQVR as boolean on console 2013.03, bitmap: changed self");
}

TEST_P(PlantedFaults, ResultsThatAreNilAreNamed)
{
    expectFinding("nil", "InvertQVR as picture on console 2013.03, bitmap: gave nil");
}

class Info : public ProgramTest
{
};
ON_EVERY_ARTEFACT(Info);

TEST_P(Info, TellsWhatThePluginIs)
{
    const bool isBundle = artefact() == Artefact::MacBundle;
    const Outcome info = run("info");
    EXPECT_EQ(info.code, success);
    EXPECT_EQ(info.errors, "");
    const auto expectRow = [&](const std::string& title, const std::string& value) {
        EXPECT_THAT(info.output, HasSubstr(title + std::string(20 - title.size(), ' ') + value + "\n"));
    };
    expectRow("Artefact", isBundle ? "Mac bundle" : "Linux shared object");
    expectRow("File", binaryOf(artefact()));
    expectRow("Version", isBundle ? build::version : "not told by the file");
    expectRow("Architecture", isBundle ? "i386, Mach-O bundle" : "i386, ELF shared object");
    expectRow("Size", std::to_string(fs::file_size(binaryOf(artefact()))) + " bytes");
    expectRow("Record layout", "12, for a desktop host of version 2013.03");
    expectRow("Registers", "39 methods of Picture, 6 global methods, 2 classes");
    expectRow("Exports", "REALPluginMain");
    expectRow("Processor path",
              laneCounts().back() == 8 ? "8 pixels at a time (AVX2)" : "4 pixels at a time (SSE2)");
    expectRow("Program", std::string("pictureqvr ") + build::version);
    EXPECT_THAT(info.output, Not(HasSubstr("missing")));
    EXPECT_THAT(info.output, Not(HasSubstr("LockPixels")));
    EXPECT_THAT(run("info --verbose").output, HasSubstr("\n                    LockPixels\n"));
}

TEST_P(Info, TellsTheSameAsJson)
{
    const auto info = nlohmann::json::parse(run("info --json --host console --host-version 2012.5").output);
    EXPECT_EQ(info["artefact"], nameOf(artefact()));
    EXPECT_EQ(info["architecture"], "i386");
    EXPECT_EQ(info["layout"], 10);
    EXPECT_EQ(info["lanes"], laneCounts().back());
    EXPECT_EQ(info["methods"], 39);
    EXPECT_EQ(info["exports"], nlohmann::json::array({"REALPluginMain"}));
    EXPECT_THAT(info["imports"].get<std::vector<std::string>>(), Contains("malloc"));
    EXPECT_THAT(info["hostFunctions"]["found"].get<std::vector<std::string>>(),
                Contains("REALLockPictureDescription"));
    EXPECT_EQ(info["hostFunctions"]["missing"], nlohmann::json::array());
}

TEST_P(PlantedFaults, AFunctionThatTheHostLacksIsNamed)
{
    const std::string file = fs::path(build::sharedObject).parent_path() / "faulty_plugin.so";
    const std::string command =
        "PLANTED_FAULT='missing function' pictureqvr info --plugin " + file + " --host console";
    EXPECT_THAT(runInShell(command).output,
                HasSubstr("\n  missing           1\n                    functionOfAnotherHost\n"));
    EXPECT_EQ(nlohmann::json::parse(runInShell(command + " --json").output)["hostFunctions"]["missing"],
              nlohmann::json::array({"functionOfAnotherHost"}));
}

TEST_P(Info, ListsTheImportsOfTheFile)
{
    const standin::PluginFile file = standin::readPluginFile(binaryOf(artefact()));
    for (const std::string& name : file.imports)
        EXPECT_NE(name, "");
    EXPECT_THAT(file.imports, Contains("malloc"));
    EXPECT_EQ(file.exports, std::vector<std::string>{"REALPluginMain"});
}

} // namespace
