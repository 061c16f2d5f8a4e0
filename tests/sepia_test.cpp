#include "tests/reference/sepia.h"
#include "tests/support/filters.h"

namespace
{

using reference::pixelOf;
using reference::SepiaSettings;
using standin::Instance;
using standin::Picture;
using standin::Value;

class Sepia : public ArtefactTest
{
protected:
    static Instance filterOf(TestHost& host, const SepiaSettings& settings = {})
    {
        Instance filter = host.newInstance("PictureSepiaQVR");
        filter.set("FactorRed", settings.redWeight);
        filter.set("FactorBlue", settings.greenWeight);
        filter.set("FactorGreen", settings.blueWeight);
        filter.set("SepiaRed", settings.sepiaRed);
        filter.set("SepiaGreen", settings.sepiaGreen);
        filter.set("SepiaBlue", settings.sepiaBlue);
        setRectangle(filter, settings.rectangle);
        return filter;
    }

    static void expectSepia(TestHost& host, const Picture& source, const SepiaSettings& settings,
                            const std::string& what)
    {
        const auto before = source.rgba();
        Instance filter = filterOf(host, settings);
        expectPicture(reference::sepia(download(source), settings, freshPicture(source)),
                      runFilter(filter, source), filterText(filter, source, what));
        EXPECT_TRUE(before == source.rgba()) << "the source was changed";
    }
};
ON_EVERY_ARTEFACT(Sepia);

TEST_P(Sepia, FreshInstance)
{
    for (const double version : hostVersions)
    {
        TestHost host{hostSetup(artefact()).version(version)};
        Instance filter = host.newInstance("PictureSepiaQVR");
        EXPECT_EQ(filter.get("FactorRed").number(), 0.299);
        EXPECT_EQ(filter.get("FactorBlue").number(), 0.587);
        EXPECT_EQ(filter.get("FactorGreen").number(), 0.114);
        for (const char* name : {"SepiaRed", "SepiaGreen", "SepiaBlue", "MinX", "MinY", "MaxX", "MaxY"})
            EXPECT_EQ(filter.get(name).integer(), 0) << name;
        EXPECT_TRUE(filter.get("SourcePicture").picture().isNil());
        EXPECT_TRUE(filter.get("DestinationPicture").picture().isNil());
        EXPECT_EQ(filter.definition().dataSize, 64);
    }
}

TEST_P(Sepia, FieldsLieWhereTheHostLooksForThem)
{
    TestHost host{hostSetup(artefact())};
    Instance filter = host.newInstance("PictureSepiaQVR");
    filter.set("FactorRed", 1.5);
    filter.set("FactorBlue", -2.5);
    filter.set("FactorGreen", 3.25);
    EXPECT_EQ(fieldAt<double>(filter, 0), 1.5);
    EXPECT_EQ(fieldAt<double>(filter, 8), -2.5);
    EXPECT_EQ(fieldAt<double>(filter, 16), 3.25);
    EXPECT_EQ(filter.get("FactorBlue").number(), -2.5);
    EXPECT_EQ(filter.get("FactorGreen").number(), 3.25);

    const Picture source = host.newPicture(2, 2);
    const Picture destination = host.newPicture(2, 2);
    filter.set("SourcePicture", source);
    filter.set("DestinationPicture", destination);
    EXPECT_EQ(fieldAt<void*>(filter, 24), source.handle());
    EXPECT_EQ(fieldAt<void*>(filter, 28), destination.handle());
    EXPECT_TRUE(filter.get("SourcePicture").picture() == source);

    const std::pair<const char*, int> integers[] = {{"MinX", 32},     {"MinY", 36},     {"MaxX", 40},
                                                    {"MaxY", 44},     {"SepiaRed", 48}, {"SepiaGreen", 52},
                                                    {"SepiaBlue", 56}};
    for (const auto& [name, offset] : integers)
    {
        filter.set(name, -offset);
        EXPECT_EQ(fieldAt<std::int32_t>(filter, offset), -offset) << name;
        EXPECT_EQ(filter.get(name).integer(), -offset);
    }
}

TEST_P(Sepia, KnownColours)
{
    forEachHost(artefact(), [](TestHost& host) {
        const auto toned = [&host](std::uint32_t colour, const SepiaSettings& settings) {
            Instance filter = filterOf(host, settings);
            const Picture result = runFilter(filter, upload(host, reference::Picture{5, 2, pixelOf(colour)}));
            return reference::colourOf(download(result).at(4, 1));
        };
        EXPECT_EQ(toned(0xFFFFFF, {}), 0xFEFEFEU);
        EXPECT_EQ(toned(0x000000, {.sepiaRed = 40, .sepiaGreen = 20, .sepiaBlue = -20}), 0x281400U);
        EXPECT_EQ(toned(0xFFFFFF, {.sepiaRed = 40, .sepiaGreen = 1, .sepiaBlue = -254}), 0xFFFF00U);
        // "FactorBlue" weighs green, and "FactorGreen" blue.
        EXPECT_EQ(toned(0x00FF00, {.greenWeight = 0}), 0x000000U);
        EXPECT_EQ(toned(0x0000FF, {.blueWeight = 0}), 0x000000U);
        EXPECT_EQ(toned(0xFF0000, {.redWeight = 0}), 0x000000U);
        EXPECT_NE(toned(0x0000FF, {.greenWeight = 0}), 0x000000U);
    });
}

TEST_P(Sepia, RectangleOnlyGivesTheSizeOfTheBlock)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{100};
        const Picture source = upload(host, randomPicture(random, 100, 50));
        const int width = 100;
        const int height = 50;
        const reference::FilterRectangle rectangles[] = {
            {10, 0, 30, 0},       {10, 5, 60, 30},  {0, 0, width, height}, {10, 10, width, height},
            {30, 20, 30, 20},     {30, 20, 10, 5},  {width, 0, 0, 0},      {0, height, 0, 0},
            {width + 5, 3, 0, 0}, {-10, -10, 0, 0}, {-10, -10, -5, -7},    {-300, -200, 20, 10},
            {99, 49, 0, 0},       {0, 0, 1, 1},     {0, 0, -5, -5},
        };
        for (const reference::FilterRectangle& rectangle : rectangles)
            expectSepia(host, source, {.rectangle = rectangle}, "usual weights");
        Instance filter = filterOf(host, {.rectangle = {10, 0, 30, 0}});
        const reference::Picture result = download(runFilter(filter, source));
        EXPECT_EQ(result.at(19, 0).red, result.at(19, 0).blue);
        EXPECT_EQ(result.at(20, 0).red, reference::untouchedByte);
        Instance none = filterOf(host, {.rectangle = {100, 0, 0, 0}});
        expectPicture(freshPicture(source), runFilter(none, source), "an empty block");
    });
}

