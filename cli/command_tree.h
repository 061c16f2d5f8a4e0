/// \file
/// What the program's own commands and options say of themselves, for those who write it down in other forms.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace cli
{

/// The commands that users are told of, in their order.
std::vector<const CLI::App*> commandsOf(const CLI::App& app);
/// The options of a command that users are told of; those without dashes apart.
std::vector<const CLI::Option*> namedOptionsOf(const CLI::App& command);
std::vector<const CLI::Option*> positionalsOf(const CLI::App& command);

/// "-h, --help".
std::string namesOf(const CLI::Option& option);
/// Whether a value follows its name.
bool takesValue(const CLI::Option& option);
/// What an option takes, such as "FILE", without the limits that its values are checked for.
std::string typeOf(const CLI::Option& option);
/// The values that an option takes when they are a few words, as its type "mac|linux" says.
std::vector<std::string> valuesOf(const CLI::Option& option);
/// "apply [OPTIONS] CALL [FILES...]".
std::string usageOf(const CLI::App& command);

/// A part of what stands behind a command's options.
struct FooterBlock
{
    enum class Kind
    {
        Paragraph, ///< one line of text, however it was broken
        Heading,   ///< without its colon
        Terms,     ///< indented lines "TERM  meaning"
        Verbatim   ///< other indented lines
    };
    Kind kind = Kind::Paragraph;
    std::vector<std::string> lines;                         ///< without their indent
    std::vector<std::pair<std::string, std::string>> terms; ///< and their meanings
};
std::vector<FooterBlock> footerOf(const CLI::App& command);

} // namespace cli
