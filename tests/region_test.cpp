#include "tests/reference/regions.h"

#include "tests/support/operation_checks.h"

#include <cmath>

namespace
{

using reference::Picture;
using reference::Pixel;
using reference::Rectangle;
using standin::Arguments;

class Region : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(Region);

bool isTrue(TestHost& host, const standin::Picture& picture, const std::string& method,
            const Arguments& arguments = {})
{
    return host.call(picture, method, arguments).boolean();
}

double colorness(TestHost& host, const Picture& content, const Arguments& threshold = {})
{
    return host.call(upload(host, content), "ColornessQVR", threshold).number();
}

TEST_P(Region, AnEmptyRectangleIsEverything)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture photo = upload(host, Picture(4, 3, {1, 200, 3}));
        for (const Rectangle& empty :
             {Rectangle{0, 0, 0, 0}, Rectangle{0, 0, 0, 3}, Rectangle{0, 0, 4, 0}, Rectangle{4, 0, 2, 2},
              Rectangle{0, 3, 2, 2}, Rectangle{-9, 0, 5, 3}, Rectangle{100, 100, -1, -1},
              Rectangle{most, most, most, most}, Rectangle{least, least, most, most}})
            for (const char* method : {"isBlackQVR", "isWhiteQVR"})
                EXPECT_TRUE(isTrue(host, photo, method, {empty.left, empty.top, empty.width, empty.height}));
        EXPECT_TRUE(isTrue(host, photo, "isGrayQVR", {0, 0, 0, 0, 0}));
        EXPECT_FALSE(isTrue(host, photo, "isGrayQVR", {0, 0, 0, most, most}));
    });
}

TEST_P(Region, ANegativeStartKeepsTheFarEdge)
{
    Picture content(12, 12, {9, 9, 9});
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x)
            content.at(x, y) = {0, 0, 0};
    forEachHost(artefact(), [&](TestHost& host) {
        const standin::Picture photo = upload(host, content);
        EXPECT_TRUE(isTrue(host, photo, "isBlackQVR", {-5, -5, 10, 10}));
        EXPECT_FALSE(isTrue(host, photo, "isBlackQVR", {-5, -5, 11, 10}));
        EXPECT_FALSE(isTrue(host, photo, "isBlackQVR", {-5, -5, 10, 11}));
        EXPECT_FALSE(isTrue(host, photo, "isBlackQVR"));
    });
}

TEST_P(Region, AlphaIsNeverLookedAt)
{
    forEachHost(artefact(), [](TestHost& host) {
        for (const std::uint8_t alpha : std::initializer_list<std::uint8_t>{0, 77, 255})
        {
            const standin::Picture black = upload(host, Picture(5, 5, {0, 0, 0, alpha}));
            EXPECT_TRUE(isTrue(host, black, "isBlackQVR"));
            EXPECT_FALSE(isTrue(host, black, "isWhiteQVR"));
            const standin::Picture white = upload(host, Picture(5, 5, {255, 255, 255, alpha}));
            EXPECT_TRUE(isTrue(host, white, "isWhiteQVR"));
            EXPECT_TRUE(isTrue(host, white, "isGrayQVR"));
            EXPECT_FALSE(isTrue(host, white, "isBlackQVR"));
        }
    });
}

TEST_P(Region, TheToleranceOfGreyIsInclusiveAndWithoutSign)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture one = upload(host, Picture(1, 1, {10, 11, 10}));
        EXPECT_FALSE(isTrue(host, one, "isGrayQVR"));
        EXPECT_FALSE(isTrue(host, one, "isGrayQVR", {0}));
        EXPECT_TRUE(isTrue(host, one, "isGrayQVR", {1}));
        EXPECT_TRUE(isTrue(host, one, "isGrayQVR", {-1}));
        EXPECT_FALSE(isTrue(host, upload(host, Picture(1, 1, {10, 12, 10})), "isGrayQVR", {1}));
        // Neighbouring channels are near each other, red and blue are not.
        EXPECT_FALSE(isTrue(host, upload(host, Picture(1, 1, {10, 11, 12})), "isGrayQVR", {1}));
        const standin::Picture red = upload(host, Picture(9, 2, {255, 0, 0}));
        EXPECT_FALSE(isTrue(host, red, "isGrayQVR", {254}));
        for (const int everything : {255, -255, most, least, least + 1})
            EXPECT_TRUE(isTrue(host, red, "isGrayQVR", {everything})) << everything;
    });
}

