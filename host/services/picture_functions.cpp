#include "host/services/host_functions.h"

#include "host/services/service_call.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace standin
{

namespace
{

/// "The whole source" as size argument of DrawPicture.
constexpr std::int32_t wholeSource = -10000;

/// Description type of a picture that is no GWorld, towards the lock that does not ask for a type.
constexpr std::int32_t otherDescriptionType = 0;

/// Hosts before this version want an unlock after a lock that failed, too.
constexpr double firstStrictVersion = 2012.0;

constexpr int largestSide = 32767;

REALpictureStruct* pictureHandle(PictureObject* picture)
{
    return picture == nullptr ? nullptr : static_cast<REALpictureStruct*>(picture->handle());
}

void describe(PictureObject& picture, std::int32_t type, void* data, REALpictureDescription& description)
{
    // What the plug-in must not read is set to something.
    constexpr std::uint8_t notForReading = 0xEE;
    std::memset(&description, notForReading, sizeof description);
    description.type = picture.quirks.descriptionType.value_or(type);
    description.data = picture.quirks.nullData ? nullptr : data;
    description.width = picture.describedWidth();
    description.height = picture.describedHeight();
}

/// A range of whole numbers, its end excluded.
struct Span
{
    std::int64_t begin;
    std::int64_t end;
};

void fillRectangle(PictureObject& picture, Span columns, Span rows, Pixel pixel)
{
    const std::int64_t left = std::max<std::int64_t>(columns.begin, 0);
    const std::int64_t right = std::min<std::int64_t>(columns.end, picture.width);
    const std::int64_t top = std::max<std::int64_t>(rows.begin, 0);
    const std::int64_t bottom = std::min<std::int64_t>(rows.end, picture.height);
    for (std::int64_t y = top; y < bottom; ++y)
        for (std::int64_t x = left; x < right; ++x)
            storePixel(picture.storage, picture.at(static_cast<int>(x), static_cast<int>(y)), pixel);
}

/// `distance * step / steps` to the nearest whole number, halves away from zero; none of them takes more than
/// 32 bits.
std::int64_t partOf(std::int64_t distance, std::int64_t step, std::int64_t steps)
{
    if (steps == 0)
        return 0;
    const auto divisor = static_cast<std::uint64_t>(steps);
    const std::uint64_t product =
        static_cast<std::uint64_t>(std::abs(distance)) * static_cast<std::uint64_t>(step);
    const auto part = static_cast<std::int64_t>((product + divisor / 2) / divisor);
    return distance < 0 ? -part : part;
}

} // namespace

REALpictureStruct* newPicture(Core& core, std::int32_t width, std::int32_t height, std::int32_t depth)
{
    constexpr std::int32_t wantedDepth = 32;
    if (depth != wantedDepth)
        core.fault("newPicture: depth " + std::to_string(depth) + " was asked");
    if (width < 1 || height < 1 || width > largestSide || height > largestSide)
        return nullptr;
    PictureObject* picture = core.makePicture(width, height, core.options.storageOfNewPictures());
    if (picture != nullptr)
        picture->quirks = core.newPictureQuirks;
    return pictureHandle(picture);
}

REALgraphicsStruct* pictureGraphics(Core& core, REALpictureStruct* picture)
{
    auto* object = core.expect<PictureObject>(picture, "pluginPictureGraphicsGetter");
    return object == nullptr ? nullptr
                             : static_cast<REALgraphicsStruct*>(core.makeGraphics(*object).handle());
}

void lockDescription(Core& core, REALpictureStruct* picture, REALpictureDescription* description)
{
    auto* object = core.expect<PictureObject>(picture, "lockPictureDescription");
    if (object == nullptr)
        return;
    const bool gworld = traitsOf(object->storage).access == Access::GWorld;
    describe(*object, gworld ? static_cast<std::int32_t>(pictureGWorldPtr) : otherDescriptionType,
             gworld ? &object->gworld : nullptr, *description);
    if (description->type == pictureGWorldPtr)
        ++object->locks;
    else
        ++object->looseLocks;
}

bool lockDescriptionOfType(Core& core, REALpictureStruct* picture, REALpictureDescription* description,
                           std::int32_t type)
{
    auto* object = core.expect<PictureObject>(picture, "REALLockPictureDescription");
    if (object == nullptr)
        return false;
    if (traitsOf(object->storage).access != Access::Bitmap || object->quirks.lockFails ||
        type != pictureMemoryBitmap)
        return failToLock(core, picture, description, type);
    describe(*object, type, object->rows.bitmapWords(), *description);
    ++object->locks;
    return true;
}

bool failToLock(Core& core, REALpictureStruct* picture, REALpictureDescription*, std::int32_t)
{
    auto* object = core.lookUpAs<PictureObject>(picture);
    if (object != nullptr && core.options.version < firstStrictVersion)
        ++object->failedLocks;
    return false;
}

void unlockDescription(Core& core, REALpictureStruct* picture)
{
    auto* object = core.expect<PictureObject>(picture, "unlockPictureDescription");
    if (object == nullptr)
        return;
    if (object->failedLocks > 0)
        --object->failedLocks;
    else if (object->locks > 0)
        --object->locks;
    else if (object->looseLocks > 0)
        --object->looseLocks;
    else
        core.fault("unlockPictureDescription: " + object->name() + " is not locked");
}

void clearCache(Core& core, REALpictureStruct* picture)
{
    if (auto* object = core.expect<PictureObject>(picture, "REALPictureClearCache"))
        ++object->cacheClears;
}

REALpictureStruct* pictureFromBuffer(Core& core, std::int32_t width, std::int32_t height,
                                     std::int32_t pixelType, void* buffer, std::int32_t rowBytes)
{
    constexpr std::int32_t bgrxType = 1;
    if (pixelType != bgrxType || buffer == nullptr)
        return nullptr;
    PictureObject* picture = core.makePicture(width, height, core.options.storageOfNewPictures());
    if (picture == nullptr)
        return nullptr;
    for (int y = 0; y < height; ++y)
    {
        const std::uint8_t* source =
            static_cast<const std::uint8_t*>(buffer) + static_cast<std::ptrdiff_t>(y) * rowBytes;
        for (int x = 0; x < width; ++x, source += bytesPerPixel(Storage::Bitmap))
        {
            Pixel pixel = loadPixel(Storage::Bitmap, source);
            pixel.alpha = traitsOf(picture->storage).opaqueAlpha;
            storePixel(picture->storage, picture->at(x, y), pixel);
        }
    }
    return pictureHandle(picture);
}

REALpictureStruct* pictureMask(Core& core, REALpictureStruct* picture, bool create)
{
    auto* object = core.expect<PictureObject>(picture, "REALGetPictureMask");
    if (object == nullptr)
        return nullptr;
    if (object->mask == nullptr)
    {
        if (!create)
            return nullptr;
        object->mask = core.makePicture(object->width, object->height, object->storage);
        if (object->mask == nullptr)
            return nullptr;
        object->mask->held = 1;
    }
    core.retain(*object->mask);
    return pictureHandle(object->mask);
}

void drawLine(Core& core, REALgraphicsStruct* graphics, std::int32_t x1, std::int32_t y1, std::int32_t x2,
              std::int32_t y2)
{
    const auto* object = core.expect<GraphicsObject>(graphics, "RuntimeGraphicsDrawLine");
    if (object == nullptr)
        return;
    PictureObject& picture = *object->picture;
    const Pixel colour{static_cast<std::uint8_t>(object->foreColour >> 16),
                       static_cast<std::uint8_t>(object->foreColour >> 8),
                       static_cast<std::uint8_t>(object->foreColour), traitsOf(picture.storage).opaqueAlpha};

    // One step a pixel along the longer side; only those steps are taken that can touch the picture, since a
    // line may be as long as integers go.
    const std::int64_t dx = static_cast<std::int64_t>(x2) - x1;
    const std::int64_t dy = static_cast<std::int64_t>(y2) - y1;
    const bool steep = std::abs(dy) > std::abs(dx);
    const std::int64_t steps = std::max(std::abs(dx), std::abs(dy));
    const std::int64_t direction = (steep ? dy : dx) < 0 ? -1 : 1;
    const std::int64_t start = steep ? y1 : x1;
    const std::int64_t pen = steep ? object->penHeight : object->penWidth;
    const std::int64_t extent = steep ? picture.height : picture.width;
    const std::int64_t toLow = (-pen - start) * direction;
    const std::int64_t toHigh = (extent - start) * direction;
    const std::int64_t first = std::max<std::int64_t>(std::min(toLow, toHigh), 0);
    const std::int64_t last = std::min(std::max(toLow, toHigh), steps);
    for (std::int64_t step = first; step <= last; ++step)
    {
        const std::int64_t x = x1 + partOf(dx, step, steps);
        const std::int64_t y = y1 + partOf(dy, step, steps);
        fillRectangle(picture, {x, x + object->penWidth}, {y, y + object->penHeight}, colour);
    }
}

void drawPicture(Core& core, REALgraphicsStruct* graphics, REALpictureStruct* image, std::int32_t x,
                 std::int32_t y, std::int32_t w, std::int32_t h, std::int32_t sx, std::int32_t sy,
                 std::int32_t sw, std::int32_t sh)
{
    const auto* object = core.expect<GraphicsObject>(graphics, "DrawPicture");
    const auto* source = core.expect<PictureObject>(image, "DrawPicture");
    if (object == nullptr || source == nullptr)
        return;
    const PictureObject& target = *object->picture;
    const std::int64_t sourceWidth = sw == wholeSource ? source->width : sw;
    const std::int64_t sourceHeight = sh == wholeSource ? source->height : sh;
    for (int row = std::max(y, 0); row < target.height && row - static_cast<std::int64_t>(y) < h; ++row)
        for (int column = std::max(x, 0); column < target.width && column - static_cast<std::int64_t>(x) < w;
             ++column)
        {
            const std::int64_t fromX = sx + (column - static_cast<std::int64_t>(x)) * sourceWidth / w;
            const std::int64_t fromY = sy + (row - static_cast<std::int64_t>(y)) * sourceHeight / h;
            if (fromX < 0 || fromY < 0 || fromX >= source->width || fromY >= source->height)
                continue;
            Pixel pixel =
                loadPixel(source->storage, source->at(static_cast<int>(fromX), static_cast<int>(fromY)));
            pixel.alpha = traitsOf(target.storage).opaqueAlpha;
            storePixel(target.storage, target.at(column, row), pixel);
        }
}

} // namespace standin
