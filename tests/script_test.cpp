// The host's language: what programs compute, what they call, and what is said of those that are wrong.
#include "script/interpreter.h"
#include "script/parser.h"
#include "tests/support/test_host.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <random>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct Outcome
{
    std::vector<std::string> lines;
    std::string error;

    std::string text() const
    {
        std::string all;
        for (const std::string& line : lines)
            all += (all.empty() ? "" : "|") + line;
        return error.empty() ? all : all + (all.empty() ? "" : "|") + error;
    }
};

constexpr std::uint64_t enoughSteps = 100000;

Outcome outcomeOf(standin::Host& host, const std::string& program, script::Environment environment = {})
{
    Outcome outcome;
    environment.print = [&](const std::string& line) { outcome.lines.push_back(line); };
    if (environment.steps == 0)
        environment.steps = enoughSteps;
    try
    {
        script::run(script::parseProgram(program, "p.bas"), host, environment);
    }
    catch (const script::Failure& failure)
    {
        outcome.error = failure.what();
    }
    EXPECT_TRUE(host.ledger().balanced()) << program << "\n" << host.ledger().describe();
    return outcome;
}

/// What language there is without the plug-in needs one host of any kind.
class Language : public testing::Test
{
protected:
    std::string run(const std::string& program, const script::Environment& environment = {})
    {
        return outcomeOf(host, program, environment).text();
    }

    /// What `Print Str(...)` shows.
    std::string value(const std::string& expression)
    {
        return run("Print Str(" + expression + ")\n");
    }

    TestHost host{hostSetup(standin::Artefact::SharedObject)};
};

/// What is wrong with a text, and where.
std::string errorOf(const std::string& program)
{
    try
    {
        script::parseProgram(program, "p.bas");
    }
    catch (const script::Failure& failure)
    {
        return failure.what();
    }
    return "no error";
}

