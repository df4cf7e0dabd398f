// SPDX-License-Identifier: MIT
// Line directives, judged by compilers: an error that is planted on a line of a source is reported
// on that line.
#include "ToolTest.h"

#include <map>
#include <regex>
#include <set>

namespace telv::test
{
namespace
{

/// Sources of a program; `PLANT` marks the places for errors.
using Files = std::map<std::string, std::string>;

const Files s_family[] = {
    // Copied text, with directives that leave lines out.
    {{"main.tl", "int a = PLANT;\n"
                 "@def unused = {nothing}\n"
                 "\n"
                 "\n"
                 "int b = PLANT;\n"
                 "@//gone\n"
                 "int c =\n"
                 "  PLANT;\n"
                 "int d = PLANT;\n"
                 "\n"
                 "int e = PLANT;\n"}},
    // Bodies of macros: several lines, nested, called at the beginning and inside of a line.
    {{"main.tl", "@def inner(name) =\n{\n  int name = PLANT;\n  int name@@2 = PLANT;\n}\n"
                 "@def outer(name) =\n"
                 "{\n"
                 "    int name@@1 = PLANT;\n"
                 "    inner(name@@_)\n"
                 "    int name@@3 = PLANT;\n"
                 "}\n"
                 "int a = PLANT;\n"
                 "outer(x)\n"
                 "namespace n {\n"
                 "  outer(y)\n"
                 "  int z = PLANT;\n"
                 "}\n"}},
    // An imported library; the argument begins a line of the body.
    {{"main.tl", "@import \"lib/types.tl\"\n"
                 "int first = PLANT;\n"
                 "define(int, second)\n"
                 "int third = PLANT;\n"},
     {"lib/types.tl", "@def define(type, name) =\n"
                      "{\n"
                      "    struct S_@@name\n"
                      "    {\n"
                      "        type name = PLANT;\n"
                      "        int other = PLANT;\n"
                      "    };\n"
                      "}\n"}},
    // Arguments on lines of their own.
    {{"main.tl", "@def both(a, b) =\n{\n  a\n  b\n}\n"
                 "both(int x = PLANT;,\n"
                 "     int y = PLANT;)\n"
                 "int z = PLANT;\n"}},
    // Loops: blocks and a list that is taken apart.
    {{"main.tl", "int a = PLANT;\n"
                 "@for(n in [one, two, three])\n"
                 "{\n"
                 "    int n = PLANT;\n"
                 "    int n@@_2 =\n"
                 "       PLANT;\n"
                 "\n"
                 "}@//\n"
                 "@let int i = {0}\n"
                 "@while(i < 2)\n"
                 "{\n"
                 "    int w@(i) = PLANT;\n"
                 "    @let i = {i + 1}\n"
                 "}@//\n"
                 "int z = PLANT;\n"}},
    // A list of several lines, and a call through an argument.
    {{"main.tl", "@def members =\n"
                 "{\n"
                 "    [(int a = PLANT;, 1),\n"
                 "     (int b = PLANT;, 2)]\n"
                 "}\n"
                 "@for((member, n) in members)\n"
                 "{\n"
                 "    member\n"
                 "    int c@@n = PLANT;\n"
                 "\n"
                 "}@//\n"
                 "@def each(visit()) =\n"
                 "{\n"
                 "    visit(d, int e = PLANT;)\n"
                 "    visit(f, int g = PLANT;)\n"
                 "}\n"
                 "@def member(name, other) =\n"
                 "{\n"
                 "    other\n"
                 "    int name = PLANT;\n"
                 "}\n"
                 "each(member)\n"
                 "int z = PLANT;\n"}},
    // Conditions and scopes.
    {{"main.tl", "@if(true)\n{\n    int a = PLANT;\n}@else{\n    int a = PLANT;\n}\n"
                 "int b = PLANT;\n"
                 "@scope\n{\n    @def x = {int c = PLANT;}\n    x\n    int d = PLANT;\n}\n"
                 "int e = PLANT;\n"}},
    // Calculated text, of one line and of several.
    {{"main.tl", "int a = @(1 + 2) + PLANT;\n"
                 "int b = @unstr(\"1 +\\n 2 +\\n 3\") + PLANT;\n"
                 "@unstr(\"int c;\\nint d;\\nint e = PLANT;\")\n"
                 "int f = PLANT;\n"
                 "const char* g = @strx(text); int h = PLANT;\n"
                 "@[int i = PLANT;]\n"
                 "int j = PLANT;\n"}},
    // Where no directive can stand: comments, raw strings, continued lines.
    {{"main.tl", "@def pair =\n{\n  + one\n  + two\n}\n@def number = {12345}\n"
                 "/* a comment of\n"
                 "pair\n"
                 "lines */ int a0 = 0;\n"
                 "int a = PLANT;\n"
                 "#define SUM(x) x + \\\n"
                 "   number \\\n"
                 "   0\n"
                 "int b = PLANT;\n"
                 "const char* c = @unstr(\"R\\\"x(\\n\\n\\n)x\\\"\");\n"
                 "int d = PLANT;\n"
                 "const char e = '\"'; int f = 1000;\n"
                 "int g = PLANT;\n"}},
    // Quoted text, and blocks at a column.
    {{"main.tl", "@def body =\n{\n    int a =\n      PLANT;\n    int b = PLANT;\n}\n"
                 "namespace x\n"
                 "{\n"
                 "        body\n"
                 "    @quote(\n"
                 "        int q = PLANT;\n"
                 "        int r = PLANT;\n"
                 "    )\n"
                 "}\n"
                 "int c = PLANT;\n"}},
};

/// Places whose text does not reach the compiler: a branch that is not taken.
const std::vector<std::string> s_silent = {"main.tl:5"};

const std::string s_plant = "PLANT";

/// A place for an error.
struct Place
{
    std::string m_file;
    size_t m_line = 0;
    size_t m_pos = 0; ///< In the file's text.

