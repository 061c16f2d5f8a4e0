// The program as its users meet it: what it prints, what it writes, and how it ends.
#include "media/image.h"
#include "tests/support/program.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "build_info.h"

namespace
{

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string bigEndian(std::uint32_t number)
{
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> shift);
    return bytes;
}

/// A picture in the plug-in's binary string format, which the program turns from and into image files.
std::string binaryString(int width, int height, const std::vector<Rgb>& pixels)
{
    constexpr std::uint32_t headerSize = 40;
    std::string bytes;
    for (const Rgb& pixel : pixels)
        bytes.append(pixel.begin(), pixel.end());
    const auto total = headerSize + static_cast<std::uint32_t>(bytes.size());
    return "PPIC" + bigEndian(total) + bigEndian(static_cast<std::uint32_t>(width)) +
           bigEndian(static_cast<std::uint32_t>(height)) + bigEndian(32) + bigEndian(headerSize) +
           std::string(16, '\0') + bytes;
}

class Cli : public ProgramTest
{
protected:
    void SetUp() override
    {
        write("photo.tga", tga(2, 2, photo));
    }

    /// Compares an image file's pixels, as the plug-in itself packs them, and makes room for the next one.
    void expectPixels(const std::string& file, int width, int height, const std::vector<Rgb>& pixels) const
    {
        expectSuccess("apply 'PicturetoBinaryStringQVR(@1)' " + file + " packed.bin");
        EXPECT_EQ(contentsOf(folder / "packed.bin"), binaryString(width, height, pixels)) << file;
        for (const std::string& seen : {file, std::string("packed.bin")})
            fs::remove(folder / seen);
    }

    const std::vector<Rgb> photo{{10, 20, 30}, {200, 100, 50}, {0, 0, 0}, {255, 255, 255}};
    const std::vector<Rgb> negative{{245, 235, 225}, {55, 155, 205}, {255, 255, 255}, {0, 0, 0}};
};

ON_EVERY_ARTEFACT(Cli);

/// "39 methods".
std::string counted(std::size_t number, const std::string& what)
{
    return std::to_string(number) + " " + what;
}

TEST_P(Cli, OptionsThatCanBeRepeatedLeaveTheFilesAlone)
{
    expectSuccess("filter PictureSepiaQVR --set SepiaRed=40 --set SepiaGreen=20 photo.tga first.png");
    expectSuccess("filter PictureSepiaQVR photo.tga second.png --set SepiaRed=40 --set SepiaGreen=20");
    EXPECT_EQ(contentsOf(folder / "first.png"), contentsOf(folder / "second.png"));
    expectSuccess(
        "apply 'CountColorsQVR(red, blue, green, n)' --save red=r --save blue=b --save green=g photo.tga",
        "n = 4\n");
    write("program.bas", "Print args(1)\n");
    expectSuccess("run --file photo.jpg=photo.tga program.bas one", "one\n");
}

TEST_P(Cli, ListNamesEverything)
{
    const TestHost host{hostSetup(artefact())};
    const Outcome result = run("list");
    EXPECT_EQ(result.code, success);
    EXPECT_EQ(result.errors, "");
    for (const standin::RegisteredClass& definition : host.registered().classes)
        EXPECT_THAT(result.output, HasSubstr("Class " + definition.name + ": " +
                                             counted(definition.properties.size(), "properties, ") +
                                             counted(definition.methods.size(), "methods\n")));
    for (const standin::RegisteredClass& extension : host.registered().extensions)
        EXPECT_THAT(result.output, HasSubstr("Extension of class " + extension.name + ": " +
                                             counted(extension.methods.size(), "methods\n")));
    EXPECT_THAT(result.output,
                HasSubstr("Global: " + counted(host.registered().globals.size(), "methods\n")));
    for (const char* text :
         {" (swap as boolean) as picture, assignable\n", "    SepiaRed           as Integer\n",
          " (threshold as integer = 10) as double\n"})
        EXPECT_THAT(result.output, HasSubstr(text));
}

