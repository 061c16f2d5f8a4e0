#include "globals/waveform.h"

#include "editor/walks.h"
#include "globals/sample_sums.h"
#include "globals/wu_line.h"
#include "runtime/exceptions.h"
#include "runtime/memory_blocks.h"
#include "system/heap_array.h"

namespace qvr::waveform
{

namespace
{

constexpr int32_t defaultRows = 500;

/// A sample format as the argument `bits` names it.
struct BitsFormat
{
    int32_t bits;
    SampleFormat format;
    int32_t bytes;
    double fullScale;
};

constexpr BitsFormat bitsFormats[] = {
    {7, SampleFormat::Signed8, 1, 127.0},
    {8, SampleFormat::Unsigned8, 1, 127.0},
    {15, SampleFormat::Signed16, 2, 32767.0},
    {16, SampleFormat::Unsigned16, 2, 32767.0},
};

const BitsFormat* formatOf(int32_t bits)
{
    for (const BitsFormat& format : bitsFormats)
        if (format.bits == bits)
            return &format;
    return nullptr;
}

/// The columns' values: twice the means of the samples' negative and positive parts, then smoothed and
/// scaled.
class Columns
{
public:
    explicit Columns(int32_t columnCount) : count(columnCount), negative(columnCount), positive(columnCount)
    {
    }

    explicit operator bool() const
    {
        return negative && positive;
    }

    /// Fills every column from its share of the samples; the largest magnitude is the result.
    double measure(const uint8_t* samples, int32_t sampleCount, SampleFormat format)
    {
        double peak = 0.0;
        for (int32_t x = 0; x < count; ++x)
        {
            // Divided first, then multiplied: the rounding decides which column a sample belongs to.
            const auto start = static_cast<int32_t>(static_cast<double>(x) / count * sampleCount);
            const auto end = static_cast<int32_t>((static_cast<double>(x) + 1.0) / count * sampleCount);
            if (end <= start)
            {
                negative[x] = positive[x] = __builtin_nan("");
                continue;
            }
            const SampleSums sums = sumSamples(format, samples, start, end);
            const double half = (end - start) * 0.5;
            negative[x] = sums.negative / half;
            positive[x] = sums.positive / half;
            if (positive[x] > peak)
                peak = positive[x];
            if (-negative[x] > peak)
                peak = -negative[x];
        }
        return peak;
    }

    /// Exponential moving averages from the first column on.
    void smooth(double alpha, double beta)
    {
        double previousNegative = negative[0];
        double previousPositive = positive[0];
        for (int32_t x = 0; x < count; ++x)
        {
            negative[x] = previousNegative = previousNegative * beta + negative[x] * alpha;
            positive[x] = previousPositive = previousPositive * beta + positive[x] * alpha;
        }
    }

    void scale(int32_t rows, double range)
    {
        for (int32_t x = 0; x < count; ++x)
        {
            negative[x] = negative[x] * rows / range;
            positive[x] = positive[x] * rows / range;
        }
    }

    /// Where a column's bars end, which may be outside the picture.
    int32_t negativeEnd(int32_t x, int32_t centre) const
    {
        return truncateToInt32(negative[x] + centre);
    }
    int32_t positiveEnd(int32_t x, int32_t centre) const
    {
        return truncateToInt32(positive[x] + centre);
    }

    const int32_t count;

private:
    HeapArray<double> negative;
    HeapArray<double> positive;
};

/// The rows that a column's two bars cover. They meet in the centre row, so they are one stretch.
class Bars
{
public:
    Bars(const Columns& columns, int32_t centre)
        : columnCount(columns.count),
          first(columns.count + spareColumns),
          last(columns.count + spareColumns)
    {
        if (!*this)
            return;
        for (int32_t x = 0; x < columns.count; ++x)
        {
            const int32_t negativeEnd = columns.negativeEnd(x, centre);
            const int32_t positiveEnd = columns.positiveEnd(x, centre);
            first[x] = minimum(centre, minimum(negativeEnd, positiveEnd));
            last[x] = maximum(centre, maximum(negativeEnd, positiveEnd));
        }
    }

    explicit operator bool() const
    {
        return first && last;
    }

    void draw(const PictureWriter& writer, int32_t rows, uint32_t backColour, uint32_t foreColour) const
    {
        drawPicture(writer, columnCount, rows, [=, this](auto pixels, int32_t row, int32_t column) {
            using Rows = decltype(pixels.red());
            const auto firstRows = loadFrom<Rows>(first.get() + column);
            const auto lastRows = loadFrom<Rows>(last.get() + column);
            return select((firstRows <= row) & (lastRows >= row), pixels.withColour(foreColour),
                          pixels.withColour(backColour));
        });
    }

private:
    /// A vector of columns may reach past the last one.
    static constexpr int32_t spareColumns = WideLanes::count;

