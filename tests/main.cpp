// Runs the tests that GoogleTest's own options choose, or the suites named on the command line: a word
// chooses every suite with it in its name, whatever the case, and with or without underscores. Choosing none
// is a mistake, not a success. ASSERT_... ends the whole test, from whatever function or loop it stands in.
#include "host/names.h"
#include "tests/support/failure_points.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <malloc.h>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace
{

constexpr int usage = 2;

std::string folded(std::string_view name)
{
    std::string result = standin::lowerCase(name);
    std::erase(result, '_');
    return result;
}

class EndTestAtFatalFailure : public testing::EmptyTestEventListener
{
    void OnTestPartResult(const testing::TestPartResult& result) override
    {
        if (result.fatally_failed())
            throw testing::AssertionException(result);
    }
};

/// "Inversion" of "MacBundle/Inversion".
std::string plainName(const testing::TestSuite& suite)
{
    const std::string name = suite.name();
    return name.substr(name.rfind('/') + 1);
}

std::vector<const testing::TestSuite*> allSuites()
{
    std::vector<const testing::TestSuite*> suites;
    const testing::UnitTest& program = *testing::UnitTest::GetInstance();
    for (int i = 0; i < program.total_test_suite_count(); ++i)
        suites.push_back(program.GetTestSuite(i));
    return suites;
}

/// The suites that may be meant, or all where none is like the word.
std::string nearNames(const std::string& word)
{
    std::set<std::string> names;
    for (const testing::TestSuite* suite : allSuites())
        names.insert(plainName(*suite));
    const std::vector<std::string> all(names.begin(), names.end());
    const std::vector<std::string> near = standin::namesLike(folded(word), all);
    return standin::listed(near.empty() ? all : near);
}

int complain(const std::string& what)
{
    std::cerr << "No test matches \"" << what << "\". Near: " << nearNames(what) << "\n";
    return usage;
}

/// The references' pictures come and go, and a 32-bit program gets anything of a megabyte anew from the
/// system, which takes longer than to compute what is in it.
void keepFreedMemory()
{
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
}

} // namespace

int main(int argc, char** argv)
{
    keepFreedMemory();
    testing::InitGoogleMock(&argc, argv);
    std::string filter;
    for (const std::string& word : std::vector<std::string>(argv + 1, argv + argc))
    {
        const std::size_t before = filter.size();
        for (const testing::TestSuite* suite : allSuites())
            if (folded(plainName(*suite)).find(folded(word)) != std::string::npos)
                filter += std::string(suite->name()) + ".*:";
        if (filter.size() == before)
            return complain(word);
    }
    if (!filter.empty())
        GTEST_FLAG_SET(filter, filter);

    testing::UnitTest& program = *testing::UnitTest::GetInstance();
    program.listeners().Append(new EndTestAtFatalFailure);
    auto* const failurePointCheck = new FailurePointCheck;
    program.listeners().Append(failurePointCheck);
    const int status = RUN_ALL_TESTS();
    if (!GTEST_FLAG_GET(list_tests) && program.test_to_run_count() == 0)
        return complain(GTEST_FLAG_GET(filter));
    return status != 0 ? status : failurePointCheck->failed() ? 1 : 0;
}
