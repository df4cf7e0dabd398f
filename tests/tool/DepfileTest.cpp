// SPDX-License-Identifier: MIT
// Dependency files, read by the programs that they are for.
#include "ToolTest.h"

#include <cctype>
#include <map>
#include <regex>
#include <set>
#include <sstream>

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

TEST_F(DepfileTest, ANameThatMakeWouldMisreadIsRefused)
{
    Write("x", "");
    const std::string end = "' to a dependency file: ";
    const std::pair<std::string, std::string> rows[] = {
        {"a\nb", "it holds a control character"},
        {"a\tb", "it holds a control character"},
        {"a;b", "it holds ';'"},
        {"a|b", "it holds '|'"},
        {"a?", "it holds '?'"},
        {"a*", "it holds '*'"},
        {"a%b", "it holds '%'"},
        {"a=b", "it holds '='"},
        {"a\\#b", "it holds '\\#'"},
        {"~a", "its first character is '~'"},
        {"a ", "its last character is ' '"},
        {"a\\", "its last character is '\\'"},
        {"a(b)", "its last character is ')'"},
        {"a&", "its last character is '&'"},
    };
    for (const auto& [name, reason] : rows)
        ExpectFailure(Run({"-o", name, "--depfile", "dep", "x"}), 2,
                      "tlexpand: can't write the name '" + name + end + reason + "\n");
    EXPECT_EQ(Names(), " x");
}

TEST_F(DepfileTest, TheFirstInputMustNotLookLikeAnAssignment)
{
    Write("a=b", "");
    Write("a%b", "");
    EXPECT_EQ(Run({"-o", "out", "--depfile", "dep", "a=b"}).status, 2);
    EXPECT_EQ(Run({"-E", "@import \"a=b\"", "-o", "out", "--depfile", "dep"}).status, 2);
    Expand({"-o", "out", "--depfile", "dep", "a%b"});
    EXPECT_EQ(Read("dep"), "out: a%b\n");
}

TEST_F(DepfileTest, NamesThatCantBeTargetsOfMakeHaveNoRule)
{
    Write("x", "@import \"a=b\"\n@import \"=b\"\n@import \"a%b\"\n@import \"c\"\n");
    for (const char* name : {"a=b", "=b", "a%b", "c"})
        Write(name, "");
    Expand({"-o", "out", "--depfile", "dep", "x"});
    EXPECT_EQ(Read("dep"), "out: x \\\n  a=b \\\n  ./=b \\\n  a%b \\\n  c\n\nc:\n");
}

TEST_F(DepfileTest, ANameLeadsToTheFileThatWasRead)
{
    Write("far/sub/x", "");
    Write("far/y", "");
    std::filesystem::create_symlink("far/sub", Path("link"));
    Write("a\\b", "");
    Write("main", "@import \"link/../y\"\n@import \"a\\\\b\"\n@import \"far/./y\"\n");
    Expand({"-o", "out", "--depfile", "dep", "main"});
    EXPECT_EQ(Read("dep"), "out: main \\\n  link/../y \\\n  far/y \\\n  a\\b\n"
                           "\nlink/../y:\n\nfar/y:\n\na\\b:\n");
}

TEST_F(DepfileTest, ALinkAndItsFileAreBothNamed)
{
    Write("far/x.tl", "");
    Write("work/y.tl", "");
    std::filesystem::create_symlink("../far/x.tl", Path("work/x.tl"));
    std::filesystem::create_symlink("one.tl", Path("work/two.tl"));
    std::filesystem::create_symlink("y.tl", Path("work/one.tl"));
    std::filesystem::create_symlink("work", Path("here"));
    Write("work/main", "@import \"x.tl\"\n@import \"two.tl\"\n@import \"y.tl\"\n@import \"" +
                           Path("here/y.tl") + "\"\n");
    RunShell("cd here && $TLEXPAND -o out --depfile dep main");
    EXPECT_EQ(Read("work/dep"),
              "out: main \\\n  x.tl \\\n  ../far/x.tl \\\n  two.tl \\\n  y.tl \\\n  " +
                  Path("here/y.tl") + " \\\n  " + Path("work/y.tl") +
                  "\n\nx.tl:\n\n../far/x.tl:\n\ntwo.tl:\n\ny.tl:\n\n" + Path("here/y.tl") +
                  ":\n\n" + Path("work/y.tl") + ":\n");
}

TEST_F(DepfileTest, NamesWhatIsReadByOtherMeansAndAnotherTarget)
{
    Write("a.tl", "@import \"b.tl\"\n");
    Write("b.tl", "");
    Expand({"-o", "out", "--depfile", "dep", "--depend", "data 1", "--depend", "b.tl",
            "--depfile-target", "build/x y", "--depend", "data2", "a.tl"});
    EXPECT_EQ(Read("dep"), "build/x\\ y: a.tl \\\n  b.tl \\\n  data\\ 1 \\\n  data2\n"
                           "\nb.tl:\n\ndata\\ 1:\n\ndata2:\n");
    ExpectFailure(Run({"-o", "out", "--depfile", "dep", "--depend", "a*", "a.tl"}), 2,
                  "tlexpand: can't write the name 'a*' to a dependency file: it holds '*'\n");
}

