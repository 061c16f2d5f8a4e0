#include "cli/outputs.h"

#include "cli/progress.h"
#include "host/file.h"
#include "script/files.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <set>
#include <unistd.h>

namespace cli
{

namespace
{

namespace fs = std::filesystem;
using media::Format;
using media::Image;
using standin::Error;

/// "small/{name}.png" with what the file gives.
std::string filledIn(const std::string& pattern, const std::string& input, std::size_t number)
{
    const fs::path path = input;
    const std::string ending = path.extension().string();
    const std::map<std::string, std::string, std::less<>> values{
        {"name", path.stem().string()},
        {"ext", ending.empty() ? "" : ending.substr(1)},
        {"number", std::to_string(number)},
    };
    std::string result;
    for (std::size_t at = 0; at < pattern.size();)
    {
        const std::size_t end = pattern.find('}', at);
        if (pattern[at] != '{' || end == std::string::npos)
        {
            result += pattern[at++];
            continue;
        }
        const auto value = values.find(pattern.substr(at + 1, end - at - 1));
        if (value == values.end())
            throw Error("\"" + pattern.substr(at, end + 1 - at) + "\" is none of {name}, {ext} and {number}");
        result += value->second;
        at = end + 1;
    }
    return result;
}

/// The same for all names of a file that is or will be there.
std::string placeOf(const std::string& path)
{
    std::error_code unknown;
    const fs::path place = fs::weakly_canonical(fs::absolute(path), unknown);
    return unknown ? path : place.string();
}

/// Devices and pipes are written to; what stays there is a file.
bool isFile(const std::string& path)
{
    std::error_code unknown;
    return path != standardStream && (fs::is_regular_file(path, unknown) || !fs::exists(path, unknown));
}

std::vector<std::string> outputsOf(const Task& task)
{
    std::vector<std::string> outputs;
    if (!task.output.empty())
        outputs.push_back(task.output);
    for (const auto& [variable, path] : task.saves)
        outputs.push_back(path);
    return outputs;
}

void checkPlaces(const std::vector<Task>& tasks, bool force)
{
    std::map<std::string, std::set<std::size_t>> readers;
    for (std::size_t index = 0; index < tasks.size(); ++index)
        for (const std::string& input : tasks[index].inputs)
            readers[placeOf(input)].insert(index);
    std::map<std::string, std::size_t> writers;
    std::vector<std::string> existing;
    std::size_t count = 0;
    for (std::size_t index = 0; index < tasks.size(); ++index)
        for (const std::string& output : outputsOf(tasks[index]))
        {
            ++count;
            if (!isFile(output))
                continue;
            const std::string place = placeOf(output);
            const auto [writer, isFirst] = writers.emplace(place, index);
            if (!isFirst)
                throw Error(output + " would be written twice" +
                            (writer->second == index ? ""
                                                     : ", for " + tasks[writer->second].inputs.front() +
                                                           " and for " + tasks[index].inputs.front()));
            readers[place].erase(index);
            if (!readers[place].empty())
                throw Error(output + " would be written for " + tasks[index].inputs.front() +
                            ", and is to be read too");
            if (fs::exists(output))
                existing.push_back(output);
        }
    if (force || existing.empty())
        return;
    throw Error((count == 1 ? existing.front() + " exists already"
                            : std::to_string(existing.size()) + " of " + std::to_string(count) +
                                  " files exist already, such as " + existing.front()) +
                "; --force overwrites");
}

void makeFolder(const std::string& output)
{
    const fs::path folder = fs::path(output).parent_path();
    std::error_code error;
    if (!folder.empty())
        fs::create_directories(folder, error);
    if (error)
        throw Error("cannot make the folder " + folder.string() + ": " + error.message());
}

Format formatFor(const OutputChoice& choice, const std::string& output)
{
    if (choice.format.empty() && output == standardStream)
        throw Error("a picture for standard output needs --format, such as --format png");
    if (choice.format.empty())
        return media::formatOf(output);
    const std::optional<Format> format = media::formatNamed(choice.format);
    if (!format)
        throw Error("there is no format \"" + choice.format + "\"; png, jpeg, bmp, tga and pnm are there");
    return *format;
}

void checkFormat(const OutputChoice& choice, const std::string& output)
{
    const Format format = formatFor(choice, output);
    if (choice.alpha && !media::holdsAlpha(format))
        throw Error("--alpha: the format of " + output + " has no alpha");
    if (choice.quality && format != Format::jpeg)
        throw Error("--quality is for JPEG, which " + output + " is not");
    if (choice.compression && format != Format::png)
        throw Error("--compress is for PNG, which " + output + " is not");
}

/// Why a source's alpha cannot become that of a picture; empty: it can.
std::string reasonAgainstAlpha(const standin::Picture& picture, const Source& source)
{
    if (source.picture.width() != picture.width() || source.picture.height() != picture.height())
        return "which has another size";
    return traitsOf(source.picture.storage()).hasSpareByte ? "" : "as its storage had none";
}

/// With alpha if the picture has some, or else if its source had some.
Image imageFor(const standin::Picture& picture, const Source* source, bool always)
{
    if (script::isTranslucent(picture))
        return script::imageOf(picture, true);
    const bool sourceHas =
        source != nullptr && source->hasAlpha && reasonAgainstAlpha(picture, *source).empty();
    Image image = script::imageOf(picture, sourceHas || always);
    if (sourceHas)
        script::setAlpha(image, source->picture);
    else if (always)
        script::setOpaque(image);
    return image;
}

} // namespace

const char* const outputNotes = R"(
Inputs are PNG, JPEG, BMP, TGA, GIF and PNM, outputs all of these but GIF. "-" is standard input or standard output.
Pictures have 8 bits for each channel; what has 16 is cut. An EXIF orientation is applied. Alpha is carried over from the
picture that a call is made on, where it has some and the result has its size and a format for it. Of an animation the
first picture is read. Colour profiles and EXIF data are not carried over.

No file is overwritten without --force, and none is left half-written.
)";

