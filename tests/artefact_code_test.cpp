// Which instructions the two artefacts consist of: what the loops over eight pixels may contain, and what
// every other function may.
#include "tests/support/artefact_file.h"
#include "tests/support/test_host.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

/// The functions for which `holds(function)` is true.
template <class Predicate>
std::vector<Function> functionsThat(standin::Artefact artefact, Predicate holds)
{
    std::vector<Function> functions = disassemble(artefact);
    std::erase_if(functions, [&](const Function& function) { return !holds(function); });
    return functions;
}

std::vector<Function> wideLoops(standin::Artefact artefact)
{
    return functionsThat(artefact, [](const Function& function) { return function.isWideLoop(); });
}

/// Whether the instruction, which ends at `next`, calls or jumps out of its function or to where it cannot be
/// seen.
bool leaves(const Instruction& instruction, std::uint32_t next, const Function& function)
{
    const bool calls = instruction.mnemonic.starts_with("call");
    if (!calls && !instruction.mnemonic.starts_with('j'))
        return false;
    if (!instruction.operands.starts_with("0x"))
        return true;
    const std::uint32_t destination = std::stoul(instruction.operands, nullptr, 16);
    // Code that may lie anywhere asks where it is by calling the next instruction.
    if (calls)
        return destination != next;
    return destination < function.instructions.front().address ||
           destination > function.instructions.back().address;
}

class MachineCode : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(MachineCode);

// A formula that is not compiled into its loop is compiled for four pixels, and called for every vector: many
// times slower than either width, with the same results.
TEST_P(MachineCode, WideLoopsCallNoFunction)
{
    const std::vector<Function> loops = wideLoops(artefact());
    for (const char* name : {"::visitWide<", "::expandWide<", "::compactWide<"})
        EXPECT_TRUE(
            std::any_of(loops.begin(), loops.end(),
                        [&](const Function& loop) { return loop.name.find(name) != std::string::npos; }))
            << "no function " << name << "...>";

    for (const Function& loop : loops)
    {
        const std::vector<Instruction>& code = loop.instructions;
        for (std::size_t i = 0; i + 1 < code.size(); ++i)
            EXPECT_FALSE(leaves(code[i], code[i + 1].address, loop))
                << code[i].mnemonic << ' ' << code[i].operands << " in " << loop.name;
    }
}

/// What an assembler that knows the instructions of the processors has against the functions' code.
std::vector<std::string> assemblersComplaints(const std::vector<Function>& functions,
                                              const std::string& options)
{
    const fs::path source = fs::temp_directory_path() / ("pictureqvr-" + std::to_string(getpid()) + ".s");
    std::vector<std::string> functionOfLine{""};
    {
        std::ofstream text{source};
        for (const Function& function : functions)
            for (const Instruction& instruction : function.instructions)
            {
                text << instruction.mnemonic << ' ' << instruction.operands << '\n';
                functionOfLine.push_back(function.name);
            }
    }
    // "FILE:7: Error: ..."
    std::vector<std::string> complaints;
    const std::string prefix = source.string() + ":";
    for (const std::string& line :
         linesOf("as --32 " + options + " -o /dev/null " + source.string() + " 2>&1"))
    {
        if (line.ends_with(" Assembler messages:"))
            continue;
        const std::size_t number =
            line.starts_with(prefix) ? std::strtoul(line.c_str() + prefix.size(), nullptr, 10) : 0;
        complaints.push_back(line.substr(line.find(' ') + 1) + " in " + functionOfLine.at(number));
    }
    fs::remove(source);
    return complaints;
}

void expectAcceptable(const std::vector<Function>& functions, const std::string& options)
{
    for (const std::string& complaint : assemblersComplaints(functions, options))
        ADD_FAILURE() << complaint;
}

// The first Intel Macs, whose processors have SSE3 and nothing newer.
const std::string oldestMac = "-march=core";
// Legacy encodings of vector instructions between those for wide registers cost dozens of cycles each.
const std::string avx2 = "-march=core+avx2 -msse-check=error";

TEST_P(MachineCode, RunsOnTheOldestProcessorButForTheWideLoops)
{
    std::vector<Function> functions =
        functionsThat(artefact(), [](const Function& function) { return !function.isWideLoop(); });
    // One function asks the processor what it has, and the first answer tells whether the second question may
    // be asked.
    for (Function& function : functions)
        if (function.contains("cpuid"))
            std::erase_if(function.instructions,
                          [](const Instruction& instruction) { return instruction.mnemonic == "xgetbv"; });
    ASSERT_GT(functions.size(), 100U);
    expectAcceptable(functions, oldestMac);
}

TEST_P(MachineCode, WideLoopsHaveNoLegacyVectorInstructionsAndNothingBeyondAvx2)
{
    expectAcceptable(wideLoops(artefact()), avx2);
}

TEST(Assembler, TellsInstructionSetsApart)
{
    const auto isRefused = [](const char* mnemonic, const char* operands, const std::string& options) {
        return !assemblersComplaints({{"a function", {{0, mnemonic, operands}}}}, options).empty();
    };
    EXPECT_FALSE(isRefused("movddup", "%xmm0, %xmm1", oldestMac)); // SSE3
    EXPECT_TRUE(isRefused("pshufb", "%xmm0, %xmm1", oldestMac));   // SSSE3
    EXPECT_TRUE(isRefused("vaddps", "%xmm0, %xmm1, %xmm1", oldestMac));
    EXPECT_FALSE(isRefused("vpaddd", "%ymm0, %ymm1, %ymm1", avx2));
    EXPECT_TRUE(isRefused("addsd", "%xmm0, %xmm1", avx2));
    EXPECT_TRUE(isRefused("vfmadd213ps", "%ymm0, %ymm1, %ymm2", avx2));
    EXPECT_TRUE(isRefused("shlxl", "%eax, %eax, %eax", avx2)); // BMI2
}

} // namespace
