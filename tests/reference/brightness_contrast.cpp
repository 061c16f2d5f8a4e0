#include "tests/reference/brightness_contrast.h"

#include "tests/reference/arithmetic.h"

namespace reference
{

namespace
{

/// The formula gets a channel 0..255 and its parameters; `finish` turns the double into the byte.
template <class Formula, class Finish>
Picture mapChannels(const Picture& source, Channels k, Channels m, Formula formula, Finish finish)
{
    return mapped(source, [&](Pixel pixel) {
        return Pixel{finish(truncated(formula(pixel.red, k.red, m.red))),
                     finish(truncated(formula(pixel.green, k.green, m.green))),
                     finish(truncated(formula(pixel.blue, k.blue, m.blue)))};
    });
}

double scale(double m)
{
    return 0.0 > m ? (m + 255.0) / 255.0 : (255.0 - m) / 255.0;
}

double offset(double m)
{
    return 0.0 > m ? 0.0 : m;
}

double spread(int c, double k)
{
    return (c - 127) * (k + 1.0) + 127.0;
}

} // namespace

Picture contrastLinearBrightness(const Picture& source, Channels contrast, Channels brightness)
{
    return mapChannels(
        source, contrast, brightness,
        [](int c, double k, double m) { return spread(c, k) * scale(m) + offset(m); }, clampedByte);
}

Picture contrastAbsoluteBrightness(const Picture& source, Channels contrast, Channels brightness)
{
    return mapChannels(
        source, contrast, brightness, [](int c, double k, double m) { return spread(c, k) + m; },
        clampedByte);
}

Picture absoluteBrightness(const Picture& source, Channels brightness)
{
    return mapChannels(
        source, {}, brightness, [](int c, double, double m) { return c + m; }, clampedByte);
}

Picture linearBrightness(const Picture& source, Channels brightness)
{
    return mapChannels(
        source, {}, brightness, [](int c, double, double m) { return c * scale(m) + offset(m); }, lowByte);
}

Picture contrast(const Picture& source, Channels contrast)
{
    return mapChannels(
        source, contrast, {}, [](int c, double k, double) { return spread(c, k); }, clampedByte);
}

Picture custom(const Picture& source, double a, double b)
{
    return mapChannels(
        source, allChannels(a), allChannels(b), [](int c, double k, double m) { return c * k + m; },
        clampedByte);
}

} // namespace reference
