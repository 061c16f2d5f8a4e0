// What the program does with files: one or many, standard input and output, what it overwrites, and what of
// an image it carries over.
#include "media/image.h"
#include "tests/support/program.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class Outputs : public ProgramTest
{
protected:
    void SetUp() override
    {
        write("a.tga", tga(2, 1, {{10, 20, 30}, {255, 255, 255}}));
        write("b.tga", tga(1, 1, {{200, 100, 50}}));
        write("sheer.tga", tgaWithAlpha(2, 1, {{10, 20, 30, 40}, {200, 100, 50, 255}}));
    }

    std::vector<std::string> namesIn(const std::string& path) const
    {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder / path))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    /// R, G, B and A of all pixels.
    std::vector<int> pixelsOf(const std::string& name) const
    {
        const media::Image image = media::readImage((folder / name).string(), 4);
        return {image.bytes.begin(), image.bytes.end()};
    }

    std::string bytesOf(const std::string& name) const
    {
        return contentsOf(folder / name);
    }

    /// What a file can be as large as on a nearly full disk: as large as the copy that is loaded of the
    /// plug-in.
    static std::uintmax_t room()
    {
        constexpr std::uintmax_t tolerance = 65536;
        return fs::file_size(hostSetup(standin::Artefact::SharedObject).options.plugin) + tolerance;
    }

    /// Such a disk, for the rest of a shell's line.
    static std::string littleRoom()
    {
        constexpr std::uintmax_t block = 512;
        return "ulimit -f " + std::to_string(room() / block) + "; ";
    }

    /// It is half as large again as there is room, in every format that compresses nothing but repetitions.
    static std::string largePicture()
    {
        constexpr int width = 500;
        const auto height = static_cast<int>(room() / (2 * width));
        std::vector<Rgb> pixels;
        for (int index = 0; index < width * height; ++index)
            pixels.push_back({static_cast<std::uint8_t>(index), 2, 3});
        return tga(width, height, pixels);
    }

    /// What the program prints with a terminal in the place of all its streams.
    std::string onTerminal(const std::string& arguments) const
    {
        return runInShell("script -qec \"pictureqvr " + arguments + "\" /dev/null </dev/null").output;
    }
};

ON_EVERY_ARTEFACT(Outputs);

// Many files

TEST_P(Outputs, GoWhereAPatternSays)
{
    expectSuccess("apply InvertQVR a.tga b.tga --to 'small/{number}-{name}.{ext}.png'");
    EXPECT_THAT(namesIn("small"), ElementsAre("1-a.tga.png", "2-b.tga.png"));
    EXPECT_THAT(pixelsOf("small/1-a.tga.png"), ElementsAre(245, 235, 225, 255, 0, 0, 0, 255));
    EXPECT_THAT(pixelsOf("small/2-b.tga.png"), ElementsAre(55, 155, 205, 255));
    expectSuccess("apply PicturetoBinaryStringQVR\\(@1\\) a.tga --to '{name}.bin'");
    EXPECT_THAT(bytesOf("a.bin"), testing::StartsWith("PPIC"));
    expectSuccess("filter PictureSepiaQVR a.tga b.tga --to 'sepia/{name}.png' --set SepiaRed=20");
    expectSuccess("filter PictureSepiaQVR b.tga b.png --set SepiaRed=20");
    EXPECT_EQ(bytesOf("sepia/b.png"), bytesOf("b.png"));
    expectFailure("apply InvertQVR a.tga b.tga --to 'small/{nmae}.png'",
                  "\"{nmae}\" is none of {name}, {ext} and {number}");
    expectFailure("apply 'ReplaceRedChannelQVR(@2)' a.tga b.tga --to '{name}.png'",
                  "each file has a call of its own");
    expectFailure("apply 'RenderSamplesQVR(@a.tga, 0, 0, 4, 4, 0)' a.tga --to '{name}.png'",
                  "the call reads none of the files");
    expectFailure("apply InvertQVR --to '{name}.png'", "needs at least 1 input file");
    expectFailure("apply InvertQVR - --to '{name}.png' <a.tga", "has no name");
    expectFailure("apply InvertQVR a.tga b.tga sheer.tga", "too many files");
    expectFailure("filter PictureSepiaQVR a.tga b.tga sheer.tga", "--to takes many");
}

