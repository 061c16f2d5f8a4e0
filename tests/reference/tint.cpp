#include "tests/reference/tint.h"

#include <algorithm>

namespace reference
{

namespace
{

double weight(std::uint32_t colour, int shift)
{
    return static_cast<double>(colour >> shift & 255) / 255.0;
}

std::uint8_t tinted(double grey, double weight)
{
    return static_cast<std::uint8_t>(std::min(static_cast<int>(grey * weight), 255));
}

} // namespace

Picture tint(const Picture& picture, std::uint32_t greyBase, std::uint32_t sepiaBase)
{
    const double greyRed = weight(greyBase, 16);
    const double greyGreen = weight(greyBase, 8);
    const double greyBlue = weight(greyBase, 0);
    Picture result{picture.width, picture.height};
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
        {
            const Pixel& pixel = picture.at(x, y);
            const double grey = (pixel.red * greyRed + pixel.green * greyGreen) + pixel.blue * greyBlue;
            result.at(x, y) = {tinted(grey, weight(sepiaBase, 16)), tinted(grey, weight(sepiaBase, 8)),
                               tinted(grey, weight(sepiaBase, 0))};
        }
    return result;
}

} // namespace reference
