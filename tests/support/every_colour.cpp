#include "tests/support/every_colour.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace
{

/// Rows that are computed at once.
constexpr int bandRows = 64;

constexpr std::uint32_t colourMask = 0xFFFFFF;

/// A permutation of the colours: every step of it can be undone.
constexpr std::uint32_t shuffled(std::uint32_t index, Order order)
{
    std::uint32_t colour = index;
    if (order == Order::Second)
        colour = (colour * 0x5BD1E9U + 0x3C6EF3U) & colourMask;
    colour ^= colour >> 12U;
    colour = colour * 0x2C1B3DU & colourMask;
    colour ^= colour >> 11U;
    colour = colour * 0x297A2DU & colourMask;
    return colour ^ colour >> 12U;
}

reference::Pixel colourAt(Order order, int x, int y)
{
    constexpr int rowStep = colourColumns / colourRows;
    const auto index = static_cast<std::uint32_t>(y * rowStep * colourColumns + x);
    reference::Pixel pixel = reference::pixelOf(shuffled(index, order));
    pixel.alpha = static_cast<std::uint8_t>(index * 0x9E3779B1U >> 24U);
    return pixel;
}

/// What is stored as spare byte, where a storage has one.
struct SpareByte
{
    std::uint32_t kept;  ///< the pixel's own bits
    std::uint32_t added; ///< others
};

constexpr SpareByte asItIs{0xFFFFFFFF, 0};

constexpr SpareByte opaqueIn(standin::Storage storage)
{
    return {colourMask, static_cast<std::uint32_t>(traitsOf(storage).opaqueAlpha) << 24U};
}

/// The bytes of `count` pixels in a storage, many at once; `standin::storePixel` would decide on the storage
/// for each.
void storeRow(standin::Storage storage, const reference::Pixel* pixels, int count, std::uint8_t* bytes,
              SpareByte spare = asItIs)
{
    const auto storeWords = [&](auto wordOf) {
        for (int x = 0; x < count; ++x)
        {
            const auto word = wordOf((std::bit_cast<std::uint32_t>(pixels[x]) & spare.kept) | spare.added);
            std::memcpy(bytes + static_cast<std::size_t>(x) * sizeof word, &word, sizeof word);
        }
    };
    switch (storage)
    {
    case standin::Storage::GWorld32:
        return storeWords([](std::uint32_t rgba) { return rgba << 8U | rgba >> 24U; });
    case standin::Storage::Bitmap:
        return storeWords([](std::uint32_t rgba) {
            return (rgba & 0xFF00FF00U) | (rgba >> 16U & 0xFFU) | (rgba & 0xFFU) << 16U;
        });
    case standin::Storage::GWorld24:
        for (int x = 0; x < count; ++x)
        {
            *bytes++ = pixels[x].red;
            *bytes++ = pixels[x].green;
            *bytes++ = pixels[x].blue;
        }
        return;
    default:
        FAIL() << "no picture of every colour in " << nameOf(storage);
    }
}

} // namespace

int spreadOf(reference::Pixel pixel)
{
    return std::max({pixel.red, pixel.green, pixel.blue}) - std::min({pixel.red, pixel.green, pixel.blue});
}

reference::Picture colourBand(Order order, int top, int rows)
{
    reference::Picture band(colourColumns, rows);
    reference::Pixel* pixel = band.pixels.data();
    for (int y = top; y < top + rows; ++y)
        for (int x = 0; x < colourColumns; ++x)
            *pixel++ = colourAt(order, x, y);
    return band;
}

reference::Picture isolatedColours(const reference::Picture& band, int parity)
{
    reference::Picture isolated(band.width, band.height);
    for (int y = 0; y < band.height; ++y)
        for (int x = 0; x < band.width; ++x)
        {
            const reference::Pixel pixel = band.at(x, y);
            isolated.at(x, y) = (x + y) % 2 == parity
                                    ? pixel
                                    : reference::Pixel{pixel.green, pixel.green, pixel.green, pixel.alpha};
        }
    return isolated;
}

reference::Picture maskOfIsolated(const reference::Picture& isolated)
{
    return reference::mapped(isolated, [](reference::Pixel pixel) {
        const bool grey = pixel.red == pixel.green && pixel.green == pixel.blue;
        return reference::pixelOf(grey ? 0xFFFFFF : 0);
    });
}

standin::Picture everyColour(standin::Host& host, standin::Storage storage, Order order,
                             const std::function<reference::Picture(const reference::Picture& band)>& change)
{
    standin::Picture picture = host.newPicture(colourColumns, colourRows, storage);
    for (int top = 0; top < colourRows; top += bandRows)
    {
        reference::Picture band = colourBand(order, top, bandRows);
        if (change)
            band = change(band);
        for (int y = 0; y < bandRows; ++y)
            storeRow(storage, &band.at(0, y), colourColumns, picture.row(top + y));
    }
    return picture;
}

