#include "tests/reference/colour_statistics.h"
#include "tests/support/operation_checks.h"

#include <cstring>
#include <numeric>

namespace
{

using reference::Histogram;
using reference::LevelTable;
using reference::pixelOf;
using standin::Arguments;
using standin::MemoryBlock;
using standin::Picture;
using standin::Storage;
using standin::Value;

constexpr int histogramSize = 1024;
constexpr int tableSize = 256;

/// The caller's variables of "CountColorsQVR", in the order of its parameters.
struct Counters
{
    Value red = nullptr;
    Value blue = nullptr;
    Value green = nullptr;
    Value count = 77;

    Value run(TestHost& host, const Picture& picture)
    {
        return host.call(picture, "CountColorsQVR", {byref(red), byref(blue), byref(green), byref(count)});
    }
};

void expectHistogram(const Histogram& wanted, const Value& block, const std::string& name)
{
    const MemoryBlock got = block.memoryBlock();
    ASSERT_FALSE(got.isNil()) << name;
    ASSERT_GE(got.size(), histogramSize) << name;
    for (int level = 0; level < 256; ++level)
        ASSERT_EQ(wanted[static_cast<std::size_t>(level)], static_cast<std::uint32_t>(got.int32(level)))
            << name << ", level " << level;
}

void expectHistograms(const reference::Histograms& wanted, const Counters& counters)
{
    expectHistogram(wanted.declaredRed, counters.red, "block declared red");
    expectHistogram(wanted.declaredBlue, counters.blue, "block declared blue");
    expectHistogram(wanted.declaredGreen, counters.green, "block declared green");
    EXPECT_EQ(counters.count.integer(), wanted.count);
}

class ColourCount : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(ColourCount);

TEST_P(ColourCount, MakesBlocksForNilVariables)
{
    forEachHost(artefact(), [](TestHost& host) {
        Counters counters;
        const Value result = counters.run(host, upload(host, reference::Picture{2, 2, pixelOf(0xFF0000)}));
        EXPECT_FALSE(result.exception().has_value());
        for (const Value* block : {&counters.red, &counters.blue, &counters.green})
            EXPECT_EQ(block->memoryBlock().size(), histogramSize);
        ASSERT_EQ(counters.red.memoryBlock().int32(255), 4);
        ASSERT_EQ(counters.blue.memoryBlock().int32(0), 4);
        ASSERT_EQ(counters.green.memoryBlock().int32(0), 4);
        EXPECT_EQ(counters.count.integer(), 4);
    });
}

TEST_P(ColourCount, CrossesGreenAndBlue)
{
    forEachHost(artefact(), [](TestHost& host) {
        Counters counters;
        counters.run(host, upload(host, reference::Picture{1, 1, pixelOf(0x0A141E)}));
        ASSERT_EQ(counters.red.memoryBlock().int32(10), 1);
        ASSERT_EQ(counters.blue.memoryBlock().int32(20), 1);
        ASSERT_EQ(counters.green.memoryBlock().int32(30), 1);
    });
}

TEST_P(ColourCount, EqualsTheReferenceAndAdds)
{
    forEachSource(artefact(), [](TestHost& host, const Picture& source, Random& random) {
        // Blocks may be longer, so that their counters lie at odd addresses, and hold anything, so that
        // counters wrap.
        Counters counters;
        reference::Histograms wanted;
        std::vector<MemoryBlock> blocks;
        for (auto& [variable, histogram] :
             {std::pair{&counters.red, &wanted.declaredRed}, std::pair{&counters.blue, &wanted.declaredBlue},
              std::pair{&counters.green, &wanted.declaredGreen}})
        {
            std::vector<std::uint8_t> bytes(static_cast<std::size_t>(histogramSize + random.between(0, 9)));
            for (std::uint8_t& byte : bytes)
                byte = random.onceIn(2) ? 255 : random.byte();
            std::memcpy(histogram->data(), bytes.data(), histogramSize);
            blocks.push_back(host.newMemoryBlock(bytes));
            *variable = blocks.back();
        }
        std::vector<std::uint8_t> tails;
        const auto tail = [&blocks] {
            std::vector<std::uint8_t> bytes;
            for (const MemoryBlock& block : blocks)
                bytes.insert(bytes.end(), block.bytes().begin() + histogramSize, block.bytes().end());
            return bytes;
        };
        tails = tail();
        const auto before = source.rgba();
        for (int times = 0; times < 2; ++times)
        {
            counters.run(host, source);
            reference::countColors(download(source), wanted);
            expectHistograms(wanted, counters);
        }
        EXPECT_TRUE(tails == tail()) << "bytes behind the counters were written";
        EXPECT_TRUE(counters.red.memoryBlock() == blocks[0]) << "a block was replaced";
        EXPECT_TRUE(before == source.rgba()) << "the source was changed";
    });
}

TEST_P(ColourCount, OneBlockCanTakeAllThree)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        Random random{4};
        const Picture source = upload(host, randomPicture(random, 33, 7, Palette::Greys));
        reference::Histograms apart;
        reference::countColors(download(source), apart);
        reference::Histograms wanted;
        for (std::size_t i = 0; i < 256; ++i)
            wanted.declaredRed[i] = apart.declaredRed[i] + apart.declaredBlue[i] + apart.declaredGreen[i];
        const MemoryBlock block = host.newMemoryBlock(histogramSize);
        Counters counters{block, block, block};
        counters.run(host, source);
        expectHistogram(wanted.declaredRed, counters.red, "the one block");
        EXPECT_EQ(counters.count.integer(), 33 * 7);
    });
}

