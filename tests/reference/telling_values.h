#pragma once

#include <limits>

namespace reference
{

/// Doubles that random numbers seldom are, and on which roundings, bounds and conversions turn.
inline constexpr double tellingDoubles[] = {0.0,
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
                                            std::numeric_limits<double>::infinity(),
                                            std::numeric_limits<double>::quiet_NaN(),
                                            300.0,
                                            -300.0,
                                            1e9,
                                            -1e9,
                                            -1e300,
                                            -std::numeric_limits<double>::infinity()};

} // namespace reference
