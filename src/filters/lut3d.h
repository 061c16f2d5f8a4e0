/// \file
/// The class `PictureLut3DQVR`: colours mapped through a cube of nodes by tetrahedral interpolation.
#pragma once

#include "filters/filter_data.h"

namespace qvr::lut3d
{

/// Nodes along an axis of the cube. A level v lies between the nodes v / 17 and v / 17 + 1, so the last two
/// are never used.
constexpr uint32_t cubeNodes = 18;
constexpr uint32_t cubeComponents = 3;

/// The instance data; zero-filled by the host.
struct Lut3DClassData
{
    FilterData filter;
    /// Output levels (0 to 255, but any double is kept) by node of red, green and blue; components red,
    /// green, blue.
    double cube[cubeNodes][cubeNodes][cubeNodes][cubeComponents];
};

static_assert(offsetof(Lut3DClassData, filter) == 0);
static_assert(offsetof(Lut3DClassData, cube) == 24);
static_assert(sizeof(Lut3DClassData) == 139992);

/// The class record; the host keeps its address and writes into it.
extern REALclassDefinition pictureLut3DClass;

/// Does nothing: the cube starts as zeros, which make every pixel black.
void Lut3DClassConstructor(REALobjectStruct* self);

/// Releases both pictures; "Close" too. The cube and the rectangle stay.
void Lut3DClassDestructor(REALobjectStruct* self);

/// Makes "DestinationPicture" from "SourcePicture" and the cube; the picture that was there is released
/// first.
///
/// False, with "DestinationPicture" nil, when the source is nil or cannot be opened, when a side is not 1 to
/// 32767, or when the host cannot make the result.
signed char Run(REALobjectStruct* self);

/// Component `x` (0 to 2) of the node (r, g, b) (each 0 to 17); outside that reading gives 0 and writing does
/// nothing.
double GetPMX(REALobjectStruct* self, uint32_t r, uint32_t g, uint32_t b, uint32_t x);
void SetPMX(REALobjectStruct* self, uint32_t r, uint32_t g, uint32_t b, uint32_t x, double value);

} // namespace qvr::lut3d
