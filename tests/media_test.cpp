// Image files, as the library that reads and writes them is called.
#include "media/image.h"

#include "host/error.h"
#include "media/metadata.h"
#include "tests/support/small_files.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
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

// What files say of their pictures

constexpr std::size_t startSize = 2;            ///< of a JPEG file
constexpr std::size_t headerSize = 8 + 12 + 13; ///< of a PNG file, before its next chunk

/// Numbers in either order.
class Numbers : public Bytes
{
public:
    explicit Numbers(std::endian numbers) : order(numbers)
    {
    }
    Numbers& number(std::uint32_t value, int size)
    {
        for (int index = 0; index < size; ++index)
            bytes({static_cast<std::uint8_t>(value >>
                                             8 * (order == std::endian::little ? index : size - 1 - index))});
        return *this;
    }

private:
    std::endian order;
};

/// EXIF data with an orientation, behind another entry.
std::string exif(std::uint32_t orientation, std::endian order)
{
    Numbers data(order);
    data.text(order == std::endian::little ? "II" : "MM");
    data.number(42, 2).number(8, 4).number(2, 2);
    data.number(0x0100, 2).number(4, 2).number(1, 4).number(6, 4);
    data.number(0x0112, 2).number(3, 2).number(1, 4).number(orientation, 2).number(0, 2);
    return data.number(0, 4).content;
}

std::string jpegSegment(int kind, const std::string& content)
{
    const auto size = static_cast<std::uint32_t>(content.size() + 2);
    return Numbers(std::endian::big)
               .number(0xFF00U + static_cast<std::uint32_t>(kind), 2)
               .number(size, 2)
               .content +
           content;
}

std::string pngChunk(const std::string& name, const std::string& content)
{
    const std::string size =
        Numbers(std::endian::big).number(static_cast<std::uint32_t>(content.size()), 4).content;
    return size + name + content + std::string(4, '\0');
}

std::vector<std::uint8_t> bytesOf(const std::string& text)
{
    return {text.begin(), text.end()};
}

/// What is read of a file into which something has been put.
Image withInsertion(std::string file, std::size_t place, const std::string& insertion, int channels = 3)
{
    return media::decoded(bytesOf(file.insert(place, insertion)), "file", channels);
}

/// A picture's letters, row by row: "abc/def".
std::string lettersOf(const Image& image, int letterSize = 1)
{
    std::string letters;
    for (int y = letterSize / 2; y < image.height; y += letterSize)
    {
        letters += letters.empty() ? "" : "/";
        for (int x = letterSize / 2; x < image.width; x += letterSize)
        {
            const auto at = static_cast<std::size_t>((y * image.width + x) * image.channels);
            letters += static_cast<char>('a' + (image.bytes[at] + 12) / 25);
        }
    }
    return letters;
}

/// "abc/def", each letter so many pixels wide and high.
Image letters(int letterSize)
{
    Image image{3 * letterSize, 2 * letterSize, 3, {}};
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            image.bytes.insert(image.bytes.end(), 3,
                               static_cast<std::uint8_t>(25 * (y / letterSize * 3 + x / letterSize)));
    return image;
}

const std::vector<std::string> orientations{"abc/def",  "cba/fed",  "fed/cba",  "def/abc",
                                            "ad/be/cf", "da/eb/fc", "fc/eb/da", "cf/be/ad"};

TEST(Media, PicturesAreReadAsTheyAreLookedAt)
{
    constexpr int block = 16;
    const std::string jpeg = textOf(media::encoded(letters(block), Format::jpeg, {.jpegQuality = 100}));
    const std::string png = textOf(media::encoded(letters(1), Format::png));
    for (std::uint32_t orientation = 1; orientation <= 8; ++orientation)
        for (const std::endian order : {std::endian::little, std::endian::big})
        {
            const std::string data = exif(orientation, order);
            const std::string& wanted = orientations[orientation - 1];
            const std::string segment = jpegSegment(0xE1, std::string("Exif\0\0", 6) + data);
            EXPECT_EQ(lettersOf(withInsertion(jpeg, startSize, segment), block), wanted);
            for (const int channels : {3, 4})
                EXPECT_EQ(lettersOf(withInsertion(png, headerSize, pngChunk("eXIf", data), channels)),
                          wanted);
        }
}

