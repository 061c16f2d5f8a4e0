// What the program says when something is wrong: where, why, and what may have been meant.
#include "tests/support/program.h"

#include <gmock/gmock.h>

#include <string>

namespace
{

using testing::HasSubstr;

class Messages : public ProgramTest
{
protected:
    void SetUp() override
    {
        write("a.tga", tga(2, 1, {{10, 20, 30}, {255, 255, 255}}));
        write("b.tga", tga(1, 1, {{200, 100, 50}}));
    }

    /// The message, the call, and a mark below the character `column`.
    void expectMark(const std::string& call, const std::string& message, std::size_t column,
                    const std::string& files = "a.tga out.png") const
    {
        const Outcome result = run("apply '" + call + "' " + files);
        EXPECT_EQ(result.code, failure);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors,
                  "pictureqvr: " + message + "\n" + call + "\n" + std::string(column - 1, ' ') + "^\n");
    }
};

ON_EVERY_ARTEFACT(Messages);

TEST_P(Messages, MarkThePlaceInACall)
{
    expectMark("InvertQVR(1 +)", "expected a value at character 14", 14);
    expectMark("photo.", "expected a name at character 7", 7);
    expectMark("CountColorQVR(&cFFF)",
               "expected a colour, a hexadecimal number of six digits at character 15", 15, "a.tga");
    expectMark("CountColorQVR(&c00FFFFFF)",
               "expected a colour, a hexadecimal number of six digits at character 15", 15, "a.tga");
    expectMark("InvertQVR.Bits", "Picture has no Bits", 11);
    expectMark("ReplaceRedChannelQVR(nil)", "NilObjectException: The channel picture is nil.", 1);
    expectMark("ReplaceRedChannelQVR(@none.tga)", "cannot read none.tga: No such file or directory", 22);
    expectMark("MergePictureQVR(@1, @0)", "the files of the command line are numbered from @1", 21);
    // Letters of two bytes are one character wide.
    const Outcome umlaut = run("apply 'ReplaceRedChannelQVR(@\"\xC3\xA4\").Bits(' a.tga out.png");
    EXPECT_THAT(umlaut.errors, testing::EndsWith("\n" + std::string(32, ' ') + "^\n"));
    const Outcome setting = run("filter PictureSepiaQVR a.tga out.png --set 'SepiaRed = 1 +'");
    EXPECT_EQ(setting.errors,
              "pictureqvr: expected a value at character 15\nSepiaRed = 1 +\n              ^\n");
    // What has several lines is not shown in one.
    const Outcome lines = run("apply 'InvertQVR(1,\n2 +)' a.tga out.png");
    EXPECT_THAT(lines.errors, testing::MatchesRegex("[^\n]*\n"));
}

TEST_P(Messages, SuggestTheNearestNames)
{
    expectMark("InvretQVR", "there is no method InvretQVR; did you mean InvertQVR?", 1);
    expectMark("invert", "there is no method invert; did you mean InvertGrayQVR or InvertQVR?", 1);
    expectMark("MergePicturesQVR(@1, @2)",
               "there is no method MergePicturesQVR; did you mean MergePictureQVR?", 1,
               "a.tga a.tga out.png");
    expectMark("Xyzzy", "there is no method Xyzzy; \"pictureqvr list\" shows all", 1);
    expectMark("InvertQVR.CuontColorQVR(&cFFFFFF)",
               "Picture has no CuontColorQVR; did you mean CountColorQVR or CountColorsQVR?", 11, "a.tga");
    expectMark("photo.Widht", "Picture has no Widht; did you mean Width?", 7, "a.tga");
    expectFailure("filter PictureSepia a.tga out.png",
                  "there is no class PictureSepia; did you mean PictureSepiaQVR?");
    expectFailure("filter PictureSepiaQVR a.tga out.png --set SepiaRd=1",
                  "PictureSepiaQVR has no property SepiaRd; did you mean SepiaRed?");
    expectFailure("help ScrolQVR", "there is no method or class ScrolQVR; did you mean ScrollQVR?");
    expectFailure("help PictureLut", "did you mean PictureLut3DQVR?");
    write("p.bas", "Dim p As New Picture(2, 2)\nPrint p.Hieght");
    EXPECT_EQ(run("run p.bas").errors, "p.bas:2:9: Picture has no Hieght; did you mean Height?\n");
    write("p.bas", "Print Sqr(2)");
    EXPECT_THAT(run("run p.bas").errors, HasSubstr("; did you mean Sqrt"));
}

