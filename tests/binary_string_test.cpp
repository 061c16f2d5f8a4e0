#include "tests/reference/binary_string.h"
#include "tests/support/operation_checks.h"

namespace
{

using reference::BinaryStringHeader;
using reference::headerBytes;
using standin::Picture;
using standin::Storage;
using standin::String;
using standin::Value;

constexpr std::uint32_t headerSize = 40;

/// Hosts that hand out the bytes of strings in different ways.
std::vector<HostSetup> stringHosts(standin::Artefact artefact)
{
    std::vector<HostSetup> setups;
    for (const HostSetup& setup : hostSetups(artefact))
    {
        setups.push_back(setup);
        setups.push_back(setup.version(2012.5));
        setups.push_back(setup.version(2011.0));
        setups.push_back(setup.version(2013.0).without({"PluginGetStringData"}));
    }
    return setups;
}

class BinaryString : public ArtefactTest
{
protected:
    static std::string write(TestHost& host, const Picture& picture)
    {
        const Value result = host.callGlobal("PicturetoBinaryStringQVR", {picture});
        EXPECT_FALSE(result.exception().has_value());
        EXPECT_FALSE(result.string().isNil()) << "no string for " << Value(picture).describe();
        return result.string().isNil() ? "" : result.string().bytes();
    }

    static Value read(TestHost& host, const std::string& bytes)
    {
        const Value result =
            host.callGlobal("BinaryStringtoPictureQVR", {host.newString(bytes, standin::encodingNone)});
        EXPECT_FALSE(result.exception().has_value());
        return result;
    }

    /// Reads as the reference does, and nothing where that finds no picture.
    static void expectRead(TestHost& host, const std::string& bytes, const std::string& what)
    {
        const std::optional<reference::Picture> wanted = reference::fromBinaryString(bytes);
        const Value got = read(host, bytes);
        if (wanted)
            expectPicture(*wanted, got.picture(), what);
        else
            EXPECT_TRUE(isClean(got, nullptr)) << what << " gave " << got.describe();
    }