/// The one pixel that fails is found wherever it is, and only when it is inside.
TEST_P(Region, OneWrongPixelIsFoundWhereverItIs)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        for (const int width : {1, 3, 4, 7, 8, 15, 16, 31, 32, 33, 64, 70})
        {
            standin::Picture black = upload(host, Picture(width, 2, {0, 0, 0}));
            standin::Picture white = upload(host, Picture(width, 2, {255, 255, 255}));
            for (int x = 0; x < width; ++x)
            {
                black.setPixel(x, 1, {0, 0, 1, 0});
                white.setPixel(x, 1, {255, 254, 255, 0});
                EXPECT_FALSE(isTrue(host, black, "isBlackQVR")) << x << " of " << width;
                EXPECT_FALSE(isTrue(host, white, "isWhiteQVR")) << x << " of " << width;
                EXPECT_FALSE(isTrue(host, black, "isGrayQVR")) << x << " of " << width;
                EXPECT_TRUE(isTrue(host, black, "isBlackQVR", {0, 0, width, 1}));
                EXPECT_TRUE(isTrue(host, black, "isBlackQVR", {0, 1, x, 1}));
                black.setPixel(x, 1, {0, 0, 0, 9});
                white.setPixel(x, 1, {255, 255, 255, 9});
            }
        }
    });
}

TEST_P(Region, TestsEqualTheReferenceEverywhere)
{
    // Mostly one grey, so that all answers occur.
    const auto mostlyOneGrey = [](Random& random, int width, int height) {
        const auto base = static_cast<std::uint8_t>(random.onceIn(2) ? 0 : random.onceIn(2) ? 255 : 100);
        Picture content(width, height, {base, base, base});
        for (int i = random.between(0, 3); i > 0; --i)
            content.at(random.between(0, width - 1), random.between(0, height - 1)) = {
                random.byte(), static_cast<std::uint8_t>(base ^ random.between(0, 3)), base};
        return content;
    };
    const auto test = [](TestHost& host, const standin::Picture& photo, Random& random) {
        const Picture source = download(photo);
        const int bytes = bytesRead(host, photo);
        for (int i = 0; i < 6; ++i)
        {
            const Rectangle r{random.coordinate(source.width), random.coordinate(source.height),
                              random.coordinate(source.width), random.coordinate(source.height)};
            const int tolerance = random.onceIn(5) ? least : random.between(-130, 130);
            const Arguments four{r.left, r.top, r.width, r.height};
            const Arguments five{tolerance, r.left, r.top, r.width, r.height};
            ASSERT_EQ(isTrue(host, photo, "isBlackQVR", four), isBlack(source, r, bytes))
                << callText("isBlackQVR", four);
            ASSERT_EQ(isTrue(host, photo, "isWhiteQVR", four), isWhite(source, r, bytes))
                << callText("isWhiteQVR", four);
            ASSERT_EQ(isTrue(host, photo, "isGrayQVR", five), isGray(source, tolerance, r, bytes))
                << callText("isGrayQVR", five);
        }
    };
    forEachSource(artefact(), test, mostlyOneGrey);
}

/// With three bytes a pixel, a rectangle starts four bytes a pixel into its rows and stops at their ends.
TEST_P(Region, RectanglesOf24BitPicturesStartFourBytesAPixelIn)
{
    TestHost host{hostSetup(artefact()).newPictures(standin::Storage::GWorld24)};
    const standin::Picture photo =
        upload(host, pictureOf({{{1, 1, 1}, {1, 0, 0}, {0, 1, 1}, {1, 1, 1}}}), standin::Storage::GWorld24);
    EXPECT_TRUE(isTrue(host, photo, "isBlackQVR", {1, 0, 1, 1}));
    EXPECT_FALSE(isTrue(host, photo, "isBlackQVR", {1, 0, 2, 1}));
    EXPECT_FALSE(isTrue(host, photo, "isBlackQVR", {2, 0, 1, 1}));
    EXPECT_TRUE(isTrue(host, photo, "isBlackQVR", {3, 0, 1, 1})) << "nothing of it lies inside of the row";
}

