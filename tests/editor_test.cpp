// How pictures are locked, copied, held and given back, seen from the host: with the simplest method that
// reads a picture and makes one, and with scrolling, which works in place.
#include "tests/reference/inversion.h"

#include "tests/support/operation_checks.h"

namespace
{

using reference::Picture;
using standin::Kind;
using standin::PictureQuirks;
using standin::Storage;

class Editor : public ArtefactTest
{
protected:
    static HostSetup desktop()
    {
        return hostSetup(artefact()).logged();
    }
    static HostSetup console()
    {
        return hostSetup(artefact(), Kind::Console).logged();
    }
    /// A host that is none of the known applications, so that pictures tell what it is.
    static HostSetup unknown()
    {
        return hostSetup(artefact(), Kind::Unknown).logged();
    }
};
ON_EVERY_ARTEFACT(Editor);

Picture noise(int width = 7, int height = 3)
{
    Random random{21};
    return randomPicture(random, width, height);
}

/// Inverts and compares.
void expectInverted(TestHost& host, const standin::Picture& photo)
{
    expectCall(reference::invert(download(photo), {}), host, photo, "InvertQVR");
}

/// The calls as "name(first argument", without the plug-in's own heap and look-ups.
std::vector<std::string> shortLog(const TestHost& host)
{
    std::vector<std::string> calls;
    for (const std::string& call : host.callLog())
        if (!call.starts_with("CF") && !call.starts_with("FSFind") && !call.starts_with("pluginObjectType"))
            calls.push_back(call.substr(0, call.find_first_of(",)")));
    return calls;
}

TEST_P(Editor, ANilPictureCallsNothing)
{
    forEachHost(artefact(), [](TestHost& host) {
        host.faults().clear();
        expectNil(host, standin::Picture(), "InvertQVR");
        EXPECT_EQ(host.faults().callCount(), 0);
        for (const char* name :
             {"pluginObjectType", "lockPictureDescription", "REALLockPictureDescription", "newPicture",
              "unlockPictureDescription", "REALUnlockObject", "REALPictureClearCache"})
            EXPECT_EQ(host.lookups(name), 0) << name;
    });
}

TEST_P(Editor, RowsMayLieApart)
{
    for (const int padding : {0, 1, 3, 4, 12, 1000})
        for (HostSetup setup : hostSetups(artefact()))
        {
            setup.options.padding = padding;
            setup.name += ", padding " + std::to_string(padding);
            TestHost host{setup};
            for (const Storage storage : sourceStorages(host))
            {
                const standin::Picture photo = upload(host, noise(13, 6), storage);
                expectInverted(host, photo);
                EXPECT_TRUE(photo.paddingIntact());
            }
        }
}

TEST_P(Editor, RowsOfSourcesAndResultsBeginAnywhere)
{
    constexpr int pictures = 40;
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        for (const Storage storage : lockableStorages(host))
        {
            std::set<std::uintptr_t> sources;
            std::set<std::uintptr_t> results;
            for (int count = 0; count < pictures; ++count)
            {
                standin::Picture source = host.newPicture(4, 5, storage);
                standin::Picture result = host.call(source, "InvertQVR").picture();
                for (int y = 0; y < source.height(); ++y)
                {
                    sources.insert(reinterpret_cast<std::uintptr_t>(source.row(y)) % 4);
                    results.insert(reinterpret_cast<std::uintptr_t>(result.row(y)) % 4);
                }
            }
            const bool apart = traitsOf(storage).access == standin::Access::Bitmap;
            const std::set<std::uintptr_t> wanted =
                apart ? std::set<std::uintptr_t>{0, 1, 3} : std::set<std::uintptr_t>{0, 1, 2, 3};
            EXPECT_EQ(sources, wanted) << nameOf(storage);
            EXPECT_EQ(results, wanted) << nameOf(storage);
        }
    });
}

