#include "tests/reference/waveform.h"

#include "tests/reference/arithmetic.h"

#include <algorithm>
#include <limits>

namespace reference
{

namespace
{

constexpr int longestSide = 32767;

struct Colour
{
    explicit Colour(std::uint32_t colour)
        : red(static_cast<int>(colour >> 16 & 255)),
          green(static_cast<int>(colour >> 8 & 255)),
          blue(static_cast<int>(colour & 255))
    {
    }

    Pixel pixel() const
    {
        return {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                static_cast<std::uint8_t>(blue)};
    }

    int red;
    int green;
    int blue;
};

int wrappingAdd(int a, int b)
{
    return static_cast<int>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

int wrappingSubtract(int a, int b)
{
    return static_cast<int>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

int sixteenBits(int value)
{
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
}

/// Wu's line with a 16-bit error accumulator; lengths are reduced to 16 bits too.
class OutlinePen
{
public:
    OutlinePen(Picture& target, Colour outline) : picture(target), colour(outline)
    {
    }

    void line(int x0, int y0, int x1, int y1)
    {
        if (y0 > y1)
        {
            const int oldX0 = x0;
            const int oldY0 = y0;
            x0 = x1;
            y0 = y1;
            x1 = sixteenBits(oldX0);
            y1 = sixteenBits(oldY0);
        }
        blend(x0, y0, 0);
        int dx = sixteenBits(wrappingSubtract(x1, x0));
        const int direction = dx < 0 ? -1 : 1;
        if (dx < 0)
            dx = sixteenBits(-dx);
        const int dy = sixteenBits(wrappingSubtract(y1, y0));
        int x = x0;
        int y = y0;
        if (dy == 0)
        {
            for (int i = 0; i < dx; ++i)
            {
                x += direction;
                blend(x, y0, 0);
            }
            return;
        }
        if (dx == 0)
        {
            for (int i = 0; i < dy; ++i)
            {
                y = wrappingAdd(y, 1);
                blend(x0, y, 0);
            }
            return;
        }
        if (dx == dy)
        {
            for (int i = 0; i < dy; ++i)
            {
                x += direction;
                y = wrappingAdd(y, 1);
                blend(x, y, 0);
            }
            return;
        }
        std::uint16_t accumulator = 0;
        const bool steep = dy > dx;
        const auto longer = static_cast<std::uint32_t>(steep ? dy : dx);
        const auto shorter = static_cast<std::uint32_t>(steep ? dx : dy);
        const auto step = static_cast<std::uint16_t>((shorter << 16) / longer);
        const int steps = (steep ? dy : dx) - 1;
        for (int i = 0; i < steps; ++i)
        {
            const std::uint16_t old = accumulator;
            accumulator = static_cast<std::uint16_t>(accumulator + step);
            const bool overflown = accumulator <= old;
            const int weight = accumulator >> 8;
            if (steep)
            {
                if (overflown)
                    x += direction;
                y = wrappingAdd(y, 1);
                blend(x, y, weight);
                blend(x + direction, y, weight ^ 255);
            }
            else
            {
                if (overflown)
                    y = wrappingAdd(y, 1);
                x += direction;
                blend(x, y, weight);
                blend(x, wrappingAdd(y, 1), weight ^ 255);
            }
        }
        blend(x1, y1, 0);
    }

private:
    void blend(int x, int y, int weight)
    {
        if (x < 0 || y < 0 || x >= picture.width || y >= picture.height)
            return;
        const Pixel old = picture.at(x, y);
        const auto mixed = [weight](int before, int outline) {
            return static_cast<std::uint8_t>((before * weight + outline * (255 - weight)) / 255);
        };
        picture.at(x, y) = {mixed(old.red, colour.red), mixed(old.blue, colour.green),
                            mixed(old.green, colour.blue)};
    }

    Picture& picture;
    Colour colour;
};

int sampleAt(std::span<const std::uint8_t> samples, int index, int bits)
{
    const auto at = static_cast<std::size_t>(index);
    switch (bits)
    {
    case 7:
        return static_cast<std::int8_t>(samples[at]);
    case 8:
        return samples[at] - 128;
    default:
    {
        const auto word = static_cast<std::uint16_t>(samples[2 * at] | samples[2 * at + 1] << 8);
        return bits == 15 ? static_cast<std::int16_t>(word) : word - 32768;
    }
    }
}

void smoothen(std::vector<double>& values, double alpha, double beta)
{
    double previous = values.empty() ? 0.0 : values[0];
    for (double& value : values)
    {
        previous = previous * beta + value * alpha;
        value = previous;
    }
}

} // namespace

std::optional<Waveform> renderWaveform(std::span<const std::uint8_t> samples,
                                       const WaveformSettings& settings)
{
    const int bits = settings.bits;
    if (bits != 7 && bits != 8 && bits != 15 && bits != 16)
        return std::nullopt;
    const int bytesPerSample = bits <= 8 ? 1 : 2;
    const int available = static_cast<int>(samples.size()) / bytesPerSample;
    int count = settings.sampleCount;
    if (count < 1)
        count = available;
    else if (count > available)
        return std::nullopt;
    const int columns = settings.width >= 1 ? settings.width : count;
    const int rows = settings.height > 0 ? settings.height : 500;
    if (columns < 1 || columns > longestSide || rows > longestSide)
        return std::nullopt;

    const double alpha = 2.0 / wrappingAdd(settings.smooth, 1);
    const double beta = 1.0 - alpha;
    std::vector<double> negative(static_cast<std::size_t>(columns));
    std::vector<double> positive(static_cast<std::size_t>(columns));
    Waveform waveform;
    double peak = 0.0;
    double column = 0.0;
    for (std::size_t x = 0; x < negative.size(); ++x, column += 1.0)
    {
        const int start = truncated((column / columns) * count);
        const int end = truncated(((column + 1.0) / columns) * count);
        const int inColumn = end - start;
        if (inColumn > 0)
        {
            std::uint32_t positiveSum = 0;
            std::uint32_t negativeSum = 0;
            for (int i = start; i < end; ++i)
            {
                const int sample = sampleAt(samples, i, bits);
                (sample >= 0 ? positiveSum : negativeSum) += static_cast<std::uint32_t>(sample);
            }
            const double divisor = inColumn * 0.5;
            negative[x] = static_cast<std::int32_t>(negativeSum) / divisor;
            positive[x] = static_cast<std::int32_t>(positiveSum) / divisor;
        }
        else
        {
            ++waveform.emptyColumns;
            negative[x] = positive[x] = std::numeric_limits<double>::quiet_NaN();
        }
        if (positive[x] > peak)
            peak = positive[x];
        if (-negative[x] > peak)
            peak = -negative[x];
    }

    double range = settings.autoScale ? 2.0 * peak : bits <= 8 ? 127.0 : 32767.0;
    if (alpha > 0.0)
    {
        smoothen(negative, alpha, beta);
        smoothen(positive, alpha, beta);
        range = alpha * range + beta * range;
    }
    for (std::vector<double>* values : {&negative, &positive})
        for (double& value : *values)
            value = value * rows / range;

    Picture picture{columns, rows};
    const Pixel back = Colour{settings.backColour}.pixel();
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            picture.at(x, y) = back;

    const int centre = rows / 2;
    const Pixel fore = Colour{settings.foreColour}.pixel();
    const auto rowOf = [centre](const std::vector<double>& values, int x) {
        return truncated(values[static_cast<std::size_t>(x)] + centre);
    };
    for (int x = 0; x < columns; ++x)
        for (const std::vector<double>* values : {&negative, &positive})
        {
            const int end = rowOf(*values, x);
            const int low = std::clamp(std::min(centre, end), 0, rows - 1);
            const int high = std::clamp(std::max(centre, end), 0, rows - 1);
            for (int y = low; y <= high; ++y)
                picture.at(x, y) = fore;
        }

    OutlinePen pen{picture, Colour{settings.outlineColour}};
    const int half = settings.outlineWidth / 2;
    int previousX = 0;
    int previousNegative = centre;
    int previousPositive = centre;
    for (int x = 0; settings.outlineWidth >= 1 && x < columns; ++x)
    {
        const int negativeRow = rowOf(negative, x);
        const int positiveRow = rowOf(positive, x);
        const auto line = [&](int from, int to) {
            if (settings.outlineWidth == 1)
                pen.line(previousX, from, x, to);
            else
                waveform.lines.push_back({wrappingSubtract(previousX, half), wrappingSubtract(from, half),
                                          wrappingSubtract(x, half), wrappingSubtract(to, half)});
        };
        line(previousNegative, negativeRow);
        line(previousPositive, positiveRow);
        previousX = x;
        previousNegative = negativeRow;
        previousPositive = positiveRow;
    }
    waveform.picture = std::move(picture);
    return waveform;
}

} // namespace reference
