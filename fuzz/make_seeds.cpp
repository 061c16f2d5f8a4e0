// Writes the inputs from which the fuzzers start: fuzz_seeds FOLDER makes a folder in it for each target.
// They follow the order in which the targets read their decisions, so they are made anew whenever the targets
// change.
#include "fuzz/fuzz_host.h"
#include "host/file.h"
#include "media/image.h"
#include "tests/reference/binary_string.h"
#include "tests/support/small_files.h"

#include <filesystem>
#include <iostream>
#include <random>

namespace
{

/// One folder of seeds.
class Seeds
{
public:
    Seeds(const std::filesystem::path& root, const std::string& target) : folder(root / target)
    {
        std::filesystem::create_directories(folder);
    }

    void add(const std::string& content)
    {
        const std::string name = "seed" + std::to_string(count++);
        standin::writeFile(folder / name,
                           {reinterpret_cast<const std::uint8_t*>(content.data()), content.size()});
    }
    void add(const Bytes& bytes)
    {
        add(bytes.content);
    }

private:
    std::filesystem::path folder;
    int count = 0;
};

/// The decisions of a `fuzz::FuzzHost`: kind, version, padding, stack, storage, loops.
void putHost(Bytes& bytes, int kind, int loops)
{
    bytes.bytes({kind, 0, 0, 0, 0, loops});
}

void addBinaryStrings(const std::filesystem::path& root)
{
    Seeds seeds(root, "binary_string");
    for (const int kind : {0, 1, 2})
        for (const int side : {1, 5})
        {
            Bytes bytes;
            putHost(bytes, kind, side % 4);
            bytes.bytes({0, 0});
            bytes.text(reference::toBinaryString({side + 12, side, {1, 2, 3}}));
            seeds.add(bytes);
        }
}

void addWaveforms(const std::filesystem::path& root)
{
    Seeds seeds(root, "waveform");
    std::minstd_rand random(1);
    for (int format = 0; format < 4; ++format)
        for (const int outline : {20, 21, 23})
        {
            // A rare format is chosen by the first byte; small numbers are those after 20.
            Bytes bytes;
            bytes.bytes({0, format, outline, 21 + format, format % 2});
            bytes.words({0x88B5C4, 0x274C5A, 0x203F4E});
            bytes.bytes({60, 50, 20 + 10 * format});
            putHost(bytes, format % 3, format);
            for (int i = 0; i < 200; ++i)
                bytes.put(static_cast<std::uint8_t>(random()));
            seeds.add(bytes);
        }
}

/// A host, four pictures and three blocks, and then one method again and again with any arguments.
void addPrograms(const std::filesystem::path& root)
{
    constexpr int methods = 45;
    constexpr int calls = 6;
    constexpr int argumentBytes = 14;
    constexpr std::uint32_t firstByteOfFault = 192;
    Seeds seeds(root, "programs");
    std::minstd_rand random(2);
    for (int method = 0; method < methods; ++method)
    {
        Bytes bytes;
        bytes.bytes({0});
        putHost(bytes, method % 3, method % 4);
        for (int picture = 0; picture < 4; ++picture)
            bytes.bytes({0, 0, 12 - picture, 3, picture, picture, method, picture});
        bytes.bytes({0, 1, 1, 2, 0, 3, 0});
        for (int call = 0; call < calls; ++call)
        {
            bytes.bytes({0, method, call});
            for (int argument = 0; argument < argumentBytes; ++argument)
                bytes.bytes({static_cast<int>(random() % firstByteOfFault)});
        }
        seeds.add(bytes);
    }
}

void addTexts(const std::filesystem::path& root)
{
    Seeds seeds(root, "texts");
    const fuzz::Input none(nullptr, 0);
    fuzz::Input input = none;
    const fuzz::FuzzHost host(input);
    constexpr int declaration = 0;
    constexpr int call = 1;
    constexpr int program = 2;
    const auto addRows = [&](const std::vector<standin::RegisteredMethod>& rows) {
        for (const standin::RegisteredMethod& row : rows)
            seeds.add(Bytes().bytes({declaration}).text(row.text));
    };
    addRows(host.registered().globals);
    for (const standin::RegisteredClass& extension : host.registered().extensions)
        addRows(extension.methods);
    for (const char* text :
         {"BinaryStringtoPictureQVR(\"PP\"\"IC\")", "PicturetoBinaryStringQVR(@p.ng)",
          "CombinePicturesQVR(nil, @\"a b\", @c)", "MergePictureQVR(nil,nil).InvertQVR(1, 1, 2, 2)",
          "TintPictureQVR(@p, &c88B5C4, &hFF0000)", "ColornessQVR", "ScrollVerticalQVR(-3, true, false)",
          "FindPictureQVR(@p, x, y)", "CountColorsQVR(r, b, g, n)", "photo.EmbeddedMaskQVR(false) = @mask",
          "photo.InvertQVR.ChangeContrastQVR(0.3)", "ReplaceRedChannelQVR(photo.InvertQVR)"})
        seeds.add(Bytes().bytes({call}).text(text));
    for (const char* text :
         {"Dim p As New Picture(3, 2, 32)\np.RGBSurface.Pixel(2, 1) = &c102030\nPrint p.InvertQVR.Width",
          "Dim a, b As Integer = 7 ' c\nFor i As Integer = 1 To 9 Step 2\nIf i = 3 Then Continue\na = a + "
          "i\nNext",
          "Dim m As New MemoryBlock(8)\nDim u As UInt32 = &hFFFFFFFF\nm.UInt32Value(4) = u\nPrint m.Byte(7)",
          "Dim s As String = \"a\"\nWhile Len(s) < 9\ns = s + Str(1.5 / 3)\nWend // end",
          "Do Until True\nLoop Until Not False Or 3 \\ 2 = 1\nIf 1 > 2 Then\nElseIf 2 Mod 2 = 0 "
          "Then\nElse\nEnd If",
          "Dim f As New PictureSepiaQVR\nf.SepiaRed = 40\nf.SourcePicture = New Picture(2, 2)\nPrint f.Run\n"
          "Call f.DestinationPicture.isGrayQVR(9)",
          "Dim r, b, g As MemoryBlock\nDim n As Integer\nDim p As New Picture(2, 2)\np.CountColorsQVR(r, b, "
          "g, n)"})
        seeds.add(Bytes().bytes({program}).text(text));
}

void addFiles(const std::filesystem::path& root)
{
    Seeds seeds(root, "media_files");
    const Bytes format =
        Bytes().put<std::uint16_t>(1).put<std::uint16_t>(1).words({8000, 16000}).words({0x100002});
    const Bytes samples = Bytes().text("abcdefg");
    const auto chunk = [](const char* name, const Bytes& content) {
        return Bytes()
            .text(name)
            .put(static_cast<std::uint32_t>(content.content.size()))
            .text(content.content);
    };
    const std::string sound = Bytes()
                                  .text(chunk("fmt ", format).content)
                                  .text(chunk("LIST", Bytes().text("odd")).zeros(1).content)
                                  .text(chunk("data", samples).content)
                                  .content;
    seeds.add(chunk("RIFF", Bytes().text("WAVE").text(sound)));
    seeds.add(Bytes()
                  .bytes({0xFF, 0xD8, 0xFF, 0xE1, 0, 34})
                  .text("Exif")
                  .zeros(2)
                  .text("II*")
                  .zeros(1)
                  .words({8})
                  .put<std::uint16_t>(1)
                  .put<std::uint16_t>(0x112)
                  .put<std::uint16_t>(3)
                  .words({1, 6, 0})
                  .bytes({0xFF, 0xC4, 0, 20, 0, 1})
                  .zeros(16)
                  .bytes({0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0, 7, 0xFF, 0xD9}));
    seeds.add(Bytes()
                  .bytes({0x89})
                  .text("PNG\r\n\x1A\n")
                  .zeros(3)
                  .bytes({8})
                  .text("acTL")
                  .zeros(3)
                  .bytes({2})
                  .zeros(8));
    seeds.add(Bytes()
                  .text("GIF89a")
                  .bytes({1, 0, 1, 0, 0x80, 0, 0})
                  .zeros(6)
                  .bytes({0x2C})
                  .zeros(4)
                  .bytes({1, 0, 1, 0, 0, 2, 1, 1, 0, 0x3B}));
    for (int image = 0; image < 12; ++image)
        seeds.add(Bytes()
                      .bytes({0, image % 7, 4 + image, 3 + image % 4, image % 2, image / 2 % 2, image % 3})
                      .put<std::uint16_t>(37)
                      .text("any bytes are pixels"));
}

void addLoaders(const std::filesystem::path& root)
{
    Seeds seeds(root, "loaders");
    seeds.add(smallBundle());
    seeds.add(smallSharedObject());
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try
    {
        if (argumentCount != 2)
            throw standin::Error("usage: fuzz_seeds FOLDER");
        const std::filesystem::path root = arguments[1];
        addBinaryStrings(root);
        addFiles(root);
        addLoaders(root);
        addPrograms(root);
        addTexts(root);
        addWaveforms(root);
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << "\n";
        return 1;
    }
    return 0;
}