TEST_P(Editor, EverySourceCanMeetEveryResult)
{
    for (const Storage result : gworlds(true))
    {
        TestHost host{desktop().newPictures(result)};
        for (const Storage source : sourceStorages(host))
            expectInverted(host, upload(host, noise(), source));
    }
}

TEST_P(Editor, LocksAndUnlocksGWorldsInOrder)
{
    TestHost host{desktop()};
    const standin::Picture photo = upload(host, noise());
    expectInverted(host, photo);
    host.clearCallLog();
    const standin::Picture result = host.call(photo, "InvertQVR").picture();
    // picture#1 is the source, #2 the first result, #3 this one.
    const std::vector<std::string> wanted{
        "lockPictureDescription(picture#1", "GetGWorldPixMap(picture#1", "GetPixDepth(picture#1",
        "LockPixels(picture#1", "GetPixBaseAddr(picture#1", "REALLockObject(picture#1",
        "GetPixRowBytes(picture#1",
        // the result, which the writer holds on its own
        "newPicture(7", "lockPictureDescription(picture#3", "GetGWorldPixMap(picture#3",
        "GetPixDepth(picture#3", "LockPixels(picture#3", "GetPixBaseAddr(picture#3",
        "REALLockObject(picture#3", "GetPixRowBytes(picture#3", "REALUnlockObject(picture#3",
        // handing it out, and the writer's release
        "REALLockObject(picture#3", "REALPictureClearCache(picture#3", "UnlockPixels(picture#3",
        "unlockPictureDescription(picture#3", "REALPictureClearCache(picture#3", "REALUnlockObject(picture#3",
        // the reader's
        "UnlockPixels(picture#1", "unlockPictureDescription(picture#1", "REALUnlockObject(picture#1"};
    EXPECT_EQ(shortLog(host), wanted);
}

TEST_P(Editor, LocksAndUnlocksBitmapsInOrder)
{
    TestHost host{console()};
    const standin::Picture photo = upload(host, noise());
    host.clearCallLog();
    const standin::Picture result = host.call(photo, "InvertQVR").picture();
    const std::vector<std::string> wanted{"REALLockPictureDescription(picture#1",
                                          "REALLockObject(picture#1",
                                          "newPicture(7",
                                          "REALLockPictureDescription(picture#2",
                                          "REALLockObject(picture#2",
                                          "REALUnlockObject(picture#2",
                                          "REALLockObject(picture#2",
                                          "REALPictureClearCache(picture#2",
                                          "unlockPictureDescription(picture#2",
                                          "REALPictureClearCache(picture#2",
                                          "REALUnlockObject(picture#2",
                                          "unlockPictureDescription(picture#1",
                                          "REALUnlockObject(picture#1"};
    EXPECT_EQ(shortLog(host), wanted);
}

TEST_P(Editor, OnlyWritersClearTheCache)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture photo = upload(host, noise());
        const standin::Picture result = host.call(photo, "InvertQVR").picture();
        EXPECT_EQ(photo.cacheClears(), 0);
        EXPECT_EQ(result.cacheClears(), 2) << "once when handed out, once when released";
        EXPECT_FALSE(host.call(photo, "isBlackQVR").boolean());
        EXPECT_EQ(photo.cacheClears(), 0);
    });
}

TEST_P(Editor, TheHostsKindIsAskedOnce)
{
    for (const Kind kind : {Kind::Desktop, Kind::Console, Kind::Web})
    {
        HostSetup setup = desktop();
        setup.options.kind = kind;
        TestHost host{setup};
        const standin::Picture photo = upload(host, noise());
        expectInverted(host, photo);
        const std::vector<std::string> asked{"pluginObjectType(\"Application\")",
                                             "pluginObjectType(\"WebApplication\")",
                                             "pluginObjectType(\"ConsoleApplication\")"};
        for (const std::string& call : asked)
            EXPECT_EQ(host.callsOf(call), 1) << call;
        host.clearCallLog();
        expectInverted(host, photo);
        EXPECT_EQ(host.callsOf("pluginObjectType"), 0);
    }
}