    /// The header with its length made right, and `rest`.
    static std::string text(BinaryStringHeader header, const std::string& rest)
    {
        header.length = static_cast<std::uint32_t>(headerSize + rest.size());
        return headerBytes(header) + rest;
    }
};
ON_EVERY_ARTEFACT(BinaryString);

TEST_P(BinaryString, NeedsAWayToReadStrings)
{
    for (const char* missing : {"StringGetCString", "LenB"})
        for (const HostSetup& setup : hostSetups(artefact()))
        {
            TestHost host{setup.version(2013.0).without({"PluginGetStringData", missing})};
            expectNil(host, read(host, reference::toBinaryString(reference::Picture{3, 2})), "a string");
        }
}

TEST_P(BinaryString, OnePixel)
{
    const std::uint8_t wanted[] = {0x50, 0x50, 0x49, 0x43, 0,    0, 0, 0x2B, 0,    0, 0,    1,    0,   0, 0,
                                   1,    0,    0,    0,    0x20, 0, 0, 0,    0x28, 0, 0,    0,    0,   0, 0,
                                   0,    0,    0,    0,    0,    0, 0, 0,    0,    0, 0x12, 0x34, 0x56};
    for (const HostSetup& setup : stringHosts(artefact()))
    {
        TestHost host{setup};
        const Picture pixel = upload(host, reference::Picture{1, 1, reference::pixelOf(0x123456)});
        const Value result = host.callGlobal("PicturetoBinaryStringQVR", {pixel});
        EXPECT_EQ(result.string().bytes(), std::string(std::begin(wanted), std::end(wanted)));
        EXPECT_EQ(result.string().encoding(), std::uint32_t{standin::encodingNone});
        expectPicture({1, 1, reference::pixelOf(0x123456)}, read(host, result.string().bytes()).picture(),
                      "one pixel");
    }
}

TEST_P(BinaryString, RoundTripEqualsTheReference)
{
    forEachSource(artefact(), [](TestHost& host, const Picture& source, Random&) {
        const auto before = source.rgba();
        const std::string bytes = write(host, source);
        EXPECT_TRUE(bytes == reference::toBinaryString(download(source)));
        EXPECT_TRUE(before == source.rgba()) << "the source was changed";

        const Picture back = read(host, bytes).picture();
        expectPicture(reference::opaque(download(source)), back, "BinaryStringtoPictureQVR");
        EXPECT_TRUE(write(host, back) == bytes) << "writing it again gives another string";
    });
}

TEST_P(BinaryString, RoundTripOnAllKindsOfStringAccess)
{
    for (const HostSetup& setup : stringHosts(artefact()))
    {
        TestHost host{setup};
        Random random{80};
        for (int i = 0; i < 10; ++i)
        {
            const Picture source =
                upload(host, randomPicture(random, random.between(1, 50), random.between(1, 9)));
            const std::string bytes = write(host, source);
            EXPECT_TRUE(bytes == reference::toBinaryString(download(source)));
            expectRead(host, bytes, "a round trip");
            host.expectBalanced("after a round trip");
        }
    }
    forEachHostVersion(artefact(), [](TestHost& host) {
        Random random{81};
        expectRead(host, write(host, upload(host, randomPicture(random, 7, 3))), "a round trip");
    });
}

TEST_P(BinaryString, TextOfAnyEncodingIsTakenAsItIs)
{
    for (const HostSetup& setup : stringHosts(artefact()))
    {
        TestHost host{setup};
        Random random{82};
        const std::string bytes = reference::toBinaryString(randomPicture(random, 6, 5));
        for (const std::uint32_t encoding :
             {standin::encodingUtf8, standin::encodingAscii, standin::encodingUtf16})
        {
            const Value result =
                host.callGlobal("BinaryStringtoPictureQVR", {host.newString(bytes, encoding)});
            expectPicture(*reference::fromBinaryString(bytes), result.picture(), "any encoding");
        }
    }
}

TEST_P(BinaryString, DamagedHeadersGiveNil)
{
    for (const HostSetup& setup : stringHosts(artefact()))
    {
        TestHost host{setup};
        const std::string pixels = "abcdefghijkl";
        const BinaryStringHeader header{.width = 2, .height = 2};
        const std::string good = text(header, pixels);
        EXPECT_FALSE(isClean(read(host, good), nullptr));
        for (const int off : {-1, 1, 0x100, 0x01000000})
        {
            BinaryStringHeader wrong = header;
            wrong.length = static_cast<std::uint32_t>(static_cast<int>(good.size()) + off);
            EXPECT_TRUE(isClean(read(host, headerBytes(wrong) + pixels), nullptr)) << "length off by " << off;
        }
        for (const char* magic : {"ppic", "PPIc", "CIPP", "QPIC"})
        {
            BinaryStringHeader wrong = header;
            wrong.magic = magic;
            EXPECT_TRUE(isClean(read(host, text(wrong, pixels)), nullptr)) << magic;
        }
        for (const std::uint32_t side : {0U, 32768U, 0x80000001U, 0x80000000U, 0xFFFFFFFFU, 0x00010001U})
        {
            EXPECT_TRUE(isClean(read(host, text({.width = side, .height = 1}, pixels)), nullptr)) << side;
            EXPECT_TRUE(isClean(read(host, text({.width = 1, .height = side}, pixels)), nullptr)) << side;
        }
        // What nobody looks at: the depth, the reserved bytes, and what follows the pixels.
        BinaryStringHeader odd = header;
        odd.depth = 0xDEADBEEF;
        std::string ignored = text(odd, pixels + "tail");
        ignored[30] = 'x';
        expectRead(host, ignored, "ignored fields");
        EXPECT_FALSE(isClean(read(host, ignored), nullptr));
    }
}

TEST_P(BinaryString, LargestSides)
{
    forEachHost(artefact(), [](TestHost& host) {
        const std::string row(3 * 32767, 'r');
        expectRead(host, text({.width = 32767, .height = 1}, row), "32767 x 1");
        expectRead(host, text({.width = 1, .height = 32767}, row), "1 x 32767");
        EXPECT_FALSE(isClean(read(host, text({.width = 32767, .height = 1}, row)), nullptr));
        // More pixels than there is memory, or than 32 bits can count.
        for (const auto& [width, height] :
             {std::pair{32767U, 32767U}, std::pair{21846U, 32767U}, std::pair{1000U, 1000U}})
            EXPECT_TRUE(isClean(read(host, text({.width = width, .height = height}, row)), nullptr));
    });
}

TEST_P(BinaryString, DataOffsetIsHonoured)
{
    for (const HostSetup& setup : stringHosts(artefact()))
    {
        TestHost host{setup};
        const std::string rest = "........abcdef";
        for (const std::uint32_t offset : {48U, 47U, 41U, 40U, 39U, 20U, 1U, 0U})
        {
            const std::string bytes = text({.width = 2, .height = 1, .dataOffset = offset}, rest);
            EXPECT_TRUE(reference::fromBinaryString(bytes).has_value());
            expectRead(host, bytes, "offset " + std::to_string(offset));
        }
        for (const std::uint32_t offset :
             {49U, 53U, 54U, 55U, 1000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU, 0xFFFFFFFAU, 0xFFFFFFD8U})
            EXPECT_TRUE(
                isClean(read(host, text({.width = 2, .height = 1, .dataOffset = offset}, rest)), nullptr))
                << offset;
    }
}

TEST_P(BinaryString, ShortStringsGiveNil)
{
    for (const HostSetup& setup : stringHosts(artefact()))
    {
        TestHost host{setup};
        EXPECT_TRUE(isClean(host.callGlobal("BinaryStringtoPictureQVR", {nullptr}), nullptr));
        for (std::uint32_t length = 0; length <= 60; ++length)
        {
            std::string bytes = headerBytes({.length = length, .width = 1, .height = 1, .dataOffset = 0}) +
                                std::string(20, 'z');
            bytes.resize(length);
            expectRead(host, bytes, std::to_string(length) + " bytes");
            bytes = headerBytes({.length = length, .width = 1, .height = 1}) + std::string(20, 'z');
            bytes.resize(length);
            expectRead(host, bytes, std::to_string(length) + " bytes");
        }
        host.expectBalanced("after short strings");
    }
}

TEST_P(BinaryString, RandomStringsEqualTheReference)
{
    for (const HostSetup& setup : {hostSetup(artefact()), hostSetup(artefact()).version(2011.0),
                                   hostSetup(artefact(), standin::Kind::Console)})
    {
        TestHost host{setup};
        Random random{83};
        int pictures = 0;
        for (int i = 0; i < affordable(3000); ++i)
        {
            const auto number = [&random](std::uint32_t likely) {
                return random.onceIn(6) ? static_cast<std::uint32_t>(random.coordinate(40)) : likely;
            };
            BinaryStringHeader header;
            header.width = number(static_cast<std::uint32_t>(random.between(1, 9)));
            header.height = number(static_cast<std::uint32_t>(random.between(1, 5)));
            header.dataOffset =
                number(static_cast<std::uint32_t>(random.onceIn(3) ? random.between(0, 80) : 40));
            std::string rest(static_cast<std::size_t>(
                                 random.onceIn(2)
                                     ? random.between(0, 160)
                                     : 3 * static_cast<int>(header.width % 10 * (header.height % 10))),
                             '\0');
            for (char& byte : rest)
                byte = static_cast<char>(random.byte());
            std::string bytes = text(header, rest);
            if (random.onceIn(10))
                bytes[static_cast<std::size_t>(random.between(0, 23))] = static_cast<char>(random.byte());
            pictures += reference::fromBinaryString(bytes).has_value();
            expectRead(host, bytes, "random string " + std::to_string(i));
        }
        EXPECT_GT(pictures, affordable(300));
        EXPECT_LT(pictures, 2700);
    }
}

TEST_P(BinaryString, WritingIsNotLimitedInSize)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{84};
        for (const Storage storage : lockableStorages(host))
            for (const auto& [width, height] : {std::pair{40000, 1}, std::pair{1, 40000}})
            {
                const Picture picture = upload(host, randomPicture(random, width, height), storage);
                EXPECT_TRUE(write(host, picture) == reference::toBinaryString(download(picture)));
            }
    });
    TestHost host{hostSetup(artefact())};
    for (const auto& [width, height] : {std::pair{0, 5}, std::pair{5, 0}})
        EXPECT_EQ(write(host, host.newPicture(width, height)),
                  reference::toBinaryString(reference::Picture{width, height}))
            << "no pixels are a header alone";
}

