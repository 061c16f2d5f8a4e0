#include "tests/reference/scrolling.h"
#include "tests/support/operation_checks.h"

namespace
{

using standin::Picture;
using standin::Storage;
using standin::Value;

/// How the stand-in's QuickDraw shifts: a delta is reduced to 16 bits, and what is uncovered is erased to
/// white.
reference::Picture shifted(const reference::Picture& picture, int deltaX, int deltaY)
{
    const int dx = static_cast<std::int16_t>(deltaX);
    const int dy = static_cast<std::int16_t>(deltaY);
    reference::Picture result{picture.width, picture.height, {255, 255, 255, 255}};
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            if (x - dx >= 0 && x - dx < picture.width && y - dy >= 0 && y - dy < picture.height)
                result.at(x, y) = picture.at(x - dx, y - dy);
    return result;
}

class Scrolling : public ArtefactTest
{
protected:
    static bool vertical(TestHost& host, const Picture& picture, int delta, bool wrap,
                         bool scrollMask = false)
    {
        return boolean(host.call(picture, "ScrollVerticalQVR", {delta, wrap, scrollMask}));
    }

    static bool horizontal(TestHost& host, const Picture& picture, int delta, bool wrap,
                           bool scrollMask = false)
    {
        return boolean(host.call(picture, "ScrollHorizontalQVR", {delta, wrap, scrollMask}));
    }

    static bool both(TestHost& host, const Picture& picture, int deltaX, int deltaY, bool wrap,
                     bool scrollMask = false)
    {
        return boolean(host.call(picture, "ScrollQVR", {deltaX, deltaY, wrap, scrollMask}));
    }

    static void expectPixels(const reference::Picture& wanted, const Picture& got, const std::string& what)
    {
        expectPicture(wanted, got, what, Alpha::Exact);
        EXPECT_TRUE(got.paddingIntact()) << what;
    }

private:
    static bool boolean(const Value& result)
    {
        EXPECT_FALSE(result.exception().has_value());
        return result.boolean();
    }
};
ON_EVERY_ARTEFACT(Scrolling);

TEST_P(Scrolling, KnownRotations)
{
    forEachHost(artefact(), [](TestHost& host) {
        reference::Picture rows{3, 10};
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 3; ++x)
                rows.at(x, y) = {static_cast<std::uint8_t>(y), 0, 0};
        for (const Storage storage : lockableStorages(host))
        {
            for (const int delta : {3, 13, -7, 23, -17})
            {
                const Picture picture = upload(host, rows, storage);
                EXPECT_TRUE(vertical(host, picture, delta, true));
                EXPECT_EQ(picture.pixel(1, 0).red, 7) << delta;
                EXPECT_EQ(picture.pixel(1, 3).red, 0) << delta;
            }
            for (const int delta : {0, 10, -10, 20, -1000})
            {
                const Picture picture = upload(host, rows, storage);
                EXPECT_TRUE(vertical(host, picture, delta, true));
                expectPixels(download(upload(host, rows, storage)), picture, "a full turn");
            }
            for (const int delta : {5, -5})
            {
                const Picture picture = upload(host, rows, storage);
                EXPECT_TRUE(vertical(host, picture, delta, true));
                EXPECT_EQ(picture.pixel(0, 0).red, 5);
                EXPECT_EQ(picture.pixel(2, 5).red, 0);
            }
            reference::Picture columns{6, 2};
            for (int x = 0; x < 6; ++x)
                columns.at(x, 0) = columns.at(x, 1) = {static_cast<std::uint8_t>(x), 0, 0};
            const Picture picture = upload(host, columns, storage);
            EXPECT_TRUE(horizontal(host, picture, -1, true));
            for (int y = 0; y < 2; ++y)
            {
                EXPECT_EQ(picture.pixel(0, y).red, 1);
                EXPECT_EQ(picture.pixel(5, y).red, 0);
            }
        }
    });
}

