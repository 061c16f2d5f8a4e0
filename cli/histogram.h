#pragma once

#include "cli/demo_run.h"

#include <string>

namespace cli
{

/// The counters as three curves over two axes: an SVG element with a legend, and a name for those who cannot
/// see it. Levels 0 and 255 are left out of the vertical scale.
std::string histogramSvg(const Counters& counters);

} // namespace cli