TEST_P(Outputs, AreTheSameHoweverManyAreMadeAtATime)
{
    std::string files;
    std::string lines;
    for (int number = 0; number < 9; ++number)
    {
        const std::string name = "w" + std::to_string(number) + ".tga";
        write(name,
              tga(number + 1, 1, std::vector<Rgb>(static_cast<std::size_t>(number) + 1, {255, 255, 255})));
        files += " " + name;
        lines += name + ": " + std::to_string(number + 1) + "\n";
    }
    for (const char* jobs : {"", " --jobs 1", " --jobs 4", " --jobs 20"})
        expectSuccess("apply 'CountColorQVR(&cFFFFFF)'" + files + jobs, lines);
    expectFailure("apply InvertQVR a.tga --to '{name}.png' --jobs 0", "--jobs", usage);
}

TEST_P(Outputs, OfOtherFilesGoOnWhenOneIsBad)
{
    write("bad.tga", "no image");
    const Outcome result = run("apply InvertQVR a.tga bad.tga none.tga b.tga --to 'out/{name}.png'");
    EXPECT_EQ(result.code, failure);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors,
                testing::MatchesRegex("pictureqvr: bad.tga: not an image[^\n]*\n"
                                      "pictureqvr: cannot read none.tga: No such file or directory\n"
                                      "pictureqvr: 2 of 4 files failed\n"));
    EXPECT_THAT(namesIn("out"), ElementsAre("a.png", "b.png"));
    const Outcome refused = run("apply 'ReplaceRedChannelQVR(@b.tga)' a.tga b.tga --to 'red/{name}.png'");
    EXPECT_EQ(refused.code, failure);
    EXPECT_EQ(refused.errors, "pictureqvr: a.tga: ReplaceRedChannelQVR gave nil: the pictures have different "
                              "sizes, 2 x 1 and 1 x 1\npictureqvr: 1 of 2 files failed\n");
    EXPECT_THAT(namesIn("red"), ElementsAre("b.png"));
    expectFailure("apply NoSuchQVR a.tga b.tga --to 'no/{name}.png'", "there is no method NoSuchQVR");
}

/// A process that is ended from outside leaves the others alone, and nothing of its file.
TEST_P(Outputs, OfOtherFilesGoOnWhenAProcessIsStopped)
{
    write("large.tga", largePicture());
    const Outcome result =
        runInShell(littleRoom() + "pictureqvr apply InvertQVR large.tga a.tga --to 'out/{name}.bmp'");
    EXPECT_EQ(result.code, failure);
    EXPECT_EQ(result.errors,
              "pictureqvr: large.tga: stopped: File size limit exceeded\npictureqvr: 1 of 2 files failed\n");
    EXPECT_THAT(namesIn("out"), ElementsAre("a.bmp"));
}

TEST_P(Outputs, AreToldOfInALineEachOnRequest)
{
    const Outcome result = run("apply InvertQVR a.tga sheer.tga --to '{name}.png' --verbose");
    EXPECT_EQ(result.errors, "a.png: 2 x 1\nsheer.png: 2 x 1 with alpha\n");
    EXPECT_EQ(run("apply InvertQVR b.tga b.png --verbose").errors, "b.png: 1 x 1\n");
}

