/// \file
/// Tells which instructions of the loaded plug-in are reached.
#pragma once

#include "tests/support/test_host.h"

#include <cstdint>
#include <set>
#include <vector>

/// Breakpoints in the plug-in of a host. One watch at a time; the host must outlive it.
class Watch
{
public:
    /// `addresses` of instructions, in the file's own numbering.
    Watch(TestHost& host, const std::vector<std::uint32_t>& addresses);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// Those of the addresses that the plug-in reaches while it does the job.
    template <class Job>
    std::set<std::uint32_t> reached(Job job)
    {
        arm();
        job();
        return disarm();
    }

private:
    void arm();
    std::set<std::uint32_t> disarm();

    std::uint32_t distance = 0; ///< from the file's numbering to where the plug-in lies
};
