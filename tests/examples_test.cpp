// The programs that users are shown: each runs, prints what it says, saves what it is to show, and every call
// that it makes gives what the references compute.
#include "fuzz/expect.h"
#include "fuzz/truth.h"
#include "host/file.h"
#include "media/image.h"
#include "script/interpreter.h"
#include "script/parser.h"
#include "tests/reference/waveform.h"
#include "tests/support/small_files.h"
#include "tests/support/test_host.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <set>
#include <sstream>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;
using standin::Value;

struct Example
{
    std::string name;
    std::string text;
    std::vector<std::string> prints; ///< as it says
};

Example exampleIn(const fs::path& file)
{
    Example example{file.stem(), standin::readText(file), {}};
    const std::string mark = "' Prints: ";
    std::istringstream lines{example.text};
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(mark))
            example.prints.push_back(line.substr(mark.size()));
    return example;
}

std::vector<Example> allExamples()
{
    std::vector<Example> examples;
    for (const fs::directory_entry& entry :
         fs::directory_iterator(fs::path{build::sourceDirectory} / "examples"))
        if (entry.path().extension() == ".bas")
            examples.push_back(exampleIn(entry.path()));
    return examples;
}

/// Colours, greys, white and black, none of them anywhere twice in a pattern.
std::vector<std::uint8_t> photograph(int width, int height)
{
    std::vector<std::uint8_t> rgba;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const int channels[] = {2 * x + y, 3 * y + x / 2, x * y / 16 + 7 * (x % 5)};
            const bool grey = x > width * 3 / 4;
            for (const int channel : channels)
                rgba.push_back(static_cast<std::uint8_t>(grey ? channels[0] : channel));
            rgba.push_back(255);
        }
    return rgba;
}

/// A second of a tone that swells, 16 bits, one channel.
std::string sound()
{
    constexpr int rate = 8000;
    Bytes samples;
    for (int i = 0; i < rate; ++i)
        samples.put(static_cast<std::int16_t>(2.0 * i * std::sin(i / 9.0)));
    const auto size = static_cast<std::uint32_t>(samples.content.size());
    return Bytes()
        .text("RIFF")
        .put(36 + size)
        .text("WAVEfmt ")
        .put(std::uint32_t{16})
        .put(std::uint16_t{1})
        .put(std::uint16_t{1})
        .put(std::uint32_t{rate})
        .put(std::uint32_t{2 * rate})
        .put(std::uint16_t{2})
        .put(std::uint16_t{16})
        .text("data")
        .put(size)
        .text(samples.content)
        .content;
}

class Examples : public ArtefactTest
{
protected:
    Examples() : folder(fs::temp_directory_path() / ("pictureqvr-examples-" + std::to_string(getpid())))
    {
        fs::create_directories(folder);
        constexpr int width = 100;
        constexpr int height = 75;
        media::writePng(folder / "photo.png", width, height, photograph(width, height));
        const std::string samples = sound();
        standin::writeFile(folder / "speech.wav",
                           {reinterpret_cast<const std::uint8_t*>(samples.data()), samples.size()});
    }
    ~Examples() override
    {
        fs::remove_all(folder);
    }
    Examples(const Examples&) = delete;
    Examples& operator=(const Examples&) = delete;

    using AfterCall = std::function<void(const Value& result)>;

    /// The lines that the host has been asked to draw.
    static std::size_t drawnLines(const standin::Host& host)
    {
        return static_cast<std::size_t>(
            std::count_if(host.callLog().begin(), host.callLog().end(), [](const std::string& call) {
                return call.starts_with("RuntimeGraphicsDrawLine(");
            }));
    }

