// SPDX-License-Identifier: MIT
// --keep-unchanged: an output whose bytes would be the same is left alone.
#include "ToolTest.h"

namespace telv::test
{

class KeepUnchangedTest : public ToolTest
{
protected:
    using Time = std::filesystem::file_time_type;

    /// Gives the file a time long ago.
    void Age(const std::string& name) const
    {
        std::filesystem::last_write_time(Path(name), s_longAgo);
    }
    bool IsOld(const std::string& name) const
    {
        return std::filesystem::last_write_time(Path(name)) == s_longAgo;
    }

    static constexpr Time s_longAgo = Time(std::chrono::hours(24));
};

TEST_F(KeepUnchangedTest, EachOutputIsComparedAlone)
{
    Write("a.tl", "@def m = {x}\nm\n");
    const std::vector<std::string> arguments = {"--keep-unchanged", "-o",  "out", "--map", "map",
                                                "--depfile",        "dep", "a.tl"};
    Expand(arguments);
    for (const char* const name : {"out", "map", "dep"})
        Age(name);
    Expand(arguments);
    EXPECT_TRUE(IsOld("out") && IsOld("map") && IsOld("dep"));
    Write("a.tl", "@def m = {x}\n\nm\n");
    Expand(arguments);
    EXPECT_TRUE(IsOld("out") && IsOld("dep"));
    EXPECT_FALSE(IsOld("map"));
    EXPECT_NE(Read("map").find("\"in\":15"), std::string::npos);
    Write("a.tl", "@def m = {y}\n\nm\n");
    Expand(arguments);
    EXPECT_EQ(Read("out"), "y\n");
    EXPECT_FALSE(IsOld("out"));
    EXPECT_EQ(Names(), " a.tl dep map out");
}

TEST_F(KeepUnchangedTest, OneByteMore)
{
    const std::string large(200'000, 'x');
    for (const std::string& earlier : {large + "y", large.substr(1), "y" + large.substr(1),
                                       large.substr(1) + "y", std::string()})
    {
        Write("out", earlier);
        Expand({"--keep-unchanged", "-o", "out"}, large);
        EXPECT_EQ(Read("out"), large);
    }
    Age("out");
    Expand({"--keep-unchanged", "-o", "out"}, large);
    EXPECT_TRUE(IsOld("out"));
    Expand({"-o", "out"}, large);
    EXPECT_FALSE(IsOld("out"));
    Write("empty", "");
    Age("empty");
    Expand({"--keep-unchanged", "-o", "empty"}, "");
    EXPECT_TRUE(IsOld("empty"));
    Expand({"--keep-unchanged", "-o", "new"}, "");
    EXPECT_EQ(Read("new"), "");
}

TEST_F(KeepUnchangedTest, LinksAndDevicesAreWrittenAsEver)
{
    Write("target", "x");
    std::filesystem::create_symlink("target", Path("link"));
    Age("target");
    Expand({"--keep-unchanged", "-o", "link"}, "x");
    EXPECT_TRUE(IsOld("target"));
    Expand({"--keep-unchanged", "-o", "link"}, "y");
    EXPECT_EQ(Read("target"), "y");
    EXPECT_TRUE(std::filesystem::is_symlink(Path("link")));
    EXPECT_EQ(Expand({"--keep-unchanged", "-o", "/dev/stdout"}, "x"), "x");
}

TEST_F(KeepUnchangedTest, NinjaBuildsNothingBehindIt)
{
    Write("a.tl", "@import \"b.tl\"\nm\n");
    Write("b.tl", "@def m = {x}\n");
    Write("build.ninja", std::string("rule expand\n command = ") + TELV_TLEXPAND_PATH +
                             " --keep-unchanged -o $out --depfile $out.d $in\n"
                             " depfile = $out.d\n deps = gcc\n restat = 1\n"
                             "rule copy\n command = cp $in $out && echo made >> log\n"
                             "build out: expand a.tl\nbuild copy: copy out\n");
    const auto build = [&] { return RunShell("ninja --quiet copy").status; };
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(Read("log"), "made\n");
    // A comment changes nothing in the output.
    Write("b.tl", "@def m = {x} @// a comment\n");
    std::filesystem::last_write_time(Path("b.tl"), Time::clock::now() + std::chrono::seconds(2));
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(Read("log"), "made\n");
    Write("b.tl", "@def m = {y}\n");
    std::filesystem::last_write_time(Path("b.tl"), Time::clock::now() + std::chrono::seconds(4));
    EXPECT_EQ(build(), 0);
    EXPECT_EQ(Read("log"), "made\nmade\n");
    EXPECT_EQ(Read("copy"), "y\n");
}

} // namespace telv::test
