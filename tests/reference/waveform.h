#pragma once

#include "tests/reference/picture.h"

#include <optional>
#include <span>
#include <vector>

namespace reference
{

/// The arguments of the waveform method, with the defaults of its declaration. Colours are &h00RRGGBB.
struct WaveformSettings
{
    int sampleCount = 0;
    int smooth = 1;
    int width = 0;
    int height = 0;
    int outlineWidth = 0;
    std::uint32_t backColour = 0x88B5C4;
    std::uint32_t foreColour = 0x274C5A;
    std::uint32_t outlineColour = 0x203F4E;
    int bits = 8;
    bool autoScale = false;
};

/// A line that the host is to draw.
struct HostLine
{
    int x1 = 0;
    int y1 = 0;
    int x2 = 0;
    int y2 = 0;
};

struct Waveform
{
    Picture picture;             ///< without the lines that the host draws
    std::vector<HostLine> lines; ///< drawn by the host, for outlines wider than 1
    int emptyColumns = 0;        ///< columns that no sample fell into
};

/// What the method draws; nothing where it gives nil. A block shorter than the given count gives nil.
std::optional<Waveform> renderWaveform(std::span<const std::uint8_t> samples,
                                       const WaveformSettings& settings);

} // namespace reference
