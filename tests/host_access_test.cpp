// The plug-in's ways to its host and to the system: found by name, found again, or done without.
#include "tests/reference/inversion.h"

#include "tests/support/pictures.h"
#include "tests/support/test_host.h"

#include <algorithm>

namespace
{

using reference::Picture;
using standin::Kind;

class HostAccess : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(HostAccess);

const Picture someContent(5, 3, {10, 20, 30});
const Picture someInverted(5, 3, {245, 235, 225});

/// Raises the exception of a channel picture that is nil.
std::optional<standin::RaisedException> raise(TestHost& host)
{
    const standin::Picture photo = upload(host, someContent);
    host.clearCallLog();
    const standin::Value result = host.call(photo, "ReplaceRedChannelQVR", {nullptr});
    EXPECT_TRUE(result.picture().isNil());
    host.expectBalanced("after raising");
    return result.exception();
}

void expectException(const std::optional<standin::RaisedException>& exception, const std::string& className)
{
    ASSERT_TRUE(exception.has_value());
    EXPECT_EQ(exception->className, className);
    EXPECT_EQ(exception->message, "The channel picture is nil.");
    EXPECT_FALSE(exception->messageIsNull);
    EXPECT_EQ(exception->messageEncoding, standin::encodingAscii);
    EXPECT_EQ(exception->errorNumber, 0);
}

TEST_P(HostAccess, RaisesExceptions)
{
    for (const double version : hostVersions)
        for (const Kind kind : {Kind::Desktop, Kind::Console, Kind::Web})
        {
            TestHost host{hostSetup(artefact(), kind).version(version)};
            expectException(raise(host), "NilObjectException");
            expectException(raise(host), "NilObjectException");
        }
}

TEST_P(HostAccess, RaisesInOrder)
{
    TestHost host{hostSetup(artefact()).logged()};
    expectException(raise(host), "NilObjectException");
    const std::vector<std::string> wanted{
        "REALBuildString",     "REALSetStringEncoding", "PluginNewInstance", "REALSetPropValueString",
        "REALSetPropValueInt", "RuntimeRaiseException", "REALUnlockObject",  "REALUnlockString"};
    EXPECT_EQ(host.callNames(), wanted);
}

TEST_P(HostAccess, RaisesARuntimeExceptionWhereTheClassIsMissing)
{
    HostSetup setup = hostSetup(artefact()).logged();
    setup.options.notInstantiable = {"NilObjectException"};
    TestHost host{setup};
    expectException(raise(host), "RuntimeException");
    EXPECT_EQ(host.callsOf("PluginNewInstance"), 2);
}

TEST_P(HostAccess, RaisesNothingWhereThereIsNoException)
{
    HostSetup setup = hostSetup(artefact()).logged();
    setup.options.notInstantiable = {"NilObjectException", "RuntimeException"};
    TestHost host{setup};
    EXPECT_FALSE(raise(host).has_value());
    EXPECT_EQ(host.callsOf("RuntimeRaiseException"), 0);
    EXPECT_EQ(host.callsOf("REALUnlockString"), 1);

    TestHost withoutInstances{hostSetup(artefact()).without({"PluginNewInstance"})};
    EXPECT_FALSE(raise(withoutInstances).has_value());
    TestHost withoutRaising{hostSetup(artefact()).without({"RuntimeRaiseException"})};
    EXPECT_FALSE(raise(withoutRaising).has_value());
}

TEST_P(HostAccess, AMessageThatCannotBeMadeIsNull)
{
    TestHost withoutStrings{hostSetup(artefact()).without({"REALBuildString"})};
    TestHost failing{hostSetup(artefact())};
    failing.faults().failCall("REALBuildString");
    for (TestHost* host : {&withoutStrings, &failing})
    {
        const std::optional<standin::RaisedException> exception = raise(*host);
        ASSERT_TRUE(exception.has_value());
        EXPECT_EQ(exception->className, "NilObjectException");
        EXPECT_TRUE(exception->messageIsNull);
        EXPECT_EQ(exception->errorNumber, 0);
    }
}

TEST_P(HostAccess, ExceptionsDoWithoutPropertiesThatCannotBeSet)
{
    TestHost withoutNumber{hostSetup(artefact()).without({"REALSetPropValueInt"})};
    const std::optional<standin::RaisedException> noNumber = raise(withoutNumber);
    ASSERT_TRUE(noNumber.has_value());
    EXPECT_FALSE(noNumber->errorNumber.has_value());
    EXPECT_EQ(noNumber->message, "The channel picture is nil.");

    TestHost withoutMessage{
        hostSetup(artefact()).without({"REALSetPropValueString", "REALSetStringEncoding"})};
    const std::optional<standin::RaisedException> noMessage = raise(withoutMessage);
    ASSERT_TRUE(noMessage.has_value());
    EXPECT_TRUE(noMessage->messageIsNull);
}

/// What the host lacks is asked for again at the next use, and only until it is there.
TEST_P(HostAccess, LooksUpWhatIsMissingAtEveryUse)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture photo = upload(host, someContent);
        host.setAbsent("newPicture");
        for (int round = 1; round <= 3; ++round)
        {
            expectNil(host, photo, "InvertQVR");
            EXPECT_EQ(host.lookups("newPicture"), round);
        }
        host.setAbsent("newPicture", false);
        expectCall(someInverted, host, photo, "InvertQVR");
        expectCall(someInverted, host, photo, "InvertQVR");
        EXPECT_EQ(host.lookups("newPicture"), 4);
    });
}

