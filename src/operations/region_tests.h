/// \file
/// Read-only tests of a picture or a rectangle of it.
///
/// In the rectangle a negative width or height means the picture's, 0 makes it empty; what lies outside the
/// picture is not looked at. An empty rectangle passes every test. A picture that cannot be opened passes
/// none. Alpha plays no part.
#pragma once

#include "abi/host_abi.h"

namespace qvr::regionTests
{

/// Whether every pixel is (0, 0, 0).
signed char isBlack(REALpictureStruct* picture, int32_t left, int32_t top, int32_t width, int32_t height);
signed char isBlack2(REALpictureStruct* picture);

/// Whether every pixel is (255, 255, 255).
signed char isWhite(REALpictureStruct* picture, int32_t left, int32_t top, int32_t width, int32_t height);
signed char isWhite2(REALpictureStruct* picture);

/// Whether in every pixel no two channels differ by more than the magnitude of `tolerance`.
signed char isGray(REALpictureStruct* picture, int32_t tolerance, int32_t left, int32_t top, int32_t width,
                   int32_t height);
signed char isGray2(REALpictureStruct* picture, int32_t tolerance);

/// The share (0 to 1) of coloured pixels: those whose green differs from red or blue by more than
/// `threshold`, and which are not near black (all channels at most 29). The difference of red and blue is not
/// looked at.
///
/// The denominator counts all pixels. 0 when the picture cannot be opened.
double ColornessQVR(REALpictureStruct* picture, int32_t threshold);

} // namespace qvr::regionTests
