// SPDX-License-Identifier: MIT
// The command line is the case's own arguments, then --map, then the name of the source. What the
// source prints goes where the expansion does not: to standard error, or to standard output when
// the expansion has a file.
#include "support/ToolRun.h"

#include "support/Files.h"
#include "support/TempDir.h"
#include "support/VisibleDiff.h"

namespace telv::test
{
namespace
{

constexpr const char* s_outPlaceholder = "{out}";

void AddDifference(std::string& report, const std::string& what, const std::string& expected,
                   const std::string& actual)
{
    if (expected == actual)
        return;
    report += what + " (- expected, + actual):\n" + VisibleDiff(expected, actual);
}

void CompareEnd(const ToolRun& run, int status, std::string& report)
{
    if (run.program.status != status)
        report += "expected exit status " + std::to_string(status) + ", got " +
                  DescribeEnd(run.program) + "\n";
}

void CompareSuccess(const ToolRun& run, const Expectation& expectation, std::string& report)
{
    CompareEnd(run, 0, report);
    AddDifference(report, "expansion", *expectation.out, run.Expansion());
    const std::string print = expectation.print.value_or("");
    const std::string warn = expectation.warn.value_or("");
    if (run.hasOutputFile)
        AddDifference(report, "printed text", print, run.program.out);
    AddDifference(report, "standard error", run.hasOutputFile ? warn : print + warn,
                  run.program.err);
    if (expectation.map)
        AddDifference(report, "map", *expectation.map, run.map.value_or("(no map was written)"));
}

void CompareFailure(const ToolRun& run, const Expectation& expectation, std::string& report)
{
    CompareEnd(run, 1, report);
    const std::string print = expectation.print.value_or("");
    const std::string& err = *expectation.err;
    AddDifference(report, "standard output", run.hasOutputFile ? print : "", run.program.out);
    AddDifference(report, "standard error", run.hasOutputFile ? err : print + err, run.program.err);
    if (run.outputFile)
        report += "an output file was left behind\n";
}

} // namespace

std::string ToolRun::Expansion() const
{
    return hasOutputFile ? outputFile.value_or("(no output file was written)") : program.out;
}

ToolRun RunTool(const TestCase& testCase, bool wantMap)
{
    const TempDir temp;
    const std::string outPath = temp.Path("out");
    const std::string mapPath = temp.Path("map");

    ToolRun run;
    std::vector<std::string> argv{TELV_TLEXPAND_PATH};
    for (const std::string& argument : ReadArguments(testCase))
    {
        const bool isFile = argument == s_outPlaceholder;
        run.hasOutputFile = run.hasOutputFile || isFile;
        argv.push_back(isFile ? outPath : argument);
    }
    if (wantMap)
        argv.insert(argv.end(), {"--map", mapPath});
    argv.push_back(testCase.name);

    ProgramOptions options;
    options.directory = testCase.directory;
    run.program = RunProgram(argv, options);
    run.outputFile = ReadFile(outPath);
    run.map = ReadFile(mapPath);
    return run;
}

std::string CompareToolRun(const ToolRun& run, const Expectation& expectation)
{
    std::string report;
    if (expectation.out)
        CompareSuccess(run, expectation, report);
    else
        CompareFailure(run, expectation, report);
    return report;
}

} // namespace telv::test
