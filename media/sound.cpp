#include "media/sound.h"

#include "host/error.h"
#include "media/reader.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace media
{

namespace
{

using namespace std::string_view_literals;

struct Signature
{
    std::string_view name;
    std::size_t place;
    std::string_view text;
};

/// Files that somebody may take for samples, or for the bare bytes of a table.
constexpr std::array signatures{Signature{"FLAC", 0, "fLaC"},
                                Signature{"AIFF", 8, "AIFF"},
                                Signature{"compressed AIFF", 8, "AIFC"},
                                Signature{"Ogg", 0, "OggS"},
                                Signature{"MP3", 0, "ID3"},
                                Signature{"MP3", 0, "\xFF\xFB"},
                                Signature{"MP3", 0, "\xFF\xF3"},
                                Signature{"MPEG-4", 4, "ftyp"},
                                Signature{"Core Audio", 0, "caff"},
                                Signature{"AU", 0, ".snd"},
                                Signature{"WavPack", 0, "wvpk"},
                                Signature{"big-endian WAV", 0, "RIFX"},
                                Signature{"64-bit WAV", 0, "RF64"},
                                Signature{"AVI", 8, "AVI "},
                                Signature{"WebP", 8, "WEBP"},
                                Signature{"PNG", 0, "\x89PNG"},
                                Signature{"JPEG", 0, "\xFF\xD8\xFF"},
                                Signature{"GIF", 0, "GIF8"},
                                Signature{"BMP", 0, "BM"},
                                Signature{"TIFF", 0, "II*\0"sv},
                                Signature{"TIFF", 0, "MM\0*"sv},
                                Signature{"PDF", 0, "%PDF"},
                                Signature{"ZIP", 0, "PK\3\4"},
                                Signature{"gzip", 0, "\x1F\x8B"}};

struct Coding
{
    std::uint16_t number;
    std::string_view name;
};

constexpr std::uint16_t pcm = 1;
constexpr std::uint16_t extensible = 0xFFFE;

constexpr std::array<Coding, 10> codings{{{0x02, "Microsoft ADPCM"},
                                          {0x03, "floating-point numbers"},
                                          {0x06, "A-law"},
                                          {0x07, "mu-law"},
                                          {0x11, "IMA ADPCM"},
                                          {0x31, "GSM 6.10"},
                                          {0x50, "MPEG audio"},
                                          {0x55, "MP3"},
                                          {0xFF, "AAC"},
                                          {0x161, "Windows Media Audio"}}};

std::string nameOf(std::uint16_t coding)
{
    constexpr std::size_t size = 16;
    const auto* const known = std::find_if(codings.begin(), codings.end(),
                                           [&](const Coding& entry) { return entry.number == coding; });
    if (known != codings.end())
        return std::string(known->name);
    std::array<char, size> text{};
    std::snprintf(text.data(), text.size(), "format 0x%04X", static_cast<unsigned>(coding));
    return text.data();
}

/// How a WAV file says that its samples are stored.
struct SampleFormat
{
    explicit SampleFormat(ByteView header)
    {
        constexpr std::size_t betweenCodingAndBits = 12;
        constexpr std::size_t betweenBitsAndSubformat = 8;
        Reader rest(header, std::endian::little);
        coding = rest.number<std::uint16_t>();
        rest.take(betweenCodingAndBits);
        bits = rest.number<std::uint16_t>();
        if (coding != extensible)
            return;
        rest.take(betweenBitsAndSubformat);
        coding = rest.number<std::uint16_t>();
    }

    std::uint16_t coding = 0;
    std::uint16_t bits = 0;
};

/// Samples as the plug-in takes them.
std::vector<std::uint8_t> converted(ByteView stored, std::size_t bytesPerSample)
{
    constexpr std::size_t kept = 2;
    if (bytesPerSample <= kept)
        return {stored.begin(), stored.end()};
    std::vector<std::uint8_t> samples;
    samples.reserve(stored.size() / bytesPerSample * kept);
    for (std::size_t end = bytesPerSample; end <= stored.size(); end += bytesPerSample)
        samples.insert(samples.end(), {stored[end - 2], stored[end - 1]});
    return samples;
}

[[noreturn]] void refuseKind(ByteView file, const std::string& path)
{
    const auto* const known = std::find_if(signatures.begin(), signatures.end(), [&](const Signature& entry) {
        return file.size() >= entry.place && startsWith(file.subspan(entry.place), entry.text);
    });
    throw standin::Error(
        path + ": not a WAV file" + (known == signatures.end() ? "" : " but " + std::string(known->name)) +
        "; bare bytes come from files named .raw, .dat or .bin, or from @raw:FILE in calls and "
        "OpenBlock in programs");
}

/// The bytes that a sample takes.
std::size_t sizeOf(const SampleFormat& format, const std::string& path)
{
    constexpr std::size_t bitsPerByte = 8;
    constexpr std::size_t most = 4;
    if (format.coding != pcm)
        throw standin::Error(path + ": the samples are stored as " + nameOf(format.coding) +
                             "; only PCM can be read");
    const std::size_t size = (format.bits + bitsPerByte - 1) / bitsPerByte;
    if (size == 0 || size > most)
        throw standin::Error(path + ": the samples have " + std::to_string(format.bits) +
                             " bits; only PCM of 8, 16, 24 and 32 bits can be read");
    return size;
}

} // namespace

std::vector<std::uint8_t> samplesOf(std::span<const std::uint8_t> file, const std::string& path)
{
    constexpr std::size_t riffHeaderSize = 12;
    constexpr std::size_t nameSize = 4;
    constexpr std::size_t namePlace = 8;
    if (!startsWith(file, "RIFF") || file.size() < riffHeaderSize ||
        !startsWith(file.subspan(namePlace), "WAVE"))
        refuseKind(file, path);
    SampleFormat format(ByteView{});
    Reader rest(file.subspan(riffHeaderSize), std::endian::little);
    while (!rest.atEnd())
    {
        const ByteView name = rest.take(nameSize);
        const auto size = rest.number<std::uint32_t>();
        const ByteView content = rest.take(size);
        if (startsWith(name, "fmt "))
            format = SampleFormat(content);
        else if (startsWith(name, "data"))
            return converted(content, sizeOf(format, path));
        // Chunks start at even offsets.
        rest.take(size % 2);
    }
    throw standin::Error(path + ": the WAV file holds no samples");
}

} // namespace media
