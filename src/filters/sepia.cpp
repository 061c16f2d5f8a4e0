#include "filters/sepia.h"

#include "filters/filter.h"

namespace qvr::sepia
{

namespace
{

PictureSepiaData& dataOf(REALobjectStruct* self)
{
    return instanceData<PictureSepiaData>(self, pictureSepiaClass);
}

/// A weight in 1024ths.
uint32_t integerWeight(double weight)
{
    return static_cast<uint32_t>(truncateToInt32(weight * 1024.0));
}

} // namespace

void PictureSepiaClassConstructor(REALobjectStruct* self)
{
    PictureSepiaData& data = dataOf(self);
    data.weight1 = 0.299;
    data.weight2 = 0.587;
    data.weight3 = 0.114;
}

void PictureSepiaClassDestructor(REALobjectStruct* self)
{
    releasePictures(dataOf(self).filter);
}

signed char Run(REALobjectStruct* self)
{
    PictureSepiaData& data = dataOf(self);
    const uint32_t redWeight = integerWeight(data.weight1);
    const uint32_t greenWeight = integerWeight(data.weight2);
    const uint32_t blueWeight = integerWeight(data.weight3);
    const auto redOffset = static_cast<uint32_t>(data.SepiaRed);
    const auto greenOffset = static_cast<uint32_t>(data.SepiaGreen);
    const auto blueOffset = static_cast<uint32_t>(data.SepiaBlue);

    REALpictureStruct* const result = filterPicture(data.filter, [=](auto pixels) {
        using Words = decltype(pixels.words);
        using Integers = decltype(pixels.red());
        // Unsigned, since sums and products may wrap.
        const auto sum = reinterpret_cast<Integers>(reinterpret_cast<Words>(pixels.blue()) * blueWeight +
                                                    reinterpret_cast<Words>(pixels.green()) * greenWeight +
                                                    reinterpret_cast<Words>(pixels.red()) * redWeight);
        // A shift rounds down; negative sums are to be rounded towards zero.
        const auto grey = reinterpret_cast<Words>((sum + ((sum >> 31) & 1023)) >> 10);
        return UnclampedChannels{reinterpret_cast<Integers>(grey + redOffset),
                                 reinterpret_cast<Integers>(grey + greenOffset),
                                 reinterpret_cast<Integers>(grey + blueOffset)};
    });
    if (result == nullptr)
        return 0;
    // The picture that was here is overwritten and not released; kept as it is.
    data.filter.DestinationPicture = result;
    return 1;
}

double GetFactorR(REALobjectStruct* self, long)
{
    return dataOf(self).weight1;
}

void SetFactorR(REALobjectStruct* self, long, double value)
{
    dataOf(self).weight1 = value;
}

double GetFactorG(REALobjectStruct* self, long)
{
    return dataOf(self).weight2;
}

void SetFactorG(REALobjectStruct* self, long, double value)
{
    dataOf(self).weight2 = value;
}

double GetFactorB(REALobjectStruct* self, long)
{
    return dataOf(self).weight3;
}

void SetFactorB(REALobjectStruct* self, long, double value)
{
    dataOf(self).weight3 = value;
}

} // namespace qvr::sepia