    static AfterCall checkOfWaveform(standin::Host& host, const script::PluginCall& call)
    {
        const standin::Arguments& given = call.arguments;
        const auto integer = [&](std::size_t index) { return given.at(index).integer(); };
        reference::WaveformSettings settings;
        settings.sampleCount = integer(1);
        settings.smooth = integer(2);
        settings.width = integer(3);
        settings.height = integer(4);
        settings.outlineWidth = integer(5);
        if (given.size() > 6)
            settings.backColour = given[6].colour();
        if (given.size() > 7)
            settings.foreColour = given[7].colour();
        if (given.size() > 8)
            settings.outlineColour = given[8].colour();
        if (given.size() > 9)
            settings.bits = integer(9);
        if (given.size() > 10)
            settings.autoScale = given[10].boolean();
        host.clearCallLog();
        return [&host, settings,
                wanted = reference::renderWaveform(given.at(0).memoryBlock().bytes(), settings)](
                   const Value& result) {
            fuzz::expect(result.picture().isNil() == !wanted.has_value(), "a waveform, or none, was wanted");
            if (!wanted)
                return;
            fuzz::expect(drawnLines(host) == wanted->lines.size(), "the host was to draw other lines");
            if (settings.outlineWidth <= 1)
                fuzz::expectPicture(wanted->picture, result.picture(), "RenderSamplesQVR");
        };
    }

    /// What the references know of a call; nothing of the filters' tables, which hold what was put into them.
    static AfterCall checkOf(standin::Host& host, const script::PluginCall& call)
    {
        const std::string& name = call.method.declaration.name;
        if (name == "RenderSamplesQVR")
            return checkOfWaveform(host, call);
        if (!call.instance.isNil())
            return name == "Run" ? fuzz::checkOfRun(host, call.instance) : nullptr;
        const fuzz::Call known{host, call.method, call.picture, call.arguments};
        AfterCall check =
            call.assigned != nullptr ? fuzz::checkOfAssignment(known, *call.assigned) : fuzz::checkOf(known);
        EXPECT_TRUE(check != nullptr || call.picture.isNil()) << "there is no reference for " << name;
        return check;
    }

    struct Run
    {
        std::vector<std::string> printed;
        std::set<std::string> saved;  ///< the files' names
        std::set<std::string> called; ///< names of methods, and of classes whose methods are
        int checks = 0;               ///< calls that were compared
        bool watched = false;         ///< whether they are to be
        /// What the references have found right: results of calls, and what calls have changed.
        std::vector<reference::Picture> right;
        std::set<std::string> notRight; ///< files with a picture that is none of these
    };

    /// Keeps the pictures that a call has given or changed.
    static void keepRight(const script::PluginCall& call, const Value& result, Run& run)
    {
        const auto keep = [&run](const standin::Picture& picture) {
            if (!picture.isNil())
                run.right.push_back(reference::opaque(reference::download(picture)));
        };
        keep(call.picture);
        if (std::holds_alternative<standin::Picture>(result.held()))
            keep(result.picture());
        if (!call.instance.isNil() && call.method.declaration.name == "Run")
            keep(call.instance.get("DestinationPicture").picture());
    }

    static bool isRight(const media::Image& image, const Run& run)
    {
        reference::Picture saved(image.width, image.height);
        const auto channels = static_cast<std::size_t>(image.channels);
        for (std::size_t index = 0; index < saved.pixels.size(); ++index)
        {
            const std::uint8_t* next = image.bytes.data() + index * channels;
            saved.pixels[index] = {next[0], next[1], next[2]};
        }
        return std::find(run.right.begin(), run.right.end(), saved) != run.right.end();
    }

    /// With its calls compared, on a host whose new pictures show what stays unwritten.
    Run compared(const Example& example) const
    {
        Run result;
        TestHost host{hostSetup(artefact()).logged()};
        result.watched = true;
        run(example, host, result);
        host.expectBalanced(example.name);
        return result;
    }

    /// On a host whose new pictures are white, as users have it.
    Run asUsersDo(const Example& example) const
    {
        Run result;
        HostSetup setup = hostSetup(artefact());
        setup.options.freshFill = standin::Options().freshFill;
        setup.options.memory = standin::Memory::Plain;
        TestHost host{setup};
        run(example, host, result);
        return result;
    }

