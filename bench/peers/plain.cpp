/// \file
/// What a good programmer's plain loops reach, without intrinsics, when the compiler may use all of the
/// processor. Pixels are words of A, R, G, B from the lowest byte up.
#include "peer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>

namespace peers
{

namespace
{

using Word = std::uint32_t;
using Words = std::vector<Word>;

constexpr Word opaque = 0xFF;
constexpr Word colorBits = 0xFFFFFF00;

Word red(Word pixel)
{
    return pixel >> 8 & 255;
}
Word green(Word pixel)
{
    return pixel >> 16 & 255;
}
Word blue(Word pixel)
{
    return pixel >> 24;
}
Word pixelOf(Word r, Word g, Word b)
{
    return opaque | r << 8 | g << 16 | b << 24;
}

/// The word of a colour &h00RRGGBB.
Word wordOf(Word colour)
{
    return __builtin_bswap32(colour & 0xFFFFFF) | opaque;
}

const Word* wordsOf(const Bytes& bytes)
{
    return reinterpret_cast<const Word*>(bytes.data());
}

/// `walk(out)` fills a picture of the task's size.
template <class Walk>
Way drawing(const std::string& name, const Task& task, Walk walk)
{
    const auto out = std::make_shared<Words>(task.pixels(), 1);
    return {name, [out, walk] { walk(out->data()); }, [out] { return bytesOf(*out); }};
}

/// A picture of `formula(pixel)`.
template <class Formula>
Way mapping(const std::string& name, const Task& task, Formula formula)
{
    const Word* in = wordsOf(task.inputs[0]);
    return drawing(name, task, [in, count = task.pixels(), formula](Word* out) {
        for (std::size_t i = 0; i < count; ++i)
            out[i] = formula(in[i]);
    });
}

/// Numbers that `measure()` finds out.
template <class Measure>
Way measuring(const std::string& name, Measure measure)
{
    const auto numbers = std::make_shared<decltype(measure())>();
    return {name, [numbers, measure] { *numbers = measure(); }, [numbers] { return bytesOf(*numbers); }};
}

std::int32_t clampToByte(std::int32_t value)
{
    return std::clamp(value, 0, 255);
}

std::vector<Way> invert(const Task& task)
{
    return {mapping("loop", task, [](Word pixel) { return (pixel ^ colorBits) | opaque; })};
}

std::vector<Way> linear(const Task& task)
{
    const std::array<std::array<double, 2>, 3> lines = task.settings["lines"];
    const auto level = [](Word channel, float scale, float offset) {
        return static_cast<Word>(static_cast<int>(
            std::clamp(static_cast<float>(static_cast<int>(channel)) * scale + offset, 0.0F, 255.0F)));
    };
    std::array<std::array<float, 2>, 3> single;
    for (std::size_t channel = 0; channel < 3; ++channel)
        single[channel] = {static_cast<float>(lines[channel][0]), static_cast<float>(lines[channel][1])};
    std::array<std::array<std::uint8_t, 256>, 3> tables;
    for (std::size_t channel = 0; channel < 3; ++channel)
        for (int value = 0; value < 256; ++value)
            tables[channel][static_cast<std::size_t>(value)] = static_cast<std::uint8_t>(
                std::clamp(value * lines[channel][0] + lines[channel][1], 0.0, 255.0));
    return {mapping("single precision", task,
                    [=](Word pixel) {
                        return pixelOf(level(red(pixel), single[0][0], single[0][1]),
                                       level(green(pixel), single[1][0], single[1][1]),
                                       level(blue(pixel), single[2][0], single[2][1]));
                    }),
            mapping("tables", task, [=](Word pixel) {
                return pixelOf(tables[0][red(pixel)], tables[1][green(pixel)], tables[2][blue(pixel)]);
            })};
}

std::vector<Way> saturation(const Task& task)
{
    const std::int32_t factor = task.settings["amount"].get<std::int32_t>() + 255;
    return {mapping("loop", task, [=](Word pixel) {
        const auto r = static_cast<std::int32_t>(red(pixel));
        const auto g = static_cast<std::int32_t>(green(pixel));
        const auto b = static_cast<std::int32_t>(blue(pixel));
        const std::int32_t grey = (b + r + 2 * g) >> 2;
        const auto level = [&](std::int32_t c) {
            return static_cast<Word>(clampToByte(grey + (c - grey) * factor / 255));
        };
        return pixelOf(level(r), level(g), level(b));
    })};
}

/// Whether all pixels pass, block by block so that the loop inside has no way out.
template <class Fails>
Way testing(const std::string& name, const Task& task, Fails fails)
{
    return measuring(name, [in = wordsOf(task.inputs[0]), count = task.pixels(), fails] {
        constexpr std::size_t block = 4096;
        for (std::size_t start = 0; start < count; start += block)
        {
            Word failed = 0;
            for (std::size_t i = start; i < std::min(start + block, count); ++i)
                failed |= fails(in[i]);
            if (failed != 0)
                return std::vector<std::int32_t>{0};
        }
        return std::vector<std::int32_t>{1};
    });
}

std::vector<Way> allBlack(const Task& task)
{
    return {testing("loop", task, [](Word pixel) { return pixel & colorBits; })};
}

std::vector<Way> allWhite(const Task& task)
{
    return {testing("loop", task, [](Word pixel) { return ~pixel & colorBits; })};
}

std::vector<Way> isGrey(const Task& task)
{
    const std::int32_t tolerance = task.settings["tolerance"];
    if (tolerance == 0)
        return {testing("loop", task, [](Word pixel) { return (pixel >> 8 ^ pixel >> 16) & 0xFFFF; })};
    return {testing("loop", task, [=](Word pixel) -> Word {
        const auto r = static_cast<std::int32_t>(red(pixel));
        const auto g = static_cast<std::int32_t>(green(pixel));
        const auto b = static_cast<std::int32_t>(blue(pixel));
        return std::max({r, g, b}) - std::min({r, g, b}) > tolerance;
    })};
}

std::vector<Way> countOneColor(const Task& task)
{
    const Word wanted = wordOf(task.settings["color"]) & colorBits;
    return {measuring("loop", [=, in = wordsOf(task.inputs[0]), count = task.pixels()] {
        std::uint32_t found = 0;
        for (std::size_t i = 0; i < count; ++i)
            found += (in[i] & colorBits) == wanted;
        return std::vector<std::uint32_t>{found};
    })};
}

std::vector<Way> replaceOneColor(const Task& task)
{
    const Word wanted = wordOf(task.settings["color"]);
    const Word replacement = wordOf(task.settings["replacement"]);
    return {mapping("loop", task,
                    [=](Word pixel) { return (pixel | opaque) == wanted ? replacement : pixel | opaque; })};
}

std::vector<Way> histograms(const Task& task)
{
    return {measuring("two sets of counters", [in = wordsOf(task.inputs[0]), count = task.pixels()] {
        std::vector<std::uint32_t> counters(3 * 256);
        std::vector<std::uint32_t> others(3 * 256);
        const auto add = [](std::vector<std::uint32_t>& set, Word pixel) {
            ++set[red(pixel)];
            ++set[256 + green(pixel)];
            ++set[512 + blue(pixel)];
        };
        for (std::size_t i = 0; i + 1 < count; i += 2)
        {
            add(counters, in[i]);
            add(others, in[i + 1]);
        }
        if (count % 2 != 0)
            add(counters, in[count - 1]);
        for (std::size_t i = 0; i < counters.size(); ++i)
            counters[i] += others[i];
        return counters;
    })};
}

std::vector<Way> tables(const Task& task)
{
    const std::uint8_t* table = task.inputs[1].data();
    return {mapping("loop", task, [table](Word pixel) {
        return pixelOf(table[red(pixel)], table[256 + green(pixel)], table[512 + blue(pixel)]);
    })};
}

std::vector<Way> replaceChannel(const Task& task)
{
    const Word replaced = 255U << 8 * task.settings["channel"].get<int>();
    return {drawing(
        "loop", task,
        [=, in = wordsOf(task.inputs[0]), other = wordsOf(task.inputs[1]), count = task.pixels()](Word* out) {
            for (std::size_t i = 0; i < count; ++i)
                out[i] = (in[i] & ~replaced) | (other[i] & replaced) | opaque;
        })};
}

std::vector<Way> combineChannels(const Task& task)
{
    return {drawing("loop", task,
                    [r = wordsOf(task.inputs[0]), g = wordsOf(task.inputs[1]), b = wordsOf(task.inputs[2]),
                     count = task.pixels()](Word* out) {
                        for (std::size_t i = 0; i < count; ++i)
                            out[i] = (r[i] & 0xFF00) | (g[i] & 0xFF0000) | (b[i] & 0xFF000000) | opaque;
                    })};
}

std::vector<Way> maximumOfTwo(const Task& task)
{
    return {drawing("loop", task,
                    [first = task.inputs[0].data(), second = task.inputs[1].data(),
                     count = task.inputs[0].size()](Word* out) {
                        auto* bytes = reinterpret_cast<std::uint8_t*>(out);
                        // Bytes could be anything's, these pointers too, unless they are local.
                        const std::uint8_t* a = first;
                        const std::uint8_t* b = second;
                        for (std::size_t i = 0, end = count; i < end; ++i)
                            bytes[i] = a[i] > b[i] ? a[i] : b[i];
                    })};
}

Word turned(const Task& task)
{
    return task.settings["swap"].get<bool>() ? 255 : 0;
}

std::vector<Way> alphaToGrey(const Task& task)
{
    return {mapping("loop", task, [turn = turned(task)](Word pixel) {
        return ((pixel & 255) ^ turn) * 0x01010100U | opaque;
    })};
}

std::vector<Way> greyToAlpha(const Task& task)
{
    // Writes the same alpha in every run.
    const auto picture =
        std::make_shared<Words>(wordsOf(task.inputs[0]), wordsOf(task.inputs[0]) + task.pixels());
    return {{"loop",
             [picture, mask = wordsOf(task.inputs[1]), turn = turned(task)] {
                 Word* out = picture->data();
                 for (std::size_t i = 0; i < picture->size(); ++i)
                     out[i] = (out[i] & colorBits) | (red(mask[i]) ^ turn);
             },
             [picture] { return bytesOf(*picture); }}};
}

/// A way that moves the pixels of a picture.
template <class Move>
Way moving(const std::string& name, const Task& task, Move move)
{
    const Word* in = wordsOf(task.inputs[0]);
    const auto picture = std::make_shared<Words>(in, in + task.pixels());
    return {name, [picture, move] { move(picture->data()); }, [picture] { return bytesOf(*picture); },
            [picture, in] { std::copy_n(in, picture->size(), picture->data()); }};
}

/// How far to rotate to the left or up so that everything moves by the task's delta to the right or down.
std::size_t rotationOf(const Task& task, int size)
{
    const int delta = task.settings["delta"];
    return static_cast<std::size_t>(((-delta) % size + size) % size);
}

std::vector<Way> rotateRows(const Task& task)
{
    const std::size_t first = rotationOf(task, task.height) * static_cast<std::size_t>(task.width);
    return {
        moving("std::rotate", task,
               [=, count = task.pixels()](Word* pixels) {
                   std::rotate(pixels, pixels + first, pixels + count);
               }),
        moving("memmove", task,
               [=, count = task.pixels(), rest = std::make_shared<Words>(task.pixels(), 1)](Word* pixels) {
                   const bool low = first <= count / 2;
                   Word* kept = rest->data();
                   const std::size_t others = count - first;
                   std::memcpy(kept, low ? pixels : pixels + first, 4 * (low ? first : others));
                   std::memmove(low ? pixels : pixels + others, low ? pixels + first : pixels,
                                4 * (low ? others : first));
                   std::memcpy(low ? pixels + others : pixels, kept, 4 * (low ? first : others));
               })};
}

std::vector<Way> rotateColumns(const Task& task)
{
    const std::size_t first = rotationOf(task, task.width);
    const auto width = static_cast<std::size_t>(task.width);
    return {moving("row by row through a copy", task,
                   [=, height = task.height, row = std::make_shared<Words>(width, 1)](Word* pixels) {
                       for (int y = 0; y < height; ++y, pixels += width)
                       {
                           std::memcpy(row->data(), pixels, 4 * width);
                           std::memcpy(pixels, row->data() + first, 4 * (width - first));
                           std::memcpy(pixels + width - first, row->data(), 4 * first);
                       }
                   }),
            moving("std::rotate", task, [=, height = task.height](Word* pixels) {
                for (int y = 0; y < height; ++y, pixels += width)
                    std::rotate(pixels, pixels + first, pixels + width);
            })};
}

std::vector<Way> find(const Task& task)
{
    const auto width = static_cast<std::size_t>(task.width);
    const std::size_t subWidth = task.settings["subWidth"];
    const std::size_t subHeight = task.settings["subHeight"];
    return {measuring(
        "memmem and check",
        [=, picture = wordsOf(task.inputs[0]), sub = wordsOf(task.inputs[1]),
         count = task.pixels()]() -> std::vector<std::int32_t> {
            const Word* const end = picture + count - (subHeight - 1) * width;
            for (const Word* from = picture; from < end;)
            {
                const void* hit = memmem(from, 4 * static_cast<std::size_t>(end - from), sub, 4 * subWidth);
                if (hit == nullptr)
                    break;
                const std::size_t place = static_cast<std::size_t>(static_cast<const char*>(hit) -
                                                                   reinterpret_cast<const char*>(picture)) /
                                          4;
                from = picture + place + 1;
                const auto fits = [&] {
                    if (place % width + subWidth > width)
                        return false;
                    for (std::size_t row = 0; row < subHeight; ++row)
                        if (std::memcmp(picture + place + row * width, sub + row * subWidth, 4 * subWidth) !=
                            0)
                            return false;
                    return true;
                };
                if (static_cast<const char*>(hit) == reinterpret_cast<const char*>(picture + place) && fits())
                    return {1, static_cast<std::int32_t>(place % width),
                            static_cast<std::int32_t>(place / width)};
            }
            return {0, 0, 0};
        })};
}

std::vector<Way> pack(const Task& task)
{
    const auto out = std::make_shared<Bytes>(3 * task.pixels(), 1);
    return {{"loop",
             [out, in = wordsOf(task.inputs[0]), count = task.pixels()] {
                 std::uint8_t* bytes = out->data();
                 const Word* pixels = in;
                 for (std::size_t i = 0, end = count; i < end; ++i)
                 {
                     bytes[3 * i] = static_cast<std::uint8_t>(red(pixels[i]));
                     bytes[3 * i + 1] = static_cast<std::uint8_t>(green(pixels[i]));
                     bytes[3 * i + 2] = static_cast<std::uint8_t>(blue(pixels[i]));
                 }
             },
             [out] { return *out; }}};
}

std::vector<Way> unpack(const Task& task)
{
    return {drawing("loop", task, [in = task.inputs[0].data(), count = task.pixels()](Word* out) {
        for (std::size_t i = 0; i < count; ++i)
            out[i] = pixelOf(in[3 * i], in[3 * i + 1], in[3 * i + 2]);
    })};
}

/// Rows of three weights and an offset.
using Matrix = std::array<std::array<double, 4>, 3>;

std::vector<Way> matrix(const Task& task)
{
    const Matrix exact = task.settings["matrix"];
    std::array<std::array<float, 4>, 3> rows;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 4; ++column)
            rows[row][column] = static_cast<float>(exact[row][column]);
    return {mapping("single precision", task, [rows](Word pixel) {
        const auto r = static_cast<float>(static_cast<int>(red(pixel)));
        const auto g = static_cast<float>(static_cast<int>(green(pixel)));
        const auto b = static_cast<float>(static_cast<int>(blue(pixel)));
        const auto level = [&](const std::array<float, 4>& row) {
            const float sum = row[0] * r + row[1] * g + row[2] * b + row[3];
            return static_cast<Word>(static_cast<int>(std::clamp(sum, 0.0F, 255.0F)));
        };
        return pixelOf(level(rows[0]), level(rows[1]), level(rows[2]));
    })};
}

std::vector<Way> sepia(const Task& task)
{
    const std::array<std::int32_t, 3> weights = task.settings["weights"];
    const std::array<std::int32_t, 3> offsets = task.settings["offsets"];
    return {mapping("integers", task, [=](Word pixel) {
        const std::int32_t grey = (static_cast<std::int32_t>(blue(pixel)) * weights[2] +
                                   static_cast<std::int32_t>(green(pixel)) * weights[1] +
                                   static_cast<std::int32_t>(red(pixel)) * weights[0]) /
                                  1024;
        return pixelOf(static_cast<Word>(clampToByte(grey + offsets[0])),
                       static_cast<Word>(clampToByte(grey + offsets[1])),
                       static_cast<Word>(clampToByte(grey + offsets[2])));
    })};
}

std::vector<Way> table3d(const Task& task)
{
    struct Node
    {
        float level[4];
    };
    constexpr std::size_t nodes = 16;
    const auto cube = std::make_shared<std::vector<Node>>(nodes * nodes * nodes);
    const auto* levels = reinterpret_cast<const double*>(task.inputs[1].data());
    for (std::size_t node = 0; node < cube->size(); ++node)
        for (std::size_t channel = 0; channel < 3; ++channel)
            (*cube)[node].level[channel] = static_cast<float>(levels[3 * node + channel]);
    return {mapping("tetrahedral, single precision", task, [cube, table = cube->data()](Word pixel) {
        struct Axis
        {
            float fraction;
            std::size_t step;
        };
        const auto axis = [](Word channel, std::size_t stride) {
            const Word node = channel / 17;
            return Axis{static_cast<float>(channel - 17 * node) / 17.0F, node < nodes - 1 ? stride : 0};
        };
        const Word r = red(pixel);
        const Word g = green(pixel);
        const Word b = blue(pixel);
        Axis axes[] = {axis(r, nodes * nodes), axis(g, nodes), axis(b, 1)};
        if (axes[0].fraction < axes[1].fraction)
            std::swap(axes[0], axes[1]);
        if (axes[1].fraction < axes[2].fraction)
            std::swap(axes[1], axes[2]);
        if (axes[0].fraction < axes[1].fraction)
            std::swap(axes[0], axes[1]);
        const Node* first = table + ((r / 17) * nodes + g / 17) * nodes + b / 17;
        const Node* second = first + axes[0].step;
        const Node* third = second + axes[1].step;
        const Node* fourth = third + axes[2].step;
        Word result[3];
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            const float sum = (1 - axes[0].fraction) * first->level[channel] +
                              (axes[0].fraction - axes[1].fraction) * second->level[channel] +
                              (axes[1].fraction - axes[2].fraction) * third->level[channel] +
                              axes[2].fraction * fourth->level[channel];
            result[channel] = static_cast<Word>(static_cast<int>(std::clamp(sum, 0.0F, 255.0F)));
        }
        return pixelOf(result[0], result[1], result[2]);
    })};
}