TEST_P(Outputs, ShowProgressOnTerminalsOnly)
{
    EXPECT_THAT(onTerminal("apply InvertQVR a.tga b.tga --to '{name}.png' --jobs 1"),
                testing::AllOf(HasSubstr("\r\x1b[K[                              ] 0 of 2"),
                               HasSubstr("\r\x1b[K[###############               ] 1 of 2, "),
                               HasSubstr(" s left"), testing::EndsWith("\r\x1b[K")));
    EXPECT_THAT(onTerminal("apply InvertQVR a.tga a1.png"),
                testing::AllOf(HasSubstr("\r\x1b[Kreading a.tga"), HasSubstr("\r\x1b[Kcalling InvertQVR"),
                               HasSubstr("\r\x1b[Kwriting a1.png"), testing::EndsWith("\r\x1b[K")));
    EXPECT_THAT(onTerminal("filter PictureSepiaQVR a.tga a2.png"), HasSubstr("running PictureSepiaQVR"));
    write("slow.bas", "Print 1\nPrint 2\n");
    EXPECT_THAT(onTerminal("run slow.bas"),
                testing::AllOf(HasSubstr("\r\x1b[Krunning slow.bas"), HasSubstr("\r\x1b[K1\r\n"),
                               HasSubstr("\r\x1b[K2\r\n"), testing::EndsWith("\r\x1b[K")));
    EXPECT_EQ(onTerminal("apply InvertQVR a.tga b.tga --to 'q{name}.png' --quiet"), "");
    EXPECT_EQ(onTerminal("apply InvertQVR a.tga a3.png --quiet"), "");
    expectSuccess("apply InvertQVR a.tga b.tga --to 'p{name}.png'");
}

// What is overwritten

TEST_P(Outputs, OverwriteNothingUnlessForced)
{
    for (const char* arguments :
         {"apply InvertQVR a.tga b.tga", "filter PictureSepiaQVR a.tga b.tga",
          "apply 'PicturetoBinaryStringQVR(@1)' a.tga b.tga", "apply InvertQVR a.tga a.tga",
          "apply 'CountColorsQVR(red, green, blue, n)' a.tga --save red=b.tga"})
    {
        expectFailure(arguments, ".tga exists already; --force overwrites");
        EXPECT_EQ(bytesOf("b.tga"), tga(1, 1, {{200, 100, 50}}));
    }
    fs::create_directory(folder / "out");
    write("out/b.png", "old");
    expectFailure("apply InvertQVR a.tga b.tga --to 'out/{name}.png'",
                  "1 of 2 files exist already, such as out/b.png; --force overwrites");
    EXPECT_THAT(namesIn("out"), ElementsAre("b.png"));
    expectSuccess("apply InvertQVR a.tga b.tga --to 'out/{name}.png' --force");
    EXPECT_THAT(pixelsOf("out/b.png"), ElementsAre(55, 155, 205, 255));
    expectSuccess("apply InvertQVR a.tga a.tga --force");
    EXPECT_THAT(pixelsOf("a.tga"), ElementsAre(245, 235, 225, 255, 0, 0, 0, 255));
    expectSuccess("apply InvertQVR b.tga --to '{name}.{ext}' --force");
    EXPECT_THAT(pixelsOf("b.tga"), ElementsAre(55, 155, 205, 255));
    expectSuccess("apply InvertQVR a.tga /dev/null --format png");
}

TEST_P(Outputs, OfTwoFilesNeverGoToOne)
{
    fs::create_directory(folder / "more");
    write("more/a.tga", tga(1, 1, {{1, 2, 3}}));
    expectFailure("apply InvertQVR a.tga more/a.tga --to 'out/{name}.png'",
                  "out/a.png would be written twice, for a.tga and for more/a.tga");
    EXPECT_FALSE(fs::exists(folder / "out"));
    fs::create_directory_symlink("more", folder / "link");
    expectFailure("apply InvertQVR a.tga --to x.png --save red=./x.png", "x.png would be written twice");
    // Which comes first nobody knows.
    expectFailure("apply InvertQVR b.tga more/a.tga --to 'link/a.{ext}' --force", "would be written");
    expectFailure("apply 'MergePictureQVR(photo, @b.tga)' a.tga b.tga --to '{name}.{ext}' --force",
                  "b.tga would be written for b.tga, and is to be read too");
    expectFailure("apply InvertQVR b.tga a.tga --to 'c{number}.tga' --save red=a.tga --force",
                  "a.tga would be written");
}