TEST_P(Scrolling, RotationsEqualTheReference)
{
    std::uint32_t seed = 40;
    forEachHost(artefact(), [&](TestHost& host) {
        for (const Storage storage : lockableStorages(host))
        {
            Random random{++seed};
            for (int times = 0; times < 150; ++times)
            {
                const int width = random.onceIn(10) ? random.between(40, 300) : random.between(1, 24);
                const int height = random.onceIn(10) ? random.between(40, 100) : random.between(1, 24);
                const auto delta = [&random](int size) {
                    static const std::vector<int> extremes{least, least + 1, most, -65536, 65537};
                    return random.onceIn(8) ? random.oneOf(extremes)
                                            : random.between(-2 * size - 2, 2 * size + 2);
                };
                const int dx = delta(width);
                const int dy = delta(height);
                const std::string what = std::to_string(dx) + ", " + std::to_string(dy);

                const Picture picture = upload(host, randomPicture(random, width, height), storage);
                const reference::Picture start = download(picture);
                const int clears = picture.cacheClears();
                EXPECT_TRUE(horizontal(host, picture, dx, true)) << what;
                const reference::Picture across = reference::rotateHorizontally(start, dx);
                expectPixels(across, picture, "ScrollHorizontalQVR " + what);
                EXPECT_TRUE(vertical(host, picture, dy, true)) << what;
                const reference::Picture wanted = reference::rotateVertically(across, dy);
                expectPixels(wanted, picture, "ScrollVerticalQVR " + what);
                if (dx != 0 || dy != 0)
                    EXPECT_GT(picture.cacheClears(), clears) << what;

                const Picture again = upload(host, start, storage);
                EXPECT_TRUE(both(host, again, dx, dy, true)) << what;
                expectPixels(wanted, again, "ScrollQVR " + what);
            }
        }
    });
}

TEST_P(Scrolling, GWorldsShift)
{
    TestHost host{hostSetup(artefact())};
    Random random{50};
    const auto isGWorld = [](Storage storage) { return traitsOf(storage).access == standin::Access::GWorld; };
    for (const Storage storage : storagesThat(isGWorld))
        for (const int delta :
             {1, -1, 3, -3, 8, 9, 10, -8, -12, 1000, 32767, 32768, 65536, 65536 + 2, -65536 - 2, most, least})
        {
            const reference::Picture pixels = randomPicture(random, 9, 8);
            Picture picture = upload(host, pixels, storage);
            const reference::Picture start = download(picture);
            EXPECT_TRUE(vertical(host, picture, delta, false));
            expectPixels(shifted(start, 0, delta), picture, "vertical shift by " + std::to_string(delta));

            picture = upload(host, pixels, storage);
            EXPECT_TRUE(horizontal(host, picture, delta, false));
            expectPixels(shifted(start, delta, 0), picture, "horizontal shift by " + std::to_string(delta));

            picture = upload(host, pixels, storage);
            EXPECT_TRUE(both(host, picture, delta, -2, false));
            expectPixels(shifted(shifted(start, delta, 0), 0, -2), picture, "shift");
        }
    EXPECT_EQ(host.ledger().looseLocks, 0);
}

TEST_P(Scrolling, APictureThatIsItsOwnMaskMovesTwice)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{53};
        for (const Storage storage : lockableStorages(host))
        {
            Picture picture = upload(host, randomPicture(random, 11, 7), storage);
            picture.setMask(picture);
            const reference::Picture start = download(picture);
            EXPECT_TRUE(vertical(host, picture, 2, true, true));
            const reference::Picture down = reference::rotateVertically(start, 4);
            expectPixels(down, picture, "vertically");
            EXPECT_TRUE(horizontal(host, picture, -1, true, true));
            const reference::Picture across = reference::rotateHorizontally(down, -2);
            expectPixels(across, picture, "horizontally");
            EXPECT_TRUE(both(host, picture, 3, 1, true, true));
            expectPixels(reference::rotateVertically(reference::rotateHorizontally(across, 6), 2), picture,
                         "in both directions");
            // It would keep itself alive.
            picture.removeMask();
        }
    });
}

/// What a fuzzer found: with a framework that could be loaded only a moment later, the port before was not
/// asked for, and nothing was put in its place.
TEST_P(Scrolling, AFrameworkThatLoadsLateLeavesThePortAlone)
{
    for (const char* function :
         {"FSFindFolder", "CFURLCreateFromFSRef", "CFURLCreateCopyAppendingPathComponent", "CFBundleCreate",
          "CFBundleLoadExecutable", "CFBundleGetFunctionPointerForName"})
    {
        TestHost host{hostSetup(artefact())};
        Random random{54};
        const reference::Picture start = randomPicture(random, 7, 6);
        const Picture picture = upload(host, start, Storage::GWorld32);
        host.faults().failCall(function);
        EXPECT_TRUE(vertical(host, picture, 2, false)) << function;
        expectPixels(start, picture, function);
        host.expectBalanced(function);
        EXPECT_TRUE(vertical(host, picture, 2, false)) << function;
        expectPixels(shifted(start, 0, 2), picture, "the next shift");
    }
}