std::vector<Way> waveform(const Task& task)
{
    struct Sums
    {
        std::vector<std::int32_t> positive;
        std::vector<std::int32_t> negative;
    };
    const auto sums = std::make_shared<Sums>();
    return {{"sums, no picture",
             [sums, &task] {
                 *sums = {};
                 const std::uint8_t* samples = task.inputs[0].data();
                 for (int column = 0; column < task.width; ++column)
                 {
                     std::int32_t positive = 0;
                     std::int32_t all = 0;
                     const std::size_t start = columnStart(task, column);
                     const std::size_t end = columnStart(task, column + 1);
                     // So many samples fit into sums of 16 bits, of which more are added at a time.
                     constexpr std::size_t block = 256;
                     for (std::size_t from = start; from < end; from += block)
                     {
                         std::uint16_t blockPositive = 0;
                         std::uint16_t blockAll = 0;
                         for (std::size_t i = from; i < std::min(from + block, end); ++i)
                         {
                             const std::uint8_t sample = samples[i];
                             blockAll = static_cast<std::uint16_t>(blockAll + sample);
                             blockPositive = static_cast<std::uint16_t>(blockPositive +
                                                                        (sample > 128 ? sample - 128 : 0));
                         }
                         positive += blockPositive;
                         all += blockAll;
                     }
                     sums->positive.push_back(positive);
                     sums->negative.push_back(all - static_cast<std::int32_t>(end - start) * 128 - positive);
                 }
             },
             [sums, &task] { return waveformBars(task, sums->positive, sums->negative); }}};
}

