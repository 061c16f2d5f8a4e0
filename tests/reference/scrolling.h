#pragma once

#include "tests/reference/picture.h"

namespace reference
{

/// Moves the rows down (a negative delta: up); what leaves at an edge comes back at the other one.
Picture rotateVertically(const Picture& picture, int delta);
/// Moves the columns to the right (a negative delta: to the left), likewise.
Picture rotateHorizontally(const Picture& picture, int delta);

} // namespace reference
