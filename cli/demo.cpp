#include "cli/demo.h"

#include "cli/demo_samples.h"
#include "host/file.h"
#include "script/files.h"
#include "script/interpreter.h"
#include "script/parser.h"

#include <kainjow/mustache.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <map>
#include <set>
#include <sstream>

#include "build_info.h"
#include "demo_page.h"

namespace cli
{

using kainjow::mustache::data;
using standin::Error;
using standin::Picture;
using standin::Pixel;
using standin::Type;
using standin::Value;

namespace
{

constexpr int displayWidth = 800;
constexpr int levels = 256;

using Clock = std::chrono::steady_clock;

/// Whole pixels of a picture, by a function of x and y.
template <class Function>
void paint(Picture& picture, Function pixelAt)
{
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, pixelAt(x, y));
}

bool insideDisc(int x, int y, int centreX, int centreY, int radius)
{
    const std::int64_t dx = x - centreX;
    const std::int64_t dy = y - centreY;
    return dx * dx + dy * dy <= std::int64_t{radius} * radius;
}

/// What the samples work on, by name.
class Things
{
public:
    Things(standin::Host& standinHost, const DemoRequest& request, std::optional<standin::Storage> storage)
        : host(standinHost)
    {
        const Picture photo = script::loadPicture(host, request.photo, storage);
        constexpr int smallest = 64;
        if (photo.width() < smallest || photo.height() < smallest)
            throw Error(request.photo + ": the demo needs a photograph of at least 64 x 64 pixels");
        values["photo"] = photo;
        values["mirrored"] =
            derived(photo, [&](int x, int y) { return photo.pixel(photo.width() - 1 - x, y); });
        values["page"] = page(photo);
        values["disc"] = disc(photo, 255);
        Picture masked = photo.clone();
        // To the host a mask's black is opaque.
        masked.setMask(disc(photo, 0));
        values["masked"] = masked;
        values["crop"] = part(photo, photo.width() * 5 / 8, photo.height() * 3 / 8, photo.width() / 6,
                              photo.height() / 4, 1);
        const int step = std::max(1, photo.width() / 320);
        values["small"] = part(photo, 0, 0, photo.width() / step, photo.height() / step, step);
        values["sound"] = script::loadBlock(host, request.sound);
        const auto curve = [](int level) {
            const double x = level / 255.0;
            return static_cast<int>(std::lround(255 * x * x * (3 - 2 * x)));
        };
        values["curve"] = table(curve);
        values["negative"] = table([](int level) { return levels - 1 - level; });
        values["identity"] = table([](int level) { return level; });
    }

    const Value& operator[](const std::string& name) const
    {
        const auto found = values.find(name);
        if (found == values.end())
            throw Error("the demo has no \"" + name + "\"");
        return found->second;
    }

    void keep(const std::string& name, Value value)
    {
        values[name] = std::move(value);
    }

private:
    template <class Function>
    static Picture derived(const Picture& picture, Function pixelAt)
    {
        Picture result = picture.clone();
        paint(result, pixelAt);
        return result;
    }

    /// White paper with cut-outs of the photograph: coloured ones on the left, grey ones on the right.
    static Picture page(const Picture& photo)
    {
        const int width = photo.width();
        const int height = photo.height();
        const int unit = std::min(width, height) / 8;
        const auto covered = [=](int x, int y) {
            const int column = x % (width / 2);
            return insideDisc(column, y, width / 8, height / 3, unit) ||
                   insideDisc(column, y, width * 3 / 8, height * 2 / 3, unit * 3 / 2) ||
                   (column > width / 16 && column < width / 5 && y > height * 3 / 5 && y < height * 4 / 5) ||
                   (column > width * 3 / 10 && column < width * 7 / 16 && y > height / 6 && y < height / 3);
        };
        return derived(photo, [&](int x, int y) -> Pixel {
            if (!covered(x, y))
                return {255, 255, 255, 255};
            Pixel pixel = photo.pixel(x, y);
            // Only the paper is to be white.
            pixel.green = std::min<std::uint8_t>(pixel.green, 254);
            if (x >= width / 2)
                pixel.red = pixel.blue = pixel.green;
            return pixel;
        });
    }

    static Picture disc(const Picture& photo, std::uint8_t inside)
    {
        const auto outside = static_cast<std::uint8_t>(levels - 1 - inside);
        const int width = photo.width();
        const int height = photo.height();
        return derived(photo, [=](int x, int y) -> Pixel {
            const std::uint8_t level =
                insideDisc(x, y, width / 2, height / 2, std::min(width, height) * 2 / 5) ? inside : outside;
            return {level, level, level, 255};
        });
    }

