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

/// The node of level 255.
constexpr int32_t lastNode = 255 / nodeStep;

/// What one fraction has more than another, `a / 17.0 - b / 17.0`, by their numerators. The numerator 17 is 1
/// exactly, so every weight of a tetrahedron's corner is such a difference.
struct WeightTable
{
    static constexpr int32_t rowEntries = nodeStep + 1;
    double difference[rowEntries][rowEntries];

    constexpr WeightTable() : difference()
    {
        for (int32_t a = 0; a < rowEntries; ++a)
            for (int32_t b = 0; b < rowEntries; ++b)
                difference[a][b] = a / 17.0 - b / 17.0;
    }
};

constexpr WeightTable weightTable;

/// The three components of a node and one that is not used.
typedef double Node __attribute__((vector_size(32)));

double* tableEntry(REALobjectStruct* self, uint32_t r, uint32_t g, uint32_t b, uint32_t x)
{
    if (r >= cubeNodes || g >= cubeNodes || b >= cubeNodes || x >= cubeComponents)
        return nullptr;
    return &instanceData<Lut3DClassData>(self, pictureLut3DClass).cube[r][g][b][x];
}

/// The corners of the tetrahedra around some pixels' colours, and their weights, lane by lane.
///
/// A tetrahedron is the way from the lower node to the upper one along the axes, the largest fraction first.
/// An axis is one integer, its fraction in the upper half and the stride to its next node in the lower, so
/// that exchanging larger and smaller sorts all of it without a branch.
template <class Integers>
class Tetrahedra
{
public:
    Tetrahedra(Integers red, Integers green, Integers blue)
    {
        const Integers redNode = lowerNode(red);
        const Integers greenNode = lowerNode(green);
        const Integers blueNode = lowerNode(blue);
        const Integers redRest = red - redNode * nodeStep;
        const Integers greenRest = green - greenNode * nodeStep;
        const Integers blueRest = blue - blueNode * nodeStep;
        // Equal fractions are part of the result when a node is infinite or not a number: green goes before
        // red; blue goes before both where red is larger than green, and after both elsewhere.
        const Integers blueRank = (redRest > greenRest) & 3;
        const Integers redAxis = axis(redRest, Integers{} + 1, red, redStride);
        const Integers greenAxis = axis(greenRest, Integers{} + 2, green, greenStride);
        const Integers blueAxis = axis(blueRest, blueRank, blue, blueStride);

        const Integers larger = __builtin_elementwise_max(redAxis, greenAxis);
        const Integers smaller = __builtin_elementwise_min(redAxis, greenAxis);
        const Integers first = __builtin_elementwise_max(larger, blueAxis);
        const Integers last = __builtin_elementwise_min(smaller, blueAxis);
        const Integers middle = redAxis ^ greenAxis ^ blueAxis ^ first ^ last;

        corners[0] = redNode * redStride + greenNode * greenStride + blueNode * blueStride;
        corners[1] = corners[0] + (first & strideMask);
        corners[2] = corners[1] + (middle & strideMask);
        corners[3] = corners[2] + (last & strideMask);
        weights[0] = weightOffset(Integers{} + nodeStep, first >> restShift);
        weights[1] = weightOffset(first >> restShift, middle >> restShift);
        weights[2] = weightOffset(middle >> restShift, last >> restShift);
        weights[3] = weightOffset(last >> restShift, Integers{});
    }

    /// The output levels of the pixel in one lane: bytes red, green, blue and one that is not used.
    uint32_t levels(const uint8_t* cube, int32_t lane) const
    {
        // Summed from the lower node on: the order decides the last bit.
        return bytesOf(((weighted(cube, lane, 0) + weighted(cube, lane, 1)) + weighted(cube, lane, 2)) +
                       weighted(cube, lane, 3));
    }

private:
    static constexpr int32_t restShift = 18;
    static constexpr int32_t rankShift = 16;
    static constexpr int32_t strideMask = 0xFFFF;

    static_assert(redStride <= strideMask && 3 << rankShift < 1 << restShift &&
                      nodeStep <= INT32_MAX >> restShift,
                  "stride, rank and fraction stand side by side in an axis");
    static_assert(lastNode * (redStride + greenStride + blueStride) + sizeof(Node) <=
                      sizeof(Lut3DClassData::cube),
                  "the load of the last node stays inside the cube");

    /// `level / 17` for levels up to 255.
    static Integers lowerNode(Integers level)
    {
        return (level * 241) >> 12;
    }

    /// Level 255 is the last node in use exactly, and has no next one.
    static Integers axis(Integers rest, Integers rank, Integers level, int32_t stride)
    {
        return (rest << restShift) | (rank << rankShift) | ((level < 255) & stride);
    }

    static Integers weightOffset(Integers larger, Integers smaller)
    {
        return (larger * WeightTable::rowEntries + smaller) * static_cast<int32_t>(sizeof(double));
    }

    Node weighted(const uint8_t* cube, int32_t lane, int32_t corner) const
    {
        const auto weight =
            loadFrom<double>(reinterpret_cast<const uint8_t*>(&weightTable) + laneOf(weights[corner], lane));
        return loadFrom<Node>(cube + laneOf(corners[corner], lane)) * Node{weight, weight, weight, weight};
    }

    /// Through memory, which is faster than taking lanes out of registers one by one.
    static int32_t laneOf(const Integers& integers, int32_t lane)
    {
        return loadFrom<int32_t>(reinterpret_cast<const uint8_t*>(&integers) + lane * 4);
    }

    static uint32_t bytesOf(Node sum)
    {
        typedef int16_t Halves __attribute__((vector_size(16)));
        typedef uint32_t Words __attribute__((vector_size(16)));
        const auto levels = truncateToBytes(sum);
        const Halves halves = __builtin_ia32_packssdw128(levels, levels);
        return reinterpret_cast<Words>(__builtin_ia32_packuswb128(halves, halves))[0];
    }

    Integers corners[4]; ///< byte offsets in the cube
    Integers weights[4]; ///< byte offsets in the table of weights
};

} // namespace

void Lut3DClassConstructor(REALobjectStruct*)
{
}

void Lut3DClassDestructor(REALobjectStruct* self)
{
    releasePictures(instanceData<Lut3DClassData>(self, pictureLut3DClass).filter);
}

signed char Run(REALobjectStruct* self)
{
    auto& data = instanceData<Lut3DClassData>(self, pictureLut3DClass);
    releasePicture(data.filter.DestinationPicture);
    const auto* const cube = reinterpret_cast<const uint8_t*>(data.cube);
    data.filter.DestinationPicture = filterPicture(data.filter, [cube](auto pixels) {
        const Tetrahedra tetrahedra(pixels.red(), pixels.green(), pixels.blue());
        uint32_t levels[decltype(pixels)::count];
        for (int32_t lane = 0; lane < pixels.count; ++lane)
            levels[lane] = tetrahedra.levels(cube, lane);
        const auto packed = loadFrom<decltype(pixels.red())>(levels);
        return Channels{packed & 255, packed >> 8 & 255, packed >> 16 & 255};
    });
    return data.filter.DestinationPicture != nullptr ? 1 : 0;
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
