#pragma once

#include "tests/reference/picture.h"

#include <cstdint>

namespace reference
{

/// ChangeSaturationQVR; products beyond 32 bits wrap.
Picture saturation(const Picture& source, std::int32_t amount);

} // namespace reference