TEST_P(BinaryString, SizesThatOverflowGiveNil)
{
    forEachHost(artefact(), [](TestHost& host) {
        // 3 * 27000 * 27000 needs more than 31 bits; the pixels do not exist and are not looked at.
        Picture picture = host.newPicture(4, 4);
        picture.quirks().describedWidth = 27000;
        picture.quirks().describedHeight = 27000;
        expectNil(host, host.callGlobal("PicturetoBinaryStringQVR", {picture}));
    });
}

TEST_P(BinaryString, WriterFailuresGiveNil)
{
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        const auto isNil = [](TestHost& host, const Picture& picture) {
            const Value result = host.callGlobal("PicturetoBinaryStringQVR", {picture});
            EXPECT_FALSE(result.exception().has_value());
            host.expectBalanced("after writing");
            return isClean(result, nullptr);
        };
        TestHost host{setup};
        EXPECT_TRUE(isNil(host, Picture()));
        Picture unopened = host.newPicture(3, 3);
        unopened.quirks() = broken(host);
        EXPECT_TRUE(isNil(host, unopened));
        for (const char* function : {"malloc", "calloc"})
            host.faults().failAlways(function);
        EXPECT_TRUE(isNil(host, host.newPicture(3, 3)));
        host.faults().clear();
        EXPECT_FALSE(isNil(host, host.newPicture(3, 3)));

        TestHost withoutStrings{setup.without({"REALBuildString"})};
        EXPECT_TRUE(isNil(withoutStrings, withoutStrings.newPicture(3, 3)));

        TestHost withoutEncodings{setup.without({"REALSetStringEncoding"})};
        EXPECT_EQ(write(withoutEncodings, upload(withoutEncodings, reference::Picture{2, 2})),
                  reference::toBinaryString(reference::Picture{2, 2}));
    }
}