std::string packedColours(Order order)
{
    std::string packed(static_cast<std::size_t>(colourColumns) * colourRows * 3, '\0');
    char* next = packed.data();
    for (int y = 0; y < colourRows; ++y)
        for (int x = 0; x < colourColumns; ++x)
        {
            const reference::Pixel pixel = colourAt(order, x, y);
            for (const std::uint8_t channel : {pixel.red, pixel.green, pixel.blue})
                *next++ = static_cast<char>(channel);
        }
    return packed;
}

reference::Picture mappedColours(const ColourMap& map, Pairs pairs)
{
    reference::Picture result(colourColumns, colourRows);
    reference::Pixel* next = result.pixels.data();
    const reference::Picture none;
    for (int top = 0; top < colourRows; top += bandRows)
    {
        const reference::Picture band =
            map(colourBand(Order::First, top, bandRows),
                pairs == Pairs::Needed ? colourBand(Order::Second, top, bandRows) : none);
        next = std::copy(band.pixels.begin(), band.pixels.end(), next);
    }
    return result;
}

std::string differenceFrom(const reference::Picture& wanted, standin::Picture& got)
{
    if (got.isNil())
        return "nil";
    if (got.width() != wanted.width || got.height() != wanted.height)
        return sizeText(got.width(), got.height());
    std::string text;
    int wrongRows = 0;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(wanted.width * got.bytesPerPixel()));
    for (int y = 0; y < wanted.height; ++y)
    {
        storeRow(got.storage(), &wanted.at(0, y), wanted.width, bytes.data(), opaqueIn(got.storage()));
        if (std::memcmp(bytes.data(), got.row(y), bytes.size()) != 0 && ++wrongRows == 1)
        {
            const auto wrong = std::mismatch(bytes.begin(), bytes.end(), got.row(y)).first - bytes.begin();
            const int x = static_cast<int>(wrong) / got.bytesPerPixel();
            const standin::Pixel pixel = got.pixel(x, y);
            text = pixelText(colourAt(Order::First, x, y)) + " at (" + std::to_string(x) + ", " +
                   std::to_string(y) + "): wanted " + pixelText(wanted.at(x, y)) + ", got " +
                   pixelText({pixel.red, pixel.green, pixel.blue, pixel.alpha});
        }
        std::memset(got.row(y), reference::untouchedByte, bytes.size());
    }
    return text.empty() ? "" : text + "; wrong rows: " + std::to_string(wrongRows);
}

std::string differenceFromAssignedMask(const standin::Picture& got, bool swap)
{
    std::vector<reference::Pixel> pixels(colourColumns);
    std::vector<std::uint8_t> bytes(pixels.size() * static_cast<std::size_t>(got.bytesPerPixel()));
    for (int y = 0; y < colourRows; ++y)
    {
        for (int x = 0; x < colourColumns; ++x)
            pixels[static_cast<std::size_t>(x)] = colourAt(Order::First, x, y);
        storeRow(got.storage(), pixels.data(), colourColumns, bytes.data());
        // Four bytes a pixel, whatever the format, up to the end of the row.
        for (std::size_t at = 0; at < bytes.size(); at += 4)
        {
            const std::uint8_t red = colourAt(Order::Second, static_cast<int>(at / 4), y).red;
            bytes[at] = swap ? static_cast<std::uint8_t>(255 - red) : red;
        }
        if (std::memcmp(bytes.data(), got.row(y), bytes.size()) != 0)
            return "in row " + std::to_string(y);
    }
    return "";
}

std::vector<reference::Pixel> coloursOfSpread(std::int64_t lowest, std::int64_t highest)
{
    std::vector<reference::Pixel> colours;
    for (int y = 0; y < colourRows; ++y)
        for (int x = 0; x < colourColumns; ++x)
        {
            const reference::Pixel pixel = colourAt(Order::First, x, y);
            if (const int spread = spreadOf(pixel); lowest <= spread && spread <= highest)
                colours.push_back(pixel);
        }
    return colours;
}

standin::Picture pictureOfColours(standin::Host& host, standin::Storage storage,
                                  std::span<const reference::Pixel> pixels, int columns)
{
    const int count = static_cast<int>(pixels.size());
    standin::Picture picture = host.newPicture(columns, (count + columns - 1) / columns, storage);
    std::vector<reference::Pixel> row(static_cast<std::size_t>(columns), pixels.back());
    for (int y = 0; y < picture.height(); ++y)
    {
        const int filled = std::min(columns, count - y * columns);
        std::copy_n(pixels.begin() + y * columns, filled, row.begin());
        std::fill(row.begin() + filled, row.end(), pixels.back());
        storeRow(storage, row.data(), columns, picture.row(y));
    }
    return picture;
}
