#include "tests/support/torture.h"

#include "tests/support/every_call.h"
#include "tests/support/failure_points.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace
{

/// Without these the editor goes on, with rows that lie on each other or a copy that was not drawn.
const std::set<std::string> spoilersOfTheEditor{"GetPixRowBytes", "pluginPictureGraphicsGetter",
                                                "REALLoadObjectMethod", "REALLockPictureDescription",
                                                "DrawPicture"};

/// Each takes or gives back what the other one of a pair is for: on a host without it nothing can balance.
const std::set<std::string> halvesOfPairs{
    "REALLockString",         "REALUnlockString", "REALUnlockObject", "REALLockPictureDescription",
    "UnlockPixels",           "SetGWorld",        "DisposeRgn",       "unlockPictureDescription",
    "PluginDisposeStringData"};

/// Without their answers the plug-in takes another way: pictures may be opened that are none of the host's
/// kind, or that would have been copied.
const std::set<std::string> directors{"pluginObjectType", "REALGetPropValueInt", "newPicture",
                                      "lockPictureDescription"};

/// Without it a new picture's only reference is given back before its first pixel is written.
const std::string indispensable = "REALLockObject";

struct Leaving
{
    std::string name;
    std::string before;
    std::string after;
};

struct Outcome
{
    standin::Value result;
    std::optional<reference::Picture> picture; ///< the result when it is one
    std::vector<Leaving> leavings;             ///< of sources and variables
    std::string failed;                        ///< the call that failed; empty when all went well
};

bool isPicture(const standin::Value& value)
{
    return std::holds_alternative<standin::Picture>(value.held());
}

bool isClean(const Outcome& outcome, const standin::Value& clean)
{
    if (isPicture(outcome.result) || clean.isNil())
        return outcome.result.isNil() || (isPicture(outcome.result) && !outcome.picture);
    return outcome.result.describe() == clean.describe();
}

bool isSame(const Outcome& outcome, const Outcome& faultless)
{
    if (outcome.picture || faultless.picture)
        return outcome.picture == faultless.picture;
    return isPicture(outcome.result) == isPicture(faultless.result) &&
           (isPicture(outcome.result) || outcome.result.describe() == faultless.result.describe());
}

bool isSameSize(const Outcome& outcome, const Outcome& faultless)
{
    if (!outcome.picture || !faultless.picture)
        return !outcome.picture && !faultless.picture;
    return outcome.picture->width == faultless.picture->width &&
           outcome.picture->height == faultless.picture->height;
}

bool isNothing(const std::string& text)
{
    return text == "nil" || text == "0" || text == "-1";
}

/// What stands for a failure when a function is missing.
std::string lookUpOf(const std::string& function)
{
    return "resolver(\"" + function + "\")";
}

/// Whether the call in vain asked for one of these functions.
bool asksFor(const std::string& call, const std::set<std::string>& functions)
{
    return std::any_of(functions.begin(), functions.end(), [&call](const std::string& function) {
        return call.find("\"" + function + "\"") != std::string::npos ||
               call.find("\"" + function + "(") != std::string::npos;
    });
}

/// Whether the call was one of these functions, or asked for one of them.
bool concerns(const std::string& call, const std::set<std::string>& functions)
{
    return functions.contains(call.substr(0, call.find('('))) || asksFor(call, functions);
}

/// What may come of a job when something fails.
class Verdict
{
public:
    Verdict(const TortureRules& jobRules, const Outcome& faultlessOutcome)
        : rules(jobRules),
          faultless(faultlessOutcome),
          spoilers(spoilersOfTheEditor)
    {
        spoilers.insert(rules.alsoSpoil.begin(), rules.alsoSpoil.end());
    }

    /// `detours` are other ways to do the whole job.
    void expectHolds(const Outcome& outcome, const std::vector<Outcome>& detours = {}) const
    {
        std::vector<const Outcome*> whole{&faultless};
        for (const Outcome& detour : detours)
            whole.push_back(&detour);
        const auto isOneOf = [&whole](const auto& same) {
            return std::any_of(whole.begin(), whole.end(), same);
        };
        const bool spoiled = concerns(outcome.failed, spoilers) &&
                             isOneOf([&](const Outcome* one) { return isSameSize(outcome, *one); });
        ASSERT_TRUE(isClean(outcome, rules.cleanResult) || spoiled ||
                    isOneOf([&](const Outcome* one) { return isSame(outcome, *one); }))
            << "the result is neither the clean nor the full one, but "
            << (outcome.picture ? "another picture" : outcome.result.describe());
        ASSERT_FALSE(outcome.result.exception().has_value());
        for (std::size_t i = 0; i < outcome.leavings.size() && !spoiled; ++i)
        {
            const auto& [name, before, after] = outcome.leavings[i];
            ASSERT_TRUE(after == before || isNothing(after) || rules.mayLeave.contains(after) ||
                        isOneOf([&, i](const Outcome* one) {
                            return outcome.leavings[i].after == one->leavings.at(i).after;
                        }))
                << name << " was " << before << " and is " << after;
        }
    }

private:
    const TortureRules& rules;
    const Outcome& faultless;
    std::set<std::string> spoilers;
};

/// Runs what has been prepared, and looks at everything it leaves.
Outcome observe(TestHost& host, const TorturePreparation& prepare, const std::function<void()>& letDown)
{
    Outcome outcome;
    TortureRun run = prepare(host);
    for (std::size_t i = 0; i < run.sources.size(); ++i)
        outcome.leavings.push_back({"source " + std::to_string(i), outcomeText(run.sources[i]), ""});
    if (run.leavings)
        for (const auto& [name, value] : run.leavings())
            outcome.leavings.push_back({name, outcomeText(value), ""});

    host.rewind();
    letDown();
    outcome.result = run.job();
    outcome.failed = host.faults().lastFailure();

    auto leaving = outcome.leavings.begin();
    for (const standin::Picture& source : run.sources)
        (leaving++)->after = outcomeText(source);
    if (run.leavings)
        for (const auto& [name, value] : run.leavings())
            (leaving++)->after = outcomeText(value);
    if (isPicture(outcome.result) && !outcome.result.picture().isNil())
        outcome.picture = download(outcome.result.picture());
    // The result must not outlive the check of its host's ledger.
    if (isPicture(outcome.result))
        outcome.result = standin::Picture();
    return outcome;
}

} // namespace

