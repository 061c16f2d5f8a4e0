/// \file
/// The stand-in host itself: what it reads, hands out, catches and counts. The plug-in's part is played by
/// functions of this file.
#include "abi/host_abi.h"
#include "abi/system_abi.h"
#include "host/call_timer.h"
#include "host/core/core.h"
#include "host/file.h"
#include "host/loaders/elf_format.h"
#include "host/loaders/macho_image.h"
#include "host/loaders/plugin.h"
#include "host/objects/guarded_block.h"
#include "tests/support/small_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <thread>
#include <unistd.h>

namespace
{

using namespace std::string_literals;
using standin::Arguments;
using standin::Core;
using standin::Picture;
using standin::Storage;
using standin::Type;
using standin::Value;
using testing::ElementsAre;
using testing::HasSubstr;

std::string errorOf(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const standin::Error& error)
    {
        return error.what();
    }
    return "no error";
}

// Times

TEST(HostCallTimer, TellsThePlugInsTimeFromTheHosts)
{
    using namespace std::chrono_literals;
    using standin::CallTimer;
    const auto start = std::chrono::steady_clock::now();
    const CallTimer timer;
    {
        const CallTimer::Turn plugin(CallTimer::Side::Plugin);
        std::this_thread::sleep_for(1ms);
        {
            const CallTimer::Turn host(CallTimer::Side::Host);
            std::this_thread::sleep_for(5ms);
        }
        std::this_thread::sleep_for(1ms);
    }
    const auto& [plugin, host] = timer.times();
    EXPECT_GE(plugin, 2ms);
    EXPECT_GE(host, 5ms);
    std::this_thread::sleep_for(1ms);
    EXPECT_LE(plugin + host, std::chrono::steady_clock::now() - start - 1ms);
}

TEST(HostCallTimer, TimesTheCallsOfItsTime)
{
    standin::Host host;
    const Picture picture = host.newPicture(100, 100);
    const standin::CallTimer elder;
    {
        const standin::CallTimer timer;
        EXPECT_EQ(timer.times().plugin.count(), 0);
        host.call(picture, "InvertQVR");
        EXPECT_GT(timer.times().plugin.count(), 0);
        EXPECT_GT(timer.times().host.count(), 0) << "it makes the result";
    }
    EXPECT_EQ(elder.times().plugin.count(), 0);
    host.call(picture, "InvertQVR");
    EXPECT_GT(elder.times().plugin.count(), 0);
}

// Declarations

TEST(HostDeclaration, IsTakenApart)
{
    const auto declaration =
        standin::parseDeclaration("Mix(a as integer,byref B as MemoryBlock , c as color=&c88B5C4, d as "
                                  "Boolean = false, e as double = -1.5, "
                                  "f as picture = nil) as Picture");
    EXPECT_EQ(declaration.name, "Mix");
    EXPECT_EQ(declaration.result, Type::Picture);
    ASSERT_EQ(declaration.parameters.size(), 6U);
    EXPECT_EQ(declaration.requiredCount(), 2U);
    EXPECT_FALSE(declaration.parameters[0].byref);
    EXPECT_TRUE(declaration.parameters[1].byref);
    EXPECT_EQ(declaration.parameters[1].name, "B");
    EXPECT_EQ(declaration.parameters[1].type, Type::MemoryBlock);
    EXPECT_EQ(declaration.parameters[2].defaultValue, standin::Literal(0x88B5C4U));
    EXPECT_EQ(declaration.parameters[3].defaultValue, standin::Literal(false));
    EXPECT_EQ(declaration.parameters[4].defaultValue, standin::Literal(-1.5));
    EXPECT_EQ(declaration.parameters[5].defaultValue, standin::Literal(nullptr));
}

TEST(HostDeclaration, NeedsNeitherParametersNorResult)
{
    EXPECT_EQ(standin::parseDeclaration("Close").result, Type::Nothing);
    EXPECT_TRUE(standin::parseDeclaration("Run() as boolean").parameters.empty());
    EXPECT_EQ(standin::parseDeclaration("LenB( s as string ) as integer").parameters.at(0).type,
              Type::String);
}

TEST(HostDeclaration, IsWrittenBackForMessages)
{
    EXPECT_EQ(standin::parseDeclaration("F(byref x as Integer,c as COLOR=&c0A0b0c,n as integer=-3)")
                  .parameterText(),
              "(byref x as integer, c as color = &c0A0B0C, n as integer = -3)");
}

/// What a fuzzer found: 5210000000 became an integer, whichever.
TEST(HostDeclaration, TakesNoFractionsForWholeNumbers)
{
    for (const char* text : {"F(a as integer = 521e7)", "F(a as color = 1.5)", "F(a as UInt32 = -1e0)"})
        EXPECT_THAT(errorOf([&] { standin::parseDeclaration(text); }), HasSubstr("expected a whole number"));
    EXPECT_EQ(standin::parseDeclaration("F(a as double = 521e7)").parameters[0].defaultValue,
              standin::Literal(521e7));
}

TEST(HostDeclaration, SaysWhereItIsWrong)
{
    EXPECT_EQ(errorOf([] { standin::parseDeclaration("F(a as number)"); }),
              "declaration \"F(a as number)\": expected a known type at character 8");
    EXPECT_THAT(errorOf([] { standin::parseDeclaration("F(a integer)"); }), HasSubstr("expected \"as\""));
    EXPECT_THAT(errorOf([] { standin::parseDeclaration("F(a as integer"); }), HasSubstr("\",\" or \")\""));
    EXPECT_THAT(errorOf([] { standin::parseDeclaration(""); }), HasSubstr("a name"));
}

// Names and values

TEST(HostNames, LeadBackToTheirValues)
{
    std::set<std::string> names;
    for (const Storage storage : standin::all<Storage>)
    {
        names.emplace(nameOf(storage));
        EXPECT_EQ(standin::valueNamed<Storage>(nameOf(storage)), storage);
    }
    EXPECT_EQ(names.size(), standin::all<Storage>.size()) << "two storages have one name";
    EXPECT_EQ(standin::valueNamed<standin::Artefact>("MAC"), standin::Artefact::MacBundle);
    EXPECT_EQ(errorOf([] { standin::valueNamed<standin::Kind>("fridge"); }),
              "\"fridge\" is none of desktop, console, web or unknown");
}

