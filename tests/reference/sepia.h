#pragma once

#include "tests/reference/filter_block.h"

namespace reference
{

struct SepiaSettings
{
    double redWeight = 0.299;
    double greenWeight = 0.587;
    double blueWeight = 0.114;
    int sepiaRed = 0;
    int sepiaGreen = 0;
    int sepiaBlue = 0;
    FilterRectangle rectangle;
};

/// `result`, a picture of the source's size as the host makes it, with the computed block in it.
Picture sepia(const Picture& source, const SepiaSettings& settings, Picture result);

} // namespace reference
