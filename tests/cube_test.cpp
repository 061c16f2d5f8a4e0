// Colour tables in .cube files: read, and put into the class that maps colours through a table.
#include "media/cube.h"

#include "host/error.h"
#include "tests/support/program.h"

#include <gmock/gmock.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace
{

using media::Cube;
using media::Levels;
using testing::DoubleNear;
using testing::ElementsAre;

Levels mapped(const Cube& cube, double red, double green, double blue)
{
    return cube.at({cube.placeOf(0, red), cube.placeOf(1, green), cube.placeOf(2, blue)});
}

Levels mapped(const std::string& text, double red, double green, double blue)
{
    return mapped(Cube(text, "a.cube"), red, green, blue);
}

auto near(double red, double green, double blue)
{
    constexpr double tolerance = 1e-12;
    return ElementsAre(DoubleNear(red, tolerance), DoubleNear(green, tolerance), DoubleNear(blue, tolerance));
}

std::string line(double red, double green, double blue)
{
    return std::to_string(red) + " " + std::to_string(green) + " " + std::to_string(blue) + "\n";
}

/// A table for all channels with what `change` makes of the colours, red fastest.
template <class Change>
std::string cubeText(int size, Change change)
{
    std::string text = "LUT_3D_SIZE " + std::to_string(size) + "\n";
    const double last = size - 1;
    for (int blue = 0; blue < size; ++blue)
        for (int green = 0; green < size; ++green)
            for (int red = 0; red < size; ++red)
                text += change(red / last, green / last, blue / last);
    return text;
}

const std::string identity = cubeText(2, line);

std::string exchanged(double red, double green, double blue)
{
    return line(blue, 1 - red, green / 2);
}

std::string messageFor(const std::string& text)
{
    try
    {
        const Cube cube(text, "a.cube");
    }
    catch (const standin::Error& error)
    {
        return error.what();
    }
    return "";
}

TEST(Cube, EntriesStandWithRedFastest)
{
    EXPECT_THAT(mapped(identity, 1, 0, 0), near(1, 0, 0));
    EXPECT_THAT(mapped(identity, 0.25, 0.5, 0.75), near(0.25, 0.5, 0.75));
    const std::string text = cubeText(3, exchanged);
    EXPECT_THAT(mapped(text, 0, 0.5, 1), near(1, 1, 0.25));
    EXPECT_THAT(mapped(text, 0.1, 0.6, 0.3), near(0.3, 0.9, 0.3));
    EXPECT_THAT(mapped(text, -1, 2, 5), near(1, 1, 0.5)) << "outside it goes on as at the edge";
}

TEST(Cube, BetweenEntriesTetrahedraLie)
{
    // One corner of eight alone is not 0.
    const auto corner = [](int red, int green, int blue) {
        return cubeText(2, [=](double r, double g, double b) {
            return line(r == red && g == green && b == blue ? 1 : 0, 0, 0);
        });
    };
    const double red = 0.75;
    const double green = 0.25;
    const double blue = 0.5;
    EXPECT_THAT(mapped(corner(0, 0, 0), red, green, blue), near(0.25, 0, 0));
    EXPECT_THAT(mapped(corner(1, 0, 0), red, green, blue), near(0.25, 0, 0));
    EXPECT_THAT(mapped(corner(1, 0, 1), red, green, blue), near(0.25, 0, 0));
    EXPECT_THAT(mapped(corner(1, 1, 1), red, green, blue), near(0.25, 0, 0));
    for (const auto& [r, g, b] : {std::array{0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}})
        EXPECT_THAT(mapped(corner(r, g, b), red, green, blue), near(0, 0, 0)) << r << g << b;
}

TEST(Cube, ChannelsMayHaveTablesOfTheirOwn)
{
    const std::string table = "LUT_1D_SIZE 3\n0 1 0\n0.25 0.5 2\n1 0 4\n";
    EXPECT_THAT(mapped(table, 0.5, 0.5, 0.5), near(0.25, 0.5, 2));
    EXPECT_THAT(mapped(table, 0.25, 0.75, 1), near(0.125, 0.25, 4));
    std::string gamma = "LUT_1D_SIZE 1024\n";
    for (int index = 0; index < 1024; ++index)
        gamma += line(std::pow(index / 1023.0, 2.2), index / 1023.0, 0);
    EXPECT_THAT(mapped(gamma, 0.4, 0.4, 0.4),
                ElementsAre(DoubleNear(std::pow(0.4, 2.2), 2e-6), DoubleNear(0.4, 2e-6), 0));
    // With both, the channels come first.
    const std::string both =
        "LUT_1D_SIZE 2\nLUT_3D_SIZE 2\n1 1 1\n0 0 0\n" + identity.substr(identity.find('\n') + 1);
    EXPECT_THAT(mapped(both, 0.25, 0, 1), near(0.75, 1, 0));
}

TEST(Cube, HeadersSayWhatTheTableIsFor)
{
    const std::string entries = "0 0 0\n1 1 1\n";
    EXPECT_THAT(mapped("LUT_1D_SIZE 2\nDOMAIN_MIN 0 -1 0.5\nDOMAIN_MAX 2 1 1.5\n" + entries, 1, 0.5, 1),
                near(0.5, 0.75, 0.5));
    EXPECT_THAT(mapped("LUT_1D_SIZE 2\nLUT_1D_INPUT_RANGE 0.0 4.0\n" + entries, 1, 2, 5), near(0.25, 0.5, 1));
    EXPECT_THAT(mapped("LUT_3D_INPUT_RANGE 0 2\n" + identity, 1, 2, 0), near(0.5, 1, 0));
    const Cube cube(
        "\xEF\xBB\xBF# a look\r\n\r\nTITLE \"Late \"summer\"\"\r\n\tLUT_1D_SIZE\t2 \r\n# now\r\n 0 0 0\r\n"
        "#\r\n+1 1e0 1.\r\n\r\n# end",
        "a.cube");
    EXPECT_EQ(cube.title(), "Late \"summer\"");
    EXPECT_THAT(mapped(cube, 0.5, 0.25, 1), near(0.5, 0.25, 1));
}

TEST(Cube, FilesThatAreNoneAreRefusedWithLineAndReason)
{
    for (const auto& [text, message] : std::vector<std::pair<std::string, std::string>>{
             {"", "1: LUT_1D_SIZE or LUT_3D_SIZE is missing"},
             {"TITLE \"a\"\n", "1: LUT_1D_SIZE or LUT_3D_SIZE is missing"},
             {"\n0 0 0\n", "2: LUT_1D_SIZE or LUT_3D_SIZE must stand before the first entry"},
             {"LUT_1D_SIZE 2\n0 0 0\n", "2: the table ends after 1 of 2 entries"},
             {"LUT_1D_SIZE 2\n0 0 0\n1 1 1\n\n2 2 2\n", "5: the table has more than 2 entries"},
             {"LUT_1D_SIZE 2\n0 0\n", "2: a number is missing"},
             {"LUT_1D_SIZE 2\n0 0 0 0\n", "2: \"0\" is too much"},
             {"LUT_1D_SIZE 2\n0 x 0\n", "2: \"x\" is no number that a level can be"},
             {"LUT_1D_SIZE 2\n0 nan 0\n", "2: \"nan\" is no number that a level can be"},
             {"LUT_1D_SIZE 2\n0 1e99 0\n", "2: \"1e99\" is no number that a level can be"},
             {"LUT_1D_SIZE 2\n0 1,5 0\n", "2: \"1,5\" is no number that a level can be"},
             {"LUT_3D_SIZE 1\n", "1: expected a size of 2 to 256"},
             {"LUT_3D_SIZE 257\n", "1: expected a size of 2 to 256"},
             {"LUT_1D_SIZE 2.5\n", "1: expected a size of 2 to 65536"},
             {"LUT_1D_SIZE 65537\n", "1: expected a size of 2 to 65536"},
             {"LUT_1D_SIZE\n", "1: a number is missing"},
             {"LUT_1D_SIZE 2\nLUT_1D_SIZE 2\n", "2: the size stands here for the second time"},
             {"TITLE look\n", "1: expected a title in quotation marks"},
             {"LUT_1D_SIZE 2\nDOMAIN_MIN 0 1 0\n0 0 0\n", "3: the domain ends before it begins"},
             {"LUT_1D_SIZE 2\n0 0 0\nTITLE \"a\"\n", "3: TITLE stands behind the first entry"},
             {"\x89PNG\r\n", "1: expected a keyword or three numbers, not \"\x89PNG\""}})
        EXPECT_EQ(messageFor(text), "a.cube:" + message);
}

class CubeFiles : public ProgramTest
{
protected:
    void SetUp() override
    {
        std::string pixels;
        for (int index = 0; index < 3 * side * side; ++index)
            pixels += static_cast<char>(index * 37);
        write("photo.ppm", header + pixels);
    }

    static constexpr int side = 16;
    const std::string header = "P6\n16 16\n255\n";
};

ON_EVERY_ARTEFACT(CubeFiles);

TEST_P(CubeFiles, AreAppliedAsTheClassCan)
{
    write("identity.cube", identity);
    const Outcome result = run("filter PictureLut3DQVR --cube identity.cube photo.ppm same.ppm");
    EXPECT_EQ(result.code, success);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "identity.cube: over all 16777216 colours, levels are at most 0 and on average 0.000 "
              "away from the file's table\n");
    EXPECT_EQ(contentsOf(folder / "same.ppm"), contentsOf(folder / "photo.ppm"));

    write("negative.cube",
          cubeText(5, [](double r, double g, double b) { return line(1 - r, 1 - g, 1 - b); }));
    expectSuccess("filter PictureLut3DQVR --quiet --cube negative.cube photo.ppm negative.ppm");
    expectSuccess("apply InvertQVR photo.ppm inverted.ppm");
    EXPECT_EQ(contentsOf(folder / "negative.ppm"), contentsOf(folder / "inverted.ppm"));
}