TEST(HostNames, EveryStorageKeepsWhatItsBytesCanHold)
{
    for (const Storage storage : standin::all<Storage>)
    {
        std::uint8_t bytes[4]{};
        storePixel(storage, bytes, {255, 255, 255, 7});
        const std::uint8_t alpha = traitsOf(storage).hasSpareByte ? 7 : 255;
        EXPECT_TRUE(loadPixel(storage, bytes) == (standin::Pixel{255, 255, 255, alpha})) << nameOf(storage);
        storePixel(storage, bytes, {0, 0, 0, 9});
        EXPECT_EQ(loadPixel(storage, bytes).red, 0) << nameOf(storage);
    }
}

TEST(HostValue, IsWrittenAsInTheLanguage)
{
    const auto text = [](const standin::Value& value) { return value.describe(); };
    EXPECT_EQ(text(nullptr), "nil");
    EXPECT_EQ(text(true), "true");
    EXPECT_EQ(text(-12), "-12");
    EXPECT_EQ(text(0x0A0B0CU), "&c0A0B0C");
    EXPECT_EQ(text(0xFF000000U), "&hFF000000");
    EXPECT_EQ(text(0.1), "0.1");
    EXPECT_EQ(text("a, b"), "\"a, b\"");
}

// A host without plug-in, and handlers that misbehave

class HostCore : public testing::Test
{
protected:
    /// A host function, as a plug-in gets it.
    template <class Function>
    Function* service(const char* name)
    {
        return reinterpret_cast<Function*>(core->resolve(name));
    }

    void registerGlobal(const char* declaration, REALanyFunction handler, REALanyFunction setter = nullptr)
    {
        REALmethodDefinition row{};
        row.declaration = declaration;
        row.handler = handler;
        row.setter = setter;
        core->registered.globals.push_back(standin::readMethod(row));
    }

    Value call(const char* name, const Arguments& arguments = {})
    {
        return core->callMethod(core->registered.globalMethods(name), name, {false, nullptr}, arguments);
    }

    Picture newPicture(int width, int height, Storage storage)
    {
        return core->adopt<Picture>(core->makePicture(width, height, storage));
    }

    template <class Handle>
    static Handle* handle(const standin::Reference& reference)
    {
        return static_cast<Handle*>(reference.handle());
    }

    std::string ledger() const
    {
        return core->takeLedger().describe();
    }

    std::shared_ptr<Core> core = std::make_shared<Core>(standin::Options{});
};

template <class Function>
REALanyFunction any(Function* function)
{
    return reinterpret_cast<REALanyFunction>(function);
}

using HostCall = HostCore;

std::string seen;

double describeArguments(std::int32_t a, double b, signed char c, std::uint32_t d)
{
    seen = std::to_string(a) + " " + std::to_string(b) + " " + std::to_string(c) + " " + std::to_string(d);
    return b * 2;
}

TEST_F(HostCall, ConvertsAndFillsInArguments)
{
    registerGlobal("F(a as integer, b as double, c as boolean = true, d as color = &c010203) as double",
                   any(describeArguments));
    EXPECT_EQ(call("f", {-7, 3}).number(), 6.0);
    EXPECT_EQ(seen, "-7 3.000000 1 66051");
    EXPECT_EQ(call("F", {1, 0.25, false, 0x00FFFFFFU}).number(), 0.5);
    EXPECT_EQ(seen, "1 0.250000 0 16777215");
}

std::uint32_t wideTrue()
{
    return 0xABCDEF00;
}

TEST_F(HostCall, LooksAtTheDefinedBitsOfResultsOnly)
{
    registerGlobal("B as boolean", any(wideTrue));
    registerGlobal("C as color", any(wideTrue));
    registerGlobal("I as integer", any(wideTrue));
    EXPECT_FALSE(call("B").boolean());
    EXPECT_EQ(call("C").colour(), 0xCDEF00U);
    EXPECT_EQ(call("I").integer(), static_cast<std::int32_t>(0xABCDEF00));
}

std::int32_t one()
{
    return 1;
}
std::int32_t two(std::int32_t, std::int32_t)
{
    return 2;
}
std::int32_t three(double)
{
    return 3;
}
std::int32_t four(REALpictureStruct*)
{
    return 4;
}

TEST_F(HostCall, ChoosesTheOverload)
{
    registerGlobal("F as integer", any(one));
    registerGlobal("F(a as integer, b as integer) as integer", any(two));
    registerGlobal("F(a as double) as integer", any(three));
    registerGlobal("F(p as picture) as integer", any(four));
    EXPECT_EQ(call("F").integer(), 1);
    EXPECT_EQ(call("F", {1, 2}).integer(), 2);
    EXPECT_EQ(call("F", {1}).integer(), 3);
    EXPECT_EQ(call("F", {nullptr}).integer(), 4);
}

TEST_F(HostCall, NamesWhatWouldFit)
{
    registerGlobal("F as integer", any(one));
    registerGlobal("F(a as integer, b as integer) as integer", any(two));
    EXPECT_EQ(errorOf([this] { call("F", {1}); }),
              "F takes () or (a as integer, b as integer); argument 2, b, is missing");
    EXPECT_EQ(errorOf([this] {
                  call("F", {1, true});
              }),
              "F takes () or (a as integer, b as integer); argument 2 is of type boolean, b of type integer");
    EXPECT_EQ(errorOf([this] { call("G"); }), "there is no method G");
}

void growVariables(std::int32_t& count, REALmemoryBlockStruct*& block)
{
    ++count;
    auto* release = reinterpret_cast<void (*)(REALobject)>(Core::current().resolve("REALUnlockObject"));
    auto* make =
        reinterpret_cast<REALmemoryBlockStruct* (*)(std::int32_t)>(Core::current().resolve("newMemoryBlock"));
    if (block != nullptr)
        release(block);
    block = make(count);
}

TEST_F(HostCall, WritesVariablesBack)
{
    registerGlobal("Grow(byref count as integer, byref block as memoryblock)", any(growVariables));
    Value count = 7;
    Value block;
    call("Grow", {standin::byref(count), standin::byref(block)});
    EXPECT_EQ(count.integer(), 8);
    EXPECT_EQ(block.memoryBlock().size(), 8);
    call("Grow", {standin::byref(count), standin::byref(block)});
    EXPECT_EQ(block.memoryBlock().size(), 9);
    EXPECT_EQ(block.memoryBlock().referenceCount(), 2); // the value's and the temporary's
    EXPECT_EQ(ledger(), "balanced");
    EXPECT_THAT(errorOf([this] { call("Grow", {1, nullptr}); }), HasSubstr("byref count as integer"));
}

