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

/// Runs `test(host, source, random)` on random pictures: all sizes worth testing, all storages of all hosts,
/// all loops.
template <class Test>
void forEachSource(standin::Artefact artefact, Test test)
{
    std::uint32_t seed = 1;
    forEachHostAndLoop(artefact, [&](TestHost& host) {
        for (const standin::Storage storage : sourceStorages(host))
        {
            Random random{++seed};
            for (const auto& [width, height] : testSizes())
            {
                // A picture that is drawn into a copy takes the same path as one that is locked.
                if (width % 3 != 0 && storage != lockableStorages(host).front())
                    continue;
                test(host, upload(host, randomPictureOfAnyPalette(random, width, height), storage), random);
                if (testing::Test::HasFailure())
                    return;
            }
        }
    });
}

/// 32767 columns or rows work; 32768 of them, and none, give `clean`, on all hosts.
void expectSizeLimits(standin::Artefact artefact, const SourceJob& job,
                      const standin::Value& clean = nullptr);

/// The job gives `clean`, without exception, on pictures that cannot be opened, where the result picture
/// cannot be made or opened, and where the host lacks what that needs.
void expectCleanFailures(standin::Artefact artefact, const SourceJob& job,
                         const standin::Value& clean = nullptr);

/// The job's picture is `wanted(source)` on hosts of all versions and kinds.
void expectSameOnAllVersions(standin::Artefact artefact, const SourceJob& job,
                             const std::function<reference::Picture(const reference::Picture&)>& wanted);

/// Whether a result is nil, or the false, 0 or -1 that `clean` is.
bool isClean(const standin::Value& result, const standin::Value& clean);

/// The call raised "NilObjectException" with this message and the error number 0, and gave nil.
void expectNilObjectException(const standin::Value& result, const std::string& message);
