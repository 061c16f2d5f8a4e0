#include "tests/support/failure_points.h"

#include "tests/support/test_host.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

namespace
{

/// A new method or a new call makes these larger. Nothing should make them smaller.
struct Expected
{
    std::string_view suite;
    int points;
    int sanitizedPoints;
};
constexpr Expected everySuite[] = {
    {"BinaryString", 3332, 3332}, {"ColourTransform", 540, 540}, {"Editor", 521, 521},
    {"FindPicture", 478, 478},    {"Region", 1448, 1448},        {"Scrolling", 888, 888},
    {"Torture", 125915, 14552},   {"Waveform", 386, 386},
};

int wantedPoints(std::string_view suite)
{
    const auto found = std::find_if(std::begin(everySuite), std::end(everySuite),
                                    [suite](const Expected& row) { return row.suite == suite; });
    if (found == std::end(everySuite))
        return 0;
    return sanitized ? found->sanitizedPoints : found->points;
}

} // namespace

FailurePoints& failurePoints()
{
    static FailurePoints points;
    return points;
}

void FailurePointCheck::OnTestSuiteStart(const testing::TestSuite&)
{
    before = failurePoints();
}

void FailurePointCheck::OnTestSuiteEnd(const testing::TestSuite& suite)
{
    const int calls = failurePoints().calls - before.calls;
    const int functions = failurePoints().functions - before.functions;
    const int points = calls + functions;
    const std::string name = suite.name();
    if (points > 0)
        std::cout << points << " failure points in " << name << ": " << calls << " calls failed, "
                  << functions << " functions were missing\n";
    const int wanted = wantedPoints(name.substr(name.rfind('/') + 1));
    if (points == wanted || suite.successful_test_count() != suite.total_test_count())
        return;
    std::cout << name << " should have " << wanted
              << " failure points; tests/support/failure_points.cpp holds the numbers\n";
    wrong = true;
}
