#include "tests/reference/lut3d.h"
#include "tests/support/filters.h"

#include <limits>

namespace
{

using reference::ColourCube;
using reference::FilterRectangle;
using standin::Instance;
using standin::Picture;
using standin::Value;

/// The cube follows two pictures and four integers in the instance data.
constexpr int cubeOffset = 24;

class Lut3D : public ArtefactTest
{
protected:
    static Instance filterOf(TestHost& host, const ColourCube& cube, const FilterRectangle& rectangle = {})
    {
        Instance filter = host.newInstance("PictureLut3DQVR");
        std::memcpy(filter.data() + cubeOffset, cube.entries.data(), cube.entries.size() * sizeof(double));
        setRectangle(filter, rectangle);
        return filter;
    }

    static void expectMapped(TestHost& host, const Picture& source, const ColourCube& cube,
                             const FilterRectangle& rectangle, const std::string& what)
    {
        const auto before = source.rgba();
        Instance filter = filterOf(host, cube, rectangle);
        expectPicture(reference::mapThroughCube(download(source), cube, rectangle, freshPicture(source)),
                      runFilter(filter, source), filterText(filter, source, what));
        EXPECT_TRUE(before == source.rgba()) << "the source was changed";
    }

    static Value table(Instance& filter, unsigned r, unsigned g, unsigned b, unsigned x)
    {
        return filter.call("Table", {r, g, b, x});
    }
};
ON_EVERY_ARTEFACT(Lut3D);

/// Kinds of cubes: levels on and off the scale, whole ones, nearly whole ones, and ones that no number fits.
ColourCube randomCube(Random& random)
{
    static const std::vector<double> special{std::numeric_limits<double>::quiet_NaN(),
                                             std::numeric_limits<double>::infinity(),
                                             -std::numeric_limits<double>::infinity(),
                                             1e300,
                                             -1e300,
                                             1e10,
                                             -0.0,
                                             255.0,
                                             255.0000001,
                                             -1e-9,
                                             1e-310};
    ColourCube cube = reference::identityCube();
    const int kind = random.between(0, 4);
    for (double& entry : cube.entries)
        switch (kind)
        {
        case 0:
            entry = random.between(0, 255);
            break;
        case 1:
            entry = random.between(-80000, 380000) / 1000.0;
            break;
        case 2:
            entry += random.between(-3, 3);
            break;
        case 3:
            entry = random.onceIn(12) ? random.oneOf(special) : random.between(0, 25500) / 100.0;
            break;
        default:
            entry = random.onceIn(300) ? random.oneOf(special) : entry * 0.999999999;
            break;
        }
    return cube;
}

TEST_P(Lut3D, FreshInstanceMapsToBlack)
{
    forEachHost(artefact(), [](TestHost& host) {
        Instance filter = host.newInstance("PictureLut3DQVR");
        EXPECT_EQ(filter.definition().dataSize, 140000);
        for (const char* name : {"MinX", "MinY", "MaxX", "MaxY"})
            EXPECT_EQ(filter.get(name).integer(), 0) << name;
        EXPECT_TRUE(filter.get("SourcePicture").picture().isNil());
        EXPECT_TRUE(filter.get("DestinationPicture").picture().isNil());
        EXPECT_EQ(table(filter, 3, 4, 5, 1).number(), 0.0);
        Random random{110};
        const Picture source = upload(host, randomPicture(random, 13, 5));
        expectPicture(reference::Picture{13, 5}, runFilter(filter, source), "an empty cube");
    });
}

TEST_P(Lut3D, FieldsLieWhereTheHostLooksForThem)
{
    for (const double version : hostVersions)
    {
        TestHost host{hostSetup(artefact()).version(version)};
        Instance filter = host.newInstance("PictureLut3DQVR");
        const std::pair<const char*, int> integers[] = {
            {"MinX", 8}, {"MinY", 12}, {"MaxX", 16}, {"MaxY", 20}};
        for (const auto& [name, offset] : integers)
        {
            filter.set(name, -offset);
            EXPECT_EQ(fieldAt<std::int32_t>(filter, offset), -offset) << name;
        }
        const Picture source = host.newPicture(2, 2);
        const Picture destination = host.newPicture(2, 2);
        filter.set("SourcePicture", source);
        filter.set("DestinationPicture", destination);
        EXPECT_EQ(fieldAt<void*>(filter, 0), source.handle());
        EXPECT_EQ(fieldAt<void*>(filter, 4), destination.handle());
        filter.assign("Table", {1U, 2U, 3U, 1U}, 4.5);
        EXPECT_EQ(fieldAt<double>(filter, cubeOffset + 8 * (((1 * 18 + 2) * 18 + 3) * 3 + 1)), 4.5);
    }
}

TEST_P(Lut3D, TableReadsAndWritesEveryNode)
{
    TestHost host{hostSetup(artefact())};
    Instance filter = host.newInstance("PictureLut3DQVR");
    const auto entry = [](unsigned r, unsigned g, unsigned b, unsigned x) {
        return r * 1000.0 + g * 50.0 + b * 2.5 + x * 0.125 - 7000.0;
    };
    for (unsigned r = 0; r <= 17; ++r)
        for (unsigned g = 0; g <= 17; ++g)
            for (unsigned b = 0; b <= 17; ++b)
                for (unsigned x = 0; x <= 2; ++x)
                    filter.assign("Table", {r, g, b, x}, entry(r, g, b, x));
    for (unsigned r = 0; r <= 17; ++r)
        for (unsigned g = 0; g <= 17; ++g)
            for (unsigned b = 0; b <= 17; ++b)
                for (unsigned x = 0; x <= 2; ++x)
                    ASSERT_EQ(table(filter, r, g, b, x).number(), entry(r, g, b, x));

    // Indices out of range read 0 and write nothing.
    const std::vector<std::uint8_t> before(filter.data(), filter.data() + filter.definition().dataSize);
    constexpr unsigned far = 0xFFFFFFFF;
    const unsigned outside[][4] = {{18, 0, 0, 0},         {0, 18, 0, 0},         {0, 0, 18, 0},
                                   {0, 0, 0, 3},          {far, 0, 0, 0},        {0, far, 0, 0},
                                   {0, 0, far, 0},        {0, 0, 0, far},        {18, 18, 18, 3},
                                   {0x80000000, 0, 0, 0}, {0, 0, 0, 0x80000000}, {17, 17, 17, 3}};
    for (const auto& [r, g, b, x] : outside)
    {
        filter.assign("Table", {r, g, b, x}, 5.0);
        EXPECT_EQ(table(filter, r, g, b, x).number(), 0.0);
    }
    EXPECT_TRUE(std::equal(before.begin(), before.end(), filter.data())) << "something was written";

    // Values are kept as they are.
    for (const double value : {-1e300, 1e300, std::numeric_limits<double>::infinity(), -0.0, 300.5})
    {
        filter.assign("Table", {17U, 17U, 17U, 2U}, value);
        EXPECT_EQ(table(filter, 17, 17, 17, 2).number(), value);
    }
    filter.assign("Table", {0U, 0U, 0U, 0U}, std::numeric_limits<double>::quiet_NaN());
    const double kept = table(filter, 0, 0, 0, 0).number();
    EXPECT_TRUE(kept != kept);
}

TEST_P(Lut3D, IdentityCubeLosesNineGreys)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        const std::vector<int> lowered{57, 108, 124, 125, 210, 226, 227, 243, 244};
        reference::Picture greys{256, 1};
        reference::Picture wanted{256, 1};
        for (int i = 0; i < 256; ++i)
        {
            const auto level = static_cast<std::uint8_t>(i);
            const bool falls = std::find(lowered.begin(), lowered.end(), i) != lowered.end();
            const auto lower = static_cast<std::uint8_t>(falls ? i - 1 : i);
            greys.at(i, 0) = {level, level, level};
            wanted.at(i, 0) = {lower, lower, lower};
        }
        Instance filter = filterOf(host, reference::identityCube());
        expectPicture(wanted, runFilter(filter, upload(host, greys)), "identity cube on greys");

