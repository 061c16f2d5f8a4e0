/// \file
/// The same work on many files, each in a process of its own: the plug-in has no threads, and what ends one
/// process leaves the others alone.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace cli
{

struct Job
{
    std::string name; ///< the file that it is about, for messages
    /// Runs in a copy of this process; what it prints comes out in the order of the jobs. Throws
    /// standin::Error.
    std::function<void()> work;
};

/// Runs jobs, some at a time: 0 for as many as there are processors. Each that fails is told in one line on
/// stderr, and the others go on; throws standin::Error in the end when any has failed. A bar shows how far it
/// is, on a terminal and unless quiet.
void runJobs(const std::vector<Job>& jobs, unsigned atATime, bool quiet);

} // namespace cli
