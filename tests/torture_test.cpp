// Everything that the plug-in has registered, let down at every point by hosts of all kinds.
#include "tests/reference/scrolling.h"
#include "tests/support/every_call.h"
#include "tests/support/torture.h"

#include <iostream>
#include <string>
#include <vector>

namespace
{

using standin::Kind;
using standin::Storage;
using standin::Type;
using standin::Value;

/// A picture that holds the small one sought in it, among few colours.
reference::Picture pixelsToTorture()
{
    Random random{7};
    reference::Picture pixels = randomPicture(random, 6, 4, Palette::Few);
    for (const auto& [x, y] : {std::pair{2, 1}, {3, 1}, {2, 2}, {3, 2}})
        pixels.at(x, y) = pixels.at(0, 0);
    return pixels;
}

Value cleanResult(const RegisteredCall& call)
{
    switch (call.result)
    {
    case Type::Boolean:
        return false;
    case Type::Integer:
        return 0;
    case Type::Double:
        return 0.0;
    default:
        return nullptr;
    }
}

/// Rotating in both directions is two steps, and the first one does not say whether it was done.
std::set<std::string> stepsOfScrolling(TestHost& host, const reference::Picture& pixels, Storage storage)
{
    constexpr int delta = 2;
    const reference::Picture stored = download(upload(host, pixels, storage));
    return {outcomeText(reference::rotateHorizontally(stored, delta)),
            outcomeText(reference::rotateVertically(stored, delta))};
}

/// Every picture but the first one is in another storage, so that locked and drawn ones meet.
void tortureCall(TestHost& host, const RegisteredCall& call, const reference::Picture& pixels,
                 const std::vector<Storage>& storages)
{
    const auto prepare = [&](TestHost& used) {
        TortureRun run;
        const TellingArguments arguments{
            pixels, [&](standin::Host& maker, const reference::Picture& picture, int) {
                run.sources.push_back(upload(maker, picture, storages[run.sources.size() % storages.size()]));
                return run.sources.back();
            }};
        PreparedCall prepared = call.prepare(used, arguments);
        run.job = std::move(prepared.run);
        run.leavings = std::move(prepared.leavings);
        return run;
    };
    // A waveform's outline may come out in another colour or width.
    TortureRules rules{
        .cleanResult = cleanResult(call),
        .alsoSpoil = {"REALSetPropValueUInt32", "REALSetPropValueInt", "RuntimeGraphicsDrawLine"},
        .mayLeave = {}};
    if (call.text.starts_with("ScrollQVR("))
        rules.mayLeave = stepsOfScrolling(host, pixels, storages.front());
    torture(host, call.text + ", first picture in " + std::string(nameOf(storages.front())), prepare, rules);
}

class Torture : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(Torture);

/// A host, and the storages of the pictures that it passes.
struct Situation
{
    HostSetup setup;
    std::vector<Storage> storages;
};

/// Every picture but the first one is in another storage, so that locked and drawn ones meet.
std::vector<Storage> storagesFrom(std::size_t first)
{
    const auto& storages = standin::all<Storage>;
    return {storages[first], storages[(first + 1) % std::size(storages)]};
}

/// All kinds of hosts with all storages of sources and new pictures. Those that no new picture can be opened
/// in take turns, and so do the versions.
std::vector<Situation> everySituation(standin::Artefact artefact)
{
    const std::vector<Storage> closed = storagesThat([](Storage storage) { return !isLockable(storage); });
    std::vector<Storage> open = storagesThat(isLockable);
    std::vector<Situation> situations;
    std::size_t turn = 0;
    for (const Kind kind : standin::all<Kind>)
        for (std::size_t first = 0; first < std::size(standin::all<Storage>); ++first)
        {
            std::vector<Storage> newStorages = open;
            newStorages.push_back(closed[turn % closed.size()]);
            for (const Storage newStorage : newStorages)
                situations.push_back({hostSetup(artefact, kind)
                                          .newPictures(newStorage)
                                          .version(hostVersions[turn++ % std::size(hostVersions)]),
                                      storagesFrom(first)});
        }
    return situations;
}

/// Hosts of the known kinds in all versions, with pictures as they make them.
std::vector<Situation> everyVersion(standin::Artefact artefact)
{
    std::vector<Situation> situations;
    for (const Kind kind : {Kind::Desktop, Kind::Console, Kind::Web})
        for (const double version : hostVersions)
        {
            const HostSetup setup = hostSetup(artefact, kind).version(version);
            situations.push_back({setup, {setup.options.storageOfNewPictures()}});
        }
    return situations;
}

/// Under the sanitizers, where everything takes many times as long, one situation of several: every call is
/// still made to fail.
void tortureEverything(std::vector<Situation> situations, std::size_t sanitizedStep)
{
    const reference::Picture pixels = pixelsToTorture();
    for (std::size_t i = 0; i < situations.size(); i += sanitized ? sanitizedStep : 1)
    {
        TestHost host{situations[i].setup};
        for (const RegisteredCall& call : everyCall(host.registered()))
            tortureCall(host, call, pixels, situations[i].storages);
    }
}

TEST_P(Torture, EveryCallOnEveryHost)
{
    tortureEverything(everySituation(artefact()), 11);
}

TEST_P(Torture, EveryCallInEveryVersion)
{
    tortureEverything(everyVersion(artefact()), 7);
}

} // namespace
