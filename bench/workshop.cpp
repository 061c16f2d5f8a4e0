#include "bench/workshop.h"

#include <algorithm>
#include <cstring>

namespace bench
{

namespace
{

standin::Options hostOptions(const Setting& setting)
{
    standin::Options options;
    options.artefact = setting.artefact;
    // Bitmaps are what hosts without a desktop lock.
    options.kind =
        setting.sourceStorage == standin::Storage::Bitmap ? standin::Kind::Console : standin::Kind::Desktop;
    options.version = setting.hostVersion;
    options.newPictureStorage = setting.resultStorage;
    options.memory = standin::Memory::Pooled;
    options.padding = 0;
    options.logCalls = false;
    return options;
}

} // namespace

Workshop::Workshop(const Setting& chosen, const media::Image& photographToUse, int pictureWidth,
                   int pictureHeight)
    : width(pictureWidth),
      height(pictureHeight),
      host(hostOptions(chosen)),
      setting(chosen),
      photograph(photographToUse)
{
}

void Workshop::limitLanes(int lanes)
{
    std::int32_t* limit = host.pluginVariable("qvrLaneLimit");
    if (limit == nullptr)
        throw standin::Error("this build of the plug-in has no switch for its lanes");
    *limit = lanes;
    for (const std::weak_ptr<Workshop>& follower : followers)
        if (const std::shared_ptr<Workshop> workshop = follower.lock())
            workshop->limitLanes(lanes);
}

const standin::Picture& Workshop::photo()
{
    if (photoPicture.isNil())
    {
        photoPicture = host.newPicture(width, height, setting.sourceStorage);
        photoPicture.setRgb(media::scaled(photograph, width, height).bytes);
    }
    return photoPicture;
}

const standin::Picture& Workshop::otherPhoto()
{
    if (otherPhotoPicture.isNil())
    {
        otherPhotoPicture = photoCopy();
        for (int y = 0; y < height; ++y)
            std::memcpy(otherPhotoPicture.row(y), photo().row(height - 1 - y),
                        static_cast<std::size_t>(width) * sourceBytes());
    }
    return otherPhotoPicture;
}

std::shared_ptr<Workshop> Workshop::onHostVersion(double version)
{
    Setting changed = setting;
    changed.hostVersion = version;
    auto workshop = std::make_shared<Workshop>(changed, photograph, width, height);
    followers.push_back(workshop);
    return workshop;
}

bool Workshop::uses(const standin::Declaration& declaration) const
{
    const auto fits = [&](const std::pair<std::string, std::size_t>& use) {
        const auto& parameters = declaration.parameters;
        return standin::sameName(use.first, declaration.name) && use.second <= parameters.size() &&
               std::all_of(
                   parameters.begin() + static_cast<std::ptrdiff_t>(use.second), parameters.end(),
                   [](const standin::Parameter& parameter) { return parameter.defaultValue.has_value(); });
    };
    return std::any_of(used.begin(), used.end(), fits);
}

standin::Picture Workshop::cropped(const standin::Picture& picture, int left, int top, int partWidth,
                                   int partHeight)
{
    return paint(partWidth, partHeight, [&](int x, int y) { return picture.pixel(left + x, top + y); });
}

} // namespace bench
