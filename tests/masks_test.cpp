#include "tests/reference/masks.h"
#include "tests/support/operation_checks.h"

#include <algorithm>

namespace
{

using reference::AlphaPlace;
using standin::Picture;
using standin::Storage;
using standin::Value;

AlphaPlace alphaPlace(Storage storage)
{
    if (!traitsOf(storage).hasSpareByte || !isLockable(storage))
        return AlphaPlace::Nowhere;
    return traitsOf(storage).access == standin::Access::Bitmap ? AlphaPlace::FourthByte
                                                               : AlphaPlace::FirstByte;
}

/// The red value of a mask's pixel, as its bytes are now: the mask may be the picture that is being written.
std::uint8_t redOf(const Picture& mask, int x, int y)
{
    return mask.pixel(x, y).red;
}

/// Assigns as the method promises to, byte by byte, to a picture of the same pixels.
void assignMask(Picture& picture, bool swap, const Picture& mask)
{
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < std::min(picture.width(), mask.width()); ++x)
        {
            const std::uint8_t red = redOf(mask, x, y < mask.height() ? y : 0);
            if (4 * x < picture.width() * picture.bytesPerPixel())
                picture.row(y)[4 * x] = swap ? static_cast<std::uint8_t>(255 - red) : red;
        }
}

void expectSameBytes(const Picture& wanted, const Picture& got, const std::string& what)
{
    for (int y = 0; y < wanted.height(); ++y)
        for (int i = 0; i < wanted.width() * wanted.bytesPerPixel(); ++i)
            ASSERT_EQ(wanted.row(y)[i], got.row(y)[i])
                << what << ", " << nameOf(wanted.storage()) << ", row " << y << ", byte " << i;
    EXPECT_TRUE(got.paddingIntact()) << what;
}

class HasMask : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(HasMask);

TEST_P(HasMask, TellsAndMakesNone)
{
    forEachHost(artefact(), [](TestHost& host) {
        for (const Storage storage : sourceStorages(host))
        {
            Picture picture = host.newPicture(4, 3, storage);
            EXPECT_FALSE(host.call(picture, "HasMaskQVR").boolean());
            EXPECT_TRUE(picture.mask().isNil()) << "asking made a mask";
            picture.setMask(host.newPicture(4, 3));
            const int references = picture.mask().referenceCount();
            EXPECT_TRUE(host.call(picture, "HasMaskQVR").boolean());
            EXPECT_EQ(picture.mask().referenceCount(), references);
            picture.removeMask();
            EXPECT_FALSE(host.call(picture, "HasMaskQVR").boolean());
        }
        const Value nil = host.call(Picture(), "HasMaskQVR");
        EXPECT_FALSE(nil.boolean());
        EXPECT_FALSE(nil.exception().has_value());
    });
}

TEST_P(HasMask, FalseWithoutTheHostFunction)
{
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        TestHost host{setup.without({"REALGetPictureMask"})};
        Picture picture = host.newPicture(4, 3);
        picture.setMask(host.newPicture(4, 3));
        EXPECT_FALSE(host.call(picture, "HasMaskQVR").boolean());
        host.setAbsent("REALGetPictureMask", false);
        EXPECT_TRUE(host.call(picture, "HasMaskQVR").boolean());
        host.faults().failCall("REALGetPictureMask");
        EXPECT_FALSE(host.call(picture, "HasMaskQVR").boolean());
    }
}

class EmbeddedMask : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(EmbeddedMask);

TEST_P(EmbeddedMask, KnownValues)
{
    struct Case
    {
        Storage storage;
        std::uint8_t stored;
        std::uint8_t wanted;
    };
    constexpr Case cases[] = {{Storage::GWorld24, 0, 255},   {Storage::GWorld32, 0, 0},
                              {Storage::GWorld32, 200, 200}, {Storage::GWorld32, 255, 255},
                              {Storage::Bitmap, 127, 255},   {Storage::Bitmap, 64, 128},
                              {Storage::Bitmap, 128, 0},     {Storage::Bitmap, 255, 255},
                              {Storage::Bitmap, 0, 0},       {Storage::Bitmap, 1, 3}};
    forEachHost(artefact(), [&](TestHost& host) {
        for (const Case& item : cases)
        {
            if ((item.storage == Storage::Bitmap) != (host.newStorage() == Storage::Bitmap))
                continue;
            const Picture source =
                upload(host, reference::Picture{3, 2, {1, 2, 3, item.stored}}, item.storage);
            const auto swapped = static_cast<std::uint8_t>(255 - item.wanted);
            expectCall({3, 2, {item.wanted, item.wanted, item.wanted}}, host, source, "EmbeddedMaskQVR",
                       {false});
            expectCall({3, 2, {swapped, swapped, swapped}}, host, source, "EmbeddedMaskQVR", {true});
        }
    });
}

TEST_P(EmbeddedMask, ReadsEveryAlpha)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        reference::Picture all{256, 2, {9, 8, 7}};
        for (int i = 0; i < 512; ++i)
            all.pixels[static_cast<std::size_t>(i)].alpha = static_cast<std::uint8_t>(i);
        for (const Storage storage : lockableStorages(host))
            for (const bool swap : {false, true})
            {
                const Picture source = upload(host, all, storage);
                expectCall(reference::embeddedMask(download(source), alphaPlace(storage), swap), host, source,
                           "EmbeddedMaskQVR", {swap});
            }
    });
}