TEST_P(Cli, ListAsJsonHoldsEveryDeclaration)
{
    const TestHost host{hostSetup(artefact())};
    const standin::Registered& registered = host.registered();
    const auto json = nlohmann::json::parse(run("list --json").output);
    const auto expectMethods = [](const nlohmann::json& methods,
                                  const std::vector<standin::RegisteredMethod>& wanted) {
        std::vector<std::string> declarations;
        for (const standin::RegisteredMethod& method : wanted)
            declarations.push_back(method.text);
        std::vector<std::string> listed;
        for (const nlohmann::json& method : methods)
            listed.push_back(method["declaration"]);
        EXPECT_EQ(listed, declarations);
    };
    expectMethods(json["globals"], registered.globals);
    ASSERT_EQ(json["extensions"].size(), registered.extensions.size());
    for (std::size_t i = 0; i < registered.extensions.size(); ++i)
    {
        EXPECT_EQ(json["extensions"][i]["name"], registered.extensions[i].name);
        expectMethods(json["extensions"][i]["methods"], registered.extensions[i].methods);
    }
    ASSERT_EQ(json["classes"].size(), registered.classes.size());
    for (std::size_t i = 0; i < registered.classes.size(); ++i)
        expectMethods(json["classes"][i]["methods"], registered.classes[i].methods);
}

TEST_P(Cli, ListAsJsonTakesDeclarationsApart)
{
    const auto json = nlohmann::json::parse(run("list --json").output);
    const auto named = [](const nlohmann::json& methods, const std::string& name) {
        return *std::find_if(methods.begin(), methods.end(),
                             [&](const nlohmann::json& method) { return method["name"] == name; });
    };
    const nlohmann::json render = named(json["globals"], "RenderSamplesQVR");
    EXPECT_EQ(render["result"], "picture");
    EXPECT_EQ(render["parameters"][6]["default"], 0x88B5C4);
    const nlohmann::json count = named(json["extensions"][0]["methods"], "CountColorsQVR");
    EXPECT_EQ(count["result"], nullptr);
    EXPECT_EQ(count["parameters"][3],
              nlohmann::json({{"name", "count"}, {"type", "integer"}, {"byref", true}}));
}

TEST_P(Cli, AppliesAMethodToAFile)
{
    for (const char* name : {"out.png", "out.bmp", "out.TGA"})
    {
        expectSuccess("apply InvertQVR photo.tga " + std::string(name));
        expectPixels(name, 2, 2, negative);
    }
}

TEST_P(Cli, NamesIgnoreCase)
{
    expectSuccess("apply 'invertqvr( 0 , 0 , 2 , 2 )' photo.tga out.png");
    expectPixels("out.png", 2, 2, negative);
}

TEST_P(Cli, UnderstandsLiterals)
{
    expectSuccess("apply 'CountColorQVR(&c0A141E)' photo.tga", "1\n");
    expectSuccess("apply 'CountColorQVR(&h000000)' photo.tga", "1\n");
    expectSuccess("apply 'ChangeCustomQVR(-1.0, 2.55e+2)' photo.tga out.png");
    expectPixels("out.png", 2, 2, negative);
}

TEST_P(Cli, PrintsBooleansAndNumbers)
{
    expectSuccess("apply isWhiteQVR photo.tga", "false\n");
    expectSuccess("apply 'isWhiteQVR(1, 1, 1, 1)' photo.tga", "true\n");
    expectSuccess("apply ColornessQVR photo.tga", "0.25\n");
}

TEST_P(Cli, PrintsByrefVariablesAndSavesByrefBlocks)
{
    write("crop.tga", tga(1, 1, {photo[1]}));
    expectSuccess("apply 'FindPictureQVR(@crop.tga, column, row)' photo.tga", "true\ncolumn = 1\nrow = 0\n");
    expectSuccess("apply 'CountColorsQVR(red, blue, green, n)' photo.tga --save red=red.dat",
                  "blue = memoryblock of 1024 bytes\ngreen = memoryblock of 1024 bytes\nn = 4\n");
    const std::string red = contentsOf(folder / "red.dat");
    ASSERT_EQ(red.size(), 1024U);
    EXPECT_EQ(red[4 * 200], 1);
    EXPECT_EQ(red[4 * 20], 0);
}

