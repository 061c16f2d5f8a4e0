#include "tests/reference/colour_search.h"

#include "tests/support/operation_checks.h"

namespace
{

using reference::Picture;
using reference::Pixel;
using reference::Rectangle;
using standin::Arguments;

constexpr Pixel grey{90, 90, 90};
constexpr Pixel coloured{90, 91, 90};
constexpr Pixel black{0, 0, 0};
constexpr Pixel white{255, 255, 255};

class ColourSearch : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(ColourSearch);

int count(TestHost& host, const standin::Picture& picture, std::uint32_t colour)
{
    return host.call(picture, "CountColorQVR", {colour}).integer();
}

/// A grey picture with coloured pixels where the rows have a '#'.
Picture drawing(const std::vector<std::string>& rows)
{
    Picture picture(static_cast<int>(rows.front().size()), static_cast<int>(rows.size()), grey);
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            if (rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] == '#')
                picture.at(x, y) = coloured;
    return picture;
}

/// A mask: black where the rows have a '#', white elsewhere.
Picture maskOf(const std::vector<std::string>& rows)
{
    Picture picture = drawing(rows);
    for (Pixel& pixel : picture.pixels)
        pixel = pixel == coloured ? black : white;
    return picture;
}

/// The mask of a picture, compared with the slow way.
void expectMask(TestHost& host, const Picture& content, const std::string& what)
{
    const standin::Picture photo = upload(host, content);
    const standin::Picture mask = host.call(photo, "ExtractColorRectangleMaskQVR").picture();
    expectPicture(colorRectangleMask(content, {}), mask, "ExtractColorRectangleMaskQVR() of " + what);
}

TEST_P(ColourSearch, CountsEqualColoursWhateverTheirAlpha)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture red = upload(host, Picture(13, 7, {255, 0, 0, 0}));
        EXPECT_EQ(count(host, red, 0xFF0000), 13 * 7);
        EXPECT_EQ(count(host, red, 0xABFF0000), 13 * 7);
        for (const std::uint32_t other : {0x0000FFU, 0xFE0000U, 0xFF0001U, 0xFF0100U, 0U, 0xFF00FFU})
            EXPECT_EQ(count(host, red, other), 0) << other;
        EXPECT_EQ(count(host, standin::Picture(), 0xFF0000), 0);
        EXPECT_EQ(count(host, host.newPicture(0, 3), 0), 0);
        EXPECT_EQ(count(host, host.newPicture(3, 0), 0), 0);
        // Counting has no limit of size.
        standin::Picture wide = host.newPicture(32768, 1);
        wide.fill({1, 2, 3, 4});
        EXPECT_EQ(count(host, wide, 0x010203), 32768);
    });
}

TEST_P(ColourSearch, TheTopByteOfColoursIsIgnored)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture photo =
            upload(host, pictureOf({{{1, 2, 3, 0}, {3, 2, 1, 9}, {1, 2, 3, 200}}}));
        const Picture wanted = pictureOf({{{7, 8, 9}, {3, 2, 1}, {7, 8, 9}}});
        expectCall(wanted, host, photo, "ReplaceColorQVR", {0x010203U, 0x070809U});
        expectCall(wanted, host, photo, "ReplaceColorQVR", {0xFF010203U, 0x80070809U});
        const Picture extracted = pictureOf({{{7, 8, 9}, {4, 5, 6}, {7, 8, 9}}});
        expectCall(extracted, host, photo, "ExtractColorQVR", {0x010203U, 0x070809U, 0x040506U});
        expectCall(extracted, host, photo, "ExtractColorQVR", {0xFF010203U, 0x80070809U, 0xEE040506U});
    });
}

TEST_P(ColourSearch, WithoutAMatchOnlyTheBackgroundIsLeft)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture photo = upload(host, Picture(9, 4, {1, 2, 3, 4}));
        expectCall(Picture(9, 4, {10, 20, 30}), host, photo, "ExtractColorQVR", {0x010204U, 0U, 0x0A141EU});
        expectCall(Picture(9, 4, {1, 2, 3}), host, photo, "ReplaceColorQVR", {0x010204U, 0U});
    });
}

