/// \file
/// The commands. Each function declares one with its options; it runs when the whole line is understood, and
/// throws standin::Error or script::Failure, with one clear line, for whatever goes wrong then.
#pragma once

#include "cli/host_choice.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace cli
{

/// Makes calls on picture files.
void addApply(CLI::App& app, const HostChoice& choice);
/// Runs one of the filter classes on picture files.
void addFilter(CLI::App& app, const HostChoice& choice);
/// Runs a program of the host's language.
void addRun(CLI::App& app, const HostChoice& choice);
/// Prints everything that the plug-in has registered: as a user would declare it, or as JSON.
void addList(CLI::App& app, const HostChoice& choice);
/// Prints what docs/reference says of a method or a class, its declarations and its example.
void addHelp(CLI::App& app, const HostChoice& choice);
/// Runs the examples and writes index.html with their pictures into a folder, which is made if need be. Tells
/// on stderr how far it is.
void addDemo(CLI::App& app, const HostChoice& choice);
/// Tells what the plug-in is, what it needs and what it uses.
void addInfo(CLI::App& app, const HostChoice& choice);
/// Tells what is wrong with a build of the plug-in.
void addCheck(CLI::App& app, const HostChoice& choice);
/// Prints scripts that let shells complete command lines.
void addCompletion(CLI::App& app);
/// Answers what those scripts ask: what could come next on a line whose last word is being written.
void complete(const CLI::App& app, const HostChoice& choice, const std::vector<std::string>& words);
/// Prints the manual page.
void addMan(CLI::App& app);

/// An option that can be given several times.
inline CLI::Option& addRepeatable(CLI::App& command, const std::string& name,
                                  std::vector<std::string>& values, const std::string& valueName,
                                  const std::string& description)
{
    return *command.add_option(name, values, description + "; can be repeated")
                ->expected(1)
                // What follows the value belongs to the command.
                ->allow_extra_args(false)
                ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                ->type_name(valueName);
}

} // namespace cli
