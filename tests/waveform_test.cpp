#include "tests/reference/waveform.h"
#include "tests/support/operation_checks.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace
{

using reference::HostLine;
using reference::WaveformSettings;
using standin::Arguments;
using standin::MemoryBlock;
using standin::Picture;
using standin::Value;

using Bytes = std::vector<std::uint8_t>;

Arguments argumentsOf(const MemoryBlock& samples, const WaveformSettings& settings)
{
    return {samples,
            settings.sampleCount,
            settings.smooth,
            settings.width,
            settings.height,
            settings.outlineWidth,
            settings.backColour,
            settings.foreColour,
            settings.outlineColour,
            settings.bits,
            settings.autoScale};
}

Bytes words(const std::vector<int>& values)
{
    Bytes bytes;
    for (const int value : values)
    {
        bytes.push_back(static_cast<std::uint8_t>(value & 255));
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 & 255));
    }
    return bytes;
}

/// Noise, silence, steps, tones, bursts and full scale, in bytes that any sample format can be read from.
Bytes randomSamples(Random& random, int size)
{
    Bytes bytes(static_cast<std::size_t>(size));
    const int kind = random.between(0, 6);
    const double step = random.between(1, 400) / 100.0;
    const std::uint8_t level = random.oneOf(std::vector<std::uint8_t>{0, 1, 127, 128, 129, 255});
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        const double angle = static_cast<double>(i) * step / 10;
        switch (kind)
        {
        case 0:
            bytes[i] = random.byte();
            break;
        case 1:
            bytes[i] = level;
            break;
        case 2:
            bytes[i] = static_cast<std::uint8_t>(128 + static_cast<int>(120 * std::sin(angle)));
            break;
        case 3:
            bytes[i] = i % 2 == 0 ? 0 : random.byte();
            break;
        case 4:
            bytes[i] = random.onceIn(20) ? random.byte() : 128;
            break;
        case 5:
            bytes[i] = i / 7 % 2 == 0 ? 255 : 0;
            break;
        default:
            bytes[i] = static_cast<std::uint8_t>(127 * (1 + std::cos(angle / 5)));
            break;
        }
    }
    return bytes;
}

class Waveform : public ArtefactTest
{
protected:
    static Value render(TestHost& host, const MemoryBlock& samples, const WaveformSettings& settings)
    {
        return host.callGlobal("RenderSamplesQVR", argumentsOf(samples, settings));
    }

    /// Renders and compares; outlines wider than 1 must not be drawn by this host.
    static void expectWaveform(TestHost& host, const Bytes& samples, const WaveformSettings& settings,
                               const std::string& what = "")
    {
        const MemoryBlock block = host.newMemoryBlock(samples);
        const Value got = render(host, block, settings);
        EXPECT_FALSE(got.exception().has_value());
        const std::string text = callText("RenderSamplesQVR", argumentsOf(block, settings)) + " on " +
                                 std::to_string(samples.size()) + " bytes" +
                                 (what.empty() ? "" : ", " + what);
        const std::optional<reference::Waveform> wanted = reference::renderWaveform(samples, settings);
        if (wanted)
            expectPicture(wanted->picture, got.picture(), text);
        else
            EXPECT_TRUE(isClean(got, nullptr)) << text << " gave " << got.describe();
        EXPECT_TRUE(std::equal(samples.begin(), samples.end(), block.data())) << "the samples were changed";
    }

    static bool rendersNothing(TestHost& host, const MemoryBlock& samples, const WaveformSettings& settings)
    {
        const Value got = render(host, samples, settings);
        EXPECT_FALSE(got.exception().has_value());
        host.expectBalanced("after a waveform");
        return isClean(got, nullptr);
    }