/// What a fuzzer found: QuickDraw was handed the region that it could not make.
TEST_P(Scrolling, WithoutARegionNothingShifts)
{
    TestHost host{hostSetup(artefact())};
    Random random{55};
    const reference::Picture start = randomPicture(random, 7, 6);
    const Picture picture = upload(host, start, Storage::GWorld32);
    host.faults().failCall("NewRgn");
    EXPECT_TRUE(vertical(host, picture, 2, false)) << "it is a GWorld all the same";
    expectPixels(start, picture, "without a region");
    host.expectBalanced("without a region");
    EXPECT_TRUE(vertical(host, picture, 2, false));
    expectPixels(shifted(start, 0, 2), picture, "the next shift");
}

/// What a fuzzer found: QuickDraw was told to draw into nothing.
TEST_P(Scrolling, AGWorldThatIsNilDoesNotShift)
{
    TestHost host{hostSetup(artefact())};
    Random random{52};
    Picture picture = upload(host, randomPicture(random, 7, 6));
    const auto before = picture.rgba();
    picture.quirks().nullData = true;
    EXPECT_FALSE(vertical(host, picture, 2, false));
    EXPECT_TRUE(horizontal(host, picture, 2, false));
    EXPECT_FALSE(both(host, picture, 2, 2, false));
    EXPECT_TRUE(before == picture.rgba());
    host.expectBalanced("after shifts of nothing");
}

TEST_P(Scrolling, OtherPicturesDoNotShift)
{
    for (const standin::Kind kind : {standin::Kind::Desktop, standin::Kind::Console, standin::Kind::Web})
    {
        TestHost host{hostSetup(artefact(), kind)};
        Random random{51};
        const Storage storage = kind == standin::Kind::Desktop ? Storage::Drawable : Storage::Bitmap;
        for (const int delta : {1, -2, 70000})
        {
            const Picture picture = upload(host, randomPicture(random, 7, 6), storage);
            const auto before = picture.rgba();
            EXPECT_FALSE(vertical(host, picture, delta, false));
            EXPECT_TRUE(horizontal(host, picture, delta, false));
            EXPECT_FALSE(both(host, picture, delta, delta, false));
            EXPECT_TRUE(both(host, picture, delta, 0, false)) << "nothing is to move vertically";
            EXPECT_TRUE(before == picture.rgba()) << "something moved";
        }
        EXPECT_EQ(host.ledger().looseLocks, 0) << "the description is unlocked";
    }
}

TEST_P(Scrolling, NothingToScroll)
{
    forEachHost(artefact(), [](TestHost& host) {
        for (const bool wrap : {false, true})
        {
            EXPECT_FALSE(vertical(host, Picture(), 1, wrap));
            EXPECT_TRUE(horizontal(host, Picture(), 1, wrap));
            EXPECT_FALSE(both(host, Picture(), 1, 1, wrap));
            EXPECT_TRUE(vertical(host, Picture(), 0, wrap))
                << "no distance is done before anything is looked at";
            EXPECT_TRUE(both(host, Picture(), 1, 0, wrap));
            EXPECT_FALSE(vertical(host, Picture(), 1, wrap, true));
        }
        for (const auto& [width, height] : {std::pair{0, 4}, std::pair{4, 0}, std::pair{0, 0}})
        {
            const Picture empty = host.newPicture(width, height);
            EXPECT_FALSE(vertical(host, empty, 1, true)) << width << " x " << height;
            EXPECT_TRUE(horizontal(host, empty, 1, true)) << width << " x " << height;
            EXPECT_TRUE(vertical(host, empty, 0, true));
        }
    });
}

TEST_P(Scrolling, PicturesThatCannotBeWrittenDoNotRotate)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{52};
        std::vector<Picture> pictures;
        for (const Storage storage : sourceStorages(host))
            if (!isLockable(storage))
                pictures.push_back(upload(host, randomPicture(random, 5, 5), storage));
        Picture unopened = upload(host, randomPicture(random, 5, 5));
        unopened.quirks() = broken(host);
        pictures.push_back(unopened);
        for (const Picture& picture : pictures)
        {
            const auto before = picture.rgba();
            EXPECT_FALSE(vertical(host, picture, 2, true));
            EXPECT_TRUE(horizontal(host, picture, 2, true));
            EXPECT_FALSE(both(host, picture, 1, 2, true));
            EXPECT_TRUE(before == picture.rgba()) << "something moved";
        }
    });
}

