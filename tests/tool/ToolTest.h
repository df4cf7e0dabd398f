// SPDX-License-Identifier: MIT
// A test of the built tool: a directory of files, and runs of the tool in it.
#pragma once

#include "support/Files.h"
#include "support/RunProgram.h"
#include "support/TempDir.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace telv::test
{

class ToolTest : public testing::Test
{
protected:
    std::string Path(const std::string& name) const { return m_directory.Path(name); }
    std::string Directory() const { return Path("."); }

    /// Makes a file, and the directories that it lies in.
    void Write(const std::string& name, std::string_view text) const
    {
        std::filesystem::create_directories(std::filesystem::path(Path(name)).parent_path());
        WriteFile(Path(name), text);
    }

    /// The bytes of a file, or "(none)".
    std::string Read(const std::string& name) const
    {
        return ReadFile(Path(name)).value_or("(none)");
    }

    ProgramResult Run(std::vector<std::string> arguments, std::string_view input = "") const
    {
        arguments.insert(arguments.begin(), TELV_TLEXPAND_PATH);
        return RunProgram(arguments, {Directory(), input});
    }

    /// Runs a command of the shell, in which $TLEXPAND is the tool.
    ProgramResult RunShell(const std::string& command) const
    {
        const std::string set = std::string("TLEXPAND='") + TELV_TLEXPAND_PATH + "'\n";
        return RunProgram({"/bin/sh", "-c", set + command}, {Directory(), ""});
    }

    /// The expansion of a run that must succeed without a word.
    std::string Expand(const std::vector<std::string>& arguments, std::string_view input = "") const
    {
        const ProgramResult result = Run(arguments, input);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    /// Expects a run that fails with this status and says this, and writes nothing.
    void ExpectFailure(const ProgramResult& result, int status, const std::string& err) const
    {
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.err, err);
        EXPECT_EQ(result.out, "");
    }

    /// The names in the directory, sorted, each behind a blank.
    std::string Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Directory()))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        std::string line;
        for (const std::string& name : names)
            line += " " + name;
        return line;
    }

private:
    TempDir m_directory;
};

/// What follows a usage error.
inline const std::string s_hint = "\nTry 'tlexpand --help' for more information.\n";

} // namespace telv::test