TEST_P(ColourSearch, EqualsTheReferenceInEverySizeAndStorage)
{
    const auto ofFewColours = [](Random& random, int width, int height) {
        return randomPicture(random, width, height, Palette::Few);
    };
    const auto test = [](TestHost& host, const standin::Picture& photo, Random& random) {
        const Picture source = download(photo);
        for (int i = 0; i < 3; ++i)
        {
            const std::uint32_t dirt = static_cast<std::uint32_t>(random.byte()) << 24;
            const std::uint32_t search = colourOf(random.oneOf(source.pixels)) | dirt;
            const std::uint32_t replacement = colourOf(random.oneOf(source.pixels)) ^ dirt ^ 0x10;
            const std::uint32_t background = static_cast<std::uint32_t>(random.between(0, most));
            ASSERT_EQ(count(host, photo, search), countColor(source, search)) << search;
            expectCall(replaceColor(source, search, replacement), host, photo, "ReplaceColorQVR",
                       {search, replacement});
            expectCall(extractColor(source, search, replacement, background), host, photo, "ExtractColorQVR",
                       {search, replacement, background});
        }
    };
    forEachSource(artefact(), test, ofFewColours);
}

TEST_P(ColourSearch, LargePicturesAreRightToo)
{
    Random random{72};
    const Picture content = randomPicture(random, affordable(1501), 1400, Palette::Few);
    TestHost host{hostSetup(artefact())};
    const standin::Picture photo = upload(host, content);
    EXPECT_EQ(count(host, photo, 0xFF0000), countColor(content, 0xFF0000));
    expectCall(replaceColor(content, 0xFF0000, 0x010203), host, photo, "ReplaceColorQVR",
               {0xFF0000U, 0x010203U});
    expectCall(extractColor(content, 0, 0x010203, 0xFFFFFF), host, photo, "ExtractColorQVR",
               {0U, 0x010203U, 0xFFFFFFU});
}

TEST_P(ColourSearch, AGreyPictureHasAWhiteMask)
{
    Picture greys(19, 6);
    for (int i = 0; i < 19 * 6; ++i)
    {
        const auto level = static_cast<std::uint8_t>(i * 3);
        greys.at(i % 19, i / 19) = {level, level, level, static_cast<std::uint8_t>(i)};
    }
    forEachHost(artefact(), [&](TestHost& host) {
        expectCall(Picture(19, 6, white), host, upload(host, greys), "ExtractColorRectangleMaskQVR");
    });
}

TEST_P(ColourSearch, MasksCoverWhatTouches)
{
    Picture single(9, 10, grey);
    single.at(5, 7) = coloured;
    Picture singleMask(9, 10, white);
    singleMask.at(5, 7) = black;
    forEachHost(artefact(), [&](TestHost& host) {
        const std::string method = "ExtractColorRectangleMaskQVR";
        expectCall(singleMask, host, upload(host, single), method);
        const std::vector<std::string> diagonal{".....", ".....", "..#..", ".....", "....#"};
        expectCall(maskOf(diagonal), host, upload(host, drawing(diagonal)), method);
        expectCall(maskOf({".....", ".....", "..##.", "..##.", "....."}), host,
                   upload(host, drawing({".....", ".....", "..##.", "...#.", "....."})), method);
        // Corners do not touch, until a rectangle has grown beside the pixel.
        expectCall(maskOf({"#..", ".#.", "..#"}), host, upload(host, drawing({"#..", ".#.", "..#"})), method);
        expectCall(maskOf({"####", "####", "####"}), host, upload(host, drawing({"#..#", "#..#", "####"})),
                   method);
        // All at the edges of the picture.
        expectCall(maskOf({"#.#", "...", "#.#"}), host, upload(host, drawing({"#.#", "...", "#.#"})), method);
        // One rectangle swallows another that was masked before.
        expectCall(maskOf({"#####", "#####", "#####", "#####"}), host,
                   upload(host, drawing({"#####", "#...#", "#.#.#", "#####"})), method);
    });
}

TEST_P(ColourSearch, TheWholePictureIsTheDefaultRectangle)
{
    Random random{73};
    forEachHost(artefact(), [&](TestHost& host) {
        Picture content(23, 11, grey);
        for (int i = 0; i < 40; ++i)
            content.at(random.between(0, 22), random.between(0, 10)) = coloured;
        const standin::Picture photo = upload(host, content);
        const Picture wanted = colorRectangleMask(download(photo), {}, photo.bytesPerPixel());
        expectCall(wanted, host, photo, "ExtractColorRectangleMaskQVR");
        expectCall(wanted, host, photo, "ExtractColorRectangleMaskQVR", {0, 0, -1, -1});
        expectCall(wanted, host, photo, "ExtractColorRectangleMaskQVR", {0, 0, most, most});
        expectCall(Picture(23, 11, white), host, photo, "ExtractColorRectangleMaskQVR", {0, 0, 0, -1});
        expectCall(Picture(23, 11, white), host, photo, "ExtractColorRectangleMaskQVR", {0, 0, -1, 0});
        expectCall(Picture(23, 11, white), host, photo, "ExtractColorRectangleMaskQVR", {23, 0, -1, -1});
        expectCall(Picture(23, 11, white), host, photo, "ExtractColorRectangleMaskQVR", {0, 11, -1, -1});
    });
}