void torture(TestHost& host, const std::string& what, const TorturePreparation& prepare,
             const TortureRules& rules, SourceLine line)
{
    const testing::ScopedTrace trace = line.trace(what);
    const Outcome faultless = observe(host, prepare, [] {});
    const int calls = host.faults().callCount();
    const std::vector<std::string> functions = host.lookups();
    const auto observeWithout = [&](const std::string& function) {
        const Outcome outcome = observe(host, prepare, [&] { host.setAbsent(function); });
        host.setAbsent(function, false);
        return outcome;
    };

    Verdict verdict{rules, faultless};
    verdict.expectHolds(faultless);
    host.expectBalanced("after the call");
    for (int n = 1; n <= calls; ++n)
    {
        const testing::ScopedTrace number = line.trace("call " + std::to_string(n) + " fails");
        const Outcome outcome = observe(host, prepare, [&] { host.faults().failAnyCall(n); });
        const testing::ScopedTrace call = line.trace(outcome.failed);
        ASSERT_FALSE(outcome.failed.empty()) << "the job makes other calls than before";
        if (!asksFor(outcome.failed, halvesOfPairs))
            host.expectBalanced("after the call");
        std::vector<Outcome> detours;
        for (const std::string& director : directors)
            if (concerns(outcome.failed, {director}))
                detours.push_back(observeWithout(director));
        verdict.expectHolds(outcome, detours);
        ++failurePoints().calls;
    }
    for (const std::string& function : functions)
    {
        if (function == indispensable || host.options().absent.contains(function))
            continue;
        const testing::ScopedTrace missing = line.trace("without " + function);
        Outcome outcome = observeWithout(function);
        outcome.failed = lookUpOf(function);
        if (!halvesOfPairs.contains(function))
            host.expectBalanced("after the call");
        // Another way is as good as the usual one.
        if (!directors.contains(function))
            verdict.expectHolds(outcome);
        ++failurePoints().functions;
    }
    host.rewind();
}

void torture(const HostSetup& setup, const std::vector<TortureSource>& sources, const TortureJob& job,
             const TortureRules& rules, SourceLine line)
{
    TestHost host{setup, line};
    std::string storages = "sources in";
    for (const TortureSource& source : sources)
        storages += " " + std::string(nameOf(source.storage));
    torture(
        host, storages,
        [&](TestHost& used) {
            auto pictures = std::make_shared<std::vector<standin::Picture>>();
            for (const TortureSource& source : sources)
                pictures->push_back(upload(used, source.picture, source.storage));
            return TortureRun{[&used, &job, pictures] { return job(used, *pictures); }, *pictures, {}};
        },
        rules, line);
}

void torture(const std::vector<HostSetup>& setups, const std::vector<reference::Picture>& pictures,
             const TortureJob& job, const TortureRules& rules, SourceLine line)
{
    for (const HostSetup& setup : setups)
    {
        const std::vector<standin::Storage> storages = sourceStorages(setup);
        for (std::size_t round = 0; round < (pictures.empty() ? 1 : storages.size()); ++round)
        {
            std::vector<TortureSource> sources;
            for (std::size_t i = 0; i < pictures.size(); ++i)
                sources.push_back({pictures[i], storages[(round + i) % storages.size()]});
            torture(setup, sources, job, rules, line);
        }
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

reference::Picture pictureToTorture(std::uint32_t seed, Palette palette)
{
    Random random{seed};
    return randomPicture(random, 9, 3, palette);
}