void OutputChoice::addOptions(CLI::App& command)
{
    constexpr int lowestQuality = 1;
    constexpr int highestQuality = 100;
    constexpr int highestCompression = 9;
    constexpr unsigned mostJobs = 1000;
    const std::string group = "Output";
    command
        .add_option("--to", pattern,
                    "Takes many files: where their results go. {name}, {ext} and {number} are a file's name "
                    "without its ending, the ending, and its place in the line")
        ->type_name("PATTERN")
        ->group(group);
    command.add_flag("--force", force, "Overwrite files that exist")->group(group);
    command.add_option("--format", format, "How results are stored (default: as their names end)")
        ->type_name("png|jpeg|bmp|tga|pnm")
        ->group(group);
    command.add_option("--quality", quality, "Of JPEG, 1 to 100 (default: 85)")
        ->check(CLI::Range(lowestQuality, highestQuality).description(""))
        ->type_name("NUMBER")
        ->group(group);
    command.add_option("--compress", compression, "Of PNG, 0 is fast and 9 small (default: 6)")
        ->check(CLI::Range(0, highestCompression).description(""))
        ->type_name("NUMBER")
        ->group(group);
    CLI::Option& alphaFlag =
        *command.add_flag("--alpha", alpha, "Store alpha in any case (default: where the input has some)")
             ->group(group);
    command.add_flag("--opaque", opaque, "Never store alpha")->excludes(&alphaFlag)->group(group);
    command.add_option("--jobs", jobs, "Files at a time (default: one for each processor)")
        ->check(CLI::Range(1U, mostJobs).description(""))
        ->type_name("NUMBER")
        ->group(group);
    CLI::Option& quietFlag =
        *command.add_flag("--quiet", quiet, "No warnings, and no progress on the terminal")->group(group);
    command.add_flag("--verbose", verbose, "Tell of each file that is written")
        ->excludes(&quietFlag)
        ->group(group);
}

std::vector<Task> tasksFor(const std::vector<std::string>& inputs, const std::string& pattern,
                           const std::map<std::string, std::string>& saves)
{
    std::vector<Task> tasks;
    for (const std::string& input : inputs)
    {
        if (input == standardStream)
            throw Error("standard input is one file, and has no name for many");
        const std::size_t number = tasks.size() + 1;
        Task task{{input}, filledIn(pattern, input, number), {}};
        for (const auto& [variable, path] : saves)
            task.saves[variable] = filledIn(path, input, number);
        tasks.push_back(std::move(task));
    }
    return tasks;
}

bool writesToStandardOutput(const Task& task)
{
    const std::vector<std::string> outputs = outputsOf(task);
    return std::find(outputs.begin(), outputs.end(), standardStream) != outputs.end();
}

void checkOutputs(const std::vector<Task>& tasks, const OutputChoice& choice, bool pictures)
{
    std::ptrdiff_t streams = 0;
    for (const Task& task : tasks)
    {
        if (pictures && !task.output.empty())
            checkFormat(choice, task.output);
        const std::vector<std::string> outputs = outputsOf(task);
        streams += std::count(outputs.begin(), outputs.end(), standardStream);
    }
    if (streams > 1)
        throw Error("standard output takes one result");
    if (streams == 1 && isatty(STDOUT_FILENO) != 0)
        throw Error("standard output is a terminal; lead it elsewhere, such as > out.png");
    checkPlaces(tasks, choice.force);
    if (tasks.size() > 1 || !choice.pattern.empty())
        for (const Task& task : tasks)
            for (const std::string& output : outputsOf(task))
                makeFolder(output);
}

void writePicture(const OutputChoice& choice, const std::string& path, const standin::Picture& picture,
                  const Source* source)
{
    const Format format = formatFor(choice, path);
    const bool keepsAlpha = media::holdsAlpha(format) && !choice.opaque;
    const Image image = keepsAlpha ? imageFor(picture, source, choice.alpha) : script::imageOf(picture);
    const bool sourceHadAlpha = source != nullptr && source->hasAlpha;
    if (!choice.opaque && image.channels == 3 &&
        (sourceHadAlpha || (!keepsAlpha && script::isTranslucent(picture))))
        warn((sourceHadAlpha ? "the alpha of " + source->path : "the alpha") + " is not in " + path + ", " +
                 (keepsAlpha ? reasonAgainstAlpha(picture, *source) : "whose format has none") +
                 "; --opaque drops it without a word",
             choice.quiet);
    media::Encoding encoding;
    encoding.jpegQuality = choice.quality.value_or(encoding.jpegQuality);
    encoding.pngCompression = choice.compression.value_or(encoding.pngCompression);
    const Phase phase("writing " + path, choice.quiet);
    writeBytes(path, media::encoded(image, format, encoding));
    if (choice.verbose)
        std::cerr << path << ": " << image.width << " x " << image.height
                  << (image.channels == 3 ? "" : " with alpha") << "\n";
}

void writeBytes(const std::string& path, std::span<const std::uint8_t> bytes)
{
    if (path != standardStream)
        return standin::writeFile(path, bytes);
    std::cout.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

} // namespace cli