    Picture part(const Picture& photo, int left, int top, int width, int height, int step)
    {
        Picture result = host.newPicture(width, height);
        paint(result, [&](int x, int y) { return photo.pixel(left + x * step, top + y * step); });
        return result;
    }

    template <class Function>
    standin::MemoryBlock table(Function levelOf)
    {
        standin::MemoryBlock block = host.newMemoryBlock(levels);
        for (int level = 0; level < levels; ++level)
            block.data()[level] = static_cast<std::uint8_t>(levelOf(level));
        return block;
    }

    standin::Host& host;
    std::map<std::string, Value> values;
};

/// A picture as the host would draw it over a chequered ground.
media::Image overChequers(const Picture& picture)
{
    constexpr int fieldsAcross = 40;
    media::Image image = script::imageOf(picture);
    const int field = std::max(1, picture.width() / fieldsAcross);
    const Picture mask = picture.mask();
    std::uint8_t* bytes = image.bytes.data();
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
        {
            const int opacity = mask.isNil() ? picture.pixel(x, y).alpha : levels - 1 - mask.pixel(x, y).red;
            const int ground = (x / field + y / field) % 2 == 0 ? 200 : 235;
            for (int channel = 0; channel < image.channels; ++channel, ++bytes)
                *bytes = static_cast<std::uint8_t>((*bytes * opacity + ground * (255 - opacity)) / 255);
        }
    return image;
}

/// Three histograms as curves over each other.
std::string histogramChart(const std::vector<standin::MemoryBlock>& blocks)
{
    constexpr const char* colours[] = {"#e5484d", "#30a46c", "#3e63dd"};
    constexpr double height = 120;
    int highest = 1;
    for (const auto& block : blocks)
        // The ends are often clipped, and would flatten everything between them.
        for (int level = 1; level < levels - 1; ++level)
            highest = std::max(highest, block.int32(level));
    std::ostringstream svg;
    svg << R"(<svg viewBox="0 0 255 )" << height << R"(" preserveAspectRatio="none" role="img">)";
    for (std::size_t index = 0; index < blocks.size(); ++index)
    {
        svg << R"(<path fill=")" << colours[index] << R"(" stroke=")" << colours[index] << R"(" d="M0 )"
            << height;
        for (int level = 0; level < levels; ++level)
            svg << " L" << level << ' ' << std::setprecision(4)
                << height * (1 - std::min(1.0, static_cast<double>(blocks[index].int32(level)) / highest));
        svg << " L255 " << height << R"( Z"/>)";
    }
    svg << "</svg>";
    return svg.str();
}

std::string fixed(double number, int digits)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << number;
    return text.str();
}

double pixelCount(const Picture& picture)
{
    return static_cast<double>(picture.width()) * picture.height();
}

/// "3.1 ms", and the pixels a second where a picture was walked.
std::string timeText(Clock::duration time, double pixels)
{
    const double milliseconds = std::chrono::duration<double, std::milli>(time).count();
    std::string text = fixed(milliseconds, milliseconds < 10 ? 2 : 1) + " ms";
    if (pixels > 0 && milliseconds > 0)
        text += " · " + fixed(pixels / milliseconds / 1000, 0) + " Mpixel/s";
    return text;
}

/// The photograph's pieces carry no "@" in the host's language.
std::string shownCall(std::string call)
{
    std::erase(call, '@');
    return call;
}

class Demo
{
public:
    Demo(const HostChoice& choice, const DemoRequest& request)
        : folder(request.folder),
          options(choice.options()),
          host(options)
    {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error)
            throw Error("cannot make the folder " + folder.string() + ": " + error.message());
        std::cerr << "Preparing " << request.photo << "\n";
        things.emplace(host, request, choice.storage);
        photo = (*things)["photo"].picture();
        page.set("photo", request.photo);
        page.set("original", save(script::imageOf(photo), "original"));
        page.set("width", std::to_string(photo.width()));
        page.set("height", std::to_string(photo.height()));
        page.set("emptyTime", timeText(timeOfEmptyPicture(), 0));
        page.set("version", build::version);
        page.set("artefact",
                 options.artefact == standin::Artefact::MacBundle ? "Mac bundle" : "Linux shared object");
    }

    void run()
    {
        const auto samples = demoSamples(photo.width(), photo.height());
        const auto filters = demoFilters();
        total = samples.size() + filters.size();
        for (const Sample& sample : samples)
            show(sample.family, sample.receiver, shownCall(sample.call), [&] { return cardOf(sample); });
        for (const FilterSample& sample : filters)
            show("Filter classes", "", sample.className, [&] { return cardOf(sample); });
        write();
    }

