#include "tests/reference/colour_statistics.h"

namespace reference
{

void countColors(const Picture& picture, Histograms& histograms)
{
    histograms.count = 0;
    for (int y = 0; y < picture.height; ++y)
    {
        for (int x = 0; x < picture.width; ++x)
        {
            const Pixel& pixel = picture.at(x, y);
            ++histograms.declaredRed[pixel.red];
            ++histograms.declaredBlue[pixel.green];
            ++histograms.declaredGreen[pixel.blue];
        }
        histograms.count += picture.width;
    }
}

Picture transformColors(const Picture& picture, const LevelTable& red, const LevelTable& green,
                        const LevelTable& blue)
{
    Picture result{picture.width, picture.height};
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
        {
            const Pixel& pixel = picture.at(x, y);
            result.at(x, y) = {red[pixel.red], green[pixel.green], blue[pixel.blue]};
        }
    return result;
}

} // namespace reference
