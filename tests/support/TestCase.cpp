// SPDX-License-Identifier: MIT
// Cases are found by walking the folder; everything else follows from names.
#include "support/TestCase.h"

#include "support/Files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <ostream>

namespace telv::test
{
namespace
{

namespace fs = std::filesystem;

std::string MakeId(std::string path)
{
    std::replace_if(
        path.begin(), path.end(),
        [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return path;
}

TestCase MakeCase(const fs::path& root, const fs::path& file)
{
    TestCase testCase;
    testCase.path = fs::relative(file, root).replace_extension().generic_string();
    testCase.id = MakeId(testCase.path);
    testCase.directory = file.parent_path().string();
    testCase.name = file.filename().string();
    return testCase;
}

bool IsProjectFile(const fs::path& file)
{
    return file.extension() == ".mpfw";
}

bool IsBelow(const TestCase& testCase, const std::string& folder)
{
    return testCase.path.starts_with(folder + "/");
}

} // namespace

std::string TestCase::File(const std::string& suffix) const
{
    return (fs::path(directory) / name).replace_extension().string() + suffix;
}

void PrintTo(const TestCase& testCase, std::ostream* os)
{
    *os << testCase.path;
}

bool IsProject(const TestCase& testCase)
{
    return IsProjectFile(testCase.name);
}

std::vector<TestCase> FindCases(const std::string& root)
{
    std::vector<TestCase> cases;
    for (fs::recursive_directory_iterator i(root), end; i != end; ++i)
    {
        if (i->is_directory() && i->path().extension() == ".d")
            i.disable_recursion_pending();
        else if (i->is_regular_file() &&
                 (i->path().extension() == ".tl" || IsProjectFile(i->path())))
            cases.push_back(MakeCase(root, i->path()));
    }
    std::sort(cases.begin(), cases.end(),
              [](const TestCase& a, const TestCase& b) { return a.path < b.path; });
    return cases;
}

Expectation ReadExpectation(const TestCase& testCase)
{
    const char* const output = IsProject(testCase) ? ".json" : ".out";
    return {ReadFile(testCase.File(output)), ReadFile(testCase.File(".err")),
            ReadFile(testCase.File(".map")), ReadFile(testCase.File(".print")),
            ReadFile(testCase.File(".warn"))};
}

std::vector<std::string> ReadArguments(const TestCase& testCase)
{
    std::vector<std::string> arguments;
    if (IsProject(testCase))
        arguments.push_back("project");
    std::string text = ReadFile(testCase.File(".args")).value_or("");
    while (!text.empty())
    {
        const size_t end = std::min(text.find('\n'), text.size());
        arguments.push_back(text.substr(0, end));
        text.erase(0, end + 1);
    }
    return arguments;
}

bool RunsInLibrary(const TestCase& testCase)
{
    if (IsProject(testCase) || IsBelow(testCase, "python") || fs::exists(testCase.File(".args")) ||
        fs::exists(testCase.File(".print")) || fs::exists(testCase.File(".d")))
        return false;
    const std::string source = ReadFile(testCase.File(".tl")).value_or("");
    return source.find("import") == std::string::npos && source.find("python") == std::string::npos;
}

bool RunsInThisBuild(const TestCase& testCase)
{
    if (TELV_HAS_PYTHON != 0 || !IsBelow(testCase, "python"))
        return true;
    const std::vector<std::string> arguments = ReadArguments(testCase);
    return std::find(arguments.begin(), arguments.end(), "--no-python") != arguments.end();
}

std::string FindContradiction(const Expectation& expectation)
{
    if (!expectation.out && !expectation.err)
        return "there is neither .out nor .err";
    if (expectation.out && expectation.err)
        return "there are both .out and .err";
    if (expectation.map && expectation.err)
        return "there are both .map and .err";
    if (expectation.warn && expectation.err)
        return "there are both .warn and .err";
    return "";
}

std::string CommandFor(const TestCase& testCase)
{
    const std::string build = fs::path(TELV_TLEXPAND_PATH).parent_path().string();
    return build + "/case_runner --gtest_filter='*/" + testCase.id + "'";
}

} // namespace telv::test
