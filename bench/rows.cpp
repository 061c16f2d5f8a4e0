#include "bench/rows.h"

#include "bench/shapes.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <random>

namespace bench
{

namespace
{

using standin::Arguments;
using standin::Picture;
using standin::Pixel;
using standin::Value;

constexpr Pixel black{0, 0, 0, 255};
constexpr Pixel white{255, 255, 255, 255};
constexpr Pixel grey{128, 128, 128, 255};

/// What a run has to touch in memory, in pictures of the workshop's size.
struct Traffic
{
    int sources = 1;
    int results = 1;
};

double bytesMoved(const Workshop& workshop, Traffic traffic, double pixels)
{
    return pixels * (traffic.sources * workshop.sourceBytes() + traffic.results * workshop.resultBytes());
}

/// How a call's result must look, so that nothing is timed that did not happen.
enum class Expect
{
    Anything,
    Something, ///< not nil
    True
};

void check(const Value& result, Expect expected)
{
    if (expected == Expect::Something && result.isNil())
        throw standin::Error("the result is nil");
    if (expected == Expect::True && !result.boolean())
        throw standin::Error("the result is false");
}

/// The pixels as peers get and give them.
Bytes bytesOf(const Picture& picture)
{
    Bytes bytes;
    const auto size =
        static_cast<std::size_t>(picture.width()) * static_cast<std::size_t>(picture.bytesPerPixel());
    bytes.reserve(size * static_cast<std::size_t>(picture.height()));
    for (int y = 0; y < picture.height(); ++y)
        bytes.insert(bytes.end(), picture.row(y), picture.row(y) + size);
    return bytes;
}

template <class Number>
Bytes bytesOf(const std::vector<Number>& numbers)
{
    const auto* first = reinterpret_cast<const std::uint8_t*>(numbers.data());
    return Bytes(first, first + numbers.size() * sizeof(Number));
}

/// A call's result as peers give it: a picture's pixels, or a number of 32 bits.
Bytes bytesOf(const Value& value)
{
    if (std::holds_alternative<Picture>(value.held()))
        return bytesOf(value.picture());
    const bool truth = std::holds_alternative<bool>(value.held());
    return bytesOf(std::vector<std::int32_t>{truth ? std::int32_t{value.boolean()} : value.integer()});
}

/// A job whose run makes a value, which is given back outside of the timing.
template <class Make>
Job makingJob(Make make, Expect expected, double items, double bytes)
{
    auto result = std::make_shared<Value>();
    Job job;
    job.result = result;
    job.run = [make, result] { *result = make(); };
    job.reset = [result, expected] {
        check(*result, expected);
        *result = Value();
    };
    job.items = items;
    job.bytes = bytes;
    return job;
}

/// Calls a method of a picture.
Job callJob(Workshop& workshop, const Picture& self, const std::string& method, const Arguments& arguments,
            Traffic traffic = {}, Expect expected = Expect::Something)
{
    workshop.noteUse(method, arguments.size());
    const double pixels = static_cast<double>(self.width()) * self.height();
    return makingJob(
        [&workshop, self, method, arguments] { return workshop.host.call(self, method, arguments); },
        expected, pixels, bytesMoved(workshop, traffic, pixels));
}

Job globalJob(Workshop& workshop, const std::string& method, const Arguments& arguments, double items,
              double bytes)
{
    workshop.noteUse(method, arguments.size());
    return makingJob([&workshop, method, arguments] { return workshop.host.callGlobal(method, arguments); },
                     Expect::Something, items, bytes);
}

/// Lets peers do the same to a picture, and others of its size.
Job askPeers(Job job, const std::vector<Picture>& pictures, const nlohmann::json& settings = {})
{
    Question question;
    question.width = pictures.front().width();
    question.height = pictures.front().height();
    for (const Picture& picture : pictures)
        question.inputs.emplace_back([picture] { return bytesOf(picture); });
    if (!settings.is_null())
        question.settings = settings;
    job.question = question;
    job.answer = [run = job.run, reset = job.reset, result = job.result] {
        run();
        Bytes bytes = bytesOf(*result);
        reset();
        return bytes;
    };
    return job;
}

/// The same where a result is wrong that is not exact to the last byte.
Job askPeersExactly(Job job, const std::vector<Picture>& pictures, const nlohmann::json& settings = {})
{
    Job asked = askPeers(std::move(job), pictures, settings);
    asked.question->colorsOnly = false;
    return asked;
}

using Prepare = std::function<Job(Workshop&)>;

/// A method of the photograph that makes a new picture.
Prepare fromPhoto(const std::string& method, const Arguments& arguments = {},
                  const nlohmann::json& settings = {})
{
    return [=](Workshop& workshop) {
        return askPeers(callJob(workshop, workshop.photo(), method, arguments), {workshop.photo()}, settings);
    };
}

/// A method of the photograph that only reads.
Prepare readsPhoto(const std::string& method, const Arguments& arguments = {})
{
    return [=](Workshop& workshop) { return callJob(workshop, workshop.photo(), method, arguments, {1, 0}); };
}

/// The middle of a picture, three quarters of each side, off the alignment of vectors.
struct Middle
{
    explicit Middle(const Workshop& workshop)
        : left(workshop.width / 8 | 1),
          top(workshop.height / 8),
          width(workshop.width * 3 / 4),
          height(workshop.height * 3 / 4)
    {
    }

