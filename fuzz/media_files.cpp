// Files that users give to the command line: sounds in WAV files of any bytes, images that were written
// before, and what image files of any bytes say of their pictures.
#include "fuzz/expect.h"
#include "fuzz/input.h"
#include "media/image.h"
#include "media/metadata.h"
#include "media/sound.h"

namespace
{

using fuzz::Input;
using standin::Error;

void readSound(Input& input)
{
    const std::span<const std::uint8_t> file = input.remainder();
    fuzz::expect(media::samplesOf(file, "sound.wav").size() <= file.size(), "more samples than bytes");
}

/// What is read of a file before the image library sees it: of any bytes behind any signature.
void readMetadata(Input& input)
{
    const std::span<const std::uint8_t> file = input.remainder();
    const media::Metadata metadata = media::metadataOf(file);
    fuzz::expect(metadata.orientation >= 1 && metadata.orientation <= 8 && metadata.frames >= 1,
                 "metadata that no file can have");
    media::hasSoundTables(file);
}

void checkShape(const media::Image& image)
{
    fuzz::expect(image.width > 0 && image.height > 0 &&
                     image.bytes.size() == static_cast<std::size_t>(image.width) *
                                               static_cast<std::size_t>(image.height) *
                                               static_cast<std::size_t>(image.channels),
                 "an image without the bytes for its size");
}

/// What comes of an image as it was written; `read` may have another number of channels.
void expectSame(const media::Image& written, const media::Image& read)
{
    fuzz::expect(written.width == read.width && written.height == read.height, "the image has another size");
    const auto pixels = static_cast<std::size_t>(written.width) * static_cast<std::size_t>(written.height);
    for (std::size_t pixel = 0; pixel < pixels; ++pixel)
        for (int channel = 0; channel < read.channels; ++channel)
        {
            const auto at = [&](const media::Image& image) {
                return channel < image.channels
                           ? image.bytes[pixel * static_cast<std::size_t>(image.channels) +
                                         static_cast<std::size_t>(channel)]
                           : std::uint8_t{255};
            };
            fuzz::expect(at(written) == at(read), "the image has other pixels");
        }
}

void readImage(Input& input)
{
    const std::string names[] = {"image.png",  "image.bmp", "image.tga", "image.jpg",
                                 "IMAGE.JPEG", "image.ppm", "image.pgm", input.text(input.below(8))};
    constexpr int largestSide = 24;
    const std::string& name = input.oneOf(names);
    const media::Format format = media::formatOf(name);
    media::Image image{input.between(1, largestSide), input.between(1, largestSide), input.between(3, 4), {}};
    const int wantedChannels = input.between(3, 4);
    const bool exact = format != media::Format::jpeg;
    const bool cut = exact && input.byte() % 4 == 1;
    const auto where = input.bits<std::uint16_t>();
    for (int count = image.width * image.height * image.channels; count > 0; --count)
        image.bytes.push_back(input.byte());

    std::vector<std::uint8_t> file = media::encoded(image, format);
    if (cut)
        file.resize(where % file.size());
    const media::Image read = media::decoded(file, name, wantedChannels);
    checkShape(read);
    if (exact && !cut)
        expectSame(media::holdsAlpha(format) ? image : media::channelsOf(image, 0, 3), read);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    try
    {
        const std::uint8_t kind = size == 0 ? 0 : data[0];
        if (kind == 'R')
            readSound(input);
        else if (kind == 0xFF || kind == 0x89 || kind == 'G')
            readMetadata(input);
        else
            readImage(input);
    }
    catch (const Error&)
    {
        // That is how a file is refused.
    }
    return 0;
}