void raise()
{
    Core& core = Core::current();
    auto* build =
        reinterpret_cast<REALstringStruct* (*)(const void*, std::int32_t)>(core.resolve("REALBuildString"));
    auto* make = reinterpret_cast<REALobjectStruct* (*)(const char*)>(core.resolve("PluginNewInstance"));
    auto* setText = reinterpret_cast<bool (*)(REALobject, const char*, REALstringStruct*)>(
        core.resolve("REALSetPropValueString"));
    auto* setNumber = reinterpret_cast<bool (*)(REALobject, const char*, std::int32_t)>(
        core.resolve("REALSetPropValueInt"));
    auto* throwIt = reinterpret_cast<void (*)(REALobjectStruct*)>(core.resolve("RuntimeRaiseException"));
    auto* release = reinterpret_cast<void (*)(REALobject)>(core.resolve("REALUnlockObject"));
    auto* releaseText = reinterpret_cast<void (*)(REALstringStruct*)>(core.resolve("REALUnlockString"));
    REALstringStruct* text = build("it is nil", 9);
    REALobjectStruct* exception = make("NilObjectException");
    setText(exception, "Message", text);
    setNumber(exception, "ErrorNumber", 5);
    throwIt(exception);
    release(exception);
    releaseText(text);
}

TEST_F(HostCall, ReportsExceptions)
{
    registerGlobal("Raise", any(raise));
    const Value result = call("Raise");
    ASSERT_TRUE(result.exception());
    EXPECT_EQ(result.exception()->className, "NilObjectException");
    EXPECT_EQ(result.exception()->message, "it is nil");
    EXPECT_EQ(result.exception()->errorNumber, 5);
    EXPECT_EQ(ledger(), "balanced");
    registerGlobal("One as integer", any(one));
    EXPECT_FALSE(call("One").exception());
}

// The ledger

class HostLedger : public HostCore
{
protected:
    void inside(const std::function<void()>& action)
    {
        core->inside(action);
    }
};

TEST_F(HostLedger, TellsWhatWasNotGivenBack)
{
    inside([this] {
        service<REALpictureStruct*(std::int32_t, std::int32_t, std::int32_t)>("newPicture")(4, 4, 32);
        auto* block = static_cast<char*>(core->allocate(10, false));
        ASSERT_NE(block, nullptr);
    });
    const standin::Ledger ledger = core->takeLedger();
    EXPECT_FALSE(ledger.balanced());
    EXPECT_EQ(ledger.references, 1);
    EXPECT_EQ(ledger.heapBlocks, 1);
    EXPECT_EQ(ledger.describe(), "picture#1: reference not given back; heap block of 10 bytes not freed");
}

TEST_F(HostLedger, CatchesReleasesThatAreNotOwned)
{
    const Picture photo = newPicture(2, 2, Storage::GWorld32);
    inside([&] { service<void(REALobject)>("REALUnlockObject")(photo.handle()); });
    EXPECT_EQ(ledger(), "picture#1 was released more often than it was retained");
    EXPECT_EQ(photo.referenceCount(), 1);
}

TEST_F(HostLedger, CatchesDeadAndForeignHandles)
{
    void* gone = newPicture(2, 2, Storage::GWorld32).handle();
    int foreign = 0;
    inside([&] {
        service<void(REALobject)>("REALLockObject")(gone);
        service<void(REALobject)>("REALLockObject")(&foreign);
        service<void(REALpictureStruct*)>("REALPictureClearCache")(nullptr);
    });
    EXPECT_THAT(core->takeLedger().faults,
                ElementsAre("REALLockObject: picture#1 (freed) is no live object",
                            HasSubstr("is no live object"), "REALPictureClearCache: nil is no live picture"));
}

TEST_F(HostLedger, CatchesBlocksFreedTwice)
{
    void* block = core->allocate(16, false);
    EXPECT_TRUE(core->free(block, "free"));
    EXPECT_EQ(ledger(), "balanced");
    EXPECT_FALSE(core->free(block, "free"));
    EXPECT_THAT(ledger(), HasSubstr("is no block of the heap"));
}

TEST_F(HostLedger, WatchesTheBytesBehindABlock)
{
#if __has_feature(address_sanitizer)
    GTEST_SKIP() << "the sanitizer watches the heap by itself";
#endif
    auto* block = static_cast<std::uint8_t*>(core->allocate(10, false));
    block[10] = 1;
    EXPECT_THAT(ledger(), HasSubstr("bytes outside of a block of 10 bytes were written"));
    core->free(block, "free");
    EXPECT_THAT(ledger(), HasSubstr("free: bytes outside of a block of 10 bytes were written"));
}

TEST_F(HostLedger, WatchesLocks)
{
    const Picture photo = newPicture(2, 2, Storage::GWorld32);
    auto* picture = handle<REALpictureStruct>(photo);
    REALpictureDescription description;
    inside([&] {
        service<void(REALpictureStruct*, REALpictureDescription*)>("lockPictureDescription")(picture,
                                                                                             &description);
    });
    EXPECT_EQ(description.type, pictureGWorldPtr);
    EXPECT_EQ(core->takeLedger().descriptionLocks, 1);
    const auto unlock = [&] { service<void(REALpictureStruct*)>("unlockPictureDescription")(picture); };
    inside(unlock);
    EXPECT_EQ(ledger(), "balanced");
    inside(unlock);
    EXPECT_EQ(ledger(), "unlockPictureDescription: picture#1 is not locked");
}

/// Whether the picture cannot be locked or the failure is a planned one.
TEST_F(HostLedger, OldHostsWantAnUnlockAfterAFailedLock)
{
    for (const double version : {2011.0, 2011.999, 2012.0})
        for (const Storage storage : {Storage::GWorld32, Storage::Bitmap})
            for (const int unlocks : {0, 1, 2})
            {
                standin::Options options;
                options.version = version;
                core = std::make_shared<Core>(options);
                const Picture photo = newPicture(2, 2, storage);
                auto* picture = handle<REALpictureStruct>(photo);
                if (storage == Storage::Bitmap)
                    core->faults.failAnyCall(1);
                inside([&] {
                    REALpictureDescription description;
                    EXPECT_FALSE((service<bool(REALpictureStruct*, REALpictureDescription*, std::int32_t)>(
                        "REALLockPictureDescription")(picture, &description, pictureMemoryBitmap)));
                    for (int i = 0; i < unlocks; ++i)
                        service<void(REALpictureStruct*)>("unlockPictureDescription")(picture);
                });
                EXPECT_EQ(core->takeLedger().balanced(), unlocks == (version < 2012.0 ? 1 : 0))
                    << version << " " << unlocks;
            }
}

