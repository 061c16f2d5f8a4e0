#include "bench/photo.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <random>

namespace bench
{

namespace
{

constexpr int channels = 3;

/// Smooth shapes with fine noise: what a photograph is to caches and branch predictors.
media::Image madeUpPhoto()
{
    media::Image image{4000, 3000, channels, {}};
    std::mt19937 random(1);
    std::uniform_int_distribution<int> noise(-6, 6);
    image.bytes.reserve(static_cast<std::size_t>(image.width) * image.height * channels);
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            for (int channel = 0; channel < channels; ++channel)
            {
                const double wave =
                    std::sin(x * 0.004 + channel) + std::cos(y * 0.006 - channel) + std::sin((x + y) * 0.03);
                const int level = 128 + static_cast<int>(40 * wave) + noise(random);
                image.bytes.push_back(static_cast<std::uint8_t>(std::clamp(level, 0, 255)));
            }
    return image;
}

} // namespace

media::Image readPhoto(const std::string& path)
{
    if (path.empty() && !std::filesystem::exists(defaultPhoto))
    {
        std::fprintf(stderr,
                     "%s is missing (Debian package mate-backgrounds): a made-up picture serves instead\n",
                     defaultPhoto);
        return madeUpPhoto();
    }
    return media::readImage(path.empty() ? defaultPhoto : path, channels);
}

} // namespace bench
