#include "fuzz/input.h"

#include "tests/reference/telling_values.h"

#include <limits>

namespace fuzz
{

std::int32_t Input::coordinate(int size)
{
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t ends[] = {least, least + 1, -32768, -1, 32767, 32768, most - 1, most};

    // Values up to 199 lie around 0, so that bytes with a meaning elsewhere are small numbers here.
    const std::uint8_t choice = byte();
    if (choice < 200)
        return choice - 20;
    if (choice < 224)
        return size + (choice - 212);
    if (choice < 240)
        return ends[choice % std::size(ends)];
    return bits<std::int32_t>();
}

double Input::real()
{
    constexpr double step = 1 / 4096.0;
    switch (const std::uint8_t choice = byte(); choice % 4)
    {
    case 0:
        return reference::tellingDoubles[choice / 4 % std::size(reference::tellingDoubles)];
    case 1:
        return bits<std::int32_t>() * step;
    case 2:
        return bits<std::int16_t>() * step;
    default:
        return bits<double>();
    }
}

} // namespace fuzz