TEST_P(Sepia, EqualsTheReference)
{
    forEachSource(artefact(), [](TestHost& host, const Picture& source, Random& random) {
        SepiaSettings settings;
        if (random.onceIn(2))
        {
            settings.redWeight = random.parameter();
            settings.greenWeight = random.parameter();
            settings.blueWeight = random.parameter();
        }
        const auto offset = [&random] {
            return random.onceIn(3) ? random.coordinate(0) : random.between(-300, 300);
        };
        settings.sepiaRed = offset();
        settings.sepiaGreen = offset();
        settings.sepiaBlue = offset();
        settings.rectangle = randomRectangle(random, source.width(), source.height());
        expectSepia(host, source, settings,
                    "weights " + std::to_string(settings.redWeight) + ", " +
                        std::to_string(settings.greenWeight) + ", " + std::to_string(settings.blueWeight) +
                        ", tones " + std::to_string(settings.sepiaRed) + ", " +
                        std::to_string(settings.sepiaGreen) + ", " + std::to_string(settings.sepiaBlue));
    });
}

TEST_P(Sepia, OldDestinationIsNotReleased)
{
    forEachHost(artefact(), [](TestHost& host) {
        // The one imbalance that is meant: whoever runs twice has to take the first result's place in mind.
        host.ignoreLedger();
        Instance filter = filterOf(host);
        const Picture source = host.newPicture(3, 3);
        const Picture first = runFilter(filter, source);
        host.expectBalanced("after the first run");
        const Picture second = runFilter(filter, source);
        EXPECT_FALSE(first == second);
        EXPECT_EQ(host.ledger().references, 1);
        EXPECT_TRUE(host.ledger().faults.empty());
        EXPECT_EQ(first.referenceCount(), 2) << "ours, and the forgotten one";
        filter.call("Close");
        EXPECT_EQ(second.referenceCount(), 1);
        EXPECT_EQ(host.ledger().references, 1);
    });
}