TEST_P(Outputs, OfTheInputLeaveItWholeOnAFullDisk)
{
    const std::string large = largePicture();
    write("o.tga", large);
    const std::vector<std::string> before = namesIn(".");
    for (const char* meanwhile : {"trap '' XFSZ;", ""})
    {
        const Outcome result = runInShell(littleRoom() + std::string(meanwhile) +
                                          " pictureqvr apply InvertQVR o.tga o.tga --force");
        EXPECT_NE(result.code, success);
        EXPECT_TRUE(bytesOf("o.tga") == large);
    }
    EXPECT_THAT(namesIn("."), testing::IsSupersetOf(before));
    EXPECT_EQ(namesIn(".").size(), before.size() + 2) << "stdout and stderr";
    expectFailure("apply InvertQVR o.tga /dev/full --format bmp",
                  "cannot write /dev/full: No space left on device");
}

// Calls that make no picture

TEST_P(Outputs, AreNotMadeByCallsThatMakeNoPicture)
{
    expectSuccess("apply 'CountColorQVR(&cFFFFFF)' a.tga b.tga", "a.tga: 1\nb.tga: 0\n");
    EXPECT_EQ(bytesOf("b.tga"), tga(1, 1, {{200, 100, 50}}));
    expectFailure("apply 'CountColorQVR(&cFFFFFF)' a.tga out.png",
                  "CountColorQVR makes no picture that could be written to out.png");
    expectFailure("apply 'FindPictureQVR(@2, x, y)' a.tga b.tga out.png",
                  "FindPictureQVR makes no picture that could be written to out.png");
    expectFailure("apply 'CountColorQVR(&cFFFFFF)' a.tga b.tga --to '{name}.png'",
                  "CountColorQVR makes no picture that --to could name");
    expectSuccess(
        "apply 'CountColorsQVR(r, g, b, n)' a.tga b.tga --save r={name}-r.csv --save g={name}-g.csv "
        "--save b={name}-b.csv",
        "a.tga: n = 2\nb.tga: n = 1\n");
    EXPECT_TRUE(fs::exists(folder / "b-g.csv"));
    expectSuccess("apply photo.Width a.tga b.tga", "a.tga: 2\nb.tga: 1\n");
}

/// Which methods change their picture is known by name. This finds any other.
TEST_P(Outputs, AreTakenFromAllMethodsThatChangeTheirPicture)
{
    TestHost host{hostSetup(artefact())};
    for (const standin::RegisteredMethod& method : host.registered().extensions.at(0).methods)
    {
        if (method.declaration.result == standin::Type::Picture)
            continue;
        standin::Picture picture = host.newPicture(4, 3);
        std::vector<std::uint8_t> pixels;
        for (int value = 0; value < 4 * 3 * 4; ++value)
            pixels.push_back(static_cast<std::uint8_t>(5 * value));
        picture.setRgba(pixels);
        standin::Picture other = host.newPicture(1, 1);
        std::vector<standin::Value> variables(method.declaration.parameters.size());
        standin::Arguments arguments;
        for (std::size_t index = 0; index < variables.size(); ++index)
        {
            const standin::Parameter& parameter = method.declaration.parameters[index];
            standin::Value value;
            if (parameter.type == standin::Type::Picture)
                value = other;
            else if (parameter.type == standin::Type::Boolean)
                value = true;
            else if (parameter.type != standin::Type::MemoryBlock)
                value = 1;
            variables[index] = value;
            if (parameter.byref)
                arguments.emplace_back(standin::byref(variables[index]));
            else
                arguments.push_back(value);
        }
        host.call(picture, method.declaration.name, arguments);
        const bool changes = method.declaration.name.starts_with("Scroll");
        EXPECT_EQ(picture.rgba() != pixels, changes) << method.text;
        if (changes)
        {
            const std::string call =
                method.declaration.parameters.size() == 3 ? "(1, true, false)" : "(1, 1, true, false)";
            expectSuccess("apply '" + method.declaration.name + call + "' a.tga out.png --force", "true\n");
        }
    }
}

TEST_P(Outputs, ShowPlacesOnlyOfWhatWasFound)
{
    expectSuccess("apply 'FindPictureQVR(@b.tga, x, y)' a.tga", "false\n");
    expectSuccess("apply 'FindPictureQVR(@a.tga, x, y)' a.tga", "true\nx = 0\ny = 0\n");
}