TEST_P(Editor, PicturesOfOtherDepthsAreReadFromACopy)
{
    for (const Storage storage : gworlds(false))
    {
        TestHost host{desktop()};
        const standin::Picture photo = upload(host, noise(), storage);
        expectInverted(host, photo);
        EXPECT_EQ(host.callsOf("newPicture"), 2) << "the copy and the result";
        EXPECT_EQ(host.callsOf("pluginPictureGraphicsGetter"), 1);
        EXPECT_EQ(host.callsOf("DrawPicture"), 1);
        EXPECT_EQ(host.ledger().looseLocks, 0);
    }
}

TEST_P(Editor, PicturesOfOtherDepthsCannotBeWritten)
{
    for (const Storage storage : gworlds(false))
    {
        TestHost host{desktop()};
        const standin::Picture photo = upload(host, noise(), storage);
        const std::vector<std::uint8_t> before = photo.rgba();
        host.clearCallLog();
        EXPECT_FALSE(host.call(photo, "ScrollVerticalQVR", {1, true, false}).boolean());
        EXPECT_EQ(host.callsOf("newPicture"), 0);
        EXPECT_TRUE(before == photo.rgba());
        host.expectBalanced("after scrolling");

        TestHost withSuchResults{desktop().newPictures(storage)};
        expectNil(withSuchResults, upload(withSuchResults, noise(), Storage::GWorld32), "InvertQVR");
    }
}

/// The depth that QuickDraw tells decides, and the copy has the size that the description tells.
TEST_P(Editor, ACopyNeedsASize)
{
    TestHost host{desktop()};
    for (const int depth : {1, 8, 16, 0, -24})
    {
        standin::Picture photo = upload(host, noise());
        photo.quirks().depth = depth;
        expectInverted(host, photo);
        photo.quirks().describedWidth = 0;
        expectNil(host, photo, "InvertQVR");
        photo.quirks().describedWidth = 7;
        photo.quirks().describedHeight = -1;
        expectNil(host, photo, "InvertQVR");
    }
}

TEST_P(Editor, WhatCanOnlyBeDrawnIsReadFromACopy)
{
    TestHost host{desktop()};
    const standin::Picture photo = upload(host, noise(), Storage::Drawable);
    expectInverted(host, photo);
    EXPECT_EQ(host.callsOf("REALGetPropValueInt(picture#1, \"Width\""), 1);
    EXPECT_EQ(host.callsOf("REALGetPropValueInt(picture#1, \"Height\""), 1);
    EXPECT_EQ(host.callsOf("unlockPictureDescription(picture#1"), 0);
    EXPECT_EQ(host.ledger().looseLocks, 1) << "the description of a picture that is no GWorld stays locked";
}

TEST_P(Editor, WhatCanOnlyBeDrawnNeedsItsSizeAndACopy)
{
    TestHost host{desktop()};
    standin::Picture photo = upload(host, noise(), Storage::Drawable);
    photo.quirks().noSizeProperties = true;
    expectNil(host, photo, "InvertQVR");
    photo.quirks() = {};
    photo.quirks().describedWidth = 0;
    expectNil(host, photo, "InvertQVR");
    photo.quirks() = {};
    photo.quirks().describedHeight = -5;
    expectNil(host, photo, "InvertQVR");
    photo.quirks() = {};
    host.faults().failCall("newPicture");
    expectNil(host, photo, "InvertQVR");
    EXPECT_EQ(host.callsOf("REALLockPictureDescription"), 0) << "a desktop has no memory bitmaps";
    EXPECT_FALSE(host.call(photo, "ScrollVerticalQVR", {1, true, false}).boolean());
    expectInverted(host, photo);
}

TEST_P(Editor, ACopyThatCannotBeLockedIsNil)
{
    for (const auto quirk : {&PictureQuirks::nullData, &PictureQuirks::nullPixMap,
                             &PictureQuirks::lockPixelsFails, &PictureQuirks::nullBaseAddress})
        for (const Storage storage : {Storage::GWorld8, Storage::Drawable})
        {
            TestHost host{desktop()};
            host.newPictureQuirks().*quirk = true;
            expectNil(host, upload(host, noise(), storage), "InvertQVR");
            EXPECT_EQ(host.callsOf("newPicture"), 1);
        }
}