TEST_P(ColourCount, OneVariableCanStandForAllThree)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        Random random{8};
        const Picture source = upload(host, randomPicture(random, 19, 4, Palette::Few));
        reference::Histograms apart;
        reference::countColors(download(source), apart);
        Histogram wanted{};
        for (std::size_t i = 0; i < 256; ++i)
            wanted[i] = apart.declaredRed[i] + apart.declaredBlue[i] + apart.declaredGreen[i];
        // One block is made for all three, since the second parameter finds what the first was given.
        Value block = nullptr;
        Value count = 0;
        for (const std::uint32_t times : {1U, 2U})
        {
            host.call(source, "CountColorsQVR", {byref(block), byref(block), byref(block), byref(count)});
            Histogram sum = wanted;
            for (std::uint32_t& counter : sum)
                counter *= times;
            expectHistogram(sum, block, "the one variable");
            EXPECT_EQ(count.integer(), 19 * 4);
            host.expectBalanced("after counting");
        }
        // Two of them, and the third apart.
        Value two = nullptr;
        Value green = nullptr;
        host.call(source, "CountColorsQVR", {byref(two), byref(two), byref(green), byref(count)});
        for (std::size_t i = 0; i < 256; ++i)
            wanted[i] -= apart.declaredGreen[i];
        expectHistogram(wanted, two, "the variable for two");
        expectHistogram(apart.declaredGreen, green, "the third variable");
    });
}

TEST_P(ColourCount, ShortBlocksStopIt)
{
    forEachHost(artefact(), [](TestHost& host) {
        const Picture source = upload(host, reference::Picture{5, 4, pixelOf(0xFEFDFC)});
        for (const int size : {0, 1, 255, 256, 1020, 1023})
            for (int position = 0; position < 3; ++position)
            {
                Counters counters;
                Value* variables[] = {&counters.red, &counters.blue, &counters.green};
                for (int i = 0; i < 3; ++i)
                    *variables[i] = host.newMemoryBlock(i == position ? size : histogramSize);
                counters.run(host, source);
                EXPECT_EQ(counters.count.integer(), -1) << size << " bytes";
                for (const Value* variable : variables)
                    for (const std::uint8_t byte : variable->memoryBlock().bytes())
                        ASSERT_EQ(byte, 0) << "something was counted";
            }
    });
}

TEST_P(ColourCount, FailuresLeaveMinusOne)
{
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        TestHost host{setup};
        const Picture source = host.newPicture(5, 4);
        for (int n = 1; n <= 3; ++n)
        {
            Counters counters;
            host.faults().clear();
            host.faults().failCall("newMemoryBlock", n);
            const Value result = counters.run(host, source);
            EXPECT_FALSE(result.exception().has_value());
            EXPECT_EQ(counters.count.integer(), -1);
            const Value* variables[] = {&counters.red, &counters.blue, &counters.green};
            for (int i = 0; i < 3; ++i)
                EXPECT_EQ(variables[i]->memoryBlock().isNil(), i == n - 1)
                    << "block " << i << " while block " << n - 1 << " could not be made";
        }
        host.faults().clear();
        for (int position = 0; position < 3; ++position)
        {
            MemoryBlock hidden = host.newMemoryBlock(histogramSize);
            hidden.hidePointer();
            Counters counters;
            *std::array{&counters.red, &counters.blue, &counters.green}[static_cast<std::size_t>(position)] =
                hidden;
            counters.run(host, source);
            EXPECT_EQ(counters.count.integer(), -1);
        }

        Counters counters;
        const Value result = counters.run(host, Picture());
        EXPECT_FALSE(result.exception().has_value());
        EXPECT_EQ(counters.count.integer(), -1);
        EXPECT_FALSE(counters.red.memoryBlock().isNil()) << "blocks are made before the picture is looked at";

        Picture unopened = host.newPicture(5, 4);
        unopened.quirks() = broken(host);
        Counters none;
        none.run(host, unopened);
        EXPECT_EQ(none.count.integer(), -1);

        const Picture wide = host.newPicture(40000, 1);
        Counters many;
        many.run(host, wide);
        EXPECT_EQ(many.count.integer(), 40000) << "sizes are not limited here";
    }
}