TEST_F(DepfileTest, AnOutputThatDependsOnItselfIsRefused)
{
    Write("data", "kept");
    std::filesystem::create_symlink("data", Path("link"));
    const auto expectRefused = [&](const std::vector<std::string>& arguments,
                                   const std::string& output, const std::string& dependency)
    {
        ExpectFailure(Run(arguments, "x"), 2,
                      "tlexpand: the output '" + output + "' depends on itself: --depend " +
                          dependency + s_hint);
    };
    expectRefused({"-o", "data", "--depfile", "dep", "--depend", "data"}, "data", "data");
    expectRefused({"-o", "out", "--map", "data", "--depfile", "dep", "--depend", "./link"}, "data",
                  "./link");
    expectRefused({"-o", "new", "--depfile", "dep", "--depend", "x", "--depend", "./new"}, "new",
                  "./new");
    expectRefused({"-o", "out", "--depfile", "dep", "--depend", "dep"}, "dep", "dep");
    EXPECT_EQ(Read("data"), "kept");
    for (const char* const name : {"out", "dep", "new"})
        EXPECT_FALSE(std::filesystem::exists(Path(name))) << name;
    // A folder, or a file that is missing, is no output.
    Expand({"-o", "out", "--depfile", "dep", "--depend", ".", "--depend", "no/such"}, "x");
}

/// What the tool accepts is read back by a build program: an output is made again when the import
/// with that name has changed or has gone, and only then.
class DepfileNamesTest : public ToolTest
{
protected:
    DepfileNamesTest()
    {
        for (int c = ' ' - 1; c < 128; ++c)
            if (c != '/' && std::isalnum(c) == 0)
                for (const char* const before : {"", "a"})
                    for (const char* const behind : {"", "b"})
                        m_names.insert(before + std::string(1, static_cast<char>(c)) + behind);
        m_names.erase(".");
        for (const char* const name : {"a\\ b", "a\\\\ b", "a\\#b", "a\\:b", "a\\$b", "a(b).c",
                                       "a:=b", "a+=b", "include", "define", "a\\\\b", "\xc3\xa9"})
            m_names.insert(name);
        Expand();
    }

    /// Expands a file for each name and keeps the names that are accepted, by their numbers.
    void Expand()
    {
        std::map<std::string, std::string> byNumber;
        for (const std::string& name : m_names)
        {
            const std::string number = std::to_string(byNumber.size());
            byNumber[number] = name;
            Write("names/" + name, "");
            Write("m" + number, "@import \"" + Quoted("names/" + name) + "\"\n");
        }
        std::istringstream numbers(
            RunShell("for m in m*; do\n"
                     "$TLEXPAND -o o${m#m} --depfile d${m#m} $m 2> refusal && echo ${m#m}\ndone")
                .out);
        for (std::string number; numbers >> number;)
            m_accepted[number] = byNumber[number];
        EXPECT_GT(m_accepted.size(), 60u);
        EXPECT_GT(m_names.size() - m_accepted.size(), 30u);
    }

    static std::string Quoted(const std::string& name)
    {
        std::string quoted;
        for (const char c : name)
            quoted += c == '\\' || c == '"' ? std::string("\\") + c : std::string(1, c);
        return quoted;
    }

    /// Leaves out the names that hold one of `characters`.
    void LeaveOut(const char* characters)
    {
        std::erase_if(m_accepted, [&](const auto& entry)
                      { return entry.second.find_first_of(characters) != std::string::npos; });
    }

    /// `line` for each accepted name, with its number for "{}".
    std::string ForEachName(const std::string& line) const
    {
        std::string text;
        for (const auto& [number, name] : m_accepted)
            text += std::regex_replace(line, std::regex("\\{\\}"), number) + "\n";
        return text;
    }

    /// The names whose outputs `command` makes.
    std::set<std::string> Made(const std::string& command) const
    {
        std::istringstream words(RunShell(command + " 2>&1").out);
        std::set<std::string> made;
        for (std::string word; words >> word;)
            if (word.rfind("MADE-o", 0) == 0)
                made.insert(m_accepted.at(word.substr(6)));
        return made;
    }

    /// Targets with '%' and '=' are not written; only make needs any.
    void ExpectReads(const std::string& command, bool needsTargets) const
    {
        std::set<std::string> all;
        std::set<std::string> targets;
        for (const auto& [number, name] : m_accepted)
        {
            all.insert(name);
            if (!needsTargets || name.find_first_of("%=") == std::string::npos)
                targets.insert(name);
        }
        Made(command); // Ninja makes everything once.
        RunShell("touch -d 2001-01-01 m* names/* names/.*; touch -d 2002-01-01 o*");
        Made(command);
        EXPECT_EQ(Made(command), std::set<std::string>());
        RunShell("touch -d 2100-01-01 names/* names/.*");
        EXPECT_EQ(Made(command), all);
        RunShell("touch -d 2001-01-01 names/* names/.*");
        Made(command);
        RunShell("rm -r names");
        EXPECT_EQ(Made(command), targets);
    }

private:
    std::set<std::string> m_names;
    std::map<std::string, std::string> m_accepted; ///< By number.
};

TEST_F(DepfileNamesTest, MakeReadsWhatIsWritten)
{
    Write("Makefile", ForEachName("all: o{}\no{}: m{}\n\t@echo MADE-$@; touch $@\n-include d{}"));
    ExpectReads("make -k", true);
}

TEST_F(DepfileNamesTest, NinjaReadsWhatIsWritten)
{
    LeaveOut("\"&'<>^`"); // Older ones end names there.
    Write("build.ninja", "rule r\n  command = echo MADE-$out && touch $out\n  depfile = $d\n" +
                             ForEachName("build o{}: r m{}\n  d = d{}"));
    ExpectReads("ninja", false);
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
