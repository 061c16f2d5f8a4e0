#include "operations/saturation.h"

#include "editor/real_lanes.h"
#include "editor/walks.h"

namespace qvr::saturation
{

namespace
{

template <class Lane>
QVR_INLINE inline typename Lane::Integers greyOf(const Channels<Lane>& channels)
{
    return (channels.blue + channels.red + channels.green * 2) >> 2;
}

/// `distance * factor / 255` for a factor up to 65536 either way. The product is exact in single precision.
/// The constant is a hair above 1/255: it gives the truncated quotient of every product below 65536, and more
/// than 255 above.
struct SmallFactor
{
    template <class Lane>
    QVR_INLINE typename Lane::Integers scaled(typename Lane::Integers distance) const
    {
        const auto product = __builtin_convertvector(distance, typename Lane::Floats) * factor;
        return __builtin_convertvector(product * 0x1.010102p-8F, typename Lane::Integers);
    }
    float factor;
};

/// The same for every factor, with a product that wraps.
struct AnyFactor
{
    template <class Lane>
    QVR_INLINE typename Lane::Integers scaled(typename Lane::Integers distance) const
    {
        const auto product = reinterpret_cast<typename Lane::Integers>(
            reinterpret_cast<typename Lane::Words>(distance) * static_cast<uint32_t>(factor));
        return __builtin_convertvector(toDoubles<Lane>(product) / 255.0, typename Lane::Integers);
    }
    int32_t factor;
};

template <class Factor>
REALpictureStruct* scaleDistances(REALpictureStruct* picture, Factor factor)
{
    return mapPicture(picture, [factor](auto pixels) QVR_INLINE {
        using Lane = LaneOf<decltype(pixels)>;
        const Channels<Lane> source{pixels.red(), pixels.green(), pixels.blue()};
        const auto grey = greyOf(source);
        return UnclampedChannels<Lane>{grey + factor.template scaled<Lane>(source.red - grey),
                                       grey + factor.template scaled<Lane>(source.green - grey),
                                       grey + factor.template scaled<Lane>(source.blue - grey)};
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
