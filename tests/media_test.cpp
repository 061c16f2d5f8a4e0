// Image files, as the library that reads and writes them is called.
#include "media/image.h"

#include "host/error.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace
{

using media::Encoding;
using media::Format;
using media::Image;
using testing::ElementsAre;
using testing::HasSubstr;

std::string textOf(const std::vector<std::uint8_t>& bytes)
{
    return {bytes.begin(), bytes.end()};
}

/// A soft slope with some noise, as photographs are.
Image photograph(int width, int height, int channels)
{
    Image image{width, height, channels, {}};
    std::uint32_t noise = 1;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int channel = 0; channel < channels; ++channel)
            {
                noise = noise * 1664525 + 1013904223;
                image.bytes.push_back(static_cast<std::uint8_t>((x + y) / (channel + 2) + (noise >> 29)));
            }
    return image;
}

Image reread(const Image& image, Format format, const Encoding& encoding = {})
{
    return media::decoded(media::encoded(image, format, encoding), "file", image.channels);
}

std::string messageOf(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const standin::Error& error)
    {
        return error.what();
    }
    return "";
}

TEST(Media, PngFilesHoldEveryByte)
{
    for (const int channels : {3, 4})
        for (int width = 1; width < 20; ++width)
            for (const int height : {1, 2, 7})
            {
                const Image image = photograph(width, height, channels);
                const Image read = reread(image, Format::png);
                EXPECT_EQ(read.width, width);
                EXPECT_EQ(read.height, height);
                EXPECT_EQ(read.bytes, image.bytes) << width << " x " << height << " x " << channels;
            }
}

TEST(Media, PngFilesOfManyStripesHoldEveryByte)
{
    for (const int width : {700, 360000})
    {
        const Image image = photograph(width, width > 1000 ? 2 : 600, 3);
        for (const int compression : {0, 1})
            EXPECT_EQ(reread(image, Format::png, {.pngCompression = compression}).bytes, image.bytes)
                << width << " at " << compression;
    }
}

TEST(Media, CompressionMakesPngFilesSmaller)
{
    const Image image = photograph(150, 100, 3);
    std::vector<std::size_t> sizes;
    for (int compression = 0; compression <= 9; ++compression)
    {
        const Encoding encoding{.pngCompression = compression};
        sizes.push_back(media::encoded(image, Format::png, encoding).size());
        EXPECT_EQ(reread(image, Format::png, encoding).bytes, image.bytes);
    }
    EXPECT_GT(sizes[0], image.bytes.size());
    EXPECT_LT(sizes[1], sizes[0] / 2);
    EXPECT_TRUE(std::is_sorted(sizes.rbegin(), sizes.rend())) << testing::PrintToString(sizes);
}

TEST(Media, GreyPngFilesHoldOneLevelInPlaceOfThree)
{
    for (const int channels : {3, 4})
    {
        Image image = photograph(60, 40, channels);
        const std::size_t size = media::encoded(image, Format::png, {.pngCompression = 0}).size();
        for (std::size_t at = 0; at < image.bytes.size(); at += static_cast<std::size_t>(channels))
            image.bytes[at] = image.bytes[at + 1] = image.bytes[at + 2];
        EXPECT_TRUE(media::isGrey(image));
        EXPECT_EQ(reread(image, Format::png).bytes, image.bytes);
        EXPECT_EQ(media::encoded(image, Format::png, {.pngCompression = 0}).size(), size - 60 * 40 * 2);
        // The second pixel's red, or the first one's alpha.
        image.bytes[3] ^= 1;
        EXPECT_EQ(media::isGrey(image), channels == 4);
    }
}

TEST(Media, QualityMakesJpegFilesSmaller)
{
    const Image image = photograph(64, 64, 3);
    const auto sizeAt = [&](int quality) {
        return media::encoded(image, Format::jpeg, {.jpegQuality = quality}).size();
    };
    EXPECT_LT(sizeAt(1), sizeAt(85));
    EXPECT_LT(sizeAt(85), sizeAt(100));
    EXPECT_EQ(sizeAt(85), media::encoded(image, Format::jpeg).size());
}

