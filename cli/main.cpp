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

constexpr const char* footer = R"(
Start with:
  pictureqvr list                                 what the plug-in has
  pictureqvr help ChangeContrastQVR               what one of it does, with an example
  pictureqvr apply InvertQVR photo.jpg out.png    one call on a photograph
  pictureqvr COMMAND --help                       what a command takes, with examples

Exit codes:
  0  everything was done
  1  something failed; a line on standard error says what
  2  the command line was not understood, and nothing was done

Environment:
  PICTUREQVR_PLUGIN  the plug-in to load where --plugin names none

Files:
  PictureQVR.bundle  the Mac bundle, which is loaded where it is there: in the program's folder, or seen from there in
                     ../lib/pictureqvr, .. or ../macos-i386
  PictureQVR.so      the Linux shared object, in the same places
)";

/// Says first what there is to be done.
class HelpPage : public CLI::Formatter
{
public:
    HelpPage()
    {
        constexpr std::size_t optionColumn = 34;
        column_width(optionColumn);
        label("SUBCOMMAND", "COMMAND");
    }

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override
    {
        if (app->get_parent() != nullptr)
            return Formatter::make_help(app, name, mode);
        return make_description(app) + make_usage(app, name) + make_subcommands(app, mode) +
               make_groups(app, mode) + make_footer(app);
    }
};

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
    CLI::App app(
        "Calls the methods of the PictureQVR plug-in on picture files, through a stand-in for its host.",
        "pictureqvr");
    app.set_version_flag("--version", std::string("pictureqvr ") + build::version,
                         "Print the version and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.formatter(std::make_shared<HelpPage>());
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
    cli::addInfo(app, choice);
    cli::addCheck(app, choice);
    cli::addCompletion(app);
    cli::addMan(app);
    for (CLI::App* command : app.get_subcommands({}))
        command->group("Commands");
    // Commands without a footer of their own would have taken it.
    app.footer(footer);

    try
    {
        // The words behind it are those of another line, with options that are not to be understood here.
        if (argumentCount > 1 && std::string_view(arguments[1]) == "complete")
            cli::complete(app, choice, {arguments + 2, arguments + argumentCount});
        else
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
    catch (const script::CallFailure& failure)
    {
        failPlainly(failure.what(), EXIT_FAILURE);
        if (!failure.picture().empty())
            std::cerr << failure.picture() << "\n";
        return EXIT_FAILURE;
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
