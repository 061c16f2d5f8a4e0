#include "tests/reference/colour_search.h"
#include "tests/reference/find_picture.h"
#include "tests/support/filters.h"
#include "tests/support/operation_checks.h"

#include <algorithm>
#include <cmath>
#include <numeric>

// Hosts that say what no host should say.

namespace
{

using standin::Arguments;
using standin::MemoryBlock;
using standin::Picture;
using standin::Type;
using standin::Value;

class OddHosts : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(OddHosts);

/// Sizes with a negative side; some of their products and row lengths are positive, in 32 bits at least.
constexpr std::pair<int, int> negativeSizes[] = {{-5, -5},       {-1, 1},          {1, -1},    {4, -3},
                                                 {least, least}, {-0x3FFFFFFF, 3}, {3, least}, {-1, 0},
                                                 {0, -1},        {most, -1},       {-1, most}};

void describe(Picture& picture, std::pair<int, int> size)
{
    picture.quirks().describedWidth = size.first;
    picture.quirks().describedHeight = size.second;
}

/// Runs `test(host, photo)` on a picture that is described with a negative side, in every storage that is
/// locked.
template <class Test>
void forEachNegativeSize(standin::Artefact artefact, Test test)
{
    for (const HostSetup& setup : hostSetups(artefact))
    {
        TestHost host{setup.logged()};
        for (const standin::Storage storage : lockableStorages(host))
            for (const auto& size : negativeSizes)
            {
                Random random{3};
                Picture photo = upload(host, randomPicture(random, 8, 4), storage);
                describe(photo, size);
                const testing::ScopedTrace trace{__FILE__, __LINE__,
                                                 sizeText(size.first, size.second) + " in " +
                                                     std::string(nameOf(storage))};
                host.clearCallLog();
                test(host, photo);
                host.expectBalanced("after the call");
            }
    }
}

void expectNothingAllocated(const TestHost& host, const std::string& call)
{
    for (const char* allocating : {"malloc", "calloc", "newPicture", "REALBuildString"})
        EXPECT_EQ(host.callsOf(allocating), 0) << call << " asked for " << allocating;
}

TEST_P(OddHosts, ANegativeSideMakesNoString)
{
    forEachNegativeSize(artefact(), [](TestHost& host, const Picture& photo) {
        expectNil(host, host.callGlobal("PicturetoBinaryStringQVR", {photo}));
        expectNothingAllocated(host, "PicturetoBinaryStringQVR");
    });
}

TEST_P(OddHosts, ANegativeSideMakesNoPicture)
{
    forEachNegativeSize(artefact(), [](TestHost& host, const Picture& photo) {
        int called = 0;
        for (const standin::RegisteredClass& extension : host.registered().extensions)
            for (const standin::RegisteredMethod& method : extension.methods)
            {
                if (method.declaration.result != Type::Picture)
                    continue;
                Arguments arguments;
                for (const auto& parameter : method.declaration.parameters)
                    switch (parameter.type)
                    {
                    case Type::Picture:
                        arguments.push_back(parameter.name == "dest" ? Value(nullptr) : Value(photo));
                        break;
                    case Type::MemoryBlock:
                        arguments.push_back(host.newMemoryBlock(256));
                        break;
                    case Type::Boolean:
                        arguments.push_back(false);
                        break;
                    case Type::Double:
                        arguments.push_back(0.5);
                        break;
                    case Type::UInt32:
                    case Type::Colour:
                        arguments.push_back(0xFFU);
                        break;
                    default:
                        arguments.push_back(-1);
                    }
                host.clearCallLog();
                expectNil(host, photo, method.declaration.name, arguments);
                expectNothingAllocated(host, method.text);
                ++called;
            }
        EXPECT_GT(called, 20);
        for (const char* filterClass : {"PictureSepiaQVR", "PictureLut3DQVR"})
        {
            standin::Instance filter = host.newInstance(filterClass);
            host.clearCallLog();
            EXPECT_TRUE(runFilter(filter, photo).isNil()) << filterClass;
            EXPECT_EQ(host.callsOf("newPicture"), 0) << filterClass;
        }
    });
}

TEST_P(OddHosts, ANegativeSideHoldsNoPixels)
{
    forEachNegativeSize(artefact(), [](TestHost& host, const Picture& photo) {
        EXPECT_EQ(host.call(photo, "CountColorQVR", {0U}).integer(), 0);
        EXPECT_TRUE(std::isnan(host.call(photo, "ColornessQVR").number()));
        for (const char* test : {"isBlackQVR", "isWhiteQVR"})
            EXPECT_TRUE(host.call(photo, test).boolean()) << test;
        EXPECT_FALSE(host.call(photo, "ScrollVerticalQVR", {1, true, false}).boolean());
        EXPECT_TRUE(host.call(photo, "ScrollHorizontalQVR", {1, true, false}).boolean());
        Value x = 5;
        Value y = 5;
        const Picture dot = host.newPicture(1, 1);
        EXPECT_FALSE(host.call(photo, "FindPictureQVR", {dot, byref(x), byref(y)}).boolean());
        EXPECT_FALSE(host.call(dot, "FindPictureQVR", {photo, byref(x), byref(y)}).boolean());
        Value red = nullptr;
        Value blue = nullptr;
        Value green = nullptr;
        Value count = 7;
        host.call(photo, "CountColorsQVR", {byref(red), byref(blue), byref(green), byref(count)});
        EXPECT_EQ(count.integer(), 0);
        for (const Value& block : {red, blue, green})
            for (int level = 0; level < 256; ++level)
                EXPECT_EQ(block.memoryBlock().int32(level), 0);
    });
}

/// Rows of this length in bytes do not fit 32 bits; they are not moved, and not a byte is touched.
TEST_P(OddHosts, RowsBeyondMemoryStayWhereTheyAre)
{
    forEachHost(artefact(), [](TestHost& host) {
        for (const standin::Storage storage : lockableStorages(host))
        {
            Random random{4};
            Picture photo = upload(host, randomPicture(random, 8, 4), storage);
            const auto before = photo.rgba();
            for (const int width : {0x40000001, 0x2AAAAAAB * 2 + 1, 0x60000000, most})
            {
                photo.quirks().describedWidth = width;
                EXPECT_TRUE(host.call(photo, "ScrollHorizontalQVR", {1, true, false}).boolean());
                EXPECT_TRUE(host.call(photo, "ScrollHorizontalQVR", {-1, true, false}).boolean());
            }
            EXPECT_TRUE(before == photo.rgba()) << nameOf(storage);
        }
    });
}

TEST_P(OddHosts, BlocksOfUntoldSizeAreTrusted)
{
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        TestHost host{setup.without({"memoryBlockGetSize"})};
        const Picture photo = upload(host, {2, 1, {10, 20, 30}});
        std::vector<std::uint8_t> upwards(256);
        std::iota(upwards.begin(), upwards.end(), std::uint8_t{1});
        const MemoryBlock table = host.newMemoryBlock(upwards);
        expectCall({2, 1, {11, 21, 31}}, host, photo, "TransformColorsQVR", {table, table, table});
        Value made = nullptr;
        Value given = host.newMemoryBlock(1024);
        Value count = 0;
        host.call(photo, "CountColorsQVR", {byref(made), byref(given), byref(made), byref(count)});
        EXPECT_EQ(count.integer(), 2);
        EXPECT_EQ(given.memoryBlock().int32(20), 2);
    }
}

