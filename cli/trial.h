/// \file
/// Tries a plug-in that may be broken: all that runs of it runs in processes of its own.
#pragma once

#include "host/host.h"

#include <functional>
#include <string>
#include <vector>

namespace cli
{

/// Something wrong, and where it has shown.
struct Finding
{
    std::string subject; ///< a declaration, or what was being done
    std::string fault;
    std::vector<std::string> places; ///< "console 2013.03, bitmap"
};

/// What became of a trial.
struct TrialResult
{
    int hosts = 0;
    int calls = 0;
    std::vector<Finding> findings;
};

/// Is told on how many hosts it has been tried.
using TrialProgress = std::function<void(std::size_t hosts)>;

/// How a plug-in is tried.
struct TrialPlan
{
    std::vector<standin::Options> hosts;
    std::vector<std::string> catalogue; ///< what is to be registered
    unsigned patience = 0;              ///< seconds after which a call is taken to run for ever
};

/// Registers the plug-in on each host, compares with the catalogue, and makes every call once on pictures of
/// each storage. What has ended a process is not called again.
TrialResult tryPlugin(const TrialPlan& plan, const TrialProgress& progress);

} // namespace cli