/// Each function on its own missing, then all of them there: never a crash, never something left behind that
/// could be given back.
TEST_P(HostAccess, DoesWithoutAnyOneFunction)
{
    const std::set<std::string> releasing{"REALUnlockObject", "unlockPictureDescription"};
    for (const char* function :
         {"newPicture", "lockPictureDescription", "REALLockPictureDescription", "REALPictureClearCache",
          "pluginObjectType", "REALUnlockObject", "unlockPictureDescription"})
        for (const HostSetup& setup : hostSetups(artefact()))
        {
            TestHost host{setup.without({function})};
            if (releasing.contains(function))
                host.ignoreLedger();
            const standin::Picture photo = upload(host, someContent);
            host.call(photo, "InvertQVR");
            host.setAbsent(function, false);
            expectCall(someInverted, host, photo, "InvertQVR");
        }
}

/// A reader that could not take a reference gives it back all the same, which the host must know how to
/// refuse. (Nothing is written here: the one reference of a new picture would be given back before its first
/// pixel.)
TEST_P(HostAccess, ReadsWithoutTakingReferences)
{
    forEachHost(artefact(), [](TestHost& host) {
        host.ignoreLedger();
        const standin::Picture photo = upload(host, someContent);
        host.setAbsent("REALLockObject");
        for (int round = 1; round <= 3; ++round)
        {
            EXPECT_EQ(host.call(photo, "CountColorQVR", {0x0A141EU}).integer(), 15);
            EXPECT_EQ(host.lookups("REALLockObject"), round) << "it is asked for at every use";
            EXPECT_EQ(host.ledger().faults.size(), static_cast<std::size_t>(round))
                << host.ledger().describe();
        }
        EXPECT_EQ(host.ledger().faults.front(), "picture#1 was released more often than it was retained");
        EXPECT_EQ(photo.referenceCount(), 1);
        host.setAbsent("REALLockObject", false);
        expectCall(someInverted, host, photo, "InvertQVR");
        EXPECT_EQ(host.ledger().faults.size(), 3U) << "nothing more is wrong once it is there";
    });
}

TEST_P(HostAccess, LoadsTheFrameworkOnceAndKeepsItsFunctions)
{
    TestHost host{hostSetup(artefact()).logged()};
    const standin::Picture photo = upload(host, someContent);
    expectCall(someInverted, host, photo, "InvertQVR");
    const std::vector<std::string> names = host.callNames();
    const std::vector<std::string> loading{
        "FSFindFolder",   "CFURLCreateFromFSRef",   "CFURLCreateCopyAppendingPathComponent",
        "CFBundleCreate", "CFBundleLoadExecutable", "CFBundleGetFunctionPointerForName"};
    for (const std::string& name : loading)
        EXPECT_GE(host.callsOf(name), 1) << name;
    EXPECT_EQ(host.callsOf("FSFindFolder"), 1);
    EXPECT_EQ(host.callsOf("CFBundleLoadExecutable"), 1);
    EXPECT_EQ(host.callsOf("CFBundleGetFunctionPointerForName"), 6);
    EXPECT_EQ(host.callsOf("CFRelease"), 2) << "both locations are given back, the framework stays";
    const auto folder =
        std::find_if(host.callLog().begin(), host.callLog().end(),
                     [](const std::string& call) { return call.starts_with("FSFindFolder"); });
    ASSERT_NE(folder, host.callLog().end());
    EXPECT_TRUE(folder->starts_with("FSFindFolder(-32767, " + std::to_string(0x6672616D) + ", 1, "))
        << *folder;

    host.clearCallLog();
    expectCall(someInverted, host, photo, "InvertQVR");
    for (const std::string& name : loading)
        EXPECT_EQ(host.callsOf(name), 0) << name;
}

