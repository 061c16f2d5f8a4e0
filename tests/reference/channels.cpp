#include "tests/reference/channels.h"

#include <algorithm>

namespace reference
{

std::uint8_t& level(Pixel& pixel, Channel channel)
{
    switch (channel)
    {
    case Channel::Red:
        return pixel.red;
    case Channel::Green:
        return pixel.green;
    default:
        return pixel.blue;
    }
}

Picture replaceChannel(const Picture& self, const Picture& source, Channel channel)
{
    Picture result{self.width, self.height};
    for (int y = 0; y < self.height; ++y)
        for (int x = 0; x < self.width; ++x)
        {
            Pixel from = source.at(x, y);
            Pixel& pixel = result.at(x, y);
            pixel = self.at(x, y);
            level(pixel, channel) = level(from, channel);
            pixel.alpha = 255;
        }
    return result;
}

Picture combine(const Picture& red, const Picture& green, const Picture& blue)
{
    Picture result{red.width, red.height};
    for (int y = 0; y < red.height; ++y)
        for (int x = 0; x < red.width; ++x)
            result.at(x, y) = {red.at(x, y).red, green.at(x, y).green, blue.at(x, y).blue};
    return result;
}

Picture merge(const Picture& first, const Picture& second)
{
    Picture result{first.width, first.height};
    for (int y = 0; y < first.height; ++y)
        for (int x = 0; x < first.width; ++x)
        {
            const Pixel& a = first.at(x, y);
            const Pixel& b = second.at(x, y);
            result.at(x, y) = {std::max(a.red, b.red), std::max(a.green, b.green), std::max(a.blue, b.blue)};
        }
    return result;
}

} // namespace reference
