#include "tests/reference/saturation.h"

#include "tests/reference/arithmetic.h"

namespace reference
{

Picture saturation(const Picture& source, std::int32_t amount)
{
    const std::int32_t factor = wrapped(static_cast<std::int64_t>(amount) + 255);
    return mapped(source, [factor](Pixel pixel) {
        const int grey = (pixel.blue + pixel.red + 2 * pixel.green) >> 2;
        const auto pushed = [&](int c) {
            return clampedByte(grey + wrapped(static_cast<std::int64_t>(c - grey) * factor) / 255);
        };
        return Pixel{pushed(pixel.red), pushed(pixel.green), pushed(pixel.blue)};
    });
}

} // namespace reference
