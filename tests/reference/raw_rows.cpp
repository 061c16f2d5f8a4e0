#include "tests/reference/raw_rows.h"

#include <algorithm>

namespace reference
{

namespace
{

int farEdge(int start, int length, int limit)
{
    if (length < 0)
        length = limit;
    return static_cast<int>(std::min<std::int64_t>(static_cast<std::int64_t>(start) + length, limit));
}

} // namespace

Area clipped(const Rectangle& rectangle, int pictureWidth, int pictureHeight)
{
    return {std::max(rectangle.left, 0), std::max(rectangle.top, 0),
            farEdge(rectangle.left, rectangle.width, pictureWidth),
            farEdge(rectangle.top, rectangle.height, pictureHeight)};
}

RawRows::RawRows(const Picture& picture, int pixelBytes)
    : width(picture.width),
      height(picture.height),
      bytesPerPixel(pixelBytes),
      rowLength(width * pixelBytes),
      bytes(static_cast<std::size_t>(rowLength) * static_cast<std::size_t>(height))
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            store(y, x * bytesPerPixel, picture.at(x, y));
}

std::size_t RawRows::index(int y, int offset) const
{
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(rowLength) +
           static_cast<std::size_t>(offset);
}

std::optional<Pixel> RawRows::load(int y, int offset) const
{
    if (!contains(offset))
        return std::nullopt;
    const std::uint8_t* at = &bytes[index(y, offset)];
    return Pixel{at[0], at[1], at[2], bytesPerPixel == 4 ? at[3] : std::uint8_t{255}};
}

void RawRows::store(int y, int offset, Pixel pixel)
{
    const std::uint8_t channels[] = {pixel.red, pixel.green, pixel.blue, pixel.alpha};
    if (contains(offset))
        std::copy_n(channels, bytesPerPixel, &bytes[index(y, offset)]);
}

Picture RawRows::picture() const
{
    Picture result(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            result.at(x, y) = *load(y, x * bytesPerPixel);
    return result;
}

} // namespace reference