TEST_P(CubeFiles, BecomePrograms)
{
    // Levels below and above those that there are change what lies between entries.
    write("look.cube", cubeText(7, [](double r, double g, double b) {
              return line(1.5 * r - 0.2, (g + b) / 2, std::sqrt(b) / 3);
          }));
    expectSuccess("filter PictureLut3DQVR --quiet --cube look.cube photo.ppm wanted.ppm");
    const Outcome code = run("filter PictureLut3DQVR --cube look.cube --code");
    EXPECT_EQ(code.code, success);
    EXPECT_EQ(code.errors, "");
    EXPECT_LT(code.output.size(), 120000U);
    write("look.bas", code.output + "lut.SourcePicture = Picture.Open(\"photo.ppm\")\n"
                                    "If lut.Run Then lut.DestinationPicture.Save(\"got.ppm\")\n"
                                    "Print lut.Table(15, 0, 0, 0)\n");
    expectSuccess("run look.bas", "332\n");
    EXPECT_EQ(contentsOf(folder / "got.ppm"), contentsOf(folder / "wanted.ppm"));
}

TEST_P(CubeFiles, GoWithTheirClassAlone)
{
    write("identity.cube", identity);
    write("bad.cube", "LUT_3D_SIZE x\n");
    expectFailure("filter PictureSepiaQVR --cube identity.cube photo.ppm out.ppm",
                  "--cube goes with PictureLut3DQVR");
    expectFailure("filter PictureLut3DQVR --code", "--code prints the table of a file that --cube names");
    expectFailure("filter PictureLut3DQVR --cube identity.cube --code photo.ppm", "takes no files");
    expectFailure("filter PictureLut3DQVR --cube bad.cube photo.ppm out.ppm",
                  "bad.cube:1: \"x\" is no number that a level can be");
    expectFailure("filter PictureLut3DQVR --cube identity.cube", "FILES is required", usage);
}

} // namespace