TEST(Media, OrientationsThatAreNoneChangeNothing)
{
    const std::string png = textOf(media::encoded(letters(1), Format::png));
    const std::string data = exif(6, std::endian::big);
    std::vector<std::string> damaged{exif(0, std::endian::big),
                                     exif(9, std::endian::little),
                                     "",
                                     "MM",
                                     std::string("II*\0", 4) + data.substr(4),
                                     "XX" + data.substr(2)};
    for (std::size_t size = 0; size < data.size() - 8; ++size)
        damaged.push_back(data.substr(0, size));
    std::string otherType = data;
    otherType[10 + 12 + 3] = 4;
    damaged.push_back(otherType);
    std::string farAway = data;
    farAway.replace(4, 4, "\xFF\xFF\xFF\xFF");
    damaged.push_back(farAway);
    for (const std::string& content : damaged)
        EXPECT_EQ(lettersOf(withInsertion(png, headerSize, pngChunk("eXIf", content))), orientations[0])
            << testing::PrintToString(content);
    EXPECT_EQ(lettersOf(withInsertion(png, headerSize, pngChunk("eXIf", data))), orientations[5]);
}

TEST(Media, TellsHowManyPicturesAFileHolds)
{
    const std::string png = textOf(media::encoded({1, 1, 3, {1, 2, 3}}, Format::png));
    const std::string three = pngChunk("acTL", Numbers(std::endian::big).number(3, 4).number(0, 4).content);
    EXPECT_EQ(withInsertion(png, headerSize, "").frames, 1);
    EXPECT_EQ(withInsertion(png, headerSize, three + pngChunk("fcTL", std::string(26, '\0'))).frames, 3);
    EXPECT_EQ(withInsertion(png, headerSize, three).frames, 4) << "a picture before the animation counts too";
    EXPECT_EQ(withInsertion(png, png.size() - 12, three).frames, 1) << "behind the pixels it says nothing";

    const std::string start =
        Bytes().text("GIF89a").bytes({1, 0, 1, 0, 0x80, 0, 0, 9, 8, 7, 6, 5, 4}).content;
    const std::string comment = Bytes().bytes({0x21, 0xFE, 2, 0x2C, 0x2C, 0}).content;
    const std::string frame = Bytes().bytes({0x2C, 0, 0, 0, 0, 1, 0, 1, 0, 0, 2, 2, 0x44, 1, 0}).content;
    const std::string coloured =
        Bytes().bytes({0x2C, 0, 0, 0, 0, 1, 0, 1, 0, 0x80, 1, 2, 3, 4, 5, 6, 2, 2, 0x44, 1, 0}).content;
    const auto framesOf = [&](const std::string& blocks) {
        const Image image = media::decoded(bytesOf(start + blocks), "file", 3);
        EXPECT_EQ(image.bytes.size(), 3U);
        return image.frames;
    };
    EXPECT_EQ(framesOf(frame + ";"), 1);
    EXPECT_EQ(framesOf(comment + frame + comment + coloured + frame + ";"), 3);
    EXPECT_EQ(framesOf(frame + frame + "trash" + frame), 2);
    EXPECT_EQ(framesOf(frame), 1);
}

