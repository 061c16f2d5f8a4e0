#pragma once

#include <gtest/gtest.h>

#include <string>

/// A line of a test. Helpers take the line that called them as their last parameter, which nobody passes, so
/// that a failure names the test's line and not their own.
struct SourceLine
{
    static constexpr SourceLine here(const char* file = __builtin_FILE(), int number = __builtin_LINE())
    {
        return {file, number};
    }

    /// Adds this line to all failures for as long as the result lives.
    testing::ScopedTrace trace(const std::string& what) const
    {
        return {file, number, what};
    }

    const char* file;
    int number;
};