TEST_P(Cli, NumbersItsFiles)
{
    write("black.tga", tga(2, 2, std::vector<Rgb>(4, Rgb{0, 0, 0})));
    expectSuccess("apply 'ReplaceRedChannelQVR(@2)' photo.tga black.tga out.png");
    expectPixels("out.png", 2, 2, {{0, 20, 30}, {0, 100, 50}, {0, 0, 0}, {0, 255, 255}});
    // A file that the call reads is never taken for the output.
    expectSuccess("apply 'FindPictureQVR(@2, x, y)' photo.tga photo.tga", "true\nx = 0\ny = 0\n");
    EXPECT_EQ(contentsOf(folder / "photo.tga"), tga(2, 2, photo));
}

TEST_P(Cli, CallsGlobalMethods)
{
    expectSuccess("apply 'MergePictureQVR(@1, @2)' photo.tga photo.tga out.png");
    expectPixels("out.png", 2, 2, photo);
    write("text.bin", binaryString(2, 2, negative));
    expectSuccess("apply 'BinaryStringtoPictureQVR(@text.bin)' out.png");
    expectPixels("out.png", 2, 2, negative);
}

TEST_P(Cli, CallsInChains)
{
    expectSuccess("apply InvertQVR.InvertQVR photo.tga out.png");
    expectPixels("out.png", 2, 2, photo);
    expectSuccess("apply photo.InvertQVR photo.tga out.png");
    expectPixels("out.png", 2, 2, negative);
    expectSuccess("apply 'ChangeCustomQVR(-1.0, 255.0).isWhiteQVR(0, 1, 1, 1)' photo.tga", "true\n");
    expectSuccess("apply 'MergePictureQVR(photo, InvertQVR).CountColorQVR(&cFFFFFF)' photo.tga", "2\n");
    expectSuccess("apply 'MergePictureQVR(@1, @2).InvertQVR' photo.tga photo.tga out.png");
    expectPixels("out.png", 2, 2, negative);
    expectSuccess("apply 'ChangeContrastQVR(0.3 * 2 - 0.6)' photo.tga out.png");
    expectPixels("out.png", 2, 2, photo);
    expectSuccess("apply photo.Width photo.tga", "2\n");
    expectSuccess("apply 'InvertQVR.FindPictureQVR(InvertQVR(1, 0, 1, 1), x, y)' photo.tga", "false\n");
    expectSuccess("filter PictureSepiaQVR photo.tga out.png --set filter.SepiaRed=2*20 --set SepiaGreen=20 "
                  "--set SepiaBlue=-20 --set FactorRed=0.0 --set FactorBlue=0.0 --set FactorGreen=0.0");
    expectPixels("out.png", 2, 2, std::vector<Rgb>(4, Rgb{40, 20, 0}));
    expectFailure("apply InvertQVR.NoSuchQVR photo.tga out.png", "Picture has no NoSuchQVR");
    expectFailure("apply InvertQVR.InvertQVR photo.tga", "InvertQVR needs an output file");
    expectFailure("apply 'ReplaceRedChannelQVR(photo.InvertQVR(0)).InvertQVR' photo.tga out.png",
                  "InvertQVR takes (");
    expectFailure("apply 'InvertQVR(1 +)' photo.tga out.png", "expected a value at character 14");
    expectFailure("apply photo. photo.tga out.png", "expected a name at character 7");
}

TEST_P(Cli, WritesAPictureThatACallHasChanged)
{
    expectSuccess("apply 'ScrollHorizontalQVR(1, true, false)' photo.tga out.png", "true\n");
    expectPixels("out.png", 2, 2, {photo[1], photo[0], photo[3], photo[2]});
}

TEST_P(Cli, AssignsAndSavesAlpha)
{
    expectSuccess("apply 'EmbeddedMaskQVR(false) = @photo.tga' photo.tga alpha.png --alpha");
    expectSuccess("apply 'EmbeddedMaskQVR(false)' alpha.png out.png");
    expectPixels("out.png", 2, 2, {{10, 10, 10}, {200, 200, 200}, {0, 0, 0}, {255, 255, 255}});
    expectSuccess("apply InvertQVR alpha.png plain.png --opaque");
    expectSuccess("apply 'EmbeddedMaskQVR(false)' plain.png out.png");
    expectPixels("out.png", 2, 2, std::vector<Rgb>(4, Rgb{255, 255, 255}));
}

