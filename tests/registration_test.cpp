// The catalogue as it reaches the host: every declaration, in order, in the layout and with the flags that
// the host's version wants.
#include "host/calls/catalogue.h"
#include "host/file.h"
#include "tests/support/pictures.h"
#include "tests/support/test_host.h"

#include <algorithm>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using standin::RegisteredClass;
using standin::RegisteredMethod;
using standin::RegisteredProperty;

class Registration : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(Registration);

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

/// The catalogue's lines, as a host with this flag for consoles sees them.
Lines catalogue(std::uint32_t consoleFlag)
{
    static const std::string mark = ", on consoles";
    std::istringstream text{standin::readText(std::string(build::sourceDirectory) + "/cli/catalogue.txt")};
    Lines lines;
    for (std::string line; std::getline(text, line);)
    {
        if (line.starts_with('#'))
            continue;
        // Classes themselves have always had the flag.
        if (line.starts_with(' ') && line.ends_with(mark) && consoleFlag == 0)
            line.erase(line.size() - mark.size());
        lines.push_back(line);
    }
    return lines;
}

/// Those of one class, extension or of all global methods, with their heading.
Lines partOf(const Lines& lines, const std::string& heading)
{
    Lines part;
    bool inside = false;
    for (const std::string& line : lines)
    {
        if (!line.starts_with(' '))
            inside = line.starts_with(heading);
        if (inside)
            part.push_back(line);
    }
    return part;
}