TEST_F(HostLedger, WatchesTheBytesBetweenRows)
{
    for (const Storage storage : {Storage::GWorld32, Storage::GWorld24, Storage::GWorld8})
    {
        Picture photo = newPicture(3, 2, storage);
        EXPECT_TRUE(photo.paddingIntact());
        photo.row(0)[3 * photo.bytesPerPixel()] = 0;
        EXPECT_FALSE(photo.paddingIntact());
        EXPECT_THAT(ledger(), HasSubstr("bytes outside of its pixels were written"));
    }
    Picture tall = newPicture(3, 1000, Storage::Bitmap);
    EXPECT_TRUE(tall.paddingIntact());
    tall.row(999)[12] = 0;
    EXPECT_FALSE(tall.paddingIntact());

    core->options.padding = 3;
    for (const standin::Memory memory : {standin::Memory::Guarded, standin::Memory::Plain})
        for (const int height : {2, 1000})
        {
            core->options.memory = memory;
            Picture shifted = newPicture(3, height, Storage::Bitmap);
            EXPECT_EQ(shifted.rowBytes(), 12);
            EXPECT_TRUE(shifted.paddingIntact());
            shifted.row(height - 1)[12 + 2] = 0;
            EXPECT_FALSE(shifted.paddingIntact());
        }
}

TEST_F(HostLedger, CountsStringDataAndStringReferences)
{
    const auto string =
        core->adopt<standin::String>(&core->make<standin::StringObject>("abc", standin::encodingUtf8));
    REALstringData data{};
    inside([&] {
        EXPECT_TRUE((service<bool(REALstringStruct*, std::uint32_t, REALstringData*)>("PluginGetStringData")(
            handle<REALstringStruct>(string), standin::encodingUtf16, &data)));
    });
    EXPECT_EQ(data.length, 6);
    EXPECT_EQ(std::memcmp(data.data, "a\0b\0c\0", 6), 0);
    EXPECT_EQ(core->takeLedger().stringData, 1);
    inside([&] { service<void(REALstringData*)>("PluginDisposeStringData")(&data); });
    EXPECT_EQ(ledger(), "balanced");
}

// Planned failures

TEST_F(HostLedger, LetsChosenCallsFail)
{
    auto* make = service<REALmemoryBlockStruct*(std::int32_t)>("newMemoryBlock");
    auto* size = service<std::int32_t(REALmemoryBlockStruct*)>("memoryBlockGetSize");
    core->faults.failCall("newMemoryBlock", 2);
    inside([&] {
        EXPECT_NE(make(1), nullptr);
        EXPECT_EQ(make(1), nullptr);
        REALmemoryBlockStruct* block = make(5);
        ASSERT_NE(block, nullptr);
        core->faults.clear();
        core->faults.failAnyCall(2);
        EXPECT_EQ(size(block), 5);
        EXPECT_EQ(size(block), 0);
        EXPECT_EQ(size(block), 5);
        EXPECT_EQ(core->faults.callCount(), 3);
        EXPECT_EQ(core->faults.failures(), 1);
        EXPECT_TRUE(core->faults.lastFailure().starts_with("memoryBlockGetSize(memoryblock#"));
        core->faults.failAlways("memoryBlockGetSize");
        EXPECT_EQ(size(block), 0);
        EXPECT_EQ(size(block), 0);
    });
    EXPECT_EQ(core->callLog.front(), "newMemoryBlock(1)");
}

TEST_F(HostLedger, HidesAbsentFunctionsAndKeepsLookups)
{
    EXPECT_NE(core->resolve("newPicture"), nullptr);
    core->options.absent.insert("newPicture");
    EXPECT_EQ(core->resolve("newPicture"), nullptr);
    EXPECT_EQ(core->resolve("RuntimeGraphicsDrawPicture"), nullptr);
    EXPECT_EQ(core->lookups, (std::vector<std::string>{"newPicture", "RuntimeGraphicsDrawPicture"}));
    EXPECT_EQ(core->lookupCounts.at("newPicture"), 2);
    standin::Options old;
    old.version = 2012.5;
    EXPECT_EQ(std::make_shared<Core>(old)->resolve("PluginGetStringData"), nullptr);
}

// Pictures

using HostPicture = HostCore;

TEST_F(HostPicture, KeepsBytesAsTheFormatsSay)
{
    const standin::Pixel pixel{.red = 1, .green = 2, .blue = 3, .alpha = 4};
    const auto bytes = [&](Storage storage) {
        Picture photo = newPicture(2, 1, storage);
        photo.setPixel(1, 0, pixel);
        EXPECT_EQ(photo.pixel(1, 0).red, storage == Storage::GWorld24 || photo.bytesPerPixel() == 4 ? 1 : 0);
        const std::uint8_t* begin = photo.row(0) + photo.bytesPerPixel();
        return std::vector<int>(begin, begin + photo.bytesPerPixel());
    };
    EXPECT_THAT(bytes(Storage::GWorld32), ElementsAre(4, 1, 2, 3));
    EXPECT_THAT(bytes(Storage::GWorld24), ElementsAre(1, 2, 3));
    EXPECT_THAT(bytes(Storage::Bitmap), ElementsAre(3, 2, 1, 4));
    EXPECT_THAT(bytes(Storage::GWorld8), ElementsAre(0));
}

TEST_F(HostPicture, ScattersTheRowsOfBitmaps)
{
    Picture photo = newPicture(4, 3, Storage::Bitmap);
    const std::uint32_t* words = photo.bitmapWords();
    EXPECT_EQ(words[bitmapKindWord], 0U);
    EXPECT_EQ(words[bitmapWidthWord], 4U);
    EXPECT_EQ(words[bitmapHeightWord], 3U);
    EXPECT_NE(words[bitmapPresentWord], 0U);
    std::uint8_t* const* table = nullptr;
    std::memcpy(&table, &words[bitmapRowTableWord], sizeof table);
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(table[y], photo.row(y));
    EXPECT_FALSE(photo.row(1) == photo.row(0) + 16 && photo.row(2) == photo.row(1) + 16);
}