TEST_P(Messages, TellWhichArgumentDoesNotFit)
{
    const std::string inverts =
        "InvertQVR takes (left as integer, top as integer, width as integer, height as integer) or (); ";
    expectMark("InvertQVR(1, 2)", inverts + "argument 3, width, is missing", 1);
    expectMark("InvertQVR(1, 2, 3, 4, 5)", inverts + "argument 5 is one too many", 23);
    expectMark("InvertQVR(1, 2, true, 4)", inverts + "argument 3 is of type boolean, width of type integer",
               17);
    expectMark(
        "ChangeSaturationQVR(1.5)",
        "ChangeSaturationQVR takes (Amount as integer); argument 1 is of type double, Amount of type integer",
        21);
    expectMark(
        "ChangeSaturationQVR(Widht)",
        "ChangeSaturationQVR takes (Amount as integer); argument 1 has no value: there is no Widht; did you "
        "mean Width?",
        21);
    expectMark("ReplaceRedChannelQVR(photo.InvertQVR(0)).InvertQVR", inverts + "argument 2, top, is missing",
               28);
    expectMark("FindPictureQVR(5, x, y)",
               "FindPictureQVR takes (pic as picture, byref x as integer, byref y as integer); argument 1 is "
               "of type "
               "integer, pic of type picture",
               16, "a.tga");
    write("p.bas", "Dim p As New Picture(2, 2)\nDim x As Integer\nPrint p.FindPictureQVR(p, 5, x)");
    EXPECT_THAT(
        run("run p.bas").errors,
        testing::MatchesRegex("p.bas:3:27: FindPictureQVR takes [^\n]*; argument 2 is no variable, and x is "
                              "ByRef\n"));
}

TEST_P(Messages, TellWhyAResultIsNil)
{
    expectFailure("apply 'ReplaceRedChannelQVR(@b.tga)' a.tga out.png",
                  "ReplaceRedChannelQVR gave nil: the pictures have different sizes, 2 x 1 and 1 x 1");
    expectFailure("apply 'ReplaceRedChannelQVR(@b.tga).InvertQVR' a.tga out.png",
                  "ReplaceRedChannelQVR gave nil: the pictures have different sizes");
    expectFailure("apply 'MergePictureQVR(@1, nil)' a.tga out.png", "MergePictureQVR gave nil: ");
    write("wide.tga", tga(40000, 1, std::vector<Rgb>(40000, {1, 2, 3})));
    const std::string wide = "the picture has 40000 x 1 pixels, and a side at most 32767";
    expectFailure("apply InvertQVR wide.tga out.png", "InvertQVR gave nil: " + wide);
    expectFailure("filter PictureSepiaQVR wide.tga out.png", "PictureSepiaQVR.Run gave false: " + wide);
    const std::string sound{
        "RIFF\0\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1F\0\0\x40\x1F\0\0\1\0\x08\0data\1\0\0\0x", 45};
    write("sound.wav", sound);
    expectFailure("apply 'RenderSamplesQVR(@sound.wav, 0, 0, 40000, 10, 0)' out.png",
                  "RenderSamplesQVR gave nil: Width is 40000, and a side has at most 32767 pixels");
    write("short.bin", "x");
    expectFailure(
        "apply 'BinaryStringtoPictureQVR(@short.bin)' out.png",
        "BinaryStringtoPictureQVR gave nil; \"pictureqvr help BinaryStringtoPictureQVR\" tells when it does");
    expectFailure(
        "--host console apply 'TransformColorsQVR(@sound.wav, @sound.wav, @sound.wav)' a.tga out.png",
        "TransformColorsQVR gave nil: TransformColorsQVR is for desktop applications");
}

TEST_P(Messages, RefuseToSetWhatTheCommandSets)
{
    for (const char* name : {"DestinationPicture", "SourcePicture", "filter.destinationpicture"})
        expectFailure("filter PictureSepiaQVR a.tga out.png --set " + std::string(name) + "=nil",
                      "is a file of the command, and no setting");
    expectFailure("filter PictureSepiaQVR a.tga out.png --set DestinationPicture=@a.tga", "no setting");
    EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
}

TEST_P(Messages, ComeWithExitCodes)
{
    EXPECT_EQ(run("apply InvertQVR a.tga out.png").code, success);
    EXPECT_EQ(run("apply InvertQVR none.tga out2.png").code, failure);
    EXPECT_EQ(run("apply InvertQVR a.tga b.tga none.tga --to '{name}.png'").code, failure);
    EXPECT_EQ(run("apply InvertQVR a.tga out.png --nonsense").code, usage);
    EXPECT_EQ(run("nonsense").code, usage);
}

} // namespace
