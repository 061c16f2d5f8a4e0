#include "globals/wu_line.h"

#include "editor/pixels.h"

namespace qvr::waveform
{

int32_t gOutLineColorR = 0;
int32_t gOutLineColorG = 0;
int32_t gOutLineColorB = 0;

namespace
{

constexpr int32_t fullWeight = 255;

/// The position after one step, or the difference, as the low 16 bits with their sign.
int16_t low16(int32_t value)
{
    return static_cast<int16_t>(value);
}

/// The error accumulator's share of one step: `part / whole` in 65536ths.
uint16_t stepError(int32_t part, int32_t whole)
{
    return static_cast<uint16_t>((static_cast<uint32_t>(part) << 16) / static_cast<uint32_t>(whole));
}

} // namespace

void DrawPixel(PictureWriter& writer, int32_t x, int32_t y, int32_t weight)
{
    if (x < 0 || y < 0 || x >= writer.width || y >= writer.height)
        return;
    const auto blend = [weight](uint32_t before, int32_t line) {
        return static_cast<uint32_t>((static_cast<int32_t>(before) * weight + line * (fullWeight - weight)) /
                                     255);
    };
    const uint32_t before = colourAt(writer, x, y);
    // The pixel's green and blue deliberately change places.
    setColourAt(writer, x, y,
                blend(redOf(before), gOutLineColorR) << 16 | blend(blueOf(before), gOutLineColorG) << 8 |
                    blend(greenOf(before), gOutLineColorB));
}

void DrawWuLine(PictureWriter& writer, int32_t x0, int32_t y0, int32_t x1, int32_t y1)
{
    if (y0 > y1)
    {
        const int32_t endX = low16(x0);
        const int32_t endY = low16(y0);
        x0 = x1;
        y0 = y1;
        x1 = endX;
        y1 = endY;
    }
    DrawPixel(writer, x0, y0, 0);

    const int16_t width = low16(wrappingSubtract(x1, x0));
    const int32_t direction = width < 0 ? -1 : 1;
    const int32_t dx = low16(width * direction);
    const int32_t dy = low16(wrappingSubtract(y1, y0));
    int32_t x = x0;
    int32_t y = y0;

    if (dx == 0 || dy == 0 || dx == dy)
    {
        const int32_t stepX = dx == 0 && dy != 0 ? 0 : direction;
        const int32_t stepY = dy == 0 ? 0 : 1;
        for (int32_t steps = dy == 0 ? dx : dy; steps > 0; --steps)
        {
            x = wrappingAdd(x, stepX);
            y = wrappingAdd(y, stepY);
            DrawPixel(writer, x, y, 0);
        }
        return;
    }

    const bool steep = dy > dx;
    const uint16_t error = steep ? stepError(dx, dy) : stepError(dy, dx);
    uint16_t accumulated = 0;
    for (int32_t steps = (steep ? dy : dx) - 1; steps > 0; --steps)
    {
        const uint16_t before = accumulated;
        accumulated = static_cast<uint16_t>(accumulated + error);
        const bool carried = accumulated <= before;
        x = wrappingAdd(x, steep && !carried ? 0 : direction);
        y = wrappingAdd(y, steep || carried ? 1 : 0);
        const int32_t weight = accumulated >> 8;
        DrawPixel(writer, x, y, weight);
        DrawPixel(writer, wrappingAdd(x, steep ? direction : 0), wrappingAdd(y, steep ? 0 : 1),
                  weight ^ fullWeight);
    }
    DrawPixel(writer, x1, y1, 0);
}

} // namespace qvr::waveform
