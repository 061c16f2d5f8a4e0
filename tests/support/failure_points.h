/// \file
/// How many ways to fail the tests have tried. A suite that tries fewer than before has lost some of them.
#pragma once

#include <gtest/gtest.h>

/// How often the plug-in was let down by now in this process.
struct FailurePoints
{
    int calls = 0;     ///< that were made to fail
    int functions = 0; ///< that were missing
};
FailurePoints& failurePoints();

/// Prints the failure points of every suite that has some, and compares them with what they should be where
/// all of its tests have passed.
class FailurePointCheck : public testing::EmptyTestEventListener
{
public:
    /// Whether a suite had another number.
    bool failed() const
    {
        return wrong;
    }

private:
    void OnTestSuiteStart(const testing::TestSuite& suite) override;
    void OnTestSuiteEnd(const testing::TestSuite& suite) override;

    FailurePoints before;
    bool wrong = false;
};