    /// The lines that the host was asked to draw.
    static std::vector<HostLine> drawnLines(const TestHost& host)
    {
        std::vector<HostLine> lines;
        for (const std::string& call : host.callLog())
        {
            HostLine line;
            if (std::sscanf(call.c_str(), "RuntimeGraphicsDrawLine(%*[^,], %d, %d, %d, %d)", &line.x1,
                            &line.y1, &line.x2, &line.y2) == 4)
                lines.push_back(line);
        }
        return lines;
    }
};
ON_EVERY_ARTEFACT(Waveform);

TEST_P(Waveform, Defaults)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{90};
        const Bytes samples = randomSamples(random, 1000);
        const MemoryBlock block = host.newMemoryBlock(samples);
        const Value got = host.callGlobal("RenderSamplesQVR", {block, 0, 1, 0, 0, 0});
        const Picture picture = got.picture();
        EXPECT_EQ(picture.width(), 1000);
        EXPECT_EQ(picture.height(), 500);
        for (int x = 0; x < 1000; ++x)
        {
            const standin::Pixel centre = picture.pixel(x, 250);
            ASSERT_TRUE(centre.red == 0x27 && centre.green == 0x4C && centre.blue == 0x5A) << x;
        }
        expectPicture(reference::renderWaveform(samples, {})->picture, picture,
                      "RenderSamplesQVR with defaults");
    });
}

TEST_P(Waveform, NilBlockRaises)
{
    forEachHost(artefact(), [](TestHost& host) {
        expectNilObjectException(host.callGlobal("RenderSamplesQVR", {nullptr, 0, 1, 10, 10, 0}),
                                 "memoryblock is nil");
        expectNilObjectException(
            host.callGlobal("RenderSamplesQVR", {nullptr, 0, 1, 10, 40000, 0, 0U, 0U, 0U, 12, false}),
            "memoryblock is nil");
    });
}

TEST_P(Waveform, OtherBitsGiveNil)
{
    forEachHost(artefact(), [](TestHost& host) {
        const MemoryBlock block = host.newMemoryBlock(64);
        for (const int bits :
             {0,  1,  2,  6,  9,   10,  11,  12,    13,        14,   17,       24,       32,     64,
              -1, -6, -7, -8, -14, -15, -16, least, least + 1, most, most - 6, most - 7, 256 + 8})
            for (const int sampleCount : {0, -1, least, 1, 10})
                EXPECT_TRUE(rendersNothing(
                    host, block, {.sampleCount = sampleCount, .width = 10, .height = 10, .bits = bits}))
                    << bits;
        for (const int bits : {7, 8, 15, 16})
            EXPECT_FALSE(rendersNothing(host, block, {.width = 10, .height = 10, .bits = bits})) << bits;
    });
}

TEST_P(Waveform, KnownShapes)
{
    forEachHost(artefact(), [](TestHost& host) {
        const auto fore = [](const Picture& picture, int x, int y) {
            return picture.pixel(x, y).red == 0x27;
        };
        // Full scale without scaling ends beyond the bottom, and is cut there.
        const MemoryBlock loud = host.newMemoryBlock(Bytes(20, 255));
        const Picture full = render(host, loud, {.width = 4, .height = 20}).picture();
        const Picture scaled = render(host, loud, {.width = 4, .height = 20, .autoScale = true}).picture();
        for (const Picture& picture : {full, scaled})
            for (int y = 0; y < 20; ++y)
                ASSERT_EQ(fore(picture, 2, y), y >= 10) << y;
        const MemoryBlock negative = host.newMemoryBlock(Bytes(20, 0));
        const Picture above = render(host, negative, {.width = 4, .height = 20, .autoScale = true}).picture();
        for (int y = 0; y < 20; ++y)
            ASSERT_EQ(fore(above, 1, y), y <= 10) << y;
        // Silence scaled to fill, and columns without a sample, rise to the top.
        const MemoryBlock silent = host.newMemoryBlock(Bytes(20, 128));
        const Picture nothing = render(host, silent, {.width = 4, .height = 20, .autoScale = true}).picture();
        const Picture empty = render(host, silent, {.sampleCount = 1, .width = 4, .height = 20}).picture();
        for (int y = 0; y < 20; ++y)
        {
            ASSERT_EQ(fore(nothing, 3, y), y <= 10) << y;
            ASSERT_EQ(fore(empty, 1, y), y <= 10) << y;
        }
        const Picture quiet = render(host, silent, {.width = 4, .height = 20}).picture();
        for (int y = 0; y < 20; ++y)
            ASSERT_EQ(fore(quiet, 0, y), y == 10) << y;
        // A level outline is solid.
        const Picture level = render(host, silent, {.width = 4, .height = 20, .outlineWidth = 1}).picture();
        for (int x = 0; x < 4; ++x)
            ASSERT_EQ(level.pixel(x, 10).red, 0x20);
    });
}

