// Every call with which the tool reads, writes and renames files fails in turn, is cut short, or is
// where the tool is killed. Whatever happens: each output is the earlier one or the new one, whole.
#include "support/Files.h"
#include "support/LimitedRun.h"
#include "support/TempDir.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace telv::test
{
namespace
{

const char* const s_earlier = "earlier";

/// What one run under a fault left behind.
struct FaultyRun
{
    std::string call; ///< The one that was met; empty when the run makes fewer calls.
    ProgramResult program;
    std::string text;
    std::string map;
    std::set<std::string> strangers; ///< Files that nobody named.
};

class SystemCallTest : public testing::Test
{
protected:
    SystemCallTest()
    {
        WriteFile(Path("main.tl"),
                  "@import \"lib.tl\"\n@for(x in [1,2,3,4,5]){line}\n" + std::string(300'000, 'x'));
        WriteFile(Path("lib.tl"), "@def line = {a piece of text \"$(NAME)\"}\n");
        const FaultyRun undisturbed = Run("", 0);
        m_text = undisturbed.text;
        m_map = undisturbed.map;
        EXPECT_EQ(undisturbed.program.status, 0) << undisturbed.program.err;
        EXPECT_GT(m_text.size(), 300'000u);
        EXPECT_GT(m_map.size(), 100u);
    }

    std::string Path(const std::string& name) const { return m_directory.Path(name); }

    /// Runs the tool with the fault at its call number `at`, over earlier outputs.
    FaultyRun Run(const std::string& kind, int at) const;
    /// Runs with the fault at every call in turn.
    template <class Check>
    void ForEachCall(const std::string& kind, Check check) const;
    /// Each output is a whole one, and of one kind when the run tells its status.
    void ExpectWhole(const FaultyRun& run) const;
    bool IsNew(const FaultyRun& run) const { return run.text == m_text && run.map == m_map; }
    static bool IsEarlier(const FaultyRun& run)
    {
        return run.text == s_earlier && run.map == s_earlier;
    }

private:
    TempDir m_directory;
    std::string m_text;
    std::string m_map;
};

FaultyRun SystemCallTest::Run(const std::string& kind, int at) const
{
    for (const auto& entry : std::filesystem::directory_iterator(Path(".")))
        if (entry.path().extension() != ".tl")
            std::filesystem::remove(entry.path());
    WriteFile(Path("out.txt"), s_earlier);
    WriteFile(Path("out.json"), s_earlier);
    LimitedOptions options;
    options.directory = Path(".");
    options.environment = {std::string("LD_PRELOAD=") + TELV_FAULT_SHIM_PATH, "FAULT_KIND=" + kind,
                           "FAULT_AT=" + std::to_string(at), "FAULT_NOTE=" + Path("note"),
                           // The sanitizer would like to be the first library.
                           "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0"};
    FaultyRun run;
    run.program = RunLimited(
        {TELV_TLEXPAND_PATH, "-D", "NAME=value", "-o", "out.txt", "--map", "out.json", "main.tl"},
        options);
    run.call = ReadFile(Path("note")).value_or("");
    run.text = ReadFile(Path("out.txt")).value_or("(none)");
    run.map = ReadFile(Path("out.json")).value_or("(none)");
    const std::set<std::string> known = {"main.tl", "lib.tl", "out.txt", "out.json", "note"};
    for (const auto& entry : std::filesystem::directory_iterator(Path(".")))
        if (const std::string name = entry.path().filename(); known.count(name) == 0)
            run.strangers.insert(name);
    return run;
}

template <class Check>
void SystemCallTest::ForEachCall(const std::string& kind, Check check) const
{
    std::set<std::string> met;
    int calls = 0;
    for (int at = 1;; ++at)
    {
        const FaultyRun run = Run(kind, at);
        if (run.call.empty())
            break;
        SCOPED_TRACE(kind + " at call " + std::to_string(at) + ", " + run.call + "\n" +
                     DescribeEnd(run.program) + "\n" + run.program.err);
        met.insert(run.call);
        ++calls;
        ExpectWhole(run);
        check(run);
        ASSERT_LT(at, 1000);
    }
    const std::set<std::string> all = {"open",  "read",   "write", "close",
                                       "fsync", "fchmod", "rename"};
    EXPECT_EQ(met, all);
    std::printf("%s at each of %d calls\n", kind.c_str(), calls);
}

void SystemCallTest::ExpectWhole(const FaultyRun& run) const
{
    EXPECT_TRUE(run.text == s_earlier || run.text == m_text) << run.text.size();
    EXPECT_TRUE(run.map == s_earlier || run.map == m_map) << run.map.size();
}

TEST_F(SystemCallTest, ErrorsAreReportedAndLeaveTheEarlierFiles)
{
    for (const char* const kind : {"ENOSPC", "EIO"})
        ForEachCall(
            kind,
            [this](const FaultyRun& run)
            {
                EXPECT_EQ(run.program.signal, 0);
                EXPECT_EQ(run.strangers, std::set<std::string>());
                if (run.program.status == 0)
                {
                    EXPECT_TRUE(IsNew(run));
                    EXPECT_EQ(run.program.err, "");
                    // Whether a file that was read could be closed does not matter.
                    EXPECT_TRUE(run.call == "open" || run.call == "close");
                    return;
                }
                const bool isImport = run.program.status == 1;
                EXPECT_TRUE(isImport ? run.call == "open" || run.call == "read"
                                     : run.program.status == 2);
                // The second rename can fail when the first was made; each file is whole still.
                EXPECT_TRUE(IsEarlier(run) || run.call == "rename");
                const bool named = run.program.err.find("'out.txt'") != std::string::npos ||
                                   run.program.err.find("'out.json'") != std::string::npos ||
                                   run.program.err.find("'main.tl'") != std::string::npos;
                EXPECT_TRUE(isImport ? run.program.err.rfind("main.tl(1) : error : Can't import "
                                                             "file: lib.tl\n",
                                                             0) == 0
                                     : named);
            });
}

TEST_F(SystemCallTest, InterruptedCallsAreMadeAgain)
{
    for (const char* const kind : {"EINTR", "EINTRS"})
        ForEachCall(kind,
                    [this](const FaultyRun& run)
                    {
                        EXPECT_EQ(run.program.status, 0);
                        EXPECT_TRUE(IsNew(run));
                        EXPECT_EQ(run.strangers, std::set<std::string>());
                    });
}

TEST_F(SystemCallTest, ShortCountsAreContinued)
{
    for (const char* const kind : {"SHORT", "SHORTS"})
        ForEachCall(kind,
                    [this](const FaultyRun& run)
                    {
                        EXPECT_EQ(run.program.status, 0);
                        EXPECT_TRUE(IsNew(run));
                        EXPECT_EQ(run.strangers, std::set<std::string>());
                    });
}

TEST_F(SystemCallTest, DeathAtAnyCallTearsNoFile)
{
    ForEachCall("KILL", [](const FaultyRun& run) { EXPECT_EQ(run.program.signal, SIGKILL); });
}

TEST_F(SystemCallTest, TerminationAtAnyCallLeavesNothingBehind)
{
    for (const char* const kind : {"TERM", "TERM_AFTER"})
        ForEachCall(kind,
                    [this](const FaultyRun& run)
                    {
                        EXPECT_TRUE(run.program.signal == SIGTERM ||
                                    (run.program.status == 0 && IsNew(run)));
                        EXPECT_EQ(run.strangers, std::set<std::string>());
                        EXPECT_TRUE(IsEarlier(run) || IsNew(run));
                    });
}

} // namespace
} // namespace telv::test
