#include "media/metadata.h"

#include <array>
#include <numeric>

namespace media
{

namespace
{

using namespace std::string_view_literals;

constexpr std::string_view pngSignature = "\x89PNG\r\n\x1A\n";
constexpr std::uint32_t mostFrames = 1U << 30;

/// The orientation in EXIF data, which are built like a TIFF file.
int orientationIn(ByteView exif)
{
    constexpr std::size_t signatureSize = 4;
    constexpr std::uint16_t orientationTag = 0x0112;
    constexpr std::uint16_t shortType = 3;
    constexpr int last = 8;
    const bool lowFirst = startsWith(exif, "II*\0"sv);
    if (!lowFirst && !startsWith(exif, "MM\0*"sv))
        return 1;
    const std::endian order = lowFirst ? std::endian::little : std::endian::big;
    Reader header(exif.subspan(signatureSize), order);
    const auto place = header.number<std::uint32_t>();
    Reader directory(exif.subspan(std::min<std::size_t>(place, exif.size())), order);
    for (int entries = directory.number<std::uint16_t>(); entries > 0 && !directory.atEnd(); --entries)
    {
        const auto tag = directory.number<std::uint16_t>();
        const auto type = directory.number<std::uint16_t>();
        directory.number<std::uint32_t>();
        const auto value = directory.number<std::uint16_t>();
        directory.number<std::uint16_t>();
        if (tag == orientationTag && type == shortType)
            return value >= 1 && value <= last ? value : 1;
    }
    return 1;
}

namespace marker
{
constexpr std::uint8_t fill = 0xFF;
constexpr std::uint8_t progressiveFrame = 0xC2;
constexpr std::uint8_t huffmanTables = 0xC4;
constexpr std::uint8_t firstRestart = 0xD0;
constexpr std::uint8_t lastRestart = 0xD7;
constexpr std::uint8_t start = 0xD8;
constexpr std::uint8_t end = 0xD9;
constexpr std::uint8_t scan = 0xDA;
constexpr std::uint8_t exif = 0xE1;
} // namespace marker

/// What follows on a JPEG file's start, before which the decoder skips bytes that only fill; of other files
/// nothing.
ByteView segmentsOf(ByteView file)
{
    const auto start =
        std::find_if(file.begin(), file.end(), [](std::uint8_t byte) { return byte != marker::fill; });
    if (start == file.begin() || start == file.end() || *start != marker::start)
        return {};
    return file.subspan(static_cast<std::size_t>(start - file.begin()) + 1);
}

/// Visits the segments of a JPEG file until there are no more, or the visitor gives false.
template <class Visit>
void forEachSegment(ByteView segments, Visit visit)
{
    constexpr std::size_t lengthSize = 2;
    Reader rest(segments, std::endian::big);
    for (;;)
    {
        // Between segments lie the coded pixels, in which a marker's first byte is followed by 0.
        const ByteView left = rest.remainder();
        rest.take(static_cast<std::size_t>(std::find(left.begin(), left.end(), marker::fill) - left.begin()));
        std::uint8_t kind = marker::fill;
        while (kind == marker::fill && !rest.atEnd())
            kind = rest.byte();
        if (rest.atEnd() || kind == marker::end)
            return;
        if (kind == 0 || (kind >= marker::firstRestart && kind <= marker::lastRestart))
            continue;
        const std::size_t length = std::max<std::size_t>(rest.number<std::uint16_t>(), lengthSize);
        if (!visit(kind, rest.take(length - lengthSize)))
            return;
    }
}

/// Visits the chunks of a PNG file.
template <class Visit>
void forEachChunk(ByteView file, Visit visit)
{
    constexpr std::size_t nameSize = 4;
    constexpr std::size_t checksumSize = 4;
    Reader rest(file.subspan(pngSignature.size()), std::endian::big);
    while (!rest.atEnd())
    {
        const auto length = rest.number<std::uint32_t>();
        const ByteView name = rest.take(nameSize);
        visit(std::string_view(reinterpret_cast<const char*>(name.data()), name.size()), rest.take(length));
        rest.take(checksumSize);
    }
}

Metadata jpegMetadata(ByteView segments)
{
    constexpr std::string_view name = "Exif\0\0"sv;
    Metadata metadata;
    forEachSegment(segments, [&](std::uint8_t kind, ByteView content) {
        if (kind != marker::exif || !startsWith(content, name))
            return kind != marker::scan;
        metadata.orientation = orientationIn(content.subspan(name.size()));
        return false;
    });
    return metadata;
}

Metadata pngMetadata(ByteView file)
{
    Metadata metadata;
    std::uint32_t animated = 0;
    bool imageSeen = false;
    bool imageIsAnimated = false;
    forEachChunk(file, [&](std::string_view name, ByteView content) {
        if (name == "eXIf")
            metadata.orientation = orientationIn(content);
        else if (name == "acTL" && !imageSeen)
            animated = Reader(content, std::endian::big).number<std::uint32_t>();
        else if (name == "fcTL" && !imageSeen)
            imageIsAnimated = true;
        else if (name == "IDAT")
            imageSeen = true;
    });
    if (animated != 0)
        metadata.frames = static_cast<int>(std::min(animated, mostFrames)) + (imageIsAnimated ? 0 : 1);
    return metadata;
}

/// Takes the colour table of a GIF file that the flags announce, if any.
void takeColours(Reader& rest, std::uint8_t flags)
{
    constexpr std::uint8_t hasTable = 0x80;
    constexpr std::uint8_t sizeMask = 7;
    constexpr std::size_t colourSize = 3;
    if ((flags & hasTable) != 0)
        rest.take(colourSize << ((flags & sizeMask) + 1));
}

void takeBlocks(Reader& rest)
{
    while (const std::uint8_t size = rest.byte())
        rest.take(size);
}

Metadata gifMetadata(ByteView file)
{
    constexpr std::size_t beforeFlags = 10;
    constexpr std::size_t behindFlags = 2;
    constexpr std::size_t placeSize = 8;
    constexpr std::uint8_t extension = 0x21;
    constexpr std::uint8_t image = 0x2C;
    Reader rest(file, std::endian::little);
    rest.take(beforeFlags);
    const std::uint8_t flags = rest.byte();
    rest.take(behindFlags);
    takeColours(rest, flags);
    int frames = 0;
    for (std::uint8_t kind = rest.byte(); kind == extension || kind == image; kind = rest.byte())
    {
        if (kind == image)
        {
            ++frames;
            rest.take(placeSize);
            takeColours(rest, rest.byte());
        }
        rest.byte();
        takeBlocks(rest);
    }
    return {1, std::max(frames, 1)};
}

/// What the scans of a JPEG file are decoded with.
class CodeTables
{
public:
    /// Takes a segment of definitions; false when it cannot be decoded.
    bool define(ByteView segment)
    {
        constexpr std::size_t lengths = 16;
        constexpr std::size_t largest = 256;
        Reader rest(segment, std::endian::big);
        while (!rest.atEnd())
        {
            known[rest.byte()] = true;
            const ByteView counts = rest.take(lengths);
            const std::size_t symbols = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
            if (counts.size() != lengths || symbols > largest || rest.take(symbols).size() != symbols)
                return false;
        }
        return true;
    }