TEST_P(BinaryString, ReaderKeepsToItsLimits)
{
    for (const HostSetup& setup : stringHosts(artefact()))
    {
        TestHost host{setup};
        const std::string good = text({.width = 2, .height = 1}, "abcdef");
        host.faults().failCall("newPicture");
        expectNil(host, read(host, good));
        for (const standin::PictureQuirks& quirks : waysToBreak(host))
        {
            host.newPictureQuirks() = quirks;
            expectNil(host, read(host, good));
        }
        host.newPictureQuirks() = {};
        EXPECT_FALSE(isClean(read(host, good), nullptr));
    }
    TestHost host{hostSetup(artefact()).version(2011.0).without({"StringGetCString"})};
    EXPECT_TRUE(isClean(read(host, text({.width = 2, .height = 1}, "abcdef")), nullptr));
}

TEST_P(BinaryString, SurvivesFailingCalls)
{
    const std::vector<HostSetup> setups = stringHosts(artefact());
    torture(setups, {pictureToTorture()}, [](TestHost& host, std::vector<Picture>& sources) {
        const std::string bytes = reference::toBinaryString(download(sources[0]));
        return host.callGlobal("BinaryStringtoPictureQVR", {host.newString(bytes, standin::encodingNone)});
    });
    torture(setups, {pictureToTorture()}, [](TestHost& host, std::vector<Picture>& sources) {
        const String string = host.callGlobal("PicturetoBinaryStringQVR", {sources[0]}).string();
        if (string.isNil())
            return Value(nullptr);
        return Value(string.bytes() == reference::toBinaryString(download(sources[0])));
    });
}

} // namespace
