// From a clone to an installed program: what a build needs, which version it is, and where things go.
#include "host/file.h"
#include "tests/support/program.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "build_info.h"

namespace
{

namespace fs = std::filesystem;
using testing::HasSubstr;

const std::string cmake = build::cmake;
const std::string project = build::sourceDirectory;

class Installation : public ProgramTest
{
protected:
    /// As somebody whose files nobody else may read.
    void install(const std::string& options = "") const
    {
        const Outcome result = runInShell("umask 077; " + cmake + " --install " + build::buildDirectory +
                                          " --prefix prefix " + options);
        EXPECT_EQ(result.code, success) << result.errors;
        EXPECT_EQ(result.errors, "");
    }

    /// What the program prints that is installed, without being told where the plug-in is.
    std::string outputOf(const std::string& arguments) const
    {
        const Outcome result = runInShell("env -u PICTUREQVR_PLUGIN prefix/bin/pictureqvr " + arguments);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    const fs::path prefix = folder / "prefix";
};

ON_EVERY_ARTEFACT(Installation);

TEST_P(Installation, PutsEverythingWhereADistributionWould)
{
    install();
    for (const char* file :
         {"bin/pictureqvr", "lib/pictureqvr/PictureQVR.so", "share/man/man1/pictureqvr.1",
          "share/bash-completion/completions/pictureqvr", "share/zsh/site-functions/_pictureqvr",
          "share/fish/vendor_completions.d/pictureqvr.fish", "share/doc/pictureqvr/CHANGELOG.md",
          "share/doc/pictureqvr/examples/InvertQVR.bas", "share/doc/pictureqvr/third-party-notices.txt"})
        EXPECT_TRUE(fs::is_regular_file(prefix / file)) << file;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(prefix))
        if (entry.is_regular_file())
        {
            const bool runs = entry.path() == prefix / "bin/pictureqvr";
            EXPECT_EQ(entry.status().permissions(), fs::perms{runs ? 0755U : 0644U}) << entry.path();
        }
    std::set<std::string> folders;
    for (const fs::directory_entry& entry : fs::directory_iterator(prefix))
        folders.insert(entry.path().filename());
    EXPECT_EQ(folders, (std::set<std::string>{"bin", "lib", "share"}));
}

TEST_P(Installation, FindsThePlugInThatCameWithIt)
{
    install();
    if (artefact() == standin::Artefact::MacBundle)
        install("--component archive");
    const std::string name(nameOf(artefact()));
    EXPECT_THAT(outputOf("list"), HasSubstr("InvertQVR"));
    EXPECT_EQ(outputOf("list --artefact " + name), run("list").output);
    fs::remove_all(prefix / (artefact() == standin::Artefact::MacBundle ? "PictureQVR.bundle" : "lib"));
    const Outcome result =
        runInShell("env -u PICTUREQVR_PLUGIN prefix/bin/pictureqvr list --artefact " + name);
    EXPECT_EQ(result.code, failure);
    EXPECT_THAT(result.errors, HasSubstr((prefix / "bin/PictureQVR.").string()));
}

TEST(Changelog, BeginsWithTheVersionThatIsBuilt)
{
    static const std::regex released{R"(\n## \[(\d+\.\d+\.\d+)\] - (\d{4}-\d{2}-\d{2})\n)"};
    const std::string text = standin::readText(project + "/CHANGELOG.md");
    std::smatch match;
    ASSERT_TRUE(std::regex_search(text, match, released));
    EXPECT_EQ(match[1], build::version);
}

class Requirements : public ProgramTest
{
protected:
    void expectMissing(const std::string& arguments, const std::string& message) const
    {
        const Outcome result = runInShell(arguments);
        EXPECT_EQ(result.code, failure) << arguments;
        EXPECT_THAT(result.errors, HasSubstr(" Missing: " + message + "\n")) << arguments;
    }
};

INSTANTIATE_TEST_SUITE_P(OfThisBuild, Requirements, testing::Values(standin::Artefact::SharedObject));

TEST_P(Requirements, CompilersAndLinkersAreNamedWithTheirPackages)
{
    const std::string linux32 = project + "/platform/linux-i386.cmake";
    const std::string mac = project + "/platform/macos-i386.cmake";
    expectMissing("PATH=/nowhere " + cmake + " -P " + linux32, "clang++-14. On Debian: apt install clang-14");
    expectMissing("PATH=/nowhere " + cmake + " -P " + mac, "clang++-14. On Debian: apt install clang-14");
    expectMissing(cmake + " -D PICTUREQVR_COMPILER=/bin/false -P " + linux32,
                  "32-bit C++ library. On Debian: apt install g++-multilib");
    expectMissing(cmake + " -D PICTUREQVR_MACOS_LINKER= -P " + mac,
                  "ld64.lld.darwinold. On Debian: apt install lld-13");
}

TEST_P(Requirements, LibrariesAreNamedWithTheirPackages)
{
    expectMissing(
        cmake + " -S " + project + " -B . -G Ninja --toolchain " + project +
            "/platform/linux-i386.cmake -D CMAKE_IGNORE_PATH=/usr/include -D PICTUREQVR_ZLIB= "
            "-D GTEST_SOURCE=/nowhere",
        "CLI/CLI.hpp, kainjow/mustache.hpp, nlohmann/json.hpp, rapidxml/rapidxml.hpp, stb/stb_image.h, "
        "tao/pegtl.hpp, zlib.h, 32-bit libz.a, /nowhere/CMakeLists.txt. On Debian: apt install libcli11-dev "
        "libkainjow-mustache-dev nlohmann-json3-dev librapidxml-dev libstb-dev tao-pegtl-dev lib32z1-dev "
        "googletest");
}

} // namespace