TEST_P(Cli, GivesAPictureAMask)
{
    expectSuccess("apply HasMaskQVR photo.tga", "false\n");
    expectSuccess("apply HasMaskQVR photo.tga --mask photo.tga", "true\n");
}

TEST_P(Cli, ReadsTheSamplesOfASound)
{
    const std::string samples = "\x80\xFF\x01\x80";
    const std::string format{"fmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x40\x1F\0\0\x01\0\x08\0", 24};
    const std::string list{"LIST\x03\0\0\0abc\0", 12};
    const std::string sound =
        std::string{"RIFF\0\0\0\0WAVE", 12} + format + list + std::string{"data\x04\0\0\0", 8} + samples;
    write("sound.wav", sound);
    write("samples.raw", samples);
    expectSuccess("apply 'RenderSamplesQVR(@sound.wav, 0, 0, 4, 8, 0)' sound.png");
    expectSuccess("apply 'RenderSamplesQVR(@samples.raw, 0, 0, 4, 8, 0)' samples.png");
    EXPECT_EQ(contentsOf(folder / "sound.png"), contentsOf(folder / "samples.png"));

    std::string compressed = sound;
    compressed[20] = 2;
    write("sound.wav", compressed);
    expectFailure("apply 'RenderSamplesQVR(@sound.wav, 0, 0, 4, 8, 0)' out.png", "PCM");
    write("sound.wav", sound.substr(0, 36));
    expectFailure("apply 'RenderSamplesQVR(@sound.wav, 0, 0, 4, 8, 0)' out.png", "no samples");
    write("sound.wav", "text");
    expectFailure("apply 'RenderSamplesQVR(@sound.wav, 0, 0, 4, 8, 0)' out.png", "not a WAV file");
}

TEST_P(Cli, RunsFilters)
{
    expectSuccess("filter PictureSepiaQVR photo.tga out.png --set SepiaRed=40 --set SepiaGreen=20 "
                  "--set SepiaBlue=-20 --set FactorRed=0.0 --set FactorBlue=0.0 --set FactorGreen=0.0");
    expectPixels("out.png", 2, 2, std::vector<Rgb>(4, Rgb{40, 20, 0}));
    expectSuccess("filter PictureLut3DQVR photo.tga out.png --set 'Table(15, 15, 15, 1)=77.9'");
    expectSuccess("apply 'CountColorQVR(&c004D00)' out.png", "1\n");
}

TEST_P(Cli, ChoosesItsHost)
{
    for (const char* host : {"--storage gworld24", "--storage bitmap", "--host console", "--host web",
                             "--host desktop --host-version 2011"})
    {
        expectSuccess(std::string(host) + " apply InvertQVR photo.tga out.png");
        expectPixels("out.png", 2, 2, negative);
    }
}

TEST_P(Cli, RefusesWrongCalls)
{
    expectFailure("apply 'InvertQVR(1' photo.tga out.png", "expected \",\" or \")\" at character 12");
    expectFailure("apply 'InvertQVR(1,)' photo.tga out.png", "expected a value");
    expectFailure("apply 'InvertQVR()x' photo.tga out.png", "expected the end");
    expectFailure("apply '' photo.tga out.png", "expected a method's name");
    expectFailure("apply 'CountColorQVR(&cXYZ)' photo.tga", "hexadecimal");
    expectFailure("apply 'ChangeSaturationQVR(2147483648)' photo.tga out.png", "32 bits");
    expectFailure("apply 'NoSuchMethod' photo.tga out.png", "there is no method NoSuchMethod");
    expectFailure("apply 'InvertQVR(1, 2)' photo.tga out.png", "InvertQVR takes (left as integer, ");
    expectFailure("apply 'ChangeSaturationQVR(1.5)' photo.tga out.png", "takes (Amount as integer)");
    expectFailure("apply 'ChangeSaturationQVR(x)' photo.tga out.png", "takes (Amount as integer)");
    expectFailure("apply 'InvertQVR = nil' photo.tga out.png", "cannot be assigned to");
    expectFailure("apply 'CountColorsQVR(r, b, g, n)' photo.tga --save r", "NAME=FILE");
    expectFailure("apply 'MergePictureQVR(@1, @0)' photo.tga out.png", "numbered from @1");
}

