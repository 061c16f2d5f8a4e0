#pragma once

#include "tests/reference/picture.h"

#include <optional>

namespace reference
{

struct Position
{
    int x = 0;
    int y = 0;

    bool operator==(const Position&) const = default;
};

/// Where the search says `wanted` is. Two row cursors do the walking; a candidate that fails below its first
/// row leaves their row numbers advanced, which decides about everything that is found after it.
std::optional<Position> findPicture(const Picture& self, const Picture& wanted);

/// Where `wanted` is first, row by row, found by trying every place.
std::optional<Position> findPictureExhaustively(const Picture& self, const Picture& wanted);

} // namespace reference
