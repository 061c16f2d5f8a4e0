/// \file
/// Straight lines in single precision that give what a formula in double precision gives, for every channel
/// value there is.
///
/// A channel has 256 values, so whether the two agree is looked at and not estimated: a line that has passed
/// stores the formula's own bytes, and costs a third of it. No table is built; a line that fails is not used.
#pragma once

#include "editor/arithmetic.h"
#include "editor/real_lanes.h"

namespace qvr::brightnessContrast
{

/// Stores values clamped to 0 to 255.
struct Clamped
{
    static constexpr int32_t stored(int32_t value)
    {
        return maximum(minimum(value, 255), 0);
    }
    template <class Values>
    Values operator()(Values values) const
    {
        return values;
    }
};

/// Stores the low 8 bits of values.
struct LowBytes
{
    static constexpr int32_t stored(int32_t value)
    {
        return value & 255;
    }
    template <class Values>
    auto operator()(Values values) const
    {
        return values.lowBytes();
    }
};

/// `channel * scale + offset` in single precision, truncated; the value fits 32 bits.
struct SingleLine
{
    float at(float channel) const
    {
        return channel * scale + offset;
    }
    template <class Integers>
    Integers operator()(Integers channel) const
    {
        return truncateFitting(toFloats(channel) * scale + offset);
    }
    float scale = 0;
    float offset = 0;
};

/// Whether the line stores the formula's bytes for all 256 channel values.
template <class Finish, class Formula>
bool storesSame(const SingleLine& line, const Formula& formula)
{
    for (int32_t channel = 0; channel < 256; ++channel)
    {
        const auto value = static_cast<double>(line.at(static_cast<float>(channel)));
        if (!fitsInt32(value) || Finish::stored(truncateToInt32(value)) !=
                                     Finish::stored(truncateToInt32(formula(static_cast<double>(channel)))))
            return false;
    }
    return true;
}

/// Looks for a line that stores the formula's bytes, through the formula's ends and a hair above and below:
/// there it keeps away from the integers on which the formula's own values lie. False when there is none.
template <class Finish, class Formula>
bool findLine(const Formula& formula, SingleLine& line)
{
    constexpr double nudges[] = {0.0, 0x1p-13, -0x1p-13};

    const double first = formula(0.0);
    const double last = formula(255.0);
    if (!fitsInt32(first) || !fitsInt32(last))
        return false;
    for (const double nudge : nudges)
    {
        line = {static_cast<float>((last - first) / 255.0), static_cast<float>(first + nudge)};
        if (storesSame<Finish>(line, formula))
            return true;
    }
    return false;
}

} // namespace qvr::brightnessContrast
