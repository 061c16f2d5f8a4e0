#include "cli/command_tree.h"

#include <algorithm>

namespace cli
{

namespace
{

bool isShown(const CLI::Option* option)
{
    return !option->get_group().empty();
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

bool isIndented(const std::string& line)
{
    return line.starts_with("  ");
}

/// Where the gap of two blanks or more begins that parts a term from its meaning.
std::size_t gapIn(const std::string& line)
{
    const std::size_t gap = line.find("  ", line.find_first_not_of(' '));
    return line.find_first_not_of(' ', gap) == std::string::npos ? std::string::npos : gap;
}

FooterBlock indentedBlock(const std::vector<std::string>& lines)
{
    FooterBlock block;
    const bool hasTerms = gapIn(lines.front()) != std::string::npos;
    block.kind = hasTerms ? FooterBlock::Kind::Terms : FooterBlock::Kind::Verbatim;
    const std::size_t indent = lines.front().find_first_not_of(' ');
    for (const std::string& line : lines)
    {
        const std::size_t begin = line.find_first_not_of(' ');
        if (!hasTerms)
            block.lines.push_back(line.substr(std::min(indent, begin)));
        else if (begin > indent)
            block.terms.back().second += " " + line.substr(begin);
        else
        {
            const std::size_t gap = std::min(gapIn(line), line.size());
            const std::size_t meaning = std::min(line.find_first_not_of(' ', gap), line.size());
            block.terms.emplace_back(line.substr(begin, gap - begin), line.substr(meaning));
        }
    }
    return block;
}

} // namespace

std::vector<const CLI::App*> commandsOf(const CLI::App& app)
{
    return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<const CLI::Option*> namedOptionsOf(const CLI::App& command)
{
    return command.get_options(
        [](const CLI::Option* option) { return isShown(option) && option->nonpositional(); });
}

std::vector<const CLI::Option*> positionalsOf(const CLI::App& command)
{
    return command.get_options(
        [](const CLI::Option* option) { return isShown(option) && option->get_positional(); });
}

std::string namesOf(const CLI::Option& option)
{
    std::string names;
    for (const std::string& name : option.get_snames())
        names += (names.empty() ? "-" : ", -") + name;
    for (const std::string& name : option.get_lnames())
        names += (names.empty() ? "--" : ", --") + name;
    return names;
}

bool takesValue(const CLI::Option& option)
{
    return option.get_items_expected_max() > 0;
}

std::string typeOf(const CLI::Option& option)
{
    const std::string type = option.get_type_name();
    return type.substr(0, type.find(':'));
}

std::vector<std::string> valuesOf(const CLI::Option& option)
{
    const std::string type = typeOf(option);
    if (type.find('|') == std::string::npos)
        return {};
    return CLI::detail::split(type, '|');
}

std::string usageOf(const CLI::App& command)
{
    std::string usage = command.get_name() + " [OPTIONS]";
    for (const CLI::Option* option : positionalsOf(command))
    {
        const std::string name = option->get_name(true) + (option->get_items_expected_max() > 1 ? "..." : "");
        usage += option->get_required() ? " " + name : " [" + name + "]";
    }
    return usage;
}

std::vector<FooterBlock> footerOf(const CLI::App& command)
{
    std::vector<FooterBlock> blocks;
    const std::vector<std::string> lines = linesOf(command.get_footer());
    for (std::size_t at = 0; at < lines.size();)
    {
        std::vector<std::string> part;
        if (lines[at].empty())
            ++at;
        else if (isIndented(lines[at]))
        {
            while (at < lines.size() && isIndented(lines[at]))
                part.push_back(lines[at++]);
            blocks.push_back(indentedBlock(part));
        }
        else if (lines[at].ends_with(':'))
        {
            const std::string& line = lines[at++];
            blocks.push_back({FooterBlock::Kind::Heading, {line.substr(0, line.size() - 1)}, {}});
        }
        else
        {
            std::string text;
            for (; at < lines.size() && !lines[at].empty() && !isIndented(lines[at]); ++at)
                text += (text.empty() ? "" : " ") + lines[at];
            blocks.push_back({FooterBlock::Kind::Paragraph, {text}, {}});
        }
    }
    return blocks;
}

} // namespace cli
