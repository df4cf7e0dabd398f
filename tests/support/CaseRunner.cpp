// SPDX-License-Identifier: MIT
// Runs the language cases below tests/cases, each with the built tool and, where that makes sense,
// with the library in this process. Cases are found when the program starts; the name of a test is
// made from the case's path, so that --gtest_filter='*/loops_*' runs a folder.
//
//     case_runner [GoogleTest options]
//     case_runner --update PATH...    rewrite the expectations of cases (or whole folders)
#include "support/Files.h"
#include "support/LibraryRun.h"
#include "support/TestCase.h"
#include "support/ToolRun.h"
#include "support/UpdateCase.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>

namespace telv::test
{
namespace
{

const std::string s_root = TELV_SOURCE_DIR "/tests/cases";

template <class Predicate>
std::vector<TestCase> SelectCases(Predicate predicate)
{
    std::vector<TestCase> selected;
    for (const TestCase& testCase : FindCases(s_root))
    {
        if (RunsInThisBuild(testCase) && predicate(testCase))
            selected.push_back(testCase);
    }
    return selected;
}

std::string Failure(const TestCase& testCase, const std::string& report)
{
    return "tests/cases/" + testCase.path + ".tl\n" + report +
           "run only this case: " + CommandFor(testCase) + "\n";
}

class ToolCase : public testing::TestWithParam<TestCase>
{
};

class LibraryCase : public testing::TestWithParam<TestCase>
{
};

TEST_P(ToolCase, GivesWhatIsExpected)
{
    const TestCase& testCase = GetParam();
    const Expectation expectation = ReadExpectation(testCase);
    const std::string contradiction = FindContradiction(expectation);
    ASSERT_EQ(contradiction, "") << Failure(testCase, "");
    const ToolRun run = RunTool(testCase, expectation.map.has_value());
    const std::string report = CompareToolRun(run, expectation);
    if (!report.empty())
        ADD_FAILURE() << Failure(testCase, report);
}

TEST_P(LibraryCase, GivesWhatIsExpected)
{
    const TestCase& testCase = GetParam();
    const Expectation expectation = ReadExpectation(testCase);
    const std::string contradiction = FindContradiction(expectation);
    ASSERT_EQ(contradiction, "") << Failure(testCase, "");
    const std::string source = ReadFile(testCase.File(".tl")).value_or("");
    for (const LibraryRun& run : {RunLibrary(source), RunLibraryWithWarnings(source)})
    {
        const std::string report = CompareLibraryRun(run, testCase, expectation);
        if (!report.empty())
            ADD_FAILURE() << Failure(testCase, report);
    }
}

TEST_P(LibraryCase, IsTheSameObserved)
{
    const std::string source = ReadFile(GetParam().File(".tl")).value_or("");
    EXPECT_EQ(ObservationErrors(source), "") << Failure(GetParam(), "");
}

std::string NameOf(const testing::TestParamInfo<TestCase>& info)
{
    return info.param.id;
}

INSTANTIATE_TEST_SUITE_P(Cases, ToolCase,
                         testing::ValuesIn(SelectCases([](const TestCase&) { return true; })),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Cases, LibraryCase, testing::ValuesIn(SelectCases(RunsInLibrary)), NameOf);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ToolCase);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(LibraryCase);

/// "loops/empty_list" of any way to write it: with folders before it, ".tl" or a slash behind it.
std::string PlainPath(std::string path)
{
    const size_t root = path.rfind("cases/");
    if (root != std::string::npos)
        path.erase(0, root + 6);
    if (path.ends_with(".tl"))
        path.resize(path.size() - 3);
    while (path.ends_with("/"))
        path.pop_back();
    return path;
}

bool IsSelected(const TestCase& testCase, const std::string& path)
{
    return testCase.path == path || testCase.path.starts_with(path + "/");
}

int UpdateCases(const std::vector<std::string>& paths)
{
    bool good = true;
    for (const std::string& written : paths)
    {
        const std::string path = PlainPath(written);
        const std::vector<TestCase> cases =
            SelectCases([&](const TestCase& testCase) { return IsSelected(testCase, path); });
        if (cases.empty())
            std::printf("%s: no such case\n", written.c_str());
        good = good && !cases.empty();
        for (const TestCase& testCase : cases)
        {
            std::string report;
            good = UpdateCase(testCase, report) && good;
            std::fputs(report.c_str(), stdout);
        }
    }
    return good ? 0 : 1;
}

} // namespace
} // namespace telv::test

int main(int argc, char** argv)
{
    if (argc > 1 && std::string(argv[1]) == "--update")
        return telv::test::UpdateCases({argv + 2, argv + argc});
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    // A filter that selects nothing is a mistake: a case that was renamed, say.
    const int result = RUN_ALL_TESTS();
    const bool ran = testing::UnitTest::GetInstance()->test_to_run_count() > 0;
    if (!ran)
        std::fputs("no case was selected\n", stderr);
    return ran ? result : 1;
}