        reference::Picture nodes{256, 16};
        for (int i = 0; i < 256 * 16; ++i)
            nodes.pixels[static_cast<std::size_t>(i)] = {static_cast<std::uint8_t>(17 * (i & 15)),
                                                         static_cast<std::uint8_t>(17 * (i >> 4 & 15)),
                                                         static_cast<std::uint8_t>(17 * (i >> 8))};
        const Picture source = upload(host, nodes);
        Instance another = filterOf(host, reference::identityCube());
        expectPicture(nodes, runFilter(another, source), "identity cube on its nodes");
    });
}

TEST_P(Lut3D, WhiteIsTheLastNodeThatCounts)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{111};
        ColourCube cube = randomCube(random);
        for (int red = 0; red < ColourCube::nodes; ++red)
            for (int green = 0; green < ColourCube::nodes; ++green)
                for (int blue = 0; blue < ColourCube::nodes; ++blue)
                    for (int x = 0; x < 3; ++x)
                        if (red > 15 || green > 15 || blue > 15)
                            cube.at(red, green, blue, x) = std::numeric_limits<double>::quiet_NaN();
        for (int x = 0; x < 3; ++x)
            cube.at(15, 15, 15, x) = 10.75 + x * 100.0;
        Instance filter = filterOf(host, cube);
        const Picture white = upload(host, reference::Picture{9, 2, reference::pixelOf(0xFFFFFF)});
        expectPicture({9, 2, {10, 110, 210}}, runFilter(filter, white), "white");
        expectMapped(host, upload(host, randomPicture(random, 64, 9, Palette::Extremes)), cube, {},
                     "nodes behind the last one");
    });
}

