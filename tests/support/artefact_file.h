/// \file
/// The built files, as tools show them.
#pragma once

#include "host/host.h"

#include <cstdint>
#include <string>
#include <vector>

/// The file of machine code: the shared object itself, or the one inside the bundle.
std::string binaryOf(standin::Artefact artefact);

/// The lines that a command prints to its standard output.
std::vector<std::string> linesOf(const std::string& command);

/// The blank-separated words of a line.
using Row = std::vector<std::string>;

/// What a command prints, as words. A command that prints nothing fails the test.
std::vector<Row> wordsOf(const std::string& command);

struct Instruction
{
    /// In the file's own numbering: from its load address on.
    std::uint32_t address = 0;
    std::string mnemonic;
    /// Without the name of the place that an address stands for.
    std::string operands;
};

struct Function
{
    /// As in the source, with the types of its arguments.
    std::string name;
    std::vector<Instruction> instructions;

    bool contains(const std::string& mnemonic) const;
    /// Whether it works on eight pixels at a time, and so is entered behind the question for the processor
    /// only.
    bool isWideLoop() const;
};

/// All functions of the file, by its symbol table.
std::vector<Function> disassemble(standin::Artefact artefact);

/// The address of a symbol of C in the file's own numbering.
std::uint32_t addressOf(standin::Artefact artefact, const std::string& symbol);