/// Marks with a border of zeros, grown into rectangles one side after the other.
std::vector<Way> rectangles(const Task& task)
{
    const auto width = static_cast<std::size_t>(task.width);
    const auto height = static_cast<std::size_t>(task.height);
    const std::size_t stride = width + 2;
    const auto grid = std::make_shared<Bytes>(stride * (height + 2));
    return {drawing("grid of bytes", task, [=, in = wordsOf(task.inputs[0])](Word* out) {
        std::uint8_t* marks = grid->data();
        for (std::size_t y = 0; y < height; ++y)
        {
            const Word* row = in + y * width;
            std::uint8_t* cells = marks + (y + 1) * stride + 1;
            for (std::size_t x = 0; x < width; ++x)
                cells[x] = (row[x] >> 8 ^ row[x] >> 16) << 16 != 0;
        }
        std::fill_n(out, width * height, 0xFFFFFFFFU);
        const auto across = [&](std::size_t y, std::size_t left, std::size_t right) {
            return std::memchr(marks + y * stride + left, 1, right - left + 1) != nullptr;
        };
        const auto down = [&](std::size_t x, std::size_t top, std::size_t bottom) {
            for (std::size_t y = top; y <= bottom; ++y)
                if (marks[y * stride + x] != 0)
                    return true;
            return false;
        };
        for (std::size_t y = 1; y <= height; ++y)
            for (std::size_t x = 1; x <= width; ++x)
            {
                const void* hit = std::memchr(marks + y * stride + x, 1, width - x + 1);
                if (hit == nullptr)
                    break;
                x = static_cast<std::size_t>(static_cast<const std::uint8_t*>(hit) - (marks + y * stride));
                std::size_t top = y;
                std::size_t bottom = y;
                std::size_t left = x;
                std::size_t right = x;
                for (bool grown = true; grown;)
                {
                    grown = false;
                    if (across(top - 1, left, right))
                        --top, grown = true;
                    if (across(bottom + 1, left, right))
                        ++bottom, grown = true;
                    if (down(left - 1, top, bottom))
                        --left, grown = true;
                    if (down(right + 1, top, bottom))
                        ++right, grown = true;
                }
                for (std::size_t row = top; row <= bottom; ++row)
                {
                    std::fill_n(marks + row * stride + left, right - left + 1, 0);
                    std::fill_n(out + (row - 1) * width + left - 1, right - left + 1, opaque);
                }
            }
    })};
}

} // namespace

} // namespace peers

int main()
{
    using namespace peers;
    return serve("C++", {{"invert", invert},
                         {"linear", linear},
                         {"saturation", saturation},
                         {"all black", allBlack},
                         {"all white", allWhite},
                         {"is grey", isGrey},
                         {"count one colour", countOneColor},
                         {"replace one colour", replaceOneColor},
                         {"histograms", histograms},
                         {"tables", tables},
                         {"replace a channel", replaceChannel},
                         {"combine channels", combineChannels},
                         {"maximum of two", maximumOfTwo},
                         {"alpha to grey", alphaToGrey},
                         {"grey to alpha", greyToAlpha},
                         {"rotate rows", rotateRows},
                         {"rotate columns", rotateColumns},
                         {"find", find},
                         {"pack", pack},
                         {"unpack", unpack},
                         {"tint", matrix},
                         {"sepia", sepia},
                         {"3D table", table3d},
                         {"waveform", waveform},
                         {"rectangles", rectangles}});
}