TEST_P(Lut3D, LevelsAreCut)
{
    forEachHost(artefact(), [](TestHost& host) {
        struct Case
        {
            double entry;
            std::uint8_t wanted;
        };
        const Case cases[] = {{-0.5, 0},
                              {-1e300, 0},
                              {255.0, 255},
                              {255.5, 255},
                              {256.0, 255},
                              {1e300, 255},
                              {254.999, 254},
                              {0.999, 0},
                              {std::numeric_limits<double>::quiet_NaN(), 0},
                              {std::numeric_limits<double>::infinity(), 255},
                              {-std::numeric_limits<double>::infinity(), 0}};
        for (const Case& item : cases)
        {
            ColourCube cube;
            for (double& entry : cube.entries)
                entry = 77.0;
            for (int x = 0; x < 3; ++x)
                cube.at(15, 15, 15, x) = item.entry;
            // White lies on the last node, whose neighbour is itself: a weight of 0 times infinity is no
            // number.
            const reference::Picture white{4, 1, reference::pixelOf(0xFFFFFF)};
            expectMapped(host, upload(host, white), cube, {}, std::to_string(item.entry));
            if (item.entry - item.entry == 0 || item.entry != item.entry)
            {
                Instance filter = filterOf(host, cube);
                const std::uint8_t level = item.wanted;
                expectPicture({4, 1, {level, level, level}}, runFilter(filter, upload(host, white)),
                              std::to_string(item.entry));
            }
        }
    });
}

TEST_P(Lut3D, EveryPositionBetweenNodes)
{
    std::uint32_t seed = 112;
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        Random random{++seed};
        for (int times = 0; times < 12; ++times)
        {
            // All remainders of the three channels, each between nodes of its own.
            reference::Picture picture{17 * 17, 17};
            const auto level = [&random](int remainder) {
                return static_cast<std::uint8_t>(17 * random.between(0, remainder == 0 ? 15 : 14) +
                                                 remainder);
            };
            for (int i = 0; i < 17 * 17 * 17; ++i)
                picture.pixels[static_cast<std::size_t>(i)] = {level(i % 17), level(i / 17 % 17),
                                                               level(i / 289)};
            const ColourCube cube = times == 0 ? reference::identityCube() : randomCube(random);
            expectMapped(host, upload(host, picture), cube, {}, "all remainders");
        }
    });
}

TEST_P(Lut3D, EqualsTheReference)
{
    ColourCube cube;
    int uses = 0;
    forEachSource(artefact(), [&](TestHost& host, const Picture& source, Random& random) {
        if (uses++ % 8 == 0)
            cube = randomCube(random);
        const FilterRectangle rectangle = randomRectangle(random, source.width(), source.height());
        expectMapped(host, source, cube, rectangle, "random nodes");
    });
}

TEST_P(Lut3D, RectangleOnlyGivesTheSizeOfTheBlock)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{113};
        const Picture source = upload(host, randomPicture(random, 100, 50));
        const ColourCube cube = randomCube(random);
        const FilterRectangle rectangles[] = {
            {10, 5, 60, 30}, {0, 0, 100, 50},  {10, 5, 100, 50},   {30, 20, 30, 20},
            {30, 20, 10, 5}, {0, 50, 0, 0},    {0, 60, 0, 0},      {100, 0, 0, 0},
            {99, 49, 0, 0},  {-10, -10, 0, 0}, {-10, -10, -5, -7}, {-300, -200, 20, 10},
        };
        for (const FilterRectangle& rectangle : rectangles)
            expectMapped(host, source, cube, rectangle, "random nodes");
        Instance filter = filterOf(host, ColourCube(), {10, 5, 60, 30});
        const reference::Picture result = download(runFilter(filter, source));
        EXPECT_EQ(result.at(49, 24).red, 0);
        EXPECT_EQ(result.at(50, 24).red, reference::untouchedByte);
        EXPECT_EQ(result.at(49, 25).red, reference::untouchedByte);
    });
}