TEST_P(Scrolling, MaskFollows)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{53};
        const bool bitmaps = host.newStorage() == Storage::Bitmap;
        for (const Storage storage : lockableStorages(host))
            for (const bool wrap : {true, false})
            {
                if (!wrap && bitmaps)
                    continue;
                const auto moved = [wrap](const reference::Picture& picture, int dx, int dy) {
                    return wrap ? reference::rotateVertically(reference::rotateHorizontally(picture, dx), dy)
                                : shifted(shifted(picture, dx, 0), 0, dy);
                };
                Picture picture = upload(host, randomPicture(random, 8, 7), storage);
                const Picture mask = upload(host, randomPicture(random, 8, 7), storage);
                // A mask's own mask is left alone.
                Picture maskWithMask = mask;
                const Picture inner = upload(host, randomPicture(random, 8, 7), storage);
                maskWithMask.setMask(inner);
                const reference::Picture innerStart = download(inner);

                // Without a mask, only the picture moves.
                reference::Picture wanted = moved(download(picture), 0, 3);
                EXPECT_TRUE(vertical(host, picture, 3, wrap, true));
                expectPixels(wanted, picture, "picture without mask");
                EXPECT_TRUE(picture.mask().isNil()) << "scrolling made a mask";

                picture.setMask(mask);
                reference::Picture wantedMask = download(mask);
                const auto check = [&](bool result, int dx, int dy, bool withMask) {
                    EXPECT_TRUE(result);
                    wanted = moved(wanted, dx, dy);
                    if (withMask)
                        wantedMask = moved(wantedMask, dx, dy);
                    expectPixels(wanted, picture, "picture");
                    expectPixels(wantedMask, mask, "mask");
                };
                check(vertical(host, picture, 2, wrap, true), 0, 2, true);
                check(vertical(host, picture, -1, wrap, false), 0, -1, false);
                check(horizontal(host, picture, -3, wrap, true), -3, 0, true);
                check(horizontal(host, picture, 1, wrap, false), 1, 0, false);
                check(both(host, picture, 2, -3, wrap, true), 2, -3, true);
                check(both(host, picture, 1, 1, wrap, false), 1, 1, false);
                check(vertical(host, picture, 0, wrap, true), 0, 0, true);
                expectPixels(innerStart, inner, "the mask's mask");
            }
    });
}

TEST_P(Scrolling, MaskMovesByItsOwnSize)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{54};
        Picture picture = upload(host, randomPicture(random, 8, 7));
        const Picture mask = upload(host, randomPicture(random, 5, 3));
        picture.setMask(mask);
        const reference::Picture wanted = reference::rotateVertically(download(mask), 5);
        EXPECT_TRUE(vertical(host, picture, 5, true, true));
        expectPixels(wanted, mask, "mask of another size");
    });
}

TEST_P(Scrolling, MaskThatCannotMove)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{55};
        Picture picture = upload(host, randomPicture(random, 8, 7));
        Picture mask = upload(host, randomPicture(random, 8, 7));
        mask.quirks() = broken(host);
        picture.setMask(mask);
        const reference::Picture start = download(picture);
        const reference::Picture startOfMask = download(mask);

        EXPECT_FALSE(vertical(host, picture, 2, true, true)) << "the picture stays where the mask stays";
        expectPixels(start, picture, "picture");
        EXPECT_TRUE(horizontal(host, picture, 2, true, true)) << "the picture goes on alone";
        const reference::Picture across = reference::rotateHorizontally(start, 2);
        expectPixels(across, picture, "picture");
        EXPECT_FALSE(both(host, picture, 1, 2, true, true));
        expectPixels(reference::rotateHorizontally(across, 1), picture, "picture");
        EXPECT_TRUE(vertical(host, picture, 0, true, true)) << "no distance is no failure";
        EXPECT_TRUE(vertical(host, picture, 1, true, false));
        expectPixels(startOfMask, mask, "mask");
    });
}

