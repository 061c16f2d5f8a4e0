#include "cli/commands.h"
#include "script/failure.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "build_info.h"

namespace
{

constexpr int usageError = 2;

/// One line, whatever the message looks like.
int fail(const std::string& message, int code)
{
    std::string line = message.substr(0, message.find_last_not_of('\n') + 1);
    std::replace(line.begin(), line.end(), '\n', ' ');
    std::cout.flush();
    std::cerr << line << "\n";
    return code;
}

int failPlainly(const std::string& message, int code)
{
    return fail("pictureqvr: " + message, code);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    CLI::App app("Calls the methods of the PictureQVR plug-in on pictures, through a stand-in for its host.",
                 "pictureqvr");
    app.set_version_flag("--version", std::string("pictureqvr ") + build::version,
                         "Print the version and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    constexpr std::size_t optionColumn = 34;
    app.get_formatter()->column_width(optionColumn);
    app.require_subcommand(1);
    app.fallthrough();

    cli::HostChoice choice;
    choice.addOptions(app);

    cli::addList(app, choice);
    cli::addHelp(app, choice);
    cli::addApply(app, choice);
    cli::addFilter(app, choice);
    cli::addRun(app, choice);
    cli::addDemo(app, choice);

    try
    {
        app.parse(argumentCount, arguments);
    }
    catch (const CLI::Success& wish)
    {
        return app.exit(wish);
    }
    catch (const CLI::ParseError& error)
    {
        return failPlainly(error.what() + std::string("; see pictureqvr --help"), usageError);
    }
    catch (const script::Failure& failure)
    {
        return fail(failure.what(), EXIT_FAILURE);
    }
    catch (const std::exception& error)
    {
        return failPlainly(error.what(), EXIT_FAILURE);
    }
    if (!std::cout.flush())
        return failPlainly("cannot write to standard output", EXIT_FAILURE);
    return EXIT_SUCCESS;
}
