/// \file
/// What holds for many operations alike: which sizes they take, what they give when the host lets them down,
/// and that they compute the same everywhere.
#pragma once

#include "tests/support/pictures.h"
#include "tests/support/torture.h"

#include <functional>
#include <string>
#include <vector>

/// Calls an operation on a picture, as source for all that it needs, and gives its result.
using SourceJob = std::function<standin::Value(TestHost&, const standin::Picture&)>;

/// The storages whose pixels the plug-in locks in place on this host.
std::vector<standin::Storage> lockableStorages(const TestHost& host);

/// Ways in which a picture of this host can be broken so that it cannot be opened, from the first step to the
/// last.
std::vector<standin::PictureQuirks> waysToBreak(const TestHost& host);
/// The last of them, for tests to which all are the same.
standin::PictureQuirks broken(const TestHost& host);

/// Makes a picture for a test: `make(random, width, height)`.
using PictureMaker = std::function<reference::Picture(Random&, int, int)>;

/// Runs `test(host, source, random)` on random pictures: all sizes worth testing, all storages of all hosts,
/// all loops.
template <class Test>
void forEachSource(standin::Artefact artefact, Test test,
                   const PictureMaker& make = randomPictureOfAnyPalette, SourceLine line = SourceLine::here())
{
    std::uint32_t seed = 1;
    forEachHostAndLoop(
        artefact,
        [&](TestHost& host) {
            for (const standin::Storage storage : sourceStorages(host))
            {
                Random random{++seed};
                for (const auto& [width, height] : testSizes())
                {
                    // A picture that is drawn into a copy takes the same path as one that is locked.
                    if (width % 3 != 0 && !isLockable(storage))
                        continue;
                    test(host, upload(host, make(random, width, height), storage), random);
                    ASSERT_FALSE(testing::Test::HasFailure())
                        << sizeText(width, height) << " in " << nameOf(storage);
                }
            }
        },
        line);
}

/// 32767 columns or rows work; 32768 of them, and none, give `clean`, on all hosts.
void expectSizeLimits(standin::Artefact artefact, const SourceJob& job, const standin::Value& clean = nullptr,
                      SourceLine line = SourceLine::here());

/// The job gives `clean`, without exception, on pictures that cannot be opened, where the result picture
/// cannot be made or opened, and where the host lacks what that needs.
void expectCleanFailures(standin::Artefact artefact, const SourceJob& job,
                         const standin::Value& clean = nullptr, SourceLine line = SourceLine::here());

/// A method that makes a picture of another: it keeps to the limits of size, fails cleanly, and makes nothing
/// of nil.
void expectLimitsOfMethod(standin::Artefact artefact, const std::string& method,
                          const standin::Arguments& arguments = {}, SourceLine line = SourceLine::here());

/// The job's picture is `wanted(source)` on hosts of all versions and kinds.
void expectSameOnAllVersions(standin::Artefact artefact, const SourceJob& job,
                             const std::function<reference::Picture(const reference::Picture&)>& wanted,
                             SourceLine line = SourceLine::here());

/// The call raised "NilObjectException" with this message and the error number 0, and gave nil.
void expectNilObjectException(const standin::Value& result, const std::string& message,
                              SourceLine line = SourceLine::here());
