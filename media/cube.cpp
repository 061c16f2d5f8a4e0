#include "media/cube.h"

#include "host/error.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace media
{

namespace
{

constexpr std::size_t channelCount = 3;
constexpr std::string_view spaces = " \t\r";

std::string_view trimmed(std::string_view text)
{
    const std::size_t begin = std::min(text.find_first_not_of(spaces), text.size());
    text.remove_prefix(begin);
    return text.substr(0, text.find_last_not_of(spaces) + 1);
}

/// Takes the first word away.
std::string_view nextWord(std::string_view& text)
{
    const std::string_view word = text.substr(0, text.find_first_of(spaces));
    text = trimmed(text.substr(word.size()));
    return word;
}

} // namespace

/// Reads a file line by line.
class CubeReader
{
public:
    CubeReader(Cube& target, const std::string& file) : cube(target), path(file)
    {
    }

    void read(std::string_view text)
    {
        while (!text.empty())
        {
            const std::size_t end = std::min(text.find('\n'), text.size());
            ++number;
            readLine(trimmed(text.substr(0, end)));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        number = std::max<std::size_t>(number, 1);
        if (cube.channels.size == 0 && cube.all.size == 0)
            fail("LUT_1D_SIZE or LUT_3D_SIZE is missing");
        if (entriesRead < entriesWanted())
            fail("the table ends after " + std::to_string(entriesRead) + " of " +
                 std::to_string(entriesWanted()) + " entries");
    }

private:
    [[noreturn]] void fail(const std::string& reason) const
    {
        throw standin::Error(path + ":" + std::to_string(number) + ": " + reason);
    }

    void readLine(std::string_view line)
    {
        if (line.empty() || line.front() == '#')
            return;
        const bool isEntry = line.find_first_of("+-.0123456789") == 0;
        if (isEntry)
            return addEntry(line);
        std::string_view rest = line;
        const std::string_view keyword = nextWord(rest);
        if (entriesRead != 0)
            fail(std::string(keyword) + " stands behind the first entry");
        if (keyword == "TITLE")
            cube.name = titleIn(rest);
        else if (keyword == "LUT_1D_SIZE")
            setSize(cube.channels, rest, 65536);
        else if (keyword == "LUT_3D_SIZE")
            setSize(cube.all, rest, 256);
        else if (keyword == "DOMAIN_MIN")
            cube.channels.lowest = cube.all.lowest = numbersIn(rest);
        else if (keyword == "DOMAIN_MAX")
            cube.channels.highest = cube.all.highest = numbersIn(rest);
        else if (keyword == "LUT_1D_INPUT_RANGE")
            setRange(cube.channels, rest);
        else if (keyword == "LUT_3D_INPUT_RANGE")
            setRange(cube.all, rest);
        else
            fail("expected a keyword or three numbers, not \"" + std::string(keyword) + "\"");
    }

    std::string titleIn(std::string_view rest) const
    {
        constexpr std::size_t quotes = 2;
        if (rest.size() < quotes || rest.front() != '"' || rest.back() != '"')
            fail("expected a title in quotation marks");
        return std::string(rest.substr(1, rest.size() - quotes));
    }

    double numberIn(std::string_view& rest) const
    {
        constexpr double most = 1e9;
        std::string_view word = nextWord(rest);
        if (word.starts_with('+'))
            word.remove_prefix(1);
        double value = 0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
        if (word.empty() || error != std::errc() || end != word.data() + word.size() ||
            !(std::abs(value) <= most))
            fail(word.empty() ? "a number is missing"
                              : "\"" + std::string(word) + "\" is no number that a level can be");
        return value;
    }

    void expectEnd(std::string_view rest) const
    {
        if (!rest.empty())
            fail("\"" + std::string(rest) + "\" is too much");
    }

    Levels numbersIn(std::string_view rest) const
    {
        Levels numbers{};
        for (double& value : numbers)
            value = numberIn(rest);
        expectEnd(rest);
        return numbers;
    }

    void setSize(Cube::Table& table, std::string_view rest, int most)
    {
        const double size = numberIn(rest);
        expectEnd(rest);
        if (size != std::floor(size) || size < 2 || size > most)
            fail("expected a size of 2 to " + std::to_string(most));
        if (table.size != 0)
            fail("the size stands here for the second time");
        table.size = static_cast<int>(size);
    }

    void setRange(Cube::Table& table, std::string_view rest)
    {
        const double lowest = numberIn(rest);
        const double highest = numberIn(rest);
        expectEnd(rest);
        table.lowest.fill(lowest);
        table.highest.fill(highest);
    }

    std::size_t entriesWanted() const
    {
        const auto size = static_cast<std::size_t>(cube.all.size);
        return static_cast<std::size_t>(cube.channels.size) + size * size * size;
    }

    void addEntry(std::string_view line)
    {
        if (entriesRead == 0)
            checkHeader();
        if (entriesRead == entriesWanted())
            fail("the table has more than " + std::to_string(entriesWanted()) + " entries");
        Cube::Table& table =
            entriesRead < static_cast<std::size_t>(cube.channels.size) ? cube.channels : cube.all;
        table.entries.push_back(numbersIn(line));
        ++entriesRead;
    }

    void checkHeader() const
    {
        if (entriesWanted() == 0)
            fail("LUT_1D_SIZE or LUT_3D_SIZE must stand before the first entry");
        for (const Cube::Table* table : {&cube.channels, &cube.all})
            for (std::size_t channel = 0; channel < channelCount; ++channel)
                if (!(table->lowest[channel] < table->highest[channel]))
                    fail("the domain ends before it begins");
    }

    Cube& cube;
    const std::string& path;
    std::size_t number = 0; ///< of the line
    std::size_t entriesRead = 0;
};

Cube::Cube(std::string_view text, const std::string& path)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    CubeReader(*this, path).read(text);
}

std::size_t Cube::Table::lowerEntry(double level, std::size_t channel, double& fraction) const
{
    const double share = (level - lowest[channel]) / (highest[channel] - lowest[channel]);
    const double place = std::clamp(share, 0.0, 1.0) * (size - 1);
    const double lower = std::min(std::floor(place), size - 2.0);
    fraction = place - lower;
    return static_cast<std::size_t>(lower);
}

Cube::Place Cube::placeOf(std::size_t channel, double level) const
{
    Place place{level};
    if (channels.size != 0)
    {
        double fraction = 0;
        const std::size_t lower = channels.lowerEntry(level, channel, fraction);
        place.level = (1 - fraction) * channels.entries[lower][channel] +
                      fraction * channels.entries[lower + 1][channel];
    }
    if (all.size != 0)
    {
        place.step = 1;
        for (std::size_t before = 0; before < channel; ++before)
            place.step *= static_cast<std::size_t>(all.size);
        place.corner = all.lowerEntry(place.level, channel, place.fraction) * place.step;
    }
    return place;
}

Levels Cube::at(const std::array<Place, channelCount>& places) const
{
    if (all.size == 0)
        return {places[0].level, places[1].level, places[2].level};
    // From the lower corner to the upper one, the axis with the largest fraction first.
    std::array<const Place*, channelCount> order{&places[0], &places[1], &places[2]};
    const auto sort = [&order](std::size_t first, std::size_t second) {
        if (order[first]->fraction < order[second]->fraction)
            std::swap(order[first], order[second]);
    };
    sort(0, 1);
    sort(1, 2);
    sort(0, 1);
    std::size_t corner = places[0].corner + places[1].corner + places[2].corner;
    Levels result{};
    double left = 1;
    for (std::size_t passed = 0; passed <= channelCount; ++passed)
    {
        const double next = passed < channelCount ? order[passed]->fraction : 0;
        for (std::size_t channel = 0; channel < channelCount; ++channel)
            result[channel] += (left - next) * all.entries[corner][channel];
        if (passed < channelCount)
            corner += order[passed]->step;
        left = next;
    }
    return result;
}

} // namespace media
