#pragma once

#include "tests/reference/raw_rows.h"

namespace reference
{

/// isBlackQVR, isWhiteQVR and isGrayQVR; `sourceBytes` are the bytes a pixel of the source's storage.
bool isBlack(const Picture& source, Rectangle rectangle, int sourceBytes = 4);
bool isWhite(const Picture& source, Rectangle rectangle, int sourceBytes = 4);
bool isGray(const Picture& source, std::int32_t tolerance, Rectangle rectangle, int sourceBytes = 4);

/// ColornessQVR.
double colorness(const Picture& source, std::int32_t threshold);

} // namespace reference
