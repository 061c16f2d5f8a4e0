#include "bench/photo.h"

#include "host/error.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>

#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Weverything"
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_JPEG
#define STBI_ONLY_PNG
#include <stb_image.h>
#define STB_IMAGE_RESIZE_STATIC
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#include <stb_image_resize.h>
#pragma clang diagnostic pop

namespace bench
{

namespace
{

constexpr int channels = 3;

/// Smooth shapes with fine noise: what a photograph is to caches and branch predictors.
RgbImage madeUpPhoto()
{
    RgbImage image{4000, 3000, {}};
    std::mt19937 random(1);
    std::uniform_int_distribution<int> noise(-6, 6);
    image.rgb.reserve(static_cast<std::size_t>(image.width) * image.height * channels);
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            for (int channel = 0; channel < channels; ++channel)
            {
                const double wave =
                    std::sin(x * 0.004 + channel) + std::cos(y * 0.006 - channel) + std::sin((x + y) * 0.03);
                const int level = 128 + static_cast<int>(40 * wave) + noise(random);
                image.rgb.push_back(static_cast<std::uint8_t>(std::clamp(level, 0, 255)));
            }
    return image;
}

} // namespace

RgbImage readPhoto(const std::string& path)
{
    if (path.empty() && !std::filesystem::exists(defaultPhoto))
    {
        std::fprintf(stderr,
                     "%s is missing (Debian package mate-backgrounds): a made-up picture serves instead\n",
                     defaultPhoto);
        return madeUpPhoto();
    }
    const std::string file = path.empty() ? defaultPhoto : path;
    RgbImage image;
    int fileChannels = 0;
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(
        stbi_load(file.c_str(), &image.width, &image.height, &fileChannels, channels), stbi_image_free);
    if (!pixels)
        throw standin::Error(file + ": " + stbi_failure_reason());
    image.rgb.assign(pixels.get(),
                     pixels.get() + static_cast<std::size_t>(image.width) * image.height * channels);
    return image;
}

RgbImage scaled(const RgbImage& image, int width, int height)
{
    if (width == image.width && height == image.height)
        return image;
    RgbImage result{width, height, {}};
    result.rgb.resize(static_cast<std::size_t>(width) * height * channels);
    if (stbir_resize_uint8(image.rgb.data(), image.width, image.height, 0, result.rgb.data(), width, height,
                           0, channels) == 0)
        throw standin::Error("no memory to scale the photograph");
    return result;
}

} // namespace bench