    Arguments arguments() const
    {
        return {left, top, width, height};
    }

    int left;
    int top;
    int width;
    int height;
};

/// Limits a job to the rectangle that its method was given.
Job overMiddle(const Workshop& workshop, Job job)
{
    const Middle middle(workshop);
    const double share = static_cast<double>(middle.width) * middle.height / job.items;
    job.items *= share;
    job.bytes *= share;
    return job;
}

Prepare fromMiddleOfPhoto(const std::string& method)
{
    return [=](Workshop& workshop) {
        return overMiddle(workshop,
                          callJob(workshop, workshop.photo(), method, Middle(workshop).arguments()));
    };
}

/// A test that must look at every pixel of a picture, since all of them pass.
template <class Shade>
Prepare passesEverywhere(const std::string& method, Shade shade, int tolerance = 0)
{
    return [=](Workshop& workshop) {
        const Picture picture = workshop.paint(shade);
        Arguments arguments;
        if (tolerance != 0)
            arguments.emplace_back(tolerance);
        return askPeersExactly(callJob(workshop, picture, method, arguments, {1, 0}, Expect::True), {picture},
                               {{"tolerance", tolerance}});
    };
}

template <class Shade>
Prepare passesInMiddle(const std::string& method, Shade shade, const Arguments& leading = {})
{
    return [=](Workshop& workshop) {
        Arguments arguments = leading;
        for (const Value& side : Middle(workshop).arguments())
            arguments.push_back(side);
        return overMiddle(workshop,
                          callJob(workshop, workshop.paint(shade), method, arguments, {1, 0}, Expect::True));
    };
}

auto allOf(Pixel colour)
{
    return [colour](int, int) { return colour; };
}

/// Grey of all levels, channels apart by `spread` at most.
auto greys(int spread)
{
    return [spread](int x, int y) {
        const std::uint32_t random = scatter(x, y);
        const auto level = static_cast<std::uint8_t>(random % (256 - spread));
        const auto higher = static_cast<std::uint8_t>(level + spread);
        return spread != 0 && random % 2 != 0 ? Pixel{level, higher, level, 255}
                                              : Pixel{level, level, level, 255};
    };
}

Pixel noise(int x, int y)
{
    const std::uint32_t random = scatter(x, y);
    return {static_cast<std::uint8_t>(random), static_cast<std::uint8_t>(random >> 8),
            static_cast<std::uint8_t>(random >> 16), 255};
}

void addInversion(std::vector<Row>& rows)
{
    rows.push_back({"invert", "invert", fromPhoto("InvertQVR")});
    rows.push_back({"invert-rectangle", "", fromMiddleOfPhoto("InvertQVR"), Unit::Pixels, "invert"});
    rows.push_back({"invert-gray", "", fromPhoto("InvertGrayQVR")});
    rows.push_back(
        {"invert-gray-rectangle", "", fromMiddleOfPhoto("InvertGrayQVR"), Unit::Pixels, "invert-gray"});
}

/// What a method of the brightness and contrast family makes of a level, before truncating: level * scale +
/// offset.
struct Line
{
    double scale = 1;
    double offset = 0;

