// SPDX-License-Identifier: MIT
// A process that expands files of a batch is killed, wherever it is: no file is lost without a
// word, and the supervisor ends.
#include "support/Files.h"
#include "support/LimitedRun.h"
#include "support/TempDir.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace telv::test
{
namespace
{

class BatchDeathTest : public testing::Test
{
protected:
    BatchDeathTest()
    {
        for (const char* const name : {"a", "b", "c"})
            WriteFile(Path(std::string(name) + ".tl"), name);
    }

    std::string Path(const std::string& name) const { return m_directory.Path(name); }

    /// `kind` kills a process that asks for its number for the `at`th time since the tool began.
    ProgramResult Run(const std::string& kind, int at) const
    {
        for (const char* const name : {"out/a", "out/b", "out/c", "note"})
            std::filesystem::remove(Path(name));
        LimitedOptions options;
        options.directory = Path(".");
        options.environment = {std::string("LD_PRELOAD=") + TELV_FAULT_SHIM_PATH,
                               "FAULT_KIND=" + kind, "FAULT_AT=" + std::to_string(at),
                               "FAULT_NOTE=" + Path("note"),
                               "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0"};
        return RunLimited({TELV_TLEXPAND_PATH, "--out-dir", "out", "--keep-going", "-j", "1",
                           "a.tl", "b.tl", "c.tl"},
                          options);
    }

    TempDir m_directory;
};

TEST_F(BatchDeathTest, EachFileIsMadeOrReported)
{
    int deaths = 0;
    for (int at = 1; at < 100; ++at)
    {
        const ProgramResult result = Run("KILL_ONE", at);
        if (!std::filesystem::exists(Path("note")))
            break; // no process asks so often
        ++deaths;
        ASSERT_FALSE(result.timedOut) << at;
        if (result.signal == SIGKILL)
            continue; // it was the supervisor
        int missing = 0;
        for (const std::string name : {"a", "b", "c"})
        {
            if (ReadFile(Path("out/" + name)) == name)
                continue;
            ++missing;
            EXPECT_NE(result.err.find("tlexpand: " + name +
                                      ".tl: the process that expanded it was ended by signal 9\n"),
                      std::string::npos)
                << at << result.err;
        }
        EXPECT_LE(missing, 1) << at;
        if (missing > 0)
        {
            EXPECT_EQ(result.status, 2) << at;
        }
    }
    EXPECT_GT(deaths, 3);
}

TEST_F(BatchDeathTest, ItEndsWhenNoProcessGetsAnywhere)
{
    const ProgramResult result = Run("KILL_CHILDREN", 1);
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "tlexpand: the processes that expand files are ended by signal 9 before "
                          "they begin\n"
                          "tlexpand: 0 of 3 files failed, 3 not tried (--keep-going tries them)\n");
}

} // namespace
} // namespace telv::test
