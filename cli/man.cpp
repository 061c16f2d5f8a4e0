// The manual page, in the classic language of such pages: man(7).
#include "cli/command_tree.h"
#include "cli/commands.h"

#include <algorithm>
#include <iostream>

#include "build_info.h"

namespace cli
{

namespace
{

/// Text as it is: nothing in it is an instruction, quotes and dashes can be copied into a shell.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char character : text)
        switch (character)
        {
        case '\\':
            result += "\\e";
            break;
        case '-':
            result += "\\-";
            break;
        case '\'':
            result += "\\(aq";
            break;
        case '"':
            result += "\\(dq";
            break;
        case '^':
            result += "\\(ha";
            break;
        case '~':
            result += "\\(ti";
            break;
        case '`':
            result += "\\(ga";
            break;
        default:
            result += character;
        }
    return text.starts_with('.') ? "\\&" + result : result;
}

void line(const std::string& text)
{
    std::cout << text << "\n";
}

/// In lines that are short where they can be.
void printText(const std::string& text)
{
    constexpr std::size_t longest = 70;
    std::string part;
    std::istringstream words(text);
    for (std::string word; words >> word;)
    {
        if (!part.empty() && part.size() + word.size() > longest)
            line(escaped(std::exchange(part, "")));
        part += (part.empty() ? "" : " ") + word;
    }
    line(escaped(part));
}

std::string upperCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

std::string ended(const std::string& text)
{
    return text.ends_with('.') ? text : text + ".";
}

void printSection(const std::string& title)
{
    line(".SH \"" + upperCase(title) + "\"");
}

void printTerm(const std::string& term, const std::string& meaning)
{
    line(".TP");
    line(term);
    printText(meaning);
}

std::string bold(const std::string& text)
{
    return "\\fB" + escaped(text) + "\\fR";
}

void printOption(const CLI::Option& option)
{
    std::string term = bold(option.get_positional() ? option.get_name(true) : namesOf(option));
    if (const std::string type = typeOf(option); takesValue(option) && !type.empty())
        term += " \\fI" + escaped(type) + "\\fR";
    std::string meaning = ended(option.get_description());
    if (!option.get_default_str().empty())
        meaning += " Default: " + option.get_default_str() + ".";
    printTerm(term, meaning);
}

/// `heading(title)` begins what stands under one of the footer's headings.
template <class Heading>
void printFooter(const CLI::App& command, Heading heading)
{
    for (const FooterBlock& block : footerOf(command))
        switch (block.kind)
        {
        case FooterBlock::Kind::Heading:
            heading(block.lines.front());
            break;
        case FooterBlock::Kind::Paragraph:
            line(".PP");
            printText(block.lines.front());
            break;
        case FooterBlock::Kind::Terms:
            for (const auto& [term, meaning] : block.terms)
                printTerm(bold(term), ended(meaning));
            break;
        case FooterBlock::Kind::Verbatim:
            line(".PP");
            line(".in +4n");
            line(".nf");
            for (const std::string& text : block.lines)
                line(escaped(text));
            line(".fi");
            line(".in");
            break;
        }
}

void printCommand(const CLI::App& command)
{
    line(".SS \"" + escaped(usageOf(command)) + "\"");
    printText(ended(command.get_description()));
    for (const CLI::Option* option : positionalsOf(command))
        printOption(*option);
    for (const CLI::Option* option : namedOptionsOf(command))
        if (option != command.get_help_ptr())
            printOption(*option);
    printFooter(command, [](const std::string& title) {
        line(".PP");
        line(bold(title + ":"));
    });
}

void printOptions(const CLI::App& app, const std::string& group)
{
    for (const CLI::Option* option : namedOptionsOf(app))
        if (option->get_group() == group)
            printOption(*option);
}

void printPage(const CLI::App& app)
{
    const std::string description = app.get_description();
    line(".TH PICTUREQVR 1 \"" + std::string(build::date) + "\" \"PictureQVR " + build::version +
         "\" \"User Commands\"");
    printSection("Name");
    line("pictureqvr \\-");
    printText(description.substr(0, description.find('.')));
    printSection("Synopsis");
    line(".B pictureqvr");
    line("[\\fIOPTIONS\\fR] \\fICOMMAND\\fR [\\fIARGUMENTS\\fR]");
    printSection("Description");
    printText(description);
    printSection("Commands");
    line("\\fBpictureqvr\\fR \\fICOMMAND\\fR \\fB\\-\\-help\\fR shows each of these sections alone.");
    for (const CLI::App* command : commandsOf(app))
        printCommand(*command);
    printSection("Options");
    printOptions(app, "Options");
    printSection("Host options");
    line("They fit every command and can stand anywhere on the line.");
    printOptions(app, "Host");
    printFooter(app, printSection);
}

} // namespace

void addMan(CLI::App& app)
{
    CLI::App& command =
        *app.add_subcommand("man", "Print the manual page: pictureqvr man | man -l -, or into a file");
    command.callback([&app] { printPage(app); });
}

} // namespace cli
