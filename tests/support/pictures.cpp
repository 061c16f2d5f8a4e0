#include "tests/support/pictures.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <sstream>

#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

namespace
{

/// Enough to see a pattern, and not so much that a broken build fills the disk.
constexpr int mostKeptFailures = 20;

int channelOf(reference::Pixel pixel, int channel)
{
    const std::uint8_t channels[] = {pixel.red, pixel.green, pixel.blue, pixel.alpha};
    return channels[channel];
}

/// The spare byte that a wanted pixel has in a storage.
std::uint8_t storedAlpha(reference::Pixel wanted, standin::Storage storage, Alpha alpha)
{
    const standin::StorageTraits traits = traitsOf(storage);
    if (!traits.hasSpareByte)
        return 255;
    return alpha == Alpha::Opaque && wanted.alpha == 255 ? traits.opaqueAlpha : wanted.alpha;
}

void savePng(const std::filesystem::path& file, const reference::Picture& picture)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(picture.pixels.size() * 3);
    for (const reference::Pixel& pixel : picture.pixels)
        bytes.insert(bytes.end(), {pixel.red, pixel.green, pixel.blue});
    if (!bytes.empty())
        stbi_write_png(file.c_str(), picture.width, picture.height, 3, bytes.data(), picture.width * 3);
}

/// Keeps both pictures of a failure; gives what to tell about it.
std::string keepFailure(const reference::Picture& wanted, const reference::Picture& got)
{
    static int kept = 0;
    if (++kept > mostKeptFailures)
        return "(not kept: there are enough pictures)";
    const std::filesystem::path folder = std::filesystem::path{build::sourceDirectory} / "out/test-failures";
    std::filesystem::create_directories(folder);
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "." + test->name() + "-" + std::to_string(kept);
    std::replace(name.begin(), name.end(), '/', '-');
    savePng(folder / (name + "-wanted.png"), wanted);
    savePng(folder / (name + "-got.png"), got);
    return "kept as " + (folder / name).string() + "-{wanted,got}.png";
}

std::string sizeText(int width, int height)
{
    return std::to_string(width) + " x " + std::to_string(height);
}

reference::Pixel randomPixel(Random& random, Palette palette)
{
    static const std::vector<std::uint8_t> extremes{0, 1, 127, 128, 254, 255};
    static const std::vector<reference::Pixel> few{{255, 0, 0},  {0, 0, 0},   {255, 255, 255},
                                                   {10, 20, 30}, {9, 20, 30}, {128, 128, 128}};
    switch (palette)
    {
    case Palette::Greys:
    {
        const int grey = random.between(2, 253);
        const auto near = [&] {
            return static_cast<std::uint8_t>(grey + (random.onceIn(6) ? random.between(-2, 2) : 0));
        };
        return {near(), near(), near()};
    }
    case Palette::Few:
        return random.oneOf(few);
    case Palette::Extremes:
        return {random.oneOf(extremes), random.oneOf(extremes), random.oneOf(extremes)};
    case Palette::Noise:
        break;
    }
    return {random.byte(), random.byte(), random.byte()};
}

} // namespace

int Random::between(int lowest, int highest)
{
    return std::uniform_int_distribution<int>{lowest, highest}(engine);
}

int Random::coordinate(int size)
{
    switch (between(0, 9))
    {
    case 0:
        return 0;
    case 1:
        return between(-3, -1);
    case 2:
        return size + between(-1, 1);
    case 3:
        return oneOf(std::vector<int>{std::numeric_limits<int>::min(), std::numeric_limits<int>::max(),
                                      1 << 30, -(1 << 30), std::numeric_limits<int>::max() - 1});
    default:
        return between(-2, size + 2);
    }
}

