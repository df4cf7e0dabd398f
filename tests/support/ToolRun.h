// SPDX-License-Identifier: MIT
// Runs a case with the built tool.
#pragma once

#include "support/RunProgram.h"
#include "support/TestCase.h"

#include <optional>
#include <string>

namespace telv::test
{

/// What the tool did with a case.
struct ToolRun
{
    ProgramResult program;
    bool hasOutputFile = false;            ///< The arguments name a file for the expansion.
    std::optional<std::string> outputFile; ///< Its content, when it was made.
    std::optional<std::string> map;        ///< The text of --map, when it was wanted and made.

    /// The expansion, from the file or from standard output.
    std::string Expansion() const;
    /// What the source printed, when the run succeeded.
    const std::string& Printed() const { return hasOutputFile ? program.out : program.err; }
};

/// Runs the tool in the case's directory: its arguments, `--map` when `wantMap`, its source's name.
/// In the arguments "{out}" stands for a file that lives as long as the run.
ToolRun RunTool(const TestCase& testCase, bool wantMap);

/// Everything in which the run differs from the expectation, for people; empty when nothing does.
std::string CompareToolRun(const ToolRun& run, const Expectation& expectation);

} // namespace telv::test