TEST_P(Region, PicturesWithoutPixelsPassEveryTest)
{
    forEachHost(artefact(), [](TestHost& host) {
        for (const auto& [width, height] : {std::pair{0, 3}, {3, 0}})
        {
            const standin::Picture photo = host.newPicture(width, height);
            EXPECT_TRUE(isTrue(host, photo, "isBlackQVR"));
            EXPECT_TRUE(isTrue(host, photo, "isWhiteQVR", {0, 0, 5, 5}));
            EXPECT_TRUE(isTrue(host, photo, "isGrayQVR"));
            EXPECT_TRUE(std::isnan(host.call(photo, "ColornessQVR").number())) << "zero of zero pixels";
        }
    });
}

TEST_P(Region, NilIsFalseAndHasNoColour)
{
    forEachHost(artefact(), [](TestHost& host) {
        for (const char* method : {"isBlackQVR", "isWhiteQVR", "isGrayQVR"})
        {
            const standin::Value result = host.call(standin::Picture(), method);
            EXPECT_FALSE(result.boolean()) << method;
            EXPECT_FALSE(result.exception().has_value()) << method;
        }
        EXPECT_EQ(host.call(standin::Picture(), "ColornessQVR").number(), 0.0);
    });
}

TEST_P(Region, ColournessCountsColouredPixels)
{
    forEachHost(artefact(), [](TestHost& host) {
        EXPECT_EQ(colorness(host, Picture(7, 3, {255, 0, 0}), {10}), 1.0);
        EXPECT_EQ(colorness(host, Picture(7, 3, {255, 0, 0})), 1.0);
        EXPECT_EQ(colorness(host, Picture(7, 3, {255, 255, 255})), 0.0);
        EXPECT_EQ(colorness(host, Picture(7, 3, {29, 29, 29}), {-5}), 0.0);
        EXPECT_EQ(colorness(host, Picture(7, 3, {30, 29, 29}), {-5}), 1.0);
        EXPECT_EQ(colorness(host, Picture(7, 3, {100, 100, 200}), {10}), 1.0);
        EXPECT_EQ(colorness(host, Picture(7, 3, {200, 100, 100}), {10}), 1.0);
        EXPECT_EQ(colorness(host, Picture(7, 3, {100, 110, 100}), {10}), 0.0);
        EXPECT_EQ(colorness(host, Picture(7, 3, {100, 111, 100}), {10}), 1.0);
        EXPECT_EQ(colorness(host, pictureOf({{{29, 29, 29}, {255, 0, 0}}}), {10}), 0.5);
        // Red and blue are not compared with each other.
        EXPECT_EQ(colorness(host, Picture(7, 3, {110, 100, 90}), {10}), 0.0);
        EXPECT_EQ(colorness(host, Picture(1, 1, {100, 100, 100}), {0}), 0.0);
        EXPECT_EQ(colorness(host, Picture(1, 1, {100, 101, 100}), {0}), 1.0);
        EXPECT_EQ(colorness(host, Picture(1, 1, {100, 100, 100}), {-1}), 1.0);
    });
}

TEST_P(Region, ColournessEqualsTheReferenceEverywhere)
{
    // Many pixels around the brightness from which they count.
    const auto dark = [](Random& random, int width, int height) {
        Picture content = randomPictureOfAnyPalette(random, width, height);
        for (Pixel& pixel : content.pixels)
            if (random.onceIn(3))
                pixel = {static_cast<std::uint8_t>(random.between(27, 31)),
                         static_cast<std::uint8_t>(random.between(27, 31)),
                         static_cast<std::uint8_t>(random.between(27, 31))};
        return content;
    };
    const auto test = [](TestHost& host, const standin::Picture& photo, Random& random) {
        const Picture source = download(photo);
        for (const int threshold :
             {0, 1, 2, 10, 254, 255, -1, -300, most, most - 1, least + 1, random.between(-260, 260)})
            ASSERT_EQ(host.call(photo, "ColornessQVR", {threshold}).number(),
                      reference::colorness(source, threshold))
                << threshold;
    };
    forEachSource(artefact(), test, dark);
}

TEST_P(Region, SurvivesFailingCalls)
{
    const Picture black(9, 3, {0, 0, 0});
    const Picture white(9, 3, {255, 255, 255});
    const Picture red(9, 3, {255, 0, 0});
    torture(artefact(), {black}, methodJob("isBlackQVR"), {.cleanResult = false});
    torture(artefact(), {black}, methodJob("isGrayQVR", {3}), {.cleanResult = false});
    torture(artefact(), {white}, methodJob("isWhiteQVR", {1, 1, 4, 1}), {.cleanResult = false});
    torture(artefact(), {red}, methodJob("ColornessQVR"), {.cleanResult = 0.0});
}

} // namespace
