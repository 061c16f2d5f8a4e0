#include "tests/reference/tint.h"
#include "tests/support/operation_checks.h"

namespace
{

using reference::pixelOf;
using standin::Picture;
using standin::Value;

class Tint : public ArtefactTest
{
protected:
    static Value tint(TestHost& host, const Picture& source, std::uint32_t greyBase, std::uint32_t sepiaBase)
    {
        return host.callGlobal("TintPictureQVR", {source, greyBase, sepiaBase});
    }

    static void expectTint(TestHost& host, const Picture& source, std::uint32_t greyBase,
                           std::uint32_t sepiaBase)
    {
        const auto before = source.rgba();
        expectPicture(reference::tint(download(source), greyBase, sepiaBase),
                      tint(host, source, greyBase, sepiaBase).picture(),
                      callText("TintPictureQVR", {source, greyBase, sepiaBase}));
        EXPECT_TRUE(before == source.rgba()) << "the source was changed";
    }
};
ON_EVERY_ARTEFACT(Tint);

TEST_P(Tint, KnownColours)
{
    struct Case
    {
        std::uint32_t pixel, greyBase, sepiaBase, wanted;
    };
    constexpr Case cases[] = {
        {0x123456, 0x000000, 0xFFFFFF, 0x000000}, {0xFFFFFF, 0x000000, 0x12AB34, 0x000000},
        {0xFFFFFF, 0xFFFFFF, 0x000000, 0x000000}, {0x102030, 0xFFFFFF, 0xFFFFFF, 0x606060},
        {0x555555, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF}, {0xFF0000, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF},
        {0x804000, 0xFFFFFF, 0xFFFFFF, 0xC0C0C0}, {0xC08040, 0xFF0000, 0xFFFFFF, 0xC0C0C0},
        {0xFFFFFF, 0x555555, 0xFF8000, 0xFF8000}, {0xFFFFFF, 0x555555, 0xFFFFFF, 0xFFFFFF},
    };
    forEachHost(artefact(), [&](TestHost& host) {
        for (const Case& item : cases)
        {
            const Picture source = upload(host, reference::Picture{9, 2, pixelOf(item.pixel)});
            for (const std::uint32_t topByte : {0x00000000U, 0xFF000000U})
                expectPicture({9, 2, pixelOf(item.wanted)},
                              tint(host, source, item.greyBase | topByte, item.sepiaBase | topByte).picture(),
                              callText("TintPictureQVR", {item.pixel, item.greyBase, item.sepiaBase}));
        }
    });
}

TEST_P(Tint, EqualsTheReference)
{
    forEachSource(artefact(), [](TestHost& host, const Picture& source, Random& random) {
        const auto colour = [&random] {
            return std::uint32_t{random.byte()} << 16 | std::uint32_t{random.byte()} << 8 | random.byte();
        };
        for (int i = 0; i < 3; ++i)
            expectTint(host, source, colour(), colour());
    });
}

TEST_P(Tint, EveryGreyLevelWithEveryWeight)
{
    // Products that come out a hair below an integer show any other order or precision.
    reference::Picture levels{256, 3};
    for (int i = 0; i < 256; ++i)
    {
        const auto level = static_cast<std::uint8_t>(i);
        levels.at(i, 0) = {level, level, level};
        levels.at(i, 1) = {level, static_cast<std::uint8_t>(255 - i), static_cast<std::uint8_t>(i * 7)};
        levels.at(i, 2) = {0, level, static_cast<std::uint8_t>(i / 2)};
    }
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        const Picture source = upload(host, levels);
        for (std::uint32_t weight = 0; weight < 256; ++weight)
        {
            const std::uint32_t mixed = weight << 16 | (255 - weight) << 8 | (weight * 3 & 255);
            expectTint(host, source, 0x010101 * weight, mixed);
            expectTint(host, source, mixed, 0x010101 * weight);
        }
    });
}

TEST_P(Tint, KeepsToItsLimits)
{
    const SourceJob job = [](TestHost& host, const Picture& source) {
        return tint(host, source, 0x556677, 0xFFEE88);
    };
    expectSizeLimits(artefact(), job);
    expectCleanFailures(artefact(), job);
    expectSameOnAllVersions(artefact(), job, [](const reference::Picture& source) {
        return reference::tint(source, 0x556677, 0xFFEE88);
    });
    forEachHost(artefact(),
                [](TestHost& host) { expectNil(host, tint(host, Picture(), 0x555555, 0xFFFFFF)); });
}

} // namespace
