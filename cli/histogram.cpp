#include "cli/histogram.h"

#include <algorithm>
#include <numeric>
#include <sstream>

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

/// The curves' names, and their classes in the page's style sheet.
constexpr std::array<const char*, 3> curves{"red", "green", "blue"};

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

void writeCurve(std::ostream& svg, std::size_t index, const Counters& counters, std::uint32_t highest)
{
    constexpr int legendStep = 80;
    constexpr int legendLine = 24;
    svg << "<path class=\"" << curves[index] << "\" d=\"";
    for (int level = 0; level < levels; ++level)
        svg << (level == 0 ? 'M' : 'L') << xOf(level) << ' '
            << yOf(counters[index][static_cast<std::size_t>(level)], highest);
    const int x = left + 40 + static_cast<int>(index) * legendStep;
    svg << 'M' << x << ' ' << top - 18 << 'h' << legendLine << "\"/>";
    writeText(svg, x + legendLine + 6, top - 14, "start", curves[index]);
}

/// "red most often 12, on average 101.5".
std::string inWords(std::size_t index, const Counters& counters)
{
    const auto& counts = counters[index];
    const auto most = std::max_element(counts.begin(), counts.end()) - counts.begin();
    double sum = 0;
    for (std::size_t level = 0; level < counts.size(); ++level)
        sum += static_cast<double>(level) * counts[level];
    const double pixels = std::accumulate(counts.begin(), counts.end(), 0.0);
    std::ostringstream text;
    text.precision(3);
    text << curves[index] << " has level " << most << " most often and level "
         << (pixels > 0 ? sum / pixels : 0) << " on average";
    return text.str();
}

} // namespace

std::string histogramSvg(const Counters& counters)
{
    // The ends are often clipped, and would flatten everything between them.
    std::uint32_t highest = 1;
    for (const auto& counts : counters)
        highest = std::max(highest, *std::max_element(counts.begin() + 1, counts.end() - 1));
    std::ostringstream svg;
    svg.precision(4);
    svg << "<svg class=\"histogram\" viewBox=\"0 0 " << drawingWidth << ' ' << drawingHeight
        << "\" role=\"img\" aria-label=\"Histogram of the levels 0 to 255: ";
    for (std::size_t index = 0; index < curves.size(); ++index)
        svg << (index == 0 ? "" : "; ") << inWords(index, counters);
    svg << "\">";
    writeAxes(svg, highest);
    for (std::size_t index = 0; index < curves.size(); ++index)
        writeCurve(svg, index, counters, highest);
    svg << "</svg>";
    return svg.str();
}

} // namespace cli
