// SPDX-License-Identifier: MIT
// The tool's streams are taken apart in the opposite way to that in which they are compared. When a
// run fails, what was printed ends where the diagnostic begins: at the first line "PATH(N) :
// error", or at the first warning.
#include "support/UpdateCase.h"

#include "support/Files.h"
#include "support/ToolRun.h"
#include "support/VisibleDiff.h"

#include <cstdio>
#include <regex>

namespace telv::test
{
namespace
{

/// Where the diagnostic begins in standard error; its size when there is none.
size_t FindDiagnostic(const std::string& err)
{
    static const std::regex s_start("(^|\n)[^\n]*\\([0-9]+\\) : (error|warning) : ");
    std::smatch match;
    if (!std::regex_search(err, match, s_start))
        return err.size();
    const auto start = static_cast<size_t>(match.position(0));
    return err[start] == '\n' ? start + 1 : start;
}

std::optional<std::string> NothingIfEmpty(const std::string& text)
{
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

Expectation TakeExpectation(const ToolRun& run)
{
    Expectation taken;
    if (run.program.status == 0)
    {
        taken.out = run.Expansion();
        taken.map = run.map;
        const size_t start = run.hasOutputFile ? 0 : FindDiagnostic(run.program.err);
        taken.warn = NothingIfEmpty(run.program.err.substr(start));
        taken.print =
            NothingIfEmpty(run.hasOutputFile ? run.program.out : run.program.err.substr(0, start));
        return taken;
    }
    const size_t start = run.hasOutputFile ? 0 : FindDiagnostic(run.program.err);
    taken.err = run.program.err.substr(start);
    taken.print =
        NothingIfEmpty(run.hasOutputFile ? run.program.out : run.program.err.substr(0, start));
    return taken;
}

void UpdateFile(const std::string& path, const std::optional<std::string>& before,
                const std::optional<std::string>& now, std::string& report)
{
    if (before == now)
        return;
    report += path + (now ? before ? ":\n" : " is new:\n" : " goes:\n");
    report += VisibleDiff(before.value_or(""), now.value_or(""));
    if (now)
        WriteFile(path, *now);
    else
        std::remove(path.c_str());
}

} // namespace

bool UpdateCase(const TestCase& testCase, std::string& report)
{
    const Expectation before = ReadExpectation(testCase);
    const ToolRun run = RunTool(testCase, before.map.has_value());
    if (run.program.status != 0 && run.program.status != 1)
    {
        report += testCase.path + ": " + DescribeEnd(run.program) + "\n" + run.program.err;
        return false;
    }
    const Expectation now = TakeExpectation(run);
    UpdateFile(testCase.File(".out"), before.out, now.out, report);
    UpdateFile(testCase.File(".err"), before.err, now.err, report);
    UpdateFile(testCase.File(".map"), before.map, now.map, report);
    UpdateFile(testCase.File(".print"), before.print, now.print, report);
    UpdateFile(testCase.File(".warn"), before.warn, now.warn, report);
    return true;
}

} // namespace telv::test
