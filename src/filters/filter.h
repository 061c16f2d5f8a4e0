/// \file
/// What the two filter classes do alike: reach their data, hold their pictures, and choose what a run
/// processes.
#pragma once

#include "editor/walks.h"
#include "filters/filter_data.h"

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

/// Gives up both pictures.
inline void releasePictures(FilterData& data)
{
    releasePicture(data.SourcePicture);
    releasePicture(data.DestinationPicture);
}

/// The block that a filter processes.
///
/// It has the rectangle's size, but deliberately starts at the picture's top-left corner whatever the minimum
/// is. A negative minimum would make it larger than the picture: columns end at the row's end, and rows past
/// the last would only do row 0 and on once more, so both are cut.
inline Block filterBlock(const PictureReader& reader, const FilterData& data)
{
    const auto extent = [](int32_t least, int32_t most, int32_t size) {
        const int32_t end = most > least && most < size ? most : size;
        return static_cast<int32_t>(minimum<int64_t>(static_cast<int64_t>(end) - least, size));
    };
    return {0, extent(data.MinX, data.MaxX, reader.width), 0, extent(data.MinY, data.MaxY, reader.height)};
}

/// `mapPart` for a filter's source and block.
template <class Formula>
REALpictureStruct* filterPicture(const FilterData& data, const Formula& formula)
{
    return mapPart(
        data.SourcePicture, [&data](const PictureReader& reader) { return filterBlock(reader, data); },
        formula);
}

} // namespace qvr