double Random::parameter()
{
    static const std::vector<double> special{0.0,
                                             -0.0,
                                             1.0,
                                             -1.0,
                                             0.5,
                                             255.0,
                                             -255.0,
                                             300.0,
                                             -300.0,
                                             1e-300,
                                             1e9,
                                             -1e9,
                                             8421504.5,
                                             2147483647.0,
                                             2147483648.0,
                                             -2147483648.0,
                                             -2147483904.0,
                                             1e300,
                                             -1e300,
                                             std::numeric_limits<double>::infinity(),
                                             -std::numeric_limits<double>::infinity(),
                                             std::numeric_limits<double>::quiet_NaN()};
    switch (between(0, 3))
    {
    case 0:
        return oneOf(special);
    case 1:
        return std::uniform_real_distribution<double>{-400, 400}(engine);
    default:
        return std::uniform_real_distribution<double>{-3, 3}(engine);
    }
}

reference::Picture randomPicture(Random& random, int width, int height, Palette palette)
{
    reference::Picture picture(width, height);
    for (reference::Pixel& pixel : picture.pixels)
    {
        pixel = randomPixel(random, palette);
        pixel.alpha = random.byte();
    }
    return picture;
}

reference::Picture randomPictureOfAnyPalette(Random& random, int width, int height)
{
    static const std::vector<Palette> palettes{Palette::Noise, Palette::Greys, Palette::Few,
                                               Palette::Extremes};
    return randomPicture(random, width, height, random.oneOf(palettes));
}

reference::Picture pictureOf(std::initializer_list<std::initializer_list<reference::Pixel>> rows)
{
    reference::Picture picture(static_cast<int>(rows.begin()->size()), static_cast<int>(rows.size()));
    picture.pixels.clear();
    for (const auto& row : rows)
        picture.pixels.insert(picture.pixels.end(), row);
    return picture;
}

const std::vector<std::pair<int, int>>& testSizes()
{
    static const std::vector<std::pair<int, int>> sizes = [] {
        std::vector<std::pair<int, int>> result;
        // Under the sanitizers every fifth width: all lengths of a tail of four or eight pixels still occur.
        for (int width = 1; width <= 40; width += sanitized ? 5 : 1)
            result.emplace_back(width, 1 + width % 4);
        for (const int width : {63, 64, 65, 100, 127, 131})
            result.emplace_back(width, 3);
        result.emplace_back(1, 77);
        result.emplace_back(2, 50);
        return result;
    }();
    return sizes;
}

std::vector<standin::Storage> sourceStorages(const TestHost& host)
{
    const bool desktop = host.setup().options.kind == standin::Kind::Desktop;
    return storagesThat([desktop](standin::Storage storage) {
        return desktop == (traitsOf(storage).access != standin::Access::Bitmap);
    });
}

bool isLockable(standin::Storage storage)
{
    constexpr int lowestDepth = 24;
    const standin::StorageTraits traits = traitsOf(storage);
    return traits.access != standin::Access::Drawn && traits.depth >= lowestDepth;
}

int bytesRead(const TestHost& host, const standin::Picture& picture)
{
    return bytesPerPixel(isLockable(picture.storage()) ? picture.storage() : host.newStorage());
}

std::vector<standin::Storage> gworlds(bool lockable)
{
    return storagesThat([lockable](standin::Storage storage) {
        return traitsOf(storage).access == standin::Access::GWorld && isLockable(storage) == lockable;
    });
}

standin::Picture upload(standin::Host& host, const reference::Picture& picture,
                        std::optional<standin::Storage> storage)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(picture.pixels.size() * 4);
    for (const reference::Pixel& pixel : picture.pixels)
        bytes.insert(bytes.end(), {pixel.red, pixel.green, pixel.blue, pixel.alpha});
    standin::Picture result = host.newPicture(picture.width, picture.height, storage);
    result.setRgba(bytes);
    return result;
}

reference::Picture download(const standin::Picture& picture)
{
    reference::Picture result(picture.width(), picture.height());
    const std::vector<std::uint8_t> bytes = picture.rgba();
    const std::uint8_t* next = bytes.data();
    for (reference::Pixel& pixel : result.pixels)
    {
        pixel = {next[0], next[1], next[2], next[3]};
        next += 4;
    }
    return result;
}

