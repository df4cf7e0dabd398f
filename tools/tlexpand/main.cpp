// SPDX-License-Identifier: MIT
// tlexpand: expands texts of the macro language from the command line.
//
// Here is what comes before and after the work: the environment that a caller may have left in any
// state, the choice of the command, and the exit status.
#include "BatchCommand.h"
#include "Cleanup.h"
#include "ExpandCommand.h"
#include "ExplainCommand.h"
#include "Files.h"
#include "LargeStack.h"
#include "ProjectCommand.h"
#include "RemapCommand.h"
#include "WhereCommand.h"
#include "options/Options.h"
#include "output/OutputFile.h"
#include "report/Diagnostics.h"
#include <cstring>
#include <new>

namespace telv::tool
{

namespace
{

int PrintAndSucceed(const std::string& text)
{
    WriteStandardOutput([&](ByteSink& sink) { sink.Write(text); });
    return 0;
}

/// Reads the options of a command and does what they ask for.
template <class Options>
int Run(int argc, char** argv, Options (*parse)(int, char**), std::string (*help)(),
        int (*run)(const Options&))
{
    const Options options = parse(argc, argv);
    if (options.m_help)
        return PrintAndSucceed(help());
    if (options.m_version)
        return PrintAndSucceed("tlexpand " TELV_VERSION "\n");
    return run(options);
}

int RunExpand(int argc, char** argv)
{
    return Run<ExpandOptions>(argc, argv, ParseExpandOptions, ExpandHelp,
                              [](const ExpandOptions& options) {
                                  return IsBatch(options) ? RunBatchCommand(options)
                                                          : RunExpandCommand(options);
                              });
}

int RunExplain(int argc, char** argv)
{
    return Run<ExpandOptions>(argc, argv, ParseExplainOptions, ExplainHelp,
                              [](const ExpandOptions& options) {
                                  return options.m_fromMap ? RunExplainMapCommand(options)
                                                           : RunExpandCommand(options);
                              });
}

int RunProject(int argc, char** argv)
{
    return Run(argc, argv, ParseProjectOptions, ProjectHelp, RunProjectCommand);
}

int RunWhere(int argc, char** argv)
{
    return Run(argc, argv, ParseWhereOptions, WhereHelp, RunWhereCommand);
}

int RunRemap(int argc, char** argv)
{
    return Run(argc, argv, ParseRemapOptions, RemapHelp, RunRemapCommand);
}

/// A command that the first argument chooses.
struct Subcommand
{
    const char* m_name;
    int (*m_run)(int argc, char** argv);
};

constexpr Subcommand s_subcommands[] = {
    {"project", RunProject},
    {"where", RunWhere},
    {"remap", RunRemap},
    {"explain", RunExplain},
};

int RunCommand(int argc, char** argv)
{
    for (const Subcommand& command : s_subcommands)
        if (argc > 1 && std::strcmp(argv[1], command.m_name) == 0)
            return command.m_run(argc - 1, argv + 1);
    return RunExpand(argc, argv);
}

/// Everything that is not an error in a source text ends here.
int RunReporting(int argc, char** argv)
try
{
    return RunCommand(argc, argv);
}
catch (const UsageError& e)
{
    ReportToolError(std::string(e.what()) + "\nTry 'tlexpand --help' for more information.");
    return 2;
}
catch (const std::bad_alloc&)
{
    ReportToolError("Out of memory");
    return 1;
}
catch (const std::exception& e)
{
    ReportToolError(e.what());
    return 2;
}

} // namespace

} // namespace telv::tool

int main(int argc, char** argv)
{
    using namespace telv::tool;
    EndRunWithoutMemory();
    OpenMissingStandardDescriptors();
    StartDirectory();
    InstallSignalHandlers();
    return RunOnLargeStack(RunReporting, argc, argv);
}