    /// Whether all is there that the scan with this header refers to.
    bool suffice(ByteView scan, bool progressive) const
    {
        constexpr int bitsPerClass = 4;
        constexpr std::uint8_t numberMask = 0xF;
        constexpr std::uint8_t alternating = 0x10;
        Reader rest(scan, std::endian::big);
        const ByteView components = rest.take(2U * rest.byte());
        const bool fromStart = rest.byte() == 0;
        for (std::size_t index = 1; index < components.size(); index += 2)
        {
            const bool direct = known[components[index] >> bitsPerClass];
            const bool others = known[alternating | (components[index] & numberMask)];
            if ((!direct && (fromStart || !progressive)) || (!others && !(fromStart && progressive)))
                return false;
        }
        return true;
    }

private:
    std::array<bool, 256> known{}; ///< by class and number
};

} // namespace

Metadata metadataOf(ByteView file)
{
    if (startsWith(file, pngSignature))
        return pngMetadata(file);
    if (startsWith(file, "GIF8"))
        return gifMetadata(file);
    return jpegMetadata(segmentsOf(file));
}

bool hasSoundTables(ByteView file)
{
    CodeTables tables;
    bool progressive = false;
    bool sound = true;
    forEachSegment(segmentsOf(file), [&](std::uint8_t kind, ByteView content) {
        if (kind == marker::progressiveFrame)
            progressive = true;
        else if (kind == marker::huffmanTables)
            sound = tables.define(content);
        else if (kind == marker::scan)
            sound = tables.suffice(content, progressive);
        return sound;
    });
    return sound;
}

} // namespace media