/// Whether the search has working memory decides about its speed alone.
TEST_P(OddHosts, AnythingIsFoundWithoutWorkingMemory)
{
    Random random{5};
    int found = 0;
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        TestHost host{setup};
        for (int round = 0; round < affordable(300); ++round)
        {
            const reference::Picture whole =
                randomPicture(random, random.between(1, 20), random.between(1, 6), Palette::Few);
            const reference::Picture part =
                randomPicture(random, random.between(1, 3), random.between(1, 2), Palette::Few);
            const Picture self = upload(host, whole, random.oneOf(sourceStorages(host)));
            const Picture sub = upload(host, part, random.oneOf(sourceStorages(host)));
            const auto find = [&](const std::set<std::string>& failing) {
                for (const std::string& function : failing)
                    host.faults().failAlways(function);
                Value x = 9;
                Value y = 9;
                const bool result = host.call(self, "FindPictureQVR", {sub, byref(x), byref(y)}).boolean();
                host.faults().clear();
                return std::tuple{result, x.integer(), y.integer()};
            };
            const auto wanted = find({});
            EXPECT_EQ(wanted, find({"malloc", "calloc"}));
            found += std::get<bool>(wanted) ? 1 : 0;
        }
    }
    EXPECT_GT(found, 10);
}

/// A host may make larger pictures than the plug-in does, and is not asked for one.
TEST_P(OddHosts, LargerPicturesAreNotAskedFor)
{
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        TestHost host{setup.logged()};
        for (const auto& [width, height] : {std::pair{32768, 1}, {1, 32768}})
        {
            const Picture source = host.newPicture(width, height);
            for (const char* method : {"InvertQVR", "ExtractColorRectangleMaskQVR"})
                expectNil(host, source, method);
            EXPECT_EQ(host.callsOf("newPicture"), 0) << sizeText(width, height);
        }
    }
}

/// No picture is asked for that could not be filled.
TEST_P(OddHosts, AMaskHasItsMemoryBeforeItsPicture)
{
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        TestHost host{setup.logged()};
        Random random{6};
        const Picture photo = upload(host, randomPicture(random, 9, 9));
        for (int failing = 1; failing <= 3; ++failing)
        {
            host.clearCallLog();
            host.faults().failCall("calloc", failing);
            expectNil(host, photo, "ExtractColorRectangleMaskQVR");
            EXPECT_EQ(host.faults().failures(), 1) << failing;
            EXPECT_EQ(host.callsOf("newPicture"), 0) << failing;
            host.faults().clear();
        }
        EXPECT_FALSE(host.call(photo, "ExtractColorRectangleMaskQVR").picture().isNil());
    }
}

} // namespace
