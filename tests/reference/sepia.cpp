#include "tests/reference/sepia.h"

#include "tests/reference/arithmetic.h"

#include <algorithm>

namespace reference
{

Picture sepia(const Picture& source, const SepiaSettings& settings, Picture result)
{
    // 32-bit sums wrap around; unsigned numbers do so by themselves.
    const auto redWeight = static_cast<std::uint32_t>(truncated(settings.redWeight * 1024.0));
    const auto greenWeight = static_cast<std::uint32_t>(truncated(settings.greenWeight * 1024.0));
    const auto blueWeight = static_cast<std::uint32_t>(truncated(settings.blueWeight * 1024.0));
    const FilterBlock block = filterBlock(settings.rectangle, source.width, source.height);
    for (int y = 0; y < block.rows; ++y)
        for (int x = 0; x < block.columns; ++x)
        {
            const Pixel& pixel = source.at(x, y);
            const std::uint32_t sum =
                pixel.blue * blueWeight + pixel.green * greenWeight + pixel.red * redWeight;
            const std::int32_t grey = static_cast<std::int32_t>(sum) / 1024;
            const auto toned = [grey](int offset) {
                const auto level = static_cast<std::int32_t>(static_cast<std::uint32_t>(grey) +
                                                             static_cast<std::uint32_t>(offset));
                return static_cast<std::uint8_t>(std::clamp(level, 0, 255));
            };
            result.at(x, y) = {toned(settings.sepiaRed), toned(settings.sepiaGreen),
                               toned(settings.sepiaBlue)};
        }
    return result;
}

} // namespace reference
