// SPDX-License-Identifier: MIT
// Outputs: whole or not at all, in their places together, and nothing left behind.
#include "ToolTest.h"

#include <sys/stat.h>

namespace telv::test
{

using OutputTest = ToolTest;

TEST_F(OutputTest, WritesTheFile)
{
    const ProgramResult result = Run({"-o", "out"}, "x @(1+1)\n@print(printed)\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "printed");
    EXPECT_EQ(Read("out"), "x 2\n");
    EXPECT_EQ(Names(), " out");
}

TEST_F(OutputTest, ADashIsStandardOutputForEveryOutput)
{
    const ProgramResult map = Run({"-o", "out", "--map", "-"}, "x@print(printed)");
    EXPECT_EQ(map.status, 0);
    EXPECT_EQ(map.out.substr(0, 14), "{\"version\":1,\n");
    EXPECT_EQ(map.err, "printed");
    EXPECT_EQ(Read("out"), "x");
    const ProgramResult depfile = Run({"-o", "out", "--depfile", "-", "--map", "m"}, "y");
    EXPECT_EQ(depfile.out, "out:\n");
    EXPECT_EQ(Read("out"), "y");
    EXPECT_EQ(Expand({"-o", "-"}, "x"), "x");
    EXPECT_EQ(Names(), " m out");
    Expand({"-o", "./-"}, "x");
    EXPECT_EQ(Read("-"), "x");
    EXPECT_EQ(Run({"-o", "out", "--map", "-"}, "z@else").out, "");
    EXPECT_EQ(RunShell("echo z | $TLEXPAND -o out --map - > /dev/full").status, 2);
    EXPECT_EQ(RunShell("echo z | $TLEXPAND -o out --map - >> out").err,
              "tlexpand: standard output and 'out' are the same output" + s_hint);
    EXPECT_EQ(Read("out"), "y");
}

TEST_F(OutputTest, AnErrorLeavesEverythingAsItWas)
{
    Write("out", "old");
    EXPECT_EQ(Run({"-o", "out", "--map", "map", "--depfile", "dep"}, "x @else").status, 1);
    EXPECT_EQ(Read("out"), "old");
    EXPECT_EQ(Names(), " out");
}

TEST_F(OutputTest, StandardOutputGetsNothingBeforeAnError)
{
    EXPECT_EQ(Run({}, "x\n@else").out, "");
}

TEST_F(OutputTest, PermissionsAreThoseOfANewFile)
{
    Write("old", "");
    std::filesystem::permissions(Path("old"), std::filesystem::perms::all);
    RunShell("umask 027; echo x | $TLEXPAND -o old; echo x | $TLEXPAND -o new");
    for (const char* name : {"old", "new"})
        EXPECT_EQ(std::filesystem::status(Path(name)).permissions(),
                  static_cast<std::filesystem::perms>(0640));
}

TEST_F(OutputTest, FollowsSymbolicLinks)
{
    Write("dir/target", "old");
    std::filesystem::create_symlink("dir/target", Path("one"));
    std::filesystem::create_symlink("one", Path("two"));
    std::filesystem::create_symlink("dir/new", Path("dangling"));
    Expand({"-o", "two"}, "x");
    EXPECT_EQ(Read("dir/target"), "x");
    EXPECT_TRUE(std::filesystem::is_symlink(Path("one")));
    Expand({"-o", "dangling"}, "y");
    EXPECT_EQ(Read("dir/new"), "y");
    EXPECT_TRUE(std::filesystem::is_symlink(Path("dangling")));
    std::filesystem::create_symlink("loop", Path("loop"));
    ExpectFailure(Run({"-o", "loop"}, "x"), 2,
                  "tlexpand: can't write 'loop': Too many levels of symbolic links\n");
}

TEST_F(OutputTest, WritesDirectlyToWhatIsNoRegularFile)
{
    EXPECT_EQ(RunShell("mkfifo pipe; echo x | $TLEXPAND -o pipe & cat pipe; wait $!").out, "x\n");
    EXPECT_TRUE(std::filesystem::is_fifo(Path("pipe")));
    Expand({"-o", "/dev/null", "--map", "/dev/null"}, "x");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_EQ(RunShell("echo x | $TLEXPAND -o /dev/stdout | cat").out, "x\n");
}

TEST_F(OutputTest, NamesWhatCantBeWritten)
{
    std::filesystem::create_directory(Path("dir"));
    const std::pair<const char*, const char*> rows[] = {
        {"dir", "Is a directory"},
        {"none/x", "No such file or directory"},
        {"none/", "No such file or directory"},
        {"/dev/full", "No space left on device"},
    };
    for (const auto& [name, reason] : rows)
        ExpectFailure(Run({"-o", name}, "x"), 2,
                      std::string("tlexpand: can't write '") + name + "': " + reason + "\n");
    EXPECT_EQ(Names(), " dir");
}

TEST_F(OutputTest, AFullDeviceUndoesTheOtherOutputs)
{
    Write("out", "old");
    EXPECT_EQ(Run({"-o", "out", "--map", "/dev/full"}, "x").status, 2);
    EXPECT_EQ(Read("out"), "old");
    EXPECT_EQ(Names(), " out");
}

TEST_F(OutputTest, ALimitOnFileSizesIsAnError)
{
    const ProgramResult result =
        RunShell("ulimit -f 1; head -c 100000 /dev/zero | tr '\\0' x | $TLEXPAND -o out");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "tlexpand: can't write 'out': File too large\n");
    EXPECT_EQ(Names(), "");
}

TEST_F(OutputTest, StandardOutputThatTakesNothingIsAnError)
{
    EXPECT_EQ(RunShell("echo x | $TLEXPAND > /dev/full").err,
              "tlexpand: can't write 'standard output': No space left on device\n");
    EXPECT_EQ(RunShell("echo x | $TLEXPAND > /dev/full").status, 2);
    EXPECT_EQ(RunShell("echo x | $TLEXPAND >&-").status, 2);
    EXPECT_EQ(RunShell("echo '@print(x)' | $TLEXPAND -o out > /dev/full").status, 2);
    EXPECT_EQ(Names(), "");
}

TEST_F(OutputTest, ClosedStandardStreamsHarmNoFile)
{
    Write("x.tl", "x\n");
    EXPECT_EQ(RunShell("$TLEXPAND -o out x.tl <&- >&- 2>&-").status, 0);
    EXPECT_EQ(Read("out"), "x\n");
    EXPECT_EQ(Read("x.tl"), "x\n");
    EXPECT_EQ(RunShell("$TLEXPAND <&-").status, 2);
}

TEST_F(OutputTest, AClosedPipeEndsEndlessPrinting)
{
    Write("x.tl", "@while(true){@println(y)}");
    EXPECT_EQ(RunShell("$TLEXPAND -o out x.tl | head -n 1").out, "y\n");
    EXPECT_EQ(Names(), " x.tl");
}

TEST_F(OutputTest, RefusesTwoOutputsThatAreOneFile)
{
    Write("dir/x", "");
    std::filesystem::create_symlink("dir/x", Path("link"));
    ExpectFailure(Run({"-o", "a", "--map", "./a"}, "x"), 2,
                  "tlexpand: 'a' and './a' are the same output" + s_hint);
    ExpectFailure(Run({"-o", "link", "--map", "dir/x"}, "x"), 2,
                  "tlexpand: 'link' and 'dir/x' are the same output" + s_hint);
    std::filesystem::create_hard_link(Path("dir/x"), Path("hard"));
    ExpectFailure(Run({"-o", "hard", "--map", "dir/x"}, "x"), 2,
                  "tlexpand: 'hard' and 'dir/x' are the same output" + s_hint);
}

// What is printed is sent off at once; nothing is after the file has been seen.
TEST_F(OutputTest, RefusesToPrintIntoWhatIsRead)
{
    const std::string lib = "@def m = {x}\n";
    const std::string main = "@import \"lib.tl\"\n@print(2)m";
    Write("main.tl", main);
    const auto expectRefusal = [&](const std::string& command, const std::string& name)
    {
        Write("lib.tl", lib);
        const ProgramResult result = RunShell(command);
        EXPECT_EQ(result.status, 2) << command;
        const std::string message = "tlexpand: " + name + " is a file that is read" + s_hint;
        const bool isOfErrors = name == "standard error";
        EXPECT_EQ(result.err, isOfErrors ? "" : message) << command;
        EXPECT_EQ(Read("lib.tl"), lib + (isOfErrors ? message : "")) << command;
        EXPECT_EQ(Names(), " lib.tl main.tl") << command;
    };
    expectRefusal("$TLEXPAND -o out main.tl >> lib.tl", "standard output");
    expectRefusal("$TLEXPAND main.tl >> lib.tl", "standard output");
    expectRefusal("$TLEXPAND -E '@import \"lib.tl\"' main.tl >> lib.tl", "standard output");
    expectRefusal("$TLEXPAND main.tl 2>> lib.tl", "standard error");
    EXPECT_EQ(RunShell("$TLEXPAND main.tl >> main.tl").status, 2);
    EXPECT_EQ(Read("main.tl"), main);
}

TEST_F(OutputTest, RefusesToOverwriteWhatIsRead)
{
    Write("main.tl", "@import \"lib.tl\"\nm");
    Write("lib.tl", "@def m = {x}\n");
    ExpectFailure(Run({"-o", "lib.tl", "main.tl"}), 2,
                  "tlexpand: the output 'lib.tl' is a file that is read" + s_hint);
    ExpectFailure(Run({"-o", "out", "--map", "main.tl", "main.tl"}), 2,
                  "tlexpand: the output 'main.tl' is a file that is read" + s_hint);
    EXPECT_EQ(Names(), " lib.tl main.tl");
    Expand({"-o", "main.tl", "main.tl"});
    EXPECT_EQ(Read("main.tl"), "x");
}

TEST_F(OutputTest, ASignalLeavesNothing)
{
    Write("x.tl", "x");
    Write("out", "old");
    for (const char* signal : {"TERM", "INT", "HUP"})
    {
        // The map's pipe has no reader, so the run waits when the other output is written. The
        // shell makes what runs in the background ignore SIGINT.
        const ProgramResult result =
            RunShell(std::string("rm -f pipe; mkfifo pipe\n") +
                     "env --default-signal=INT $TLEXPAND -o out --map pipe x.tl & pid=$!\n"
                     "until ls .tlexpand-* > list 2> list; do :; done\n" +
                     "kill -" + signal + " $pid; wait $pid; echo $?; rm -f list");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(Read("out"), "old");
        EXPECT_EQ(Names(), " out pipe x.tl") << signal;
    }
}

TEST_F(OutputTest, ASignalEndsEndlessExpansion)
{
    Write("x.tl", "@println(ready)@while(true){}");
    const ProgramResult result = RunShell("mkfifo pipe\n"
                                          "$TLEXPAND -o out x.tl > pipe & pid=$!\n"
                                          "read line < pipe; kill -TERM $pid; wait $pid");
    EXPECT_EQ(result.status, 128 + 15);
    EXPECT_EQ(Names(), " pipe x.tl");
}

TEST_F(OutputTest, UnreadableInputIsNamed)
{
    std::filesystem::create_directory(Path("dir"));
    ExpectFailure(Run({"none.tl"}), 2,
                  "tlexpand: can't read 'none.tl': No such file or directory\n");
    ExpectFailure(Run({"dir"}), 2, "tlexpand: can't read 'dir': Is a directory\n");
}

TEST_F(OutputTest, AnyBytesPass)
{
    std::string bytes;
    for (int c = 1; c < 256; ++c)
        if (std::string("@\"'\\/").find(static_cast<char>(c)) == std::string::npos)
            bytes += static_cast<char>(c);
    bytes = "// " + std::string("\0x", 2) + bytes;
    bytes.erase(std::remove(bytes.begin(), bytes.end(), '\n'), bytes.end());
    EXPECT_EQ(Expand({}, bytes), bytes);
}

} // namespace telv::test
