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
    int failures = 0;
    std::vector<std::string> log;
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

/// Functions without a result: they cannot fail, and so are not counted.
const std::set<std::string> withoutResult{"REALLockObject",
                                          "REALUnlockObject",
                                          "lockPictureDescription",
                                          "unlockPictureDescription",
                                          "REALPictureClearCache",
                                          "RuntimeGraphicsDrawLine",
                                          "RuntimeRaiseException",
                                          "REALSetStringEncoding",
                                          "REALLockString",
                                          "REALUnlockString",
                                          "PluginDisposeStringData",
                                          "DrawPicture",
                                          "UnlockPixels",
                                          "GetGWorld",
                                          "SetGWorld",
                                          "DisposeRgn",
                                          "ScrollRect",
                                          "CFRelease",
                                          "free"};

/// The name of the n-th call that can fail.
std::string failedCall(const std::vector<std::string>& log, int n)
{
    for (const std::string& call : log)
    {
        const std::string name = call.substr(0, call.find('('));
        if (!withoutResult.contains(name) && --n == 0)
            return name;
    }
    return "";
}

int countCalls(const std::vector<std::string>& log, const std::string& name)
{
    return static_cast<int>(std::count_if(
        log.begin(), log.end(), [&](const std::string& call) { return call.starts_with(name + "("); }));
}

/// Whether the n-th call was to find a function that some of the calls of `before` then went without.
bool wasNotFound(const std::string& function, const std::string& before, const std::vector<std::string>& log,
                 int n)
{
    return n > 0 && failedCall(log, n) == "CFBundleGetFunctionPointerForName" &&
           countCalls(log, function) < countCalls(log, before);
}

/// Runs the job with the n-th call failing; 0: none.
Run runOnce(const HostSetup& setup, const std::vector<TortureSource>& sources, const TortureJob& job,
            const TortureRules& rules, int n)
{
    Run run;
    TestHost host{setup};
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
    run.failures = host.faults().failures();
    run.log = host.callLog();
    host.faults().clear();

    run.pixelsCannotBeUnlocked = wasNotFound("UnlockPixels", "LockPixels", run.log, n);
    run.rowsAreUnknown = wasNotFound("GetPixRowBytes", "GetPixBaseAddr", run.log, n);
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
             const TortureRules& rules)
{
    HostSetup logged = setup;
    logged.options.logCalls = true;
    std::set<std::string> spoilers = spoilersOfTheEditor;
    spoilers.insert(rules.alsoSpoil.begin(), rules.alsoSpoil.end());

    // Every run loads the plug-in anew, which takes long under the sanitizers.
    constexpr int step = sanitized ? 3 : 1;

    const Run faultless = runOnce(logged, sources, job, rules, 0);
    for (int n = 1; n <= mostCalls; n += step)
    {
        SCOPED_TRACE(setup.name + ", call " + std::to_string(n) + " fails");
        const Run run = runOnce(logged, sources, job, rules, n);
        if (run.failures == 0)
        {
            EXPECT_GT(n, 1) << "the job makes no call that can fail";
            EXPECT_TRUE(isSame(run, faultless)) << "no call failed, and yet the result is another one";
            return;
        }
        const std::string failed = failedCall(run.log, n);
        const bool spoiled = (spoilers.contains(failed) || run.rowsAreUnknown) && isSameSize(run, faultless);
        EXPECT_TRUE(isClean(run, rules.cleanResult) || isSame(run, faultless) || spoiled)
            << failed << " failed, and the result is neither the clean nor the full one, but "
            << (run.picture ? "another picture" : run.result.describe());
        if (testing::Test::HasFailure())
            return;
    }
    ADD_FAILURE() << setup.name << ": still failing after " << mostCalls << " calls";
}

TortureJob methodJob(const std::string& method, const standin::Arguments& arguments)
{
    return [method, arguments](TestHost& host, std::vector<standin::Picture>& sources) {
        return host.call(sources.front(), method, arguments);
    };
}

void tortureMethod(standin::Artefact artefact, const std::string& method, const standin::Arguments& arguments,
                   const TortureRules& rules)
{
    Random random{7};
    const reference::Picture picture = randomPicture(random, 9, 3, Palette::Few);
    for (const HostSetup& setup : hostSetups(artefact))
    {
        std::vector<standin::Storage> storages;
        {
            const TestHost host{setup};
            storages = sourceStorages(host);
        }
        if (sanitized)
            storages.resize(1);
        for (const standin::Storage storage : storages)
            torture(setup, {{picture, storage}}, methodJob(method, arguments), rules);
    }
}
