// Pictures so large that a 32-bit process has no room for many of them.
#include "tests/support/pictures.h"

#include <algorithm>
#include <string>

namespace
{

using standin::Picture;
using standin::Value;

/// The longest side, and as many rows of it as make 200 megapixels: 800 MB in a 4-byte format.
constexpr int longestSide = 32767;
constexpr int manyRows = 6104;

class LargePictures : public ArtefactTest
{
protected:
    /// One host at a time, without guard pages around every row.
    static HostSetup spacious(standin::Kind kind)
    {
        HostSetup setup = hostSetup(artefact(), kind);
        setup.options.memory = standin::Memory::Plain;
        setup.options.padding = 0;
        return setup;
    }
};
ON_EVERY_ARTEFACT(LargePictures);

void fillRow(Picture& picture, int y, std::uint8_t byte)
{
    std::uint8_t* const row = picture.row(y);
    std::fill(row, row + picture.width() * picture.bytesPerPixel(), byte);
}

/// Whether all bytes of colours in a row are this one.
bool hasColour(const Picture& picture, int x, int y, std::uint8_t byte)
{
    const standin::Pixel pixel = picture.pixel(x, y);
    return pixel.red == byte && pixel.green == byte && pixel.blue == byte;
}

TEST_P(LargePictures, TwoHundredMegapixelsWorkOrGiveNil)
{
    if (sanitized)
        GTEST_SKIP() << "the sanitizer takes the address space that this needs";
    constexpr std::uint8_t fill = reference::untouchedByte;
    constexpr std::uint8_t mark = 7;
    constexpr std::uint32_t markColour = 0x070707;
    TestHost host{spacious(standin::Kind::Desktop)};
    Picture picture = host.newPicture(longestSide, manyRows);
    fillRow(picture, manyRows - 1, mark);

    EXPECT_EQ(host.call(picture, "CountColorQVR", {markColour}).integer(), longestSide);
    EXPECT_TRUE(host.call(picture, "isGrayQVR", {0}).boolean());
    host.expectBalanced("after reading");

    // There is room for two such pictures, and none has to stay for a third.
    {
        const Picture inverted = host.call(picture, "InvertQVR").picture();
        ASSERT_FALSE(inverted.isNil());
        EXPECT_TRUE(hasColour(inverted, 0, 0, 255 - fill));
        EXPECT_TRUE(hasColour(inverted, longestSide - 1, manyRows - 1, 255 - mark));
        EXPECT_TRUE(hasColour(inverted, longestSide - 1, manyRows - 2, 255 - fill));
        host.expectBalanced("after inverting");
    }

    EXPECT_TRUE(host.call(picture, "ScrollVerticalQVR", {1, true, false}).boolean());
    EXPECT_TRUE(hasColour(picture, longestSide - 1, 0, mark));
    EXPECT_TRUE(hasColour(picture, 0, manyRows - 1, fill));
    host.expectBalanced("after scrolling");

    // 600 MB at the plug-in and twice that at the host: where they do not fit, nothing is left of the
    // attempt.
    {
        const Value text = host.callGlobal("PicturetoBinaryStringQVR", {picture});
        EXPECT_FALSE(text.exception().has_value());
        if (!text.string().isNil())
        {
            EXPECT_EQ(text.string().bytes().size(), std::size_t{40} + 3U * longestSide * manyRows);
            EXPECT_EQ(text.string().bytes().back(), static_cast<char>(fill));
        }
    }
    host.expectBalanced("after packing");
}

/// 32767 x 32767 pixels are more than 32 bits can address.
TEST_P(LargePictures, ResultsWithoutMemoryAreNil)
{
    for (const standin::Kind kind : {standin::Kind::Desktop, standin::Kind::Console})
    {
        TestHost host{spacious(kind)};
        EXPECT_TRUE(
            host.callGlobal("RenderSamplesQVR", {host.newMemoryBlock(64), 0, 0, longestSide, longestSide, 0})
                .picture()
                .isNil());
        host.expectBalanced("after a picture that cannot be made");
    }
}

TEST_P(LargePictures, ThinOnesWork)
{
    for (const standin::Kind kind : {standin::Kind::Desktop, standin::Kind::Console})
        for (const auto& [width, height] : {std::pair{longestSide, 2}, {2, longestSide}})
        {
            TestHost host{hostSetup(artefact(), kind)};
            Random random{5};
            const reference::Picture pixels = randomPicture(random, width, height, Palette::Few);
            const Picture picture = upload(host, pixels);
            const Picture twice = host.call(host.call(picture, "InvertQVR").picture(), "InvertQVR").picture();
            expectPicture(reference::opaque(pixels), twice, "inverting twice");
            const Value text = host.callGlobal("PicturetoBinaryStringQVR", {picture});
            expectPicture(reference::opaque(pixels),
                          host.callGlobal("BinaryStringtoPictureQVR", {text}).picture(), "a round trip");
        }
}

} // namespace
