#include "cli/cube_look.h"

#include "host/file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace cli
{

namespace
{

constexpr std::size_t nodes = 16;
constexpr std::size_t components = 3;
constexpr std::size_t levels = 256;
constexpr double fullLevel = 255;
/// So fine is the table, for the sake of the program that it can become.
constexpr double perLevel = 1000;

using Places = std::vector<media::Cube::Place>;

/// The places of evenly spread levels, channel by channel.
std::array<Places, components> placesOf(const media::Cube& cube, std::size_t count)
{
    std::array<Places, components> places;
    for (std::size_t channel = 0; channel < components; ++channel)
        for (std::size_t index = 0; index < count; ++index)
            places[channel].push_back(
                cube.placeOf(channel, static_cast<double>(index) / static_cast<double>(count - 1)));
    return places;
}

/// The nearest level.
int levelOf(double value)
{
    constexpr double half = 0.5;
    return static_cast<int>(std::clamp(value, 0.0, 1.0) * fullLevel + half);
}

} // namespace

CubeLook::CubeLook(const std::string& file) : path(file), cube(standin::readText(file), file)
{
    // The class cuts off what stands behind the point.
    constexpr double toRound = 0.5;
    const auto places = placesOf(cube, nodes);
    for (std::size_t red = 0; red < nodes; ++red)
        for (std::size_t green = 0; green < nodes; ++green)
            for (std::size_t blue = 0; blue < nodes; ++blue)
                for (const double value : cube.at({places[0][red], places[1][green], places[2][blue]}))
                    thousandths.push_back(std::llround((value * fullLevel + toRound) * perLevel));
}

void CubeLook::putInto(standin::Instance& filter) const
{
    auto entry = thousandths.begin();
    for (std::uint32_t red = 0; red < nodes; ++red)
        for (std::uint32_t green = 0; green < nodes; ++green)
            for (std::uint32_t blue = 0; blue < nodes; ++blue)
                for (std::uint32_t component = 0; component < components; ++component)
                    filter.assign("Table", {red, green, blue, component},
                                  static_cast<double>(*entry++) / perLevel);
}

std::string CubeLook::program() const
{
    std::vector<std::string> numbers;
    std::size_t width = 0;
    for (const std::int64_t entry : thousandths)
        width = std::max(width, numbers.emplace_back(std::to_string(entry)).size());
    const std::string step = std::to_string(width);
    std::string text = "' The table of " + path + " in thousandths of levels\nDim lut As New " + className +
                       "\nDim numbers As String\n";
    for (std::size_t index = 0; index < numbers.size(); ++index)
    {
        constexpr std::size_t perLine = nodes * components;
        text += index % perLine == 0 ? "numbers = numbers + \"" : "";
        text += std::string(width - numbers[index].size(), ' ') + numbers[index];
        text += index % perLine == perLine - 1 ? "\"\n" : "";
    }
    return text +
           "Dim place As Integer = 1\n"
           "For r As Integer = 0 To 15\n"
           "  For g As Integer = 0 To 15\n"
           "    For b As Integer = 0 To 15\n"
           "      For x As Integer = 0 To 2\n"
           "        lut.Table(r, g, b, x) = Val(MidB(numbers, place, " +
           step +
           ")) / 1000\n"
           "        place = place + " +
           step +
           "\n"
           "      Next\n"
           "    Next\n"
           "  Next\n"
           "Next\n";
}

std::string CubeLook::accuracy(standin::Host& host) const
{
    constexpr std::size_t redsAtOnce = 16;
    constexpr std::size_t side = levels * redsAtOnce;
    const auto places = placesOf(cube, levels);
    standin::Instance filter = host.newInstance(className);
    putInto(filter);
    int largest = 0;
    std::uint64_t sum = 0;
    for (std::size_t begin = 0; begin < levels; begin += redsAtOnce)
    {
        std::vector<std::uint8_t> colours;
        colours.reserve(redsAtOnce * levels * levels * components);
        for (std::size_t red = begin; red < begin + redsAtOnce; ++red)
            for (std::size_t green = 0; green < levels; ++green)
                for (std::size_t blue = 0; blue < levels; ++blue)
                    for (const std::size_t level : {red, green, blue})
                        colours.push_back(static_cast<std::uint8_t>(level));
        standin::Picture picture = host.newPicture(static_cast<int>(side), static_cast<int>(levels));
        picture.setRgb(colours);
        filter.set("SourcePicture", picture);
        if (!filter.call("Run").boolean())
            throw standin::Error(std::string(className) + ".Run gave false");
        const std::vector<std::uint8_t> results = filter.get("DestinationPicture").picture().rgb();
        for (std::size_t at = 0; at < results.size(); at += components)
        {
            const media::Levels wanted =
                cube.at({places[0][colours[at]], places[1][colours[at + 1]], places[2][colours[at + 2]]});
            for (std::size_t component = 0; component < components; ++component)
            {
                const int difference = std::abs(levelOf(wanted[component]) - results[at + component]);
                largest = std::max(largest, difference);
                sum += static_cast<std::uint64_t>(difference);
            }
        }
    }
    constexpr std::size_t size = 160;
    std::array<char, size> text{};
    std::snprintf(
        text.data(), text.size(),
        "over all 16777216 colours, levels are at most %d and on average %.3f away from the file's table",
        largest, static_cast<double>(sum) / static_cast<double>(levels * levels * levels * components));
    return path + ": " + text.data();
}

} // namespace cli
