#include "cli/saves.h"

#include "cli/histogram.h"
#include "host/error.h"
#include "host/names.h"
#include "script/files.h"

#include <cstring>
#include <filesystem>

namespace cli
{

namespace
{

using Bytes = std::vector<std::uint8_t>;
using standin::Error;

Bytes bytesOf(const std::string& text)
{
    return {text.begin(), text.end()};
}

/// One line for each number, so that spreadsheets read it.
Bytes csvOf(const std::string& variable, std::span<const std::uint8_t> bytes)
{
    std::uint32_t number = 0;
    if (bytes.size() % sizeof number != 0)
        throw Error(variable + " is no block of 32-bit numbers: it has " + std::to_string(bytes.size()) +
                    " bytes");
    std::string text = "value,count\n";
    for (std::size_t index = 0; index < bytes.size() / sizeof number; ++index)
    {
        std::memcpy(&number, bytes.data() + index * sizeof number, sizeof number);
        text += std::to_string(index) + "," + std::to_string(number) + "\n";
    }
    return bytesOf(text);
}

Curve curveOf(const std::string& variable, std::span<const std::uint8_t> bytes)
{
    Curve curve{variable, {}};
    if (bytes.size() != sizeof curve.counters)
        throw Error(variable + " cannot be drawn: it has " + std::to_string(bytes.size()) +
                    " bytes, and a histogram " + std::to_string(sizeof curve.counters));
    std::memcpy(curve.counters.data(), bytes.data(), bytes.size());
    return curve;
}

} // namespace

std::vector<std::uint8_t> savedBlock(const std::string& variable, std::span<const std::uint8_t> bytes,
                                     const std::string& path)
{
    const std::string ending = std::filesystem::path(path).extension().string();
    if (standin::sameName(ending, ".csv"))
        return csvOf(variable, bytes);
    if (standin::sameName(ending, ".svg"))
        return bytesOf(histogramFile(curveOf(variable, bytes)));
    if (standin::sameName(ending, ".png"))
        return media::encoded(histogramImage(curveOf(variable, bytes)), media::Format::png);
    return {bytes.begin(), bytes.end()};
}

} // namespace cli