private:
    template <class MakeCard>
    void show(const std::string& family, const std::string& receiver, const std::string& call,
              MakeCard makeCard)
    {
        if (families.empty() || families.back().first != family)
            families.emplace_back(family, data::type::list);
        ++number;
        const std::string title = receiver.empty() ? call : receiver + "." + call;
        std::cerr << "[" << std::setw(2) << number << "/" << total << "] " << std::flush;
        try
        {
            data card = makeCard();
            std::cerr << title << "  " << card.get("time")->string_value() << "\n";
            families.back().second << card;
        }
        catch (const Error& error)
        {
            std::cerr << title << "  FAILED: " << error.what() << "\n";
            ++failures;
            data card;
            card.set("call", title);
            card.set("caption", std::string("This call failed: ") + error.what());
            families.back().second << card;
        }
    }

    data cardOf(const Sample& sample)
    {
        const script::Program program = script::parseCall(sample.call);
        const bool onPicture = !sample.receiver.empty();
        Picture receiver;
        if (onPicture)
        {
            const Picture original = (*things)[sample.receiver].picture();
            receiver = original;
            if (sample.shows != Shows::Result)
            {
                receiver = original.clone();
                if (const Picture mask = original.mask())
                    receiver.setMask(mask.clone());
            }
        }

        script::CallContext context{"", nullptr, reader()};
        if (onPicture)
            context.receiver = receiver;
        const auto start = Clock::now();
        const script::CallOutcome outcome = script::call(program, host, {}, context);
        const auto time = Clock::now() - start;
        shown.insert(outcome.method);

        const Type type = outcome.type;
        const Value& result = outcome.result;
        if (result.isNil() && (type == Type::Picture || type == Type::String))
            throw Error(outcome.name + " gave nil");
        if (!sample.keepAs.empty())
            things->keep(sample.keepAs, sample.shows == Shows::Result ? result : Value(receiver));

        data card;
        const std::string target = onPicture ? sample.receiver + "." : "";
        const std::string kept =
            sample.keepAs.empty() || sample.shows != Shows::Result ? "" : sample.keepAs + " = ";
        card.set("call", kept + target + shownCall(sample.call));
        card.set("caption", sample.caption);
        data values{data::type::list};
        if (type != Type::Picture && type != Type::Nothing)
            values << data{"value", result.describe()};
        std::vector<standin::MemoryBlock> blocks;
        for (const script::NamedValue& variable : outcome.variables)
            if (std::holds_alternative<standin::MemoryBlock>(variable.value.held()))
                blocks.push_back(variable.value.memoryBlock());
            else
                values << data{"value", variable.name + " = " + variable.value.describe()};
        card.set("values", values);
        if (!blocks.empty())
            card.set("chart", histogramChart(blocks));

        Picture picture = type == Type::Picture ? result.picture() : Picture();
        if (!sample.alsoShow.empty())
            picture = (*things)[sample.alsoShow].picture();
        if (sample.shows != Shows::Result)
            picture = receiver;
        if (!picture.isNil())
            card.set("image", save(sample.shows == Shows::ReceiverWithAlpha ? overChequers(picture)
                                                                            : script::imageOf(picture),
                                   outcome.name));
        const Picture walked = onPicture ? receiver : type == Type::Picture ? picture : Picture();
        // A test that ends at the first pixel has no rate to speak of.
        const bool wholePicture =
            !walked.isNil() && (type != Type::Boolean || sample.shows == Shows::Receiver);
        card.set("time", timeText(time, wholePicture ? pixelCount(walked) : 0));
        return card;
    }

    data cardOf(const FilterSample& sample)
    {
        standin::Instance instance = host.newInstance(sample.className);
        const script::CallContext context{"filter", instance, reader()};
        std::string code = "filter = New " + sample.className + "\n";
        for (const std::string& setting : sample.settings)
        {
            script::call(script::parseCall(setting), host, {}, context);
            code += "filter." + setting + "\n";
        }
        if (sample.table)
        {
            fillTable(instance, sample.table);
            code += "filter.Table(r, g, b, 0 .. 2) = " + sample.tableText + "\n";
        }
        instance.set("SourcePicture", photo);
        code += "filter.SourcePicture = photo\nfilter.Run";

        const auto start = Clock::now();
        const bool done = instance.call("Run").boolean();
        const auto time = Clock::now() - start;
        const Picture result = instance.get("DestinationPicture").picture();
        if (!done || result.isNil())
            throw Error(sample.className + ".Run gave false");
        shownClasses.insert(instance.definition().name);

        data card;
        card.set("call", code);
        card.set("caption", sample.caption);
        card.set("image", save(script::imageOf(result), sample.className));
        card.set("time", timeText(time, pixelCount(result)));
        return card;
    }

    /// Calls find the demo's things where others find files.
    script::FileReader reader() const
    {
        return [this](const std::string& name, Type) { return (*things)[name]; };
    }

    static void fillTable(standin::Instance& instance, const std::function<Colour(Colour)>& colourOf)
    {
        constexpr int nodes = 16;
        constexpr int step = 17;
        for (int r = 0; r < nodes; ++r)
            for (int g = 0; g < nodes; ++g)
                for (int b = 0; b < nodes; ++b)
                {
                    const Colour colour = colourOf({step * 1.0 * r, step * 1.0 * g, step * 1.0 * b});
                    for (int x = 0; x < 3; ++x)
                        instance.assign("Table", {r, g, b, x}, colour[static_cast<std::size_t>(x)]);
                }
    }

    /// What the host needs to make a picture of the photograph's size, as far as it can be told.
    Clock::duration timeOfEmptyPicture()
    {
        constexpr int tries = 5;
        auto best = Clock::duration::max();
        for (int attempt = 0; attempt < tries; ++attempt)
        {
            const auto start = Clock::now();
            host.newPicture(photo.width(), photo.height());
            best = std::min(best, Clock::now() - start);
        }
        return best;
    }

    /// Saves a picture small enough to be shown; gives its name.
    std::string save(const media::Image& image, const std::string& name)
    {
        std::ostringstream file;
        file << std::setfill('0') << std::setw(2) << number << "-" << name << ".jpg";
        const int width = std::min(image.width, displayWidth);
        const auto height = static_cast<int>(std::int64_t{image.height} * width / image.width);
        media::writeImage(folder / file.str(), media::scaled(image, width, std::max(1, height)));
        return file.str();
    }

    /// Names of everything registered that no sample has shown.
    std::vector<std::string> unseen() const
    {
        std::vector<std::string> names;
        const auto look = [&](const std::vector<standin::RegisteredMethod>& methods) {
            for (const auto& method : methods)
                if (!shown.contains(&method))
                    names.push_back(method.text);
        };
        for (const auto& extension : host.registered().extensions)
            look(extension.methods);
        look(host.registered().globals);
        for (const auto& definition : host.registered().classes)
            if (!shownClasses.contains(definition.name))
                names.push_back("Class " + definition.name);
        return names;
    }

    void write()
    {
        data list{data::type::list};
        for (std::size_t index = 0; index < families.size(); ++index)
        {
            data family;
            family.set("name", families[index].first);
            family.set("anchor", "family-" + std::to_string(index + 1));
            family.set("cards", families[index].second);
            list << family;
        }
        page.set("families", list);
        const auto missing = unseen();
        data missingList{data::type::list};
        for (const std::string& name : missing)
        {
            std::cerr << "No sample: " << name << "\n";
            missingList << data{"declaration", name};
        }
        page.set("missing", missingList);
        page.set("anyMissing", !missing.empty());
        std::size_t registered = host.registered().globals.size();
        for (const auto& extension : host.registered().extensions)
            registered += extension.methods.size();
        const std::string summary = std::to_string(shown.size()) + " of " + std::to_string(registered) +
                                    " methods and " + std::to_string(shownClasses.size()) + " of " +
                                    std::to_string(host.registered().classes.size()) + " classes";
        page.set("summary", summary);

        kainjow::mustache::mustache pageTemplate{demoPage};
        const std::string html = pageTemplate.render(page);
        if (!pageTemplate.is_valid())
            throw Error("the page's template is wrong: " + pageTemplate.error_message());
        standin::writeFile(folder / "index.html", script::bytesOf(html));
        std::cerr << "Shown: " << summary << ".\n";
        if (failures != 0)
            throw Error(std::to_string(failures) + " of " + std::to_string(total) + " samples failed");
        checkLedger(host);
    }

    std::filesystem::path folder;
    standin::Options options;
    standin::Host host;
    std::optional<Things> things;
    Picture photo;
    data page;
    std::vector<std::pair<std::string, data>> families;
    std::set<const standin::RegisteredMethod*> shown;
    std::set<std::string> shownClasses;
    std::size_t number = 0;
    std::size_t total = 0;
    int failures = 0;
};

} // namespace

void demo(const HostChoice& choice, const DemoRequest& request)
{
    Demo(choice, request).run();
}

} // namespace cli