void expectHandlers(const std::vector<RegisteredMethod>& methods)
{
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

void expectPart(const standin::Registered& registered, std::uint32_t consoleFlag, const std::string& heading)
{
    EXPECT_EQ(partOf(standin::catalogueLines(registered), heading), partOf(catalogue(consoleFlag), heading));
}

void expectGlobals(const standin::Registered& registered, std::uint32_t consoleFlag)
{
    expectPart(registered, consoleFlag, "global");
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
    for (const RegisteredProperty& property : definition.properties)
    {
        EXPECT_FALSE(property.group.has_value()) << property.name;
        EXPECT_EQ(property.isField(), reinterpret_cast<std::intptr_t>(property.setter) == -1)
            << property.name;
    }
    expectHandlers(definition.methods);
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

TEST_P(Registration, ListsTheWholeCatalogueInOrder)
{
    forEachVersion(artefact(), [](TestHost& host, const Version& version) {
        const standin::Registered& registered = host.registered();
        ASSERT_EQ(standin::registrationFaults(registered, version.host, catalogue(4)), Lines{});
        EXPECT_EQ(standin::catalogueLines(registered), catalogue(version.consoleFlag));
        expectHandlers(registered.globals);
        for (const RegisteredMethod& method : registered.globals)
            EXPECT_EQ(method.flags, version.consoleFlag) << method.text;
        const RegisteredClass& extension = registered.extensions.front();
        EXPECT_EQ(extension.dataSize, 0);
        EXPECT_EQ(extension.flags, 4U);
        EXPECT_EQ(extension.constructor, nullptr);
        EXPECT_EQ(extension.destructor, nullptr);
        EXPECT_TRUE(extension.properties.empty());
    });
}

TEST_P(Registration, ClassesCloseWithTheirDestructors)
{
    forEachVersion(artefact(), [](TestHost& host, const Version&) {
        for (const RegisteredClass& filter : host.registered().classes)
        {
            SCOPED_TRACE(filter.name);
            EXPECT_EQ(filter.methods.at(0).text, "Close");
            EXPECT_EQ(filter.methods[0].handler, filter.destructor);
            EXPECT_NE(filter.constructor, nullptr);
            EXPECT_NE(filter.destructor, nullptr);
        }
    });
}

TEST_P(Registration, EachPropertyHasAccessorsOfItsOwn)
{
    forEachVersion(artefact(), [](TestHost& host, const Version&) {
        std::set<void*> accessors;
        for (const RegisteredProperty& property : host.registered().findClass("PictureSepiaQVR")->properties)
            if (!property.isField())
                accessors.insert({addressOf(property.getter), addressOf(property.setter)});
        EXPECT_EQ(accessors.size(), 6U);
    });
}

/// What is planted in a registration, and what is said about it.
struct Plant
{
    std::function<void(standin::Registered&)> change;
    std::string fault;
};

TEST_P(Registration, FaultsInWhatIsRegisteredAreNamed)
{
    const std::vector<Plant> plants{
        {[](auto& all) { all.globals.erase(all.globals.begin() + 2); },
         "missing: global: method CombinePicturesQVR(red as picture, blue as picture, green as picture) as "
         "picture, on consoles"},
        {[](auto& all) {
             all.extensions[0].methods.push_back(all.extensions[0].methods[4]);
             all.extensions[0].methods.back().handler = all.classes[0].constructor;
         },
         "superfluous: extension Picture: method HasMaskQVR as boolean, on consoles"},
        {[](auto& all) { all.extensions[0].methods[4].flags = 0; },
         "wrong: extension Picture: method HasMaskQVR as boolean (wanted: extension Picture: method "
         "HasMaskQVR as boolean, on consoles)"},
        {[](auto& all) { all.classes[0].properties[3].flags = 64; },
         "wrong: class PictureSepiaQVR: field MinX as Integer at 32, flags 64 (wanted: class "
         "PictureSepiaQVR: "
         "field MinX as Integer at 32)"},
        {[](auto& all) { std::swap(all.globals[0], all.globals[1]); },
         "out of order: global: method PicturetoBinaryStringQVR(p as picture) as string, on consoles "
         "(wanted: "
         "global: method BinaryStringtoPictureQVR(data as String) as Picture, on consoles)"},
        {[](auto& all) { all.classes[1].methods[2].setter = nullptr; },
         "wrong: class PictureLut3DQVR: method Table(r as UInt32, g as UInt32, b as UInt32, x as UInt32) as "
         "double, on consoles (wanted: class PictureLut3DQVR: method Table(r as UInt32, g as UInt32, b as "
         "UInt32, x as UInt32) as double, assignable, on consoles)"},
        {[](auto& all) { all.classes[0].dataSize = 60; },
         "wrong: class PictureSepiaQVR, 60 bytes (wanted: class PictureSepiaQVR, 64 bytes)"},
        {[](auto& all) { all.announcedVersions = {10}; },
         "the plug-in announces layout 10, where 12 is the newest"},
        {[](auto& all) { all.announcedVersions.clear(); }, "the plug-in announces no layout"},
        {[](auto& all) { all.classes[0].version = 9; }, "PictureSepiaQVR is of layout 9"},
        {[](auto& all) { all.classes[0].superName = "Object"; }, "PictureSepiaQVR has a super class"},
        {[](auto& all) { all.classes[0].words[15] = 1; }, "PictureSepiaQVR has something in word 15"},
        {[](auto& all) { all.classes[0].hostWord = 1; },
         "PictureSepiaQVR has lost the word that the host wrote"},
        {[](auto& all) { all.classes[0].constructor = nullptr; }, "PictureSepiaQVR has no constructor"},
        {[](auto& all) { all.extensions[0].destructor = all.classes[0].destructor; },
         "Picture has a destructor"},
        {[](auto& all) { all.classes[0].sharedMethods = all.globals; }, "PictureSepiaQVR has shared members"},
        {[](auto& all) { all.classes[0].properties[0].group = "Group"; },
         "PictureSepiaQVR.SourcePicture is in a group"},
        {[](auto& all) { all.classes[0].properties[0].setter = all.classes[0].destructor; },
         "PictureSepiaQVR.SourcePicture is half a field and half an accessor"},
        {[](auto& all) { all.classes[0].properties[9].getter = nullptr; },
         "PictureSepiaQVR.FactorRed lacks an accessor"},
        {[](auto& all) { all.globals[0].attributeCount = 1; },
         "BinaryStringtoPictureQVR(data as String) as Picture has attributes"},
        {[](auto& all) { all.extensions[0].methods[0].handler = nullptr; },
         "ColornessQVR(threshold as integer = 10) as double has no handler"},
        {[](auto& all) { all.extensions[0].methods[4].handler = all.extensions[0].methods[0].handler; },
         "HasMaskQVR as boolean has another method's handler"},
    };
    const TestHost host{hostSetup(artefact())};
    for (const Plant& plant : plants)
    {
        standin::Registered registered = host.registered();
        plant.change(registered);
        EXPECT_EQ(standin::registrationFaults(registered, host.options().version, catalogue(4)),
                  Lines{plant.fault});
    }
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
    expectPart(host.registered(), 0, "extension Picture");
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