TEST_F(HostPicture, ComparesAndCopies)
{
    Picture photo = newPicture(3, 2, Storage::GWorld32);
    photo.fill({9, 8, 7, 6});
    Picture copy = newPicture(3, 2, Storage::Bitmap);
    copy.setRgba(photo.rgba());
    EXPECT_FALSE(standin::firstDifference(photo, copy, standin::Compare::ColoursAndAlpha));
    copy.setPixel(2, 1, {9, 0, 7, 6});
    const auto difference = standin::firstDifference(photo, copy);
    ASSERT_TRUE(difference);
    EXPECT_EQ(difference->describe(),
              "1 pixels differ, first at (2, 1): wanted (9, 8, 7; alpha 6), got (9, 0, 7; alpha 6)");
    EXPECT_TRUE(standin::sameColours(photo, photo.clone()));
    EXPECT_EQ(errorOf([&] { photo.pixel(3, 0); }), "a picture of 3 x 2 has no pixel (3, 0)");
}

TEST_F(HostPicture, MasksAreCounted)
{
    Picture photo = newPicture(3, 2, Storage::GWorld32);
    auto* getMask = service<REALpictureStruct*(REALpictureStruct*, bool)>("REALGetPictureMask");
    core->inside([&] { EXPECT_EQ(getMask(handle<REALpictureStruct>(photo), false), nullptr); });
    core->inside([&] { EXPECT_NE(getMask(handle<REALpictureStruct>(photo), true), nullptr); });
    EXPECT_EQ(core->takeLedger().references, 1);
    core->inside([&] { service<void(REALobject)>("REALUnlockObject")(photo.mask().handle()); });
    EXPECT_EQ(ledger(), "balanced");
    photo.removeMask();
    EXPECT_TRUE(photo.mask().isNil());
}

using HostPictureDeathTest = HostCore;

TEST_F(HostPictureDeathTest, GuardPagesCatchWhatLiesFurtherOut)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    Picture bitmap = newPicture(3, 2, Storage::Bitmap);
    Picture gworld = newPicture(3, 2, Storage::GWorld32);
    const auto touch = [](const std::uint8_t* byte) { *const_cast<volatile std::uint8_t*>(byte) = 1; };
    EXPECT_DEATH(touch(bitmap.row(0) + 12), "");
    EXPECT_DEATH(touch(gworld.row(1) + gworld.rowBytes()), "");
    touch(bitmap.row(0) + 11);
    touch(gworld.row(1) + gworld.rowBytes() - 1);
}

// Drawing

class HostDrawing : public HostCore
{
protected:
    REALgraphicsStruct* graphicsOf(const Picture& picture)
    {
        return core->inside([&] {
            return service<REALgraphicsStruct*(REALpictureStruct*)>("pluginPictureGraphicsGetter")(
                handle<REALpictureStruct>(picture));
        });
    }

    /// Dark pixels as '#', one text a row.
    static std::vector<std::string> darkPixels(const Picture& picture)
    {
        std::vector<std::string> rows;
        for (int y = 0; y < picture.height(); ++y)
        {
            rows.emplace_back();
            for (int x = 0; x < picture.width(); ++x)
                rows.back() += picture.pixel(x, y).red == 0 ? '#' : '.';
        }
        return rows;
    }

    void drawLine(Picture& picture, int pen, int x1, int y1, int x2, int y2)
    {
        REALgraphicsStruct* graphics = graphicsOf(picture);
        core->inside([&] {
            auto* setInt = service<bool(REALobject, const char*, std::int32_t)>("REALSetPropValueInt");
            EXPECT_TRUE(setInt(graphics, "PenWidth", pen));
            EXPECT_TRUE(setInt(graphics, "PenHeight", pen));
            EXPECT_FALSE(setInt(graphics, "PenDepth", pen));
            EXPECT_TRUE((service<bool(REALobject, const char*, std::uint32_t)>("REALSetPropValueUInt32")(
                graphics, "ForeColor", 0x000001)));
            service<void(REALgraphicsStruct*, std::int32_t, std::int32_t, std::int32_t, std::int32_t)>(
                "RuntimeGraphicsDrawLine")(graphics, x1, y1, x2, y2);
            service<void(REALobject)>("REALUnlockObject")(graphics);
        });
    }
};

TEST_F(HostDrawing, LinesHaveTheirPenRightAndBelow)
{
    Picture picture = newPicture(5, 4, Storage::GWorld32);
    drawLine(picture, 1, 0, 0, 3, 3);
    EXPECT_THAT(darkPixels(picture), ElementsAre("#....", ".#...", "..#..", "...#."));
    picture.fill({255, 255, 255, 255});
    drawLine(picture, 2, 3, 1, 1, 1);
    EXPECT_THAT(darkPixels(picture), ElementsAre(".....", ".####", ".####", "....."));
    EXPECT_EQ(picture.pixel(1, 1), (standin::Pixel{0, 0, 1, 255}));
    EXPECT_EQ(ledger(), "balanced");
}

TEST_F(HostDrawing, EndlessLinesAreCutAtTheEdges)
{
    Picture picture = newPicture(4, 3, Storage::Bitmap);
    drawLine(picture, 1, 1, INT32_MIN, 1, 1);
    EXPECT_THAT(darkPixels(picture), ElementsAre(".#..", ".#..", "...."));
    picture.fill({255, 255, 255, 0});
    drawLine(picture, 1, INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX);
    EXPECT_THAT(darkPixels(picture), ElementsAre("#...", ".#..", "..#."));
}

