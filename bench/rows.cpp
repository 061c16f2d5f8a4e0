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

/// A job whose run makes a value, which is given back outside of the timing.
template <class Make>
Job makingJob(Make make, Expect expected, double items, double bytes)
{
    auto result = std::make_shared<Value>();
    Job job;
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

using Prepare = std::function<Job(Workshop&)>;

/// A method of the photograph that makes a new picture.
Prepare fromPhoto(const std::string& method, const Arguments& arguments = {})
{
    return [=](Workshop& workshop) { return callJob(workshop, workshop.photo(), method, arguments); };
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
Prepare passesEverywhere(const std::string& method, Shade shade, const Arguments& arguments = {})
{
    return [=](Workshop& workshop) {
        return callJob(workshop, workshop.paint(shade), method, arguments, {1, 0}, Expect::True);
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

auto allOf(Pixel color)
{
    return [color](int, int) { return color; };
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
    rows.push_back({"invert", peer("invert"), fromPhoto("InvertQVR")});
    rows.push_back({"invert-rectangle", peer("invert"), fromMiddleOfPhoto("InvertQVR")});
    rows.push_back({"invert-gray", nullptr, fromPhoto("InvertGrayQVR")});
    rows.push_back({"invert-gray-rectangle", nullptr, fromMiddleOfPhoto("InvertGrayQVR")});
}

void addBrightness(std::vector<Row>& rows)
{
    const auto add = [&rows](const std::string& name, const std::string& method, const Arguments& arguments) {
        rows.push_back({name, peer("linear"), fromPhoto(method, arguments)});
    };
    add("contrast", "ChangeContrastQVR", {0.25});
    add("contrast-3", "ChangeContrastQVR", {0.25, -0.25, 0.5});
    add("brightness-absolute", "ChangeBrightnessAbsoluteQVR", {20.5});
    add("brightness-absolute-3", "ChangeBrightnessAbsoluteQVR", {20.5, -30.25, 3.0});
    add("brightness-linear", "ChangeBrightnessLinearQVR", {20.5});
    add("brightness-linear-3", "ChangeBrightnessLinearQVR", {20.5, -30.25, 3.0});
    add("brightness-linear-wrapping", "ChangeBrightnessLinearQVR", {300.0});
    add("contrast-brightness-absolute", "ChangeContrastBrightnessAbsoluteQVR", {0.25, 20.5});
    add("contrast-brightness-absolute-3", "ChangeContrastBrightnessAbsoluteQVR",
        {0.25, -0.25, 0.5, 20.5, -30.25, 3.0});
    add("contrast-brightness-linear", "ChangeContrastBrightnessLinearQVR", {0.25, 20.5});
    add("contrast-brightness-linear-3", "ChangeContrastBrightnessLinearQVR",
        {0.25, -0.25, 0.5, 20.5, -30.25, 3.0});
    add("custom", "ChangeCustomQVR", {1.3, -20.0});
    rows.push_back({"saturation", peer("saturation"), fromPhoto("ChangeSaturationQVR", {64})});
    rows.push_back({"saturation-negative", peer("saturation"), fromPhoto("ChangeSaturationQVR", {-128})});
    rows.push_back({"saturation-overflowing", nullptr, fromPhoto("ChangeSaturationQVR", {30000000})});
}

void addRegionTests(std::vector<Row>& rows)
{
    rows.push_back({"is-black", peer("all black"), passesEverywhere("isBlackQVR", allOf(black))});
    rows.push_back({"is-black-rectangle", peer("all black"), passesInMiddle("isBlackQVR", allOf(black))});
    rows.push_back({"is-white", peer("all white"), passesEverywhere("isWhiteQVR", allOf(white))});
    rows.push_back({"is-white-rectangle", peer("all white"), passesInMiddle("isWhiteQVR", allOf(white))});
    rows.push_back({"is-gray", peer("is grey"), passesEverywhere("isGrayQVR", greys(0))});
    rows.push_back({"is-gray-tolerance", peer("is grey"), passesEverywhere("isGrayQVR", greys(5), {5})});
    rows.push_back({"is-gray-rectangle", peer("is grey"), passesInMiddle("isGrayQVR", greys(5), {5})});
    rows.push_back({"colorness", nullptr, readsPhoto("ColornessQVR")});
    rows.push_back({"colorness-noise", nullptr, [](Workshop& workshop) {
                        return callJob(workshop, workshop.paint(noise), "ColornessQVR", {40}, {1, 0});
                    }});
}

std::uint32_t colorOf(Pixel pixel)
{
    return static_cast<std::uint32_t>(pixel.red) << 16 | static_cast<std::uint32_t>(pixel.green) << 8 |
           pixel.blue;
}

void addColorSearch(std::vector<Row>& rows)
{
    constexpr std::uint32_t replacement = 0xC0FFEE;
    rows.push_back({"count-color", peer("count one colour"), [](Workshop& workshop) {
                        return callJob(workshop, workshop.photo(), "CountColorQVR",
                                       {colorOf(workshop.photo().pixel(0, 0))}, {1, 0});
                    }});
    rows.push_back(
        {"count-color-blank", peer("count one colour"), [](Workshop& workshop) {
             return callJob(workshop, workshop.plain(grey), "CountColorQVR", {colorOf(grey)}, {1, 0});
         }});
    rows.push_back({"replace-color", peer("replace one colour"), [](Workshop& workshop) {
                        return callJob(workshop, workshop.photo(), "ReplaceColorQVR",
                                       {colorOf(workshop.photo().pixel(0, 0)), replacement});
                    }});
    rows.push_back({"extract-color", peer("replace one colour"), [](Workshop& workshop) {
                        return callJob(workshop, workshop.photo(), "ExtractColorQVR",
                                       {colorOf(workshop.photo().pixel(0, 0)), replacement, 0xFFFFFFU});
                    }});
}

void addRectangleMask(std::vector<Row>& rows)
{
    const std::string method = "ExtractColorRectangleMaskQVR";
    rows.push_back({"rectangles-photo", nullptr, fromPhoto(method)});
    rows.push_back({"rectangles-photo-middle", nullptr, fromMiddleOfPhoto(method)});
    const auto add = [&rows, method](const std::string& name, const Peer* peer, auto makeShape) {
        rows.push_back({name, peer, [method, makeShape](Workshop& workshop) {
                            const Shape shape = makeShape(workshop.width, workshop.height);
                            const auto shade = [&shape](int x, int y) {
                                return shape.colored(x, y) ? Pixel{200, 40, 60, 255} : grey;
                            };
                            return callJob(workshop, workshop.paint(shape.width, shape.height, shade), method,
                                           {});
                        }});
    };
    add("rectangles-none", nullptr, [](int width, int height) { return Shape(width, height); });
    add("rectangles-blobs-1%", peer("rectangles in blobs"), blobs);
    add("rectangles-pixels-0.1%", peer("rectangles of pixels"), randomPixels);
    // A third of the picture: 4 megapixels where the others have 12.
    add("rectangles-isolated", nullptr,
        [](int width, int height) { return isolatedPixels(width / 2, height * 2 / 3); });
    add("rectangles-checkerboard", nullptr, checkerboard);
    add("rectangles-columns", nullptr, columns);
    add("rectangles-lines", nullptr, lines);
    add("rectangles-diagonals", nullptr, diagonals);
    add("rectangles-stairs", nullptr, stairs);
    add("rectangles-spiral", nullptr, spiral);
    add("rectangles-combs", nullptr, combs);
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
    Job job = callJob(workshop, picture, "CountColorsQVR", arguments, {1, 0}, Expect::Anything);
    job.reset = [variables, pixels = static_cast<std::int32_t>(job.items)] {
        if (variables->count.integer() != pixels)
            throw standin::Error("not all pixels were counted");
    };
    return job;
}

void addStatistics(std::vector<Row>& rows)
{
    rows.push_back({"histograms", peer("histograms"),
                    [](Workshop& workshop) { return histogramJob(workshop, workshop.photo()); }});
    rows.push_back({"histograms-blank", peer("histograms"),
                    [](Workshop& workshop) { return histogramJob(workshop, workshop.plain(grey)); }});
    rows.push_back({"histograms-noise", peer("histograms"),
                    [](Workshop& workshop) { return histogramJob(workshop, workshop.paint(noise)); }});
    const auto tables = [](Workshop& workshop) -> Arguments {
        return {randomTable(workshop, 1), randomTable(workshop, 2), randomTable(workshop, 3)};
    };
    rows.push_back({"tables", peer("tables"), [tables](Workshop& workshop) {
                        return callJob(workshop, workshop.photo(), "TransformColorsQVR", tables(workshop));
                    }});
    rows.push_back({"tables-into-picture", peer("tables"), [tables](Workshop& workshop) {
                        Arguments arguments = tables(workshop);
                        arguments.push_back(workshop.newResult());
                        return callJob(workshop, workshop.photo(), "TransformColorsQVR", arguments);
                    }});
}

void addChannels(std::vector<Row>& rows)
{
    for (const std::string channel : {"red", "green", "blue"})
        rows.push_back(
            {"replace-" + channel + "-channel", peer("replace a channel"), [channel](Workshop& workshop) {
                 return callJob(workshop, workshop.photo(), "Replace" + channel + "ChannelQVR",
                                {workshop.otherPhoto()}, {2, 1});
             }});
    rows.push_back({"combine", peer("combine channels"), [](Workshop& workshop) {
                        const Picture third = workshop.photoCopy();
                        return globalJob(workshop, "CombinePicturesQVR",
                                         {workshop.photo(), workshop.otherPhoto(), third}, workshop.pixels(),
                                         bytesMoved(workshop, {3, 1}, workshop.pixels()));
                    }});
    rows.push_back({"combine-same", peer("combine channels"), [](Workshop& workshop) {
                        return globalJob(workshop, "CombinePicturesQVR",
                                         {workshop.photo(), workshop.photo(), workshop.photo()},
                                         workshop.pixels(), bytesMoved(workshop, {1, 1}, workshop.pixels()));
                    }});
    rows.push_back({"merge", peer("maximum of two"), [](Workshop& workshop) {
                        return globalJob(workshop, "MergePictureQVR",
                                         {workshop.photo(), workshop.otherPhoto()}, workshop.pixels(),
                                         bytesMoved(workshop, {2, 1}, workshop.pixels()));
                    }});
    rows.push_back({"tint", peer("tint"), [](Workshop& workshop) {
                        return globalJob(workshop, "TintPictureQVR", {workshop.photo(), 0x4D961CU, 0xFFE0B0U},
                                         workshop.pixels(), bytesMoved(workshop, {1, 1}, workshop.pixels()));
                    }});
    rows.push_back({"tint-saturating", peer("tint"), [](Workshop& workshop) {
                        return globalJob(workshop, "TintPictureQVR", {workshop.photo(), 0xFFFFFFU, 0xFFFFFFU},
                                         workshop.pixels(), bytesMoved(workshop, {1, 1}, workshop.pixels()));
                    }});
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
    return job;
}

void addMasks(std::vector<Row>& rows)
{
    rows.push_back({"mask-read", peer("alpha to grey"), fromPhoto("EmbeddedMaskQVR", {false})});
    rows.push_back({"mask-read-swapped", peer("alpha to grey"), fromPhoto("EmbeddedMaskQVR", {true})});
    rows.push_back({"mask-write", peer("grey to alpha"),
                    [](Workshop& workshop) { return maskWriteJob(workshop, false); }});
    rows.push_back({"mask-write-swapped", peer("grey to alpha"),
                    [](Workshop& workshop) { return maskWriteJob(workshop, true); }});
    rows.push_back(
        {"has-mask", nullptr,
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
    Job job = callJob(workshop, workshop.photoCopy(), method, arguments, {0, 0}, Expect::Anything);
    job.bytes = job.items * 2 * passes * workshop.sourceBytes();
    return job;
}

void addScrolling(std::vector<Row>& rows)
{
    const auto vertical = [&rows](const std::string& name, auto delta) {
        rows.push_back(
            {name, peer("rotate rows"), [delta](Workshop& workshop) {
                 return scrollJob(workshop, "ScrollVerticalQVR", {delta(workshop.height), true, false});
             }});
    };
    vertical("scroll-rows-third", [](int height) { return height / 3; });
    vertical("scroll-rows-third-up", [](int height) { return -height / 3; });
    vertical("scroll-rows-one", [](int) { return 1; });
    vertical("scroll-rows-half", [](int height) { return height / 2 - 1; });
    const auto horizontal = [&rows](const std::string& name, auto delta) {
        rows.push_back(
            {name, peer("rotate columns"), [delta](Workshop& workshop) {
                 return scrollJob(workshop, "ScrollHorizontalQVR", {delta(workshop.width), true, false});
             }});
    };
    horizontal("scroll-columns-third", [](int width) { return width / 3; });
    horizontal("scroll-columns-one", [](int) { return 1; });
    rows.push_back({"scroll-both", nullptr, [](Workshop& workshop) {
                        return scrollJob(workshop, "ScrollQVR",
                                         {workshop.width / 3, workshop.height / 3, true, false}, 2);
                    }});
    rows.push_back({"scroll-with-mask", nullptr, [](Workshop& workshop) {
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
    Job job = callJob(workshop, picture, "FindPictureQVR",
                      {sub, standin::byref(position->x), standin::byref(position->y)}, {1, 0}, expected);
    job.run = [position, run = job.run] { run(); };
    return job;
}

void addFind(std::vector<Row>& rows)
{
    constexpr int side = 64;
    rows.push_back({"find-photo-end", peer("find in photograph"), [](Workshop& workshop) {
                        const Picture sub = workshop.cropped(workshop.photo(), workshop.width - side,
                                                             workshop.height - side, side, side);
                        return findJob(workshop, workshop.photo(), sub, Expect::True);
                    }});
    rows.push_back({"find-photo-absent", peer("find in photograph"), [](Workshop& workshop) {
                        const Picture sub = workshop.paint(side, side, [&](int x, int y) {
                            return y == 0 && x == side - 1 ? black : workshop.photo().pixel(x, y);
                        });
                        return findJob(workshop, workshop.photo(), sub);
                    }});
    // The search keeps rows that it has stepped over after a piece's first row fitted, so what takes long are
    // first rows that fit up to their last pixel, everywhere.
    const auto endsBlack = [](int x, int y) { return y > 0 || x == side - 1 ? black : white; };
    rows.push_back({"find-blank", peer("find in blank"), [endsBlack](Workshop& workshop) {
                        return findJob(workshop, workshop.plain(white),
                                       workshop.paint(side, side, endsBlack));
                    }});
    rows.push_back({"find-dotted", peer("find in blank"), [](Workshop& workshop) {
                        // Runs one pixel too short for the piece's first row.
                        const Picture dotted =
                            workshop.paint([](int x, int) { return x % side == 0 ? black : white; });
                        const Picture sub = workshop.paint(side, side, allOf(white));
                        return findJob(workshop, dotted, sub);
                    }});
    rows.push_back({"find-wrapped", peer("find in blank"), [endsBlack](Workshop& workshop) {
                        // So many first rows fit from the middle on that the search runs out of rows and
                        // stays on row 0.
                        const Picture picture = workshop.paint([half = workshop.height / 2](int x, int y) {
                            return y >= half && x % side == side - 1 ? black : white;
                        });
                        return findJob(workshop, picture, workshop.paint(side, side, endsBlack));
                    }});
    rows.push_back({"find-mostly-blank", peer("find in blank"), [](Workshop& workshop) {
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
    rows.push_back({"pack", peer("pack"), [](Workshop& workshop) {
                        const double bytes = workshop.pixels() * (workshop.sourceBytes() + packedBytes);
                        Job job = globalJob(workshop, "PicturetoBinaryStringQVR", {workshop.photo()},
                                            workshop.pixels(), bytes);
                        // One call must work; after it the host refuses the copy into its string, which is no
                        // work of the plug-in.
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
        {"unpack", peer("unpack"), [](Workshop& workshop) {
             // Older hosts hand out the string's own bytes, newer ones a copy that is no work of the plug-in.
             workshop.noteUse("BinaryStringtoPictureQVR", 1);
             const std::shared_ptr<Workshop> older = workshop.onHostVersion(2012.5);
             const Value packed = older->host.callGlobal("PicturetoBinaryStringQVR", {older->photo()});
             const double bytes = workshop.pixels() * (packedBytes + workshop.resultBytes());
             return makingJob(
                 [older, packed] { return older->host.callGlobal("BinaryStringtoPictureQVR", {packed}); },
                 Expect::Something, workshop.pixels(), bytes);
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

void addWaveform(std::vector<Row>& rows)
{
    const auto summing = [&rows](int bits) {
        rows.push_back(
            {"waveform-" + std::to_string(bits) + "-bit", bits <= 8 ? peer("waveform") : nullptr,
             [bits](Workshop& workshop) {
                 // 100 million samples beside a picture of 12 megapixels.
                 const int samples = static_cast<int>(std::min(workshop.pixels() / 12e6, 2.0) * 100e6);
                 const int sampleSize = (bits + 7) / 8;
                 return globalJob(workshop, "RenderSamplesQVR",
                                  waveformArguments(workshop, samples, bits, workshop.width, 500, 0, 1),
                                  samples, static_cast<double>(samples) * sampleSize);
             },
             Unit::Samples});
    };
    for (const int bits : {8, 7, 16, 15})
        summing(bits);
    const auto drawing = [&rows](const std::string& name, int outline, int smooth) {
        rows.push_back({name, nullptr, [outline, smooth](Workshop& workshop) {
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
    Job job = makingJob([instance] { return instance->call("Run"); }, Expect::True, workshop.pixels(),
                        bytesMoved(workshop, {1, 1}, workshop.pixels()));
    job.reset = [instance, checked = job.reset] {
        checked();
        instance->set("DestinationPicture", nullptr);
    };
    return job;
}

/// A warm look: curved levels with some of the other channels in them.
standin::Instance warmCube(Workshop& workshop)
{
    constexpr std::uint32_t nodes = 16;
    constexpr double step = 17;
    standin::Instance cube = workshop.host.newInstance("PictureLut3DQVR");
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
                    cube.assign("Table", {r, g, b, channel}, 0.9 * curved + 0.1 * mean);
                }
            }
    return cube;
}

void addFilters(std::vector<Row>& rows)
{
    rows.push_back({"lut3d", peer("3D table"), [](Workshop& workshop) {
                        return filterJob(workshop, warmCube(workshop), workshop.photo());
                    }});
    rows.push_back({"lut3d-noise", peer("3D table"), [](Workshop& workshop) {
                        return filterJob(workshop, warmCube(workshop), workshop.paint(noise));
                    }});
    rows.push_back({"lut3d-grey", peer("3D table"), [](Workshop& workshop) {
                        return filterJob(workshop, warmCube(workshop), workshop.paint(greys(0)));
                    }});
    rows.push_back({"sepia", peer("sepia"), [](Workshop& workshop) {
                        standin::Instance sepia = workshop.host.newInstance("PictureSepiaQVR");
                        sepia.set("SepiaRed", 40);
                        sepia.set("SepiaGreen", 20);
                        sepia.set("SepiaBlue", -20);
                        return filterJob(workshop, sepia, workshop.photo());
                    }});
}

} // namespace

std::vector<Row> allRows()
{
    std::vector<Row> rows;
    for (const auto add :
         {addInversion, addBrightness, addRegionTests, addColorSearch, addRectangleMask, addStatistics,
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