TEST_P(Waveform, HeightsAndWidths)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{91};
        const Bytes samples = randomSamples(random, 60);
        for (const int height : {0, -1, least, 1, 2, 3, 500, 32767})
            expectWaveform(host, samples, {.width = 3, .height = height, .outlineWidth = 1});
        for (const int height : {32768, 40000, most})
            EXPECT_TRUE(rendersNothing(host, host.newMemoryBlock(samples), {.width = 3, .height = height}));
        expectWaveform(host, samples, {.width = 32767, .height = 1, .outlineWidth = 1});
        for (const int width : {0, -1, least})
            expectWaveform(host, samples, {.width = width, .height = 9});
        for (const int width : {32768, 268435454, 268435453, 268435456, 536870912, most})
            EXPECT_TRUE(rendersNothing(host, host.newMemoryBlock(samples), {.width = width, .height = 3}));
        EXPECT_TRUE(rendersNothing(host, host.newMemoryBlock(40000), {.height = 3})) << "40000 columns";
        expectWaveform(host, Bytes(32767, 200), {.height = 2});
    });
}

TEST_P(Waveform, EqualsTheReference)
{
    std::uint32_t seed = 92;
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        Random random{++seed};
        // The host's own lines are for another test.
        host.setAbsent("RuntimeGraphicsDrawLine");
        static const std::vector<int> smoothings{-1, 0, 1, 2, 3, 7, 20, -2, -3, most, most - 1, least};
        for (int i = 0; i < affordable(500); ++i)
        {
            WaveformSettings settings;
            const Bytes samples =
                randomSamples(random, random.onceIn(10) ? random.between(1, 5) : random.between(1, 700));
            settings.bits = random.oneOf(std::vector<int>{7, 8, 15, 16});
            const int available = static_cast<int>(samples.size()) / (settings.bits <= 8 ? 1 : 2);
            settings.sampleCount =
                random.onceIn(2) ? random.between(-1, 0) : random.between(1, available + 1);
            settings.smooth = random.onceIn(2) ? 1 : random.oneOf(smoothings);
            settings.width =
                random.between(0, 2) != 0 ? random.between(1, 60) : random.between(-1, available * 2);
            settings.height = random.between(1, 90);
            settings.outlineWidth = random.oneOf(std::vector<int>{-1, 0, 1, 1, 1, 2, 3, 1000, least, most});
            const auto colour = [&random] { return static_cast<std::uint32_t>(random.between(least, most)); };
            settings.backColour = colour();
            settings.foreColour = colour();
            settings.outlineColour = colour();
            settings.autoScale = random.onceIn(2);
            expectWaveform(host, samples, settings);
            ASSERT_FALSE(HasFailure());
        }
    });
}