TEST_F(HostDrawing, PicturesAreScaledByNearestPixels)
{
    Picture source = newPicture(2, 1, Storage::Drawable);
    source.setPixel(0, 0, {10, 0, 0, 0});
    source.setPixel(1, 0, {20, 0, 0, 0});
    const Picture target = newPicture(5, 2, Storage::GWorld32);
    REALgraphicsStruct* graphics = graphicsOf(target);
    core->inside([&] {
        using Draw = void(REALgraphicsStruct*, REALpictureStruct*, int, int, int, int, int, int, int, int);
        auto* draw = reinterpret_cast<Draw*>(service<void*(REALobject, const char*)>("REALLoadObjectMethod")(
            graphics,
            "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, sx as "
            "Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)"));
        ASSERT_NE(draw, nullptr);
        draw(graphics, handle<REALpictureStruct>(source), 1, 1, 4, 1, 0, 0, -10000, -10000);
        service<void(REALobject)>("REALUnlockObject")(graphics);
    });
    std::vector<int> reds(5);
    for (int x = 0; x < 5; ++x)
        reds[static_cast<std::size_t>(x)] = target.pixel(x, 1).red;
    EXPECT_THAT(reds, ElementsAre(255, 10, 10, 20, 20));
    EXPECT_EQ(target.pixel(1, 0).red, 255);
    EXPECT_EQ(target.pixel(1, 1).alpha, 255);
    EXPECT_EQ(ledger(), "balanced");
}

// The system

class HostSystem : public HostCore
{
protected:
    static CFStringRef constant(CFConstantString& record, const char* text)
    {
        record = {standin::findImport("__CFConstantStringClassReference"), 0x7C8, text,
                  static_cast<std::int32_t>(std::strlen(text))};
        return reinterpret_cast<CFStringRef>(&record);
    }

    template <class Function>
    static Function* import(const char* name)
    {
        return reinterpret_cast<Function*>(standin::findImport(name));
    }

    /// The framework as far as the system lets it be loaded.
    static CFBundleRef loadFramework()
    {
        FSRef folder;
        if (import <OSErr(std::int16_t, OSType, Boolean, FSRef*)>("FSFindFolder")(-32767, 'fram', 1,
                                                                                  &folder) != 0)
            return nullptr;
        auto* release = import <void(CFTypeRef)>("CFRelease");
        const CFURLRef folderUrl =
            import <CFURLRef(CFAllocatorRef, const FSRef*)>("CFURLCreateFromFSRef")(nullptr, &folder);
        CFConstantString name;
        const CFURLRef url = import <CFURLRef(CFAllocatorRef, CFURLRef, CFStringRef, Boolean)>(
            "CFURLCreateCopyAppendingPathComponent")(nullptr, folderUrl,
                                                     constant(name, "ApplicationServices.framework"), 1);
        CFBundleRef bundle = import <CFBundleRef(CFAllocatorRef, CFURLRef)>("CFBundleCreate")(nullptr, url);
        release(folderUrl);
        release(url);
        if (bundle != nullptr && import <Boolean(CFBundleRef)>("CFBundleLoadExecutable")(bundle) == 0)
        {
            release(bundle);
            return nullptr;
        }
        return bundle;
    }

    template <class Function>
    static Function* quickDraw(CFBundleRef bundle, const char* name)
    {
        CFConstantString record;
        return reinterpret_cast<Function*>(import <void*(CFBundleRef, CFStringRef)>(
            "CFBundleGetFunctionPointerForName")(bundle, constant(record, name)));
    }
};

TEST_F(HostSystem, OffersTheFramework)
{
    core->inside([] {
        CFBundleRef bundle = loadFramework();
        ASSERT_NE(bundle, nullptr);
        EXPECT_NE(quickDraw<void()>(bundle, "LockPixels"), nullptr);
        EXPECT_EQ(quickDraw<void()>(bundle, "EraseRect"), nullptr);
    });
    EXPECT_EQ(ledger(), "balanced");
}

TEST_F(HostSystem, CanLackEveryPartOfIt)
{
    for (bool standin::SystemSwitches::*part :
         {&standin::SystemSwitches::foldersFound, &standin::SystemSwitches::bundlesCreated,
          &standin::SystemSwitches::executablesLoad})
    {
        core->system = {};
        core->system.*part = false;
        core->inside([] { EXPECT_EQ(loadFramework(), nullptr); });
        EXPECT_EQ(ledger(), "balanced");
    }
    core->system = {};
    core->faults.failAlways("FSFindFolder");
    core->inside([] { EXPECT_EQ(loadFramework(), nullptr); });
    core->faults.clear();
    core->options.absent = {"LockPixels"};
    core->inside([] { EXPECT_EQ(quickDraw<void()>(loadFramework(), "LockPixels"), nullptr); });
}

TEST_F(HostSystem, ScrollsAndErases)
{
    for (const Storage storage : {Storage::GWorld32, Storage::GWorld24})
    {
        Picture photo = newPicture(3, 3, storage);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3; ++x)
                photo.setPixel(x, y, {static_cast<std::uint8_t>(10 * y + x), 0, 0, 0});
        core->inside([&] {
            CFBundleRef bundle = loadFramework();
            auto* picture = handle<REALpictureStruct>(photo);
            REALpictureDescription description;
            service<void(REALpictureStruct*, REALpictureDescription*)>("lockPictureDescription")(
                picture, &description);
            CGrafPtr port = nullptr;
            GDHandle device = nullptr;
            quickDraw<void(CGrafPtr*, GDHandle*)>(bundle, "GetGWorld")(&port, &device);
            auto* setGWorld = quickDraw<void(CGrafPtr, GDHandle)>(bundle, "SetGWorld");
            setGWorld(static_cast<CGrafPtr>(description.data), nullptr);
            RgnHandle region = quickDraw<RgnHandle()>(bundle, "NewRgn")();
            const Rect all{0, 0, 3, 3};
            quickDraw<void(const Rect*, std::int16_t, std::int16_t, RgnHandle)>(bundle, "ScrollRect")(
                &all, -1, 1, region);
            quickDraw<void(RgnHandle)>(bundle, "DisposeRgn")(region);
            setGWorld(port, device);
            service<void(REALpictureStruct*)>("unlockPictureDescription")(picture);
        });
        std::vector<int> reds;
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3; ++x)
                reds.push_back(photo.pixel(x, y).red);
        EXPECT_THAT(reds, ElementsAre(255, 255, 255, 1, 2, 255, 11, 12, 255));
        EXPECT_EQ(ledger(), "balanced");
    }
}

// Classes

class HostClass : public HostCore
{
protected:
    static constexpr int dataSize = 32;

    static std::uint8_t* dataOf(REALobjectStruct* self)
    {
        return reinterpret_cast<std::uint8_t*>(self) + definition.hostWord;
    }

    static void construct(REALobjectStruct* self)
    {
        dataOf(self)[8] = 42;
    }

    static void destruct(REALobjectStruct*)
    {
        ++destructions;
    }

