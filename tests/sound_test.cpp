// Sounds and bare bytes, as calls and programs take them from files.
#include "media/sound.h"

#include "host/error.h"
#include "tests/support/program.h"
#include "tests/support/small_files.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

namespace
{

using testing::HasSubstr;

std::string chunk(const std::string& name, const std::string& content)
{
    return Bytes()
        .text(name)
        .put(static_cast<std::uint32_t>(content.size()))
        .text(content)
        .zeros(content.size() % 2)
        .content;
}

std::string riff(const std::string& chunks)
{
    return chunk("RIFF", "WAVE" + chunks);
}

Bytes format(std::uint16_t coding, std::uint16_t bits)
{
    constexpr std::uint16_t channels = 1;
    const auto frameSize = static_cast<std::uint16_t>((bits + 7) / 8);
    return Bytes().put(coding).put(channels).words({8000, 8000U * frameSize}).put(frameSize).put(bits);
}

std::string wav(std::uint16_t coding, std::uint16_t bits, const std::string& samples)
{
    return riff(chunk("fmt ", format(coding, bits).content) + chunk("data", samples));
}

/// As programs write it that know more than one layout of channels.
std::string extensibleWav(std::uint16_t coding, std::uint16_t bits, const std::string& samples)
{
    const std::string guid("\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 14);
    const Bytes header =
        format(0xFFFE, bits).put<std::uint16_t>(22).put(bits).words({4}).put(coding).text(guid);
    return riff(chunk("fmt ", header.content) + chunk("fact", "1234") + chunk("data", samples));
}

std::string samplesOf(const std::string& file)
{
    const std::vector<std::uint8_t> bytes(file.begin(), file.end());
    const std::vector<std::uint8_t> samples = media::samplesOf(bytes, "a.wav");
    return {samples.begin(), samples.end()};
}

std::string messageFor(const std::string& file)
{
    try
    {
        samplesOf(file);
    }
    catch (const standin::Error& error)
    {
        return error.what();
    }
    return "";
}

TEST(Sound, SamplesOfAllUncompressedSizesAreTaken)
{
    for (const auto& make : {wav, extensibleWav})
    {
        EXPECT_EQ(samplesOf(make(1, 8, "abcde")), "abcde");
        EXPECT_EQ(samplesOf(make(1, 16, "abcdef")), "abcdef");
        EXPECT_EQ(samplesOf(make(1, 24, "abcdef")), "bcef");
        EXPECT_EQ(samplesOf(make(1, 32, "abcdefgh")), "cdgh");
        EXPECT_EQ(samplesOf(make(1, 20, "abcdefg")), "bcef") << "an incomplete sample is left out";
        EXPECT_EQ(samplesOf(make(1, 12, "abcd")), "abcd");
        EXPECT_EQ(samplesOf(make(1, 16, "")), "");
    }
}

TEST(Sound, OtherChunksAreSkipped)
{
    const std::string header = chunk("fmt ", format(1, 8).content);
    EXPECT_EQ(
        samplesOf(riff(chunk("LIST", "odd") + header + chunk("junk", "") + chunk("data", "abc") + "rest")),
        "abc");
    const std::string cut = riff(header + chunk("data", "abcdef"));
    EXPECT_EQ(samplesOf(cut.substr(0, cut.size() - 2)), "abcd") << "a file that was cut has what is left";
    EXPECT_THAT(messageFor(riff(header)), HasSubstr("a.wav: the WAV file holds no samples"));
    for (std::size_t size = 12; size < 12 + header.size() + 4; ++size)
        EXPECT_NE(messageFor(cut.substr(0, size)), "") << size;
}

TEST(Sound, CompressedSoundsAreRefusedWithTheirNames)
{
    for (const auto& [coding, name] :
         std::vector<std::pair<std::uint16_t, std::string>>{{0x02, "Microsoft ADPCM"},
                                                            {0x03, "floating-point numbers"},
                                                            {0x06, "A-law"},
                                                            {0x07, "mu-law"},
                                                            {0x11, "IMA ADPCM"},
                                                            {0x31, "GSM 6.10"},
                                                            {0x55, "MP3"},
                                                            {0xFF, "AAC"},
                                                            {0x1234, "format 0x1234"}})
        for (const auto& make : {wav, extensibleWav})
            EXPECT_EQ(messageFor(make(coding, 16, "abcd")),
                      "a.wav: the samples are stored as " + name + "; only PCM can be read");
    EXPECT_EQ(messageFor(wav(1, 64, "abcdefgh")),
              "a.wav: the samples have 64 bits; only PCM of 8, 16, 24 and 32 bits can be read");
    EXPECT_THAT(messageFor(wav(1, 0, "abcdefgh")), HasSubstr("have 0 bits"));
}

TEST(Sound, FilesOfOtherKindsAreNamed)
{
    for (const auto& [start, name] :
         std::vector<std::pair<std::string, std::string>>{{"fLaC", "FLAC"},
                                                          {"FORM1234AIFFCOMM", "AIFF"},
                                                          {"FORM1234AIFCCOMM", "compressed AIFF"},
                                                          {"OggS", "Ogg"},
                                                          {"ID3", "MP3"},
                                                          {"\xFF\xFB\x90", "MP3"},
                                                          {"1234ftypM4A ", "MPEG-4"},
                                                          {"RIFF1234WEBP", "WebP"},
                                                          {"\x89PNG\r\n", "PNG"},
                                                          {"\xFF\xD8\xFF\xE0", "JPEG"},
                                                          {"GIF89a", "GIF"}})
        EXPECT_EQ(messageFor(start),
                  "a.wav: not a WAV file but " + name +
                      "; bare bytes come from files named .raw, .dat or .bin, or from @raw:FILE in calls and "
                      "OpenBlock in programs");
    for (const char* unknown : {"", "text", "RIFF", "RIFF1234WAV", "FORM1234AIF"})
        EXPECT_THAT(messageFor(unknown), testing::StartsWith("a.wav: not a WAV file; bare bytes")) << unknown;
}

class SoundFiles : public ProgramTest
{
protected:
    /// Whether a call draws the same as one that takes bare bytes.
    void expectSamples(const std::string& file, const std::string& samples) const
    {
        write("wanted.raw", samples);
        expectSuccess("apply 'RenderSamplesQVR(@wanted.raw, 0, 0, 4, 8, 0)' wanted.png --force");
        expectSuccess("apply 'RenderSamplesQVR(@" + file + ", 0, 0, 4, 8, 0)' got.png --force");
        EXPECT_EQ(contentsOf(folder / "got.png"), contentsOf(folder / "wanted.png")) << file;
    }
};

ON_EVERY_ARTEFACT(SoundFiles);

TEST_P(SoundFiles, BareBytesAreTakenWhereTheyAreAskedFor)
{
    const std::string bytes = "fLaC\x80\xFF\x01\x7F";
    for (const char* name : {"a.raw", "a.DAT", "a.bin", "raw:a.flac"})
    {
        const std::string text = name;
        write(text.substr(text.find(':') + 1), bytes);
        expectSamples(text, bytes);
    }
    write("a.txt", "text");
    expectFailure("apply 'RenderSamplesQVR(@a.flac, 0, 0, 4, 8, 0)' out.png",
                  "a.flac: not a WAV file but FLAC; bare bytes come from files named .raw, .dat or .bin, or "
                  "from @raw:FILE in calls");
    expectFailure("apply 'RenderSamplesQVR(@a.txt, 0, 0, 4, 8, 0)' out.png", "a.txt: not a WAV file;");
    expectFailure("apply 'ReplaceRedChannelQVR(@raw:got.png)' got.png out.png", "@raw: gives bytes");
    write("wave", wav(1, 24,
                      "a\x80"
                      "ab\xFF"
                      "bc\x01"
                      "c"));
    write("numbered", bytes);
    expectSuccess(
        "apply 'RenderSamplesQVR(@1, 0, 0, 4, 8, 0, &c000000, &cFFFFFF, &c000000, 15)' wave got.png --force");
    expectSuccess("apply 'RenderSamplesQVR(@raw:1, 0, 0, 4, 8, 0)' numbered got.png --force");
    EXPECT_EQ(contentsOf(folder / "got.png"), contentsOf(folder / "wanted.png"));
}

TEST_P(SoundFiles, ProgramsOpenSamplesAndBytes)
{
    write("a.wav", wav(1, 24, "abcdef"));
    write("a.flac", "fLaC1");
    write("a.bas", "Print OpenSamples(\"a.wav\").StringValue(0, 4)\n"
                   "Print OpenBlock(\"a.flac\").StringValue(0, 5)\n"
                   "Print Str(OpenBlock(GetFolderItem(\"a.wav\")).Size)\n");
    expectSuccess("run a.bas", "bcef\nfLaC1\n50\n");
    write("b.bas", "Print OpenSamples(\"a.flac\").Size\n");
    const Outcome result = run("run b.bas");
    EXPECT_EQ(result.code, failure);
    EXPECT_THAT(result.errors, HasSubstr("a.flac: not a WAV file but FLAC"));
}

} // namespace
