#include "cli/commands.h"
#include "cli/demo_catalogue.h"
#include "cli/demo_page.h"
#include "cli/demo_run.h"
#include "host/file.h"
#include "host/names.h"
#include "script/files.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace cli
{

using media::Image;
using standin::Error;

namespace
{

/// What a user asks for with `pictureqvr demo`.
struct DemoRequest
{
    std::string photo = "/usr/share/backgrounds/mate/nature/LadyBird.jpg";
    std::string sound = "/usr/share/sounds/alsa/Front_Center.wav";
    std::string source; ///< where examples/ and docs/reference/index.md are; empty: in the program
    std::string folder;
};

constexpr int largestWidth = 800;

using Colour = std::array<double, 3>;

/// As bright as the eye finds it.
double brightnessOf(const Colour& colour)
{
    return 0.299 * colour[0] + 0.587 * colour[1] + 0.114 * colour[2];
}

/// A picture in words. What is on it nobody knows: the photograph is the user's.
std::string inWords(const Colour& colour, const Colour& photo)
{
    constexpr double much = 25;
    const double difference = brightnessOf(colour) - brightnessOf(photo);
    std::ostringstream text;
    text << "On average red " << std::lround(colour[0]) << ", green " << std::lround(colour[1]) << ", blue "
         << std::lround(colour[2]) << "; ";
    if (std::abs(difference) < 1)
        text << "as light as";
    else
        text << (std::abs(difference) < much ? "a little " : "much ")
             << (difference > 0 ? "lighter" : "darker") << " than";
    return text.str() + " the photograph";
}

class Demo
{
public:
    Demo(const HostChoice& choice, const DemoRequest& demoRequest)
        : request(demoRequest),
          folder(request.folder),
          options(choice.options()),
          host(options)
    {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error)
            throw Error("cannot make the folder " + folder.string() + ": " + error.message());
        std::cerr << "Preparing " << request.photo << "\n";
        constexpr int rgba = 4;
        inputs = {media::readImage(request.photo, rgba), request.sound, choice.storage};
        constexpr int smallest = 64;
        if (inputs.photo.width < smallest || inputs.photo.height < smallest)
            throw Error(request.photo + ": the demo needs a photograph of at least 64 x 64 pixels");
        // Programs that open the sound tell where they do, but not before the others have run.
        script::loadBlock(host, request.sound);
        page.photo = request.photo;
        page.original = shown("photo.jpg", inputs.photo, "original");
        page.original.alternative = "The photograph, unchanged";
        page.artefact =
            options.artefact == standin::Artefact::MacBundle ? "Mac bundle" : "Linux shared object";
        page.largestWidth = largestWidth;
    }

    void run()
    {
        const std::vector<Family> families = readFamilies(request.source);
        for (const Family& family : families)
            total += family.names.size();
        for (const Family& family : families)
        {
            page.families.push_back({family.title, {}});
            for (const std::string& name : family.names)
                page.families.back().cards.push_back(cardOf(name));
        }
        finish();
    }

private:
    /// Tells how it went; what fails has a card too.
    Card cardOf(const std::string& name)
    {
        std::cerr << "[" << std::setw(2) << ++number << "/" << total << "] " << name << std::flush;
        Card card;
        card.name = name;
        try
        {
            const Example example = readExample(request.source, name);
            card.shows = example.shows;
            card.code = example.code;
            run(card, example);
            standin::CallTimes sum;
            for (const TimedCall& call : card.outcome.calls)
            {
                sum.plugin += call.times.plugin;
                sum.host += call.times.host;
            }
            std::cerr << "  plug-in " << timeText(sum.plugin) << ", host " << timeText(sum.host) << "\n";
        }
        catch (const Error& error)
        {
            std::cerr << "  FAILED: " << error.what() << "\n";
            ++failures;
            card.failure = error.what();
        }
        return card;
    }

    void run(Card& card, const Example& example)
    {
        card.outcome =
            runExample(host, inputs, card.name, example, [&](const std::string& name, const Image& image) {
                const std::string stem = std::filesystem::path(name).stem().string();
                card.pictures.push_back(
                    shown(name, image, stem.starts_with(card.name) ? stem : card.name + "-" + stem));
            });
        const std::string before = card.name + "-before.";
        const bool startsElsewhere =
            std::any_of(card.pictures.begin(), card.pictures.end(),
                        [&](const Shown& picture) { return picture.caption.starts_with(before); });
        if (card.outcome.opensPhoto && !startsElsewhere)
        {
            card.pictures.insert(card.pictures.begin(), page.original);
            card.pictures.front().alternative = "The photograph before";
        }
    }

    /// Saves a picture so that it can be shown: as it is while it is small, else scaled down.
    Shown shown(const std::string& name, const Image& image, const std::string& stem)
    {
        const Image flat = image.channels == 4 ? media::overChequers(image) : image;
        const bool large = image.width > largestWidth;
        const int width = std::min(image.width, largestWidth);
        const auto height = std::max(1, static_cast<int>(std::int64_t{image.height} * width / image.width));
        const Image copy = media::scaled(flat, width, height);
        const std::string file = stem + (large ? ".jpg" : ".png");
        media::writeImage((folder / file).string(), copy);
        const Colour average = media::averageOf(copy);
        if (!photoAverage)
            photoAverage = average;
        return {file, width, height, image.width, image.height, name, inWords(average, *photoAverage)};
    }

    /// Whether there is a card with a result.
    bool isShown(const std::string& name) const
    {
        for (const CardFamily& family : page.families)
            for (const Card& card : family.cards)
                if (standin::sameName(card.name, name) && card.failure.empty())
                    return true;
        return false;
    }

    void finish()
    {
        std::size_t methods = 0;
        const auto look = [&](const std::vector<standin::RegisteredMethod>& registered) {
            methods += registered.size();
            for (const auto& method : registered)
                if (!isShown(method.declaration.name))
                    page.missing.push_back(method.text);
        };
        for (const auto& extension : host.registered().extensions)
            look(extension.methods);
        look(host.registered().globals);
        const std::size_t methodsShown = methods - page.missing.size();
        const std::size_t classes = host.registered().classes.size();
        std::size_t classesShown = 0;
        for (const auto& definition : host.registered().classes)
            if (isShown(definition.name))
                ++classesShown;
            else
                page.missing.push_back("Class " + definition.name);
        page.summary = std::to_string(methodsShown) + " of " + std::to_string(methods) + " methods and " +
                       std::to_string(classesShown) + " of " + std::to_string(classes) + " classes";
        const std::string html = htmlOf(page);
        standin::writeFile((folder / "index.html").string(), script::bytesOf(html));
        for (const std::string& declaration : page.missing)
            std::cerr << "Not shown: " << declaration << "\n";
        std::cerr << "Shown: " << page.summary << ".\n";
        if (failures != 0)
            throw Error(std::to_string(failures) + " of " + std::to_string(total) + " examples failed");
        checkLedger(host);
    }

    const DemoRequest& request;
    std::filesystem::path folder;
    standin::Options options;
    standin::Host host;
    DemoInputs inputs;
    DemoPage page;
    std::optional<Colour> photoAverage;
    std::size_t number = 0;
    std::size_t total = 0;
    int failures = 0;
};

} // namespace

void addDemo(CLI::App& app, const HostChoice& choice)
{
    const auto request = std::make_shared<DemoRequest>();
    CLI::App& command =
        *app.add_subcommand("demo", "Run every example on a photograph and write a page of the results");
    command.add_option("--photo", request->photo, "The photograph")->type_name("FILE")->capture_default_str();
    command.add_option("--sound", request->sound, "The sound (.wav, 16-bit PCM)")
        ->type_name("FILE")
        ->capture_default_str();
    command
        .add_option(
            "--source", request->source,
            "A project, with examples/ and docs/reference/index.md (default: the examples it was built with)")
        ->type_name("DIR");
    command.add_option("--out", request->folder, "Folder that gets index.html")->type_name("DIR")->required();
    command.callback([request, &choice] { Demo(choice, *request).run(); });
}

} // namespace cli
