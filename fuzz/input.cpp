#include "fuzz/input.h"

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
    using Limits = std::numeric_limits<double>;
    constexpr double special[] = {0.0,
                                  -0.0,
                                  1.0,
                                  -1.0,
                                  0.5,
                                  255.0,
                                  -255.0,
                                  1e-300,
                                  8421504.5,
                                  2147483647.0,
                                  2147483648.0,
                                  -2147483648.0,
                                  -2147483904.0,
                                  1e300,
                                  Limits::infinity(),
                                  Limits::quiet_NaN()};
    constexpr double step = 1 / 4096.0;
    switch (const std::uint8_t choice = byte(); choice % 4)
    {
    case 0:
        return special[choice / 4 % std::size(special)];
    case 1:
        return bits<std::int32_t>() * step;
    case 2:
        return bits<std::int16_t>() * step;
    default:
        return bits<double>();
    }
}

} // namespace fuzz
