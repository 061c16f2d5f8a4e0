#include "tests/support/torture.h"

#include "tests/support/pictures.h"

#include <algorithm>
#include <optional>

namespace
{

/// More calls than any job on a small picture makes: a torture that never ends is a failure.
constexpr int mostCalls = 2000;

/// Without these the editor goes on, with rows that lie on each other or a copy that was not drawn.
const std::set<std::string> spoilersOfTheEditor{"GetPixRowBytes", "pluginPictureGraphicsGetter",
                                                "REALLoadObjectMethod", "REALLockPictureDescription"};

struct Run
{
    standin::Value result;
    std::optional<reference::Picture> picture; ///< the result when it is one
    std::string failed;                        ///< the name of the call that failed; empty when all went well
    /// The failed call was the look-up of the very function that unlocks; nothing can be done then.
    bool pixelsCannotBeUnlocked = false;
    /// The failed call was the look-up of the function that tells the row bytes.
    bool rowsAreUnknown = false;
};

bool isPicture(const standin::Value& value)
{
    return std::holds_alternative<standin::Picture>(value.held());
}

bool isClean(const Run& run, const standin::Value& clean)
{
    if (isPicture(run.result) || clean.isNil())
        return run.result.isNil() || (isPicture(run.result) && !run.picture);
    return run.result.describe() == clean.describe();
}

bool isSame(const Run& run, const Run& faultless)
{
    if (run.picture || faultless.picture)
        return run.picture == faultless.picture;
    return isPicture(run.result) == isPicture(faultless.result) &&
           (isPicture(run.result) || run.result.describe() == faultless.result.describe());
}

bool isSameSize(const Run& run, const Run& faultless)
{
    if (!run.picture || !faultless.picture)
        return !run.picture && !faultless.picture;
    return run.picture->width == faultless.picture->width && run.picture->height == faultless.picture->height;
}

/// Whether the look-up of a function failed, which some of the calls of `before` then went without.
bool wasNotFound(const TestHost& host, const std::string& function, const std::string& before,
                 const std::string& failed)
{
    return failed == "CFBundleGetFunctionPointerForName" && host.callsOf(function) < host.callsOf(before);
}

/// Runs the job with the n-th call failing; 0: none.
Run runOnce(const HostSetup& setup, const std::vector<TortureSource>& sources, const TortureJob& job,
            const TortureRules& rules, int n, SourceLine line)
{
    Run run;
    TestHost host{setup, line};
    std::vector<standin::Picture> pictures;
    std::vector<std::vector<std::uint8_t>> before;
    for (const TortureSource& source : sources)
    {
        pictures.push_back(upload(host, source.picture, source.storage));
        before.push_back(pictures.back().rgba());
    }

    host.clearCallLog();
    host.faults().clear();
    if (n > 0)
        host.faults().failAnyCall(n);
    run.result = job(host, pictures);
    run.failed = host.faults().lastFailure();
    host.faults().clear();

    run.pixelsCannotBeUnlocked = wasNotFound(host, "UnlockPixels", "LockPixels", run.failed);
    run.rowsAreUnknown = wasNotFound(host, "GetPixRowBytes", "GetPixBaseAddr", run.failed);
    if (run.pixelsCannotBeUnlocked)
        host.ignoreLedger();
    else
        host.expectBalanced("after the call");
    EXPECT_FALSE(run.result.exception().has_value());
    if (!rules.changesSources)
        for (std::size_t index = 0; index < pictures.size(); ++index)
            EXPECT_TRUE(before[index] == pictures[index].rgba()) << "source " << index << " was changed";
    if (isPicture(run.result) && !run.result.picture().isNil())
        run.picture = download(run.result.picture());
    // The result must not outlive the check of its host's ledger.
    if (run.picture)
        run.result = standin::Picture();
    return run;
}

} // namespace

void torture(const HostSetup& setup, const std::vector<TortureSource>& sources, const TortureJob& job,
             const TortureRules& rules, SourceLine line)
{
    const HostSetup logged = setup.logged();
    std::set<std::string> spoilers = spoilersOfTheEditor;
    spoilers.insert(rules.alsoSpoil.begin(), rules.alsoSpoil.end());

    // Every run loads the plug-in anew, which takes long under the sanitizers.
    constexpr int step = sanitized ? 3 : 1;

    const Run faultless = runOnce(logged, sources, job, rules, 0, line);
    for (int n = 1; n <= mostCalls; n += step)
    {
        const testing::ScopedTrace trace = line.trace(setup.name + ", call " + std::to_string(n) + " fails");
        const Run run = runOnce(logged, sources, job, rules, n, line);
        if (run.failed.empty())
        {
            EXPECT_GT(n, 1) << "the job makes no call that can fail";
            EXPECT_TRUE(isSame(run, faultless)) << "no call failed, and yet the result is another one";
            return;
        }
        const bool spoiled =
            (spoilers.contains(run.failed) || run.rowsAreUnknown) && isSameSize(run, faultless);
        EXPECT_TRUE(isClean(run, rules.cleanResult) || isSame(run, faultless) || spoiled)
            << run.failed << " failed, and the result is neither the clean nor the full one, but "
            << (run.picture ? "another picture" : run.result.describe());
        ASSERT_FALSE(testing::Test::HasFailure()) << run.failed << " failed";
    }
    ADD_FAILURE() << setup.name << ": still failing after " << mostCalls << " calls";
}

void torture(const std::vector<HostSetup>& setups, const std::vector<reference::Picture>& pictures,
             const TortureJob& job, const TortureRules& rules, SourceLine line)
{
    for (const HostSetup& setup : setups)
    {
        const std::vector<standin::Storage> storages = sourceStorages(setup);
        const auto sourcesFrom = [&](std::size_t first) {
            std::vector<TortureSource> sources;
            for (std::size_t i = 0; i < pictures.size(); ++i)
                sources.push_back({pictures[i], storages[(first + i) % storages.size()]});
            return sources;
        };
        // One round under the sanitizers: the one in which the last picture is locked in another way, or
        // drawn.
        const std::size_t rounds = pictures.empty() ? 1 : storages.size();
        const std::size_t first = sanitized && pictures.size() > 1 ? 1 : 0;
        for (std::size_t round = first; round < (sanitized ? first + 1 : rounds); ++round)
            torture(setup, sourcesFrom(round), job, rules, line);
    }
}

void torture(standin::Artefact artefact, const std::vector<reference::Picture>& pictures,
             const TortureJob& job, const TortureRules& rules, SourceLine line)
{
    torture(hostSetups(artefact), pictures, job, rules, line);
}

TortureJob methodJob(const std::string& method, const standin::Arguments& arguments)
{
    return [method, arguments](TestHost& host, std::vector<standin::Picture>& sources) {
        return host.call(sources.front(), method, arguments);
    };
}

void tortureMethod(standin::Artefact artefact, const std::string& method, const standin::Arguments& arguments,
                   const TortureRules& rules, SourceLine line)
{
    torture(artefact, {pictureToTorture(7, Palette::Few)}, methodJob(method, arguments), rules, line);
}

reference::Picture pictureToTorture(std::uint32_t seed, Palette palette)
{
    Random random{seed};
    return randomPicture(random, 9, 3, palette);
}
