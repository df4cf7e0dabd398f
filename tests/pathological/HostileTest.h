// SPDX-License-Identifier: MIT
// A test of the built tool with hostile input: a directory that must hold nothing unexpected
// afterwards, and runs under limits that must not end by a signal.
#pragma once

#include "support/Files.h"
#include "support/LimitedRun.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace telv::test
{

/// `text`, `count` times.
std::string Repeat(const std::string& text, size_t count);

/// "name: exit status 1" and what was written, shortened; for failures.
std::string Describe(const ProgramResult& result);

class HostileTest : public testing::Test
{
protected:
    void TearDown() override;

    std::string Path(const std::string& name) const { return m_directory.Path(name); }
    void Write(const std::string& name, std::string_view text);
    std::string Read(const std::string& name) const;
    /// Says that the test expects a file of this name at its end.
    void Expect(const std::string& name) { m_expected.insert(name); }
    /// Names in the directory that no test has named.
    std::set<std::string> Strangers() const;

    std::vector<std::string> CommandLine(const std::vector<std::string>& arguments) const;
    LimitedOptions InDirectory(LimitedOptions options) const;

    /// Runs the tool in the directory; it may not end by a signal or hang.
    ProgramResult Run(const std::vector<std::string>& arguments,
                      const LimitedOptions& options = {});
    /// The same with `source` as main.tl, named last.
    ProgramResult Expand(std::string_view source, std::vector<std::string> arguments = {},
                         const LimitedOptions& options = {});

    /// The run succeeded, wrote `out` and said nothing.
    static void ExpectText(const ProgramResult& result, const std::string& out);
    /// An error in the source text: nothing written, and a diagnostic that begins with `start`.
    static void ExpectError(const ProgramResult& result, const std::string& start);

private:
    TempDir m_directory;
    std::set<std::string> m_expected;
};

} // namespace telv::test