    std::string Name() const
    {
        std::string name = "planted_" + m_file + "_" + std::to_string(m_line);
        std::replace_if(
            name.begin(), name.end(), [](char c) { return c == '.' || c == '/'; }, '_');
        return name;
    }
};

std::vector<Place> FindPlaces(const Files& files)
{
    std::vector<Place> places;
    for (const auto& [file, text] : files)
        for (size_t pos = text.find(s_plant); pos != std::string::npos;
             pos = text.find(s_plant, pos + 1))
        {
            const auto begin = text.begin();
            const auto line = std::count(begin, begin + static_cast<ssize_t>(pos), '\n') + 1;
            places.push_back({file, static_cast<size_t>(line), pos});
        }
    return places;
}

class LineDirectiveTest : public ToolTest
{
protected:
    /// Writes the sources with errors at `planted` and numbers at the other places.
    void Plant(const Files& files, const std::vector<Place>& planted) const
    {
        for (const auto& [file, text] : files)
        {
            std::string changed;
            size_t from = 0;
            for (const Place& place : FindPlaces({{file, text}}))
            {
                const bool isPlanted = std::any_of(
                    planted.begin(), planted.end(),
                    [&](const Place& p) { return p.m_file == file && p.m_pos == place.m_pos; });
                changed += text.substr(from, place.m_pos - from);
                changed += isPlanted ? place.Name() : "0";
                from = place.m_pos + s_plant.size();
            }
            Write(file, changed + text.substr(from));
        }
    }

    /// The places "FILE:LINE" at which a compiler reports each planted name.
    std::map<std::string, std::set<std::string>> Compile(const std::string& compiler) const
    {
        const ProgramResult result =
            RunShell(compiler + " -std=c++20 -fsyntax-only -Wno-everything -w out.cpp");
        std::map<std::string, std::set<std::string>> reported;
        static const std::regex s_message(
            "^([^:\n]+:[0-9]+):[0-9]+: error: .*(planted_[a-z_]*[0-9]+)");
        std::istringstream lines(result.err);
        for (std::string line; std::getline(lines, line);)
            if (std::smatch match; std::regex_search(line, match, s_message))
                reported[match[2]].insert(match[1]);
        return reported;
    }

    void Check(const std::string& compiler, const std::vector<Place>& planted) const
    {
        Expand({"--line-directives", "--verify-map", "-o", "out.cpp", "main.tl"});
        const auto reported = Compile(compiler);
        for (const Place& place : planted)
        {
            const auto found = reported.find(place.Name());
            if (found == reported.end())
            {
                m_silent.push_back(place.m_file + ":" + std::to_string(place.m_line));
                continue;
            }
            const std::set<std::string> wanted{place.m_file + ":" + std::to_string(place.m_line)};
            EXPECT_EQ(found->second, wanted) << compiler << "\n" << Read("out.cpp");
        }
    }

