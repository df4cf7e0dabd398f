// SPDX-License-Identifier: MIT
// Where outputs go: files of every kind under every name, and which of them are one file.
#include "ToolTest.h"

#include <regex>
#include <sys/stat.h>
#include <unistd.h>

namespace telv::test
{

using OutputPlacesTest = ToolTest;

TEST_F(OutputPlacesTest, EveryOutputCanGoToWhatIsNoRegularFile)
{
    Write("x.tl", "x");
    const std::pair<std::string, std::string> rows[] = {
        {"-o out --map", "{\"version\":1,"},
        {"-o out --depfile", "out: x.tl"},
        {"-o", "x"},
    };
    for (const auto& [options, start] : rows)
    {
        const std::string run = "$TLEXPAND " + options + " ";
        const ProgramResult fifo =
            RunShell("rm -f pipe; mkfifo pipe\n" + run + "pipe x.tl & cat pipe; wait $!");
        EXPECT_EQ(fifo.status, 0);
        EXPECT_EQ(fifo.out.substr(0, start.size()), start);
        EXPECT_TRUE(std::filesystem::is_fifo(Path("pipe")));
        EXPECT_EQ(RunShell(run + "/dev/null x.tl").status, 0);
        EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
        EXPECT_EQ(RunShell("ln -sf /dev/null null; " + run + "null x.tl").status, 0);
        EXPECT_TRUE(std::filesystem::is_symlink(Path("null")));
        EXPECT_EQ(RunShell(run + "/dev/full x.tl").err,
                  "tlexpand: can't write '/dev/full': No space left on device\n");
    }
}

TEST_F(OutputPlacesTest, EveryOutputFollowsSymbolicLinks)
{
    Write("dir/there", "old");
    std::filesystem::create_symlink("dir/there", Path("link"));
    std::filesystem::create_symlink("dir/new", Path("dangling"));
    Expand({"-o", "out", "--map", "link", "--depfile", "dangling"}, "x");
    EXPECT_EQ(Read("dir/there").substr(0, 13), "{\"version\":1,");
    EXPECT_EQ(Read("dir/new"), "out:\n");
    EXPECT_TRUE(std::filesystem::is_symlink(Path("link")));
    EXPECT_TRUE(std::filesystem::is_symlink(Path("dangling")));
    EXPECT_EQ(Names(), " dangling dir link out");
}

TEST_F(OutputPlacesTest, APlaceThatIsNoneIsNamedAndHarmsNoOtherOutput)
{
    Write("file", "");
    Write("out", "old");
    std::filesystem::create_directory(Path("dir"));
    std::filesystem::create_symlink("one", Path("two"));
    std::filesystem::create_symlink("two", Path("one"));
    std::filesystem::create_symlink("none/x", Path("astray"));
    const std::string before = Names();
    const std::pair<std::string, std::string> rows[] = {
        {"none/x", "No such file or directory"},
        {"astray", "No such file or directory"},
        {"file/x", "Not a directory"},
        {"dir", "Is a directory"},
        {"dir/", "Is a directory"},
        {"new/", "No such file or directory"},
        {"one", "Too many levels of symbolic links"},
        {"one/x", "Too many levels of symbolic links"},
        {std::string(300, 'x'), "File name too long"},
    };
    for (const auto& [name, reason] : rows)
        for (const char* const option : {"--map", "--depfile"})
            ExpectFailure(Run({"-o", "out", option, name}, "x"), 2,
                          "tlexpand: can't write '" + name + "': " + reason + "\n");
    EXPECT_EQ(Read("out"), "old");
    EXPECT_EQ(Names(), before);
}

TEST_F(OutputPlacesTest, ADirectoryThatTakesNoFilesIsNamed)
{
    Write("out", "old");
    const ProgramResult result = Run({"-o", "out", "--map", "/sys/none"}, "x");
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(
        std::regex_match(result.err, std::regex("tlexpand: can't write '/sys/none': "
                                                "(Permission denied|Read-only file system)\n")))
        << result.err;
    EXPECT_EQ(Read("out"), "old");
    EXPECT_EQ(Names(), " out");
}

TEST_F(OutputPlacesTest, OneFileUnderTwoNamesIsRefused)
{
    Write("dir/there", "old");
    std::filesystem::create_symlink("dir", Path("alias"));
    std::filesystem::create_symlink("dir/new", Path("link"));
    std::filesystem::create_hard_link(Path("dir/there"), Path("hard"));
    const std::pair<std::string, std::string> rows[] = {
        {"dir/there", "alias/there"}, {"hard", "alias/there"},    {"dir/new", "alias/new"},
        {"link", "alias/new"},        {"dir/new", "dir/../link"},
    };
    for (const auto& [one, other] : rows)
    {
        ExpectFailure(Run({"-o", one, "--map", other}, "x"), 2,
                      "tlexpand: '" + one + "' and '" + other + "' are the same output" + s_hint);
        ExpectFailure(Run({"-o", "out", "--depfile", other, "--map", one}, "x"), 2,
                      "tlexpand: '" + one + "' and '" + other + "' are the same output" + s_hint);
    }
    EXPECT_EQ(Read("dir/there"), "old");
    EXPECT_EQ(Names(), " alias dir hard link");
}

TEST_F(OutputPlacesTest, AnImportUnderAnotherNameIsRefused)
{
    Write("x.tl", "@import \"lib.tl\"\nm");
    Write("lib.tl", "@def m = {x}\n");
    std::filesystem::create_symlink("lib.tl", Path("soft"));
    std::filesystem::create_hard_link(Path("lib.tl"), Path("hard"));
    for (const std::string name : {"soft", "hard", "./lib.tl"})
    {
        const std::string err =
            "tlexpand: the output '" + name + "' is a file that is read" + s_hint;
        ExpectFailure(Run({"-o", name, "x.tl"}), 2, err);
        ExpectFailure(Run({"-o", "out", "--map", name, "x.tl"}), 2, err);
        ExpectFailure(Run({"-o", "out", "--depfile", name, "x.tl"}), 2, err);
    }
    EXPECT_EQ(Read("lib.tl"), "@def m = {x}\n");
    EXPECT_EQ(Names(), " hard lib.tl soft x.tl");
}

TEST_F(OutputPlacesTest, TheExpansionMayReplaceTheMainFileBesideOtherOutputs)
{
    Write("x.tl", "@def m = {x}\nm");
    Expand({"-o", "x.tl", "--map", "map", "--depfile", "dep", "x.tl"});
    EXPECT_EQ(Read("x.tl"), "x");
    EXPECT_EQ(Read("dep"), "x.tl: x.tl\n");
    EXPECT_EQ(Read("map").substr(0, 13), "{\"version\":1,");
    EXPECT_EQ(Names(), " dep map x.tl");
}

TEST_F(OutputPlacesTest, PermissionsFollowTheMaskWhateverWasThere)
{
    const std::pair<const char*, unsigned> rows[] = {{"077", 0600}, {"022", 0644}, {"000", 0666}};
    for (const auto& [mask, mode] : rows)
    {
        Write("old", "");
        std::filesystem::permissions(Path("old"), std::filesystem::perms::owner_all);
        RunShell(std::string("umask ") + mask +
                 "; echo x | $TLEXPAND -o old --map map --depfile dep; rm -f ./new; "
                 "echo x | $TLEXPAND -o new");
        for (const char* const name : {"old", "new", "map", "dep"})
        {
            struct stat status;
            ASSERT_EQ(stat(Path(name).c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & 07777u, mode) << name;
            EXPECT_EQ(status.st_uid, geteuid());
        }
    }
}

TEST_F(OutputPlacesTest, AHardLinkKeepsTheEarlierText)
{
    Write("out", "old");
    std::filesystem::create_hard_link(Path("out"), Path("other"));
    Expand({"-o", "out", "--map", "map"}, "x");
    EXPECT_EQ(Read("out"), "x");
    EXPECT_EQ(Read("other"), "old");
}

} // namespace telv::test
