// SPDX-License-Identifier: MIT
// Files that imports name: cycles, long chains, and what is no regular file.
#include "HostileTest.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace telv::test
{
namespace
{

using namespace std::string_literals;

class ImportFilesTest : public HostileTest
{
};

TEST_F(ImportFilesTest, Cycles)
{
    ExpectError(
        Expand("@import \"main.tl\""),
        "main.tl(1) : error : Import cycle: main.tl -> main.tl\n 1 | @import \"main.tl\"\n");
    Write("b.tl", "\n@import \"c.tl\"\n");
    Write("c.tl", "\n\n@import \"b.tl\"\n");
    ExpectError(Expand("@import \"b.tl\""), "c.tl(3) : error : Import cycle: b.tl -> c.tl -> b.tl\n"
                                            " 3 | @import \"b.tl\"\n   |         ^\n"
                                            "imported from b.tl(2)\nimported from main.tl(1)\n");
}

#if TELV_HAS_PYTHON

std::string WritePython(const std::string& name, const std::string& text)
{
    return "@runpython{f = open('" + name + "', 'w'); f.write('" + text + "'); f.close()}\n";
}

TEST_F(ImportFilesTest, AFileThatTookTheNumberOfARemovedOneIsAnother)
{
    std::string source;
    std::string expected;
    for (int i = 0; i < 50; ++i)
    {
        const std::string n = std::to_string(10 + i);
        source += WritePython("lib" + n, "@def m" + n + " = {" + n + "}") + "@import \"lib" + n +
                  "\"\n@runpython{import os; os.remove('lib" + n + "')}\nm" + n + "\n";
        expected += n + "\n";
    }
    ExpectText(Expand(source), expected);
}

TEST_F(ImportFilesTest, AFileThatWasWrittenAnewIsReadAnew)
{
    Expect("lib.tl");
    ExpectText(Expand(WritePython("lib.tl", "@def a = {1}") + "@import \"lib.tl\"\n" +
                      WritePython("lib.tl", "@def b = {2}") + "@import \"lib.tl\"\na b"),
               "1 2");
}

TEST_F(ImportFilesTest, ALinkMadeMeanwhileLeadsToTheSameFile)
{
    Expect("lib.tl");
    Expect("hard");
    Expect("soft");
    const ProgramResult result =
        Expand(WritePython("lib.tl", "@println(once)@def m = {1}") +
               "@import \"lib.tl\"\n@runpython{import os; os.link('lib.tl', 'hard'); "
               "os.symlink('lib.tl', 'soft')}\n@import \"hard\"\n@import \"soft\"\n"
               "@import \"./lib.tl\"\nm");
    EXPECT_EQ(result.err, "once\n");
    EXPECT_EQ(result.out, "1");
}

TEST_F(ImportFilesTest, ACycleThroughAFileThatChangesIsACycle)
{
    Write("lib.tl", "@runpython{f = open('lib.tl', 'a'); f.write('x'); f.close()}\n"
                    "@import \"lib.tl\"\n");
    ExpectError(Expand("@import \"lib.tl\""),
                "lib.tl(2) : error : Import cycle: lib.tl -> lib.tl\n");
}

TEST_F(ImportFilesTest, AnOutputWithTheNumberOfARemovedImportIsNoInput)
{
    Expect("out.txt");
    for (int i = 0; i < 20; ++i)
        ExpectText(Expand(WritePython("lib.tl", "@def m = {1}") +
                              "@import \"lib.tl\"\n@runpython{import os; os.remove('lib.tl')}\n" +
                              WritePython("out.txt", "new") + "m",
                          {"-o", "out.txt"}),
                   "");
    EXPECT_EQ(Read("out.txt"), "1");
}

#endif

TEST_F(ImportFilesTest, CycleThroughALink)
{
    std::filesystem::create_symlink("main.tl", Path("link.tl"));
    Expect("link.tl");
    ExpectError(Expand("@import \"link.tl\""), "main.tl(1) : error : Import cycle: ");
    std::filesystem::create_symlink("loop.tl", Path("loop.tl"));
    Expect("loop.tl");
    ExpectError(Expand("@import \"loop.tl\""), "main.tl(1) : error : Can't import file: loop.tl\n");
}

TEST_F(ImportFilesTest, LongChainWithFewDescriptors)
{
    const size_t n = 2000;
    for (size_t i = 0; i < n; ++i)
        Write("f" + std::to_string(i) + ".tl",
              i + 1 < n ? "@import \"f" + std::to_string(i + 1) + ".tl\"\n"
                        : "@def last = {end}\n");
    LimitedOptions options;
    // One for each file in turn, besides the standard streams, the working directory and that of
    // the output. What this process was started with does not count. Sanitizers look at memory by
    // way of a pipe.
    options.descriptors = s_underAddressSanitizer ? 8 : 6;
    for (int fd = 3; fd < 64; ++fd)
        options.closed.push_back(fd);
    ExpectText(Expand("@import \"f0.tl\"\nlast", {}, options), "end");
    Expect("out.txt");
    ExpectText(Expand("@import \"f0.tl\"\nlast", {"-o", "out.txt"}, options), "");
    EXPECT_EQ(Read("out.txt"), "end");
}

TEST_F(ImportFilesTest, ManyFilesWithFewDescriptors)
{
    std::string source;
    for (size_t i = 0; i < 500; ++i)
    {
        const std::string name = "g" + std::to_string(i);
        Write(name + ".tl", "@def " + name + " = {" + std::to_string(i) + "}\n");
        source += "@import \"" + name + ".tl\"\n";
    }
    LimitedOptions options;
    options.descriptors = 64;
    ExpectText(Expand(source + "g0 g499", {}, options), "0 499");
}

TEST_F(ImportFilesTest, WhatIsNoRegularFile)
{
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    Expect("fifo");
    std::filesystem::create_directory(Path("folder"));
    Expect("folder");
    for (const char* const name :
         {"folder", "fifo", "/dev/zero", "/dev/tty", "/", ".", "", "missing.tl", "/proc/self/mem"})
    {
        const std::string import = "@import \""s + name + "\"";
        LimitedOptions options;
        options.seconds = 20;
        ExpectError(Expand("\n" + import, {}, options),
                    "main.tl(2) : error : Can't import file: "s + name + "\n 2 | " + import + "\n");
    }
}

TEST_F(ImportFilesTest, NamesWithNul)
{
    Write("li", "@def read = {wrong file}\n");
    ExpectError(Expand("@import \"li\0b.tl\""s),
                "main.tl(1) : error : Can't import file: li\0b.tl\n"s);
    ExpectError(Expand("@import \"li\\0b.tl\""),
                "main.tl(1) : error : Can't import file: li\0b.tl\n"s);
    ExpectError(Expand("@import \"" + std::string(100'000, 'n') + "\""),
                "main.tl(1) : error : Can't import file: nnn");
}

TEST_F(ImportFilesTest, UnreadableFile)
{
    Write("secret.tl", "x");
    ASSERT_EQ(chmod(Path("secret.tl").c_str(), 0), 0);
    const ProgramResult result = Expand("@import \"secret.tl\"\nx");
    if (geteuid() == 0)
        ExpectText(result, "x");
    else
        ExpectError(result, "main.tl(1) : error : Can't import file: secret.tl\n");
}

TEST_F(ImportFilesTest, MainFileOfAnyKind)
{
    const ProgramResult folder = Run({"."});
    EXPECT_EQ(folder.status, 2);
    EXPECT_EQ(folder.err, "tlexpand: can't read '.': Is a directory\n");
    const ProgramResult missing = Run({"missing.tl"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "tlexpand: can't read 'missing.tl': No such file or directory\n");
    ExpectText(Run({"/dev/null"}), "");
    LimitedOptions options;
    options.input = "piped";
    ExpectText(Run({"/dev/stdin"}, options), "piped");
}

} // namespace
} // namespace telv::test