TEST_P(Editor, BrokenGWorldsGiveNil)
{
    for (const auto quirk : {&PictureQuirks::nullData, &PictureQuirks::nullPixMap,
                             &PictureQuirks::lockPixelsFails, &PictureQuirks::nullBaseAddress})
        for (const Storage storage : gworlds(true))
        {
            TestHost host{desktop()};
            standin::Picture photo = upload(host, noise(), storage);
            photo.quirks().*quirk = true;
            expectNil(host, photo, "InvertQVR");
            EXPECT_EQ(host.callsOf("unlockPictureDescription(picture#1"), 1);
            EXPECT_EQ(host.callsOf("REALLockObject"), 0);
            EXPECT_EQ(host.callsOf("newPicture"), 0);
            EXPECT_FALSE(host.call(photo, "ScrollVerticalQVR", {1, true, false}).boolean());
            host.expectBalanced("after scrolling");

            photo.quirks() = {};
            host.newPictureQuirks().*quirk = true;
            expectNil(host, photo, "InvertQVR");
            host.newPictureQuirks() = {};
            expectInverted(host, photo);
        }
}

/// A null base address comes after the pixels were locked, and a failed lock before.
TEST_P(Editor, PixelsAreUnlockedWhenTheyHaveNoAddress)
{
    TestHost host{desktop()};
    standin::Picture photo = upload(host, noise());
    photo.quirks().nullBaseAddress = true;
    expectNil(host, photo, "InvertQVR");
    EXPECT_EQ(host.callsOf("UnlockPixels(picture#1"), 1);
    host.clearCallLog();
    photo.quirks() = {};
    photo.quirks().lockPixelsFails = true;
    expectNil(host, photo, "InvertQVR");
    EXPECT_EQ(host.callsOf("UnlockPixels"), 0);
}

/// Rows that lie on each other are no reason to give up.
TEST_P(Editor, WithoutRowBytesEveryRowIsTheFirst)
{
    TestHost host{desktop()};
    host.setAbsent("GetPixRowBytes");
    const Picture content = noise();
    Picture wanted(content.width, content.height, reference::untouched);
    const Picture inverted = reference::invert(content, {});
    for (int x = 0; x < content.width; ++x)
        wanted.at(x, 0) = inverted.at(x, 0);
    expectCall(wanted, host, upload(host, content), "InvertQVR");
}

TEST_P(Editor, BrokenBitmapsGiveNil)
{
    for (const auto quirk : {&PictureQuirks::lockFails, &PictureQuirks::nullData})
    {
        TestHost host{console()};
        standin::Picture photo = upload(host, noise());
        photo.quirks().*quirk = true;
        expectNil(host, photo, "InvertQVR");
        photo.quirks() = {};
        host.newPictureQuirks().*quirk = true;
        expectNil(host, photo, "InvertQVR");
        host.newPictureQuirks() = {};
        expectInverted(host, photo);
    }

    TestHost host{console()};
    standin::Picture photo = upload(host, noise());
    for (const int type : {0, 4, 9, 11})
    {
        photo.quirks().descriptionType = type;
        expectNil(host, photo, "InvertQVR");
    }
    photo.quirks() = {};
    for (const auto& [word, value] : {std::pair{0, 1U}, {1806, 0U}, {1807, 0U}})
    {
        const std::uint32_t before = std::exchange(photo.bitmapWords()[word], value);
        expectNil(host, photo, "InvertQVR");
        EXPECT_FALSE(host.call(photo, "ScrollVerticalQVR", {1, true, false}).boolean());
        host.expectBalanced("after scrolling");
        photo.bitmapWords()[word] = before;
    }
    expectInverted(host, photo);
}

