/// \file
/// Brightness and contrast: one formula in double precision for each channel c (0 to 255) of every pixel.
///
/// Contrast k spreads a channel around the pivot 127: `(c - 127) * (k + 1) + 127`. An absolute brightness m
/// is added; a linear one moves the channel towards 255 (m up to 255) or towards 0 (m down to -255). Any
/// double is accepted. The value is truncated toward zero and clamped to 0 to 255; what does not fit a 32-bit
/// integer, and NaN, ends as 0.
///
/// All of these return a new opaque picture of the same size, one reference of which is the caller's; null
/// when the picture cannot be opened, when a side is not 1 to 32767, or when the host cannot make the result.
#pragma once

#include "abi/host_abi.h"

namespace qvr::brightnessContrast
{

/// Contrast, then linear brightness.
REALpictureStruct* ContrastLinBrightnessPicture3(REALpictureStruct* picture, double contrastRed,
                                                 double contrastGreen, double contrastBlue,
                                                 double brightnessRed, double brightnessGreen,
                                                 double brightnessBlue);
REALpictureStruct* ContrastLinBrightnessPicture1(REALpictureStruct* picture, double contrast,
                                                 double brightness);

/// Contrast, then absolute brightness.
REALpictureStruct* ContrastAbsBrightnessPicture3(REALpictureStruct* picture, double contrastRed,
                                                 double contrastGreen, double contrastBlue,
                                                 double brightnessRed, double brightnessGreen,
                                                 double brightnessBlue);
REALpictureStruct* ContrastAbsBrightnessPicture1(REALpictureStruct* picture, double contrast,
                                                 double brightness);

/// Absolute brightness: `c + m`.
REALpictureStruct* AbsBrightnessPicture3(REALpictureStruct* picture, double brightnessRed,
                                         double brightnessGreen, double brightnessBlue);
REALpictureStruct* AbsBrightnessPicture1(REALpictureStruct* picture, double brightness);

/// Linear brightness. It alone is not clamped: the low 8 bits are kept, so a brightness beyond -255 to 255
/// wraps.
REALpictureStruct* LinBrightnessPicture3(REALpictureStruct* picture, double brightnessRed,
                                         double brightnessGreen, double brightnessBlue);
REALpictureStruct* LinBrightnessPicture1(REALpictureStruct* picture, double brightness);

/// Contrast alone.
REALpictureStruct* ContrastPicture3(REALpictureStruct* picture, double contrastRed, double contrastGreen,
                                    double contrastBlue);
REALpictureStruct* ContrastPicture1(REALpictureStruct* picture, double contrast);

/// Any straight line: `c * a + b`.
REALpictureStruct* TransformPicture(REALpictureStruct* picture, double a, double b);

} // namespace qvr::brightnessContrast
