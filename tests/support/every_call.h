/// \file
/// Every call that the plug-in has registered, with arguments and outcomes for tests.
#pragma once

#include "host/every_call.h"
#include "tests/reference/picture.h"
#include "tests/support/test_host.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

using standin::everyCall;
using standin::PreparedCall;
using standin::RegisteredCall;

/// Arguments that lead into the loops, with every picture made by `makePicture`.
class TellingArguments
{
public:
    using PictureMaker =
        std::function<standin::Picture(standin::Host&, const reference::Picture& pixels, int position)>;

    /// `source` is at least 6 x 4.
    explicit TellingArguments(reference::Picture source, PictureMaker pictureMaker = {});
    standin::Value operator()(standin::Host& host, const std::string& name, standin::Type type,
                              int position) const;

private:
    reference::Picture pixels;
    PictureMaker makePicture;
};

/// A value as text, pixels and all.
std::string outcomeText(const standin::Value& value);
std::string outcomeText(const reference::Picture& picture);

/// Does a call, whose declaration is for messages, and gives its result.
using AroundCall =
    std::function<standin::Value(const std::string& call, const std::function<standin::Value()>& job)>;

/// Does every call with `source` as every picture and with telling arguments. What each call gave, and what
/// it left in variables and properties, is its second text.
std::vector<std::pair<std::string, std::string>> outcomesOfEveryCall(
    TestHost& host, const reference::Picture& source,
    const AroundCall& around = [](const std::string&, const auto& job) { return job(); });
