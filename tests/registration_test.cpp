// The catalogue as it reaches the host: every declaration, in order, in the layout and with the flags that
// the host's version wants.
#include "host/file.h"
#include "tests/support/pictures.h"
#include "tests/support/test_host.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace
{

using standin::RegisteredClass;
using standin::RegisteredMethod;
using standin::RegisteredProperty;

class Registration : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(Registration);

struct Row
{
    const char* declaration;
    bool onConsoles;
    bool assignable = false;
};

// clang-format off
const Row pictureRows[] = {
    {"ColornessQVR(threshold as integer = 10) as double", false, false},
    {"ScrollVerticalQVR(delta as integer, wrap as boolean, scrollmask as boolean) as boolean", false, false},
    {"ScrollHorizontalQVR(delta as integer, wrap as boolean, scrollmask as boolean) as boolean", false, false},
    {"ScrollQVR(deltaX as integer, deltaY as integer, wrap as boolean, scrollmask as boolean) as boolean", false, false},
    {"HasMaskQVR as boolean", true, false},
    {"ChangeContrastBrightnessAbsoluteQVR(ContrastRed as double, ContrastGreen as double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", true, false},
    {"ChangeContrastBrightnessLinearQVR(ContrastRed as double, ContrastGreen as double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", true, false},
    {"ChangeContrastBrightnessAbsoluteQVR(Contrast as double, Brightness as double) as picture", true, false},
    {"ChangeContrastBrightnessLinearQVR(Contrast as double, Brightness as double) as picture", true, false},
    {"ChangeBrightnessAbsoluteQVR(BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", true, false},
    {"ChangeBrightnessLinearQVR(BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", true, false},
    {"ChangeBrightnessAbsoluteQVR(Brightness as double) as picture", true, false},
    {"ChangeBrightnessLinearQVR(Brightness as double) as picture", true, false},
    {"ChangeContrastQVR(Contrast as double) as picture", true, false},
    {"ChangeContrastQVR(ContrastRed as double, ContrastGreen as double, ContrastBlue as double) as picture", true, false},
    {"ChangeCustomQVR(a as double, b as double) as picture", true, false},
    {"InvertQVR(left as integer,top as integer,width as integer,height as integer) as picture", true, false},
    {"InvertQVR as picture", true, false},
    {"InvertGrayQVR(left as integer,top as integer,width as integer,height as integer) as picture", true, false},
    {"InvertGrayQVR as picture", true, false},
    {"ExtractColorRectangleMaskQVR(left as integer,top as integer,width as integer,height as integer) as picture", true, false},
    {"ExtractColorRectangleMaskQVR as picture", true, false},
    {"EmbeddedMaskQVR(swap as boolean) as picture", true, true},
    {"CountColorQVR(col as color) as integer", true, false},
    {"CountColorsQVR(byref red as memoryblock, byref blue as memoryblock, byref green as memoryblock, byref count as integer)", false, false},
    {"TransformColorsQVR(red as memoryblock, blue as memoryblock, green as memoryblock, dest as picture = nil) as picture", false, false},
    {"ReplaceColorQVR(SearchColor as color, ReplaceWithColor as color) as picture", false, false},
    {"ExtractColorQVR(SearchColor as color, ReplaceWithColor as color, BackGroundColor as color) as picture", false, false},
    {"ChangeSaturationQVR(Amount as integer) as picture", true, false},
    {"ReplaceRedChannelQVR(RedChannel as picture) as picture", true, false},
    {"ReplaceGreenChannelQVR(GreenChannel as picture) as picture", true, false},
    {"ReplaceBlueChannelQVR(BlueChannel as picture) as picture", true, false},
    {"FindPictureQVR(pic as picture, byref x as integer, byref y as integer) as boolean", true, false},
    {"isWhiteQVR as boolean", true, false},
    {"isWhiteQVR(left as integer,top as integer,width as integer,height as integer) as boolean", true, false},
    {"isBlackQVR as boolean", true, false},
    {"isBlackQVR(left as integer,top as integer,width as integer,height as integer) as boolean", true, false},
    {"isGrayQVR(tolerance as integer = 0) as boolean", true, false},
    {"isGrayQVR(tolerance as integer, left as integer,top as integer,width as integer,height as integer) as boolean", true, false},
};

const Row globalRows[] = {
    {"BinaryStringtoPictureQVR(data as String) as Picture", true},
    {"PicturetoBinaryStringQVR(p as picture) as string", true},
    {"CombinePicturesQVR(red as picture, blue as picture, green as picture) as picture", true},
    {"MergePictureQVR(source1 as picture, source2 as picture) as picture", true},
    {"TintPictureQVR(source as picture, GreyBase as color, SepiaBase as color) as picture", true},
    {"RenderSamplesQVR(Samples as memoryblock, SampleCount as integer, Smooth as integer, Width as integer, Height as integer, outlinewidth as integer, BackColor as color=&c88B5C4, ForeColor as color=&c274C5A, OutLineColor as color=&c203F4E, Bits as Integer = 8, AutoScale as boolean = false) as Picture", true},
};
// clang-format on

struct Version
{
    double host;
    int layout;
    std::uint32_t consoleFlag; ///< what the older console flag becomes
};

constexpr Version versions[] = {{0.0, 9, 0},       {2010.0, 9, 0},   {2010.0289, 9, 0}, {2010.029, 9, 4},
                                {2011.0, 9, 4},    {2011.999, 9, 4}, {2012.0, 10, 4},   {2012.5, 10, 4},
                                {2012.999, 10, 4}, {2013.0, 11, 4},  {2013.029, 11, 4}, {2013.03, 12, 4},
                                {2019.1, 12, 4}};

void* addressOf(REALanyFunction function)
{
    return reinterpret_cast<void*>(function);
}

template <class Test>
void forEachVersion(standin::Artefact artefact, Test test, SourceLine line = SourceLine::here())
{
    for (const Version& version : versions)
    {
        TestHost host{hostSetup(artefact).version(version.host), line};
        test(host, version);
    }
}

using Lines = std::vector<std::string>;

/// All that the host is told of a method, on one line.
std::string lineOf(const std::string& declaration, std::uint32_t flags, bool assignable)
{
    return declaration + " [flags " + std::to_string(flags) + (assignable ? ", assignable]" : "]");
}

template <std::size_t size>
Lines linesOf(const Row (&rows)[size], std::uint32_t consoleFlag)
{
    Lines lines;
    for (const Row& row : rows)
        lines.push_back(lineOf(row.declaration, row.onConsoles ? consoleFlag : 0, row.assignable));
    return lines;
}

Lines linesOf(const std::vector<RegisteredMethod>& methods)
{
    Lines lines;
    for (const RegisteredMethod& method : methods)
        lines.push_back(lineOf(method.text, method.flags, method.setter != nullptr));
    return lines;
}

/// The lines of one list that another one lacks.
Lines without(Lines lines, Lines others)
{
    std::sort(lines.begin(), lines.end());
    std::sort(others.begin(), others.end());
    Lines result;
    std::set_difference(lines.begin(), lines.end(), others.begin(), others.end(), std::back_inserter(result));
    return result;
}

/// How two lists differ, one difference on each line; nothing when they are the same.
std::string difference(const Lines& wanted, const Lines& got)
{
    std::string text;
    for (const std::string& line : without(wanted, got))
        text += "\n  missing:    " + line;
    for (const std::string& line : without(got, wanted))
        text += "\n  unexpected: " + line;
    if (text.empty())
        for (std::size_t i = 0; i < wanted.size(); ++i)
            if (wanted[i] != got[i])
                return "\n  row " + std::to_string(i + 1) + " wanted: " + wanted[i] + "\n  row " +
                       std::to_string(i + 1) + " got:    " + got[i];
    return text;
}

void expectLines(const Lines& wanted, const Lines& got, const std::string& what)
{
    const std::string text = difference(wanted, got);
    if (!text.empty())
        FAIL() << what << " are not those of this test's catalogue:" << text;
}

template <std::size_t size>
void expectRows(const std::vector<RegisteredMethod>& methods, const Row (&rows)[size],
                std::uint32_t consoleFlag, const std::string& what)
{
    expectLines(linesOf(rows, consoleFlag), linesOf(methods), what);
    std::set<void*> handlers;
    for (const RegisteredMethod& method : methods)
    {
        SCOPED_TRACE(method.text);
        EXPECT_EQ(method.attributeCount, 0U);
        EXPECT_NE(method.handler, nullptr);
        EXPECT_TRUE(handlers.insert(addressOf(method.handler)).second)
            << "the handler serves another row too";
    }
}

void expectGlobals(const standin::Registered& registered, std::uint32_t consoleFlag)
{
    expectRows(registered.globals, globalRows, consoleFlag, "The global methods");
}

void expectPictureMethods(const standin::Registered& registered, std::uint32_t consoleFlag)
{
    expectRows(registered.extensions.at(0).methods, pictureRows, consoleFlag, "The methods of Picture");
}

/// A field that the host reads and writes by itself.
struct Field
{
    const char* name;
    const char* type;
    int offset;
};

/// Compares a class's fields, and the names and types of the properties with accessors that follow them.
template <std::size_t size>
void expectProperties(const RegisteredClass& definition, const Field (&fields)[size], const Lines& accessed,
                      std::uint32_t flags)
{
    Lines wanted;
    for (const Field& field : fields)
        wanted.push_back(std::string(field.name) + " as " + field.type + " at " +
                         std::to_string(field.offset));
    wanted.insert(wanted.end(), accessed.begin(), accessed.end());
    Lines got;
    for (const RegisteredProperty& property : definition.properties)
        got.push_back(property.name + " as " + property.type +
                      (property.isField() ? " at " + std::to_string(property.parameter) : ""));
    expectLines(wanted, got, "The properties of " + definition.name);
    for (const RegisteredProperty& property : definition.properties)
    {
        SCOPED_TRACE(property.name);
        EXPECT_FALSE(property.group.has_value());
        EXPECT_EQ(property.flags, flags);
        EXPECT_EQ(property.isField(), reinterpret_cast<std::intptr_t>(property.setter) == -1);
    }
}

/// What all three definitions have in common.
void expectDefinition(const RegisteredClass& definition, int layout)
{
    SCOPED_TRACE(definition.name);
    EXPECT_EQ(definition.version, layout);
    EXPECT_FALSE(definition.superName.has_value());
    EXPECT_TRUE(definition.sharedMethods.empty());
    EXPECT_TRUE(definition.sharedProperties.empty());
    // Events, event instances, interfaces, bindings and constants.
    for (const std::size_t word : {11, 12, 13, 14, 15, 16, 17, 18, 19, 21, 22, 23, 24})
        EXPECT_EQ(definition.words[word], 0U) << "word " << word;
    EXPECT_EQ(definition.definition->hostWord, definition.hostWord)
        << "the host's word must stay where it was written";
}

TEST_P(Registration, AnnouncesTheLayoutThatTheHostUnderstands)
{
    forEachVersion(artefact(), [](TestHost& host, const Version& version) {
        EXPECT_EQ(host.registered().announcedVersions, std::vector<int>{version.layout});
        ASSERT_EQ(host.registered().classes.size(), 2U);
        ASSERT_EQ(host.registered().extensions.size(), 1U);
        for (const RegisteredClass& definition : host.registered().classes)
            expectDefinition(definition, version.layout);
        expectDefinition(host.registered().extensions.front(), version.layout);
    });
}

TEST_P(Registration, ListsEveryMethodInOrder)
{
    forEachVersion(artefact(), [](TestHost& host, const Version& version) {
        const RegisteredClass& extension = host.registered().extensions.front();
        EXPECT_EQ(extension.name, "Picture");
        EXPECT_EQ(extension.dataSize, 0);
        EXPECT_EQ(extension.flags, 4U);
        EXPECT_EQ(extension.constructor, nullptr);
        EXPECT_EQ(extension.destructor, nullptr);
        EXPECT_TRUE(extension.properties.empty());
        expectPictureMethods(host.registered(), version.consoleFlag);
        expectGlobals(host.registered(), version.consoleFlag);
    });
}

TEST_P(Registration, DescribesTheSepiaClass)
{
    constexpr Field fields[] = {{"SourcePicture", "Picture", 24}, {"DestinationPicture", "Picture", 28},
                                {"MaxX", "Integer", 40},          {"MinX", "Integer", 32},
                                {"MaxY", "Integer", 44},          {"MinY", "Integer", 36},
                                {"SepiaRed", "Integer", 48},      {"SepiaGreen", "Integer", 52},
                                {"SepiaBlue", "Integer", 56}};
    constexpr Row methods[] = {{"Close", false}, {"Run as boolean", false}};
    forEachVersion(artefact(), [&](TestHost& host, const Version&) {
        const RegisteredClass& sepia = host.registered().classes.at(0);
        EXPECT_EQ(sepia.name, "PictureSepiaQVR");
        EXPECT_EQ(sepia.dataSize, 64);
        EXPECT_EQ(sepia.flags, 0U);
        expectProperties(sepia, fields,
                         {"FactorRed as Double", "FactorBlue as Double", "FactorGreen as Double"}, 0);
        std::set<void*> accessors;
        for (const RegisteredProperty& property : sepia.properties)
            if (!property.isField())
                accessors.insert({addressOf(property.getter), addressOf(property.setter)});
        EXPECT_EQ(accessors.size(), 6U);

        expectRows(sepia.methods, methods, 0, "The methods of the sepia class");
        EXPECT_EQ(sepia.methods[0].handler, sepia.destructor);
        EXPECT_NE(sepia.constructor, nullptr);
        EXPECT_NE(sepia.destructor, nullptr);
    });
}

TEST_P(Registration, DescribesTheTableClass)
{
    constexpr Field fields[] = {{"SourcePicture", "Picture", 0}, {"DestinationPicture", "Picture", 4},
                                {"MaxX", "Integer", 16},         {"MinX", "Integer", 8},
                                {"MaxY", "Integer", 20},         {"MinY", "Integer", 12}};
    constexpr Row methods[] = {
        {"Close", true},
        {"Run as boolean", true},
        {"Table(r as UInt32, g as UInt32, b as UInt32, x as UInt32) as double", true, true}};
    forEachVersion(artefact(), [&](TestHost& host, const Version& version) {
        const RegisteredClass& lut = host.registered().classes.at(1);
        EXPECT_EQ(lut.name, "PictureLut3DQVR");
        EXPECT_EQ(lut.dataSize, 140000);
        EXPECT_EQ(lut.flags, 4U);
        expectProperties(lut, fields, {}, version.consoleFlag);
        expectRows(lut.methods, methods, version.consoleFlag, "The methods of the table class");
        EXPECT_EQ(lut.methods[0].handler, lut.destructor);
        EXPECT_NE(lut.constructor, nullptr);
        EXPECT_NE(lut.destructor, nullptr);
    });
}

TEST_P(Registration, TheReadmeCountsWhatIsRegistered)
{
    const TestHost host{hostSetup(artefact())};
    const standin::Registered& registered = host.registered();
    std::string text = standin::readText(std::string(build::sourceDirectory) + "/README.md");
    std::replace(text.begin(), text.end(), '\n', ' ');
    const std::string counts = std::to_string(registered.extensions.at(0).methods.size()) +
                               " methods to the class `Picture`, " +
                               std::to_string(registered.globals.size()) + " global methods and " +
                               std::to_string(registered.classes.size()) + " filter classes";
    EXPECT_TRUE(text.find(counts) != std::string::npos) << "README.md does not speak of " << counts;
}

/// Whatever the layout, rows must lead to handlers and records to instance data.
TEST_P(Registration, WhatIsRegisteredCanBeCalledInEveryLayout)
{
    forEachVersion(artefact(), [](TestHost& host, const Version&) {
        const standin::Picture photo = upload(host, reference::Picture(3, 2, {10, 20, 30}));
        expectCall(reference::Picture(3, 2, {245, 235, 225}), host, photo, "InvertQVR");
        for (const char* name : {"PictureSepiaQVR", "PictureLut3DQVR"})
        {
            standin::Instance filter = host.newInstance(name);
            filter.set("SourcePicture", photo);
            filter.set("MaxX", 2);
            filter.set("MaxY", 1);
            EXPECT_TRUE(filter.call("Run").boolean()) << name;
            EXPECT_FALSE(filter.get("DestinationPicture").picture().isNil()) << name;
        }
    });
}

TEST_P(Registration, CallsTheHostInOrder)
{
    for (const Version& version : versions)
    {
        const TestHost host{hostSetup(artefact()).version(version.host).logged()};
        Lines names = host.callNames();

        // A converted definition is copied over the static one and freed; its five arrays stay.
        const bool older = version.layout == 9;
        EXPECT_EQ(host.callsOf("free"), older ? 3 : 0);
        EXPECT_EQ(host.callsOf("malloc") + host.callsOf("calloc"), older ? 8 : 0);
        std::erase_if(names, [](const std::string& name) {
            return name == "malloc" || name == "calloc" || name == "free";
        });
        Lines wanted{"REALGetRBVersion", "RegisterPluginVersion", "PluginRegisterClass",
                     "PluginRegisterClass", "PluginRegisterClassExtension"};
        wanted.insert(wanted.end(), host.registered().globals.size(), "PluginRegisterMethod");
        EXPECT_EQ(names, wanted);
    }
}

TEST_P(Registration, AsksForTheHostsFunctionsInOrder)
{
    for (const char* absent : {"", "REALGetRBVersion", "RegisterPluginVersion"})
    {
        SCOPED_TRACE(absent);
        const TestHost host{hostSetup(artefact()).without({absent})};
        const std::vector<std::string> wanted{"RegisterPluginVersion", "REALGetRBVersion",
                                              "PluginRegisterClass", "PluginRegisterClassExtension",
                                              "PluginRegisterMethod"};
        EXPECT_EQ(host.lookups(), wanted);
    }
}

TEST_P(Registration, AHostWithoutVersionIsAnOldOne)
{
    TestHost host{hostSetup(artefact()).without({"REALGetRBVersion"})};
    EXPECT_EQ(host.registered().announcedVersions, std::vector<int>{9});
    expectPictureMethods(host.registered(), 0);
    expectGlobals(host.registered(), 0);
}

TEST_P(Registration, SkipsWhatTheHostCannotRegister)
{
    for (const Version& version : {versions[0], versions[12]})
    {
        const HostSetup setup = hostSetup(artefact()).version(version.host);
        const TestHost noClasses{setup.without({"PluginRegisterClass"})};
        EXPECT_TRUE(noClasses.registered().classes.empty());
        EXPECT_EQ(noClasses.registered().extensions.size(), 1U);
        expectGlobals(noClasses.registered(), version.consoleFlag);
        const TestHost noExtensions{setup.without({"PluginRegisterClassExtension"})};
        EXPECT_EQ(noExtensions.registered().classes.size(), 2U);
        EXPECT_TRUE(noExtensions.registered().extensions.empty());
        expectGlobals(noExtensions.registered(), version.consoleFlag);
        const TestHost noMethods{setup.without({"PluginRegisterMethod"})};
        EXPECT_EQ(noMethods.registered().classes.size(), 2U);
        EXPECT_TRUE(noMethods.registered().globals.empty());
    }
}

/// Converting for an old host allocates; without memory an array is left out, and the rest is registered.
TEST_P(Registration, SurvivesFailingAllocations)
{
    for (const char* function : {"malloc", "calloc"})
        for (int n = 1; n <= 9; ++n)
        {
            SCOPED_TRACE(std::string(function) + " " + std::to_string(n));
            HostSetup setup = hostSetup(artefact()).version(2011);
            setup.options.beforeEntry = [=](standin::Faults& faults) { faults.failCall(function, n); };
            const TestHost host{setup};
            EXPECT_GE(host.registered().classes.size() + host.registered().extensions.size(), 2U);
            expectGlobals(host.registered(), 4);
        }
}

} // namespace