    mutable std::vector<std::string> m_silent; ///< Places that are not reported.
};

TEST_F(LineDirectiveTest, CompilersReportErrorsWhereTheyWerePlanted)
{
    for (const std::string compiler : {"g++ -fmax-errors=0", "clang++-14 -ferror-limit=0"})
    {
        m_silent.clear();
        for (const Files& files : s_family)
        {
            const std::vector<Place> all = FindPlaces(files);
            Plant(files, all);
            Check(compiler, all);
        }
        EXPECT_EQ(m_silent, s_silent) << compiler;
    }
}

TEST_F(LineDirectiveTest, EachErrorAloneIsReportedWhereItWasPlanted)
{
    for (const Files& files : s_family)
        for (const Place& place : FindPlaces(files))
        {
            Plant(files, {place});
            Check("g++", {place});
        }
    EXPECT_EQ(m_silent, s_silent);
}

TEST_F(LineDirectiveTest, StandOnlyWhereTheyAreNeeded)
{
    Write("lib.tl", "@def body =\n{\n    b1\n    b2\n}\n");
    Write("main.tl", "@import \"lib.tl\"\n\nm1\nm2\nbody\nm3\n\n\nm4\n  @(1)\nm5 @(2) m6\n");
    EXPECT_EQ(Expand({"--line-directives", "main.tl"}), "\n"
                                                        "#line 3 \"main.tl\"\n"
                                                        "m1\n"
                                                        "m2\n"
                                                        "#line 3 \"lib.tl\"\n"
                                                        "b1\n"
                                                        "b2\n"
                                                        "#line 6 \"main.tl\"\n"
                                                        "m3\n"
                                                        "\n"
                                                        "\n"
                                                        "m4\n"
                                                        "  1\n"
                                                        "m5 2 m6\n");
}

TEST_F(LineDirectiveTest, OtherLanguagesHaveOtherForms)
{
    Write("a\"b.tl", "@def x = {1}\nx\n");
    EXPECT_EQ(Expand({"--line-format", "# %l \"%f\"", "a\"b.tl"}), "# 1 \"a\\\"b.tl\"\n1\n");
    EXPECT_EQ(Expand({"--line-format=//line %f:%l 100%%", "-"}, "\n\nx"),
              "\n\n//line <stdin>:3 100%\nx");
}

TEST_F(LineDirectiveTest, StandBehindAByteOrderMark)
{
    const std::string mark = "\xef\xbb\xbf";
    Write("lib.tl", "@def w = {2}\n");
    for (const std::string start : {"@def v = 1\n", "@import \"lib.tl\"\n"})
    {
        Write("main.tl", mark + start + "int a = planted_a_1;\n");
        Expand({"--line-directives", "--verify-map", "-o", "out.cpp", "main.tl"});
        EXPECT_EQ(Read("out.cpp"), mark + "#line 2 \"main.tl\"\nint a = planted_a_1;\n");
        for (const std::string compiler : {"g++", "clang++-14"})
            EXPECT_EQ(Compile(compiler)["planted_a_1"], std::set<std::string>{"main.tl:2"});
    }
    Write("main.tl", mark + "int a;\n");
    EXPECT_EQ(Expand({"--line-directives", "main.tl"}), mark + "#line 1 \"main.tl\"\nint a;\n");
    EXPECT_EQ(Expand({"--line-directives"}, mark), mark);
}

TEST_F(LineDirectiveTest, EndAsTheLinesOfTheTextDo)
{
    Write("main.tl", "@def v = {1}\r\n\r\nint a = v;\r\n\r\n@def w = {2}\r\nint b = w;");
    EXPECT_EQ(Expand({"--line-directives", "main.tl"}), "\r\n"
                                                        "\r\n"
                                                        "#line 3 \"main.tl\"\r\n"
                                                        "int a = 1;\r\n"
                                                        "#line 6 \"main.tl\"\r\n"
                                                        "int b = 2;");
    Write("lib.tl", "@def two =\n{\n  a\n  b\n}\n");
    Write("main.tl", "@import \"lib.tl\"\r\ntwo\r\nc\r\nd");
    EXPECT_EQ(Expand({"--line-directives", "main.tl"}), "#line 3 \"lib.tl\"\n"
                                                        "a\n"
                                                        "b\r\n"
                                                        "#line 3 \"main.tl\"\r\n"
                                                        "c\r\n"
                                                        "d");
}

TEST_F(LineDirectiveTest, NothingMeansNoDirective)
{
    EXPECT_EQ(Expand({"--line-directives"}, ""), "");
    EXPECT_EQ(Expand({"--line-directives"}, "\n  \n\n"), "\n  \n\n");
}

} // namespace
} // namespace telv::test