TEST_P(HostAccess, NeedsNoFrameworkOnConsoles)
{
    for (const Kind kind : {Kind::Console, Kind::Web})
    {
        TestHost host{hostSetup(artefact(), kind).logged()};
        expectCall(someInverted, host, upload(host, someContent), "InvertQVR");
        EXPECT_EQ(host.callsOf("FSFindFolder"), 0);
        EXPECT_EQ(host.callsOf("CFBundleGetFunctionPointerForName"), 0);
    }
}

/// A framework that cannot be loaded is tried again at the next use; nothing stays behind from the attempt.
TEST_P(HostAccess, TriesAFrameworkThatDoesNotLoadAgain)
{
    const auto tryWith = [](bool standin::SystemSwitches::*works) {
        TestHost host{hostSetup(artefact())};
        const standin::Picture photo = upload(host, someContent);
        host.system().*works = false;
        expectNil(host, photo, "InvertQVR");
        expectNil(host, photo, "InvertQVR");
        EXPECT_EQ(host.ledger().systemObjects, 0);
        host.system().*works = true;
        expectCall(someInverted, host, photo, "InvertQVR");
    };
    tryWith(&standin::SystemSwitches::foldersFound);
    tryWith(&standin::SystemSwitches::bundlesCreated);
    tryWith(&standin::SystemSwitches::executablesLoad);
}

TEST_P(HostAccess, LooksUpMissingQuickDrawFunctionsAgain)
{
    for (const char* function : {"GetGWorldPixMap", "GetPixDepth", "LockPixels", "GetPixBaseAddr"})
    {
        SCOPED_TRACE(function);
        TestHost host{hostSetup(artefact())};
        const standin::Picture photo = upload(host, someContent);
        host.setAbsent(function);
        expectNil(host, photo, "InvertQVR");
        expectNil(host, photo, "InvertQVR");
        host.setAbsent(function, false);
        expectCall(someInverted, host, photo, "InvertQVR");
    }
}

/// The bytes of strings come from the host's own function or, before 2013.0, from older ones.
TEST_P(HostAccess, ReadsStringsInEveryVersion)
{
    forEachHostVersion(artefact(), [](TestHost& host) {
        const standin::String text =
            host.callGlobal("PicturetoBinaryStringQVR", {upload(host, someContent)}).string();
        ASSERT_FALSE(text.isNil());
        host.expectBalanced("after writing");
        expectPicture(someContent, host.callGlobal("BinaryStringtoPictureQVR", {text}).picture(),
                      "reading back");
        const bool older = host.options().version < 2013.0;
        EXPECT_EQ(host.faults().callCount("REALLockString"), older ? 1 : 0);
        EXPECT_EQ(host.faults().callCount("PluginGetStringData"), older ? 0 : 1);
        EXPECT_EQ(host.lookups("PluginGetStringData") > 0, !older);
    });
}

TEST_P(HostAccess, WithoutItsWaysToStringsNothingIsRead)
{
    for (const char* function : {"StringGetCString", "LenB", "REALLoadGlobalMethod"})
    {
        SCOPED_TRACE(function);
        TestHost host{hostSetup(artefact()).version(2012.5).without({function})};
        const standin::String text = host.newString(std::string(200, 'P'), standin::encodingNone);
        EXPECT_TRUE(host.callGlobal("BinaryStringtoPictureQVR", {text}).picture().isNil());
    }
}

} // namespace
