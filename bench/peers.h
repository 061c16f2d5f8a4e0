/// \file
/// What the fastest well-known libraries reach at the same work, measured once on two 3.2 GHz cores with
/// AVX2, one thread, a 4000 x 3000 photo-like picture, 64-bit builds. They are a goal to look at, good to
/// about 15 %, and decide nothing.
#pragma once

#include <string_view>

namespace bench
{

struct Peer
{
    std::string_view work;
    std::string_view fastest;
    double best;     ///< Mpixel/s (Msamples/s), often on 3 bytes a pixel or on planes
    double fourByte; ///< Mpixel/s of the fastest one on 4 bytes a pixel
};

inline constexpr Peer peers[] = {
    {"invert", "OpenCV", 4032, 3241},
    {"linear", "OpenCV, float, rounded", 2027, 1519},
    {"saturation", "OpenCV", 1561, 244},
    {"all black", "numpy", 3224, 3224},
    {"all white", "numpy", 4084, 4084},
    {"is grey", "GraphicsMagick", 1467, 714},
    {"count one colour", "numpy", 3987, 1075},
    {"replace one colour", "numpy", 1346, 1346},
    {"histograms", "Pillow", 711, 711},
    {"tables", "FFmpeg", 879, 637},
    {"replace a channel", "FFmpeg, planes", 3727, 1297},
    {"combine channels", "FFmpeg, planes", 3649, 814},
    {"maximum of two", "OpenCV", 2993, 2180},
    {"alpha to grey", "OpenCV", 1679, 1679},
    {"grey to alpha", "OpenCV", 2684, 2684},
    {"rotate rows", "std::rotate", 4484, 4484},
    {"rotate columns", "FFmpeg", 3400, 2878},
    {"find in photograph", "memmem and check", 3377, 3377},
    {"find in blank", "OpenCV and memcmp", 19, 19},
    {"pack", "OpenCV", 3544, 3544},
    {"unpack", "FFmpeg", 3600, 2301},
    {"tint", "OpenCV", 1554, 302},
    {"sepia", "OpenCV, inexact", 1560, 246},
    {"3D table", "FFmpeg, float", 34, 34},
    {"waveform", "numpy", 8953, 8953},
    {"rectangles in blobs", "OpenCV", 925, 925},
    {"rectangles of pixels", "OpenCV", 627, 627},
};

/// The peer for a kind of work. A misspelt name does not compile.
consteval const Peer* peer(std::string_view work)
{
    for (const Peer& candidate : peers)
        if (candidate.work == work)
            return &candidate;
    throw "no such peer";
}

} // namespace bench
