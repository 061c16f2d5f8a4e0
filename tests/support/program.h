/// \file
/// The program `pictureqvr` as its users meet it: what it prints, what it writes, and how it ends.
#pragma once

#include "tests/support/test_host.h"

#include <filesystem>
#include <string>

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
    /// Exactly one line on stderr, and nothing printed.
    void expectFailure(const std::string& arguments, const std::string& message, int code = failure) const;

    const std::filesystem::path folder;
};
