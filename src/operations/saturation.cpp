#include "operations/saturation.h"

#include "editor/real_lanes.h"
#include "editor/walks.h"

namespace qvr::saturation
{

namespace
{

/// `distance * factor / 255` for a factor up to 65536 either way.
///
/// The scale is a hair above the quotient, by more than both roundings and by less than the 255th that keeps
/// a value below 16384 from the next integer: its truncation is the quotient's. Larger ones stay larger than
/// any channel.
struct SmallFactor
{
    explicit SmallFactor(int32_t factor) : scale(static_cast<float>(factor * (0x1.000004p0 / 255.0)))
    {
    }
    template <class Integers>
    Integers scaled(Integers distance) const
    {
        return truncateFitting(toFloats(distance) * scale);
    }
    float scale;
};

/// The same for every factor, with a product that wraps.
struct AnyFactor
{
    template <class Integers>
    Integers scaled(Integers distance) const
    {
        const auto product = asIntegers(asWords(distance) * static_cast<uint32_t>(factor));
        return truncateFitting(toDoubles(product) / 255.0);
    }
    int32_t factor;
};

template <class Factor>
REALpictureStruct* scaleDistances(REALpictureStruct* picture, Factor factor)
{
    return mapPicture(picture, [factor](auto pixels) {
        const auto grey = (pixels.blue() + pixels.red() + pixels.green() * 2) >> 2;
        return UnclampedChannels{grey + factor.scaled(pixels.red() - grey),
                                 grey + factor.scaled(pixels.green() - grey),
                                 grey + factor.scaled(pixels.blue() - grey)};
    });
}

} // namespace

REALpictureStruct* SaturationPicture(REALpictureStruct* picture, int32_t amount)
{
    constexpr int32_t largestExactFactor = 65536;

    const int32_t factor = wrappingAdd(amount, 255);
    if (factor >= -largestExactFactor && factor <= largestExactFactor)
        return scaleDistances(picture, SmallFactor(factor));
    return scaleDistances(picture, AnyFactor{factor});
}

} // namespace qvr::saturation