TEST_P(Lut3D, EveryRunReleasesTheOldDestination)
{
    forEachHost(artefact(), [](TestHost& host) {
        Instance filter = filterOf(host, reference::identityCube());
        const Picture source = host.newPicture(3, 3);
        const Picture first = runFilter(filter, source);
        EXPECT_EQ(first.referenceCount(), 2);
        const Picture second = runFilter(filter, source);
        EXPECT_EQ(first.referenceCount(), 1) << "released by the second run";
        host.expectBalanced("after two runs");

        // A run that fails leaves none.
        const auto expectFailure = [&](const std::string& what) {
            const Picture old = host.newPicture(1, 1);
            filter.set("DestinationPicture", old);
            const Value result = filter.call("Run");
            EXPECT_FALSE(result.boolean()) << what;
            EXPECT_FALSE(result.exception().has_value()) << what;
            EXPECT_TRUE(filter.get("DestinationPicture").picture().isNil()) << what;
            EXPECT_EQ(old.referenceCount(), 1) << what;
            host.expectBalanced(what);
        };
        host.faults().failCall("newPicture");
        expectFailure("no new picture");
        filter.set("SourcePicture", host.newPicture(1, 32768));
        expectFailure("a source too high");
        filter.set("SourcePicture", nullptr);
        expectFailure("no source");
    });
}

TEST_P(Lut3D, DestinationCanBecomeTheSource)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{114};
        const ColourCube cube = randomCube(random);
        const Picture source = upload(host, randomPicture(random, 17, 6));
        Instance filter = filterOf(host, cube);
        const Picture once = runFilter(filter, source);
        const reference::Picture wanted =
            reference::mapThroughCube(download(once), cube, {}, freshPicture(once));
        expectPicture(wanted, runFilter(filter, once), "mapped twice");
    });
}

TEST_P(Lut3D, SourceAndDestinationCanBeOnePicture)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        Random random{115};
        const ColourCube cube = randomCube(random);
        const Picture source = upload(host, randomPicture(random, 17, 6));
        const auto before = source.rgba();
        Instance filter = filterOf(host, cube, {3, 2, 0, 0});
        filter.set("DestinationPicture", source);
        const Picture result = runFilter(filter, source);
        EXPECT_FALSE(result == source);
        expectPicture(reference::mapThroughCube(download(source), cube, {3, 2, 0, 0}, freshPicture(source)),
                      result, "a source that was the destination");
        EXPECT_TRUE(before == source.rgba()) << "the source was changed";
        EXPECT_EQ(source.referenceCount(), 2) << "ours, and the filter's one as source";
        host.expectBalanced("after the run");
    });
}

TEST_P(Lut3D, CloseReleasesBothPicturesAndKeepsTheCube)
{
    forEachHost(artefact(), [](TestHost& host) {
        expectCloseReleasesPictures(host, filterOf(host, reference::identityCube(), {1, 2, 3, 4}),
                                    [](Instance& filter) {
                                        EXPECT_EQ(filter.get("MaxY").integer(), 4);
                                        EXPECT_EQ(table(filter, 2, 3, 4, 1).number(), 51.0);
                                    });
    });
}

TEST_P(Lut3D, KeepsToItsLimits)
{
    const SourceJob job = [](TestHost& host, const Picture& source) {
        Instance filter = filterOf(host, reference::identityCube());
        return Value(!runFilter(filter, source).isNil());
    };
    expectSizeLimits(artefact(), job, false);
    expectCleanFailures(artefact(), job, false);
    expectSameOnAllVersions(
        artefact(),
        [](TestHost& host, const Picture& source) {
            Instance filter = filterOf(host, reference::identityCube());
            return Value(runFilter(filter, source));
        },
        [](const reference::Picture& source) {
            return reference::mapThroughCube(source, reference::identityCube(), {},
                                             {source.width, source.height});
        });
}

} // namespace
