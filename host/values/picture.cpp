#include "host/values/picture.h"

#include "host/core/core.h"
#include "host/error.h"

#include <cstring>

namespace standin
{

namespace
{

constexpr std::size_t rgbSize = 3;
constexpr std::size_t rgbaSize = 4;

/// Walks over all pixels together with packed tuples of `tupleSize` bytes.
template <class Byte, class Visit>
void forEachPacked(const PictureObject& picture, std::span<Byte> packed, std::size_t tupleSize, Visit visit)
{
    const auto pixels = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    if (packed.size() != pixels * tupleSize)
        throw Error("a picture of " + sizeText(picture.width, picture.height) + " has " +
                    std::to_string(pixels * tupleSize) + " bytes, not " + std::to_string(packed.size()));
    Byte* tuple = packed.data();
    for (int y = 0; y < picture.height; ++y)
    {
        std::uint8_t* bytes = picture.rows.row(y);
        for (int x = 0; x < picture.width; ++x, tuple += tupleSize, bytes += bytesPerPixel(picture.storage))
            visit(bytes, tuple);
    }
}

std::string pixelText(Pixel pixel)
{
    return "(" + std::to_string(pixel.red) + ", " + std::to_string(pixel.green) + ", " +
           std::to_string(pixel.blue) + "; alpha " + std::to_string(pixel.alpha) + ")";
}

} // namespace

std::string sizeText(int width, int height)
{
    return std::to_string(width) + " x " + std::to_string(height);
}

PictureObject& Picture::picture() const
{
    return static_cast<PictureObject&>(object());
}

int Picture::width() const
{
    return picture().width;
}

int Picture::height() const
{
    return picture().height;
}

Storage Picture::storage() const
{
    return picture().storage;
}

int Picture::bytesPerPixel() const
{
    return standin::bytesPerPixel(picture().storage);
}

int Picture::rowBytes() const
{
    return picture().rows.rowBytes();
}

std::uint8_t* Picture::row(int y)
{
    if (y < 0 || y >= height())
        throw Error("a picture of " + sizeText(width(), height()) + " has no row " + std::to_string(y));
    return picture().rows.row(y);
}

const std::uint8_t* Picture::row(int y) const
{
    return Picture(*this).row(y);
}

std::uint8_t* Picture::bytesAt(int x, int y) const
{
    if (x < 0 || y < 0 || x >= width() || y >= height())
        throw Error("a picture of " + sizeText(width(), height()) + " has no pixel (" + std::to_string(x) +
                    ", " + std::to_string(y) + ")");
    return picture().at(x, y);
}

Pixel Picture::pixel(int x, int y) const
{
    return loadPixel(storage(), bytesAt(x, y));
}

void Picture::setPixel(int x, int y, Pixel pixel)
{
    storePixel(storage(), bytesAt(x, y), pixel);
}

void Picture::fill(Pixel pixel)
{
    for (int y = 0; y < height(); ++y)
        for (int x = 0; x < width(); ++x)
            storePixel(storage(), picture().at(x, y), pixel);
}

void Picture::setRgb(std::span<const std::uint8_t> rgb)
{
    const Storage kind = storage();
    forEachPacked(picture(), rgb, rgbSize, [kind](std::uint8_t* bytes, const std::uint8_t* tuple) {
        storePixel(kind, bytes, {tuple[0], tuple[1], tuple[2], traitsOf(kind).opaqueAlpha});
    });
}

void Picture::setRgba(std::span<const std::uint8_t> rgba)
{
    const Storage kind = storage();
    forEachPacked(picture(), rgba, rgbaSize, [kind](std::uint8_t* bytes, const std::uint8_t* tuple) {
        storePixel(kind, bytes, {tuple[0], tuple[1], tuple[2], tuple[3]});
    });
}

std::vector<std::uint8_t> Picture::packed(std::size_t tupleSize) const
{
    std::vector<std::uint8_t> result(static_cast<std::size_t>(width()) * static_cast<std::size_t>(height()) *
                                     tupleSize);
    const Storage kind = storage();
    forEachPacked(picture(), std::span(result), tupleSize,
                  [kind, tupleSize](const std::uint8_t* bytes, std::uint8_t* tuple) {
                      const Pixel pixel = loadPixel(kind, bytes);
                      tuple[0] = pixel.red;
                      tuple[1] = pixel.green;
                      tuple[2] = pixel.blue;
                      if (tupleSize == rgbaSize)
                          tuple[3] = pixel.alpha;
                  });
    return result;
}

std::vector<std::uint8_t> Picture::rgb() const
{
    return packed(rgbSize);
}

std::vector<std::uint8_t> Picture::rgba() const
{
    return packed(rgbaSize);
}

Picture Picture::clone() const
{
    PictureObject* copy = core->makePicture(width(), height(), storage());
    if (copy == nullptr)
        throw Error("no memory for a copy of a picture of " + sizeText(width(), height()));
    for (int y = 0; y < height(); ++y)
        std::memcpy(copy->rows.row(y), picture().rows.row(y),
                    static_cast<std::size_t>(width() * bytesPerPixel()));
    return core->adopt<Picture>(copy);
}

Picture Picture::mask() const
{
    return core->wrap<Picture>(picture().mask);
}

void Picture::setMask(const Picture& mask)
{
    PictureObject& newMask = mask.picture();
    core->retainHeld(newMask);
    removeMask();
    picture().mask = &newMask;
}

void Picture::removeMask()
{
    if (PictureObject* old = std::exchange(picture().mask, nullptr))
        core->releaseHeld(*old);
}

int Picture::cacheClears() const
{
    return picture().cacheClears;
}

bool Picture::paddingIntact() const
{
    return picture().rows.intact();
}

PictureQuirks& Picture::quirks()
{
    return picture().quirks;
}

std::uint32_t* Picture::bitmapWords()
{
    std::uint32_t* words = picture().rows.bitmapWords();
    if (words == nullptr)
        throw Error("only pictures kept as bitmaps have a bitmap record");
    return words;
}

std::string PixelDifference::describe() const
{
    return std::to_string(count) + " pixels differ, first at (" + std::to_string(x) + ", " +
           std::to_string(y) + "): wanted " + pixelText(wanted) + ", got " + pixelText(got);
}

std::optional<PixelDifference> firstDifference(const Picture& wanted, const Picture& got, Compare compare)
{
    if (wanted.width() != got.width() || wanted.height() != got.height())
        throw Error("pictures of " + sizeText(wanted.width(), wanted.height()) + " and " +
                    sizeText(got.width(), got.height()) + " cannot be compared");
    std::optional<PixelDifference> first;
    for (int y = 0; y < wanted.height(); ++y)
        for (int x = 0; x < wanted.width(); ++x)
        {
            Pixel a = wanted.pixel(x, y);
            Pixel b = got.pixel(x, y);
            if (compare == Compare::Colours)
                a.alpha = b.alpha = 0;
            if (a == b)
                continue;
            if (!first)
                first = PixelDifference{x, y, wanted.pixel(x, y), got.pixel(x, y), 0};
            ++first->count;
        }
    return first;
}

bool sameColours(const Picture& a, const Picture& b)
{
    return a.width() == b.width() && a.height() == b.height() && !firstDifference(a, b);
}

} // namespace standin
