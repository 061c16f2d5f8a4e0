#include "cli/histogram.h"

#include "host/names.h"

#include <algorithm>
#include <numeric>
#include <sstream>
#include <utility>

namespace cli
{

namespace
{

constexpr int levels = 256;
constexpr int lastLevel = levels - 1;

// Where the curves lie in the drawing.
constexpr int drawingWidth = 400;
constexpr int drawingHeight = 240;
constexpr int left = 62;
constexpr int right = 388;
constexpr int top = 30;
constexpr int bottom = 192;

using Pixel = std::array<std::uint8_t, 3>;

double xOf(int level)
{
    return left + static_cast<double>(right - left) * level / lastLevel;
}

double yOf(std::uint32_t count, std::uint32_t highest)
{
    return bottom - (bottom - top) * std::min(1.0, static_cast<double>(count) / highest);
}

void writeText(std::ostream& svg, double x, double y, const char* anchor, const std::string& text)
{
    svg << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\">" << text << "</text>";
}

void writeAxes(std::ostream& svg, std::uint32_t highest)
{
    constexpr int tick = 4;
    constexpr int levelStep = 64;
    constexpr int countSteps = 2;
    constexpr int countHeight = (bottom - top) / countSteps;
    svg << "<path class=\"axis\" d=\"M" << left << ' ' << top << "V" << bottom << "H" << right;
    for (int level = 0; level <= levels; level += levelStep)
        svg << 'M' << xOf(std::min(level, lastLevel)) << ' ' << bottom << 'v' << tick;
    for (int step = 0; step <= countSteps; ++step)
        svg << 'M' << left << ' ' << bottom - countHeight * step << 'h' << -tick;
    svg << "\"/>";
    for (int level = 0; level <= levels; level += levelStep)
        writeText(svg, xOf(std::min(level, lastLevel)), bottom + 18, "middle",
                  std::to_string(std::min(level, lastLevel)));
    for (int step = 0; step <= countSteps; ++step)
        writeText(svg, left - 8, bottom - countHeight * step + 4, "end",
                  std::to_string(std::uint64_t{highest} * static_cast<unsigned>(step) / countSteps));
    writeText(svg, (left + right) / 2.0, bottom + 38, "middle", "level");
    writeText(svg, left - 8, top - 14, "end", "pixels");
}

void writeCurve(std::ostream& svg, std::size_t index, const Curve& curve, std::uint32_t highest)
{
    constexpr int legendStep = 80;
    constexpr int legendLine = 24;
    svg << "<path class=\"" << curve.name << "\" d=\"";
    for (int level = 0; level < levels; ++level)
        svg << (level == 0 ? 'M' : 'L') << xOf(level) << ' '
            << yOf(curve.counters[static_cast<std::size_t>(level)], highest);
    const int x = left + 40 + static_cast<int>(index) * legendStep;
    svg << 'M' << x << ' ' << top - 18 << 'h' << legendLine << "\"/>";
    writeText(svg, x + legendLine + 6, top - 14, "start", curve.name);
}

/// "red most often 12, on average 101.5".
std::string inWords(const Curve& curve)
{
    const Counters& counts = curve.counters;
    const auto most = std::max_element(counts.begin(), counts.end()) - counts.begin();
    double sum = 0;
    for (std::size_t level = 0; level < counts.size(); ++level)
        sum += static_cast<double>(level) * counts[level];
    const double pixels = std::accumulate(counts.begin(), counts.end(), 0.0);
    std::ostringstream text;
    text.precision(3);
    text << curve.name << " has level " << most << " most often and level " << (pixels > 0 ? sum / pixels : 0)
         << " on average";
    return text.str();
}

/// The ends are often clipped, and would flatten everything between them.
std::uint32_t highestOf(const std::vector<Curve>& curves)
{
    std::uint32_t highest = 1;
    for (const Curve& curve : curves)
        highest = std::max(highest, *std::max_element(curve.counters.begin() + 1, curve.counters.end() - 1));
    return highest;
}

/// What a file needs and a page has.
constexpr const char* fileStyle =
    "<style>path { fill: none; stroke: #333; stroke-width: 1.4; } .red { stroke: #c33; } "
    ".green { stroke: #292; } .blue { stroke: #35c; } "
    "text { fill: #333; font: 11px sans-serif; }</style>";

Pixel colourOf(const std::string& name)
{
    constexpr std::array<std::pair<const char*, Pixel>, 3> colours{
        {{"red", {204, 51, 51}}, {"green", {34, 153, 34}}, {"blue", {51, 85, 204}}}};
    for (const auto& [known, colour] : colours)
        if (standin::sameName(known, name))
            return colour;
    return {51, 51, 51};
}

} // namespace

std::string histogramSvg(const std::vector<Curve>& curves)
{
    const std::uint32_t highest = highestOf(curves);
    std::ostringstream svg;
    svg.precision(4);
    svg << "<svg class=\"histogram\" viewBox=\"0 0 " << drawingWidth << ' ' << drawingHeight
        << "\" role=\"img\" aria-label=\"Histogram of the levels 0 to 255: ";
    for (const Curve& curve : curves)
        svg << (&curve == &curves.front() ? "" : "; ") << inWords(curve);
    svg << "\">";
    writeAxes(svg, highest);
    for (std::size_t index = 0; index < curves.size(); ++index)
        writeCurve(svg, index, curves[index], highest);
    svg << "</svg>";
    return svg.str();
}

std::string histogramFile(const Curve& curve)
{
    std::string svg = histogramSvg({curve});
    svg.insert(svg.find('>') + 1, fileStyle);
    return svg.insert(svg.find(' '), " xmlns=\"http://www.w3.org/2000/svg\"") + "\n";
}

media::Image histogramImage(const Curve& curve)
{
    constexpr int columns = 2 * levels;
    constexpr int rows = levels;
    constexpr std::uint8_t ground = 255;
    const std::uint32_t highest = highestOf({curve});
    const Pixel colour = colourOf(curve.name);
    media::Image image{columns, rows, 3, {}};
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
        {
            const std::uint64_t count = curve.counters[static_cast<std::size_t>(column / 2)];
            const bool filled = count * rows > std::uint64_t{highest} * static_cast<unsigned>(rows - 1 - row);
            for (const std::uint8_t channel : colour)
                image.bytes.push_back(filled ? channel : ground);
        }
    return image;
}

} // namespace cli
