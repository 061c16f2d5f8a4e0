#include "cli/apply.h"
#include "cli/demo.h"
#include "cli/help.h"
#include "cli/host_choice.h"
#include "cli/list.h"
#include "cli/run.h"
#include "script/failure.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "build_info.h"

namespace
{

constexpr int usageError = 2;

constexpr const char* applyExamples = R"(
CALL is one call, or one assignment, of the host's language (docs/language.md), in which @FILE stands for a file as
whatever is declared there: an image as picture, a sound (.wav, PCM) or raw bytes as memoryblock, bytes as string.
FILES are the picture that the method belongs to, which CALL can name "photo" (none for global methods), and what the call
names as @1, @2 ...; one more is the output: the resulting picture or string, or the picture itself as the call has left
it. Booleans, numbers and byref variables are printed.

Examples:
  pictureqvr apply 'InvertQVR(10, 10, 200, 100)' photo.jpg out.png
  pictureqvr apply 'InvertQVR.ChangeContrastQVR(0.3)' photo.jpg out.png
  pictureqvr apply 'ReplaceRedChannelQVR(@2)' photo.jpg other.jpg out.png
  pictureqvr apply 'ReplaceRedChannelQVR(photo.InvertQVR)' photo.jpg out.png
  pictureqvr apply 'MergePictureQVR(@1, @2)' one.png two.png out.png
  pictureqvr apply 'FindPictureQVR(@crop.png, x, y)' photo.png
  pictureqvr apply 'CountColorsQVR(red, blue, green, count)' photo.jpg --save red=red.dat
  pictureqvr apply 'EmbeddedMaskQVR(false) = @mask.png' photo.jpg out.png --alpha
  pictureqvr apply 'ScrollQVR(100, 50, true, false)' photo.jpg out.png
  pictureqvr apply 'RenderSamplesQVR(@sound.wav, 0, 1, 800, 300, 1, &c88B5C4, &c274C5A, &c203F4E, 15)' wave.png
)";

constexpr const char* filterExamples = R"(
Examples:
  pictureqvr filter PictureSepiaQVR --set SepiaRed=40 --set SepiaGreen=20 photo.jpg out.png
  pictureqvr filter PictureLut3DQVR --set 'Table(0, 0, 0, 0)=12.5' photo.jpg out.png
)";

constexpr const char* runExamples = R"(
The program is written in the host's language, of which docs/language.md tells what there is. It finds its files in the
current folder; ARGUMENTS are what args(1), args(2) ... give. What goes wrong is told as FILE:LINE:COLUMN: MESSAGE.

Examples:
  pictureqvr run examples/InvertQVR.bas
  pictureqvr run examples/InvertQVR.bas --file photo.jpg=holiday/beach.jpg
)";

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

    bool json = false;
    CLI::App& list = *app.add_subcommand("list", "List everything that the plug-in registers");
    list.add_flag("--json", json, "As JSON");

    std::string topic;
    CLI::App& help = *app.add_subcommand("help", "Explain a method or a class");
    help.add_option("NAME", topic, "Its name, such as InvertQVR")->required()->type_name("");

    cli::ApplyRequest request;
    CLI::App& apply = *app.add_subcommand("apply", "Call methods on picture files");
    apply.footer(applyExamples);
    apply.add_option("CALL", request.call, "The call, such as 'InvertQVR(10, 10, 200, 100)'")
        ->required()
        ->type_name("");
    apply.add_option("FILES", request.files, "Input files, then the output file")->type_name("");
    apply.add_option("--save", request.saves, "Write the byref memory block NAME to FILE; can be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("NAME=FILE");
    apply.add_option("--mask", request.mask, "Give the picture a mask before the call")->type_name("FILE");
    apply.add_flag("--alpha", request.alpha, "Save the alpha bytes too (default: opaque)");

    cli::FilterRequest filterRequest;
    CLI::App& filter = *app.add_subcommand("filter", "Run a filter class on a picture file");
    filter.footer(filterExamples);
    filter.add_option("CLASS", filterRequest.className, "Name of the class")->required()->type_name("");
    filter.add_option("IN", filterRequest.input, "The source picture")->required()->type_name("");
    filter.add_option("OUT", filterRequest.output, "Where the result goes")->required()->type_name("");
    filter
        .add_option("--set", filterRequest.settings,
                    "Set a property or an assignable method; can be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("NAME=VALUE");
    filter.add_flag("--alpha", filterRequest.alpha, "Save the alpha bytes too (default: opaque)");

    cli::RunRequest runRequest;
    CLI::App& run = *app.add_subcommand("run", "Run a program of the host's language");
    run.footer(runExamples);
    run.add_option("FILE", runRequest.program, "The program")->required()->type_name("");
    run.add_option("ARGUMENTS", runRequest.arguments, "What the program is started with")->type_name("");
    run.add_option("--file", runRequest.files,
                   "The file that the program calls NAME lies at PATH; can be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("NAME=PATH");
    run.add_option("--steps", runRequest.steps,
                   "Stop after so many statements and rounds of loops (default: never)")
        ->type_name("NUMBER");

    cli::DemoRequest demoRequest;
    CLI::App& demo =
        *app.add_subcommand("demo", "Run every example on a photograph and write a page of the results");
    demo.add_option("--photo", demoRequest.photo, "The photograph")->type_name("FILE")->capture_default_str();
    demo.add_option("--sound", demoRequest.sound, "The sound (.wav, 16-bit PCM)")
        ->type_name("FILE")
        ->capture_default_str();
    demo.add_option(
            "--source", demoRequest.source,
            "The project, with examples/ and docs/reference/index.md (default: the one this was built of)")
        ->type_name("DIR");
    demo.add_option("--out", demoRequest.folder, "Folder that gets index.html")->type_name("DIR")->required();

    try
    {
        app.parse(argumentCount, arguments);
        if (list)
            cli::list(standin::Host(choice.options()), json);
        else if (apply)
            cli::apply(choice, request);
        else if (filter)
            cli::filter(choice, filterRequest);
        else if (help)
            cli::help(standin::Host(choice.options()), topic);
        else if (run)
            cli::run(choice, runRequest);
        else if (demo)
            cli::demo(choice, demoRequest);
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
