// Whatever makes a colour of a colour, for all 2^24 of them: both artefacts, both widths, through the cache
// and around it, in each format. Every method has several sets of arguments: the first in every run, the
// others where the environment variable PICTUREQVR_TEST_ALL is set.
#include "tests/reference/binary_string.h"
#include "tests/reference/brightness_contrast.h"
#include "tests/reference/channels.h"
#include "tests/reference/colour_search.h"
#include "tests/reference/colour_statistics.h"
#include "tests/reference/inversion.h"
#include "tests/reference/lut3d.h"
#include "tests/reference/masks.h"
#include "tests/reference/regions.h"
#include "tests/reference/saturation.h"
#include "tests/reference/sepia.h"
#include "tests/reference/tint.h"
#include "tests/support/every_colour.h"
#include "tests/support/filters.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace
{

using reference::allChannels;
using reference::Channel;
using reference::Channels;
using reference::Pixel;
using standin::Arguments;
using standin::Storage;
using standin::Value;

/// Bands of the reference's pictures.
using Band = reference::Picture;

const bool everyArgument = std::getenv("PICTUREQVR_TEST_ALL") != nullptr;

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
/// 255 times this is just above what fits 32 bits.
constexpr double justTooLarge = 8421504.55;

/// A host whose new pictures have the storage, and whose freed pictures' memory serves the next ones: making
/// it anew would take longer than the calls.
HostSetup hostOf(standin::Artefact artefact, Storage storage)
{
    const bool bitmap = storage == Storage::Bitmap;
    HostSetup setup =
        hostSetup(artefact, bitmap ? standin::Kind::Console : standin::Kind::Desktop).newPictures(storage);
    setup.options.memory = standin::Memory::Pooled;
    return setup;
}

std::vector<standin::Artefact> artefacts()
{
    std::vector<standin::Artefact> all = bundlesOfThisBuild();
    all.push_back(standin::Artefact::SharedObject);
    return all;
}

/// One of the plug-in's loops.
struct Loop
{
    int lanes;
    bool streamed;
};

void choose(TestHost& host, const Loop& loop)
{
    *host.pluginVariable("qvrLaneLimit") = loop.lanes;
    *host.pluginVariable("qvrSmallestStreamed") = loop.streamed ? 0 : most;
}

/// What a method does with its result's pixels.
enum class Stores
{
    AroundTheCache, ///< or through it
    Otherwise
};

/// The loops to be tried with a format: in an ordinary run both widths in each, and all only in one of them,
/// since the others' code differs from theirs in nothing but the format.
std::vector<Loop> loopsOf(Storage storage, Stores stores)
{
    if (stores == Stores::Otherwise)
        return {{4, false}, {8, false}};
    if (everyArgument || storage == Storage::GWorld32)
        return {{4, false}, {4, true}, {8, false}, {8, true}};
    return {{4, storage == Storage::GWorld24}, {8, storage != Storage::GWorld24}};
}

/// What a call can use: every colour as source, in two orders.
class Sources
{
public:
    Sources(TestHost& testHost, Storage sourceStorage)
        : host(testHost),
          storage(sourceStorage),
          first(everyColour(testHost, sourceStorage))
    {
    }

    TestHost& host;
    Storage storage;
    standin::Picture first;

    const standin::Picture& second()
    {
        if (another.isNil())
            another = everyColour(host, storage, Order::Second);
        return another;
    }

    /// Every other pixel of the first one, without neighbours.
    const standin::Picture& isolated(int parity)
    {
        if (alone.isNil())
            alone = everyColour(host, storage, Order::First,
                                [parity](auto& band) { return isolatedColours(band, parity); });
        return alone;
    }

    /// The first one as a binary string.
    const standin::String& binary()
    {
        const std::uint32_t size = colourColumns * colourRows * 3 + 40;
        if (string.isNil())
            string = host.newString(
                reference::headerBytes({.length = size, .width = colourColumns, .height = colourRows}) +
                    packedColours(),
                standin::encodingNone);
        return string;
    }

private:
    standin::String string;
    standin::Picture another;
    standin::Picture alone;
};

/// A method, what to call it with, and its truth.
struct Case
{
    std::string name;
    std::vector<Arguments> arguments;
    std::function<reference::Picture(const Band& first, const Band& second, const Arguments& arguments)>
        wanted;
    /// How to call it; nothing for a picture's method with these arguments.
    std::function<standin::Picture(Sources& sources, const Arguments& arguments)> call;
    std::vector<Storage> storages{Storage::GWorld32, Storage::GWorld24, Storage::Bitmap};
    Pairs pairs = Pairs::NotNeeded;
    Stores stores = Stores::AroundTheCache;
};

void PrintTo(const Case& item, std::ostream* out)
{
    *out << item.name;
}

std::string describe(const Case& item, const Arguments& arguments, const Loop& loop)
{
    return callText(item.name, arguments) + " with " + std::to_string(loop.lanes) + " lanes" +
           (loop.streamed ? ", streamed" : "");
}

class EveryColour : public testing::TestWithParam<Case>
{
};

TEST_P(EveryColour, EqualsTheReference)
{
    const Case& item = GetParam();
    const std::size_t sets = everyArgument ? item.arguments.size() : 1;
    for (std::size_t set = 0; set < sets; ++set)
    {
        const Arguments& arguments = item.arguments[set];
        const reference::Picture wanted = mappedColours(
            [&](const Band& first, const Band& second) { return item.wanted(first, second, arguments); },
            item.pairs);
        for (const standin::Artefact artefact : artefacts())
            for (const Storage storage : item.storages)
            {
                TestHost host{hostOf(artefact, storage)};
                Sources sources{host, storage};
                for (const Loop& loop : loopsOf(storage, item.stores))
                {
                    choose(host, loop);
                    standin::Picture got = item.call
                                               ? item.call(sources, arguments)
                                               : host.call(sources.first, item.name, arguments).picture();
                    ASSERT_EQ(differenceFrom(wanted, got), "") << describe(item, arguments, loop);
                }
            }
    }
}

std::string nameOfCase(const testing::TestParamInfo<Case>& info)
{
    const std::size_t count = info.param.arguments.front().size();
    return info.param.name + (count == 0 ? "" : std::to_string(count));
}

/// One value, or one each.
Channels channelsAt(const Arguments& arguments, std::size_t first, std::size_t count)
{
    if (count == 1)
        return allChannels(arguments[first].number());
    return {arguments[first].number(), arguments[first + 1].number(), arguments[first + 2].number()};
}

#define EVERY_COLOUR_OF(Family, cases)                                                                       \
    INSTANTIATE_TEST_SUITE_P(Family, EveryColour, testing::ValuesIn(cases), nameOfCase)

const Case inversions[] = {
    {.name = "InvertQVR",
     .arguments = {{}},
     .wanted = [](auto& first, auto&, auto&) { return reference::invert(first, {}); }},
    {.name = "InvertGrayQVR",
     .arguments = {{}},
     .wanted = [](auto& first, auto&, auto&) { return reference::invertGray(first, {}); }},
};
EVERY_COLOUR_OF(Inversion, inversions);

/// A tone method with one value for all channels and its other form with one for each.
template <class Formula>
void addTone(std::vector<Case>& cases, const std::string& name, Formula formula,
             const std::vector<Arguments>& forAll, const std::vector<Arguments>& forEach)
{
    const auto wanted = [formula](auto& first, auto&, auto& arguments) { return formula(first, arguments); };
    cases.push_back({.name = name, .arguments = forAll, .wanted = wanted});
    cases.push_back({.name = name, .arguments = forEach, .wanted = wanted});
}

std::vector<Case> tones()
{
    using reference::Picture;
    std::vector<Case> cases;
    addTone(cases, "ChangeContrastQVR",
            [](const Picture& source, const Arguments& arguments) {
                return contrast(source, channelsAt(arguments, 0, arguments.size()));
            },
            {{0.3}, {0.0}, {-1.0}, {-0.5}, {1.0 / 127}, {-3.7}, {1e8}, {infinite}, {noNumber}},
            {{0.7, -0.25, 3.1}, {0.5, -1.0, justTooLarge}, {noNumber, 1.0, -infinite}});
    addTone(cases, "ChangeBrightnessAbsoluteQVR",
            [](const Picture& source, const Arguments& arguments) {
                return absoluteBrightness(source, channelsAt(arguments, 0, arguments.size()));
            },
            {{40.6}, {-0.5}, {255.0}, {-255.0}, {0.9999999}, {2147483647.0 - 254}, {-3e9}, {noNumber}},
            {{10.0, -20.25, 0.5}, {255.5, -255.5, 0.0}, {infinite, 1e-300, noNumber}});
    addTone(cases, "ChangeBrightnessLinearQVR",
            [](const Picture& source, const Arguments& arguments) {
                return linearBrightness(source, channelsAt(arguments, 0, arguments.size()));
            },
            {{70.3}, {-70.3}, {255.0}, {-255.0}, {300.0}, {-300.0}, {0.0}, {1e9}, {-infinite}, {noNumber}},
            {{33.3, -44.4, 0.1}, {-254.9, 255.1, 512.0}, {noNumber, -1e300, 3e9}});
    const auto two = [](auto function) {
        return [function](const Picture& source, const Arguments& arguments) {
            const std::size_t count = arguments.size() / 2;
            return function(source, channelsAt(arguments, 0, count), channelsAt(arguments, count, count));
        };
    };
    const std::vector<Arguments> pairs{{0.3, 40.5},     {-0.7, -60.0}, {0.0, 255.0},
                                       {0.0, -255.0},   {1e300, 1.0},  {noNumber, 0.0},
                                       {0.5, infinite}, {-1.0, 127.0}, {justTooLarge, 0.0}};
    const std::vector<Arguments> triples{{0.2, -0.4, 1.6, 12.0, -34.5, 0.5},
                                         {-1.0, 0.0, 5.0, 255.0, -255.0, 300.0},
                                         {noNumber, 1e9, 0.0, 1.0, -1e9, -infinite}};
    addTone(cases, "ChangeContrastBrightnessLinearQVR", two(reference::contrastLinearBrightness), pairs,
            triples);
    addTone(cases, "ChangeContrastBrightnessAbsoluteQVR", two(reference::contrastAbsoluteBrightness), pairs,
            triples);
    cases.push_back({.name = "ChangeCustomQVR",
                     .arguments = {{1.5, -20.25},
                                   {1.0, 0.0},
                                   {-1.0, 255.0},
                                   {0.5, 0.5},
                                   {1e9, -1e9},
                                   {justTooLarge, 0.0},
                                   {noNumber, 0.0},
                                   {0.0, infinite}},
                     .wanted = [](auto& first, auto&, auto& arguments) {
                         return custom(first, arguments[0].number(), arguments[1].number());
                     }});
    cases.push_back(
        {.name = "ChangeSaturationQVR",
         // (816 + 255) / 255 is 4.2, whose multiples round to whole numbers that they do not reach.
         .arguments =
             {{816}, {77}, {0}, {-255}, {-256}, {-300}, {255}, {1}, {-1}, {100000000}, {most}, {least}},
         .wanted = [](auto& first, auto&, auto& arguments) {
             return reference::saturation(first, arguments[0].integer());
         }});
    return cases;
}
EVERY_COLOUR_OF(Tone, tones());

const Case searches[] = {
    {.name = "ExtractColorRectangleMaskQVR",
     .arguments = {{0}, {1}},
     .wanted = [](auto& first, auto&,
                  auto& arguments) { return maskOfIsolated(isolatedColours(first, arguments[0].integer())); },
     .call =
         [](Sources& sources, auto& arguments) {
             return sources.host
                 .call(sources.isolated(arguments[0].integer()), "ExtractColorRectangleMaskQVR")
                 .picture();
         },
     .stores = Stores::Otherwise},
    {.name = "ReplaceColorQVR",
     .arguments = {{0x808182U, 0x010203U},
                   {0U, 0xFFFFFFU},
                   {0xFFFFFFU, 0U},
                   {0xFF123456U, 0xFFABCDEFU},
                   {0x00FF00U, 0x00FF00U}},
     .wanted =
         [](auto& first, auto&, auto& arguments) {
             return reference::replaceColor(first, arguments[0].colour(), arguments[1].colour());
         }},
    {.name = "ExtractColorQVR",
     .arguments = {{0x808182U, 0x010203U, 0xFEDCBAU},
                   {0U, 0xFFFFFFU, 0U},
                   {0xFFFFFFU, 0U, 0xFFFFFFU},
                   {0xFF123456U, 0xFFABCDEFU, 0xFF654321U}},
     .wanted =
         [](auto& first, auto&, auto& arguments) {
             return reference::extractColor(first, arguments[0].colour(), arguments[1].colour(),
                                            arguments[2].colour());
         }},
};
EVERY_COLOUR_OF(Search, searches);

/// A table that is not its own inverse and not the same for any two channels.
reference::LevelTable levelTable(int kind, int channel)
{
    reference::LevelTable table{};
    Random random{static_cast<std::uint32_t>(3 * kind + channel)};
    for (std::uint8_t& level : table)
        level = random.byte();
    return table;
}

reference::Picture throughTables(const Band& first, const Band&, const Arguments& arguments)
{
    const int kind = arguments[0].integer();
    return transformColors(first, levelTable(kind, 0), levelTable(kind, 1), levelTable(kind, 2));
}

standin::Picture throughTables(Sources& sources, const Arguments& arguments,
                               const standin::Picture& destination)
{
    const auto block = [&](int channel) {
        return sources.host.newMemoryBlock(levelTable(arguments[0].integer(), channel));
    };
    return sources.host.call(sources.first, "TransformColorsQVR", {block(0), block(2), block(1), destination})
        .picture();
}

/// The calls of a method that replaces a channel.
Case replacement(const std::string& name, Channel channel)
{
    return {.name = name,
            .arguments = {{}},
            .wanted = [channel](auto& first, auto& second,
                                auto&) { return reference::replaceChannel(first, second, channel); },
            .call =
                [name](Sources& sources, auto&) {
                    return sources.host.call(sources.first, name, {sources.second()}).picture();
                },
            .pairs = Pairs::Needed};
}

const Case channels[] = {
    {.name = "TransformColorsQVR",
     .arguments = {{1}, {2}},
     .wanted = [](auto& first, auto& second,
                  auto& arguments) { return throughTables(first, second, arguments); },
     .call = [](Sources& sources,
                auto& arguments) { return throughTables(sources, arguments, standin::Picture()); }},
    replacement("ReplaceRedChannelQVR", Channel::Red),
    replacement("ReplaceGreenChannelQVR", Channel::Green),
    replacement("ReplaceBlueChannelQVR", Channel::Blue),
    {.name = "CombinePicturesQVR",
     .arguments = {{}},
     .wanted = [](auto& first, auto& second, auto&) { return reference::combine(first, second, first); },
     .call =
         [](Sources& sources, auto&) {
             return sources.host
                 .callGlobal("CombinePicturesQVR", {sources.first, sources.first, sources.second()})
                 .picture();
         },
     .pairs = Pairs::Needed},
    {.name = "MergePictureQVR",
     .arguments = {{}},
     .wanted = [](auto& first, auto& second, auto&) { return reference::merge(first, second); },
     .call =
         [](Sources& sources, auto&) {
             return sources.host.callGlobal("MergePictureQVR", {sources.first, sources.second()}).picture();
         },
     .pairs = Pairs::Needed},
};
EVERY_COLOUR_OF(Channels, channels);

Case mask(Storage storage, reference::AlphaPlace place)
{
    return {.name = "EmbeddedMaskQVR_" + std::string(nameOf(storage)) + "_",
            .arguments = {{false}, {true}},
            .wanted =
                [place](auto& first, auto&, auto& arguments) {
                    return reference::embeddedMask(first, place, arguments[0].boolean());
                },
            .call =
                [](Sources& sources, auto& arguments) {
                    return sources.host.call(sources.first, "EmbeddedMaskQVR", arguments).picture();
                },
            .storages = {storage}};
}

const Case masks[] = {
    mask(Storage::GWorld32, reference::AlphaPlace::FirstByte),
    mask(Storage::GWorld24, reference::AlphaPlace::Nowhere),
    mask(Storage::Bitmap, reference::AlphaPlace::FourthByte),
    {.name = "BinaryStringtoPictureQVR",
     .arguments = {{}},
     .wanted = [](auto& first, auto&, auto&) { return reference::opaque(first); },
     .call =
         [](Sources& sources, auto&) {
             return sources.host.callGlobal("BinaryStringtoPictureQVR", {sources.binary()}).picture();
         }},
};
EVERY_COLOUR_OF(Bytes, masks);

reference::SepiaSettings sepiaSettings(const Arguments& arguments)
{
    return {.redWeight = arguments[0].number(),
            .greenWeight = arguments[1].number(),
            .blueWeight = arguments[2].number(),
            .sepiaRed = arguments[3].integer(),
            .sepiaGreen = arguments[4].integer(),
            .sepiaBlue = arguments[5].integer()};
}

standin::Picture runSepia(Sources& sources, const Arguments& arguments)
{
    standin::Instance filter = sources.host.newInstance("PictureSepiaQVR");
    const char* const properties[] = {"FactorRed", "FactorBlue", "FactorGreen",
                                      "SepiaRed",  "SepiaGreen", "SepiaBlue"};
    for (std::size_t i = 0; i < arguments.size(); ++i)
        filter.set(properties[i], arguments[i]);
    return runFilter(filter, sources.first);
}

/// Levels on the scale and off it, whole and not, and with some that are none.
reference::ColourCube cubeOf(int kind)
{
    reference::ColourCube cube = reference::identityCube();
    Random random{static_cast<std::uint32_t>(kind)};
    for (double& entry : cube.entries)
        switch (kind)
        {
        case 1:
            entry = random.between(0, 255000) / 1000.0;
            break;
        case 2:
            entry = random.between(-80000, 380000) / 1000.0;
            break;
        case 3:
            entry = random.onceIn(12) ? random.parameter() : entry * 0.999999999;
            break;
        default:
            break;
        }
    return cube;
}

standin::Picture runLut(Sources& sources, const Arguments& arguments)
{
    constexpr int cubeOffset = 24;
    standin::Instance filter = sources.host.newInstance("PictureLut3DQVR");
    const reference::ColourCube cube = cubeOf(arguments[0].integer());
    std::memcpy(filter.data() + cubeOffset, cube.entries.data(), cube.entries.size() * sizeof(double));
    return runFilter(filter, sources.first);
}

const Case filters[] = {
    {.name = "TintPictureQVR",
     .arguments = {{0x4C961DU, 0xFFC08050U}, {0xFFFFFFU, 0xFFFFFFU}, {0U, 0xFFFFFFU}, {0x555555U, 0x0180FFU}},
     .wanted =
         [](auto& first, auto&, auto& arguments) {
             return reference::tint(first, arguments[0].colour(), arguments[1].colour());
         },
     .call =
         [](Sources& sources, auto& arguments) {
             return sources.host.callGlobal("TintPictureQVR", {sources.first, arguments[0], arguments[1]})
                 .picture();
         }},
    {.name = "PictureSepiaQVR",
     .arguments = {{0.299, 0.587, 0.114, 40, 0, -20},
                   {1.0, 1.0, 1.0, 0, -300, 300},
                   {-0.5, 0.25, 2.0, 255, -255, 1},
                   {2000000.0, -3.5, 1e300, most, least, 0},
                   {noNumber, infinite, 0.001, 0, 1, most}},
     .wanted = [](auto& first, auto&,
                  auto& arguments) { return reference::sepia(first, sepiaSettings(arguments), first); },
     .call = runSepia},
    {.name = "PictureLut3DQVR",
     .arguments = {{1}, {0}, {2}, {3}},
     .wanted =
         [](auto& first, auto&, auto& arguments) {
             return reference::mapThroughCube(first, cubeOf(arguments[0].integer()), {}, first);
         },
     .call = runLut},
};
EVERY_COLOUR_OF(Filters, filters);

/// Answers that are no colours: they are asked so that every colour matters, or a large sample where one
/// answer is for one colour.
class EveryColourAnswers : public ArtefactTest
{
protected:
    /// Runs `test(host, storage, turn)` for each format and width; `turn` counts the times.
    template <class Test>
    static void forEachWidth(Test test)
    {
        int turn = 0;
        for (const Storage storage : {Storage::GWorld32, Storage::GWorld24, Storage::Bitmap})
        {
            TestHost host{hostOf(artefact(), storage)};
            for (const int lanes : laneCounts())
            {
                choose(host, {lanes, false});
                SCOPED_TRACE(std::to_string(lanes) + " lanes");
                test(host, storage, turn++);
            }
        }
    }

    /// The first of them, or all.
    template <class Item>
    static std::vector<Item> chosen(std::vector<Item> items)
    {
        if (!everyArgument)
            items.resize(1);
        return items;
    }
};
ON_EVERY_ARTEFACT(EveryColourAnswers);

/// As many of the colours as are tried in a turn; all turns together try all of up to six times as many.
std::vector<Pixel> partOf(const std::vector<Pixel>& colours, int turn)
{
    constexpr std::size_t most = affordable(8192);
    std::vector<Pixel> part;
    for (std::size_t i = 0; i < std::min(most, colours.size()); ++i)
        part.push_back(colours[(static_cast<std::size_t>(turn) * most + i) % colours.size()]);
    return part;
}

/// A region test passes a picture of `right` colours, and fails for rows of them with one wrong colour in
/// each.
void expectAnswers(TestHost& host, Storage storage, const std::string& method, const Arguments& arguments,
                   const std::vector<Pixel>& right, const std::vector<Pixel>& wrong)
{
    constexpr std::size_t columns = 19;
    const std::string text = callText(method, arguments);
    ASSERT_TRUE(host.call(pictureOfColours(host, storage, right), method, arguments).boolean()) << text;

    std::vector<Pixel> rows(wrong.size() * columns);
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = right[i % right.size()];
    for (std::size_t row = 0; row < wrong.size(); ++row)
        rows[row * columns + row % columns] = wrong[row];
    if (rows.empty())
        return;
    const standin::Picture picture = pictureOfColours(host, storage, rows, columns);
    for (std::size_t row = 0; row < wrong.size(); ++row)
    {
        Arguments inRow = arguments;
        for (const int side : {0, static_cast<int>(row), static_cast<int>(columns), 1})
            inRow.emplace_back(side);
        ASSERT_FALSE(host.call(picture, method, inRow).boolean()) << text << " of " << pixelText(wrong[row]);
    }
}

TEST_P(EveryColourAnswers, GreyWithinATolerance)
{
    for (const int tolerance : chosen<int>({10, 0, -1, 127, 254, -255, most, least}))
    {
        const std::int64_t widest = std::llabs(tolerance);
        const std::vector<Pixel> right = coloursOfSpread(0, widest);
        const std::vector<Pixel> nearest = coloursOfSpread(widest + 1, widest + 1);
        forEachWidth([&](TestHost& host, Storage storage, int turn) {
            std::vector<Pixel> wrong = partOf(nearest, turn);
            for (const Pixel& pixel : colourBand(Order::First, turn, 2).pixels)
                if (spreadOf(pixel) > widest)
                    wrong.push_back(pixel);
            expectAnswers(host, storage, "isGrayQVR", {tolerance}, right, wrong);
        });
    }
}

TEST_P(EveryColourAnswers, BlackAndWhite)
{
    const auto test = [](const std::string& method, std::uint32_t colour) {
        std::vector<Pixel> right(256, reference::pixelOf(colour));
        for (std::size_t i = 0; i < right.size(); ++i)
            right[i].alpha = static_cast<std::uint8_t>(i);
        forEachWidth([&](TestHost& host, Storage storage, int turn) {
            std::vector<Pixel> wrong;
            for (std::uint32_t bit = 1; bit <= 0x800000; bit *= 2)
                wrong.push_back(reference::pixelOf(colour ^ bit));
            for (const Pixel& pixel : colourBand(Order::First, turn, 2).pixels)
                if (colourOf(pixel) != colour)
                    wrong.push_back(pixel);
            expectAnswers(host, storage, method, {}, right, wrong);
        });
    };
    test("isBlackQVR", 0);
    test("isWhiteQVR", 0xFFFFFF);
}

/// The shuffle makes a different set of colours of each band, so that a mistake in one colour cannot be made
/// good by another in all of them.
TEST_P(EveryColourAnswers, CountsBandByBand)
{
    constexpr int rows = 16;
    const std::vector<int> thresholds = chosen<int>({10, 0, 29, 127, 254, 255, -1, most, least});
    forEachWidth([&](TestHost& host, Storage storage, int) {
        for (int top = 0; top < colourRows; top += rows)
        {
            const reference::Picture band = colourBand(Order::First, top, rows);
            const standin::Picture picture = pictureOfColours(host, storage, band.pixels);
            for (const int threshold : thresholds)
                ASSERT_EQ(host.call(picture, "ColornessQVR", {threshold}).number(),
                          reference::colorness(band, threshold))
                    << "threshold " << threshold << ", from row " << top;

            reference::Histograms wanted;
            countColors(band, wanted);
            Value red = nullptr;
            Value blue = nullptr;
            Value green = nullptr;
            Value count = 0;
            host.call(picture, "CountColorsQVR", {byref(red), byref(blue), byref(green), byref(count)});
            ASSERT_EQ(count.integer(), wanted.count);
            for (const auto& [got, histogram] : {std::pair{&red, &wanted.declaredRed},
                                                 {&blue, &wanted.declaredBlue},
                                                 {&green, &wanted.declaredGreen}})
                ASSERT_EQ(std::memcmp(got->memoryBlock().data(), histogram->data(), sizeof *histogram), 0)
                    << "from row " << top;
        }
    });
}

TEST_P(EveryColourAnswers, FindsEachColourOnce)
{
    constexpr int side = 64;
    forEachWidth([&](TestHost& host, Storage storage, int turn) {
        const standin::Picture whole = everyColour(host, storage);
        if (!sanitized)
            for (const std::uint32_t colour :
                 chosen<std::uint32_t>({0x7F8081, 0, 0xFFFFFF, 1, 0x800000, 0xFF010203}))
                ASSERT_EQ(host.call(whole, "CountColorQVR", {colour}).integer(), 1) << colour;

        const reference::Picture some = colourBand(Order::First, turn, 1);
        const standin::Picture picture = pictureOfColours(host, storage, some.pixels, side);
        for (const Pixel& pixel : some.pixels)
            ASSERT_EQ(host.call(picture, "CountColorQVR", {reference::colourOf(pixel)}).integer(), 1)
                << pixelText(pixel);
    });
}

TEST_P(EveryColourAnswers, PacksAndTakesMasks)
{
    const std::string packed = packedColours();
    for (const Storage storage : {Storage::GWorld32, Storage::GWorld24, Storage::Bitmap})
    {
        TestHost host{hostOf(artefact(), storage)};
        Sources sources{host, storage};
        for (const Loop& loop : loopsOf(storage, Stores::AroundTheCache))
        {
            choose(host, loop);
            SCOPED_TRACE(std::to_string(loop.lanes) + (loop.streamed ? " lanes, streamed" : " lanes"));
            const Value string = host.callGlobal("PicturetoBinaryStringQVR", {sources.first});
            const std::string& got = string.string().bytes();
            ASSERT_EQ(got.size(), packed.size() + 40);
            ASSERT_TRUE(std::equal(packed.begin(), packed.end(), got.begin() + 40));
        }
        for (const bool swap : {false, true})
        {
            standin::Picture picture = sources.first.clone();
            host.assign(picture, "EmbeddedMaskQVR", {swap}, sources.second());
            ASSERT_EQ(differenceFromAssignedMask(picture, swap), "");
        }
    }
}

} // namespace
