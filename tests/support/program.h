/// \file
/// The program `pictureqvr` as its users meet it: what it prints, what it writes, and how it ends.
#pragma once

#include "tests/support/test_host.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// How the program ends.
enum ExitCode
{
    success = 0,
    failure = 1,
    usage = 2
};

struct Outcome
{
    int code = -1;
    std::string output;
    std::string errors;
};

using Rgb = std::array<std::uint8_t, 3>;

/// An uncompressed TGA file, top row first.
std::string tga(int width, int height, const std::vector<Rgb>& pixels);
std::string tgaWithAlpha(int width, int height, const std::vector<std::array<std::uint8_t, 4>>& pixels);

/// A file's bytes; empty where there is none.
std::string contentsOf(const std::filesystem::path& path);

/// A test with a folder of its own, in which it runs the program that was built beside the artefact.
class ProgramTest : public ArtefactTest
{
protected:
    ProgramTest();
    ~ProgramTest() override;
    ProgramTest(const ProgramTest&) = delete;
    ProgramTest& operator=(const ProgramTest&) = delete;

    void write(const std::string& name, const std::string& contents) const;

    /// Runs the program, with arguments as a shell takes them.
    Outcome run(const std::string& arguments) const;
    /// Runs a command of the shell, which finds the program as `pictureqvr`.
    Outcome runInShell(const std::string& command) const;

    /// Nothing on stderr.
    void expectSuccess(const std::string& arguments, const std::string& output = "") const;
    /// Exactly one line on stderr, or below it a call with a mark; and nothing printed.
    void expectFailure(const std::string& arguments, const std::string& message, int code = failure) const;

    const std::filesystem::path folder;
};