/// Hosts before 2012.0 are unlocked after a lock that failed, too.
TEST_P(Editor, OldHostsAreUnlockedAfterAFailedLock)
{
    for (const double version : hostVersions)
    {
        TestHost host{console().version(version)};
        standin::Picture photo = upload(host, noise());
        photo.quirks().lockFails = true;
        expectNil(host, photo, "InvertQVR");
        EXPECT_EQ(host.callsOf("unlockPictureDescription(picture#1"), version < 2012.0 ? 1 : 0) << version;
    }
}

TEST_P(Editor, ADesktopsBitmapsAreDrawn)
{
    TestHost host{desktop()};
    const standin::Picture photo = upload(host, noise(), Storage::Bitmap);
    expectInverted(host, photo);
    EXPECT_EQ(host.callsOf("REALLockPictureDescription"), 0);
    EXPECT_FALSE(host.call(photo, "ScrollVerticalQVR", {1, true, false}).boolean());
}

/// Where no application class tells the kind, the first picture does.
TEST_P(Editor, AGWorldMakesAnUnknownHostADesktop)
{
    TestHost host{unknown()};
    expectInverted(host, upload(host, noise(), Storage::GWorld32));
    host.clearCallLog();
    expectInverted(host, upload(host, noise(), Storage::GWorld32));
    EXPECT_EQ(host.callsOf("pluginObjectType"), 0);
    EXPECT_FALSE(
        host.call(upload(host, noise(), Storage::Bitmap), "ScrollVerticalQVR", {1, true, false}).boolean());
    EXPECT_EQ(host.callsOf("REALLockPictureDescription"), 0);
}

TEST_P(Editor, ABitmapMakesAnUnknownHostAConsole)
{
    TestHost host{unknown().newPictures(Storage::Bitmap)};
    const Picture content = noise();
    const standin::Picture photo = upload(host, content);
    // Working in place forbids the copy, so that the bitmap itself is locked.
    EXPECT_TRUE(host.call(photo, "ScrollVerticalQVR", {1, true, false}).boolean());
    EXPECT_EQ(host.callsOf("pluginObjectType"), 3);
    EXPECT_EQ(host.ledger().looseLocks, 1) << "what was tried first stays locked";
    EXPECT_EQ(host.callsOf("newPicture"), 0);

    host.clearCallLog();
    expectInverted(host, photo);
    EXPECT_EQ(host.callsOf("pluginObjectType"), 0);
    EXPECT_EQ(host.callsOf("lockPictureDescription"), 0);
    EXPECT_EQ(host.callsOf("newPicture"), 1);
}

/// Until its kind is known a host's classes are asked for every time.
TEST_P(Editor, AnUnknownHostIsAskedAgain)
{
    TestHost host{unknown()};
    standin::Picture photo = upload(host, noise(), Storage::Drawable);
    photo.quirks().noSizeProperties = true;
    for (int round = 1; round <= 3; ++round)
    {
        expectNil(host, photo, "InvertQVR");
        EXPECT_EQ(host.callsOf("pluginObjectType"), 3 * round);
    }
}

/// A copy whose storage is no better than the original's is not copied again and again.
TEST_P(Editor, APictureIsCopiedOnceOnly)
{
    for (const Storage storage : {Storage::Bitmap, Storage::Drawable})
    {
        TestHost host{unknown().newPictures(Storage::Bitmap)};
        expectInverted(host, upload(host, noise(), storage));
        EXPECT_EQ(host.callsOf("newPicture"), 2);
    }
    TestHost hopeless{desktop().newPictures(Storage::Drawable)};
    expectNil(hopeless, upload(hopeless, noise(), Storage::Drawable), "InvertQVR");
    EXPECT_EQ(hopeless.callsOf("newPicture"), 1);
}