TEST(Media, PnmFilesHoldColoursOrLevels)
{
    const Image colours{2, 1, 3, {1, 2, 3, 4, 5, 6}};
    const Image greys{2, 1, 4, {7, 7, 7, 0, 9, 9, 9, 255}};
    const std::string coloured = "P6\n2 1\n255\n\1\2\3\4\5\6";
    const std::string grey = "P5\n2 1\n255\n\7\11";
    EXPECT_EQ(textOf(media::encoded(colours, Format::ppm)), coloured);
    EXPECT_EQ(textOf(media::encoded(colours, Format::pnm)), coloured);
    EXPECT_EQ(textOf(media::encoded(greys, Format::pgm)), grey);
    EXPECT_EQ(textOf(media::encoded(greys, Format::pnm)), grey);
    EXPECT_EQ(textOf(media::encoded(greys, Format::ppm)), "P6\n2 1\n255\n\7\7\7\11\11\11");
    EXPECT_EQ(messageOf([&] { media::writeImage("a.pgm", colours); }),
              "cannot write a.pgm: PGM holds levels of grey, and the picture has colours");
    EXPECT_EQ(reread(colours, Format::ppm).bytes, colours.bytes);
    EXPECT_THAT(reread(greys, Format::pgm).bytes, ElementsAre(7, 7, 7, 255, 9, 9, 9, 255));
}

TEST(Media, FormatsAreNamedAsFilesEnd)
{
    for (const auto& [name, format] : std::vector<std::pair<std::string, Format>>{{"png", Format::png},
                                                                                  {"jpg", Format::jpeg},
                                                                                  {"JPEG", Format::jpeg},
                                                                                  {"bmp", Format::bmp},
                                                                                  {"Tga", Format::tga},
                                                                                  {"ppm", Format::ppm},
                                                                                  {"pgm", Format::pgm},
                                                                                  {"pnm", Format::pnm}})
    {
        EXPECT_EQ(media::formatNamed(name), format);
        EXPECT_EQ(media::formatOf("folder.d/a.b." + name), format);
    }
    for (const char* name : {"", "gif", ".png", "png "})
        EXPECT_EQ(media::formatNamed(name), std::nullopt) << name;
    for (const char* path : {"a", "png", "a.png/b", "a.", "a.gif", ""})
        EXPECT_THAT(messageOf([&] { media::formatOf(path); }),
                    HasSubstr("a picture's name must end in .png"));
    for (const Format format : {Format::png, Format::bmp, Format::tga})
    {
        EXPECT_TRUE(media::holdsAlpha(format));
        EXPECT_EQ(reread({1, 1, 4, {1, 2, 3, 4}}, format).bytes[3], 4);
    }
    for (const Format format : {Format::jpeg, Format::ppm, Format::pgm, Format::pnm})
    {
        EXPECT_FALSE(media::holdsAlpha(format));
        EXPECT_EQ(reread({1, 1, 4, {3, 3, 3, 4}}, format).bytes[3], 255);
    }
}

TEST(Media, WritingTwiceGivesTheSameFile)
{
    const Image image = photograph(300, 1300, 3);
    for (const Format format : {Format::png, Format::jpeg, Format::bmp, Format::tga, Format::ppm})
        EXPECT_EQ(media::encoded(image, format), media::encoded(image, format));
}

TEST(Media, TellsOfAlphaThatShowsThrough)
{
    for (const Format format : {Format::png, Format::bmp, Format::tga})
        for (const int channels : {3, 4})
        {
            const auto hasAlpha = [&](const Image& image) {
                return media::decoded(media::encoded(image, format), "file", channels).hasAlpha;
            };
            EXPECT_TRUE(hasAlpha({2, 1, 4, {1, 2, 3, 255, 4, 5, 6, 254}}));
            EXPECT_FALSE(hasAlpha({2, 1, 4, {1, 2, 3, 255, 4, 5, 6, 255}}));
            EXPECT_FALSE(hasAlpha({2, 1, 3, {1, 2, 3, 4, 5, 6}}));
        }
}

} // namespace