bool expectPicture(const reference::Picture& wanted, const standin::Picture& got,
                   const std::string& operation, Alpha alpha)
{
    if (got.isNil())
    {
        ADD_FAILURE() << operation << ": wanted a picture of " << sizeText(wanted.width, wanted.height)
                      << ", got nil";
        return false;
    }
    if (got.width() != wanted.width || got.height() != wanted.height)
    {
        ADD_FAILURE() << operation << ": wanted a picture of " << sizeText(wanted.width, wanted.height)
                      << ", got one of " << sizeText(got.width(), got.height());
        return false;
    }

    const reference::Picture pixels = download(got);
    constexpr const char* channelNames[] = {"red", "green", "blue", "alpha"};
    const int channels = alpha == Alpha::Ignored ? 3 : 4;
    int count = 0;
    std::ostringstream first;
    for (int y = 0; y < wanted.height; ++y)
        for (int x = 0; x < wanted.width; ++x)
        {
            reference::Pixel want = wanted.at(x, y);
            want.alpha = storedAlpha(want, got.storage(), alpha);
            int channel = 0;
            while (channel < channels && channelOf(want, channel) == channelOf(pixels.at(x, y), channel))
                ++channel;
            if (channel == channels)
                continue;
            if (++count == 1)
                first << "(" << x << ", " << y << ", " << channelNames[channel] << ", wanted "
                      << channelOf(want, channel) << ", got " << channelOf(pixels.at(x, y), channel) << ")";
        }
    if (count == 0)
        return true;
    ADD_FAILURE() << operation << ", picture of " << sizeText(wanted.width, wanted.height) << " in "
                  << nameOf(got.storage()) << ": " << count << " pixels differ, the first at " << first.str()
                  << "; " << keepFailure(wanted, pixels);
    return false;
}

std::string callText(const std::string& method, const standin::Arguments& arguments)
{
    std::string text = method + "(";
    for (const standin::Value& argument : arguments)
        text += (text.back() == '(' ? "" : ", ") + argument.describe();
    return text + ")";
}

standin::Picture expectCall(const reference::Picture& wanted, TestHost& host, const standin::Picture& source,
                            const std::string& method, const standin::Arguments& arguments, Alpha alpha)
{
    const std::vector<std::uint8_t> before = source.rgba();
    const standin::Value result = host.call(source, method, arguments);
    EXPECT_FALSE(result.exception().has_value()) << callText(method, arguments);
    const std::string operation =
        callText(method, arguments) + " on " + std::string(nameOf(source.storage()));
    expectPicture(wanted, result.picture(), operation, alpha);
    EXPECT_TRUE(before == source.rgba()) << operation << " changed its source";
    return result.picture();
}

void expectNil(TestHost& host, const standin::Picture& source, const std::string& method,
               const standin::Arguments& arguments)
{
    const standin::Value result = host.call(source, method, arguments);
    const std::string text = callText(method, arguments);
    EXPECT_TRUE(result.picture().isNil()) << text << " gave " << result.describe();
    EXPECT_FALSE(result.exception().has_value()) << text;
    host.expectBalanced("after " + text);
}

void expectNilForImpossibleSizes(TestHost& host, const std::string& method,
                                 const standin::Arguments& arguments, bool largestGivesPicture)
{
    constexpr int largest = 32767;
    for (const auto& [width, height] : {std::pair{0, 3}, {3, 0}, {0, 0}, {largest + 1, 1}, {1, largest + 1}})
    {
        SCOPED_TRACE(sizeText(width, height));
        expectNil(host, host.newPicture(width, height), method, arguments);
    }
    if (!largestGivesPicture)
        return;
    for (const auto& [width, height] : {std::pair{largest, 1}, {1, largest}})
    {
        standin::Picture photo = host.newPicture(width, height);
        photo.fill({1, 2, 3, 4});
        const standin::Picture result = host.call(photo, method, arguments).picture();
        ASSERT_FALSE(result.isNil()) << callText(method, arguments) << " on " << sizeText(width, height);
        EXPECT_EQ(result.width(), width);
        EXPECT_EQ(result.height(), height);
    }
}