TEST(Media, LevelsOfOtherRangesBecomeThoseOfEightBits)
{
    const auto levels = [](const std::string& file) {
        return media::decoded(bytesOf(file), "file", 3).bytes;
    };
    EXPECT_THAT(levels("P5 1 1 255\n\x07"), ElementsAre(7, 7, 7));
    EXPECT_THAT(levels("P6\n# a comment 9\n1\t#\n1\r\n15 \x01\x07\x0F"), ElementsAre(17, 119, 255));
    EXPECT_THAT(levels(std::string("P6 1 1 65535\n\x01\xFF\x80\x00\xFF\x80", 19)), ElementsAre(2, 128, 255));
    EXPECT_THAT(levels("P6 1 1 100 \x32\x64\xFF"), ElementsAre(128, 255, 255));
    const std::string refused = "file: not an image that can be read (";
    for (const auto& [file, reason] : std::vector<std::pair<std::string, std::string>>{
             {"P6", "a header with impossible numbers"},
             {"P6 1", "a header with impossible numbers"},
             {"P6 1 1 # 255", "a header with impossible numbers"},
             {"P6 0 1 255 abc", "a header with impossible numbers"},
             {"P6 -1 1 255 abc", "a header with impossible numbers"},
             {"P5 99999999999 1 255 a", "a header with impossible numbers"},
             {"P5 1 1 70000 ab", "levels of more than 16 bits"},
             {"P5 1 1 65535 a", "fewer pixels than its header says"},
             {"P6 1 1 255 ab", "fewer pixels than its header says"},
             {"P6 9999999 9999999 255 ab", "fewer pixels than its header says"}})
        EXPECT_EQ(messageOf([&, &bytes = file] { levels(bytes); }), refused + reason + ")");
    EXPECT_THAT(messageOf([&] { levels("text"); }), HasSubstr(refused));

    const std::string scanline = pngChunk(
        "IDAT",
        Bytes().bytes({0x78, 1, 1, 7, 0, 0xF8, 0xFF, 0, 1, 0xFF, 0x80, 0, 0xFE, 0x80, 0, 0, 0, 0}).content);
    const std::string header =
        pngChunk("IHDR", Bytes().bytes({0, 0, 0, 1, 0, 0, 0, 1, 16, 2, 0, 0, 0}).content);
    EXPECT_THAT(levels("\x89PNG\r\n\x1A\n" + header + scanline + pngChunk("IEND", "")),
                ElementsAre(1, 0x80, 0xFE));
}

TEST(Media, RefusesJpegFilesWhoseTablesTheDecoderCannotTake)
{
    const std::string jpeg = textOf(media::encoded(letters(8), Format::jpeg));
    const auto refuses = [](const std::string& file) {
        return messageOf([&] { media::decoded(bytesOf(file), "a.jpg", 3); }) ==
               "a.jpg: not an image that can be read (damaged code tables)";
    };
    EXPECT_FALSE(refuses(jpeg));
    EXPECT_FALSE(refuses("\xFF" + jpeg)) << "bytes that fill are skipped";

    const std::size_t tables = jpeg.find("\xFF\xC4");
    ASSERT_NE(tables, std::string::npos);
    std::string damaged = jpeg;
    damaged.replace(tables + 5, 16, std::string(16, '\x7F'));
    EXPECT_TRUE(refuses(damaged)) << "more codes than there are values";
    EXPECT_TRUE(refuses("\xFF" + damaged));

    const std::size_t scan = jpeg.find("\xFF\xDA");
    ASSERT_NE(scan, std::string::npos);
    for (const char unknown : {'\x02', '\x20', '\xF0'})
    {
        damaged = jpeg;
        damaged[scan + 6] = unknown;
        EXPECT_TRUE(refuses(damaged)) << "a table that was never defined";
    }
    // Between two scans, behind what could be pixels.
    const std::string between("\x12\xFF\0\xFF\xD3\xFF", 6);
    const std::string second = jpegSegment(0xC4, std::string("\0", 1) + std::string(16, '\xFF'));
    EXPECT_TRUE(refuses(jpeg.substr(0, jpeg.size() - 2) + between + second));
    EXPECT_FALSE(refuses(jpeg + second)) << "behind the end";
}

} // namespace
