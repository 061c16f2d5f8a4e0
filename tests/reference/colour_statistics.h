#pragma once

#include "tests/reference/picture.h"

#include <array>

namespace reference
{

using Histogram = std::array<std::uint32_t, 256>;
using LevelTable = std::array<std::uint8_t, 256>;

/// The three blocks in the order of the method's parameters, which the channels do not follow.
struct Histograms
{
    Histogram declaredRed{};   ///< counts red
    Histogram declaredBlue{};  ///< counts green
    Histogram declaredGreen{}; ///< counts blue
    int count = 0;             ///< pixels
};

/// Adds the picture's pixels to `histograms`; the count is the picture's alone.
void countColors(const Picture& picture, Histograms& histograms);

/// Every channel mapped through the table of its own name.
Picture transformColors(const Picture& picture, const LevelTable& red, const LevelTable& green,
                        const LevelTable& blue);

} // namespace reference