TEST_P(Waveform, ColumnsMeetSamplesByRoundedDivision)
{
    // Columns and samples of all small counts: where products fall short of an integer, columns stay empty.
    int emptied = 0;
    TestHost host{hostSetup(artefact(), standin::Kind::Console)};
    Random random{93};
    for (int columns = 1; columns <= 128; ++columns)
    {
        const Bytes samples = randomSamples(random, columns);
        const WaveformSettings settings{.width = columns, .height = 7};
        emptied += reference::renderWaveform(samples, settings)->emptyColumns;
        expectWaveform(host, samples, settings);
        expectWaveform(host, randomSamples(random, random.between(columns, 3 * columns)), settings);
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(emptied, 0) << "these counts show nothing";
}

TEST_P(Waveform, Smoothing)
{
    Random random{94};
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        for (const int smooth : {-1, 0, 1, 2, 5, 1000, -2, -3, -1000, most, most - 1, least, least + 1})
            for (const int bits : {8, 15})
                for (const bool autoScale : {false, true})
                    for (const int width : {20, 90})
                        expectWaveform(host, randomSamples(random, 80),
                                       {.smooth = smooth,
                                        .width = width,
                                        .height = 40,
                                        .outlineWidth = 1,
                                        .bits = bits,
                                        .autoScale = autoScale});
    });
}

TEST_P(Waveform, SmoothingRoundsTheRangeToo)
{
    // Bars of level samples end exactly on a row, unless the range is a hair smaller or larger than it was.
    TestHost host{hostSetup(artefact(), standin::Kind::Console)};
    for (const int smooth : {9, 14, 23, 25, 39})
        for (int level = 1; level <= 40; ++level)
            expectWaveform(host, Bytes(4, static_cast<std::uint8_t>(128 + level)),
                           {.smooth = smooth, .width = 2, .height = 127});
}

TEST_P(Waveform, OutlinesFarOutside)
{
    // Tall pictures make lines longer than 16 bits hold, in both directions.
    forEachHost(artefact(), [](TestHost& host) {
        const Bytes swings = words({32767, -32768, 32767, 0, -32768, 20000, 100, -100, 32767, -32768});
        for (const int height : {32767, 20000, 8000})
            for (const int smooth : {1, 0, 2})
                expectWaveform(
                    host, swings,
                    {.smooth = smooth, .width = 10, .height = height, .outlineWidth = 1, .bits = 15});
        for (const int height : {32767, 501})
            expectWaveform(host, swings, {.width = 25, .height = height, .outlineWidth = 1, .bits = 15});
    });
}

TEST_P(Waveform, SumsWrapAround)
{
    forEachHost(artefact(), [](TestHost& host) {
        for (const int level : {32767, -32768})
        {
            const Bytes samples = words(std::vector<int>(70000, level));
            expectWaveform(host, samples, {.width = 1, .height = 50, .outlineWidth = 1, .bits = 15});
            expectWaveform(host, samples, {.width = 2, .height = 50, .bits = 15});
            expectWaveform(host, samples, {.width = 1, .height = 50, .bits = 15, .autoScale = true});
            expectWaveform(host, words(std::vector<int>(140000, level + 32768)),
                           {.width = 1, .height = 50, .bits = 16});
        }
    });
}

