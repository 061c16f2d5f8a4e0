#pragma once

#include "tests/reference/raw_rows.h"

namespace reference
{

/// CountColorQVR; the top byte of a colour is ignored everywhere.
int countColor(const Picture& source, std::uint32_t colour);
/// ReplaceColorQVR.
Picture replaceColor(const Picture& source, std::uint32_t search, std::uint32_t replacement);
/// ExtractColorQVR.
Picture extractColor(const Picture& source, std::uint32_t search, std::uint32_t replacement,
                     std::uint32_t background);
/// ExtractColorRectangleMaskQVR, by growing rectangles a step at a time; `sourceBytes` are the bytes a pixel
/// of the source's storage.
Picture colorRectangleMask(const Picture& source, Rectangle rectangle, int sourceBytes = 4);

} // namespace reference