TEST_P(Sepia, SourceAndDestinationCanBeOnePicture)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        // The reference of the destination that is overwritten is lost, as always.
        host.ignoreLedger();
        Random random{101};
        const Picture source = upload(host, randomPicture(random, 17, 5));
        const auto before = source.rgba();
        const SepiaSettings settings{.sepiaRed = 9, .sepiaBlue = -30, .rectangle = {2, 1, 0, 0}};
        Instance filter = filterOf(host, settings);
        filter.set("DestinationPicture", source);
        const Picture result = runFilter(filter, source);
        EXPECT_FALSE(result == source);
        expectPicture(reference::sepia(download(source), settings, freshPicture(source)), result,
                      "a source that was the destination");
        EXPECT_TRUE(before == source.rgba()) << "the source was changed";
        EXPECT_EQ(host.ledger().references, 1);
        EXPECT_TRUE(host.ledger().faults.empty());
    });
}

TEST_P(Sepia, CloseReleasesBothPicturesOnce)
{
    forEachHost(artefact(), [](TestHost& host) {
        expectCloseReleasesPictures(host, filterOf(host, {.sepiaRed = 7}), [](Instance& filter) {
            EXPECT_EQ(filter.get("SepiaRed").integer(), 7);
            EXPECT_EQ(filter.get("FactorRed").number(), 0.299);
        });
    });
}

TEST_P(Sepia, FailuresKeepTheDestination)
{
    forEachHost(artefact(), [](TestHost& host) {
        Instance filter = filterOf(host);
        const Picture old = host.newPicture(1, 1);
        filter.set("DestinationPicture", old);
        const auto expectFailure = [&](const std::string& what) {
            const Value result = filter.call("Run");
            EXPECT_FALSE(result.boolean()) << what;
            EXPECT_FALSE(result.exception().has_value()) << what;
            EXPECT_TRUE(filter.get("DestinationPicture").picture() == old) << what;
            host.expectBalanced(what);
        };
        expectFailure("no source");
        filter.set("SourcePicture", host.newPicture(32768, 1));
        expectFailure("a source too wide");
        filter.set("SourcePicture", host.newPicture(3, 3));
        host.faults().failCall("newPicture");
        expectFailure("no new picture");
    });
}

TEST_P(Sepia, KeepsToItsLimits)
{
    const SourceJob job = [](TestHost& host, const Picture& source) {
        Instance filter = filterOf(host);
        return Value(!runFilter(filter, source).isNil());
    };
    expectSizeLimits(artefact(), job, false);
    expectCleanFailures(artefact(), job, false);
    expectSameOnAllVersions(
        artefact(),
        [](TestHost& host, const Picture& source) {
            Instance filter = filterOf(host);
            return Value(runFilter(filter, source));
        },
        [](const reference::Picture& source) {
            return reference::sepia(source, {}, {source.width, source.height});
        });
}

} // namespace
