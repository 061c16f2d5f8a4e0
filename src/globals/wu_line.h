/// \file
/// An anti-aliased line, drawn into locked pixels.
#pragma once

#include "editor/picture_editor.h"

namespace qvr::waveform
{

/// The colour of lines, each channel 0 to 255; one for the whole process.
extern int32_t gOutLineColorR;
extern int32_t gOutLineColorG;
extern int32_t gOutLineColorB;

/// Draws a line one pixel wide from (x0, y0) to (x1, y1) (Wu's algorithm with a 16-bit error accumulator).
/// Pixels outside the picture are left out.
void DrawWuLine(PictureWriter& writer, int32_t x0, int32_t y0, int32_t x1, int32_t y1);

/// Blends the line's colour into one pixel; weight 0 is the line's colour alone, 255 the pixel's. Outside the
/// picture nothing happens.
void DrawPixel(PictureWriter& writer, int32_t x, int32_t y, int32_t weight);

} // namespace qvr::waveform