TEST_P(Cli, RefusesWrongFiles)
{
    write("text.png", "no image");
    expectFailure("apply InvertQVR missing.tga out.png", "cannot read missing.tga: No such file");
    expectFailure("apply InvertQVR . out.png", "cannot read .");
    expectFailure("apply InvertQVR text.png out.png", "text.png: not an image");
    expectFailure("apply InvertQVR photo.tga nowhere/out.png", "cannot write nowhere/out.png: No such file");
    expectFailure("apply InvertQVR photo.tga out.xyz", "must end in .png");
    expectFailure("apply InvertQVR photo.tga", "needs an output file");
    expectFailure("apply InvertQVR", "needs 1 input file");
    expectFailure("apply InvertQVR photo.tga out.png more.png", "too many files");
    expectFailure("--plugin photo.tga list", "photo.tga");
    expectFailure("--plugin missing list", "missing");
}

TEST_P(Cli, TellsWhatACallRefused)
{
    write("small.tga", tga(1, 1, {photo[1]}));
    expectFailure("apply 'ReplaceRedChannelQVR(nil)' photo.tga out.png",
                  "NilObjectException: The channel picture is nil.");
    expectFailure("apply 'ReplaceRedChannelQVR(@small.tga)' photo.tga out.png",
                  "ReplaceRedChannelQVR gave nil");
    EXPECT_FALSE(fs::exists(folder / "out.png"));
}

TEST_P(Cli, RefusesWrongFilters)
{
    expectFailure("filter NoSuchClass photo.tga out.png", "there is no class NoSuchClass");
    expectFailure("filter PictureSepiaQVR photo.tga out.png --set Nothing=1", "has no property Nothing");
    expectFailure("filter PictureSepiaQVR photo.tga out.png --set SepiaRed", "needs a value");
    expectFailure("filter PictureSepiaQVR photo.tga out.png --set SepiaRed=1.5", "type integer");
    expectFailure("filter PictureSepiaQVR photo.tga out.png --set 'SepiaRed(1)=1'", "takes no arguments");
}

TEST_P(Cli, RunsPrograms)
{
    write("negative.bas", "' Shows: a negative.\n"
                          "Dim photo As Picture = Picture.Open(GetFolderItem(\"photo.tga\"))\n"
                          "photo.InvertQVR.Save(GetFolderItem(\"out.png\"), Picture.SaveAsPNG)\n"
                          "Print args(0) + \" \" + args(1)\n");
    expectSuccess("run negative.bas fine", "negative.bas fine\n");
    expectPixels("out.png", 2, 2, negative);
    write("black.tga", tga(1, 1, {{0, 0, 0}}));
    expectSuccess("run negative.bas x --file photo.tga=black.tga --file out.png=white.png",
                  "negative.bas x\n");
    expectPixels("white.png", 1, 1, {{255, 255, 255}});
    expectSuccess("--host console run negative.bas x", "negative.bas x\n");
    expectPixels("out.png", 2, 2, negative);
}

/// One line, without the program's name, as compilers have it; what was printed before stays.
TEST_P(Cli, TellsWhereAProgramIsWrong)
{
    const auto expectStop = [&](const std::string& program, const std::string& output,
                                const std::string& error, const std::string& options = "") {
        write("p.bas", program);
        const Outcome result = run("run p.bas " + options);
        EXPECT_EQ(result.code, failure) << program;
        EXPECT_EQ(result.output, output) << program;
        EXPECT_EQ(result.errors, error + "\n") << program;
    };
    expectStop("Print 1\nPrint (2", "", "p.bas:2:9: expected \")\"");
    expectStop("Print 1\nPrint y", "",
               "p.bas:2:7: expected a variable, a function or a method, \"y\" is none of them");
    expectStop("Print 1\nDim p As New Picture(1, 1)\np = p.ReplaceRedChannelQVR(Nil)", "1\n",
               "p.bas:3:7: NilObjectException: The channel picture is nil.");
    expectStop("Dim p As Picture = Picture.Open(\"none.png\")", "",
               "p.bas:1:28: cannot read none.png: No such file or directory");
    expectStop("While True\nWend", "", "p.bas:1:1: stopped after 1000 steps", "--steps 1000");
    expectFailure("run none.bas", "cannot read none.bas: No such file");
    expectFailure("run p.bas --file photo.tga", "NAME=PATH");
    expectFailure("run", "FILE is required", usage);
}