/// A rectangle that starts lower takes its marks from the first rows all the same.
TEST_P(ColourSearch, MarksComeFromTheFirstRowsWhateverTheTop)
{
    Picture content(6, 14, grey);
    content.at(2, 0) = coloured;
    content.at(3, 3) = coloured;
    content.at(1, 12) = coloured;
    Picture wanted(6, 14, white);
    wanted.at(2, 10) = black;
    wanted.at(3, 13) = black;
    const HostSetup setups[] = {hostSetup(artefact()), hostSetup(artefact(), standin::Kind::Console)};
    for (const HostSetup& setup : setups)
    {
        TestHost host{setup};
        expectCall(wanted, host, upload(host, content), "ExtractColorRectangleMaskQVR", {0, 10, -1, -1});
        // A negative top shortens the rectangle and moves nothing.
        Picture cut(6, 14, white);
        cut.at(2, 0) = black;
        expectCall(cut, host, upload(host, content), "ExtractColorRectangleMaskQVR", {0, -5, -1, 8});
    }
}

TEST_P(ColourSearch, MasksOf24BitPicturesStartFourBytesAPixelIn)
{
    TestHost host{hostSetup(artefact()).newPictures(standin::Storage::GWorld24)};
    // From byte 4 on the two pixels are (5, 5, 5) and (5, 5, 6); the third would not fit the row.
    const standin::Picture photo =
        upload(host, pictureOf({{{1, 1, 1}, {9, 5, 5}, {5, 5, 5}, {6, 1, 2}}}), standin::Storage::GWorld24);
    expectCall(pictureOf({{white, white, black, white}}), host, photo, "ExtractColorRectangleMaskQVR",
               {1, 0, -1, -1});
}

TEST_P(ColourSearch, MasksEqualTheReferenceForRandomPictures)
{
    const auto dotted = [](Random& random, int width, int height) {
        const int density = random.oneOf(std::vector<int>{1, 2, 3, 4, 6, 10, 30});
        Picture content(width, height, grey);
        for (Pixel& pixel : content.pixels)
            if (random.onceIn(density))
                pixel = random.onceIn(2) ? Pixel{90, 90, 255} : Pixel{0, 255, 90};
        return content;
    };
    const auto test = [](TestHost& host, const standin::Picture& photo, Random& random) {
        const Picture source = download(photo);
        const int bytes = bytesRead(host, photo);
        expectCall(colorRectangleMask(source, {}, bytes), host, photo, "ExtractColorRectangleMaskQVR");
        for (int i = 0; i < 3; ++i)
        {
            const Rectangle r{random.coordinate(source.width), random.coordinate(source.height),
                              random.coordinate(source.width), random.coordinate(source.height)};
            expectCall(colorRectangleMask(source, r, bytes), host, photo, "ExtractColorRectangleMaskQVR",
                       {r.left, r.top, r.width, r.height});
        }
    };
    forEachSource(artefact(), test, dotted);
}

/// Blobs, lines and dust in many small pictures: where clever ways go wrong first.
TEST_P(ColourSearch, MasksEqualTheReferenceForShapes)
{
    Random random{75};
    TestHost host{hostSetup(artefact())};
    for (int round = 0; round < affordable(1500); ++round)
    {
        const int width = random.between(1, 24);
        const int height = random.between(1, 24);
        Picture content(width, height, grey);
        for (int shape = random.between(0, 7); shape > 0; --shape)
        {
            int x = random.between(0, width - 1);
            int y = random.between(0, height - 1);
            const int dx = random.between(-1, 1);
            const int dy = random.between(-1, 1);
            const bool wanders = random.onceIn(2);
            for (int step = random.between(1, 20); step > 0; --step)
            {
                if (x >= 0 && y >= 0 && x < width && y < height)
                    content.at(x, y) = coloured;
                x += wanders ? random.between(-1, 1) : dx;
                y += wanders ? random.between(-1, 1) : dy;
            }
        }
        expectMask(host, content, "shapes, round " + std::to_string(round));
    }
}

