#include "globals/tinting.h"

#include "editor/real_lanes.h"
#include "editor/walks.h"

namespace qvr::tinting
{

namespace
{

/// A colour's channels as weights from 0 to 1.
struct Weights
{
    explicit Weights(uint32_t colour)
        : red(redOf(colour) / 255.0),
          green(greenOf(colour) / 255.0),
          blue(blueOf(colour) / 255.0)
    {
    }
    double red;
    double green;
    double blue;
};

} // namespace

REALpictureStruct* TintPicture(REALpictureStruct* source, uint32_t greyBase, uint32_t sepiaBase)
{
    const Weights greyWeights(greyBase);
    const Weights tint(sepiaBase);
    return mapPicture(source, [greyWeights, tint](auto pixels) {
        const auto grey =
            (toDoubles(pixels.red()) * greyWeights.red + toDoubles(pixels.green()) * greyWeights.green) +
            toDoubles(pixels.blue()) * greyWeights.blue;
        // At most three times 255, and never negative.
        return UnclampedChannels{truncateFitting(grey * tint.red), truncateFitting(grey * tint.green),
                                 truncateFitting(grey * tint.blue)};
    });
}

} // namespace qvr::tinting
