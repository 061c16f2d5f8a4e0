#pragma once

#include "host/values/reference.h"
#include "host/values/storage.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace standin
{

/// "3 x 2".
std::string sizeText(int width, int height);

/// Ways in which a picture can be broken towards the plug-in; all off at first.
struct PictureQuirks
{
    bool lockFails = false;             ///< the three-argument lock gives false
    bool nullData = false;              ///< the description's data pointer (GWorld or bitmap) is null
    bool nullPixMap = false;            ///< GetGWorldPixMap gives null
    bool lockPixelsFails = false;       ///< LockPixels gives false
    bool nullBaseAddress = false;       ///< GetPixBaseAddr gives null
    bool noSizeProperties = false;      ///< "Width" and "Height" cannot be read
    std::optional<int> depth;           ///< what GetPixDepth says instead of the truth
    std::optional<int> descriptionType; ///< type written into the description instead of the true one
    std::optional<int> describedWidth;  ///< width written into the description and given as "Width"
    std::optional<int> describedHeight; ///< height written into the description and given as "Height"
};

/// A host picture with direct access to its pixels; owns a reference. Coordinates outside of the picture
/// throw Error.
class Picture : public Reference
{
public:
    Picture() = default;

    int width() const;
    int height() const;
    Storage storage() const;
    int bytesPerPixel() const;
    /// Bytes from one row to the next; for Bitmap, whose rows lie apart, width times 4.
    int rowBytes() const;

    Pixel pixel(int x, int y) const;
    void setPixel(int x, int y, Pixel pixel);
    /// The bytes of row `y` as the plug-in sees them, width() * bytesPerPixel() of them.
    std::uint8_t* row(int y);
    const std::uint8_t* row(int y) const;
    void fill(Pixel pixel);
    /// Sets all pixels from packed rows of R, G, B; alpha becomes what the plug-in's writers put there (255
    /// in A, 0 in X).
    void setRgb(std::span<const std::uint8_t> rgb);
    /// Sets all pixels from packed rows of R, G, B, A; A is stored as it is.
    void setRgba(std::span<const std::uint8_t> rgba);
    std::vector<std::uint8_t> rgb() const;
    std::vector<std::uint8_t> rgba() const;
    /// A new picture of the same size and storage with the same bytes, without mask.
    Picture clone() const;

    /// The mask, or nil.
    Picture mask() const;
    void setMask(const Picture& mask);
    void removeMask();

    /// How often the plug-in asked the host to drop this picture's cached rendering.
    int cacheClears() const;
    /// Whether no byte outside of the rows' pixels was written (guard pages catch what lies further out at
    /// once).
    bool paddingIntact() const;
    /// How this picture misbehaves; write to it.
    PictureQuirks& quirks();
    /// The 1808 words behind a description of type 10 (storage Bitmap only), to break them on purpose.
    std::uint32_t* bitmapWords();

private:
    friend class Core;
    using Reference::Reference;

    PictureObject& picture() const;
    std::uint8_t* bytesAt(int x, int y) const;
    std::vector<std::uint8_t> packed(std::size_t tupleSize) const;
};

/// The first place where two pictures differ.
struct PixelDifference
{
    int x = 0;
    int y = 0;
    Pixel wanted;
    Pixel got;
    int count = 0; ///< number of differing pixels

    std::string describe() const;
};

enum class Compare
{
    Colours,         ///< red, green and blue
    ColoursAndAlpha, ///< the spare byte too
};

/// Compares pixel by pixel, whatever the storages; nothing when all are the same. Throws Error when sizes
/// differ.
std::optional<PixelDifference> firstDifference(const Picture& wanted, const Picture& got,
                                               Compare compare = Compare::Colours);
/// Same size and same red, green and blue everywhere.
bool sameColours(const Picture& a, const Picture& b);

} // namespace standin
