// SPDX-License-Identifier: MIT
// Outputs that are what a standard stream was sent to: what is printed or reported would be lost.
#include "ToolTest.h"

#include <unistd.h>

namespace telv::test
{

using StandardStreamsTest = ToolTest;

TEST_F(StandardStreamsTest, AnOutputThatIsOneIsRefusedBeforeAnythingIsExpanded)
{
    Write("x.tl", "@println(printed)\ntext");
    std::filesystem::create_symlink("y", Path("link"));
    const std::pair<std::string, std::string> rows[] = {
        {"-o y x.tl > y", "standard output and 'y'"},
        {"-o y x.tl >> y", "standard output and 'y'"},
        {"-o link x.tl > y", "standard output and 'link'"},
        {"-o out --map y x.tl > y", "standard output and 'y'"},
        {"-o out --depfile y x.tl > y", "standard output and 'y'"},
        {"--map y x.tl > y", "standard output and 'y'"},
        {"-o y x.tl 2> y", "standard error and 'y'"},
    };
    for (const auto& [arguments, names] : rows)
    {
        Write("y", "");
        const bool isError = names.find("error") != std::string::npos;
        const ProgramResult result = RunShell("$TLEXPAND " + arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        const std::string message = "tlexpand: " + names + " are the same output" + s_hint;
        EXPECT_EQ(isError ? Read("y") : result.err, message) << arguments;
        EXPECT_EQ(isError ? "" : Read("y"), "") << arguments;
    }
    EXPECT_EQ(Names(), " link x.tl y");
}

TEST_F(StandardStreamsTest, OneFileForBothStreamsIsWanted)
{
    Write("x.tl", "@println(printed)\ntext");
    EXPECT_EQ(RunShell("$TLEXPAND x.tl > y 2>&1").status, 0);
    EXPECT_EQ(Read("y"), "printed\ntext");
    EXPECT_EQ(RunShell("$TLEXPAND -o out x.tl > y 2>&1").status, 0);
    EXPECT_EQ(Read("y"), "printed\n");
    EXPECT_EQ(Read("out"), "text");
}

TEST_F(StandardStreamsTest, PrintedTextDoesNotGoToAnImport)
{
    Write("x.tl", "@import \"lib.tl\"\nm");
    Write("lib.tl", "@def m = {text}\n");
    EXPECT_EQ(RunShell("$TLEXPAND -o out x.tl >> lib.tl").status, 2);
    EXPECT_EQ(Read("lib.tl"), "@def m = {text}\n");
    EXPECT_EQ(Names(), " lib.tl x.tl");
}

} // namespace telv::test
