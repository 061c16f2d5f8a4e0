#pragma once

#include "media/image.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace cli
{

/// How often each level occurs.
using Counters = std::array<std::uint32_t, 256>;

struct Curve
{
    std::string name; ///< one of "red", "green" and "blue" is drawn in that colour
    Counters counters;
};

/// The curves over two axes: an SVG element with a legend, and a name for those who cannot see it. Levels 0
/// and 255 are left out of the vertical scale. Colours are left to the page's style sheet.
std::string histogramSvg(const std::vector<Curve>& curves);

/// The same as a file of its own.
std::string histogramFile(const Curve& curve);

/// The curve filled to its foot, without words: two columns of pixels for each level.
media::Image histogramImage(const Curve& curve);

} // namespace cli