TEST_P(Outputs, CanBeHistograms)
{
    const std::string call = "apply 'CountColorsQVR(red, green, blue, n)' a.tga --save ";
    expectSuccess(call + "red=red.csv --save green=green.svg --save blue=blue.png", "n = 2\n");
    const std::string table = bytesOf("red.csv");
    EXPECT_THAT(table, testing::StartsWith("value,count\n0,0\n1,0\n"));
    EXPECT_THAT(table, HasSubstr("\n10,1\n"));
    EXPECT_THAT(table, testing::EndsWith("\n254,0\n255,1\n"));
    const std::string drawing = bytesOf("green.svg");
    EXPECT_THAT(drawing, testing::StartsWith("<svg xmlns=\"http://www.w3.org/2000/svg\" "));
    EXPECT_THAT(drawing, HasSubstr("green has level 20 most often"));
    const media::Image chart = media::readImage((folder / "blue.png").string(), 3);
    ASSERT_EQ(chart.width, 512);
    ASSERT_EQ(chart.height, 256);
    for (int level = 0; level < 256; ++level)
        for (const int y : {0, 255})
        {
            const std::uint8_t* pixel = chart.bytes.data() + 3 * (512 * y + 2 * level);
            // Blue is 30 in one pixel and 255 in the other.
            EXPECT_EQ(pixel[0] != 255, level == 30 || level == 255) << level;
        }
    expectSuccess(call + "red=red.dat",
                  "green = memoryblock of 1024 bytes\nblue = memoryblock of 1024 bytes\nn = 2\n");
    EXPECT_EQ(bytesOf("red.dat").size(), 1024U);
    expectFailure("apply 'CountColorsQVR(red, green, blue, n)' a.tga --save n=n.csv", "no memoryblock");
    expectFailure(call + "x=x.csv", "cannot save x: the call has no such byref argument");
    expectFailure(call + "red=1.csv --save red=2.csv", "names red twice");
}

// Alpha, and what else an image has

TEST_P(Outputs, KeepTheAlphaOfTheirInput)
{
    expectSuccess("apply InvertQVR sheer.tga out.png");
    EXPECT_THAT(pixelsOf("out.png"), ElementsAre(245, 235, 225, 40, 55, 155, 205, 255));
    expectSuccess("apply 'ScrollHorizontalQVR(1, true, false)' sheer.tga scrolled.png", "true\n");
    EXPECT_THAT(pixelsOf("scrolled.png"), ElementsAre(200, 100, 50, 255, 10, 20, 30, 40));
    expectSuccess("apply 'MergePictureQVR(@1, @2)' sheer.tga a.tga merged.png");
    EXPECT_THAT(pixelsOf("merged.png"), ElementsAre(10, 20, 30, 40, testing::_, testing::_, testing::_, 255));
    expectSuccess("filter PictureSepiaQVR sheer.tga sepia.tga");
    EXPECT_EQ(pixelsOf("sepia.tga").at(3), 40);
    expectSuccess("--host console apply InvertQVR sheer.tga console.png");
    EXPECT_THAT(pixelsOf("console.png"), ElementsAre(245, 235, 225, 40, 55, 155, 205, 255));
    // A picture of the alpha is to be seen.
    expectSuccess("apply 'EmbeddedMaskQVR(false)' sheer.tga mask.png");
    EXPECT_THAT(pixelsOf("mask.png"), ElementsAre(40, 40, 40, 255, 255, 255, 255, 255));
    expectSuccess("apply 'EmbeddedMaskQVR(false) = @a.tga' a.tga embedded.png");
    EXPECT_THAT(pixelsOf("embedded.png"), ElementsAre(10, 20, 30, 10, 255, 255, 255, 255));
}

