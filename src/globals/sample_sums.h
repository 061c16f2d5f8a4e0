/// \file
/// Sums over audio samples, at memory speed.
#pragma once

#include <stdint.h>

namespace qvr::waveform
{

/// The sums of some samples, as 32-bit integers that wrap.
struct SampleSums
{
    int32_t positive; ///< of the samples that are 0 or greater
    int32_t negative; ///< of the others
};

/// How samples lie in memory, little-endian.
enum class SampleFormat : uint8_t
{
    Signed8,
    Unsigned8, ///< the value is the byte minus 128
    Signed16,
    Unsigned16, ///< the value is the word minus 32768
};

/// Sums the samples from `first` to before `end`.
SampleSums sumSamples(SampleFormat format, const uint8_t* samples, int32_t first, int32_t end);

} // namespace qvr::waveform
