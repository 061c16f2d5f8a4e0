#include "tests/reference/channels.h"
#include "tests/support/operation_checks.h"

namespace
{

using reference::pixelOf;
using standin::Arguments;
using standin::Picture;
using standin::Storage;
using standin::Value;

class Combine : public ArtefactTest
{
protected:
    static Value combine(TestHost& host, const Picture& red, const Picture& blue, const Picture& green)
    {
        return host.callGlobal("CombinePicturesQVR", {red, blue, green});
    }

    static Value merge(TestHost& host, const Picture& first, const Picture& second)
    {
        return host.callGlobal("MergePictureQVR", {first, second});
    }

    static Picture plain(TestHost& host, std::uint32_t colour)
    {
        return upload(host, reference::Picture{4, 3, pixelOf(colour)});
    }
};
ON_EVERY_ARTEFACT(Combine);

TEST_P(Combine, TakesRedBlueGreenInThisOrder)
{
    forEachHost(artefact(), [](TestHost& host) {
        const Picture red = plain(host, 0xFF0000);
        const Picture green = plain(host, 0x00FF00);
        const Picture blue = plain(host, 0x0000FF);
        expectPicture({4, 3, pixelOf(0xFFFFFF)}, combine(host, red, blue, green).picture(),
                      "red, blue, green");
        expectPicture({4, 3, pixelOf(0xFF0000)}, combine(host, red, green, blue).picture(),
                      "red, green, blue");
    });
}

TEST_P(Combine, OwnChannelsGiveAnOpaqueCopy)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{1};
        for (const Storage storage : sourceStorages(host))
        {
            const Picture source = upload(host, randomPicture(random, 19, 5), storage);
            const reference::Picture opaque = reference::opaque(download(source));
            expectPicture(opaque, combine(host, source, source, source).picture(), "combine with itself");
            expectPicture(opaque, merge(host, source, source).picture(), "merge with itself");
        }
    });
}

TEST_P(Combine, MergeTakesTheLargerOfEachChannel)
{
    forEachHost(artefact(), [](TestHost& host) {
        expectPicture({4, 3, pixelOf(0x302030)},
                      merge(host, plain(host, 0x102030), plain(host, 0x302010)).picture(), "merge");
        expectPicture({4, 3, pixelOf(0xFF807F)},
                      merge(host, plain(host, 0xFF7F00), plain(host, 0x01807F)).picture(), "unsigned merge");
    });
}

TEST_P(Combine, EqualsTheReference)
{
    forEachSource(artefact(), [](TestHost& host, const Picture& source, Random& random) {
        const auto another = [&] {
            return upload(host, randomPictureOfAnyPalette(random, source.width(), source.height()),
                          random.oneOf(sourceStorages(host)));
        };
        const Picture pictures[] = {source, another(), another()};
        std::vector<std::uint8_t> before[3];
        for (int i = 0; i < 3; ++i)
            before[i] = pictures[i].rgba();
        const auto& [red, blue, green] = pictures;
        expectPicture(reference::combine(download(red), download(green), download(blue)),
                      combine(host, red, blue, green).picture(), "CombinePicturesQVR");
        expectPicture(reference::merge(download(red), download(blue)), merge(host, red, blue).picture(),
                      "MergePictureQVR");
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(before[i] == pictures[i].rgba()) << "source " << i << " was changed";
    });
}

TEST_P(Combine, NilSourcesGiveNil)
{
    forEachHost(artefact(), [](TestHost& host) {
        const Picture any = host.newPicture(3, 3);
        const Arguments unfit[] = {{nullptr, any, any},
                                   {any, nullptr, any},
                                   {any, any, nullptr},
                                   {nullptr, nullptr, any},
                                   {nullptr, nullptr, nullptr}};
        for (const Arguments& arguments : unfit)
            expectNil(host, host.callGlobal("CombinePicturesQVR", arguments),
                      callText("CombinePicturesQVR", arguments));
        for (const Arguments& arguments : {Arguments{nullptr, any}, {any, nullptr}, {nullptr, nullptr}})
            expectNil(host, host.callGlobal("MergePictureQVR", arguments),
                      callText("MergePictureQVR", arguments));
    });
}

TEST_P(Combine, SizesMustBeEqual)
{
    forEachHost(artefact(), [](TestHost& host) {
        const Picture any = host.newPicture(6, 4);
        for (const auto& [width, height] :
             {std::pair{5, 4}, std::pair{7, 4}, std::pair{6, 3}, std::pair{6, 5}})
        {
            const Picture other = host.newPicture(width, height);
            expectNil(host, combine(host, other, any, any));
            expectNil(host, combine(host, any, other, any));
            expectNil(host, combine(host, any, any, other));
            expectNil(host, combine(host, any, other, other));
            expectNil(host, merge(host, any, other));
            expectNil(host, merge(host, other, any));
        }
    });
}

TEST_P(Combine, KeepsToItsLimits)
{
    const SourceJob combined = [](TestHost& host, const Picture& source) {
        return combine(host, source, source, source);
    };
    const SourceJob merged = [](TestHost& host, const Picture& source) {
        return merge(host, source, source);
    };
    const auto copied = [](const reference::Picture& source) { return reference::merge(source, source); };
    for (const SourceJob& job : {combined, merged})
    {
        expectSizeLimits(artefact(), job);
        expectCleanFailures(artefact(), job);
        expectSameOnAllVersions(artefact(), job, copied);
    }
    // One source that cannot be opened is enough.
    const auto good = [](TestHost& host, const Picture& like) {
        return host.newPicture(like.width(), like.height());
    };
    expectCleanFailures(artefact(), [&](TestHost& host, const Picture& source) {
        return combine(host, good(host, source), source, good(host, source));
    });
    expectCleanFailures(artefact(), [&](TestHost& host, const Picture& source) {
        return combine(host, good(host, source), good(host, source), source);
    });
    expectCleanFailures(artefact(), [&](TestHost& host, const Picture& source) {
        return merge(host, good(host, source), source);
    });
}

} // namespace