    Line contrast(double amount) const
    {
        return {scale * (amount + 1), (offset - 127) * (amount + 1) + 127};
    }
    Line absolute(double amount) const
    {
        return {scale, offset + amount};
    }
    Line linear(double amount) const
    {
        const double share = (255 - std::abs(amount)) / 255;
        return {scale * share, offset * share + std::max(amount, 0.0)};
    }
};

nlohmann::json linesOf(Line red, Line green, Line blue)
{
    nlohmann::json lines = nlohmann::json::array();
    for (const Line& line : {red, green, blue})
        lines.push_back({line.scale, line.offset});
    return {{"lines", lines}};
}

void addBrightness(std::vector<Row>& rows)
{
    const auto add = [&rows](const std::string& name, const std::string& method, const Arguments& arguments,
                             auto line) {
        // One value stands for all channels, else there is one for each of them.
        rows.push_back({name, "linear", fromPhoto(method, arguments, linesOf(line(0), line(1), line(2)))});
    };
    constexpr double contrasts[] = {0.25, -0.25, 0.5};
    constexpr double brightnesses[] = {20.5, -30.25, 3.0};
    const Arguments threeContrasts = {contrasts[0], contrasts[1], contrasts[2]};
    const Arguments threeBrightnesses = {brightnesses[0], brightnesses[1], brightnesses[2]};
    Arguments six = threeContrasts;
    six.insert(six.end(), threeBrightnesses.begin(), threeBrightnesses.end());
    const Arguments oneOfEach = {contrasts[0], brightnesses[0]};

    add("contrast", "ChangeContrastQVR", {contrasts[0]}, [&](int) { return Line().contrast(contrasts[0]); });
    add("contrast-3", "ChangeContrastQVR", threeContrasts,
        [&](int channel) { return Line().contrast(contrasts[channel]); });
    add("brightness-absolute", "ChangeBrightnessAbsoluteQVR", {brightnesses[0]},
        [&](int) { return Line().absolute(brightnesses[0]); });
    add("brightness-absolute-3", "ChangeBrightnessAbsoluteQVR", threeBrightnesses,
        [&](int channel) { return Line().absolute(brightnesses[channel]); });
    add("brightness-linear", "ChangeBrightnessLinearQVR", {brightnesses[0]},
        [&](int) { return Line().linear(brightnesses[0]); });
    add("brightness-linear-3", "ChangeBrightnessLinearQVR", threeBrightnesses,
        [&](int channel) { return Line().linear(brightnesses[channel]); });
    rows.push_back({"brightness-linear-wrapping", "", fromPhoto("ChangeBrightnessLinearQVR", {300.0})});
    add("contrast-brightness-absolute", "ChangeContrastBrightnessAbsoluteQVR", oneOfEach,
        [&](int) { return Line().contrast(contrasts[0]).absolute(brightnesses[0]); });
    add("contrast-brightness-absolute-3", "ChangeContrastBrightnessAbsoluteQVR", six,
        [&](int channel) { return Line().contrast(contrasts[channel]).absolute(brightnesses[channel]); });
    add("contrast-brightness-linear", "ChangeContrastBrightnessLinearQVR", oneOfEach,
        [&](int) { return Line().contrast(contrasts[0]).linear(brightnesses[0]); });
    add("contrast-brightness-linear-3", "ChangeContrastBrightnessLinearQVR", six,
        [&](int channel) { return Line().contrast(contrasts[channel]).linear(brightnesses[channel]); });
    add("custom", "ChangeCustomQVR", {1.3, -20.0}, [](int) { return Line{1.3, -20}; });

    const auto saturate = [&rows](const std::string& name, const std::string& work, int amount) {
        rows.push_back({name, work, fromPhoto("ChangeSaturationQVR", {amount}, {{"amount", amount}})});
    };
    saturate("saturation", "saturation", 64);
    saturate("saturation-negative", "saturation", -128);
    saturate("saturation-overflowing", "", 30000000);
}

void addRegionTests(std::vector<Row>& rows)
{
    rows.push_back({"is-black", "all black", passesEverywhere("isBlackQVR", allOf(black))});
    rows.push_back(
        {"is-black-rectangle", "", passesInMiddle("isBlackQVR", allOf(black)), Unit::Pixels, "is-black"});
    rows.push_back({"is-white", "all white", passesEverywhere("isWhiteQVR", allOf(white))});
    rows.push_back(
        {"is-white-rectangle", "", passesInMiddle("isWhiteQVR", allOf(white)), Unit::Pixels, "is-white"});
    rows.push_back({"is-gray", "is grey", passesEverywhere("isGrayQVR", greys(0))});
    rows.push_back({"is-gray-tolerance", "is grey", passesEverywhere("isGrayQVR", greys(5), 5)});
    rows.push_back({"is-gray-rectangle", "", passesInMiddle("isGrayQVR", greys(5), {5}), Unit::Pixels,
                    "is-gray-tolerance"});
    rows.push_back({"colorness", "", readsPhoto("ColornessQVR")});
    rows.push_back({"colorness-noise", "", [](Workshop& workshop) {
                        return callJob(workshop, workshop.paint(noise), "ColornessQVR", {40}, {1, 0});
                    }});
}

std::uint32_t colourOf(Pixel pixel)
{
    return static_cast<std::uint32_t>(pixel.red) << 16 | static_cast<std::uint32_t>(pixel.green) << 8 |
           pixel.blue;
}

Job countJob(Workshop& workshop, const Picture& picture, Pixel colour)
{
    return askPeersExactly(callJob(workshop, picture, "CountColorQVR", {colourOf(colour)}, {1, 0}), {picture},
                           {{"color", colourOf(colour)}});
}

void addColourSearch(std::vector<Row>& rows)
{
    constexpr std::uint32_t replacement = 0xC0FFEE;
    rows.push_back({"count-color", "count one colour", [](Workshop& workshop) {
                        return countJob(workshop, workshop.photo(), workshop.photo().pixel(0, 0));
                    }});
    rows.push_back({"count-color-blank", "count one colour",
                    [](Workshop& workshop) { return countJob(workshop, workshop.plain(grey), grey); }});
    rows.push_back({"replace-color", "replace one colour", [=](Workshop& workshop) {
                        const std::uint32_t colour = colourOf(workshop.photo().pixel(0, 0));
                        return fromPhoto("ReplaceColorQVR", {colour, replacement},
                                         {{"color", colour}, {"replacement", replacement}})(workshop);
                    }});
    rows.push_back({"extract-color", "", [](Workshop& workshop) {
                        return callJob(workshop, workshop.photo(), "ExtractColorQVR",
                                       {colourOf(workshop.photo().pixel(0, 0)), replacement, 0xFFFFFFU});
                    }});
}

void addRectangleMask(std::vector<Row>& rows)
{
    const std::string method = "ExtractColorRectangleMaskQVR";
    rows.push_back({"rectangles-photo", "", fromPhoto(method)});
    rows.push_back({"rectangles-photo-middle", "", fromMiddleOfPhoto(method)});
    const auto add = [&rows, method](const std::string& name, const std::string& work, auto makeShape) {
        rows.push_back({name, work, [method, makeShape](Workshop& workshop) {
                            const Shape shape = makeShape(workshop.width, workshop.height);
                            const auto shade = [&shape](int x, int y) {
                                return shape.coloured(x, y) ? Pixel{200, 40, 60, 255} : grey;
                            };
                            const Picture picture = workshop.paint(shape.width, shape.height, shade);
                            return askPeers(callJob(workshop, picture, method, {}), {picture});
                        }});
    };
    add("rectangles-none", "", [](int width, int height) { return Shape(width, height); });
    add("rectangles-blobs-1%", "rectangles", blobs);
    add("rectangles-pixels-0.1%", "rectangles", randomPixels);
    // A third of the picture: 4 megapixels where the others have 12.
    add("rectangles-isolated", "",
        [](int width, int height) { return isolatedPixels(width / 2, height * 2 / 3); });
    add("rectangles-checkerboard", "", checkerboard);
    add("rectangles-columns", "", columns);
    add("rectangles-lines", "", lines);
    add("rectangles-diagonals", "", diagonals);
    add("rectangles-stairs", "", stairs);
    add("rectangles-spiral", "", spiral);
    add("rectangles-combs", "", combs);
}

standin::MemoryBlock randomTable(Workshop& workshop, unsigned seed)
{
    std::mt19937 random(seed);
    standin::MemoryBlock table = workshop.host.newMemoryBlock(256);
    std::generate_n(table.data(), table.size(), [&random] { return static_cast<std::uint8_t>(random()); });
    return table;
}

Job histogramJob(Workshop& workshop, const Picture& picture)
{
    struct Variables
    {
        Value red;
        Value blue;
        Value green;
        Value count = 0;
    };
    auto variables = std::make_shared<Variables>();
    for (Value* block : {&variables->red, &variables->blue, &variables->green})
        *block = workshop.host.newMemoryBlock(1024);
    const Arguments arguments = {standin::byref(variables->red), standin::byref(variables->blue),
                                 standin::byref(variables->green), standin::byref(variables->count)};
    Job job = askPeersExactly(
        callJob(workshop, picture, "CountColorsQVR", arguments, {1, 0}, Expect::Anything), {picture});
    job.reset = [variables, pixels = static_cast<std::int32_t>(job.items)] {
        if (variables->count.integer() != pixels)
            throw standin::Error("not all pixels were counted");
    };
    job.answer = [variables, run = job.run] {
        // The blocks named blue and green change places, as the method has it.
        const std::vector<standin::MemoryBlock> blocks = {
            variables->red.memoryBlock(), variables->blue.memoryBlock(), variables->green.memoryBlock()};
        for (standin::MemoryBlock block : blocks)
            std::fill_n(block.data(), block.size(), std::uint8_t{0});
        run();
        Bytes counters;
        for (const standin::MemoryBlock& block : blocks)
            counters.insert(counters.end(), block.data(), block.data() + block.size());
        return counters;
    };
    return job;
}

void addStatistics(std::vector<Row>& rows)
{
    rows.push_back({"histograms", "histograms",
                    [](Workshop& workshop) { return histogramJob(workshop, workshop.photo()); }});
    rows.push_back({"histograms-blank", "histograms",
                    [](Workshop& workshop) { return histogramJob(workshop, workshop.plain(grey)); }});
    rows.push_back({"histograms-noise", "histograms",
                    [](Workshop& workshop) { return histogramJob(workshop, workshop.paint(noise)); }});
    const auto tables = [](Workshop& workshop, const Arguments& target) {
        const standin::MemoryBlock red = randomTable(workshop, 1);
        const standin::MemoryBlock green = randomTable(workshop, 2);
        const standin::MemoryBlock blue = randomTable(workshop, 3);
        Arguments arguments = {red, blue, green};
        arguments.insert(arguments.end(), target.begin(), target.end());
        Job job = askPeers(callJob(workshop, workshop.photo(), "TransformColorsQVR", arguments),
                           {workshop.photo()});
        job.question->inputs.emplace_back([=] {
            Bytes bytes;
            for (const standin::MemoryBlock& table : {red, green, blue})
                bytes.insert(bytes.end(), table.data(), table.data() + table.size());
            return bytes;
        });
        return job;
    };
    rows.push_back({"tables", "tables", [tables](Workshop& workshop) { return tables(workshop, {}); }});
    rows.push_back({"tables-into-picture", "tables",
                    [tables](Workshop& workshop) { return tables(workshop, {workshop.newResult()}); }});
}

/// A tint's weights, as a matrix with no offsets.
nlohmann::json tintMatrix(std::uint32_t greyBase, std::uint32_t tintBase)
{
    const auto weights = [](std::uint32_t colour) {
        return std::vector<double>{(colour >> 16 & 255) / 255.0, (colour >> 8 & 255) / 255.0,
                                   (colour & 255) / 255.0};
    };
    nlohmann::json matrix = nlohmann::json::array();
    for (const double tint : weights(tintBase))
    {
        nlohmann::json row = nlohmann::json::array();
        for (const double weight : weights(greyBase))
            row.push_back(weight * tint);
        row.push_back(0.0);
        matrix.push_back(row);
    }
    return {{"matrix", matrix}};
}

void addChannels(std::vector<Row>& rows)
{
    const auto replace = [&rows](const std::string& channel, int byte) {
        rows.push_back(
            {"replace-" + channel + "-channel", "replace a channel", [channel, byte](Workshop& workshop) {
                 return askPeers(callJob(workshop, workshop.photo(), "Replace" + channel + "ChannelQVR",
                                         {workshop.otherPhoto()}, {2, 1}),
                                 {workshop.photo(), workshop.otherPhoto()}, {{"channel", byte}});
             }});
    };
    replace("red", 1);
    replace("green", 2);
    replace("blue", 3);

    /// A global method of several pictures, whose peers get them in the order `forPeers`.
    const auto global = [](Workshop& workshop, const std::string& method, const Arguments& arguments,
                           int sources, const std::vector<Picture>& forPeers,
                           const nlohmann::json& settings = {}) {
        return askPeers(globalJob(workshop, method, arguments, workshop.pixels(),
                                  bytesMoved(workshop, {sources, 1}, workshop.pixels())),
                        forPeers, settings);
    };
    rows.push_back(
        {"combine", "combine channels", [global](Workshop& workshop) {
             const Picture red = workshop.photo();
             const Picture blue = workshop.otherPhoto();
             const Picture green = workshop.photoCopy();
             return global(workshop, "CombinePicturesQVR", {red, blue, green}, 3, {red, green, blue});
         }});
    rows.push_back({"combine-same", "", [global](Workshop& workshop) {
                        const Picture photo = workshop.photo();
                        return global(workshop, "CombinePicturesQVR", {photo, photo, photo}, 1, {photo});
                    }});
    rows.push_back({"merge", "maximum of two", [global](Workshop& workshop) {
                        const std::vector<Picture> both = {workshop.photo(), workshop.otherPhoto()};
                        return global(workshop, "MergePictureQVR", {both[0], both[1]}, 2, both);
                    }});
    const auto tint = [&rows, global](const std::string& name, std::uint32_t greyBase,
                                      std::uint32_t tintBase) {
        rows.push_back({name, "tint", [=](Workshop& workshop) {
                            return global(workshop, "TintPictureQVR", {workshop.photo(), greyBase, tintBase},
                                          1, {workshop.photo()}, tintMatrix(greyBase, tintBase));
                        }});
    };
    tint("tint", 0x4D961C, 0xFFE0B0);
    tint("tint-saturating", 0xFFFFFF, 0xFFFFFF);
}

/// The photograph with the other one's red as alpha.
Picture transparentPhoto(Workshop& workshop)
{
    Picture picture = workshop.photoCopy();
    for (int y = 0; y < workshop.height; ++y)
        for (int x = 0; x < workshop.width; ++x)
        {
            Pixel pixel = picture.pixel(x, y);
            pixel.alpha = workshop.otherPhoto().pixel(x, y).red;
            picture.setPixel(x, y, pixel);
        }
    return picture;
}

Job maskReadJob(Workshop& workshop, bool swap)
{
    const Picture picture = transparentPhoto(workshop);
    return askPeers(callJob(workshop, picture, "EmbeddedMaskQVR", {swap}), {picture}, {{"swap", swap}});
}

Job maskWriteJob(Workshop& workshop, bool swap)
{
    Picture picture = workshop.photoCopy();
    const Picture mask = workshop.otherPhoto();
    workshop.noteUse("EmbeddedMaskQVR", 1);
    Job job;
    job.run = [&workshop, picture, mask, swap] {
        workshop.host.assign(picture, "EmbeddedMaskQVR", {swap}, mask);
    };
    job.items = workshop.pixels();
    // One byte of every pixel changes, which reads and writes the picture, and reads the mask.
    job.bytes = workshop.pixels() * 3 * workshop.sourceBytes();
    job = askPeersExactly(job, {workshop.photo(), mask}, {{"swap", swap}});
    job.answer = [picture, run = job.run] {
        run();
        return bytesOf(picture);
    };
    return job;
}

void addMasks(std::vector<Row>& rows)
{
    rows.push_back(
        {"mask-read", "alpha to grey", [](Workshop& workshop) { return maskReadJob(workshop, false); }});
    rows.push_back({"mask-read-swapped", "alpha to grey",
                    [](Workshop& workshop) { return maskReadJob(workshop, true); }});
    rows.push_back(
        {"mask-write", "grey to alpha", [](Workshop& workshop) { return maskWriteJob(workshop, false); }});
    rows.push_back({"mask-write-swapped", "grey to alpha",
                    [](Workshop& workshop) { return maskWriteJob(workshop, true); }});
    rows.push_back(
        {"has-mask", "",
         [](Workshop& workshop) {
             Job job = callJob(workshop, workshop.photo(), "HasMaskQVR", {}, {0, 0}, Expect::Anything);
             job.items = 1;
             return job;
         },
         Unit::Calls});
}

/// Scrolls a picture of its own, which every pass reads and writes once.
Job scrollJob(Workshop& workshop, const std::string& method, const Arguments& arguments, int passes = 1)
{
    Picture picture = workshop.photoCopy();
    Job job = askPeersExactly(callJob(workshop, picture, method, arguments, {0, 0}, Expect::Anything),
                              {workshop.photo()}, {{"delta", arguments.front().integer()}});
    job.bytes = job.items * 2 * passes * workshop.sourceBytes();
    job.answer = [picture, photo = workshop.photo(), run = job.run]() mutable {
        for (int y = 0; y < photo.height(); ++y)
            std::copy_n(photo.row(y), photo.rowBytes(), picture.row(y));
        run();
        return bytesOf(picture);
    };
    return job;
}

void addScrolling(std::vector<Row>& rows)
{
    const auto vertical = [&rows](const std::string& name, auto delta) {
        rows.push_back(
            {name, "rotate rows", [delta](Workshop& workshop) {
                 return scrollJob(workshop, "ScrollVerticalQVR", {delta(workshop.height), true, false});
             }});
    };
    vertical("scroll-rows-third", [](int height) { return height / 3; });
    vertical("scroll-rows-third-up", [](int height) { return -height / 3; });
    vertical("scroll-rows-one", [](int) { return 1; });
    vertical("scroll-rows-half", [](int height) { return height / 2 - 1; });
    const auto horizontal = [&rows](const std::string& name, auto delta) {
        rows.push_back(
            {name, "rotate columns", [delta](Workshop& workshop) {
                 return scrollJob(workshop, "ScrollHorizontalQVR", {delta(workshop.width), true, false});
             }});
    };
    horizontal("scroll-columns-third", [](int width) { return width / 3; });
    horizontal("scroll-columns-one", [](int) { return 1; });
    rows.push_back({"scroll-both", "", [](Workshop& workshop) {
                        return scrollJob(workshop, "ScrollQVR",
                                         {workshop.width / 3, workshop.height / 3, true, false}, 2);
                    }});
    rows.push_back({"scroll-with-mask", "", [](Workshop& workshop) {
                        Picture picture = workshop.photoCopy();
                        picture.setMask(workshop.photoCopy());
                        Job job = callJob(workshop, picture, "ScrollVerticalQVR",
                                          {workshop.height / 3, true, true}, {0, 0}, Expect::Anything);
                        job.bytes = job.items * 4 * workshop.sourceBytes();
                        return job;
                    }});
}

/// Looks for `sub`; every byte of the picture is read once at best.
Job findJob(Workshop& workshop, const Picture& picture, const Picture& sub,
            Expect expected = Expect::Anything)
{
    struct Position
    {
        Value x = 0;
        Value y = 0;
    };
    auto position = std::make_shared<Position>();
    Job job = askPeersExactly(callJob(workshop, picture, "FindPictureQVR",
                                      {sub, standin::byref(position->x), standin::byref(position->y)}, {1, 0},
                                      expected),
                              {picture, sub}, {{"subWidth", sub.width()}, {"subHeight", sub.height()}});
    // What a call writes to must live as long as the call is made.
    job.run = [position, run = job.run] { run(); };
    job.answer = [position, run = job.run, result = job.result] {
        run();
        return bytesOf(std::vector<std::int32_t>{std::int32_t{result->boolean()}, position->x.integer(),
                                                 position->y.integer()});
    };
    return job;
}

void addFind(std::vector<Row>& rows)
{
    constexpr int side = 64;
    rows.push_back({"find-photo-end", "find", [](Workshop& workshop) {
                        const Picture sub = workshop.cropped(workshop.photo(), workshop.width - side,
                                                             workshop.height - side, side, side);
                        return findJob(workshop, workshop.photo(), sub, Expect::True);
                    }});
    rows.push_back({"find-photo-absent", "find", [](Workshop& workshop) {
                        const Picture sub = workshop.paint(side, side, [&](int x, int y) {
                            return y == 0 && x == side - 1 ? black : workshop.photo().pixel(x, y);
                        });
                        return findJob(workshop, workshop.photo(), sub);
                    }});
    // The search keeps rows that it has stepped over after a piece's first row fitted, so what takes long are
    // first rows that fit up to their last pixel, everywhere.
    const auto endsBlack = [](int x, int y) { return y > 0 || x == side - 1 ? black : white; };
    rows.push_back({"find-blank", "find", [endsBlack](Workshop& workshop) {
                        return findJob(workshop, workshop.plain(white),
                                       workshop.paint(side, side, endsBlack));
                    }});
    rows.push_back({"find-dotted", "find", [](Workshop& workshop) {
                        // Runs one pixel too short for the piece's first row.
                        const Picture dotted =
                            workshop.paint([](int x, int) { return x % side == 0 ? black : white; });
                        const Picture sub = workshop.paint(side, side, allOf(white));
                        return findJob(workshop, dotted, sub);
                    }});
    rows.push_back({"find-wrapped", "", [endsBlack](Workshop& workshop) {
                        // So many first rows fit from the middle on that the search runs out of rows and
                        // stays on row 0.
                        const Picture picture = workshop.paint([half = workshop.height / 2](int x, int y) {
                            return y >= half && x % side == side - 1 ? black : white;
                        });
                        return findJob(workshop, picture, workshop.paint(side, side, endsBlack));
                    }});
    rows.push_back({"find-mostly-blank", "find", [](Workshop& workshop) {
                        const int left = workshop.width * 3 / 4;
                        const int top = workshop.height * 3 / 4;
                        const Picture corner = workshop.paint([&](int x, int y) {
                            return x >= left && y >= top ? workshop.photo().pixel(x, y) : white;
                        });
                        const Picture sub = workshop.cropped(corner, left - side + 1, top, side, side);
                        Job job = findJob(workshop, corner, sub, Expect::True);
                        const double share = static_cast<double>(top) / workshop.height;
                        job.items *= share;
                        job.bytes *= share;
                        return job;
                    }});
}

void addBinaryString(std::vector<Row>& rows)
{
    constexpr double packedBytes = 3;
    constexpr int packedHeader = 40;
    rows.push_back({"pack", "pack", [](Workshop& workshop) {
                        const double bytes = workshop.pixels() * (workshop.sourceBytes() + packedBytes);
                        Job job = globalJob(workshop, "PicturetoBinaryStringQVR", {workshop.photo()},
                                            workshop.pixels(), bytes);
                        // One call must work; after it the host refuses the copy into its string, which is no
                        // work of the plug-in.
                        job = askPeersExactly(job, {workshop.photo()});
                        job.answer = [run = job.run, result = job.result] {
                            run();
                            const std::string packed = result->string().bytes();
                            *result = Value();
                            return Bytes(packed.begin() + packedHeader, packed.end());
                        };
                        auto worked = std::make_shared<bool>(false);
                        const auto checked = job.reset;
                        job.reset = [&workshop, checked, worked] {
                            if (!*worked)
                                checked();
                            *worked = true;
                            workshop.host.faults().failAlways("REALBuildString");
                        };
                        return job;
                    }});
    rows.push_back(
        {"unpack", "unpack", [](Workshop& workshop) {
             // Older hosts hand out the string's own bytes, newer ones a copy that is no work of the plug-in.
             workshop.noteUse("BinaryStringtoPictureQVR", 1);
             const std::shared_ptr<Workshop> older = workshop.onHostVersion(2012.5);
             const Value packed = older->host.callGlobal("PicturetoBinaryStringQVR", {older->photo()});
             const double bytes = workshop.pixels() * (packedBytes + workshop.resultBytes());
             Job job = askPeers(
                 makingJob(
                     [older, packed] { return older->host.callGlobal("BinaryStringtoPictureQVR", {packed}); },
                     Expect::Something, workshop.pixels(), bytes),
                 {workshop.photo()});
             job.question->inputs = {[packed] {
                 const std::string& text = packed.string().bytes();
                 return Bytes(text.begin() + packedHeader, text.end());
             }};
             return job;
         }});
}

/// Sound that swells and fades, as samples of `bits`.
standin::MemoryBlock sound(Workshop& workshop, int count, int bits)
{
    const int sampleSize = (bits + 7) / 8;
    standin::MemoryBlock block = workshop.host.newMemoryBlock(count * sampleSize);
    std::uint8_t* byte = block.data();
    std::uint32_t state = 1;
    for (int index = 0; index < block.size(); ++index)
    {
        state = state * 1664525U + 1013904223U;
        byte[index] = static_cast<std::uint8_t>(state >> 24);
    }
    return block;
}

Arguments waveformArguments(Workshop& workshop, int samples, int bits, int width, int height, int outline,
                            int smooth)
{
    return {sound(workshop, samples, bits),
            samples,
            smooth,
            width,
            height,
            outline,
            0x88B5C4U,
            0x274C5AU,
            0x203F4EU,
            bits,
            true};
}

/// Between which rows each column of a waveform has its bar.
Bytes barsOf(const Picture& waveform)
{
    constexpr Pixel bar{0x27, 0x4C, 0x5A, 255};
    std::vector<std::int32_t> rows;
    for (int x = 0; x < waveform.width(); ++x)
    {
        const auto isBar = [&](int y) { return waveform.pixel(x, y) == bar; };
        int top = 0;
        while (top < waveform.height() && !isBar(top))
            ++top;
        int bottom = waveform.height() - 1;
        while (bottom > top && !isBar(bottom))
            --bottom;
        rows.insert(rows.end(), {top, bottom});
    }
    return bytesOf(rows);
}

/// 100 million samples beside a picture of 12 megapixels.
Job sumsJob(Workshop& workshop, int bits)
{
    constexpr int height = 500;
    const int samples = static_cast<int>(std::min(workshop.pixels() / 12e6, 2.0) * 100e6);
    const int sampleSize = (bits + 7) / 8;
    const Arguments arguments = waveformArguments(workshop, samples, bits, workshop.width, height, 0, 1);
    Job job = globalJob(workshop, "RenderSamplesQVR", arguments, samples,
                        static_cast<double>(samples) * sampleSize);
    Question question{workshop.width, height, {}, {{"samples", samples}}, false};
    question.inputs.emplace_back([block = arguments.front().memoryBlock()] {
        return Bytes(block.data(), block.data() + block.size());
    });
    job.question = question;
    job.answer = [run = job.run, result = job.result] {
        run();
        Bytes bars = barsOf(result->picture());
        *result = Value();
        return bars;
    };
    return job;
}

void addWaveform(std::vector<Row>& rows)
{
    for (const int bits : {8, 7, 16, 15})
        rows.push_back({"waveform-" + std::to_string(bits) + "-bit", bits == 8 ? "waveform" : "",
                        [bits](Workshop& workshop) { return sumsJob(workshop, bits); }, Unit::Samples});
    const auto drawing = [&rows](const std::string& name, int outline, int smooth) {
        rows.push_back({name, "", [outline, smooth](Workshop& workshop) {
                            const int samples = workshop.width * 16;
                            return globalJob(workshop, "RenderSamplesQVR",
                                             waveformArguments(workshop, samples, 8, workshop.width,
                                                               workshop.height, outline, smooth),
                                             workshop.pixels(),
                                             bytesMoved(workshop, {0, 1}, workshop.pixels()));
                        }});
    };
    drawing("waveform-drawing", 0, 1);
    drawing("waveform-outline", 1, 1);
    drawing("waveform-outline-smooth", 1, 8);
}

/// Runs a filter object; its old result is given back outside of the timing.
Job filterJob(Workshop& workshop, standin::Instance filter, const Picture& source)
{
    filter.set("SourcePicture", source);
    const auto instance = std::make_shared<standin::Instance>(std::move(filter));
    Job job = askPeers(makingJob([instance] { return instance->call("Run"); }, Expect::True,
                                 workshop.pixels(), bytesMoved(workshop, {1, 1}, workshop.pixels())),
                       {source});
    job.reset = [instance, checked = job.reset] {
        checked();
        instance->set("DestinationPicture", nullptr);
    };
    job.answer = [instance, run = job.run, reset = job.reset] {
        run();
        Bytes bytes = bytesOf(instance->get("DestinationPicture").picture());
        reset();
        return bytes;
    };
    return job;
}

/// A warm look: curved levels with some of the other channels in them. Runs it on a picture.
Job cubeJob(Workshop& workshop, const Picture& source)
{
    constexpr std::uint32_t nodes = 16;
    constexpr double step = 17;
    workshop.noteFilter("PictureLut3DQVR");
    standin::Instance cube = workshop.host.newInstance("PictureLut3DQVR");
    std::vector<double> table;
    for (std::uint32_t r = 0; r < nodes; ++r)
        for (std::uint32_t g = 0; g < nodes; ++g)
            for (std::uint32_t b = 0; b < nodes; ++b)
            {
                const double mean = (r + g + b) * step / 3;
                const double levels[] = {r * step, g * step, b * step};
                const double gamma[] = {0.85, 0.95, 1.15};
                for (std::uint32_t channel = 0; channel < 3; ++channel)
                {
                    const double curved = 255 * std::pow(levels[channel] / 255, gamma[channel]);
                    table.push_back(0.9 * curved + 0.1 * mean);
                    cube.assign("Table", {r, g, b, channel}, table.back());
                }
            }
    Job job = filterJob(workshop, std::move(cube), source);
    job.question->inputs.emplace_back([table] { return bytesOf(table); });
    return job;
}

void addFilters(std::vector<Row>& rows)
{
    rows.push_back(
        {"lut3d", "3D table", [](Workshop& workshop) { return cubeJob(workshop, workshop.photo()); }});
    rows.push_back({"lut3d-noise", "3D table",
                    [](Workshop& workshop) { return cubeJob(workshop, workshop.paint(noise)); }});
    rows.push_back({"lut3d-grey", "3D table",
                    [](Workshop& workshop) { return cubeJob(workshop, workshop.paint(greys(0))); }});
    rows.push_back({"sepia", "sepia", [](Workshop& workshop) {
                        workshop.noteFilter("PictureSepiaQVR");
                        standin::Instance sepia = workshop.host.newInstance("PictureSepiaQVR");
                        sepia.set("SepiaRed", 40);
                        sepia.set("SepiaGreen", 20);
                        sepia.set("SepiaBlue", -20);
                        Job job = filterJob(workshop, sepia, workshop.photo());
                        job.question->settings = {{"weights", {306, 601, 116}}, {"offsets", {40, 20, -20}}};
                        return job;
                    }});
}

} // namespace

std::vector<Row> allRows()
{
    std::vector<Row> rows;
    for (const auto add :
         {addInversion, addBrightness, addRegionTests, addColourSearch, addRectangleMask, addStatistics,
          addChannels, addMasks, addScrolling, addFind, addBinaryString, addWaveform, addFilters})
        add(rows);
    return rows;
}

std::vector<std::string> methodsWithoutRow(const Workshop& workshop)
{
    std::vector<std::string> missing;
    const auto look = [&](const std::vector<standin::RegisteredMethod>& methods) {
        for (const standin::RegisteredMethod& method : methods)
            if (!workshop.uses(method.declaration))
                missing.push_back(method.text);
    };
    for (const standin::RegisteredClass& extension : workshop.host.registered().extensions)
        look(extension.methods);
    look(workshop.host.registered().globals);
    return missing;
}

} // namespace bench
