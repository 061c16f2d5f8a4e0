#include "tests/support/operation_checks.h"

#include <utility>

namespace
{

constexpr int largestSide = 32767;

void expectClean(TestHost& host, const SourceJob& job, const standin::Picture& source,
                 const standin::Value& clean, const std::string& what)
{
    const standin::Value result = job(host, source);
    EXPECT_TRUE(isClean(result, clean)) << what << " gave " << result.describe();
    EXPECT_FALSE(result.exception().has_value()) << what;
    host.expectBalanced(what);
}

} // namespace

std::vector<standin::Storage> lockableStorages(const TestHost& host)
{
    std::vector<standin::Storage> storages = sourceStorages(host);
    std::erase_if(storages, [](standin::Storage storage) { return !isLockable(storage); });
    return storages;
}

std::vector<standin::PictureQuirks> waysToBreak(const TestHost& host)
{
    if (traitsOf(host.newStorage()).access == standin::Access::Bitmap)
        return {{.lockFails = true}, {.nullData = true}};
    return {{.nullData = true}, {.nullPixMap = true}, {.lockPixelsFails = true}, {.nullBaseAddress = true}};
}

standin::PictureQuirks broken(const TestHost& host)
{
    return waysToBreak(host).back();
}

void expectSizeLimits(standin::Artefact artefact, const SourceJob& job, const standin::Value& clean,
                      SourceLine line)
{
    const auto test = [&](TestHost& host) {
        for (const standin::Storage storage : lockableStorages(host))
        {
            const auto run = [&](int width, int height) {
                return job(host, host.newPicture(width, height, storage));
            };
            for (const auto& [width, height] : {std::pair{0, 3},
                                                {3, 0},
                                                {0, 0},
                                                {largestSide, 0},
                                                {0, largestSide},
                                                {largestSide + 1, 1},
                                                {1, largestSide + 1}})
                expectClean(host, job, host.newPicture(width, height, storage), clean,
                            sizeText(width, height));
            for (const auto& [width, height] : {std::pair{largestSide, 1}, {1, largestSide}})
            {
                const standin::Value result = run(width, height);
                EXPECT_FALSE(isClean(result, clean)) << sizeText(width, height);
                if (const auto* picture = std::get_if<standin::Picture>(&result.held()))
                    EXPECT_EQ(sizeText(picture->width(), picture->height()), sizeText(width, height));
            }
        }
    };
    forEachHost(artefact, test, line);
}

void expectCleanFailures(standin::Artefact artefact, const SourceJob& job, const standin::Value& clean,
                         SourceLine line)
{
    for (const HostSetup& setup : hostSetups(artefact))
    {
        {
            TestHost host{setup, line};
            const standin::Picture source = host.newPicture(5, 4);
            for (const standin::PictureQuirks& quirks : waysToBreak(host))
            {
                standin::Picture unopened = host.newPicture(5, 4);
                unopened.quirks() = quirks;
                expectClean(host, job, unopened, clean, "a source that cannot be opened");
                host.newPictureQuirks() = quirks;
                expectClean(host, job, source, clean, "a result that cannot be opened");
                host.newPictureQuirks() = {};
            }
            host.faults().failCall("newPicture");
            expectClean(host, job, source, clean, "a result that cannot be made");
            EXPECT_FALSE(isClean(job(host, source), clean)) << "it does not recover";
        }
        const bool bitmaps = traitsOf(setup.options.storageOfNewPictures()).access == standin::Access::Bitmap;
        for (const char* function :
             {"newPicture", bitmaps ? "REALLockPictureDescription" : "lockPictureDescription"})
        {
            TestHost host{setup.without({function}), line};
            expectClean(host, job, host.newPicture(5, 4), clean, "a host that lacks a function");
        }
    }
}

void expectLimitsOfMethod(standin::Artefact artefact, const std::string& method,
                          const standin::Arguments& arguments, SourceLine line)
{
    const SourceJob job = [&](TestHost& host, const standin::Picture& source) {
        return host.call(source, method, arguments);
    };
    const testing::ScopedTrace trace = line.trace(callText(method, arguments));
    expectSizeLimits(artefact, job, nullptr, line);
    expectCleanFailures(artefact, job, nullptr, line);
    forEachHost(
        artefact, [&](TestHost& host) { expectNil(host, standin::Picture(), method, arguments, line); },
        line);
}

void expectSameOnAllVersions(standin::Artefact artefact, const SourceJob& job,
                             const std::function<reference::Picture(const reference::Picture&)>& wanted,
                             SourceLine line)
{
    Random random{11};
    const reference::Picture pixels = randomPicture(random, 13, 5);
    const auto test = [&](TestHost& host) {
        const standin::Picture source = upload(host, pixels);
        expectPicture(wanted(download(source)), job(host, source).picture(), "the job", Alpha::Opaque, line);
    };
    forEachHostVersion(artefact, test, line);
}

void expectNilObjectException(const standin::Value& result, const std::string& message, SourceLine line)
{
    const testing::ScopedTrace trace = line.trace("the call");
    EXPECT_TRUE(isClean(result, nullptr)) << result.describe();
    ASSERT_TRUE(result.exception().has_value()) << "no exception, wanted \"" << message << "\"";
    EXPECT_EQ(result.exception()->className, "NilObjectException");
    EXPECT_EQ(result.exception()->message, message);
    EXPECT_EQ(result.exception()->messageEncoding, standin::encodingAscii);
    EXPECT_EQ(result.exception()->errorNumber, 0);
}
