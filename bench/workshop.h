/// \file
/// One host with the plug-in, and the pictures that rows are measured on.
#pragma once

#include "bench/photo.h"
#include "host/host.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace bench
{

/// What a run of the program measures on.
struct Setting
{
    standin::Artefact artefact = standin::Artefact::MacBundle;
    standin::Storage sourceStorage = standin::Storage::GWorld32;
    standin::Storage resultStorage = standin::Storage::GWorld32;
    double hostVersion = 2013.03;
};

/// Pictures of one size, in memory that is reused once it has been touched. Everything is made in the source
/// storage.
class Workshop
{
public:
    Workshop(const Setting& setting, const media::Image& photograph, int width, int height);

    const int width;
    const int height;
    standin::Host host;

    double pixels() const
    {
        return static_cast<double>(width) * height;
    }
    int sourceBytes() const
    {
        return bytesPerPixel(setting.sourceStorage);
    }
    int resultBytes() const
    {
        return bytesPerPixel(setting.resultStorage);
    }

    /// The photograph; kept, so never to be changed.
    const standin::Picture& photo();
    /// The photograph upside down; kept as well.
    const standin::Picture& otherPhoto();
    /// A picture of its own that may be changed.
    standin::Picture photoCopy()
    {
        return photo().clone();
    }
    /// A picture as the plug-in makes them for its results.
    standin::Picture newResult()
    {
        return host.newPicture(width, height, setting.resultStorage);
    }
    /// Another workshop, with a host of another version, which follows this one's limit of lanes.
    std::shared_ptr<Workshop> onHostVersion(double version);
    /// Limits how many pixels the plug-in works on side by side.
    void limitLanes(int lanes);
    /// A part of a picture.
    standin::Picture cropped(const standin::Picture& picture, int left, int top, int partWidth,
                             int partHeight);

    /// A picture whose pixels `shade(x, y)` gives as standin::Pixel.
    template <class Shade>
    standin::Picture paint(int paintedWidth, int paintedHeight, Shade shade)
    {
        standin::Picture picture = host.newPicture(paintedWidth, paintedHeight, setting.sourceStorage);
        for (int y = 0; y < paintedHeight; ++y)
            for (int x = 0; x < paintedWidth; ++x)
                picture.setPixel(x, y, shade(x, y));
        return picture;
    }
    template <class Shade>
    standin::Picture paint(Shade shade)
    {
        return paint(width, height, shade);
    }
    standin::Picture plain(standin::Pixel colour)
    {
        return paint([colour](int, int) { return colour; });
    }

    /// Remembers that a row calls an overload.
    void noteUse(const std::string& method, std::size_t argumentCount)
    {
        used.emplace(method, argumentCount);
        noted.insert(method);
    }
    /// Remembers that a row runs a filter.
    void noteFilter(const std::string& className)
    {
        noted.insert(className);
    }
    /// The names of what has been called or run since this was asked last.
    std::set<std::string> takeNoted()
    {
        return std::exchange(noted, {});
    }
    /// Whether a row calls the overload that is declared so.
    bool uses(const standin::Declaration& declaration) const;

private:
    Setting setting;
    const media::Image& photograph;
    standin::Picture photoPicture;
    standin::Picture otherPhotoPicture;
    std::vector<std::weak_ptr<Workshop>> followers;
    std::set<std::pair<std::string, std::size_t>> used;
    std::set<std::string> noted;
};

} // namespace bench
