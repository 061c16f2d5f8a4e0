#pragma once

#include "tests/reference/picture.h"

namespace reference
{

/// Grey by the weights of one colour, coloured by another; both &h00RRGGBB.
Picture tint(const Picture& picture, std::uint32_t greyBase, std::uint32_t sepiaBase);

} // namespace reference
