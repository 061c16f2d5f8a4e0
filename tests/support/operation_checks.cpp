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

bool isClean(const standin::Value& result, const standin::Value& clean)
{
    if (!clean.isNil())
        return result.describe() == clean.describe();
    const auto* picture = std::get_if<standin::Picture>(&result.held());
    const auto* string = std::get_if<standin::String>(&result.held());
    return picture != nullptr ? picture->isNil() : string != nullptr ? string->isNil() : result.isNil();
}

void expectSizeLimits(standin::Artefact artefact, const SourceJob& job, const standin::Value& clean)
{
    forEachHost(artefact, [&](TestHost& host) {
        for (const standin::Storage storage : lockableStorages(host))
        {
            const auto run = [&](int width, int height) {
                return job(host, host.newPicture(width, height, storage));
            };
            for (const auto& [width, height] : {std::pair{largestSide, 1}, std::pair{1, largestSide}})
            {
                EXPECT_FALSE(isClean(run(width, height), clean)) << width << " x " << height;
                EXPECT_TRUE(isClean(run(width, 0), clean)) << width << " x 0";
                EXPECT_TRUE(isClean(run(0, height), clean)) << "0 x " << height;
            }
            EXPECT_TRUE(isClean(run(largestSide + 1, 1), clean));
            EXPECT_TRUE(isClean(run(1, largestSide + 1), clean));
        }
    });
}

void expectCleanFailures(standin::Artefact artefact, const SourceJob& job, const standin::Value& clean)
{
    for (const HostSetup& setup : hostSetups(artefact))
    {
        SCOPED_TRACE(setup.name);
        const bool bitmaps = setup.options.newPictureStorage == standin::Storage::Bitmap;
        {
            TestHost host{setup};
            standin::Picture broken = host.newPicture(5, 4);
            broken.quirks().lockFails = bitmaps;
            broken.quirks().nullPixMap = !bitmaps;
            expectClean(host, job, broken, clean, "a source that cannot be locked");

            const standin::Picture source = host.newPicture(5, 4);
            host.faults().failCall("newPicture");
            expectClean(host, job, source, clean, "a result that cannot be made");
            host.newPictureQuirks().lockFails = bitmaps;
            host.newPictureQuirks().nullBaseAddress = !bitmaps;
            expectClean(host, job, source, clean, "a result that cannot be opened");
            host.newPictureQuirks() = {};
            EXPECT_FALSE(isClean(job(host, source), clean)) << "it does not recover";
        }
        for (const std::string& function :
             {std::string("newPicture"),
              std::string(bitmaps ? "REALLockPictureDescription" : "lockPictureDescription")})
        {
            TestHost host{setup.without({function})};
            expectClean(host, job, host.newPicture(5, 4), clean, "a host without " + function);
        }
    }
}

void expectSameOnAllVersions(standin::Artefact artefact, const SourceJob& job,
                             const std::function<reference::Picture(const reference::Picture&)>& wanted)
{
    Random random{11};
    const reference::Picture pixels = randomPicture(random, 13, 5);
    for (const HostSetup& setup : hostSetups(artefact))
        for (const double version : hostVersions)
        {
            TestHost host{setup.version(version)};
            const standin::Picture source = upload(host, pixels);
            expectPicture(wanted(download(source)), job(host, source).picture(), host.setup().name);
        }
}

void expectNilObjectException(const standin::Value& result, const std::string& message)
{
    constexpr std::uint32_t ascii = 0x0600;
    EXPECT_TRUE(isClean(result, nullptr)) << result.describe();
    ASSERT_TRUE(result.exception().has_value()) << "no exception, wanted \"" << message << "\"";
    EXPECT_EQ(result.exception()->className, "NilObjectException");
    EXPECT_EQ(result.exception()->message, message);
    EXPECT_EQ(result.exception()->messageEncoding, ascii);
    EXPECT_EQ(result.exception()->errorNumber, 0);
}
