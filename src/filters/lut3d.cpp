#include "filters/lut3d.h"

#include "editor/real_lanes.h"
#include "filters/filter.h"

namespace qvr::lut3d
{

namespace
{

constexpr int32_t nodeStep = 17;
constexpr int32_t nodeBytes = cubeComponents * sizeof(double);

// Byte distances between neighbouring nodes.
constexpr int32_t blueStride = nodeBytes;
constexpr int32_t greenStride = blueStride * cubeNodes;
constexpr int32_t redStride = greenStride * cubeNodes;

/// The fraction of the way from one node to the next.
constexpr double fractions[nodeStep] = {
    0 / 17.0, 1 / 17.0,  2 / 17.0,  3 / 17.0,  4 / 17.0,  5 / 17.0,  6 / 17.0,  7 / 17.0,  8 / 17.0,
    9 / 17.0, 10 / 17.0, 11 / 17.0, 12 / 17.0, 13 / 17.0, 14 / 17.0, 15 / 17.0, 16 / 17.0,
};

/// The three components of a node and one that is not used.
typedef double Node __attribute__((vector_size(32)));

double* tableEntry(REALobjectStruct* self, uint32_t r, uint32_t g, uint32_t b, uint32_t x)
{
    if (r >= cubeNodes || g >= cubeNodes || b >= cubeNodes || x >= cubeComponents)
        return nullptr;
    return &instanceData<Lut3DClassData>(self, PictureLut3DClass).cube[r][g][b][x];
}

/// One node of the cube. The load reaches one double past it, which is inside the cube for every node in use.
QVR_INLINE inline Node nodeAt(const uint8_t* address)
{
    Node node;
    __builtin_memcpy(&node, address, sizeof node);
    return node;
}

/// Where some pixels lie in the cube, lane by lane.
///
/// The tetrahedron around a colour is the way from the lower node to the upper one, along the axis with the largest
/// fraction first and that with the smallest last. An axis is one integer, its fraction in the upper half and the stride
/// to its next node in the lower, so that two exchanges sort all of it without a branch.
template <class Lane>
struct CubePlaces
{
    using Integers = typename Lane::Integers;

    Integers base;       ///< byte offset of the lower node
    Integers axes[3];    ///< sorted, the largest fraction first

    QVR_INLINE CubePlaces(Integers red, Integers green, Integers blue)
    {
        const Integers redNode = lowerNode(red);
        const Integers greenNode = lowerNode(green);
        const Integers blueNode = lowerNode(blue);
        base = redNode * redStride + greenNode * greenStride + blueNode * blueStride;

        const Integers redRest = red - redNode * nodeStep;
        const Integers greenRest = green - greenNode * nodeStep;
        const Integers blueRest = blue - blueNode * nodeStep;
        // Equal fractions are part of the result when a node is infinite or not a number: green goes before red; blue
        // goes before both where red is larger than green, and after both elsewhere.
        const Integers blueRank = (redRest > greenRest) & 3;
        const Integers redAxis = axis(redRest, Integers{} + 1, red, redStride);
        const Integers greenAxis = axis(greenRest, Integers{} + 2, green, greenStride);
        const Integers blueAxis = axis(blueRest, blueRank, blue, blueStride);

        const Integers larger = __builtin_elementwise_max(redAxis, greenAxis);
        const Integers smaller = __builtin_elementwise_min(redAxis, greenAxis);
        axes[0] = __builtin_elementwise_max(larger, blueAxis);
        axes[2] = __builtin_elementwise_min(smaller, blueAxis);
        axes[1] = redAxis ^ greenAxis ^ blueAxis ^ axes[0] ^ axes[2];
    }

    static constexpr int32_t fractionShift = 18;
    static constexpr int32_t strideMask = 0xFFFF;

private:
    /// `level / 17` for levels up to 255.
    QVR_INLINE static Integers lowerNode(Integers level)
    {
        return (level * 241) >> 12;
    }

    /// Level 255 is the last node in use exactly, and has no next one.
    QVR_INLINE static Integers axis(Integers rest, Integers rank, Integers level, int32_t stride)
    {
        return (rest << fractionShift) | (rank << 16) | ((level < 255) & stride);
    }
};

/// One pixel's output levels, as bytes red, green, blue and one that is not used.
QVR_INLINE inline uint32_t interpolate(const uint8_t* lowerNode, int32_t axis0, int32_t axis1, int32_t axis2)
{
    typedef int32_t Levels __attribute__((vector_size(16)));
    typedef int16_t Halves __attribute__((vector_size(16)));
    typedef uint32_t Words __attribute__((vector_size(16)));
    using Places = CubePlaces<NarrowLanes>;

    const uint8_t* const node1 = lowerNode + (axis0 & Places::strideMask);
    const uint8_t* const node2 = node1 + (axis1 & Places::strideMask);
    const uint8_t* const node3 = node2 + (axis2 & Places::strideMask);
    const Node fraction0 = Node{} + fractions[axis0 >> Places::fractionShift];
    const Node fraction1 = Node{} + fractions[axis1 >> Places::fractionShift];
    const Node fraction2 = Node{} + fractions[axis2 >> Places::fractionShift];
    // Summed from the lower node on: the order decides the last bit.
    const Node sum = (((1.0 - fraction0) * nodeAt(lowerNode) + (fraction0 - fraction1) * nodeAt(node1)) +
                      (fraction1 - fraction2) * nodeAt(node2)) +
                     fraction2 * nodeAt(node3);
    const Levels levels = truncateToBytes<NarrowLanes>(sum);
    const Halves halves = __builtin_ia32_packssdw128(levels, levels);
    return reinterpret_cast<Words>(__builtin_ia32_packuswb128(halves, halves))[0];
}

} // namespace

void Lut3DClassConstructor(REALobjectStruct*)
{
}

void Lut3DClassDestructor(REALobjectStruct* self)
{
    auto& data = instanceData<Lut3DClassData>(self, PictureLut3DClass);
    releasePicture(data.SourcePicture);
    releasePicture(data.DestinationPicture);
}

signed char Run(REALobjectStruct* self)
{
    auto& data = instanceData<Lut3DClassData>(self, PictureLut3DClass);
    releasePicture(data.DestinationPicture);
    const auto* const cube = reinterpret_cast<const uint8_t*>(data.cube);
    data.DestinationPicture = filterPicture(
        data.SourcePicture, {data.MinX, data.MinY, data.MaxX, data.MaxY}, [cube](auto pixels) QVR_INLINE {
            using Lane = typename decltype(pixels)::Lane;
            using Integers = typename Lane::Integers;
            const CubePlaces<Lane> places(pixels.red(), pixels.green(), pixels.blue());
            Integers levels;
            for (int32_t i = 0; i < Lane::count; ++i)
                levels[i] = static_cast<int32_t>(
                    interpolate(cube + places.base[i], places.axes[0][i], places.axes[1][i], places.axes[2][i]));
            return Channels<Lane>{levels & 255, levels >> 8 & 255, levels >> 16 & 255};
        });
    return data.DestinationPicture != nullptr ? 1 : 0;
}

double GetPMX(REALobjectStruct* self, uint32_t r, uint32_t g, uint32_t b, uint32_t x)
{
    const double* const entry = tableEntry(self, r, g, b, x);
    return entry == nullptr ? 0.0 : *entry;
}

void SetPMX(REALobjectStruct* self, uint32_t r, uint32_t g, uint32_t b, uint32_t x, double value)
{
    if (double* const entry = tableEntry(self, r, g, b, x))
        *entry = value;
}

} // namespace qvr::lut3d