TEST_P(Cli, HelpsWithEveryMethodAndClass)
{
    const TestHost host{hostSetup(artefact())};
    const auto expectHelp = [&](const std::string& name, const std::string& declaration) {
        const Outcome result = run("help " + name);
        EXPECT_EQ(result.code, success) << result.errors;
        EXPECT_THAT(result.output, StartsWith(name + "\n\n")) << name;
        std::string joined = result.output;
        joined.erase(
            std::remove_if(joined.begin(), joined.end(), [](char c) { return c == ' ' || c == '\n'; }),
            joined.end());
        std::string wanted = declaration;
        wanted.erase(std::remove(wanted.begin(), wanted.end(), ' '), wanted.end());
        EXPECT_THAT(joined, HasSubstr(wanted)) << name;
        EXPECT_THAT(joined, HasSubstr("Example(examples/" + name + ".bas):'Shows:")) << name;
        for (const char* mark : {"```", "**", "](", "|--", "{cost}"})
            EXPECT_THAT(result.output, testing::Not(HasSubstr(mark))) << name;
        std::istringstream lines{result.output};
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 120U) << name << ": " << line;
    };
    for (const standin::RegisteredClass& extension : host.registered().extensions)
        for (const standin::RegisteredMethod& method : extension.methods)
            expectHelp(method.declaration.name, method.text);
    for (const standin::RegisteredMethod& method : host.registered().globals)
        expectHelp(method.declaration.name, method.text);
    for (const standin::RegisteredClass& definition : host.registered().classes)
        for (const standin::RegisteredProperty& property : definition.properties)
            expectHelp(definition.name, property.name + " as " + property.type);
    EXPECT_EQ(run("help invertqvr").output, run("help InvertQVR").output);
    expectFailure("help NoSuchQVR", "there is no method or class NoSuchQVR");
}

TEST_P(Cli, RefusesWrongOptions)
{
    expectFailure("", "subcommand", usage);
    expectFailure("apply", "CALL is required", usage);
    expectFailure("--artefact beos list", "beos", usage);
    expectFailure("list --nonsense", "--nonsense", usage);
}

TEST_P(Cli, ExplainsItself)
{
    const Outcome version = run("--version");
    EXPECT_EQ(version.code, success);
    EXPECT_EQ(version.output, std::string("pictureqvr ") + build::version + "\n");
    const Outcome help = run("apply --help");
    EXPECT_EQ(help.code, success);
    EXPECT_THAT(help.output, HasSubstr("pictureqvr apply 'InvertQVR(10, 10, 200, 100)' photo.jpg out.png\n"));
}

/// The tests of the demo: its page is what users look at.
class Demo : public Cli
{
protected:
    void SetUp() override
    {
        std::vector<Rgb> pixels;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                pixels.push_back({static_cast<std::uint8_t>(3 * x), static_cast<std::uint8_t>(2 * y),
                                  static_cast<std::uint8_t>(x + y)});
        write("photo.tga", tga(width, height, pixels));
        // 16-bit PCM, one channel.
        const std::string format{"fmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x80\x3E\0\0\x02\0\x10\0", 24};
        write("sound.wav", std::string{"RIFF\0\0\0\0WAVE", 12} + format + std::string{"data\xD0\x07\0\0", 8} +
                               std::string(2000, '\x21'));
    }

    Outcome makePage(const std::string& options = "") const
    {
        return run("demo --photo photo.tga --sound sound.wav --out page " + options);
    }

    std::string page() const
    {
        return contentsOf(folder / "page" / "index.html");
    }

