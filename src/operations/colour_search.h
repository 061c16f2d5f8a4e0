/// \file
/// Pixels of one exact colour, and the coloured areas of a picture.
///
/// Colours are &h00RRGGBB; their top byte is ignored, as are the alpha and spare bytes of pixels. There is no
/// tolerance. Where a picture is returned it is new and opaque and one reference is the caller's; null when
/// the picture cannot be opened, when a side is not 1 to 32767, or when the host cannot make the result.
#pragma once

#include "abi/host_abi.h"

namespace qvr::colourSearch
{

/// The number of pixels of that colour; 0 when the picture cannot be opened.
int32_t CountColorQVR(REALpictureStruct* picture, uint32_t colour);

/// The picture with every pixel of colour `search` turned into `replacement`.
REALpictureStruct* ReplaceColorQVR(REALpictureStruct* picture, uint32_t search, uint32_t replacement);

/// `replacement` where the picture has colour `search`, `background` everywhere else.
REALpictureStruct* ExtractColorQVR(REALpictureStruct* picture, uint32_t search, uint32_t replacement,
                                   uint32_t background);

/// A mask of the picture's size, black in the bounding rectangles of coloured areas and white elsewhere.
///
/// Coloured is a pixel whose channels are not all equal. Areas are found from the top, left to right; each
/// grows by the rows above and below and the columns left and right that hold coloured pixels still
/// unclaimed, until none does. A negative width or height means the picture's. The rows looked at are the
/// picture's first ones, whatever `top` is; they are placed from row `top` on. Null also when the working
/// memory cannot be had.
REALpictureStruct* ExtractColorRectangleMaskQVR(REALpictureStruct* picture, int32_t left, int32_t top,
                                                int32_t width, int32_t height);

/// The same for the whole picture.
REALpictureStruct* ExtractColorRectangleMaskQVR2(REALpictureStruct* picture);

} // namespace qvr::colourSearch