TEST_P(Waveform, CountsBeyondTheBlock)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{95};
        const Bytes samples = randomSamples(random, 100);
        MemoryBlock block = host.newMemoryBlock(samples);
        const auto wanted = [&](WaveformSettings settings, std::size_t size) {
            return reference::renderWaveform(std::span(samples).first(size), settings);
        };
        const WaveformSettings all{.sampleCount = 100, .width = 10, .height = 20};
        for (const int count : {101, 200, 65536, most})
        {
            WaveformSettings settings = all;
            settings.sampleCount = count;
            EXPECT_TRUE(rendersNothing(host, block, settings)) << count;
            settings.bits = 16;
            settings.sampleCount = count / 2 + 1;
            EXPECT_TRUE(rendersNothing(host, block, settings)) << count << " of 16 bits";
        }
        WaveformSettings wide = all;
        wide.bits = 15;
        for (const int count : {1 << 30, (1 << 30) + 50, most, 0x40000032})
        {
            wide.sampleCount = count;
            EXPECT_TRUE(rendersNothing(host, block, wide)) << "the size in bytes overflows";
        }
        expectPicture(wanted(all, 100)->picture, render(host, block, all).picture(), "all of the block");

        // A block says that it is smaller, or nothing about its size.
        block.reportSize(50);
        EXPECT_TRUE(rendersNothing(host, block, {.sampleCount = 51, .width = 10, .height = 20}));
        expectPicture(wanted({.sampleCount = 50, .width = 10, .height = 20}, 50)->picture,
                      render(host, block, {.sampleCount = 50, .width = 10, .height = 20}).picture(),
                      "50 bytes");
        expectPicture(wanted({.width = 10, .height = 20}, 50)->picture,
                      render(host, block, {.width = 10, .height = 20}).picture(), "a count of 0");
        block.reportSize(-1);
        expectPicture(wanted(all, 100)->picture, render(host, block, all).picture(), "an unknown size");
        EXPECT_TRUE(rendersNothing(host, block, {.height = 20})) << "no columns";
        // It has an address, and yet nothing is behind it.
        block.reportSize(0);
        for (const int count : {1, 100, most})
            EXPECT_TRUE(rendersNothing(host, block, {.sampleCount = count, .width = 10, .height = 20}));
        EXPECT_TRUE(rendersNothing(host, block, {.height = 20})) << "no columns";
        expectPicture(wanted({.width = 10, .height = 20}, 0)->picture,
                      render(host, block, {.width = 10, .height = 20}).picture(), "columns without samples");
    });
}

TEST_P(Waveform, NoSamplesAtAll)
{
    forEachHost(artefact(), [](TestHost& host) {
        expectWaveform(host, {}, {.width = 5, .height = 9, .outlineWidth = 1});
        expectWaveform(host, {}, {.width = 5, .height = 9, .autoScale = true});
        expectWaveform(host, {1}, {.width = 5, .height = 9, .bits = 16});
        EXPECT_TRUE(rendersNothing(host, host.newMemoryBlock(0), {.height = 9}));
        EXPECT_TRUE(rendersNothing(host, host.newMemoryBlock(1), {.height = 9, .bits = 15}));
    });
}

TEST_P(Waveform, WideOutlinesAreTheHostsLines)
{
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        TestHost host{setup.logged()};
        Random random{96};
        for (const int outlineWidth : {2, 3, 4, 9, 1000})
            for (const int smooth : {1, 2})
            {
                const Bytes samples = randomSamples(random, 300);
                const WaveformSettings settings{.smooth = smooth,
                                                .width = 23,
                                                .height = 30,
                                                .outlineWidth = outlineWidth,
                                                .outlineColour = 0x010203};
                const reference::Waveform wanted = *reference::renderWaveform(samples, settings);
                host.clearCallLog();
                const Picture got = render(host, host.newMemoryBlock(samples), settings).picture();
                const std::vector<HostLine> lines = drawnLines(host);
                ASSERT_EQ(lines.size(), wanted.lines.size());
                for (std::size_t i = 0; i < lines.size(); ++i)
                    EXPECT_TRUE(lines[i].x1 == wanted.lines[i].x1 && lines[i].y1 == wanted.lines[i].y1 &&
                                lines[i].x2 == wanted.lines[i].x2 && lines[i].y2 == wanted.lines[i].y2)
                        << "line " << i << " of an outline of " << outlineWidth;
                // Colour first, then height and width of the pen, then the lines.
                std::vector<std::string> steps;
                for (const std::string& call : host.callLog())
                    if (call.starts_with("REALSetPropValue"))
                        steps.push_back(call.substr(call.find('"')));
                const std::string size = std::to_string(outlineWidth);
                EXPECT_EQ(steps,
                          (std::vector<std::string>{"\"ForeColor\", 66051)", "\"PenHeight\", " + size + ")",
                                                    "\"PenWidth\", " + size + ")"}));
                EXPECT_EQ(got.width(), 23);
            }
    }
}

