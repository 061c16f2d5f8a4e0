#include "tests/support/pictures.h"

#include "media/image.h"
#include "tests/reference/telling_values.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

namespace
{

/// The spare byte that a wanted pixel has in a storage.
std::uint8_t storedAlpha(reference::Pixel wanted, standin::Storage storage, Alpha alpha)
{
    const standin::StorageTraits traits = traitsOf(storage);
    if (!traits.hasSpareByte)
        return 255;
    return alpha == Alpha::Opaque ? reference::storedAlpha(wanted.alpha, traits) : wanted.alpha;
}

reference::Pixel withoutAlpha(reference::Pixel pixel)
{
    pixel.alpha = 0;
    return pixel;
}

/// Both pictures of a failure, with their spare bytes as they are stored.
struct Mismatch
{
    reference::Picture wanted;
    reference::Picture got;
    std::vector<int> wrong; ///< indices of pixels, ascending; never empty
    /// Only spare bytes differ.
    bool inAlphaOnly = true;
};

std::optional<Mismatch> mismatchOf(const reference::Picture& wanted, const standin::Picture& got, Alpha alpha)
{
    Mismatch result{wanted, download(got), {}};
    for (std::size_t i = 0; i < wanted.pixels.size(); ++i)
    {
        reference::Pixel& want = result.wanted.pixels[i];
        want.alpha = storedAlpha(want, got.storage(), alpha);
        reference::Pixel& pixel = result.got.pixels[i];
        if (withoutAlpha(want) != withoutAlpha(pixel))
            result.inAlphaOnly = false;
        else if (alpha == Alpha::Ignored || want.alpha == pixel.alpha)
            continue;
        result.wrong.push_back(static_cast<int>(i));
    }
    if (result.wrong.empty())
        return std::nullopt;
    return result;
}

/// "rows 0 to 4, 7, 9 to 12".
std::string rowsText(const Mismatch& mismatch)
{
    std::vector<int> rows;
    for (const int index : mismatch.wrong)
        if (const int row = index / mismatch.wanted.width; rows.empty() || rows.back() != row)
            rows.push_back(row);
    constexpr int mostRanges = 8;
    std::string text = rows.size() == 1 ? "row " : "rows ";
    int ranges = 0;
    for (std::size_t first = 0; first < rows.size();)
    {
        if (++ranges > mostRanges)
            return text + " ... " + std::to_string(rows.back());
        std::size_t last = first;
        while (last + 1 < rows.size() && rows[last + 1] == rows[last] + 1)
            ++last;
        text += (first == 0 ? "" : ", ") + std::to_string(rows[first]);
        if (last > first)
            text += " to " + std::to_string(rows[last]);
        first = last + 1;
    }
    return text;
}

/// Keeps one picture of the running test's failure, and gives the file's path. Colours are written opaque, so
/// that they show; where only spare bytes differ, those are written as grey.
std::string keep(const reference::Picture& picture, const std::string& role, bool alphaAsGrey)
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path() / "failed";
    fs::create_directories(folder);
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test.test_suite_name()) + "." + test.name() + "-" + role + ".png";
    std::replace(name.begin(), name.end(), '/', '-');
    std::vector<std::uint8_t> bytes;
    for (const reference::Pixel& pixel : picture.pixels)
        if (alphaAsGrey)
            bytes.insert(bytes.end(), {pixel.alpha, pixel.alpha, pixel.alpha, 255});
        else
            bytes.insert(bytes.end(), {pixel.red, pixel.green, pixel.blue, 255});
    media::writePng((folder / name).string(), picture.width, picture.height, bytes);
    return (folder / name).string();
}

std::string describe(const Mismatch& mismatch)
{
    const int width = mismatch.wanted.width;
    const int first = mismatch.wrong.front();
    const auto at = static_cast<std::size_t>(first);
    return "\n  wrong:  " + std::to_string(mismatch.wrong.size()) + " of " +
           std::to_string(mismatch.wanted.pixels.size()) + " pixels" +
           (mismatch.inAlphaOnly ? ", in alpha only" : "") + ", " + rowsText(mismatch) + "\n  first:  (" +
           std::to_string(first % width) + ", " + std::to_string(first / width) + ")" +
           "\n  wanted: " + pixelText(mismatch.wanted.pixels[at]) +
           "\n  got:    " + pixelText(mismatch.got.pixels[at]) + "\n  " +
           keep(mismatch.wanted, "wanted", mismatch.inAlphaOnly) + "\n  " +
           keep(mismatch.got, "got", mismatch.inAlphaOnly);
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
    switch (between(0, 3))
    {
    case 0:
        return reference::tellingDoubles[static_cast<std::size_t>(
            between(0, static_cast<int>(std::size(reference::tellingDoubles)) - 1))];
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
    return sourceStorages(host.setup());
}

std::vector<standin::Storage> sourceStorages(const HostSetup& setup)
{
    const bool desktop = setup.options.kind == standin::Kind::Desktop;
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

void expectPicture(const reference::Picture& wanted, const standin::Picture& got,
                   const std::string& operation, Alpha alpha, SourceLine line)
{
    const std::string size = sizeText(wanted.width, wanted.height);
    if (got.isNil())
        GTEST_FAIL_AT(line.file, line.number) << operation << ": wanted a picture of " << size << ", got nil";
    if (got.width() != wanted.width || got.height() != wanted.height)
        GTEST_FAIL_AT(line.file, line.number) << operation << ": wanted a picture of " << size
                                              << ", got one of " << sizeText(got.width(), got.height());
    if (const std::optional<Mismatch> mismatch = mismatchOf(wanted, got, alpha))
        GTEST_FAIL_AT(line.file, line.number) << operation << ": wrong picture of " << size << " in "
                                              << nameOf(got.storage()) << describe(*mismatch);
}

std::string callText(const std::string& method, const standin::Arguments& arguments)
{
    std::string text = method + "(";
    for (const standin::Value& argument : arguments)
        text += (text.back() == '(' ? "" : ", ") + argument.describe();
    return text + ")";
}

standin::Picture expectCall(const reference::Picture& wanted, TestHost& host, const standin::Picture& source,
                            const std::string& method, const standin::Arguments& arguments, Alpha alpha,
                            SourceLine line)
{
    const std::vector<std::uint8_t> before = source.rgba();
    const standin::Value result = host.call(source, method, arguments);
    const std::string operation =
        callText(method, arguments) + " of a picture in " + std::string(nameOf(source.storage()));
    EXPECT_FALSE(result.exception().has_value()) << operation;
    expectPicture(wanted, result.picture(), operation, alpha, line);
    EXPECT_TRUE(before == source.rgba()) << operation << " changed its source";
    return result.picture();
}

bool isClean(const standin::Value& result, const standin::Value& clean)
{
    if (!clean.isNil())
        return result.describe() == clean.describe();
    const auto* picture = std::get_if<standin::Picture>(&result.held());
    const auto* string = std::get_if<standin::String>(&result.held());
    return picture != nullptr ? picture->isNil() : string != nullptr ? string->isNil() : result.isNil();
}

void expectNil(const TestHost& host, const standin::Value& result, const std::string& what, SourceLine line)
{
    const testing::ScopedTrace trace = line.trace(what);
    EXPECT_TRUE(isClean(result, nullptr)) << "wanted nil, got " << result.describe();
    EXPECT_FALSE(result.exception().has_value());
    host.expectBalanced("afterwards");
}

void expectNil(TestHost& host, const standin::Picture& source, const std::string& method,
               const standin::Arguments& arguments, SourceLine line)
{
    expectNil(host, host.call(source, method, arguments), callText(method, arguments), line);
}
