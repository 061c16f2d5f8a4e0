/// \file
/// Hosts for tests: every test runs on every artefact, names the hosts it wants, and leaves the ledger
/// balanced.
///
///     class Inversion : public ArtefactTest {};
///     ON_EVERY_ARTEFACT(Inversion);
///
///     TEST_P(Inversion, InvertsEveryChannel)
///     {
///         forEachHost(artefact(), [](TestHost& host) {
///             // In the storage that new pictures have on this host.
///             standin::Picture photo = host.newPicture(2, 2);
///             ...
///         });
///     }
#pragma once

#include "host/host.h"
#include "tests/support/printing.h"
#include "tests/support/source_line.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "build_info.h"

/// A host to be made, and what messages call it.
struct HostSetup
{
    std::string name;
    standin::Options options;
    /// Values for the variables that the plug-in has for tests, by their names in the symbol table.
    std::map<std::string, std::int32_t> variables;

    /// The same host with one thing changed.
    HostSetup version(double hostVersion) const;
    HostSetup newPictures(standin::Storage storage) const;
    /// The plug-in's vector loops take `limit` pixels at a time: 4, or 8 (where the processor can).
    HostSetup lanes(int limit) const;
    /// The plug-in stores results of any size around the cache, as it does with large ones.
    HostSetup streamed() const;
    /// Pictures have rows of all alignments: padded by nothing, 1, 3 and 12 bytes, in an order that depends
    /// on `turn`.
    HostSetup oddRows(int turn) const;
    /// With a log of the plug-in's calls.
    HostSetup logged() const;
    /// Without some host functions, or methods loaded by declaration.
    HostSetup without(const std::set<std::string>& functions) const;
};

/// The shared object of this build, or the one that the environment variable PICTUREQVR_SHARED_OBJECT names.
std::string sharedObjectToTest();

/// How many pixels at a time the plug-in's loops can take on this processor: 4, and 8 where it has AVX2.
const std::vector<int>& laneCounts();

/// Host of a kind in the newest version, made of `artefact`. Its new pictures start with
/// `reference::untouched` pixels.
HostSetup hostSetup(standin::Artefact artefact, standin::Kind kind = standin::Kind::Desktop);

/// The hosts that differ in how pictures are locked: a desktop with 32-bit GWorlds, one with 24-bit GWorlds,
/// a console and a web application with memory bitmaps.
std::vector<HostSetup> hostSetups(standin::Artefact artefact);

/// Whether this build is an instrumented one, in which everything takes many times as long.
#if __has_feature(address_sanitizer)
inline constexpr bool sanitized = true;
#else
inline constexpr bool sanitized = false;
#endif

/// A number of rounds, or a length, that takes a fitting time in this build.
constexpr int affordable(int number)
{
    return sanitized ? number / 5 : number;
}

/// Versions right below every threshold, at it and far from it.
inline constexpr double hostVersions[] = {2010.0,   2010.0289, 2010.029, 2011.999, 2012.0,
                                          2012.999, 2013.0,    2013.029, 2013.03,  2019.1};

/// A host that checks its ledger when it ends, and speaks of its setup in every failure while it is current.
class TestHost : public standin::Host
{
public:
    explicit TestHost(const HostSetup& hostSetup, SourceLine line = SourceLine::here());
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    /// As a fresh host with this setup.
    void rewind();
    const HostSetup& setup() const
    {
        return hostSetup;
    }
    /// The storage of pictures that the plug-in makes here.
    standin::Storage newStorage() const;
    /// Fails the test now when something is outstanding or went wrong; `when` is for the message.
    void expectBalanced(const std::string& when) const;
    /// Lets the destructor be silent, for tests that provoke an imbalance.
    void ignoreLedger()
    {
        ledgerIgnored = true;
    }
    /// The names of the plug-in's calls, in their order, without arguments.
    std::vector<std::string> callNames() const;
    /// How many calls have this name, or start with this text where it has a parenthesis:
    /// "LockPixels(picture#1".
    int callsOf(const std::string& start) const;

private:
    void setVariables();

    HostSetup hostSetup;
    testing::ScopedTrace trace;
    bool ledgerIgnored = false;
};

/// Base of all test suites that load the plug-in.
class ArtefactTest : public testing::TestWithParam<standin::Artefact>
{
protected:
    static standin::Artefact artefact()
    {
        return GetParam();
    }
};

/// The bundle when this build has one; under the sanitizers there is only the shared object.
std::vector<standin::Artefact> bundlesOfThisBuild();

/// Runs a suite on the shared object and on the bundle, each as a CTest entry of its own.
#define ON_EVERY_ARTEFACT(Suite)                                                                             \
    INSTANTIATE_TEST_SUITE_P(SharedObject, Suite, testing::Values(standin::Artefact::SharedObject),          \
                             [](const auto& info) { return std::string(nameOf(info.param)); });              \
    INSTANTIATE_TEST_SUITE_P(MacBundle, Suite, testing::ValuesIn(bundlesOfThisBuild()),                      \
                             [](const auto& info) { return std::string(nameOf(info.param)); })

/// Makes each of the four hosts, with rows of all alignments, runs `test(TestHost&)` on it and checks the
/// ledger.
template <class Test>
void forEachHost(standin::Artefact artefact, Test test, SourceLine line = SourceLine::here())
{
    int turn = 0;
    for (const HostSetup& setup : hostSetups(artefact))
    {
        TestHost host{setup.oddRows(turn++), line};
        test(host);
    }
}

/// The same with each of the plug-in's loops: over 4 pixels at a time and over 8, storing through the cache
/// and around it. Each host meets every order of the alignments once.
template <class Test>
void forEachHostAndLoop(standin::Artefact artefact, Test test, SourceLine line = SourceLine::here())
{
    int turn = 0;
    for (const int lanes : laneCounts())
        for (const bool streamed : {false, true})
        {
            for (const HostSetup& setup : hostSetups(artefact))
            {
                const HostSetup withLanes = setup.lanes(lanes).oddRows(turn);
                TestHost host{streamed ? withLanes.streamed() : withLanes, line};
                test(host);
            }
            ++turn;
        }
}

/// The same in every version.
template <class Test>
void forEachHostVersion(standin::Artefact artefact, Test test, SourceLine line = SourceLine::here())
{
    for (const HostSetup& setup : hostSetups(artefact))
        for (const double version : hostVersions)
        {
            TestHost host{setup.version(version), line};
            test(host);
        }
}