TEST_P(Outputs, HaveAlphaWhereItIsWantedAndNotElsewhere)
{
    const auto channelsOf = [&](const std::string& name) { return static_cast<int>(bytesOf(name).at(25)); };
    constexpr int rgb = 2;
    constexpr int rgba = 6;
    expectSuccess("apply InvertQVR a.tga plain.png");
    EXPECT_EQ(channelsOf("plain.png"), rgb);
    expectSuccess("apply InvertQVR a.tga wanted.png --alpha");
    EXPECT_EQ(channelsOf("wanted.png"), rgba);
    EXPECT_THAT(pixelsOf("wanted.png"), ElementsAre(245, 235, 225, 255, 0, 0, 0, 255));
    expectSuccess("--host console apply InvertQVR a.tga console.png --alpha");
    EXPECT_THAT(pixelsOf("console.png"), ElementsAre(245, 235, 225, 255, 0, 0, 0, 255));
    expectSuccess("apply InvertQVR sheer.tga opaque.png --opaque");
    EXPECT_EQ(channelsOf("opaque.png"), rgb);
    expectFailure("apply InvertQVR a.tga out.jpg --alpha", "--alpha: the format of out.jpg has no alpha");
    expectFailure("apply InvertQVR a.tga b.tga --to '{name}.jpg' --alpha",
                  "the format of a.jpg has no alpha");
    expectFailure("filter PictureSepiaQVR a.tga out.jpg --alpha", "has no alpha");
    expectFailure("apply InvertQVR a.tga out.png --alpha --opaque", "excludes", usage);
}

TEST_P(Outputs, ComeWithAWarningWhereAlphaIsLost)
{
    const auto expectWarning = [&](const std::string& arguments, const std::string& text) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.code, success) << result.errors;
        EXPECT_EQ(result.errors, "pictureqvr: warning: " + text + "\n");
    };
    expectWarning("apply InvertQVR sheer.tga out.jpg",
                  "the alpha of sheer.tga is not in out.jpg, whose format has "
                  "none; --opaque drops it without a word");
    expectWarning("apply InvertQVR sheer.tga a.tga --to '{name}.jpg'",
                  "the alpha of sheer.tga is not in sheer.jpg, whose format has none; --opaque drops it "
                  "without a word");
    expectSuccess("apply 'PicturetoBinaryStringQVR(@1)' b.tga b.bin");
    expectWarning(
        "apply 'BinaryStringtoPictureQVR(@b.bin).ReplaceRedChannelQVR(photo)' sheer.tga cut.png",
        "the alpha of sheer.tga is not in cut.png, which has another size; --opaque drops it without a word");
    expectWarning("--storage gworld24 apply InvertQVR sheer.tga thin.png",
                  "the alpha of sheer.tga is not in thin.png, as its storage had none; --opaque drops it "
                  "without a word");
    expectSuccess("apply InvertQVR sheer.tga opaque.jpg --opaque");
    expectSuccess("apply InvertQVR sheer.tga quiet.jpg --quiet");
}

TEST_P(Outputs, ComeWithAWarningWhereAnAnimationHadMore)
{
    const std::string frame{",\0\0\0\0\1\0\1\0\0\2\2D\1\0", 15};
    write("two.gif", std::string{"GIF89a\1\0\1\0\x80\0\0\x10\x20\x30\xFF\xFF\xFF", 19} + frame + frame + ";");
    const Outcome result = run("apply InvertQVR two.gif out.png");
    EXPECT_EQ(result.code, success);
    EXPECT_EQ(result.errors, "pictureqvr: warning: two.gif holds 2 pictures, of which the first is used\n");
    EXPECT_THAT(pixelsOf("out.png"), ElementsAre(239, 223, 207, 255));
}

// Standard input and output

