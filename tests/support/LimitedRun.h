// SPDX-License-Identifier: MIT
// Runs a program under limits, with its streams in any state, and lets signals be sent to it. What
// RunProgram does for well-behaved programs, this does for the others.
#pragma once

#include "support/RunProgram.h"

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace telv::test
{

/// True in a build whose shadow memory does not go with a limit on the address space.
#if defined(TELV_ADDRESS_SANITIZER)
inline constexpr bool s_underAddressSanitizer = true;
#else
inline constexpr bool s_underAddressSanitizer = false;
#endif

/// What a program is given. Limits that are not set are those of this process.
struct LimitedOptions
{
    std::string directory = ".";          ///< Its working directory.
    std::string_view input;               ///< Its standard input, as a file.
    std::vector<std::string> environment; ///< "NAME=VALUE", besides this process's.
    std::string inputPath;                ///< Opened for standard input instead.
    std::string outputPath;               ///< Opened for standard output, which is not collected.
    std::string errorPath;                ///< The same for standard error.
    std::vector<int> closed;              ///< Descriptors that it starts without.
    std::vector<int> ignoredSignals;
    std::optional<unsigned long> stack;        ///< Bytes; RLIM_INFINITY for no limit.
    std::optional<unsigned long> addressSpace; ///< Bytes.
    std::optional<unsigned long> fileSize;     ///< Bytes.
    std::optional<unsigned long> descriptors;
    int seconds = 200; ///< Until it is killed: it hangs.
};

/// A program that was started. It does not outlive this object.
class LimitedProgram
{
public:
    /// Starts `argv[0]` (a path). @throws std::runtime_error  It can't be started.
    LimitedProgram(const std::vector<std::string>& argv, const LimitedOptions& options);
    ~LimitedProgram();
    LimitedProgram(const LimitedProgram&) = delete;
    LimitedProgram& operator=(const LimitedProgram&) = delete;

    pid_t Pid() const { return m_pid; }
    void Send(int signal) const;
    /// What it has written to standard error so far.
    std::string ErrorSoFar() const;
    /// Waits for its end, or kills it after the seconds of its options.
    ProgramResult Finish();

private:
    pid_t m_pid = -1;
    int m_out = -1; ///< A file in memory.
    int m_err = -1;
    int m_seconds;
};

/// Starts a program and waits for its end.
ProgramResult RunLimited(const std::vector<std::string>& argv, const LimitedOptions& options);

} // namespace telv::test