    static double getHalf(REALobjectStruct* self, long)
    {
        return dataOf(self)[8] / 2.0;
    }

    static void setHalf(REALobjectStruct* self, long, double value)
    {
        dataOf(self)[8] = static_cast<std::uint8_t>(value * 2);
    }

    static std::int32_t sum(REALobjectStruct* self, std::int32_t more)
    {
        return dataOf(self)[8] + more;
    }

    static inline REALclassDefinition definition;
    static inline int destructions = 0;

    standin::Instance makeInstance(int version)
    {
        const auto field = reinterpret_cast<REALanyFunction>(-1);
        wideProperties[0] = {nullptr, "Picture1", "Picture", 0, field, field, 4, {}};
        wideProperties[1] = {nullptr, "Number", "Integer", 0, field, field, 8, {}};
        wideProperties[2] = {nullptr, "Half", "Double", 7, any(getHalf), any(setHalf), 0, {}};
        wideMethod = {any(sum), nullptr, "Sum(more as integer) as integer", 4, 0, nullptr};
        definition = {};
        definition.version = version;
        definition.name = "Fake";
        definition.dataSize = dataSize;
        definition.constructor = any(construct);
        definition.destructor = any(destruct);
        definition.properties = wideProperties;
        definition.propertyCount = 3;
        definition.methods = &wideMethod;
        definition.methodCount = 1;
        if (version < 10)
        {
            for (int row = 0; row < 3; ++row)
                std::memcpy(narrowProperties[row], &wideProperties[row], sizeof narrowProperties[row]);
            std::memcpy(narrowMethod, &wideMethod, sizeof narrowMethod);
            definition.properties = reinterpret_cast<REALproperty*>(narrowProperties);
            definition.methods = reinterpret_cast<REALmethodDefinition*>(narrowMethod);
        }
        core->inside([this] { service<void(REALclassDefinition*)>("PluginRegisterClass")(&definition); });
        return core->adopt<standin::Instance>(&core->makeInstance("fake"));
    }

    REALproperty wideProperties[3]{};
    REALmethodDefinition wideMethod{};
    std::uint32_t narrowProperties[3][10]{};
    std::uint32_t narrowMethod[4]{};
};

TEST_F(HostClass, WorksInBothLayouts)
{
    for (const int version : {9, 12})
    {
        core = std::make_shared<Core>(standin::Options{});
        destructions = 0;
        {
            standin::Instance instance = makeInstance(version);
            EXPECT_GT(definition.hostWord, 0);
            EXPECT_EQ(instance.definition().words[4], 0U);
            EXPECT_EQ(instance.definition().properties.at(2).flags, 7U);
            EXPECT_EQ(instance.definition().methods.at(0).flags, 4U);
            EXPECT_EQ(instance.get("number").integer(), 42);
            EXPECT_EQ(instance.get("Half").number(), 21.0);
            instance.set("Half", 5);
            EXPECT_EQ(instance.data()[8], 10);
            instance.set("Number", 300);
            EXPECT_EQ(instance.call("Sum", {1}).integer(), 45);
            EXPECT_EQ(errorOf([&] { instance.get("Nothing"); }), "Fake has no property Nothing");
            EXPECT_EQ(errorOf([&] { instance.set("Half", true); }), "Half takes a value of type double");
        }
        EXPECT_EQ(destructions, 1);
    }
}

TEST_F(HostClass, CountsThePicturesInFields)
{
    const Picture photo = newPicture(1, 1, Storage::GWorld32);
    standin::Instance instance = makeInstance(12);
    instance.set("Picture1", photo);
    EXPECT_EQ(photo.referenceCount(), 2);
    EXPECT_EQ(instance.get("Picture1").picture(), photo);
    EXPECT_EQ(ledger(), "balanced");
    instance.set("Picture1", nullptr);
    EXPECT_EQ(photo.referenceCount(), 1);
    instance.set("Picture1", photo);
    instance = {};
    EXPECT_EQ(ledger(), "picture#1: reference not given back"); // this class's destructor forgets it
}

// Loaders

class HostLoader : public testing::Test
{
protected:
    HostLoader()
    {
        std::filesystem::create_directories(folder);
    }
    ~HostLoader() override
    {
        std::filesystem::remove_all(folder);
    }

