/// \file
/// The two filter classes have the same picture and rectangle properties.
#pragma once

#include "tests/reference/filter_block.h"
#include "tests/support/operation_checks.h"

#include <cstring>
#include <functional>

/// Sets "MinX", "MinY", "MaxX" and "MaxY".
void setRectangle(standin::Instance& filter, const reference::FilterRectangle& rectangle);
/// Rectangles in and around a picture of this size, and far from it.
reference::FilterRectangle randomRectangle(Random& random, int width, int height);
/// The fresh picture that a filter starts from.
reference::Picture freshPicture(const standin::Picture& source);
/// "PictureSepiaQVR of a picture in gworld32 with no weights, MinX 1, MinY 2, MaxX 3, MaxY 4", for messages.
std::string filterText(const standin::Instance& filter, const standin::Picture& source,
                       const std::string& settings);
/// "Close" gives back both pictures of a filter that has run, once, and leaves alone what `expectKept` looks
/// at; the filter works again afterwards, and ends without them.
void expectCloseReleasesPictures(TestHost& host, standin::Instance filter,
                                 const std::function<void(standin::Instance&)>& expectKept,
                                 SourceLine line = SourceLine::here());
/// Sets the source, runs the filter and gives "DestinationPicture", which must be nil when it failed.
standin::Picture runFilter(standin::Instance& filter, const standin::Picture& source);

/// What the host would read at an offset of an instance's data.
template <class Field>
Field fieldAt(standin::Instance& instance, int offset)
{
    Field field;
    std::memcpy(&field, instance.data() + offset, sizeof field);
    return field;
}