class ColourTransform : public ArtefactTest
{
protected:
    static MemoryBlock identity(TestHost& host)
    {
        LevelTable table{};
        std::iota(table.begin(), table.end(), std::uint8_t{0});
        return host.newMemoryBlock(table);
    }
};
ON_EVERY_ARTEFACT(ColourTransform);

LevelTable randomTable(Random& random)
{
    LevelTable table{};
    for (std::uint8_t& level : table)
        level = random.byte();
    return table;
}

TEST_P(ColourTransform, IdentityTablesGiveAnOpaqueCopy)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{5};
        for (const Storage storage : sourceStorages(host))
        {
            const Picture source = upload(host, randomPicture(random, 23, 6), storage);
            const MemoryBlock table = identity(host);
            expectCall(reference::opaque(download(source)), host, source, "TransformColorsQVR",
                       {table, table, table});
        }
    });
}

TEST_P(ColourTransform, EqualsTheReference)
{
    forEachSource(artefact(), [](TestHost& host, const Picture& source, Random& random) {
        const LevelTable red = randomTable(random);
        const LevelTable green = randomTable(random);
        const LevelTable blue = randomTable(random);
        const Arguments tables{host.newMemoryBlock(red), host.newMemoryBlock(blue),
                               host.newMemoryBlock(green)};
        const reference::Picture wanted = reference::transformColors(download(source), red, green, blue);
        expectCall(wanted, host, source, "TransformColorsQVR", tables);

        // Into a picture of another size and format.
        const Storage storage = random.oneOf(lockableStorages(host));
        const int width = source.width() + random.between(-1, 5);
        const int height = source.height() + random.between(-1, 2);
        if (width < 1 || height < 1)
            return;
        const reference::Picture old = randomPicture(random, width, height);
        Picture target = upload(host, old, storage);
        Arguments arguments = tables;
        arguments.emplace_back(target);
        if (width < source.width() || height < source.height())
        {
            const Picture result = expectCall(wanted, host, source, "TransformColorsQVR", arguments);
            EXPECT_FALSE(result == target) << "a picture too small was taken";
            expectPicture(old, target, "the picture too small", Alpha::Exact);
            return;
        }
        reference::Picture filled = download(target);
        for (int y = 0; y < source.height(); ++y)
            for (int x = 0; x < source.width(); ++x)
            {
                filled.at(x, y) = wanted.at(x, y);
                filled.at(x, y).alpha = traitsOf(storage).opaqueAlpha;
            }
        const int clears = target.cacheClears();
        const int references = target.referenceCount();
        const Picture result = host.call(source, "TransformColorsQVR", arguments).picture();
        EXPECT_TRUE(result == target) << "the given picture was not taken";
        expectPicture(filled, target, "TransformColorsQVR into a given picture", Alpha::Exact);
        EXPECT_GT(target.cacheClears(), clears);
        EXPECT_EQ(target.referenceCount(), references + 1) << "the result is one reference more";
    });
}

TEST_P(ColourTransform, CanWorkInPlace)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        Random random{6};
        for (const Storage storage : lockableStorages(host))
            for (const int width : {1, 3, 4, 5, 8, 9, 31, 64, 67})
            {
                const LevelTable table = randomTable(random);
                const MemoryBlock block = host.newMemoryBlock(table);
                const Picture source = upload(host, randomPicture(random, width, 3), storage);
                const reference::Picture wanted =
                    reference::transformColors(download(source), table, table, table);
                const Picture result =
                    host.call(source, "TransformColorsQVR", {block, block, block, source}).picture();
                EXPECT_TRUE(result == source);
                expectPicture(wanted, source, "TransformColorsQVR in place");
            }
    });
}