TEST_P(EmbeddedMask, EqualsTheReference)
{
    forEachSource(artefact(), [](TestHost& host, const Picture& source, Random& random) {
        const bool swap = random.onceIn(2);
        // A picture that must be drawn into a copy becomes opaque by it.
        const AlphaPlace place = alphaPlace(source.storage());
        expectCall(reference::embeddedMask(download(source), place, swap), host, source, "EmbeddedMaskQVR",
                   {swap});
    });
}

TEST_P(EmbeddedMask, AssigningWritesTheFirstByteOfEveryFourBytes)
{
    std::uint32_t seed = 20;
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        for (const Storage storage : lockableStorages(host))
        {
            Random random{++seed};
            for (const auto& [width, height] : testSizes())
            {
                const bool swap = random.onceIn(2);
                const Picture picture = upload(host, randomPicture(random, width, height), storage);
                // Narrower masks leave columns alone, shorter ones go on with their first row.
                const int maskWidth =
                    random.onceIn(3) ? random.between(1, width) : width + random.between(0, 2);
                const int maskHeight =
                    random.onceIn(3) ? random.between(1, height) : height + random.between(0, 2);
                const Picture mask = upload(host, randomPicture(random, maskWidth, maskHeight),
                                            random.oneOf(sourceStorages(host)));
                Picture wanted = picture.clone();
                assignMask(wanted, swap, mask);
                const auto before = mask.rgba();
                const Value result = host.assign(picture, "EmbeddedMaskQVR", {swap}, mask);
                EXPECT_FALSE(result.exception().has_value());
                expectSameBytes(wanted, picture,
                                "assigned mask of " + std::to_string(maskWidth) + " x " +
                                    std::to_string(maskHeight));
                EXPECT_TRUE(before == mask.rgba()) << "the mask was changed";
                EXPECT_EQ(picture.cacheClears(), 0) << "the picture is opened for reading only";
            }
        }
    });
}

TEST_P(EmbeddedMask, PictureCanBeItsOwnMask)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        Random random{30};
        for (const Storage storage : lockableStorages(host))
            for (const int width : {1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 33, 40})
                for (const bool swap : {false, true})
                {
                    const Picture picture = upload(host, randomPicture(random, width, 3), storage);
                    Picture wanted = picture.clone();
                    assignMask(wanted, swap, wanted);
                    host.assign(picture, "EmbeddedMaskQVR", {swap}, picture);
                    expectSameBytes(wanted, picture, "own mask");
                }
    });
}

TEST_P(EmbeddedMask, BlackMaskSwappedMakesOpaque)
{
    forEachHost(artefact(), [](TestHost& host) {
        const Picture black = upload(host, reference::Picture{5, 3, reference::pixelOf(0x00FFFF)});
        for (const Storage storage : lockableStorages(host))
        {
            const Picture picture = upload(host, reference::Picture{5, 3, {1, 2, 3, 4}}, storage);
            host.assign(picture, "EmbeddedMaskQVR", {true}, black);
            for (int x = 0; 4 * x < 5 * picture.bytesPerPixel(); ++x)
                ASSERT_EQ(picture.row(2)[4 * x], 255) << nameOf(storage);
        }
    });
}

TEST_P(EmbeddedMask, AssigningWhatCannotBeUsedChangesNothing)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{31};
        Picture unopened = upload(host, randomPicture(random, 4, 4));
        unopened.quirks() = broken(host);
        const Picture good = upload(host, randomPicture(random, 4, 4));
        const std::vector<std::pair<Picture, Picture>> pairs{
            {good, Picture()}, {good, unopened},       {unopened, good},
            {Picture(), good}, {Picture(), Picture()}, {good, host.newPicture(4, 0)}};
        for (const auto& [picture, mask] : pairs)
        {
            const auto before = good.rgba();
            const auto beforeUnopened = unopened.rgba();
            const Value result = host.assign(picture, "EmbeddedMaskQVR", {true}, mask);
            EXPECT_FALSE(result.exception().has_value());
            EXPECT_TRUE(before == good.rgba());
            EXPECT_TRUE(beforeUnopened == unopened.rgba());
            host.expectBalanced("after an assignment that fails");
        }
        // A picture that is only drawn loses what is written to its copy.
        for (const Storage storage : sourceStorages(host))
        {
            if (isLockable(storage))
                continue;
            const Picture picture = upload(host, randomPicture(random, 4, 4), storage);
            const auto before = picture.rgba();
            host.assign(picture, "EmbeddedMaskQVR", {false}, good);
            EXPECT_TRUE(before == picture.rgba());
        }
    });
}

TEST_P(EmbeddedMask, KeepsToItsLimits)
{
    for (const bool swap : {false, true})
    {
        const SourceJob job = [swap](TestHost& host, const Picture& source) {
            return host.call(source, "EmbeddedMaskQVR", {swap});
        };
        expectSizeLimits(artefact(), job);
        expectCleanFailures(artefact(), job);
    }
    forEachHostVersion(artefact(), [](TestHost& host) {
        Random random{32};
        const Picture source = upload(host, randomPicture(random, 9, 4));
        expectCall(reference::embeddedMask(download(source), alphaPlace(source.storage()), true), host,
                   source, "EmbeddedMaskQVR", {true});
        Picture wanted = source.clone();
        const Picture mask = upload(host, randomPicture(random, 9, 4));
        assignMask(wanted, false, mask);
        host.assign(source, "EmbeddedMaskQVR", {false}, mask);
        expectSameBytes(wanted, source, "assigned mask");
        expectNil(host, Picture(), "EmbeddedMaskQVR", {false});
    });
}

} // namespace