std::string repeated(const std::string& text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

// Values

TEST_F(Language, HasLiterals)
{
    for (const auto& [literal, shown] :
         std::initializer_list<std::pair<const char*, const char*>>{{"12", "12"},
                                                                    {"1.5", "1.5"},
                                                                    {".5", "0.5"},
                                                                    {"2.", "2"},
                                                                    {"2.55e+2", "255"},
                                                                    {"1E-3", "0.001"},
                                                                    {"&hFF", "255"},
                                                                    {"&HFFFFFFFF", "-1"},
                                                                    {"&b101", "5"},
                                                                    {"&c0a0B0c", "&c0A0B0C"},
                                                                    {"2147483647", "2147483647"},
                                                                    {"-2147483648", "-2147483648"},
                                                                    {"True", "True"},
                                                                    {"FALSE", "False"},
                                                                    {"\"say \"\"so\"\"\"", "say \"so\""},
                                                                    {"\"\"", ""},
                                                                    {"\"Gr\xC3\xBC\xC3\x9F"
                                                                     "e // ' \"",
                                                                     "Gr\xC3\xBC\xC3\x9F"
                                                                     "e // ' "}})
        EXPECT_EQ(value(literal), shown) << literal;
}

TEST_F(Language, ShowsSevenDigits)
{
    EXPECT_EQ(value("1 / 3"), "0.3333333");
    EXPECT_EQ(value("2 / 3 * 1000000"), "666666.7");
    EXPECT_EQ(value("1e10"), "1e+10");
    EXPECT_EQ(value("4 / 2"), "2");
    EXPECT_EQ(run("Print 3\nPrint True\nPrint &c010203\nPrint \"a\""), "3|True|&c010203|a");
}

TEST_F(Language, RanksOperators)
{
    for (const auto& [expression, shown] : std::initializer_list<std::pair<const char*, const char*>>{
             {"2 + 3 * 4", "14"},
             {"(2 + 3) * 4", "20"},
             {"20 - 3 - 4", "13"},
             {"100 / 10 / 5", "2"},
             {"7 Mod 4 * 2", "6"},
             {"17 \\ 5 + 1", "4"},
             {"2 ^ 3 ^ 2", "64"},
             {"-2 ^ 2", "-4"},
             {"2 ^ -1", "0.5"},
             {"2 * -3", "-6"},
             {"- - 3", "3"},
             {"+3", "3"},
             {"1 + 1 = 2 And 3 < 4", "True"},
             {"True Or False And False", "True"},
             {"True Xor True Or True", "True"},
             {"Not False And False", "False"},
             {"Not True Or True", "True"},
             {"Not 5", "-6"},
             {"6 And 3", "2"},
             {"6 Or 3", "7"},
             {"6 Xor 3", "5"},
             {"1 <= 1 And 1 >= 1 And 1 <> 2 And Not (1 > 1)", "True"}})
        EXPECT_EQ(value(expression), shown) << expression;
}

TEST_F(Language, WrapsIntegersAround)
{
    EXPECT_EQ(value("2147483647 + 1"), "-2147483648");
    EXPECT_EQ(value("-2147483648 - 1"), "2147483647");
    EXPECT_EQ(value("65536 * 65536"), "0");
    EXPECT_EQ(value("2147483647 * 2147483647"), "1");
    EXPECT_EQ(value("-(-2147483648)"), "-2147483648");
    EXPECT_EQ(value("-2147483648 \\ -1"), "-2147483648");
    EXPECT_EQ(value("-2147483648 Mod -1"), "0");
    EXPECT_EQ(value("Abs(-2147483648)"), "-2147483648");
    EXPECT_EQ(
        run("Dim u As UInt32 = -1\nDim v As UInt32 = 2\nPrint u\nPrint u + v\nPrint u \\ v\nPrint v - u\n"
            "Print u > v\nPrint u + 1"),
        "4294967295|1|2147483647|3|True|0");
}

TEST_F(Language, DividesAsItsTypesSay)
{
    EXPECT_EQ(value("7 / 2"), "3.5");
    EXPECT_EQ(value("7 \\ 2"), "3");
    EXPECT_EQ(value("-7 \\ 2"), "-3");
    EXPECT_EQ(value("-7 Mod 3"), "-1");
    EXPECT_EQ(value("7.9 \\ 2.9"), "3");
    EXPECT_EQ(value("1 / 0"), "inf");
    EXPECT_EQ(value("-1 / 0"), "-inf");
    EXPECT_EQ(run("Print 1\nPrint 5 \\ 0"), "1|p.bas:2:9: expected a divisor other than 0");
    EXPECT_EQ(run("Print 5 Mod 0.5"), "p.bas:1:9: expected a divisor other than 0");
}

TEST_F(Language, TurnsDoublesIntoIntegers)
{
    const auto stored = [&](const std::string& number) {
        return run("Dim i As Integer = " + number + "\nPrint i");
    };
    EXPECT_EQ(stored("2.9"), "2");
    EXPECT_EQ(stored("-2.9"), "-2");
    EXPECT_EQ(stored("2147483647.9"), "2147483647");
    EXPECT_EQ(stored("-2147483648.9"), "-2147483648");
    EXPECT_EQ(stored("2147483648.0"), "-2147483648");
    EXPECT_EQ(stored("1e300"), "-2147483648");
    EXPECT_EQ(stored("0 / 0"), "-2147483648");
    EXPECT_EQ(run("Dim u As UInt32 = 4294967295.0\nPrint u\nu = -1.0\nPrint u\nu = 1e300\nPrint u"),
              "4294967295|4294967295|0");
    EXPECT_EQ(run("Dim s As Single = 0.1\nDim d As Double = 0.1\nPrint s = d\nPrint s - d < 0.00001"),
              "False|True");
}

TEST_F(Language, ComparesStringsWithoutCase)
{
    EXPECT_EQ(value("\"ABC\" = \"abc\""), "True");
    EXPECT_EQ(value("\"abd\" > \"ABC\""), "True");
    EXPECT_EQ(value("StrComp(\"ABC\", \"abc\", 0)"), "-1");
    EXPECT_EQ(value("StrComp(\"a\" + \"b\", \"ab\", 0)"), "0");
}

TEST_F(Language, ComparesObjectsByIdentity)
{
    EXPECT_EQ(run("Dim a As New Picture(2, 2)\nDim b As Picture\nPrint a = b\nPrint b = Nil\nPrint b Is Nil\n"
                  "b = a\nPrint a = b\nPrint a Is b\nPrint a <> Nil\nb = New Picture(2, 2)\nPrint a <> b\n"
                  "Print &c010203 = RGB(1, 2, 3)"),
              "False|True|True|True|True|True|True|True");
}

TEST_F(Language, EvaluatesNoMoreThanItMust)
{
    EXPECT_EQ(run("Dim p As Picture\nPrint p <> Nil And p.Width > 3\nPrint p = Nil Or p.Width > 3"),
              "False|True");
    EXPECT_THAT(run("Dim p As Picture\nPrint p = Nil And p.Width > 3"), HasSubstr("NilObjectException"));
}

TEST_F(Language, HasFunctions)
{
    for (const auto& [expression, shown] : std::initializer_list<std::pair<const char*, const char*>>{
             {"Abs(-3)", "3"},
             {"Abs(-2.5)", "2.5"},
             {"Min(3, 1, 2)", "1"},
             {"Max(3, 4.5)", "4.5"},
             {"Max(1, 2) \\ 2", "1"},
             {"Round(2.5)", "3"},
             {"Floor(-2.5)", "-3"},
             {"Ceil(2.1)", "3"},
             {"Sqrt(2)", "1.414214"},
             {"sin(0) + COS(0)", "1"},
             {"Pow(2, 10)", "1024"},
             {"Len(\"\xC3\xBC\")", "1"},
             {"LenB(\"\xC3\xBC\")", "2"},
             {"Val(\" 12.5 apples\")", "12.5"},
             {"Val(\"none\")", "0"},
             {"Hex(255)", "FF"},
             {"RGB(1, 2, 255).Blue", "255"},
             {"(&c102030).Green", "32"},
             {"GetFolderItem(\"a/b.png\").Name", "b.png"}})
        EXPECT_EQ(value(expression), shown) << expression;
}

TEST_F(Language, GivesProgramsTheirArguments)
{
    script::Environment environment;
    environment.arguments = {"p.bas", "one"};
    EXPECT_EQ(run("Print args(0) + args(1)\nPrint args(2)", environment),
              "p.basone|p.bas:2:7: OutOfBoundsException: there is no argument 2 of 2");
}

// Statements

TEST_F(Language, DeclaresVariables)
{
    EXPECT_EQ(run("Dim a, b As Integer, s As String, f As Boolean, d As Double, c As Color\n"
                  "a = 1\nPrint a\nPrint b\nPrint s\nPrint f\nPrint d\nPrint c"),
              "1|0||False|0|&c000000");
    EXPECT_EQ(run("DIM Total AS integer = 2\ntotal = TOTAL + 1\nPRINT total"), "3");
    EXPECT_EQ(run("Dim i As Integer = 1\nIf True Then\nDim i As Integer = 2\nPrint i\nEnd If\nPrint i"),
              "2|1");
    EXPECT_EQ(run("Dim i As Int32 = 1\nWhile i < 3\nDim n As Integer\nn = n + 1\nPrint n\ni = i + 1\nWend"),
              "1|1");
}

TEST_F(Language, RepeatsForLoops)
{
    const auto loop = [&](const std::string& head) {
        return run("Dim d As Double\nDim u As UInt32\nDim i As Integer\nFor " + head + "\nNext");
    };
    EXPECT_EQ(run("For i As Integer = 1 To 3\nPrint i\nNext i"), "1|2|3");
    EXPECT_EQ(run("For i As Integer = 3 DownTo 1 Step 2\nPrint i\nNext"), "3|1");
    EXPECT_EQ(run("For i As Integer = 3 To 1 Step -1\nPrint i\nNext"), "3|2|1");
    EXPECT_EQ(run("For i As Integer = 3 To 1\nPrint i\nNext"), "");
    EXPECT_EQ(run("For d As Double = 0 To 1 Step 0.5\nPrint d\nNext"), "0|0.5|1");
    EXPECT_EQ(run("Dim i As Integer\nFor i = 1 To 3\nNext\nPrint i"), "4");
    EXPECT_EQ(run("For i As Integer = 1 To 9\ni = i + 3\nPrint i\nNext"), "4|8|12");
    // The ends of the range are no trap.
    EXPECT_EQ(run("For i As Integer = 2147483646 To 2147483647\nPrint i\nNext"), "2147483646|2147483647");
    EXPECT_EQ(run("For u As UInt32 = 1 DownTo 0\nPrint u\nNext"), "1|0");
    EXPECT_THAT(loop("i = 1 To 2 Step 0"), HasSubstr("stopped after"));
    EXPECT_EQ(loop("s = 1 To 2"), "p.bas:4:5: expected a variable, \"s\" is none");
    EXPECT_EQ(loop("i = 1 To \"2\""), "p.bas:4:14: expected a number, got String");
}

TEST_F(Language, RepeatsOtherLoops)
{
    EXPECT_EQ(run("Dim i As Integer\nWhile i < 2\ni = i + 1\nPrint i\nWend"), "1|2");
    EXPECT_EQ(run("Dim i As Integer\nDo Until i = 2\ni = i + 1\nPrint i\nLoop"), "1|2");
    EXPECT_EQ(run("Dim i As Integer = 5\nDo\ni = i + 1\nPrint i\nLoop Until i > 3"), "6");
    EXPECT_EQ(run("While 1\nWend"), "p.bas:1:7: expected Boolean, got Integer");
}

TEST_F(Language, LeavesLoops)
{
    EXPECT_EQ(
        run("Dim i As Integer\nDo\ni = i + 1\nIf i = 3 Then Exit\nIf i = 1 Then Continue\nPrint i\nLoop\n"
            "Print \"end\""),
        "2|end");
    EXPECT_EQ(run("For i As Integer = 1 To 3\nWhile True\nIf i = 2 Then Exit For\nContinue For\nWend\nNext\n"
                  "For i As Integer = 1 To 2\nDo\nWhile True\nExit Do\nWend\nLoop\nPrint i\nNext"),
              "1|2");
}

TEST_F(Language, Decides)
{
    const std::string program =
        "For i As Integer = 1 To 4\nIf i = 1 Then\nPrint \"one\"\nElseIf i = 2 Then // no\n"
        "Print \"two\"\nElseIf i = 3 Then\nElse ' the rest\nPrint \"more\"\nEnd If\nNext";
    EXPECT_EQ(run(program), "one|two|more");
    EXPECT_EQ(run("If 1 > 2 Then Print \"a\" Else Print \"b\"\nIf 2 > 1 Then Print \"c\""), "b|c");
}

TEST_F(Language, ReadsAnyLayout)
{
    EXPECT_EQ(run(""), "");
    EXPECT_EQ(run("\xEF\xBB\xBF' only a comment"), "");
    EXPECT_EQ(run("\r\n  Print 1' one\r\n\t\r\n\tprint   2 // two\r\n//\r\n'"), "1|2");
    EXPECT_EQ(run("Print 1 + _\n  2 + _ ' and\n  3"), "6");
    EXPECT_EQ(run("Print Str( 1 ) + Str ( 2 )"), "12");
}

// Objects of the language

TEST_F(Language, HasMemoryBlocks)
{
    EXPECT_EQ(
        run("Dim m As New MemoryBlock(8)\nm.Byte(0) = 254\nm.byte(1) = 255\nPrint m.Size\n"
            "Print m.UInt16Value(0)\nPrint m.Int16Value(0)\nPrint m.Int8Value(0)\nPrint m.UInt8Value(0)\n"
            "m.UInt32Value(0) = &hFFFFFFFE\nPrint m.UInt32Value(0)\nPrint m.Int32Value(0)\n"
            "m.DoubleValue(0) = 1.5\nPrint m.DoubleValue(0)\nm.SingleValue(4) = 0.25\n"
            "Print m.SingleValue(4)\nm.Byte(0) = 65\nPrint m.StringValue(0, 1)\nm.Byte(0) = 300\nPrint "
            "m.Byte(0)"),
        "8|65534|-2|-2|254|4294967294|-2|1.5|0.25|A|44");
    EXPECT_EQ(run("Dim m As MemoryBlock = New MemoryBlock(2)\nm.Int16Value(1) = 3"),
              "p.bas:2:3: OutOfBoundsException: a MemoryBlock of 2 bytes has no 2 at 1");
    EXPECT_THAT(run("Dim m As New MemoryBlock(2)\nPrint m.Byte(-1)"), HasSubstr("p.bas:2:9: OutOfBounds"));
    EXPECT_THAT(run("Dim m As New MemoryBlock(2)\nPrint m.StringValue(1, 2147483647)"),
                HasSubstr("OutOfBounds"));
    EXPECT_THAT(run("Dim m As New MemoryBlock(2)\nPrint m.StringValue(0, -1)"), HasSubstr("OutOfBounds"));
    EXPECT_THAT(run("Dim m As New MemoryBlock(2)\nPrint m.Byte(2147483647)"), HasSubstr("OutOfBounds"));
    EXPECT_THAT(run("Dim m As New MemoryBlock(-1)"), HasSubstr("expected a size of 0 or more"));
    EXPECT_EQ(run("Dim m As New MemoryBlock(0)\nPrint m.Size"), "0");
}

TEST_F(Language, HasPictures)
{
    EXPECT_EQ(run("Dim p As New Picture(3, 2, 32)\nPrint p.Width\nPrint p.Height\nPrint p.Depth\n"
                  "p.RGBSurface.Pixel(2, 1) = &c102030\nPrint p.RGBSurface.Pixel(2, 1)\n"
                  "Print p.RGBSurface.Pixel(2, 1).Green\nPrint p.Mask = Nil\np.Mask = New Picture(3, 2)\n"
                  "Print p.Mask.Width\np.Mask = Nil\nPrint p.Mask Is Nil"),
              "3|2|32|&c102030|32|True|3|True");
    EXPECT_THAT(run("Dim p As New Picture(3, 2)\nPrint p.RGBSurface.Pixel(3, 0)"),
                HasSubstr("p.bas:2:20: OutOfBoundsException: a Picture of 3 x 2 has no pixel 3, 0"));
    EXPECT_THAT(run("Dim p As New Picture(0, 2)"), HasSubstr("p.bas:1:14: expected a width and a height"));
    EXPECT_THAT(run("Dim p As New Picture(1, 32768)"), HasSubstr("got 1 x 32768"));
    EXPECT_THAT(run("Dim p As New Picture(1, 1, 8)"), HasSubstr("a depth of 32"));
}

/// A picture gets the mask that is the picture itself; nothing of that may keep it alive.
TEST_F(Language, KeepsNothing)
{
    standin::Picture receiver = host.newPicture(4, 4);
    const int before = receiver.referenceCount();
    const script::CallContext context{"photo", receiver, nullptr};
    const int held = receiver.referenceCount();
    script::call(script::parseCall("InvertQVR"), host, {}, context);
    script::call(script::parseCall("EmbeddedMaskQVR(false) = photo"), host, {}, context);
    script::call(script::parseCall("photo.ReplaceRedChannelQVR(photo.InvertQVR).InvertQVR"), host, {},
                 context);
    EXPECT_THROW(script::call(script::parseCall("ReplaceRedChannelQVR(photo.Nothing)"), host, {}, context),
                 standin::Error);
    EXPECT_EQ(receiver.referenceCount(), held);
    EXPECT_EQ(before, 1);
}

// What is wrong

TEST(LanguageErrors, NameThePlaceAndWhatWasExpected)
{
    for (const auto& [program, error] : std::initializer_list<std::pair<const char*, const char*>>{
             {"Dim x As Integer = ", "1:20: expected a value"},
             {"Dim", "1:4: expected a variable's name"},
             {"Dim x", "1:6: expected \"As\""},
             {"Dim x As 5", "1:10: expected a type's name"},
             {"Dim If As Integer", "1:5: expected a variable's name"},
             {"Dim a As Integer, a As Integer", "1:19: expected another name, there is a variable a already"},
             {"x = ", "1:5: expected a value"},
             {"x = 1 +", "1:8: expected a value"},
             {"x = 1 * \n", "1:9: expected a value"},
             {"x = 1 And", "1:10: expected a value"},
             {"x = 1 < ", "1:9: expected a value"},
             {"x = 1 Or ", "1:10: expected a value"},
             {"x = 2 ^ ", "1:9: expected a value"},
             {"x = Not", "1:8: expected a value"},
             {"x = 1 2", "1:7: expected the end of the line"},
             {"x = (1", "1:7: expected \")\""},
             {"x = f(1", "1:8: expected \",\" or \")\""},
             {"x = f(1,", "1:9: expected a value"},
             {"x = 12ab", "1:7: expected a number"},
             {"x = 2147483648", "1:5: expected an integer of 32 bits"},
             {"x = 99999999999", "1:5: expected an integer of 32 bits"},
             {"x = - 2147483649", "1:7: expected an integer of 32 bits"},
             {"x = 1e999", "1:5: expected a number within the range of doubles"},
             {"x = &hFFFFFFFFF", "1:5: expected a hexadecimal number of 32 bits"},
             {"x = &c1000000", "1:5: expected a colour, a hexadecimal number of six digits"},
             {"x = &cXYZ", "1:7: expected a hexadecimal number"},
             {"x = &b2", "1:7: expected a binary number"},
             {"x = &q", "1:6: expected \"&h\", \"&c\" or \"&b\""},
             {"x = \"abc", "1:9: expected a closing quotation mark"},
             {"x = \"abc\ny\"", "1:9: expected a closing quotation mark"},
             {"x = y.", "1:7: expected a name"},
             {"x = @photo.png", "1:5: expected a value"},
             {"x = New", "1:8: expected a type's name"},
             {"Call", "1:5: expected a method's name"},
             {"Print", "1:6: expected a value"},
             {"\n  If 1 = 1\nEnd If", "2:11: expected \"Then\""},
             {"If True Then\nPrint 1", "2:8: expected \"End If\""},
             {"If True Then\nEnd", "2:4: expected \"End If\""},
             {"If True Then Dim x As Integer", "1:14: expected a statement"},
             {"If True Then\nElse\nElseIf True Then\nEnd If", "3:1: expected \"End If\""},
             {"For 5 = 1 To 2\nNext", "1:5: expected a variable's name"},
             {"For i As Integer 1 To 2\nNext", "1:18: expected \"=\""},
             {"For i As Integer = 1\nNext", "1:21: expected \"To\" or \"DownTo\""},
             {"For i As Integer = 1 To 2\n", "2:1: expected \"Next\""},
             {"For i As Integer = 1 To 2\nNext j", "2:6: expected \"i\" or the end of the line"},
             {"While True\n", "2:1: expected \"Wend\""},
             {"Do\nWend", "2:1: expected \"Loop\""},
             {"Next", "1:1: expected a statement"},
             {"5 = x", "1:1: expected a statement"},
             {"Exit", "1:1: expected a loop around this"},
             {"While True\nExit For\nWend", "2:1: expected a loop around this"},
             {"x = 1 _ 2\n", "1:7: expected the end of the line"},
             {"x = \x01", "1:5: expected a value"}})
        EXPECT_EQ(errorOf(program), std::string("p.bas:") + error) << program;
}

TEST_F(Language, ChecksNamesBeforeItBegins)
{
    EXPECT_EQ(run("Print 1\nPrint y"),
              "p.bas:2:7: expected a variable, a function or a method, \"y\" is none of them");
    EXPECT_EQ(run("Print 1\nDim x As Nothing"), "p.bas:2:10: expected a type, there is no Nothing");
    EXPECT_EQ(run("Print 1\nDim x As Integer = x"),
              "p.bas:2:20: expected a variable, a function or a method, \"x\" is none of them");
    EXPECT_EQ(run("For i As Integer = 1 To 1\nNext\nPrint i"),
              "p.bas:3:7: expected a variable, a function or a method, \"i\" is none of them");
}

TEST_F(Language, RefusesWrongTypes)
{
    for (const auto& [program, error] : std::initializer_list<std::pair<const char*, const char*>>{
             {"Dim i As Integer = \"1\"", "1:20: expected Integer, got String"},
             {"Dim i As Integer = True", "1:20: expected Integer, got Boolean"},
             {"Dim s As String = 5", "1:19: expected String, got Integer"},
             {"Dim b As Boolean\nb = 1", "2:5: expected Boolean, got Integer"},
             {"Dim c As Color = &hFF", "1:18: expected Color, got Integer"},
             {"Dim p As Picture = New MemoryBlock(1)", "1:20: expected Picture, got MemoryBlock"},
             {"Dim s As PictureSepiaQVR = New PictureLut3DQVR",
              "1:28: expected PictureSepiaQVR, got PictureLut3DQVR"},
             {"Dim i As New Integer", "1:14: expected a class, Integer has no New"},
             {"Print 1 + \"a\"", "1:9: expected other operands: \"+\" does not take Integer and String"},
             {"Print 1.5 And 1", "1:11: expected other operands: \"And\" does not take Double and Integer"},
             {"Print \"a\" - \"b\"", "1:11: expected other operands: \"-\" does not take String and String"},
             {"Print True < False", "1:12: expected other operands: \"<\" does not take Boolean and Boolean"},
             {"Print Not \"a\"", "1:7: expected Boolean, got String"},
             {"Print -\"a\"", "1:7: expected a number, got String"},
             {"Print Nil", "1:7: expected a number, a Boolean, a Color or a String, got Nil"},
             {"Print Sqrt(\"a\")", "1:7: expected a number, got String"},
             {"Print Sqrt()", "1:7: expected 1 argument: Sqrt was given 0"},
             {"Print RGB(1, 2)", "1:7: expected 3 arguments: RGB was given 2"},
             {"Print RGB(1, 2, 256)", "1:7: expected channels of 0 to 255, got 256"},
             {"Dim i As Integer\nPrint i(1)", "2:7: expected no arguments, i is a variable"},
             {"Dim i As Integer\nPrint i.Width", "2:9: Integer has no Width"},
             {"Dim m As MemoryBlock\nm.Byte(0) = 1",
              "2:3: NilObjectException: Nil has no Byte that can be assigned to"},
             {"Dim m As New MemoryBlock(1)\nm.Size = 1",
              "2:3: MemoryBlock has no Size that can be assigned to"},
             {"Print Picture.Nothing", "1:15: Picture has no Nothing"},
             {"Str(1) = 2", "1:1: Str cannot be assigned to"}})
        EXPECT_EQ(run(program), std::string("p.bas:") + error) << program;
}

TEST_F(Language, StopsRunawayPrograms)
{
    script::Environment environment;
    environment.steps = 10;
    EXPECT_EQ(run("Dim i As Integer\nWhile True\ni = i + 1\nIf i = 4 Then Print i\nWend", environment),
              "p.bas:4:1: stopped after 10 steps");
    EXPECT_EQ(run("Print 1\nPrint 2", environment), "1|2");
}

TEST_F(Language, RefusesWhatIsTooLarge)
{
    script::Environment environment;
    environment.largestObject = 1000;
    EXPECT_EQ(run("Dim s As String = \"ab\"\nWhile True\ns = s + s\nWend", environment),
              "p.bas:3:7: expected something smaller: 1024 bytes are too many");
    EXPECT_THAT(run("Dim m As New MemoryBlock(1001)", environment), HasSubstr("1001 bytes are too many"));
    EXPECT_THAT(run("Dim p As New Picture(100, 100)", environment), HasSubstr("40000 bytes are too many"));
}

TEST(LanguageErrors, LimitsNesting)
{
    const std::string message = "expected at most 64 brackets, signs and blocks in each other";
    for (const auto& [opening, inside, closing] : {std::array{"(", "1", ")"},
                                                   {"-", "1", ""},
                                                   {"Not ", "True", ""},
                                                   {"Str(", "1", ")"},
                                                   {"2 ^ -", "1", ""}})
    {
        EXPECT_EQ(errorOf("x = " + repeated(opening, 20) + inside + repeated(closing, 20)), "no error")
            << opening;
        EXPECT_THAT(errorOf("x = " + repeated(opening, 100000) + inside), HasSubstr(message)) << opening;
    }
    EXPECT_EQ(errorOf(repeated("If True Then\n", 50) + repeated("End If\n", 50)), "no error");
    EXPECT_THAT(errorOf(repeated("While True\n", 10000)), HasSubstr(message));
    // What only goes on is not nested.
    EXPECT_EQ(errorOf("x = 1" + repeated(" + 1", 100000)), "no error");
    EXPECT_EQ(errorOf("x" + repeated(".y", 100000)), "no error");
    EXPECT_EQ(errorOf("If a Then\n" + repeated("ElseIf b Then\n", 10000) + "End If"), "no error");
}

/// Whatever the text, it is run or refused with a place in it.
TEST_F(Language, SurvivesNonsense)
{
    const std::vector<std::string> words{
        "Dim ",      "x",    "y ",     "As ",     "Integer",     " = ",    "1",      "2.5",
        "\"s\"",     "(",    ")",      ",",       ".",           "\n",     "\n",     "If ",
        "Then",      "\n",   "End If", "For ",    " To ",        "Next",   "While ", "Wend",
        "Print ",    "Str(", "New ",   "Picture", "MemoryBlock", "(4, 4)", ".Width", ".Byte(0)",
        "InvertQVR", "&c",   "&hFF",   " + ",     " \\ ",        " Mod ",  "Not ",   " And ",
        "Nil",       "True", "'",      "_\n",     "//",          "Do",     "Loop",   "Exit",
        "@",         "\"",   "\x80",   "Call ",   "ColornessQVR"};
    script::Environment environment;
    environment.steps = 500;
    environment.largestObject = 100000;
    std::minstd_rand random(7);
    int ran = 0;
    for (int round = 0; round < affordable(20000); ++round)
    {
        std::string text;
        for (std::size_t length = random() % 12 + 1; length > 0; --length)
            text += words[random() % words.size()];
        const Outcome outcome = outcomeOf(host, text, environment);
        ran += outcome.error.empty();
        if (!outcome.error.empty())
            ASSERT_THAT(outcome.error, StartsWith("p.bas:")) << text;
    }
    EXPECT_GT(ran, 10);
}

// Calls of the plug-in

class Script : public ArtefactTest
{
protected:
    Script() : folder(fs::temp_directory_path() / ("pictureqvr-script-" + std::to_string(getpid())))
    {
        fs::create_directories(folder);
    }
    ~Script() override
    {
        fs::remove_all(folder);
    }
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    script::Environment environment() const
    {
        script::Environment result;
        result.path = [this](const std::string& name) { return (folder / name).string(); };
        return result;
    }

    std::string run(standin::Host& host, const std::string& program) const
    {
        return outcomeOf(host, program, environment()).text();
    }
    std::string run(const std::string& program) const
    {
        TestHost host{hostSetup(artefact())};
        return run(host, program);
    }

    const fs::path folder;
    /// Red, green, blue, white.
    const std::string fourPixels =
        "Dim p As New Picture(4, 1)\np.RGBSurface.Pixel(0, 0) = &cFF0000\n"
        "p.RGBSurface.Pixel(1, 0) = &c00FF00\np.RGBSurface.Pixel(2, 0) = &c0000FF\n"
        "p.RGBSurface.Pixel(3, 0) = &cFFFFFF\n";
};
ON_EVERY_ARTEFACT(Script);

TEST_P(Script, CallsMethodsByDeclaration)
{
    forEachHost(artefact(), [&](TestHost& host) {
        EXPECT_EQ(run(host, fourPixels +
                                "Print p.InvertQVR.RGBSurface.Pixel(0, 0)\n"
                                "Print p.InvertQVR(0, 0, 4, 1).RGBSurface.Pixel(3, 0)\n"
                                "Print p.invertqvr().InvertQVR.RGBSurface.Pixel(1, 0)\n"
                                "Print p.CountColorQVR(&c0000FF)\nPrint p.isGrayQVR\nPrint p.isGrayQVR(255)\n"
                                "Print p.ColornessQVR\nPrint p.ColornessQVR(10)\nPrint p.HasMaskQVR\n"
                                "Print MergePictureQVR(p, p.InvertQVR).isWhiteQVR\n"
                                "Call p.InvertQVR\np.InvertQVR"),
                  "&c00FFFF|&c000000|&c00FF00|1|False|True|0.75|0.75|False|True");
    });
}

TEST_P(Script, PassesVariables)
{
    EXPECT_EQ(run(fourPixels + "Dim red, blue, green As MemoryBlock\nDim n As Integer\n"
                               "p.CountColorsQVR(red, blue, green, n)\nPrint n\nPrint red.Size\n"
                               "Print red.UInt32Value(255 * 4)\nPrint green.UInt32Value(0)\n"
                               "Dim crop As New Picture(1, 1)\ncrop.RGBSurface.Pixel(0, 0) = &c0000FF\n"
                               "Dim x, y As Integer\nPrint p.FindPictureQVR(crop, x, y)\nPrint x\nPrint y"),
              "4|1024|2|2|True|2|0");
    EXPECT_THAT(
        run("Dim p As New Picture(1, 1)\nDim x As UInt32\nDim y As Integer\nCall p.FindPictureQVR(p, x, y)"),
        HasSubstr("p.bas:4:26: expected a variable of type integer for x, which is ByRef"));
    EXPECT_THAT(run("Dim p As New Picture(1, 1)\nCall p.FindPictureQVR(p, 1, 2)"),
                HasSubstr("p.bas:2:26: FindPictureQVR takes (pic as picture, byref x as integer"));
}

TEST_P(Script, AssignsToMethodsAndProperties)
{
    forEachHost(artefact(), [&](TestHost& host) {
        EXPECT_EQ(
            run(host, fourPixels +
                          "Dim lut As New PictureLut3DQVR\nlut.Table(0, 0, 15, 1) = 77.5\n"
                          "Print lut.Table(0, 0, 15, 1)\nlut.SourcePicture = p\nPrint lut.Run\n"
                          "Print lut.DestinationPicture.RGBSurface.Pixel(2, 0)\n"
                          "Print lut.SourcePicture = p\nDim s As PictureSepiaQVR\n"
                          "s = New PictureSepiaQVR\ns.SepiaRed = 40\ns.FactorRed = 0\nPrint s.SepiaRed\n"
                          "s.SepiaRed = s.SepiaRed + 2\nPrint s.SepiaRed\nlut = Nil"),
            "77.5|True|&c004D00|True|40|42");
    });
    EXPECT_EQ(run("Dim p As New Picture(2, 2)\nDim m As New Picture(2, 2)\np.EmbeddedMaskQVR(False) = m\n"
                  "Print p.EmbeddedMaskQVR(False).isWhiteQVR"),
              "True");
}

TEST_P(Script, TellsWhatThePlugInRefuses)
{
    for (const auto& [program, error] : std::initializer_list<std::pair<const char*, const char*>>{
             {"Print p.NoSuchQVR", "9: Picture has no NoSuchQVR"},
             {"Call p.InvertQVR(1, 2)", "8: InvertQVR takes (left as integer, "},
             {"Call p.ChangeSaturationQVR(1.5)", "28: ChangeSaturationQVR takes (Amount as integer)"},
             {"Call p.InvertQVR(Nil)", "18: InvertQVR takes ("},
             {"p.InvertQVR = p", "3: InvertQVR cannot be assigned to"},
             {"p.EmbeddedMaskQVR(False) = 5", "3: EmbeddedMaskQVR takes a value of type picture"},
             {"MergePictureQVR(p, p) = p", "1: MergePictureQVR cannot be assigned to"},
             {"Dim s As New PictureSepiaQVR\ns.SepiaRed = 1.5", "14: SepiaRed takes a value of type integer"},
             {"Dim s As New PictureSepiaQVR\ns.SepiaRed(1) = 1", "3: SepiaRed takes no arguments"},
             {"Dim s As New PictureSepiaQVR\ns.Nothing = 1", "3: PictureSepiaQVR has no property Nothing"},
             {"Dim s As PictureSepiaQVR\nPrint s.Run", "9: NilObjectException: Nil has no Run"},
             {"Call p.ReplaceRedChannelQVR(Nil)", "8: NilObjectException: The channel picture is nil."}})
    {
        const std::string result = run(std::string("Dim p As New Picture(1, 1)\n") + program);
        EXPECT_THAT(result, HasSubstr(std::string(":") + error)) << program;
        EXPECT_THAT(result, StartsWith("p.bas:")) << program;
    }
}

/// What a method gives for a nil picture is the plug-in's own business.
TEST_P(Script, CallsMethodsOfNil)
{
    EXPECT_EQ(run("Dim p As Picture\nPrint p.InvertQVR = Nil\nPrint p.isWhiteQVR\nPrint "
                  "p.InvertQVR.InvertQVR Is Nil"),
              "True|False|True");
}

TEST_P(Script, OpensAndSavesFiles)
{
    forEachHost(artefact(), [&](TestHost& host) {
        EXPECT_EQ(run(host, fourPixels +
                                "p.Save(GetFolderItem(\"a.png\"), Picture.SaveAsPNG)\np.Save(\"b.tga\")\n"
                                "p.Save(\"c.data\", Picture.SaveAsWindowsBMP)\n"
                                "For i As Integer = 0 To 3\n"
                                "If Picture.Open(GetFolderItem(\"a.png\")).RGBSurface.Pixel(i, 0) <> "
                                "p.RGBSurface.Pixel(i, 0) Then Print \"a\"\n"
                                "If Picture.Open(\"b.tga\").RGBSurface.Pixel(i, 0) <> "
                                "p.RGBSurface.Pixel(i, 0) Then Print \"b\"\n"
                                "If Picture.Open(\"c.data\").RGBSurface.Pixel(i, 0) <> "
                                "p.RGBSurface.Pixel(i, 0) Then Print \"c\"\nNext\n"
                                "Dim s As String = PicturetoBinaryStringQVR(p)\nPrint LenB(s)\n"
                                "Print BinaryStringtoPictureQVR(s).RGBSurface.Pixel(2, 0)"),
                  "52|&c0000FF");
    });
    EXPECT_THAT(run("Dim p As Picture = Picture.Open(\"none.png\")"), HasSubstr("p.bas:1:28: cannot read "));
    EXPECT_THAT(run("Dim p As New Picture(1, 1)\np.Save(\"a.xyz\")"), HasSubstr("must end in .png"));
    EXPECT_THAT(run("Dim p As New Picture(1, 1)\np.Save(\"a.png\", 9)"), HasSubstr("Picture.SaveAsPNG"));
}

TEST_P(Script, SavesMasksAsAlpha)
{
    EXPECT_EQ(run("Dim p As New Picture(2, 1)\np.Mask = New Picture(2, 1)\np.Mask.RGBSurface.Pixel(0, 0) = "
                  "&c000000\n"
                  "p.Save(\"m.png\")\nDim q As Picture = Picture.Open(\"m.png\").EmbeddedMaskQVR(False)\n"
                  "Print q.RGBSurface.Pixel(0, 0)\nPrint q.RGBSurface.Pixel(1, 0)\np.Mask = "
                  "Nil\np.Save(\"o.png\")\n"
                  "Print Picture.Open(\"o.png\").EmbeddedMaskQVR(False).isWhiteQVR"),
              "&cFFFFFF|&c000000|True");
}

} // namespace
