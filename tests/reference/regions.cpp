#include "tests/reference/regions.h"

#include <cstdlib>

namespace reference
{

namespace
{

template <class Passes>
bool allPass(const Picture& source, Rectangle rectangle, int sourceBytes, Passes passes)
{
    const RawRows rows(source, sourceBytes);
    const Area area = clipped(rectangle, source.width, source.height);
    for (int y = area.top; y < area.bottom; ++y)
        for (int i = 0; i < area.columns(); ++i)
        {
            const std::optional<Pixel> pixel = rows.load(y, area.left * 4 + i * sourceBytes);
            if (pixel && !passes(*pixel))
                return false;
        }
    return true;
}

} // namespace

bool isBlack(const Picture& source, Rectangle rectangle, int sourceBytes)
{
    return allPass(source, rectangle, sourceBytes, [](Pixel pixel) { return colourOf(pixel) == 0; });
}

bool isWhite(const Picture& source, Rectangle rectangle, int sourceBytes)
{
    return allPass(source, rectangle, sourceBytes, [](Pixel pixel) { return colourOf(pixel) == 0xFFFFFF; });
}

bool isGray(const Picture& source, std::int32_t tolerance, Rectangle rectangle, int sourceBytes)
{
    const std::int64_t most = std::llabs(tolerance);
    return allPass(source, rectangle, sourceBytes, [most](Pixel pixel) {
        return std::abs(pixel.red - pixel.green) <= most && std::abs(pixel.red - pixel.blue) <= most &&
               std::abs(pixel.green - pixel.blue) <= most;
    });
}

double colorness(const Picture& source, std::int32_t threshold)
{
    const std::int64_t above = threshold;
    int count = 0;
    for (const Pixel& pixel : source.pixels)
    {
        if (pixel.red <= 29 && pixel.green <= 29 && pixel.blue <= 29)
            continue;
        const int fromBlue = pixel.green - pixel.blue;
        const int fromRed = pixel.green - pixel.red;
        if (fromBlue > above || fromRed > above || fromBlue < -above || fromRed < -above)
            ++count;
    }
    return static_cast<double>(count) / (source.width * source.height);
}

} // namespace reference