    /// A project of its own, whose only family has these examples.
    void writeProject(const std::map<std::string, std::string>& programs) const
    {
        fs::create_directories(folder / "project" / "docs" / "reference");
        fs::create_directories(folder / "project" / "examples");
        std::string row = "| [Family](family.md) |";
        for (const auto& [name, program] : programs)
        {
            row += " `" + name + "`";
            if (!program.empty())
                write("project/examples/" + name + ".bas", program);
        }
        write("project/docs/reference/index.md", "# Reference\n\n" + row + " |\n");
    }

    /// What stands between two marks, each time.
    static std::vector<std::string> allBetween(const std::string& text, const std::string& opening,
                                               const std::string& closing)
    {
        std::vector<std::string> found;
        for (std::size_t at = text.find(opening); at != std::string::npos; at = text.find(opening, at))
        {
            at += opening.size();
            const std::size_t end = text.find(closing, at);
            found.push_back(text.substr(at, end - at));
        }
        return found;
    }

    /// Every picture of the demo's page has its size and is told in words.
    void expectPicturesInWords(const std::string& html) const
    {
        EXPECT_THAT(html, HasSubstr("<img src=\"original.png\" width=\"96\" height=\"80\" "
                                    "alt=\"The photograph, unchanged\""));
        const std::vector<std::string> figures = allBetween(html, "<figure>", "</figure>");
        EXPECT_GT(figures.size(), 60U);
        for (const std::string& figure : figures)
        {
            const std::string file = allBetween(figure, "src=\"", "\"").at(0);
            const media::Image image = media::readImage((folder / "page" / file).string(), 3);
            EXPECT_EQ(allBetween(figure, " width=\"", "\"").at(0), std::to_string(image.width)) << file;
            EXPECT_EQ(allBetween(figure, " height=\"", "\"").at(0), std::to_string(image.height)) << file;
            const std::string caption = allBetween(figure, "<b>", "</b>").at(0);
            const std::string words = allBetween(figure, " alt=\"", "\"").at(0);
            EXPECT_GT(words.size(), 10U) << file;
            EXPECT_THAT(words, Not(HasSubstr(caption)));
        }
        const media::Image negative = media::readImage((folder / "page" / "InvertQVR.png").string(), 3);
        const std::vector<std::uint8_t> firstPixel(negative.bytes.begin(), negative.bytes.begin() + 3);
        EXPECT_THAT(firstPixel, testing::ElementsAre(255, 255, 255));

        const std::string chart = allBetween(html, "<svg", "</svg>").at(0);
        for (const char* part :
             {"role=\"img\" aria-label=\"Histogram of the levels 0 to 255: red has level ", "class=\"axis\"",
              ">red</text>", ">green</text>", ">blue</text>", ">level</text>", ">pixels</text>"})
            EXPECT_THAT(chart, HasSubstr(part));
    }

    static constexpr int width = 96;
    static constexpr int height = 80;
};

ON_EVERY_ARTEFACT(Demo);

TEST_P(Demo, ShowsEverythingRegistered)
{
    const Outcome result = makePage();
    EXPECT_EQ(result.code, success) << result.errors;
    const TestHost host{hostSetup(artefact())};
    const standin::Registered& registered = host.registered();
    const std::size_t methods = registered.extensions.at(0).methods.size() + registered.globals.size();
    const std::size_t classes = registered.classes.size();
    const std::string shown = counted(methods, "of ") + counted(methods, "methods and ") +
                              counted(classes, "of ") + counted(classes, "classes.");
    // Without the lines that tell how it gets on: those that it ends with.
    const std::size_t lastStep = result.errors.rfind("\n[") + 1;
    EXPECT_EQ(result.errors.substr(result.errors.find('\n', lastStep) + 1), "Shown: " + shown + "\n");

    const std::string html = page();
    EXPECT_THAT(html, HasSubstr(shown));
    EXPECT_THAT(html, Not(HasSubstr("{{")));
    std::set<std::string> names;
    for (const standin::RegisteredMethod& method : registered.extensions.at(0).methods)
        names.insert(method.declaration.name);
    for (const standin::RegisteredMethod& method : registered.globals)
        names.insert(method.declaration.name);
    for (const standin::RegisteredClass& definition : registered.classes)
        names.insert(definition.name);
    for (const std::string& name : names)
        EXPECT_THAT(html, HasSubstr("<article class=\"card\" id=\"" + name + "\">"));
    const std::vector<std::string> cards = allBetween(html, "<article", "</article>");
    EXPECT_EQ(cards.size(), names.size());
    for (const std::string& card : cards)
    {
        EXPECT_THAT(card, testing::AnyOf(HasSubstr("<img "), HasSubstr("class=\"printed\"")));
        EXPECT_THAT(card, HasSubstr("QVR"));
        const std::vector<std::string> times = allBetween(card, "<td>", "</td>");
        EXPECT_FALSE(times.empty()) << card;
        for (const std::string& time : times)
            EXPECT_THAT(time, testing::MatchesRegex("below 1 µs|[1-9][0-9]* µs|[1-9][0-9]*\\.[0-9]+ ms"));
    }
    expectPicturesInWords(html);
}

