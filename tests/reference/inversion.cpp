#include "tests/reference/inversion.h"

namespace reference
{

namespace
{

template <class Formula>
Picture mapRectangle(const Picture& source, Rectangle rectangle, int sourceBytes, int resultBytes,
                     Formula formula)
{
    const RawRows from(source, sourceBytes);
    RawRows to(Picture(source.width, source.height, untouched), resultBytes);
    const Area area = clipped(rectangle, source.width, source.height);
    for (int y = area.top; y < area.bottom; ++y)
        for (int i = 0; i < area.columns(); ++i)
        {
            const std::optional<Pixel> pixel = from.load(y, area.left * 4 + i * sourceBytes);
            if (pixel)
                to.store(y, area.left * 4 + i * resultBytes, formula(*pixel));
        }
    return to.picture();
}

Pixel inverted(Pixel pixel)
{
    return {static_cast<std::uint8_t>(255 - pixel.red), static_cast<std::uint8_t>(255 - pixel.green),
            static_cast<std::uint8_t>(255 - pixel.blue)};
}

} // namespace

Picture invert(const Picture& source, Rectangle rectangle, int sourceBytes, int resultBytes)
{
    if (rectangle.width <= 0)
        rectangle.width = source.width;
    if (rectangle.height <= 0)
        rectangle.height = source.height;
    return mapRectangle(source, rectangle, sourceBytes, resultBytes, inverted);
}

Picture invertGray(const Picture& source, Rectangle rectangle, int sourceBytes, int resultBytes)
{
    return mapRectangle(source, rectangle, sourceBytes, resultBytes, [](Pixel pixel) {
        if (pixel.red == pixel.green && pixel.green == pixel.blue)
            return inverted(pixel);
        return Pixel{pixel.red, pixel.green, pixel.blue};
    });
}

} // namespace reference
