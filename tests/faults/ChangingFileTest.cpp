// SPDX-License-Identifier: MIT
// Files that somebody else writes to while they are read: half of one generation with half of
// another could be a good text. The fault library appends a byte before each read in turn.
#include "support/Files.h"
#include "support/LimitedRun.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <map>
#include <set>

namespace telv::test
{
namespace
{

const std::map<std::string, std::string> s_inputs = {
    {"main.tl", "@import \"lib.tl\"\n@for(row in rows){line(row) }\n"},
    {"lib.tl", "@def line(x) = {<x>}\n"},
    {"rows.csv", "name\nalpha\nbeta\n"},
    {"rows.json", "[[1], [2]]"},
};

class ChangingFileTest : public testing::Test
{
protected:
    std::string Path(const std::string& name) const { return m_directory.Path(name); }

    /// Runs over an earlier output; `call` receives the call that was met.
    ProgramResult Run(const std::string& rows, int at, std::string& call) const
    {
        for (const auto& [name, text] : s_inputs)
            WriteFile(Path(name), text);
        WriteFile(Path("out"), "earlier");
        WriteFile(Path("note"), "");
        LimitedOptions options;
        options.directory = Path(".");
        options.environment = {std::string("LD_PRELOAD=") + TELV_FAULT_SHIM_PATH, "FAULT_KIND=GROW",
                               "FAULT_AT=" + std::to_string(at), "FAULT_NOTE=" + Path("note"),
                               "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0"};
        ProgramResult result = RunLimited(
            {TELV_TLEXPAND_PATH, "--list", "rows=" + rows, "-o", "out", "main.tl"}, options);
        call = *ReadFile(Path("note"));
        return result;
    }

    /// The input that has grown, if one has.
    std::string Grown() const
    {
        for (const auto& [name, text] : s_inputs)
            if (*ReadFile(Path(name)) != text)
                return name;
        return "";
    }

private:
    TempDir m_directory;
};

TEST_F(ChangingFileTest, IsAnErrorThatLosesNothing)
{
    std::set<std::string> grown;
    for (const std::string rows : {"rows.csv", "rows.json"})
        for (int at = 1;; ++at)
        {
            std::string call;
            const ProgramResult result = Run(rows, at, call);
            if (call.empty())
                break;
            const std::string file = Grown();
            SCOPED_TRACE(call + " of " + file + "\n" + result.err);
            if (file.empty())
            {
                EXPECT_EQ(result.status, 0);
                EXPECT_NE(*ReadFile(Path("out")), "earlier");
                continue;
            }
            grown.insert(file);
            EXPECT_EQ(*ReadFile(Path("out")), "earlier");
            if (file == "lib.tl")
            {
                EXPECT_EQ(result.status, 1);
                EXPECT_EQ(result.err.rfind("main.tl(1) : error : Can't import file: lib.tl\n", 0),
                          0u);
                continue;
            }
            EXPECT_EQ(result.status, 2);
            const char* const what =
                file == "main.tl" ? "it changed while it was read" : "It changes while it is read";
            EXPECT_EQ(result.err, "tlexpand: can't read '" + file + "': " + what + "\n");
        }
    const std::set<std::string> all = {"main.tl", "lib.tl", "rows.csv", "rows.json"};
    EXPECT_EQ(grown, all);
}

} // namespace
} // namespace telv::test
