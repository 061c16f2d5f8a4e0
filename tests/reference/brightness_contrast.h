#pragma once

#include "tests/reference/picture.h"

namespace reference
{

/// One value for each channel.
struct Channels
{
    double red = 0;
    double green = 0;
    double blue = 0;
};

/// The same value for all three.
constexpr Channels allChannels(double value)
{
    return {value, value, value};
}

Picture contrastLinearBrightness(const Picture& source, Channels contrast, Channels brightness);
Picture contrastAbsoluteBrightness(const Picture& source, Channels contrast, Channels brightness);
Picture absoluteBrightness(const Picture& source, Channels brightness);
/// Not clamped: the low 8 bits are kept.
Picture linearBrightness(const Picture& source, Channels brightness);
Picture contrast(const Picture& source, Channels contrast);
/// c * a + b.
Picture custom(const Picture& source, double a, double b);

} // namespace reference