TEST_P(Scrolling, WithoutQuickDrawNothingShifts)
{
    TestHost host{hostSetup(artefact())};
    host.system().foldersFound = false;
    Random random{56};
    const Picture picture = upload(host, randomPicture(random, 8, 7));
    const reference::Picture start = download(picture);
    vertical(host, picture, 2, false);
    EXPECT_TRUE(horizontal(host, picture, 2, false));
    expectPixels(start, picture, "shift without QuickDraw");
    EXPECT_FALSE(vertical(host, picture, 2, true));
    EXPECT_TRUE(horizontal(host, picture, 2, true));
    expectPixels(start, picture, "rotation without QuickDraw");
}

TEST_P(Scrolling, MissingQuickDrawFunctionsDoNoHarm)
{
    Random random{57};
    const reference::Picture pixels = randomPicture(random, 8, 7);
    for (const char* function : {"GetGWorld", "SetGWorld", "NewRgn", "ScrollRect", "DisposeRgn"})
    {
        SCOPED_TRACE(function);
        TestHost host{hostSetup(artefact())};
        host.setAbsent(function);
        // A region that cannot be disposed of stays, and a picture scrolled in no port is the host's
        // complaint.
        host.ignoreLedger();
        const Picture picture = upload(host, pixels);
        vertical(host, picture, 2, false);
        EXPECT_TRUE(horizontal(host, picture, 2, false));
        EXPECT_TRUE(picture.paddingIntact());
    }
}

TEST_P(Scrolling, SameOnAllVersions)
{
    Random random{58};
    const reference::Picture pixels = randomPicture(random, 8, 7);
    forEachHostVersion(artefact(), [&](TestHost& host) {
        const Picture picture = upload(host, pixels);
        const reference::Picture wanted =
            reference::rotateVertically(reference::rotateHorizontally(download(picture), 3), -2);
        EXPECT_TRUE(both(host, picture, 3, -2, true, true));
        expectPixels(wanted, picture, "ScrollQVR");
        EXPECT_EQ(vertical(host, picture, 1, false), host.newStorage() != Storage::Bitmap);
    });
}

TEST_P(Scrolling, SurvivesFailingCalls)
{
    Random random{59};
    const reference::Picture pixels = randomPicture(random, 6, 5);
    const TortureRules rules{.cleanResult = false};
    for (const int delta : {2, -2})
    {
        // A failure leaves the picture as it was and is told by false; nothing is ever half moved.
        const TortureJob verticalJob = [delta](TestHost& host, std::vector<Picture>& pictures) {
            const reference::Picture start = download(pictures[0]);
            const bool moved = vertical(host, pictures[0], delta, true);
            expectPixels(moved ? reference::rotateVertically(start, delta) : start, pictures[0],
                         "vertical rotation");
            return Value(moved);
        };
        // The horizontal rotation says nothing about its failures.
        const TortureJob horizontalJob = [delta](TestHost& host, std::vector<Picture>& pictures) {
            const reference::Picture wanted = reference::rotateHorizontally(download(pictures[0]), delta);
            EXPECT_TRUE(horizontal(host, pictures[0], delta, true));
            return Value(download(pictures[0]) == wanted);
        };
        torture(artefact(), {pixels}, verticalJob, rules);
        torture(artefact(), {pixels}, horizontalJob, rules);
    }
}

TEST_P(Scrolling, FailedAllocationLeavesThePictureAlone)
{
    Random random{60};
    const reference::Picture pixels = randomPicture(random, 300, 200);
    forEachHost(artefact(), [&](TestHost& host) {
        for (const Storage storage : lockableStorages(host))
        {
            const Picture picture = upload(host, pixels, storage);
            const reference::Picture start = download(picture);
            host.faults().failAlways("malloc");
            host.faults().failAlways("calloc");
            const bool movedDown = vertical(host, picture, 50, true);
            const reference::Picture afterVertical = download(picture);
            EXPECT_TRUE(horizontal(host, picture, 60, true));
            const bool allocates = host.faults().failures() != 0;
            host.faults().clear();
            // Who needs no memory may move; who does must leave everything in place.
            EXPECT_TRUE(afterVertical == (movedDown ? reference::rotateVertically(start, 50) : start));
            const reference::Picture end = download(picture);
            EXPECT_TRUE(end == afterVertical || end == reference::rotateHorizontally(afterVertical, 60));
            EXPECT_TRUE(allocates || (movedDown && end != afterVertical));
        }
    });
}

} // namespace
