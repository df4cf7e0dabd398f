// SPDX-License-Identifier: MIT
// Runs a program to its end and returns all that a caller of it sees: how it ended and what it
// wrote to each of its streams.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace telv::test
{

/// How a program ended and what it wrote.
struct ProgramResult
{
    int status = -1;       ///< Exit status; -1 when a signal ended it.
    int signal = 0;        ///< The signal that ended it, else 0.
    bool timedOut = false; ///< It was killed because it did not end.
    std::string out;       ///< Standard output.
    std::string err;       ///< Standard error.
    long peakKibi = 0; ///< The most memory that it had at a time, in KiB; of LimitedProgram only.
};

/// Where and how long a program runs.
struct ProgramOptions
{
    std::string directory = "."; ///< Its working directory.
    std::string_view input;      ///< Its standard input.
    int seconds = 120;           ///< After these it is killed.
};

/// Runs `argv[0]` (a path) with the arguments `argv` and the environment of this process.
/// @throws std::runtime_error  The program can't be started.
ProgramResult RunProgram(const std::vector<std::string>& argv, const ProgramOptions& options = {});

/// "exit status 1", "signal 11", "no end within 120 seconds".
std::string DescribeEnd(const ProgramResult& result, const ProgramOptions& options = {});

} // namespace telv::test
