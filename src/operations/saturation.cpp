#include "operations/saturation.h"

#include "editor/real_lanes.h"
#include "editor/walks.h"

namespace qvr::saturation
{

namespace
{

/// `distance * factor / 255` for a factor up to 65536 either way. The product is exact in single precision.
/// The constant is a hair above 1/255: it gives the truncated quotient of every product below 65536, and more
/// than 255 above.
struct SmallFactor
{
    template <class Integers>
    Integers scaled(Integers distance) const
    {
        return truncateFitting(toFloats(distance) * factor * 0x1.010102p-8F);
    }
    float factor;
};

/// The same for every factor, with a product that wraps.
struct AnyFactor
{
    template <class Integers>
    Integers scaled(Integers distance) const
    {
        using Words = typename LanesOf<Integers>::Words;
        const auto product =
            reinterpret_cast<Integers>(reinterpret_cast<Words>(distance) * static_cast<uint32_t>(factor));
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
        return scaleDistances(picture, SmallFactor{static_cast<float>(factor)});
    return scaleDistances(picture, AnyFactor{factor});
}

} // namespace qvr::saturation