TEST_P(Demo, TellsWhichExamplesFail)
{
    const std::string good =
        "' Shows: a number\nDim p As New Picture(2, 2, 32)\nPrint p.CountColorQVR(&cFFFFFF)\n";
    writeProject(
        {{"CountColorQVR", good},
         {"HasMaskQVR", "' Shows: nothing\nDim p As New Picture(2, 2, 32)\nIf p.HasMaskQVR Then Print 1\n"},
         {"InvertQVR", "' Shows: what is no method\nDim p As New Picture(2, 2, 32)\nPrint p.TurnQVR\n"},
         {"NoSuchQVR", ""},
         {"ScrollQVR", "' Shows: another\nPrint 1\n"},
         {"isWhiteQVR", "Print 1\n"}});
    const Outcome result = makePage("--source project");
    EXPECT_EQ(result.code, failure);
    for (const char* line :
         {"[ 1/6] CountColorQVR  plug-in ",
          "\n[ 2/6] HasMaskQVR  FAILED: project/examples/HasMaskQVR.bas shows nothing\n",
          "\n[ 3/6] InvertQVR  FAILED: project/examples/InvertQVR.bas:3:9: Picture has no TurnQVR\n",
          "\n[ 5/6] ScrollQVR  FAILED: project/examples/ScrollQVR.bas never calls ScrollQVR\n",
          "\nNot shown: Class PictureSepiaQVR\n", "\nShown: 1 of "})
        EXPECT_THAT(result.errors, HasSubstr(line));
    EXPECT_THAT(result.errors, HasSubstr("\n[ 4/6] NoSuchQVR  FAILED: cannot read "
                                         "project/examples/NoSuchQVR.bas: No such file or directory\n"));
    EXPECT_THAT(result.errors, HasSubstr("\n[ 6/6] isWhiteQVR  FAILED: project/examples/isWhiteQVR.bas "
                                         "does not begin with \"' Shows:\"\n"));
    EXPECT_THAT(result.errors, EndsWith("\npictureqvr: 5 of 6 examples failed\n"));
    EXPECT_THAT(page(), HasSubstr("<pre class=\"printed\">4\n</pre>"));
    EXPECT_THAT(page(), HasSubstr("project/examples/InvertQVR.bas:3:9: Picture has no TurnQVR"));
}

TEST_P(Demo, NeedsItsFiles)
{
    const auto expectRefusal = [&](const std::string& arguments, const std::string& message) {
        const Outcome refused = run("demo --out page " + arguments);
        EXPECT_EQ(refused.code, failure) << arguments;
        EXPECT_THAT(refused.errors, EndsWith("pictureqvr: " + message + "\n"));
    };
    expectRefusal("--photo missing.jpg", "cannot read missing.jpg: No such file or directory");
    expectRefusal("--photo photo.tga --sound missing.wav",
                  "cannot read missing.wav: No such file or directory");
    expectRefusal("--photo photo.tga --sound sound.wav --source .",
                  "cannot read ./docs/reference/index.md: No such file or directory");
    write("photo.tga", tga(2, 2, photo));
    expectRefusal("--photo photo.tga", "photo.tga: the demo needs a photograph of at least 64 x 64 pixels");
}

} // namespace
