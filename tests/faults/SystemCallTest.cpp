// SPDX-License-Identifier: MIT
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
#include <vector>

namespace telv::test
{
namespace
{

const char* const s_earlier = "earlier";

/// The outputs of a run, in the order in which they take their places.
const char* const s_outputs[] = {"out.txt", "out.json", "out.d"};

/// What the outputs hold; "(none)" for one that is not there.
using Contents = std::vector<std::string>;

/// What one run under a fault left behind.
struct FaultyRun
{
    std::string call; ///< The one that was met; empty when the run makes fewer calls.
    ProgramResult program;
    Contents contents;
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
        m_new = undisturbed.contents;
        EXPECT_EQ(undisturbed.program.status, 0) << undisturbed.program.err;
        EXPECT_GT(m_new[0].size(), 300'000u);
        EXPECT_GT(m_new[1].size(), 100u);
        EXPECT_EQ(m_new[2], "out.txt: main.tl \\\n  lib.tl\n\nlib.tl:\n");
    }

    std::string Path(const std::string& name) const { return m_directory.Path(name); }

    /// From now on there are no earlier outputs.
    void RemoveEarlier() { m_earlier = {"(none)", "(none)", "(none)"}; }
    /// Runs the tool with the fault at its call number `at`, over the earlier outputs.
    FaultyRun Run(const std::string& kind, int at) const;
    /// Runs with the fault at every call in turn.
    template <class Check>
    void ForEachCall(const std::string& kind, Check check) const;
    /// Each output is a whole one.
    void ExpectWhole(const FaultyRun& run) const;
    void ExpectError(const FaultyRun& run) const;
    bool IsNew(const FaultyRun& run) const { return run.contents == m_new; }
    bool IsEarlier(const FaultyRun& run) const { return run.contents == m_earlier; }
    bool HasEarlier() const { return m_earlier[0] == s_earlier; }

private:
    void ResetDirectory() const;

protected:
    std::string m_planted; ///< A symbolic link that is there before the run; empty for none.
    std::string m_plantedTarget;

private:
    TempDir m_directory;
    Contents m_earlier = {s_earlier, s_earlier, s_earlier};
    Contents m_new;
};

void SystemCallTest::ResetDirectory() const
{
    for (const auto& entry : std::filesystem::directory_iterator(Path(".")))
        if (entry.path().extension() != ".tl")
            std::filesystem::remove(entry.path());
    for (const char* const output : s_outputs)
        if (HasEarlier())
            WriteFile(Path(output), s_earlier);
    if (!m_planted.empty())
        std::filesystem::create_symlink(m_plantedTarget, Path(m_planted));
}

FaultyRun SystemCallTest::Run(const std::string& kind, int at) const
{
    ResetDirectory();
    LimitedOptions options;
    options.directory = Path(".");
    options.environment = {std::string("LD_PRELOAD=") + TELV_FAULT_SHIM_PATH, "FAULT_KIND=" + kind,
                           "FAULT_AT=" + std::to_string(at), "FAULT_NOTE=" + Path("note"),
                           // The sanitizer would like to be the first library.
                           "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0"};
    FaultyRun run;
    run.program = RunLimited({TELV_TLEXPAND_PATH, "-D", "NAME=value", "-o", s_outputs[0], "--map",
                              s_outputs[1], "--depfile", s_outputs[2], "main.tl"},
                             options);
    run.call = ReadFile(Path("note")).value_or("");
    std::set<std::string> known = {"main.tl", "lib.tl", "note"};
    for (const char* const output : s_outputs)
    {
        run.contents.push_back(ReadFile(Path(output)).value_or("(none)"));
        known.insert(output);
    }
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
    const std::set<std::string> all = {
        "open", "read", "write", "close", "exchange",
        // Earlier outputs are removed; where there are none, nothing can be exchanged.
        HasEarlier() ? "unlink" : "rename"};
    EXPECT_EQ(met, all);
    std::printf("%s at each of %d calls\n", kind.c_str(), calls);
}

void SystemCallTest::ExpectWhole(const FaultyRun& run) const
{
    for (size_t i = 0; i < m_new.size(); ++i)
        EXPECT_TRUE(run.contents[i] == m_earlier[i] || run.contents[i] == m_new[i])
            << s_outputs[i] << ": " << run.contents[i].size();
}

/// After an error that is reported, all is as it was.
void SystemCallTest::ExpectError(const FaultyRun& run) const
{
    EXPECT_TRUE(IsEarlier(run));
    const std::string& err = run.program.err;
    if (run.program.status == 1)
    {
        EXPECT_TRUE(run.call == "open" || run.call == "read");
        EXPECT_EQ(err.rfind("main.tl(1) : error : Can't import file: lib.tl\n", 0), 0u);
        return;
    }
    EXPECT_EQ(run.program.status, 2);
    EXPECT_EQ(err.rfind("tlexpand: can't ", 0), 0u);
    EXPECT_TRUE(err.find("'out.") != std::string::npos ||
                err.find("'main.tl'") != std::string::npos);
}

TEST_F(SystemCallTest, ErrorsAreReportedAndLeaveTheEarlierFiles)
{
    for (const bool hasEarlier : {true, false})
    {
        if (!hasEarlier)
            RemoveEarlier();
        for (const char* const kind : {"ENOSPC", "EIO"})
            ForEachCall(kind,
                        [this](const FaultyRun& run)
                        {
                            EXPECT_EQ(run.program.signal, 0);
                            // An earlier file that can't be removed is one that is left behind.
                            EXPECT_EQ(run.strangers.size(), run.call == "unlink" ? 1u : 0u);
                            if (run.program.status != 0)
                                return ExpectError(run);
                            EXPECT_TRUE(IsNew(run));
                            EXPECT_EQ(run.program.err, "");
                            // Whether a file that was read could be closed does not matter.
                            EXPECT_TRUE(run.call == "open" || run.call == "close" ||
                                        run.call == "unlink");
                        });
    }
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

TEST_F(SystemCallTest, ALinkAtATemporaryNameIsNotFollowed)
{
    const std::string foreseen = ".tlexpand-0000000000000000";
    WriteFile(Path("victim.tl"), "victim");
    for (const char* const target : {"victim.tl", "absent.tl"})
    {
        m_planted = foreseen;
        m_plantedTarget = target;
        const FaultyRun run = Run("FORESEEN", 0);
        EXPECT_EQ(run.program.status, 0) << run.program.err;
        EXPECT_TRUE(IsNew(run));
        EXPECT_EQ(run.strangers, (std::set<std::string>{foreseen, "victim.tl"}));
        EXPECT_TRUE(std::filesystem::is_symlink(Path(foreseen)));
        EXPECT_EQ(ReadFile(Path("victim.tl")), "victim");
    }
}

TEST_F(SystemCallTest, FilesThatCantBeExchangedAreReplaced)
{
    for (const char* const kind : {"EINVALS", "ENOSYSS"})
    {
        const FaultyRun run = Run(kind, 1);
        EXPECT_EQ(run.program.status, 0) << run.program.err;
        EXPECT_TRUE(IsNew(run));
        EXPECT_EQ(run.strangers, std::set<std::string>());
    }
}

TEST_F(SystemCallTest, DeathAtAnyCallTearsNoFile)
{
    const auto check = [](const FaultyRun& run) { EXPECT_EQ(run.program.signal, SIGKILL); };
    ForEachCall("KILL", check);
    RemoveEarlier();
    ForEachCall("KILL", check);
}

TEST_F(SystemCallTest, TerminationAtAnyCallLeavesNothingBehind)
{
    for (const bool hasEarlier : {true, false})
    {
        if (!hasEarlier)
            RemoveEarlier();
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
}

} // namespace
} // namespace telv::test
