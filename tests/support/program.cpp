#include "tests/support/program.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

#include "build_info.h"

namespace fs = std::filesystem;

namespace
{

template <std::size_t channels>
std::string tgaOf(int width, int height, const std::vector<std::array<std::uint8_t, channels>>& pixels)
{
    std::string bytes(18, '\0');
    bytes[2] = 2;
    const auto putSize = [&bytes](std::size_t place, int size) {
        bytes[place] = static_cast<char>(size);
        bytes[place + 1] = static_cast<char>(size >> 8);
    };
    putSize(12, width);
    putSize(14, height);
    bytes[16] = channels * 8;
    bytes[17] = channels == 4 ? 0x28 : 0x20;
    for (const auto& pixel : pixels)
    {
        for (const std::size_t channel : {2, 1, 0})
            bytes += static_cast<char>(pixel[channel]);
        if constexpr (channels == 4)
            bytes += static_cast<char>(pixel[3]);
    }
    return bytes;
}

} // namespace

std::string tga(int width, int height, const std::vector<Rgb>& pixels)
{
    return tgaOf(width, height, pixels);
}

std::string tgaWithAlpha(int width, int height, const std::vector<std::array<std::uint8_t, 4>>& pixels)
{
    return tgaOf(width, height, pixels);
}

std::string contentsOf(const fs::path& path)
{
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

ProgramTest::ProgramTest()
    : folder(fs::temp_directory_path() / ("pictureqvr-test-" + std::to_string(getpid())))
{
    fs::create_directories(folder);
}

ProgramTest::~ProgramTest()
{
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

void ProgramTest::write(const std::string& name, const std::string& contents) const
{
    std::ofstream{folder / name, std::ios::binary} << contents;
}

Outcome ProgramTest::run(const std::string& arguments) const
{
    return runInShell("pictureqvr " + arguments);
}

Outcome ProgramTest::runInShell(const std::string& command) const
{
    const fs::path programs = fs::path{build::sharedObject}.parent_path();
    const std::string line = "cd " + folder.string() + " && PATH=" + programs.string() +
                             ":$PATH && export PICTUREQVR_PLUGIN=" + hostSetup(artefact()).options.plugin +
                             " && { " + command + "\n} >stdout 2>stderr";
    const int status = std::system(line.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentsOf(folder / "stdout"),
            contentsOf(folder / "stderr")};
}

void ProgramTest::expectSuccess(const std::string& arguments, const std::string& output) const
{
    const Outcome result = run(arguments);
    EXPECT_EQ(result.code, success) << arguments;
    EXPECT_EQ(result.output, output) << arguments;
    EXPECT_EQ(result.errors, "") << arguments;
}

void ProgramTest::expectFailure(const std::string& arguments, const std::string& message, int code) const
{
    const Outcome result = run(arguments);
    EXPECT_EQ(result.code, code) << arguments;
    EXPECT_EQ(result.output, "") << arguments;
    EXPECT_THAT(result.errors, testing::StartsWith("pictureqvr: ")) << arguments;
    EXPECT_THAT(result.errors, testing::HasSubstr(message)) << arguments;
    EXPECT_THAT(result.errors, testing::MatchesRegex("[^\n]*\n([^\n]+\n *\\^\n)?")) << arguments;
}
