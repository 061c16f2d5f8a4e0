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

/// Weights in 1024ths.
struct Weights
{
    static int32_t integerOf(double weight)
    {
        return truncateToInt32(weight * 1024.0);
    }

    explicit Weights(const PictureSepiaData& data)
        : red(integerOf(data.weight1)),
          green(integerOf(data.weight2)),
          blue(integerOf(data.weight3))
    {
    }

    bool fit16Bits() const
    {
        const int32_t weights[] = {red, green, blue};
        for (const int32_t weight : weights)
            if (weight < INT16_MIN || weight > INT16_MAX)
                return false;
        return true;
    }

    int32_t red;
    int32_t green;
    int32_t blue;
};

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
    const Weights weights(data);
    const auto redOffset = static_cast<uint32_t>(data.SepiaRed);
    const auto greenOffset = static_cast<uint32_t>(data.SepiaGreen);
    const auto blueOffset = static_cast<uint32_t>(data.SepiaBlue);
    const auto filterWith = [&](auto sumOf) {
        return filterPicture(data.filter, [=](auto pixels) {
            const auto sum = sumOf(pixels);
            // A shift rounds down; negative sums are to be rounded towards zero.
            const auto grey = asWords((sum + (sum >> 31 & 1023)) >> 10);
            return UnclampedChannels{asIntegers(grey + redOffset), asIntegers(grey + greenOffset),
                                     asIntegers(grey + blueOffset)};
        });
    };
    REALpictureStruct* const result =
        weights.fit16Bits()
            ? filterWith([weights](auto pixels) {
                  return pixels.weightedSum(weights.red, weights.green, weights.blue);
              })
            : filterWith([weights](auto pixels) {
                  // As words, since sums and products may wrap.
                  return asIntegers(asWords(pixels.blue()) * static_cast<uint32_t>(weights.blue) +
                                    asWords(pixels.green()) * static_cast<uint32_t>(weights.green) +
                                    asWords(pixels.red()) * static_cast<uint32_t>(weights.red));
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
