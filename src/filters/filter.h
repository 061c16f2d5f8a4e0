/// \file
/// What the two filter classes share: instance data, the block that a run processes, and its result.
#pragma once

#include "editor/walks.h"

namespace qvr
{

/// The instance data of an object, as its class describes it.
template <class Data>
Data& instanceData(REALobjectStruct* self, const REALclassDefinition& definition)
{
    // The host may move its word at any time, so it is read at every call.
    return *reinterpret_cast<Data*>(reinterpret_cast<char*>(self) + definition.hostWord);
}

/// Gives up the reference that a field holds; the field ends as null.
inline void releasePicture(REALpictureStruct*& field)
{
    const Reference<REALpictureStruct> held{field};
    field = nullptr;
}

/// A filter's rectangle as its properties give it; a maximum that is not above the minimum and below the
/// picture's size means that size.
struct FilterLimits
{
    int32_t minX;
    int32_t minY;
    int32_t maxX;
    int32_t maxY;
};

/// The block that a filter processes.
///
/// It has the rectangle's size, but deliberately starts at the picture's top-left corner whatever the minimum
/// is. A negative minimum would make it larger than the picture: columns end at the row's end, and rows past
/// the last would only do row 0 and on once more, so both are cut.
inline Block filterBlock(const PictureReader& reader, const FilterLimits& limits)
{
    const auto extent = [](int32_t least, int32_t most, int32_t size) {
        const int32_t end = most > least && most < size ? most : size;
        return static_cast<int32_t>(minimum<int64_t>(static_cast<int64_t>(end) - least, size));
    };
    return {0, extent(limits.minX, limits.maxX, reader.width), 0,
            extent(limits.minY, limits.maxY, reader.height)};
}

/// `mapPart` for a filter's block.
template <class Formula>
REALpictureStruct* filterPicture(REALpictureStruct* source, const FilterLimits& limits,
                                 const Formula& formula)
{
    return mapPart(
        source, [&limits](const PictureReader& reader) { return filterBlock(reader, limits); }, formula);
}

} // namespace qvr