    std::string file(const std::string& content) const
    {
        std::string path = folder / "plugin";
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    static std::string words(std::initializer_list<std::uint32_t> values)
    {
        return {reinterpret_cast<const char*>(values.begin()), values.size() * sizeof(std::uint32_t)};
    }

    static std::string contentOf(const std::string& path)
    {
        const std::vector<unsigned char> bytes = standin::readFile(path);
        return {bytes.begin(), bytes.end()};
    }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("standin_host_test." + std::to_string(getpid()));
};

TEST_F(HostLoader, RefusesOtherFilesWithOneLine)
{
    const auto machO = [this](const std::string& content) {
        const std::string path = file(content);
        return errorOf([&] { standin::loadMachO(path); });
    };
    EXPECT_THAT(errorOf([] { standin::loadMachO("/nowhere/plugin"); }),
                HasSubstr("cannot read /nowhere/plugin: No such file"));
    EXPECT_THAT(machO(""), HasSubstr("no Mach-O file"));
    EXPECT_THAT(machO("#!/bin/sh\n"), HasSubstr("no Mach-O file"));
    EXPECT_THAT(machO(words({0xFEEDFACF, 0x01000007})), HasSubstr("64-bit"));
    EXPECT_THAT(machO(words({0xBEBAFECA, 0})), HasSubstr("universal"));
    EXPECT_THAT(machO(words({0xFEEDFACE, 7})), HasSubstr("truncated"));
    EXPECT_THAT(machO(words({0xFEEDFACE, 18, 0, 8, 0, 0, 0})), HasSubstr("another processor"));
    EXPECT_THAT(machO(words({0xFEEDFACE, 7, 3, 2, 0, 0, 0})), HasSubstr("no loadable bundle"));
    EXPECT_THAT(machO(words({0xFEEDFACE, 7, 3, 8, 0, 0, 0})), HasSubstr("no segments"));
    EXPECT_THAT(machO(words({0xFEEDFACE, 7, 3, 8, 1, 8, 0, 1, 0})), HasSubstr("load command is too short"));

    const auto elf = [this](const std::string& content) {
        const std::string path = file(content);
        return errorOf([&] { standin::loadElf(path); });
    };
    EXPECT_THAT(elf("#!/bin/sh\n"), HasSubstr("no ELF shared object"));
    std::string wide = contentOf("/proc/self/exe").substr(0, 52);
    wide[4] = 2;
    EXPECT_THAT(elf(wide), HasSubstr("another processor"));
}

TEST_F(HostLoader, RefusesTruncatedFiles)
{
    const std::string path = standin::defaultPluginPath(standin::Artefact::SharedObject);
    const std::string content = contentOf(path);
    for (const std::size_t size : {64, 500, 2000, 8000})
    {
        const std::string cut = file(content.substr(0, size));
        EXPECT_THAT(errorOf([&] { standin::loadElf(cut); }), HasSubstr("truncated")) << size;
    }
}

TEST_F(HostLoader, SurvivesEveryTruncationOfTheBundle)
{
    const std::string path = standin::defaultPluginPath(standin::Artefact::MacBundle);
    if (!std::filesystem::exists(path))
        GTEST_SKIP() << "there is no bundle beside this build";
    const std::string content = contentOf(path);
    const std::size_t step = content.size() / 300 + 1;
    int loaded = 0;
    for (std::size_t size = 0; size < content.size(); size += step)
    {
        const std::string cut = file(content.substr(0, size));
        const std::string error = errorOf([&] { standin::loadMachO(cut); });
        EXPECT_EQ(error.find('\n'), std::string::npos);
        loaded += error == "no error";
    }
    EXPECT_EQ(loaded, 0);
    EXPECT_EQ(errorOf([&] { standin::loadMachO(path); }), "no error");
}

TEST_F(HostLoader, ReadsSmallFiles)
{
    const auto linked = [](Bytes file) {
        return standin::MachOImage({{file.content.begin(), file.content.end()}, "small"});
    };
    const standin::MachOImage image = linked(smallBundle());
    EXPECT_EQ(image.initialisers().size(), 1U);
    EXPECT_NE(image.symbol("qvrLaneLimit"), nullptr);
    EXPECT_EQ(image.symbol("qvrLaneLimi"), nullptr);
    EXPECT_EQ(image.symbol("qvrLaneLimit2"), nullptr);

    const std::string content = smallSharedObject().content;
    const standin::ElfFile object({content.begin(), content.end()}, "small");
    EXPECT_NE(object.symbolAddress("qvrLaneLimit"), 0U);
    EXPECT_EQ(object.symbolAddress("qvrLaneLimi"), 0U);
    EXPECT_TRUE(object.variables().empty()) << "instruments count in its only section";
}

/// What a fuzzer found: files of a few hundred bytes that kept the loader busy for minutes, or took all
/// memory.
TEST_F(HostLoader, RefusesFilesThatPromiseTooMuch)
{
    namespace places = smallBundlePlaces;
    const auto error = [](const Bytes& file) {
        return errorOf([&] { standin::MachOImage({{file.content.begin(), file.content.end()}, "small"}); });
    };
    EXPECT_EQ(error(smallBundle()), "no error");
    EXPECT_THAT(error(smallBundle().setWord(places::initialisersSize, 0xFFFFFFFF)),
                HasSubstr("initialisers lie outside of its segments"));
    EXPECT_THAT(error(smallBundle().setWord(places::symbolCount, 0xFFFFFFFF)), "no error");
    // Rebasing 255 words, and those again and again without moving on.
    EXPECT_THAT(error(smallBundle().setWord(places::rebase + 4, 0x0001FF60)),
                HasSubstr("more places than there are"));
    EXPECT_THAT(error(smallBundle().setWord(places::rebase + 4, 0x7F807F80)), HasSubstr("more places than"));
}

/// What a fuzzer found: a crash in the host, on words that it reads itself.
TEST_F(HostLoader, ReadsSegmentsThatSayTheyCannotBeRead)
{
    const Bytes file = smallBundle().setWord(smallBundlePlaces::protection, 0);
    const standin::MachOImage image({{file.content.begin(), file.content.end()}, "small"});
    const std::vector<std::uintptr_t> initialisers = image.initialisers();
    ASSERT_EQ(initialisers.size(), 1U);
    const auto variable = reinterpret_cast<std::uintptr_t>(image.symbol("qvrLaneLimit"));
    EXPECT_EQ(initialisers[0], variable - smallBundlePlaces::variable) << "it was not rebased";
}

TEST_F(HostLoader, GivesACopyThatIsUsedAgainItsFirstVariables)
{
    for (const standin::Artefact artefact : {standin::Artefact::SharedObject, standin::Artefact::MacBundle})
    {
        standin::Options options{.artefact = artefact, .version = 2011.0, .reuse = true};
        if (!std::filesystem::exists(standin::defaultPluginPath(artefact)))
            continue;
        std::int32_t* limit = nullptr;
        {
            standin::Host host(options);
            limit = host.pluginVariable("qvrLaneLimit");
            ASSERT_EQ(*limit, 8);
            *limit = 4;
            EXPECT_EQ(host.registered().announcedVersions, std::vector<int>{9});
        }
        options.version = 2013.03;
        standin::Host host(options);
        EXPECT_EQ(host.pluginVariable("qvrLaneLimit"), limit) << "it is another copy";
        EXPECT_EQ(*limit, 8);
        EXPECT_EQ(host.registered().announcedVersions, std::vector<int>{12});
        EXPECT_FALSE(host.call(host.newPicture(3, 3), "InvertQVR").picture().isNil());
        EXPECT_TRUE(host.ledger().balanced()) << host.ledger().describe();

        standin::Host other(options);
        EXPECT_NE(other.pluginVariable("qvrLaneLimit"), limit) << "both hosts use one copy";
    }
}

TEST_F(HostLoader, NamesImportsThatDoNotExist)
{
    const std::string path = standin::defaultPluginPath(standin::Artefact::MacBundle);
    if (!std::filesystem::exists(path))
        GTEST_SKIP() << "there is no bundle beside this build";
    std::string content = contentOf(path);
    for (std::size_t at = content.find("_calloc"); at != std::string::npos; at = content.find("_calloc", at))
        content.replace(at, 7, "_zalloc");
    const std::string changed = file(content);
    EXPECT_THAT(errorOf([&] { standin::loadMachO(changed); }),
                HasSubstr("imports _zalloc, which does not exist here"));
}

} // namespace
