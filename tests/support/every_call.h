/// \file
/// Calls of everything that the plug-in has registered.
#pragma once

#include "tests/reference/picture.h"
#include "tests/support/test_host.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// Does a call, whose declaration is for messages, and gives its result.
using AroundCall =
    std::function<standin::Value(const std::string& call, const std::function<standin::Value()>& job)>;

/// Calls every method, assigns to every assignable one, and sets, runs and closes every filter, with `source`
/// as every picture and with arguments that lead into the loops. What each call gave, and what it left in
/// variables and properties, is its second text, pixels and all.
std::vector<std::pair<std::string, std::string>> outcomesOfEveryCall(
    TestHost& host, const reference::Picture& source,
    const AroundCall& around = [](const std::string&, const auto& job) { return job(); });