TEST_P(Waveform, WideOutlineOfEmptyColumnsEnds)
{
    forEachHost(artefact(), [](TestHost& host) {
        const WaveformSettings settings{.sampleCount = 3, .width = 50, .height = 30, .outlineWidth = 3};
        EXPECT_FALSE(rendersNothing(host, host.newMemoryBlock(3), settings));
    });
}

TEST_P(Waveform, WideOutlineLacksWhatTheHostLacks)
{
    Random random{97};
    const Bytes samples = randomSamples(random, 300);
    for (const int outlineWidth : {2, 1000})
    {
        const WaveformSettings settings{.width = 23, .height = 30, .outlineWidth = outlineWidth};
        for (const HostSetup& setup : hostSetups(artefact()))
        {
            for (const char* function : {"pluginPictureGraphicsGetter", "RuntimeGraphicsDrawLine"})
            {
                TestHost host{setup.without({function})};
                expectWaveform(host, samples, settings, std::string("without ") + function);
            }
            TestHost host{setup};
            host.faults().failCall("pluginPictureGraphicsGetter");
            expectWaveform(host, samples, settings, "without graphics");
            TestHost penless{setup.without({"REALSetPropValueUInt32", "REALSetPropValueInt"})};
            EXPECT_FALSE(rendersNothing(penless, penless.newMemoryBlock(samples), settings));
        }
    }
}

TEST_P(Waveform, KeepsToItsLimits)
{
    Random random{98};
    const Bytes samples = randomSamples(random, 300);
    const WaveformSettings settings{.width = 23, .height = 30, .outlineWidth = 1};
    // The picture that stands for a source is of no use here; what fails is the result.
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        TestHost host{setup};
        MemoryBlock block = host.newMemoryBlock(samples);
        host.faults().failCall("newPicture");
        EXPECT_TRUE(rendersNothing(host, block, settings));
        for (const standin::PictureQuirks& quirks : waysToBreak(host))
        {
            host.newPictureQuirks() = quirks;
            EXPECT_TRUE(rendersNothing(host, block, settings));
        }
        host.newPictureQuirks() = {};
        for (int n = 1; n <= 2; ++n)
        {
            host.faults().clear();
            host.faults().failCall("malloc", n);
            host.faults().failCall("calloc", n);
            const bool nothing = rendersNothing(host, block, settings);
            EXPECT_EQ(nothing, host.faults().failures() != 0);
        }
        host.faults().clear();
        EXPECT_FALSE(rendersNothing(host, block, settings));
        block.hidePointer();
        EXPECT_TRUE(rendersNothing(host, block, settings));
        TestHost without{setup.without({"memoryBlockGetPtr"})};
        EXPECT_TRUE(rendersNothing(without, without.newMemoryBlock(samples), settings));

        TestHost sizeless{setup.without({"memoryBlockGetSize"})};
        WaveformSettings counted = settings;
        EXPECT_TRUE(rendersNothing(sizeless, sizeless.newMemoryBlock(samples), {.height = 9}));
        counted.sampleCount = 300;
        expectWaveform(sizeless, samples, counted, "without sizes of blocks");
    }
    forEachHostVersion(artefact(), [&](TestHost& host) { expectWaveform(host, samples, settings); });
}

TEST_P(Waveform, SurvivesFailingCalls)
{
    Random random{99};
    const Bytes samples = randomSamples(random, 300);
    for (const int outlineWidth : {0, 1, 3})
    {
        const TortureJob job = [&](TestHost& host, std::vector<Picture>&) {
            return render(host, host.newMemoryBlock(samples),
                          {.width = 23, .height = 30, .outlineWidth = outlineWidth});
        };
        torture(artefact(), {}, job, {.alsoSpoil = {"REALSetPropValueUInt32", "REALSetPropValueInt"}});
    }
}

} // namespace
