// Which of the loops do the work. Their results are the same, so only breakpoints tell them apart.
#include "tests/support/artefact_file.h"
#include "tests/support/artefact_watch.h"
#include "tests/support/every_call.h"
#include "tests/support/pictures.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace
{

using standin::Storage;

using Addresses = std::vector<std::uint32_t>;
using Calls = std::set<std::string>;

/// The places that tell which loops run.
struct Places
{
    Addresses wideLoops;
    /// Those that have a wide one beside them.
    Addresses narrowLoops;
    /// Stores around the cache.
    Addresses streams;
};

/// The name that a wide loop has for four pixels.
std::string narrowName(std::string name)
{
    const std::size_t wide = name.find("Wide<");
    return name.replace(wide, 4, "Narrow");
}

const Places& placesOf(standin::Artefact artefact)
{
    static std::map<standin::Artefact, Places> known;
    if (known.contains(artefact))
        return known[artefact];
    Places& places = known[artefact];
    const std::vector<Function> functions = disassemble(artefact);
    std::set<std::string> narrowNames;
    for (const Function& function : functions)
        if (function.isWideLoop())
        {
            places.wideLoops.push_back(function.instructions.front().address);
            narrowNames.insert(narrowName(function.name));
        }
    for (const Function& function : functions)
    {
        if (narrowNames.contains(function.name))
            places.narrowLoops.push_back(function.instructions.front().address);
        for (const Instruction& instruction : function.instructions)
            if (instruction.mnemonic.starts_with("movnt") || instruction.mnemonic.starts_with("vmovnt"))
                places.streams.push_back(instruction.address);
    }
    return places;
}

/// The calls that reach one of the places.
Calls callsReaching(const Addresses& places, const HostSetup& setup, const reference::Picture& source)
{
    TestHost host{setup};
    Watch watch{host, places};
    Calls calls;
    outcomesOfEveryCall(host, source, [&](const std::string& call, const auto& job) {
        standin::Value result;
        if (!watch.reached([&] { result = job(); }).empty())
            calls.insert(call);
        return result;
    });
    return calls;
}

reference::Picture someSource()
{
    Random random{11};
    return randomPicture(random, 45, 6);
}

class Paths : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(Paths);

TEST_P(Paths, WideLoopsRunWhereTheProcessorHasThem)
{
    if (!__builtin_cpu_supports("avx2"))
        GTEST_SKIP() << "this processor has no AVX2";
    const Places& places = placesOf(artefact());
    for (const HostSetup& setup : hostSetups(artefact()))
    {
        SCOPED_TRACE(setup.name);
        const Calls wide = callsReaching(places.wideLoops, setup, someSource());
        // All but a few of the calls process pixels.
        EXPECT_GE(wide.size(), 40U);
        EXPECT_EQ(wide, callsReaching(places.narrowLoops, setup.lanes(4), someSource()));
        EXPECT_EQ(callsReaching(places.narrowLoops, setup, someSource()), Calls{});
    }
}

TEST_P(Paths, WideLoopsCanBeSwitchedOff)
{
    for (const HostSetup& setup : hostSetups(artefact()))
        EXPECT_EQ(callsReaching(placesOf(artefact()).wideLoops, setup.lanes(4), someSource()), Calls{})
            << setup.name;
}

/// The hosts whose new pictures have four bytes a pixel; to three bytes results are converted, through the
/// cache.
std::vector<HostSetup> streamingHosts(standin::Artefact artefact)
{
    std::vector<HostSetup> setups = hostSetups(artefact);
    std::erase_if(setups, [](const HostSetup& setup) {
        return setup.options.storageOfNewPictures() == Storage::GWorld24;
    });
    return setups;
}

/// The calls that fill a new picture or string.
Calls callsWithLargeResults(const HostSetup& setup)
{
    const TestHost host{setup};
    Calls calls{"PicturetoBinaryStringQVR(p as picture) as string"};
    const auto add = [&calls](const std::vector<standin::RegisteredMethod>& methods) {
        for (const standin::RegisteredMethod& method : methods)
            if (method.declaration.result == standin::Type::Picture)
                calls.insert(method.text);
    };
    add(host.registered().extensions.at(0).methods);
    add(host.registered().globals);
    for (const standin::RegisteredClass& filter : host.registered().classes)
        calls.insert(filter.name + ".Run as boolean");
    return calls;
}

TEST_P(Paths, EveryLargeResultIsStreamed)
{
    const Addresses& streams = placesOf(artefact()).streams;
    for (const HostSetup& setup : streamingHosts(artefact()))
        for (const int lanes : {4, 8})
        {
            SCOPED_TRACE(setup.name + ", " + std::to_string(lanes) + " lanes");
            EXPECT_EQ(callsReaching(streams, setup.lanes(lanes).streamed(), someSource()),
                      callsWithLargeResults(setup));
            EXPECT_EQ(callsReaching(streams, setup.lanes(lanes), someSource()), Calls{});
        }
}

/// Whether a job with a new picture of this size stores around the cache. It is given that picture as a
/// binary string, too.
template <class Job>
bool streams(const HostSetup& setup, int width, int height, Job job)
{
    TestHost host{setup};
    const standin::Picture picture = host.newPicture(width, height);
    const standin::String binary = host.callGlobal("PicturetoBinaryStringQVR", {picture}).string();
    Watch watch{host, placesOf(setup.options.artefact).streams};
    return !watch.reached([&] { job(host, picture, binary); }).empty();
}

const auto invert = [](TestHost& host, const standin::Picture& picture, const standin::String&) {
    host.call(picture, "InvertQVR");
};
const auto pack = [](TestHost& host, const standin::Picture& picture, const standin::String&) {
    host.callGlobal("PicturetoBinaryStringQVR", {picture});
};
const auto unpack = [](TestHost& host, const standin::Picture&, const standin::String& binary) {
    host.callGlobal("BinaryStringtoPictureQVR", {binary});
};

TEST_P(Paths, StreamsFromTheSizeOn)
{
    constexpr int width = 50;
    constexpr int height = 7;
    for (const HostSetup& setup : streamingHosts(artefact()))
    {
        SCOPED_TRACE(setup.name);
        const int pictureBytes = TestHost{setup}.newPicture(width, height).rowBytes() * height;
        const int packedBytes = width * 3 * height;
        for (const int more : {-1, 0, 1})
        {
            SCOPED_TRACE(more);
            HostSetup limited = setup;
            limited.variables["qvrSmallestStreamed"] = pictureBytes + more;
            EXPECT_EQ(streams(limited, width, height, invert), more <= 0);
            EXPECT_EQ(streams(limited, width, height, unpack), more <= 0);
            limited.variables["qvrSmallestStreamed"] = packedBytes + more;
            EXPECT_EQ(streams(limited, width, height, pack), more <= 0);
        }
    }
}

TEST_P(Paths, StreamsFourMegabytes)
{
    for (HostSetup setup : streamingHosts(artefact()))
    {
        SCOPED_TRACE(setup.name);
        setup.options.padding = 0;
        EXPECT_TRUE(streams(setup, 1024, 1024, invert));
        EXPECT_FALSE(streams(setup, 1024, 1023, invert));
    }
}

} // namespace
