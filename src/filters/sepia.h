/// \file
/// The class `PictureSepiaQVR`: a weighted grey level and an offset for each channel.
#pragma once

#include "filters/filter_data.h"

namespace qvr::sepia
{

/// The instance data; zero-filled by the host before the constructor runs.
struct PictureSepiaData
{
    double weight1; ///< of red; "FactorRed"
    double weight2; ///< of green; "FactorBlue", deliberately crosswise
    double weight3; ///< of blue; "FactorGreen", deliberately crosswise
    FilterData filter;
    int32_t SepiaRed;
    int32_t SepiaGreen;
    int32_t SepiaBlue;
    int32_t unused;
};

static_assert(offsetof(PictureSepiaData, filter) == 24);
static_assert(offsetof(PictureSepiaData, SepiaRed) == 48);
static_assert(offsetof(PictureSepiaData, SepiaGreen) == 52);
static_assert(offsetof(PictureSepiaData, SepiaBlue) == 56);
static_assert(sizeof(PictureSepiaData) == 64);

/// The class record; the host keeps its address and writes into it.
extern REALclassDefinition pictureSepiaClass;

/// Sets the weights 0.299, 0.587 and 0.114.
void PictureSepiaClassConstructor(REALobjectStruct* self);

/// Releases both pictures; "Close" too. Calling it again is harmless.
void PictureSepiaClassDestructor(REALobjectStruct* self);

/// Makes "DestinationPicture" from "SourcePicture": grey = (B * w3 + G * w2 + R * w1) / 1024 with the weights
/// times 1024, in 32-bit integers that wrap, plus "SepiaRed", "SepiaGreen" or "SepiaBlue", clamped to 0 to
/// 255.
///
/// False, with "DestinationPicture" as it was, when the source is nil or cannot be opened, when a side is not
/// 1 to 32767, or when the host cannot make the result. A picture that was there before is deliberately not
/// released.
signed char Run(REALobjectStruct* self);

/// The three weights, by the channel they multiply: any double is kept and given back. `parameter` is the
/// word that the host passes on from the property's row; it plays no part here.
double GetFactorR(REALobjectStruct* self, long parameter);
void SetFactorR(REALobjectStruct* self, long parameter, double value);
double GetFactorG(REALobjectStruct* self, long parameter);
void SetFactorG(REALobjectStruct* self, long parameter, double value);
double GetFactorB(REALobjectStruct* self, long parameter);
void SetFactorB(REALobjectStruct* self, long parameter, double value);

} // namespace qvr::sepia