/// Where nothing can be drawn, bitmaps of one size are copied byte by byte.
TEST_P(Editor, BitmapsAreCopiedWhereNothingCanBeDrawn)
{
    for (const double version : hostVersions)
        for (const char* missing : {"DrawPicture", "REALLoadObjectMethod"})
        {
            TestHost host{unknown().newPictures(Storage::Bitmap).version(version).without({missing})};
            const standin::Picture photo = upload(host, noise());
            expectInverted(host, photo);
            EXPECT_EQ(host.callsOf("newPicture"), 2);
            EXPECT_EQ(host.lookups("RuntimeGraphicsDrawPicture"), version < 2012.0 ? 1 : 0);
        }
}

/// The copy stays as the host made it where drawing and copying fail; reading it goes on.
TEST_P(Editor, ACopyThatCannotBeDrawnStaysAsItWasMade)
{
    constexpr std::uint8_t left = reference::untouchedByte ^ 255;
    const Picture wanted(7, 3, {left, left, left});
    for (const double version : {2011.0, 2013.03})
        for (const char* missing : {"DrawPicture", "REALLoadObjectMethod", "pluginPictureGraphicsGetter"})
            for (const Storage storage : {Storage::GWorld8, Storage::Drawable})
            {
                TestHost host{desktop().version(version).without({missing})};
                expectCall(wanted, host, upload(host, noise(), storage), "InvertQVR");
            }

    // A bitmap whose record tells another size than the copy's is not copied.
    for (const int word : {0, 1, 2, 1807})
    {
        TestHost host{unknown().newPictures(Storage::Bitmap).without({"DrawPicture"})};
        const standin::Picture photo = upload(host, noise());
        const std::uint32_t before = standin::Picture(photo).bitmapWords()[word];
        standin::Picture(photo).bitmapWords()[word] = word == 1807 ? 0 : before + 1;
        expectCall(wanted, host, photo, "InvertQVR");
        standin::Picture(photo).bitmapWords()[word] = before;
    }

    // Nor is one without a record, or to a copy without one.
    const HostSetup cannotDraw = unknown().newPictures(Storage::Bitmap).without({"DrawPicture"});
    {
        TestHost host{cannotDraw};
        standin::Picture photo = upload(host, noise());
        photo.quirks().nullData = true;
        expectCall(wanted, host, photo, "InvertQVR");
    }
    TestHost host{cannotDraw};
    standin::Picture photo = upload(host, noise());
    ++photo.bitmapWords()[0];
    host.newPictureQuirks().nullData = true;
    expectNil(host, photo, "InvertQVR");
    EXPECT_EQ(host.callsOf("newPicture"), 1) << "the copy";
    --photo.bitmapWords()[0];
}

TEST_P(Editor, SurvivesFailingCallsWhileCopying)
{
    for (const double version : {2011.0, 2013.03})
    {
        for (const Storage storage : {Storage::GWorld8, Storage::Drawable, Storage::Bitmap})
            torture(desktop().version(version), {{noise(), storage}}, methodJob("InvertQVR"));
        for (const Storage storage : {Storage::Drawable, Storage::Bitmap})
            torture(unknown().newPictures(Storage::GWorld32).version(version), {{noise(), storage}},
                    methodJob("InvertQVR"));
    }
    torture(unknown().newPictures(Storage::Bitmap), {{noise(), Storage::Bitmap}}, methodJob("InvertQVR"));
    torture(unknown().newPictures(Storage::Bitmap).without({"DrawPicture"}), {{noise(), Storage::Bitmap}},
            methodJob("InvertQVR"));
}

/// Calls by the thousand leave nothing behind.
TEST_P(Editor, ManyCallsLeaveNothingBehind)
{
    forEachHost(artefact(), [](TestHost& host) {
        const std::vector<Storage> storages = sourceStorages(host);
        std::vector<standin::Picture> photos;
        for (const Storage storage : storages)
            photos.push_back(upload(host, noise(), storage));
        for (int i = 0; i < affordable(500); ++i)
            host.call(photos[static_cast<std::size_t>(i) % photos.size()], "InvertQVR");
        for (const standin::Picture& photo : photos)
            EXPECT_EQ(photo.referenceCount(), 1) << nameOf(photo.storage());
    });
}

} // namespace