    int32_t columnCount;
    HeapArray<int32_t> first;
    HeapArray<int32_t> last;
};

/// Calls `line(fromX, fromY, toX, toY)` along the ends of the negative and the positive bars by turns, from
/// the centre.
template <class Line>
void traceOutline(const Columns& columns, int32_t centre, const Line& line)
{
    int32_t previousX = 0;
    int32_t previousNegative = centre;
    int32_t previousPositive = centre;
    for (int32_t x = 0; x < columns.count; ++x)
    {
        const int32_t negativeEnd = columns.negativeEnd(x, centre);
        const int32_t positiveEnd = columns.positiveEnd(x, centre);
        line(previousX, previousNegative, x, negativeEnd);
        line(previousX, previousPositive, x, positiveEnd);
        previousX = x;
        previousNegative = negativeEnd;
        previousPositive = positiveEnd;
    }
}

/// The outline in the host's own lines.
void drawWideOutline(REALpictureStruct* picture, const Columns& columns, int32_t centre, uint32_t colour,
                     int32_t penWidth)
{
    const Reference<REALgraphicsStruct> graphics{host.pluginPictureGraphicsGetter(picture)};
    if (!graphics)
        return;
    host.REALSetPropValueUInt32(graphics.get(), "ForeColor", colour);
    host.REALSetPropValueInt(graphics.get(), "PenHeight", penWidth);
    host.REALSetPropValueInt(graphics.get(), "PenWidth", penWidth);
    const int32_t half = penWidth / 2;
    traceOutline(columns, centre, [&](int32_t fromX, int32_t fromY, int32_t toX, int32_t toY) {
        host.RuntimeGraphicsDrawLine(graphics.get(), wrappingSubtract(fromX, half),
                                     wrappingSubtract(fromY, half), wrappingSubtract(toX, half),
                                     wrappingSubtract(toY, half));
    });
}

} // namespace

REALpictureStruct* RenderSamples(REALmemoryBlockStruct* samples, int32_t sampleCount, int32_t smooth,
                                 int32_t width, int32_t height, int32_t outlineWidth, uint32_t backColour,
                                 uint32_t foreColour, uint32_t outlineColour, int32_t bits,
                                 signed char autoScale)
{
    if (samples == nullptr)
    {
        raiseNilObjectException("memoryblock is nil");
        return nullptr;
    }
    gOutLineColorR = static_cast<int32_t>(redOf(outlineColour));
    gOutLineColorG = static_cast<int32_t>(greenOf(outlineColour));
    gOutLineColorB = static_cast<int32_t>(blueOf(outlineColour));

    const BitsFormat* const format = formatOf(bits);
    if (format == nullptr)
        return nullptr;
    const BlockSize blockSize(samples);
    const int32_t count = sampleCount < 1 ? blockSize.bytes() / format->bytes : sampleCount;
    if (!blockSize.isUnknown() && !blockSize.holds(static_cast<int64_t>(count) * format->bytes))
        return nullptr;
    const int32_t columnCount = width < 1 ? count : width;
    const int32_t rows = height < 1 ? defaultRows : height;
    const auto* data = static_cast<const uint8_t*>(host.REALMemoryBlockGetPtr(samples));
    if (data == nullptr || columnCount < 1 || columnCount > longestPictureSide || rows > longestPictureSide)
        return nullptr;

    Columns columns(columnCount);
    if (!columns)
        return nullptr;
    const double peak = columns.measure(data, count, format->format);
    double range = autoScale != 0 ? 2.0 * peak : format->fullScale;
    const double alpha = 2.0 / wrappingAdd(smooth, 1);
    const double beta = 1.0 - alpha;
    if (alpha > 0.0)
    {
        columns.smooth(alpha, beta);
        // The range takes the same step with itself; kept as it is.
        range = alpha * range + beta * range;
    }
    columns.scale(rows, range);

    const int32_t centre = rows / 2;
    const Bars bars(columns, centre);
    PictureWriter writer;
    if (!bars || !writer.openNew(columnCount, rows))
        return nullptr;
    bars.draw(writer, rows, backColour, foreColour);
    if (outlineWidth == 1)
        traceOutline(columns, centre, [&writer](int32_t fromX, int32_t fromY, int32_t toX, int32_t toY) {
            DrawWuLine(writer, fromX, fromY, toX, toY);
        });
    REALpictureStruct* const picture = writer.RenderPictureWriter();
    if (outlineWidth > 1 && picture != nullptr)
        drawWideOutline(picture, columns, centre, outlineColour, outlineWidth);
    return picture;
}

} // namespace qvr::waveform