    void run(const Example& example, TestHost& host, Run& result) const
    {
        script::Environment environment;
        environment.arguments = {example.name, "3"};
        environment.path = [&](const std::string& name) {
            if (name == "photo.jpg")
                return (folder / "photo.png").string();
            if (name != "speech.wav")
                result.saved.insert(name);
            return (folder / name).string();
        };
        environment.print = [&](const std::string& line) { result.printed.push_back(line); };
        environment.watch = [&](const script::PluginCall& call) -> AfterCall {
            result.called.insert(call.instance.isNil() ? call.method.declaration.name
                                                       : call.instance.definition().name);
            AfterCall check = result.watched ? checkOf(host, call) : nullptr;
            if (!check)
                return nullptr;
            return [&result, &call, check = std::move(check)](const Value& value) {
                check(value);
                ++result.checks;
                keepRight(call, value, result);
            };
        };
        if (result.watched)
            environment.saveImage = [&](const std::string& path, const media::Image& image) {
                if (!isRight(image, result))
                    result.notRight.insert(fs::path(path).filename());
            };
        try
        {
            script::run(script::parseProgram(example.text, example.name), host, environment);
        }
        catch (const std::exception& error)
        {
            ADD_FAILURE() << error.what();
        }
    }

    /// What has a page, and needs an example.
    static std::set<std::string> namesOfThePlugIn()
    {
        const TestHost host{hostSetup(artefact())};
        std::set<std::string> names;
        for (const standin::RegisteredClass& extension : host.registered().extensions)
            for (const standin::RegisteredMethod& method : extension.methods)
                names.insert(method.declaration.name);
        for (const standin::RegisteredMethod& method : host.registered().globals)
            names.insert(method.declaration.name);
        for (const standin::RegisteredClass& definition : host.registered().classes)
            names.insert(definition.name);
        return names;
    }

    const fs::path folder;
};
ON_EVERY_ARTEFACT(Examples);

TEST_P(Examples, DoWhatTheySay)
{
    std::set<std::string> missing = namesOfThePlugIn();
    std::set<std::string> notRight;
    int checks = 0;
    for (const Example& example : allExamples())
    {
        SCOPED_TRACE(example.name);
        const Run outcome = compared(example);
        EXPECT_GT(outcome.checks, 0) << "nothing of the plug-in was called";
        notRight.insert(outcome.notRight.begin(), outcome.notRight.end());
        checks += outcome.checks;
        if (missing.erase(example.name) != 0)
            EXPECT_TRUE(outcome.called.contains(example.name)) << "what it is about is not called";

        // What is printed and saved is no matter of memory.
        if (sanitized)
            continue;
        const Run shown = asUsersDo(example);
        EXPECT_EQ(shown.printed, example.prints);
        EXPECT_TRUE(example.text.starts_with("' Shows: ")) << "a first line that says what is shown";
        EXPECT_TRUE(!shown.saved.empty() || !shown.printed.empty()) << "nothing is shown";
        for (const std::string& name : shown.saved)
        {
            EXPECT_TRUE(name.starts_with(example.name)) << name << " is of another example";
            EXPECT_GT(media::readImage(folder / name, 4).width, 0) << name;
        }
    }
    EXPECT_THAT(missing, testing::IsEmpty()) << "methods and classes without an example";
    EXPECT_GT(checks, 100);
    const std::set<std::string> painted{
        "CountColorQVR.png",     "CountColorsQVR.png",    "ExtractColorRectangleMaskQVR-before.png",
        "FindPictureQVR.png",    "HasMaskQVR-before.png", "ScrollQVR-before.png",
        "guide-mask-before.png", "slider-threshold.png",  "slider-tolerance.png"};
    EXPECT_EQ(notRight, painted) << "what is saved and no call has given, but what programs paint themselves";
}

} // namespace
