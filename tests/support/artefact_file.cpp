#include "tests/support/artefact_file.h"

#include "tests/support/test_host.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "build_info.h"

std::string binaryOf(standin::Artefact artefact)
{
    return artefact == standin::Artefact::SharedObject
               ? sharedObjectToTest()
               : std::string(build::bundle) + "/Contents/MacOS/PictureQVR";
}

std::vector<std::string> linesOf(const std::string& command)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe{popen(command.c_str(), "r"), pclose};
    if (pipe == nullptr)
        throw std::runtime_error("cannot run: " + command);
    std::string output;
    std::array<char, 65536> part{};
    while (const std::size_t size = std::fread(part.data(), 1, part.size(), pipe.get()))
        output.append(part.data(), size);

    std::vector<std::string> lines;
    std::istringstream text{output};
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

std::vector<Row> wordsOf(const std::string& command)
{
    std::vector<Row> rows;
    for (const std::string& line : linesOf(command))
    {
        std::istringstream words{line};
        rows.emplace_back();
        for (std::string word; words >> word;)
            rows.back().push_back(word);
    }
    if (rows.empty())
        throw std::runtime_error("no output from: " + command);
    return rows;
}

bool Function::contains(const std::string& mnemonic) const
{
    return std::any_of(instructions.begin(), instructions.end(),
                       [&](const Instruction& instruction) { return instruction.mnemonic == mnemonic; });
}

bool Function::isWideLoop() const
{
    constexpr std::array loops{"bool qvr::detail::visitWide<",
                               "void qvr::conversion::(anonymous namespace)::expandWide<",
                               "void qvr::conversion::(anonymous namespace)::compactWide<"};
    return std::any_of(loops.begin(), loops.end(), [&](const char* loop) { return name.starts_with(loop); });
}

std::vector<Function> disassemble(standin::Artefact artefact)
{
    std::vector<Function> functions;
    for (const std::string& line :
         linesOf("llvm-objdump-14 --disassemble --demangle --no-show-raw-insn " + binaryOf(artefact)))
    {
        // "00001360 <name>:" heads a function; "    1026:      \tjne\t0x1048 <name+0x48>" is a line of it.
        if (const std::size_t name = line.find(" <"); name == 8 && line.ends_with(">:"))
            functions.push_back({line.substr(name + 2, line.size() - name - 4), {}});
        const std::size_t colon = line.find(":      \t");
        if (functions.empty() || !line.starts_with(' ') || colon == std::string::npos)
            continue;
        Instruction instruction;
        instruction.address = static_cast<std::uint32_t>(std::stoul(line.substr(0, colon), nullptr, 16));
        std::istringstream words{line.substr(colon + 1, line.find(" <", colon) - colon - 1)};
        words >> instruction.mnemonic;
        std::getline(words >> std::ws, instruction.operands);
        functions.back().instructions.push_back(instruction);
    }
    if (functions.empty())
        throw std::runtime_error("no functions in " + binaryOf(artefact));
    return functions;
}

std::uint32_t addressOf(standin::Artefact artefact, const std::string& symbol)
{
    const std::string mangled = (artefact == standin::Artefact::MacBundle ? "_" : "") + symbol;
    for (const Row& row : wordsOf("llvm-nm-14 --format=posix " + binaryOf(artefact)))
        if (row.size() > 2 && row[0] == mangled)
            return static_cast<std::uint32_t>(std::stoul(row[2], nullptr, 16));
    throw std::runtime_error("no symbol " + mangled + " in " + binaryOf(artefact));
}
