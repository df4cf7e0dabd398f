// Dependency files, read by the programs that they are for.
#include "ToolTest.h"

namespace telv::test
{

using DepfileTest = ToolTest;

TEST_F(DepfileTest, NamesTheMainFileAndEveryImportOnce)
{
    Write("main.tl", "@import \"a.tl\"\n@import \"b/b.tl\"\n");
    Write("a.tl", "@import \"b/b.tl\"\n");
    Write("b/b.tl", "");
    Write("p.tl", "");
    Expand({"-E", "@import \"p.tl\"", "-o", "out", "--depfile", "dep", "main.tl"});
    EXPECT_EQ(Read("dep"), "out: main.tl \\\n  p.tl \\\n  a.tl \\\n  b/b.tl\n"
                           "\np.tl:\n\na.tl:\n\nb/b.tl:\n");
}

TEST_F(DepfileTest, StandardInputIsNoDependency)
{
    Expand({"-o", "out", "--depfile", "dep"}, "x");
    EXPECT_EQ(Read("dep"), "out:\n");
}

TEST_F(DepfileTest, SpecialCharactersAreEscaped)
{
    Write("m a.tl", "@import \"i#:$\\\\x .tl\"\n");
    Write("i#:$/x .tl", "");
    Expand({"-o", "o$ut", "--depfile", "dep", "m a.tl"});
    EXPECT_EQ(Read("dep"), "o$$ut: m\\ a.tl \\\n  i\\#\\:$$/x\\ .tl\n\ni\\#\\:$$/x\\ .tl:\n");
}

TEST_F(DepfileTest, ALineFeedInANameIsAnError)
{
    Write("a\nb", "x");
    EXPECT_EQ(Run({"-o", "out", "--depfile", "dep", "a\nb"}).status, 2);
    EXPECT_EQ(Names(), " a\nb");
}

/// A rule that runs the tool and says so, for one program; names need quotes for the shell.
class BuildToolTest : public ToolTest
{
protected:
    void WriteSources() const
    {
        Write("main.tl", "@import \"a b#$.tl\"\nm\n");
        Write("a b#$.tl", "@def m = {1}\n");
        Write("other.tl", "");
    }

    /// Builds with `command`: at first, again without a reason, after a change of the import, after
    /// a change of something else, and when the import is neither there nor needed any more.
    void ExpectRebuilds(const std::string& command) const
    {
        const std::string age = "touch -d '2001-01-01' *; touch out\n";
        EXPECT_NE(RunShell(command).out.find("EXPANDED"), std::string::npos);
        EXPECT_EQ(RunShell(command).out.find("EXPANDED"), std::string::npos);
        Write("a b#$.tl", "@def m = {2}\n");
        RunShell("touch -d '2100-01-01' 'a b#$.tl'");
        EXPECT_NE(RunShell(command).out.find("EXPANDED"), std::string::npos);
        EXPECT_EQ(Read("out"), "2\n");
        RunShell("touch -d '2001-01-01' 'a b#$.tl'; touch -d '2099-01-01' out");
        Write("main.tl", "none\n");
        RunShell("touch -d '2100-01-01' main.tl; rm 'a b#$.tl'");
        EXPECT_NE(RunShell(command).out.find("EXPANDED"), std::string::npos);
        EXPECT_EQ(Read("out"), "none\n");
    }
};

TEST_F(BuildToolTest, MakeRebuilds)
{
    WriteSources();
    Write("Makefile", std::string("out: main.tl\n\t@echo EXPANDED\n\t@'") + TELV_TLEXPAND_PATH +
                          "' -o out --depfile out.d main.tl\n-include out.d\n");
    ExpectRebuilds("make --no-print-directory 2>&1");
}

TEST_F(BuildToolTest, NinjaRebuilds)
{
    WriteSources();
    Write("build.ninja", std::string("rule expand\n  command = echo EXPANDED && '") +
                             TELV_TLEXPAND_PATH +
                             "' -o out --depfile out.d main.tl\n  depfile = out.d\n"
                             "build out: expand main.tl\n");
    ExpectRebuilds("ninja 2>&1");
}

} // namespace telv::test
