#pragma once

#include "tests/reference/picture.h"

namespace reference
{

/// The rotation that a delta means: congruent to it modulo `size`, above minus half of it and at most `size`
/// minus half. `size` is at least 1.
int rotationShift(int delta, int size);

/// What leaves at the bottom (a negative delta: at the top) comes back at the other edge.
Picture rotateVertically(const Picture& picture, int delta);
/// What leaves at the right (a negative delta: at the left) comes back at the other edge.
Picture rotateHorizontally(const Picture& picture, int delta);

} // namespace reference