TEST_P(ColourSearch, MasksEqualTheReferenceForEverySmallPicture)
{
    constexpr int pixels = sanitized ? 9 : 12;
    TestHost host{hostSetup(artefact())};
    for (const int width : {pixels / 3, 3})
        for (int bits = 0; bits < 1 << pixels; ++bits)
        {
            Picture content(width, pixels / width, grey);
            for (int i = 0; i < pixels; ++i)
                if ((bits >> i & 1) != 0)
                    content.pixels[static_cast<std::size_t>(i)] = coloured;
            expectMask(host, content, std::to_string(width) + " columns, bits " + std::to_string(bits));
        }
}

TEST_P(ColourSearch, MasksOfFramesSpiralsAndCombs)
{
    constexpr int side = 61;
    Picture frames(side, side, grey);
    Picture spiral(side, side, grey);
    Picture comb(side, side, grey);
    Picture staircase(side, side, grey);
    Picture checkers(side, side, grey);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
        {
            const int ring = std::min({x, y, side - 1 - x, side - 1 - y});
            if (ring % 4 == 0)
                frames.at(x, y) = coloured;
            if (ring % 2 == 0 && !(x == ring && y == ring + 1))
                spiral.at(x, y) = coloured;
            if (ring % 2 == 1 && x == ring && y == ring)
                spiral.at(x, y) = coloured;
            if (x % 2 == 0 || y == side - 1)
                comb.at(x, y) = coloured;
            if (x == y || x == y + 1)
                staircase.at(x, y) = coloured;
            if ((x + y) % 2 == 0)
                checkers.at(x, y) = coloured;
        }
    forEachHost(artefact(), [&](TestHost& host) {
        if (host.newStorage() == standin::Storage::GWorld24)
            return;
        expectMask(host, frames, "frames");
        expectMask(host, spiral, "a spiral");
        expectMask(host, comb, "a comb");
        expectMask(host, staircase, "a staircase");
        expectMask(host, checkers, "checkers");
        expectMask(host, Picture(side, side, coloured), "a full picture");
    });
}

/// Thousands of rectangles, and rectangles that grow a step at a time: neither may take forever.
TEST_P(ColourSearch, LargeMasksAreReadyInTime)
{
    constexpr int side = affordable(1500);
    TestHost host{hostSetup(artefact())};
    const auto mask = [&](const Picture& content) {
        return host.call(upload(host, content), "ExtractColorRectangleMaskQVR").picture();
    };

    Picture dust(side, side, grey);
    Picture dustMask(side, side, white);
    Picture staircase(side, side, grey);
    Picture diagonal(side, side, grey);
    Picture diagonalMask(side, side, white);
    for (int y = 0; y < side; ++y)
    {
        for (int x = y % 2; x < side; x += 2)
        {
            dust.at(x, y) = coloured;
            dustMask.at(x, y) = black;
        }
        diagonal.at(side - 1 - y, y) = coloured;
        diagonalMask.at(side - 1 - y, y) = black;
        staircase.at(y, y) = coloured;
        if (y + 1 < side)
            staircase.at(y + 1, y) = coloured;
    }
    expectPicture(dustMask, mask(dust), "the mask of checkers");
    expectPicture(diagonalMask, mask(diagonal), "the mask of a diagonal");
    expectPicture(Picture(side, side, black), mask(staircase), "the mask of a staircase");
    expectPicture(Picture(side, side, black), mask(Picture(side, side, coloured)),
                  "the mask of a full picture");
}

TEST_P(ColourSearch, KeepsToItsLimits)
{
    expectLimitsOfMethod(artefact(), "ReplaceColorQVR", {0U, 1U});
    expectLimitsOfMethod(artefact(), "ExtractColorQVR", {0U, 1U, 2U});
    expectLimitsOfMethod(artefact(), "ExtractColorRectangleMaskQVR");
    expectLimitsOfMethod(artefact(), "ExtractColorRectangleMaskQVR", {0, 0, 1, 1});
}

/// The size that the host describes is what counts; a grid for this one would not fit any memory.
TEST_P(ColourSearch, AMaskThatWouldNotFitMemoryIsNil)
{
    TestHost host{hostSetup(artefact())};
    standin::Picture photo = host.newPicture(8, 8);
    photo.quirks().describedWidth = most;
    photo.quirks().describedHeight = most;
    expectNil(host, photo, "ExtractColorRectangleMaskQVR");
    photo.quirks().describedWidth = least;
    expectNil(host, photo, "ExtractColorRectangleMaskQVR");
    photo.quirks().describedWidth = -3;
    photo.quirks().describedHeight = -3;
    expectNil(host, photo, "ExtractColorRectangleMaskQVR");
}

} // namespace