TEST_P(Outputs, CanBeStandardOutput)
{
    expectSuccess("apply InvertQVR a.tga out.png");
    const std::string wanted = bytesOf("out.png");
    expectSuccess("apply InvertQVR - - --format png <a.tga", wanted);
    expectSuccess("apply InvertQVR a.tga - --format PNG", wanted);
    expectSuccess("apply InvertQVR - piped.png <a.tga");
    EXPECT_EQ(bytesOf("piped.png"), wanted);
    EXPECT_EQ(runInShell("cat a.tga | pictureqvr apply InvertQVR - - --format png | cat").output, wanted);
    expectSuccess("filter PictureSepiaQVR a.tga sepia.bmp");
    expectSuccess("filter PictureSepiaQVR - - --format bmp <a.tga", bytesOf("sepia.bmp"));
    expectSuccess("apply 'CountColorQVR(&cFFFFFF)' - <a.tga", "1\n");
    expectSuccess("apply 'PicturetoBinaryStringQVR(@1)' a.tga packed.bin");
    expectSuccess("apply 'PicturetoBinaryStringQVR(@1)' a.tga -", bytesOf("packed.bin"));
    expectSuccess("apply 'BinaryStringtoPictureQVR(@1).InvertQVR' - - --format png <packed.bin", wanted);
    expectSuccess("apply 'ReplaceRedChannelQVR(@-)' a.tga red.png <a.tga");
    EXPECT_EQ(pixelsOf("red.png"), pixelsOf("a.tga"));
    expectFailure("apply InvertQVR a.tga -", "--format png");
    expectFailure("apply InvertQVR a.tga - --format gif", "there is no format \"gif\"");
    EXPECT_THAT(onTerminal("apply InvertQVR a.tga - --format png"),
                HasSubstr("standard output is a terminal"));
    EXPECT_THAT(onTerminal("apply InvertQVR - out2.png"), HasSubstr("standard input, which is a terminal"));
}

/// What else is told goes to stderr.
TEST_P(Outputs, ToStandardOutputAreNothingButThePicture)
{
    const Outcome result = run("apply 'ScrollHorizontalQVR(1, true, false)' a.tga - --format png --verbose");
    EXPECT_EQ(result.errors, "true\n-: 2 x 1\n");
    write("out.png", result.output);
    EXPECT_THAT(pixelsOf("out.png"), ElementsAre(255, 255, 255, 255, 10, 20, 30, 255));
    EXPECT_NE(runInShell("pictureqvr apply InvertQVR a.tga - --format png >/dev/full").code, success);
    const Outcome saved =
        run("apply 'CountColorsQVR(red, green, blue, n)' a.tga --save red=- --save green=g --save "
            "blue=b");
    EXPECT_EQ(saved.output.size(), 1024U);
    EXPECT_EQ(saved.errors, "n = 2\n");
    expectFailure("apply InvertQVR a.tga b.tga --to - --format png", "standard output takes one result");
}

TEST_P(Outputs, AreStoredAsChosen)
{
    std::vector<Rgb> pixels;
    for (int index = 0; index < 64 * 64; ++index)
        pixels.push_back({static_cast<std::uint8_t>(index * 7), static_cast<std::uint8_t>(index / 5),
                          static_cast<std::uint8_t>(index * index)});
    write("rich.tga", tga(64, 64, pixels));
    const auto sizeOf = [&](const std::string& options) {
        expectSuccess("apply InvertQVR rich.tga stored --force --format " + options);
        return bytesOf("stored").size();
    };
    EXPECT_LT(sizeOf("jpeg --quality 20"), sizeOf("jpeg"));
    EXPECT_LT(sizeOf("jpg"), sizeOf("jpeg --quality 100"));
    EXPECT_LT(sizeOf("png --compress 9"), sizeOf("png --compress 0"));
    EXPECT_EQ(sizeOf("png"), sizeOf("png --compress 6"));
    EXPECT_EQ(bytesOf("stored").substr(1, 3), "PNG");
    expectFailure("apply InvertQVR a.tga out.png --quality 50",
                  "--quality is for JPEG, which out.png is not");
    expectFailure("apply InvertQVR a.tga out.jpg --compress 5",
                  "--compress is for PNG, which out.jpg is not");
    expectFailure("apply InvertQVR a.tga out.jpg --quality 0", "--quality", usage);
    expectFailure("apply InvertQVR a.tga out.png --compress 10", "--compress", usage);
}

TEST_P(Outputs, AreExplained)
{
    for (const char* command : {"apply", "filter"})
    {
        std::string help = run(std::string(command) + " --help").output;
        std::replace(help.begin(), help.end(), '\n', ' ');
        for (const char* text :
             {"--to", "--force", "--quality", "--compress", "--opaque", "orientation is applied", "8 bits",
              "Colour profiles and EXIF data are not", "the first picture is read"})
            EXPECT_THAT(help, HasSubstr(text)) << command;
    }
}

} // namespace