TEST_P(ColourTransform, UnfitTargetsAreReplaced)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{7};
        const MemoryBlock table = identity(host);
        const reference::Picture wanted = reference::opaque(randomPicture(random, 6, 5));
        const Picture source = upload(host, wanted);

        Picture unlockable = host.newPicture(6, 5);
        unlockable.quirks() = broken(host);
        Picture secretive = host.newPicture(6, 5);
        secretive.quirks().noSizeProperties = true;
        std::vector<Picture> unfit{unlockable, secretive, host.newPicture(5, 5), host.newPicture(6, 4),
                                   host.newPicture(0, 5)};
        for (const Storage storage : sourceStorages(host))
            if (!isLockable(storage))
                unfit.push_back(host.newPicture(6, 5, storage));
        for (const Picture& target : unfit)
        {
            const auto before = target.rgba();
            const Picture result =
                expectCall(wanted, host, source, "TransformColorsQVR", {table, table, table, target});
            EXPECT_FALSE(result == target);
            EXPECT_TRUE(before == target.rgba());
        }
        expectCall(wanted, host, source, "TransformColorsQVR", {table, table, table, nullptr});
    });
}

TEST_P(ColourTransform, TargetsMayBeOfAnySize)
{
    forEachHost(artefact(), [](TestHost& host) {
        const MemoryBlock table = identity(host);
        const Picture source = host.newPicture(32768, 1);
        const Picture target = host.newPicture(32768, 1);
        EXPECT_TRUE(isClean(host.call(source, "TransformColorsQVR", {table, table, table}), nullptr));
        EXPECT_TRUE(host.call(source, "TransformColorsQVR", {table, table, table, target}).picture() ==
                    target);
    });
}

TEST_P(ColourTransform, NilArgumentsRaiseInOrder)
{
    forEachHost(artefact(), [](TestHost& host) {
        const Picture picture = host.newPicture(3, 3);
        const MemoryBlock table = identity(host);
        const auto run = [&](const Picture& self, const Value& red, const Value& green, const Value& blue) {
            return host.call(self, "TransformColorsQVR", {red, blue, green});
        };
        expectNilObjectException(run(Picture(), nullptr, nullptr, nullptr), "picture is nil");
        expectNilObjectException(run(Picture(), table, table, table), "picture is nil");
        expectNilObjectException(run(picture, nullptr, nullptr, nullptr), "red memoryblock is nil");
        expectNilObjectException(run(picture, nullptr, table, nullptr), "red memoryblock is nil");
        expectNilObjectException(run(picture, table, nullptr, nullptr), "green memoryblock is nil");
        expectNilObjectException(run(picture, table, nullptr, table), "green memoryblock is nil");
        expectNilObjectException(run(picture, table, table, nullptr), "blue memoryblock is nil");
    });
}

TEST_P(ColourTransform, UnusableTablesGiveNil)
{
    forEachHost(artefact(), [](TestHost& host) {
        const Picture picture = host.newPicture(3, 3);
        const MemoryBlock good = identity(host);
        MemoryBlock hidden = identity(host);
        hidden.hidePointer();
        MemoryBlock negative = identity(host);
        negative.reportSize(-1);
        std::vector<MemoryBlock> unusable{hidden, negative};
        for (const int size : {0, 1, tableSize - 1})
            unusable.push_back(host.newMemoryBlock(size));
        for (const MemoryBlock& bad : unusable)
            for (const Arguments& arguments :
                 {Arguments{bad, good, good}, {good, bad, good}, {good, good, bad}, {bad, bad, bad}})
                expectNil(host, picture, "TransformColorsQVR", arguments);
    });
}

TEST_P(ColourTransform, KeepsToItsLimits)
{
    const SourceJob job = [](TestHost& host, const Picture& source) {
        const MemoryBlock table = identity(host);
        return host.call(source, "TransformColorsQVR", {table, table, table});
    };
    expectSizeLimits(artefact(), job);
    expectCleanFailures(artefact(), job);
    LevelTable table{};
    std::iota(table.begin(), table.end(), std::uint8_t{0});
    expectSameOnAllVersions(artefact(), job, [&](const reference::Picture& source) {
        return reference::transformColors(source, table, table, table);
    });
}

TEST_P(ColourTransform, SurvivesFailingCalls)
{
    torture(artefact(), {pictureToTorture()}, [](TestHost& host, std::vector<Picture>& sources) {
        const MemoryBlock table = identity(host);
        return host.call(sources[0], "TransformColorsQVR", {table, table, table});
    });
}

} // namespace
