// SPDX-License-Identifier: MIT
// tlexpand remap: messages of real programs, and messages of every form.
#include "RemapTest.h"

namespace telv::test
{

TEST_F(RemapTest, MessagesOfGcc)
{
    Generate();
    const ProgramResult result = RunShell("g++ -c gen.cpp 2>&1 | \"$TLEXPAND\" remap gen.cpp.map");
    ExpectPlaces(result.out);
    EXPECT_EQ(result.err, "");
}

TEST_F(RemapTest, MessagesOfClang)
{
    Generate();
    const ProgramResult result =
        RunShell("clang++-14 -c gen.cpp 2>&1 | \"$TLEXPAND\" remap gen.cpp.map");
    ExpectPlaces(result.out);
}

/// An error is planted into an example; the compiler must report it in the line of the template.
TEST_F(RemapTest, ErrorsPlantedIntoTheExamples)
{
    const struct
    {
        const char* m_what;
        const char* m_example;
        const char* m_text;    ///< Of the template,
        const char* m_planted; ///< and what takes its place.
    } rows[] = {
        {"copied text", "generator/shapes", "bool good = true;", "bool good = planted;"},
        {"a macro's body", "generator/shapes", "double parameter;", "planted parameter;"},
        {"an argument", "generator/shapes", "visit(Square, side, 3)", "visit(Square, this, 3)"},
        {"a macro that a macro was given", "generator/shapes", "name::flag,", "name::planted,"},
        {"calculated text", "generator/shapes", "@[name@@Area(parameter)]", "@[@quote(planted)]"},
        {"a loop", "status/status", "Status::follower ||", "Status::planted ||"},
        {"copied text", "status/status", "Status status,", "Planted status,"},
        {"a number", "status/status", "= count;", "= count planted;"},
    };
    for (const auto& row : rows)
    {
        std::string text =
            *ReadFile(std::string(TELV_SOURCE_DIR "/examples/") + row.m_example + ".tl");
        const size_t at = text.find(row.m_text);
        ASSERT_NE(at, std::string::npos) << row.m_text;
        text.replace(at, std::string(row.m_text).size(), row.m_planted);
        Write("example.tl", text);
        Expand({"-o", "gen.cpp", "--map", "gen.cpp.map", "example.tl"});
        const std::string line = std::to_string(
            std::count(text.begin(), text.begin() + static_cast<ssize_t>(at), '\n') + 1);
        const std::string said = RunShell("g++ -std=c++20 -fsyntax-only gen.cpp 2>&1 | "
                                          "\"$TLEXPAND\" remap gen.cpp.map | grep 'error: '")
                                     .out;
        EXPECT_EQ(said.find("example.tl:" + line + ":"), 0u) << row.m_what << "\n" << said;
    }
}

TEST_F(RemapTest, TheCommandIsRunAndKeepsItsStatusAndStreams)
{
    Generate();
    const ProgramResult gcc = RunShell("\"$TLEXPAND\" remap gen.cpp.map -- g++ -c gen.cpp");
    ExpectPlaces(gcc.err);
    EXPECT_EQ(gcc.out, "");
    EXPECT_EQ(gcc.status, 1);
    const ProgramResult both = Run({"remap", "gen.cpp.map", "--", "sh", "-c",
                                    "echo gen.cpp:1: out; echo gen.cpp:1:5: err >&2; exit 7"});
    EXPECT_EQ(both.out, "main.tl:2: out\n");
    EXPECT_EQ(both.err, "main.tl:2:5: err\n");
    EXPECT_EQ(both.status, 7);
    EXPECT_EQ(Run({"remap", "gen.cpp.map", "--", "sh", "-c", "kill -TERM $$"}).status, 128 + 15);
    EXPECT_EQ(Run({"remap", "gen.cpp.map", "--", "cat"}, "gen.cpp:1: in").out, "main.tl:2: in");
    const ProgramResult none = Run({"remap", "gen.cpp.map", "--", "no-such-program", "-x"});
    EXPECT_EQ(none.status, 127);
    EXPECT_EQ(none.err, "tlexpand: can't run 'no-such-program': No such file or directory\n");
}

TEST_F(RemapTest, EveryFormOfAPlace)
{
    Generate();
    const struct
    {
        const char* m_message;
        const char* m_rewritten;
    } rows[] = {
        {"gen.cpp:1:10: error: x\n", "main.tl:2:10: error: x\n"},
        {"gen.cpp:1: warning: x\n", "main.tl:2: warning: x\n"},
        {"./gen.cpp:1:10: x\n", "main.tl:2:10: x\n"},
        {"gen.cpp(1): error C2065: x\n", "main.tl(2): error C2065: x\n"},
        {"gen.cpp(1,10) : error : x\n", "main.tl(2,10) : error : x\n"},
        {"  File \"gen.cpp\", line 2, in f\n", "  File \"lib.tl\", line 3, in f\n"},
        {"In file included from gen.cpp:1,\n", "In file included from main.tl:2,\n"},
        {"                 from gen.cpp:2:3:\n", "                 from lib.tl:3:7:\n"},
        {"prog: gen.cpp:2: int main(): Assertion `0' failed.\n",
         "prog: lib.tl:3: int main(): Assertion `0' failed.\n"},
        {"at gen.cpp:1 and gen.cpp:2\n", "at main.tl:2 and lib.tl:3\n"},
        {"\x1b[01m\x1b[Kgen.cpp:1:10:\x1b[m\x1b[K x\n",
         "\x1b[01m\x1b[Kmain.tl:2:10:\x1b[m\x1b[K x\n"},
        {"at gen.cpp:1. It is\n", "at main.tl:2. It is\n"},
        {"gen.cpp:1-int ok\n", "main.tl:2-int ok\n"},
        // Ranges are not rewritten by halves.
        {"gen.cpp:1.10: error: x\n", "gen.cpp:1.10: error: x\n"},
        {"gen.cpp:1.10-12: error: x\n", "gen.cpp:1.10-12: error: x\n"},
        {"gen.cpp:1.10-2.3: error: x\n", "gen.cpp:1.10-2.3: error: x\n"},
        {"gen.cpp:1-2: x\n", "gen.cpp:1-2: x\n"},
        {"gen.cpp:1,10: x\n", "gen.cpp:1,10: x\n"},
        {"gen.cpp:1:1-2:3: x\n", "gen.cpp:1:1-2:3: x\n"},
        {"gen.cpp:1:1-3", "gen.cpp:1:1-3"},
        {"gen.cpp:1:10:12: x\n", "gen.cpp:1:10:12: x\n"},
        // What is no place of it passes.
        {"gen.cpp: In function 'f':\n", "gen.cpp: In function 'f':\n"},
        {"other.cpp:1:1: x\n", "other.cpp:1:1: x\n"},
        {"mygen.cpp:1:1: x\n", "mygen.cpp:1:1: x\n"},
        {"sub/gen.cpp:1:1: x\n", "sub/gen.cpp:1:1: x\n"},
        {"gen.cpp:x:1: y\n", "gen.cpp:x:1: y\n"},
        {"gen.cpp(x): y\n", "gen.cpp(x): y\n"},
        {"[ 50%] Building gen.cpp\n", "[ 50%] Building gen.cpp\n"},
        {"{\n", "{\n"},
        {"no line feed gen.cpp:1", "no line feed main.tl:2"},
        {"gen.cpp:1\r\n", "main.tl:2\r\n"},
        {"", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Filter(row.m_message), row.m_rewritten);
    const std::string bytes("a\0\xff gen.cpp:1\n", 14);
    EXPECT_EQ(Filter(bytes), std::string("a\0\xff main.tl:2\n", 14));
}

TEST_F(RemapTest, ColumnsOfTerminalsAreUnderstood)
{
    Write("main.tl", "@def x = {1}\n\tint a = b;\n");
    Generate();
    // GCC counts the tab as eight columns.
    EXPECT_EQ(Filter("gen.cpp:1:17: error: b\n"), "main.tl:2:10: error: b\n");
    EXPECT_EQ(Filter("gen.cpp:1:10: error: b\n"), "main.tl:2:10: error: b\n");
}

TEST_F(RemapTest, TheWordThatAMessageQuotesTellsWhatItsColumnCounts)
{
    Write("main.tl", "@def m =\n{\n1\n}\nvoid g()\n{\n\tint k = abc + (m);\n}\n"
                     "/* \u00e4\u00e4 */ int x = bad;\n");
    Generate();
    EXPECT_EQ(Filter("gen.cpp:3:17: error: 'abc' was not declared\n"),
              "main.tl:7:10: error: 'abc' was not declared\n");
    EXPECT_EQ(Filter("gen.cpp:3:17: error: \u2018abc\u2019 was not declared\n"),
              "main.tl:7:10: error: \u2018abc\u2019 was not declared\n");
    EXPECT_EQ(Filter("gen.cpp:3:10: error: use of undeclared identifier 'abc'\n"),
              "main.tl:7:10: error: use of undeclared identifier 'abc'\n");
    EXPECT_EQ(Filter("gen.cpp:3:17: error: can't use '\x1b[1mabc\x1b[m'\n"),
              "main.tl:7:10: error: can't use '\x1b[1mabc\x1b[m'\n");
    // Without a word, GCC's columns are meant where both can be.
    EXPECT_EQ(Filter("gen.cpp:3:9: error: x\n"), "main.tl:7:2: error: x\n");
    for (const char* compiler : {"g++", "LC_ALL=C.UTF-8 g++", "clang++-14"})
        EXPECT_EQ(RunShell(std::string(compiler) + " -c gen.cpp 2>&1 | \"$TLEXPAND\" remap "
                                                   "gen.cpp.map | sed -n 's/: error.*//p'")
                      .out,
                  "main.tl:7:10\nmain.tl:9:20\n")
            << compiler;
}

TEST_F(RemapTest, PathsOfEveryKind)
{
    std::filesystem::create_directories(Path("build/deep"));
    Generate("build/my gen.cpp");
    const std::string absolute = std::filesystem::canonical(Path("build")).string();
    const ProgramResult result =
        RunShell("cd build/deep && printf '%s\\n' '../my gen.cpp:1:1: a' '" + absolute +
                 "/my gen.cpp:1:1: b' './..//my gen.cpp:1:1: c' 'gen.cpp:1:1: d' "
                 "\"make[1]: Entering directory '" +
                 absolute + "'\" 'my gen.cpp:1:1: e' \"make[1]: Leaving directory '" + absolute +
                 "'\" 'my gen.cpp:1:1: f' | \"$TLEXPAND\" remap '../my gen.cpp.map'");
    EXPECT_EQ(result.out, "../../main.tl:2:1: a\n../../main.tl:2:1: b\n../../main.tl:2:1: c\n"
                          "gen.cpp:1:1: d\nmake[1]: Entering directory '" +
                              absolute + "'\n../../main.tl:2:1: e\nmake[1]: Leaving directory '" +
                              absolute + "'\nmy gen.cpp:1:1: f\n");
    EXPECT_EQ(result.err, "");
}

TEST_F(RemapTest, AFileOfTheSameNameInAnEnteredDirectoryIsMeant)
{
    Generate();
    Write("sub/gen.cpp", "int b;\n");
    Write("empty/README", "");
    const auto filter = [&](const std::string& directory)
    {
        const std::string entering = "make: Entering directory '" + directory + "'\n";
        return Filter(entering + "gen.cpp:1:1: a\n./gen.cpp:1:1: b\n../gen.cpp:1:1: c\n")
            .substr(entering.size());
    };
    EXPECT_EQ(filter("sub"), "gen.cpp:1:1: a\n./gen.cpp:1:1: b\nmain.tl:2:1: c\n");
    // Of several directories at once, only one is said last.
    EXPECT_EQ(filter("empty"), "main.tl:2:1: a\nmain.tl:2:1: b\nmain.tl:2:1: c\n");
}

TEST_F(RemapTest, MapsAndOutputsCanBeLinks)
{
    std::filesystem::create_directories(Path("real"));
    std::filesystem::create_directories(Path("link"));
    Write("real.cpp", "");
    std::filesystem::create_symlink("real.cpp", Path("link.cpp"));
    std::filesystem::create_symlink("real.cpp", Path("other.cpp"));
    Expand({"-o", "link.cpp", "--map", "real/r.map", "main.tl"});
    std::filesystem::create_symlink("../real/r.map", Path("link/l.map"));
    std::filesystem::create_symlink("../real", Path("link/directory"));
    for (const std::string map : {"real/r.map", "link/l.map", "link/directory/r.map"})
    {
        const ProgramResult result =
            Run({"remap", map}, "link.cpp:1: a\nreal.cpp:1: b\nother.cpp:1: c\nother.c:1: d\n");
        EXPECT_EQ(result.out, "main.tl:2: a\nmain.tl:2: b\nmain.tl:2: c\nother.c:1: d\n") << map;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(Run({"where", map, "link.cpp:1"}).out,
                  "main.tl:2:1: copied from here\n 2 | int ok = bad_in_text;\n   | ^\n")
            << map;
    }
    for (const std::string read : {"< link/l.map", "< real/r.map cat |"})
        EXPECT_EQ(RunShell(read + " \"$TLEXPAND\" where /dev/stdin real.cpp:1").out,
                  "main.tl:2:1: copied from here\n 2 | int ok = bad_in_text;\n   | ^\n");
}

TEST_F(RemapTest, WhatIsQuotedStays)
{
    Write("main.tl", "@def name = {\"gen.cpp:1:2\"}\n\nlog(name); oops;\n");
    Generate("gen.cpp", {"--chains"});
    const std::string bar =
        "    1 | log(\"gen.cpp:1:2\"); oops;\n      |                      ^~~~\n";
    EXPECT_EQ(Filter("gen.cpp:1:21: error: 'oops'\n" + bar + "gen.cpp:1:1: note: x\n"),
              "main.tl:3:12: error: 'oops'\n" + bar + "main.tl:3:1: note: x\n");
    const std::string plain = "log(\"gen.cpp:1:2\"); oops;\n                    ^\n";
    EXPECT_EQ(Filter("gen.cpp:1:21: error: 'oops'\n" + plain + "gen.cpp:1:1: note: x\n"),
              "main.tl:3:12: error: 'oops'\n" + plain + "main.tl:3:1: note: x\n");
    const std::string coloured = "   \x1b[1m 1 | \x1b[0mlog(\"gen.cpp:1:2\"\n";
    EXPECT_EQ(Filter(coloured), coloured);
}

TEST_F(RemapTest, ASignalEndsTheCommandToo)
{
    Generate();
    const ProgramResult result = RunShell(
        "\"$TLEXPAND\" remap gen.cpp.map -- sh -c 'trap \"echo ended > end; exit 3\" TERM; "
        "echo $$ > pid; while :; do sleep 0.1; done' & "
        "until [ -s pid ]; do sleep 0.1; done; kill -TERM $!; wait $!; echo $?; "
        "while kill -0 $(cat pid) 2> none; do sleep 0.1; done; cat end");
    EXPECT_EQ(result.out, "143\nended\n");
}

TEST_F(RemapTest, SeveralMapsAndOneWithoutAName)
{
    Generate();
    Write("other.tl", "\n\nx\n");
    EXPECT_EQ(RunShell("\"$TLEXPAND\" --map other.map other.tl > other.txt").status, 0);
    const ProgramResult result = Run({"remap", "gen.cpp.map", "-o", "other.txt", "other.map"},
                                     "other.txt:3: a\ngen.cpp:1: b\n");
    EXPECT_EQ(result.out, "other.tl:3: a\nmain.tl:2: b\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(RemapTest, LinesPassAtOnce)
{
    Generate();
    // The reader gets a line before the writer goes on.
    const ProgramResult result =
        RunShell("mkfifo go; { echo 'gen.cpp:1: one'; echo '{'; read x < go; echo two; } | "
                 "\"$TLEXPAND\" remap gen.cpp.map | { read a; read b; echo \"$a\"; echo \"$b\"; "
                 "echo > go; cat; }");
    EXPECT_EQ(result.out, "main.tl:2: one\n{\ntwo\n");
}

TEST_F(RemapTest, TracebacksOfPython)
{
    Write("gen.tl", "@def check(x) =\n{\n    assert x > 1\n}\n"
                    "def f():\n    check(2)\n    check(0)\nf()\n");
    Expand({"-o", "gen.py", "--map", "gen.map", "gen.tl"});
    const ProgramResult result = Run({"remap", "gen.map", "--", "python3", "gen.py"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("gen.tl\", line 8, in <module>"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("gen.tl\", line 3, in f"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("gen.py\", line"), std::string::npos) << result.err;
}

TEST_F(RemapTest, LongLinesAndDeepDocumentsPass)
{
    Generate();
    std::string line;
    for (int i = 0; i < 20000; ++i)
        line += "a/gen.cpp:1 xgen.cpp:2 x:3 ";
    line += "gen.cpp:1\n";
    const std::string rewritten = Filter(line);
    EXPECT_TRUE(rewritten.ends_with(" xgen.cpp:2 x:3 main.tl:2\n"));
    EXPECT_EQ(rewritten.size(), line.size());
    const std::string deep =
        "[{\"a\":" + std::string(300000, '[') + std::string(300000, ']') + "}]\n";
    EXPECT_TRUE(Filter(deep) == deep);
    const std::string openOnly = std::string(300000, '[') + "\n";
    EXPECT_TRUE(Filter(openOnly) == openOnly);
}

TEST_F(RemapTest, NotesShowTheChain)
{
    Generate();
    std::string map = Read("gen.cpp.map");
    map.insert(map.find(" \"pieces\":["),
               " \"chains\":["
               "{\"kind\":\"loop\",\"name\":\"@for\",\"source\":0,\"in\":17,\"inSize\":1,"
               "\"round\":2,\"parent\":null},"
               "{\"kind\":\"macro\",\"name\":\"pair\",\"source\":0,\"in\":39,\"inSize\":4,"
               "\"parent\":0}],\n");
    for (size_t pos = map.find("\"source\":1"); pos != std::string::npos;
         pos = map.find("\"source\":1", pos + 1))
        map.insert(map.find('}', pos), ",\"chain\":1");
    Write("gen.cpp.map", map);
    EXPECT_EQ(Filter("gen.cpp:2:9: error: bad\n    2 | int x = bad_in_body;\n      |         ^~~\n"
                     "next\n"),
              "lib.tl:3:13: error: bad\n    2 | int x = bad_in_body;\n      |         ^~~\n"
              "main.tl:3:1: note: in expansion of macro 'pair'\n"
              "main.tl:2:1: note: in round 2 of the loop\n"
              "next\n");
    EXPECT_EQ(Filter("gen.cpp:2: error: bad\nint x = bad_in_body;\n        ^\n"),
              "lib.tl:3: error: bad\nint x = bad_in_body;\n        ^\n"
              "main.tl:3: note: in expansion of macro 'pair'\n"
              "main.tl:2: note: in round 2 of the loop\n");
    EXPECT_EQ(Filter("gen.cpp(2) : error : bad\n"),
              "lib.tl(3) : error : bad\n"
              "main.tl(3) : note : in expansion of macro 'pair'\n"
              "main.tl(2) : note : in round 2 of the loop\n");
    EXPECT_EQ(Filter("  File \"gen.cpp\", line 2, in f\n    x\n"),
              "  File \"main.tl\", line 2, in round 2 of the loop\n"
              "  File \"main.tl\", line 3, in expansion of macro 'pair'\n"
              "  File \"lib.tl\", line 3, in f\n    x\n");
    const std::string json =
        Filter("[{\"kind\":\"error\",\"message\":\"bad\",\"children\":[],\"locations\":[{\"caret\":"
               "{\"file\":\"gen.cpp\",\"line\":2,\"column\":9,\"byte-column\":9}}]}]\n");
    EXPECT_EQ(
        json,
        "[{\"kind\":\"error\",\"message\":\"bad\",\"children\":["
        "{\"kind\":\"note\",\"message\":\"in expansion of macro 'pair'\",\"locations\":"
        "[{\"caret\":{\"file\":\"main.tl\",\"line\":3,\"column\":1}}]},"
        "{\"kind\":\"note\",\"message\":\"in round 2 of the loop\",\"locations\":"
        "[{\"caret\":{\"file\":\"main.tl\",\"line\":2,\"column\":1}}]}],\"locations\":"
        "[{\"caret\":{\"file\":\"lib.tl\",\"line\":3,\"column\":13,\"byte-column\":13}}]}]\n");
}

TEST_F(RemapTest, ChainsOfRealCompilers)
{
    Generate("gen.cpp", {"--chains"});
    for (const char* compiler : {"g++", "clang++-14"})
    {
        const ProgramResult result =
            RunShell(std::string(compiler) + " -c gen.cpp 2>&1 | \"$TLEXPAND\" remap gen.cpp.map");
        ExpectPlaces(result.out);
        ExpectNotes(result.out);
        EXPECT_EQ(result.err, "");
    }
}

/// Clang shows a tab as blanks, and what it would insert below the caret.
TEST_F(RemapTest, NotesEndAsTheMessageDoes)
{
    Generate("gen.cpp", {"--chains"});
    EXPECT_EQ(Filter("gen.cpp:2:9: error: 'bad_in_body'\r\n 2 | x\r\ngen.cpp:1:1: error: y\n"),
              "lib.tl:3:13: error: 'bad_in_body'\r\n 2 | x\r\n"
              "main.tl:3:1: note: in expansion of macro 'pair'\r\nmain.tl:2:1: error: y\n");
}

TEST_F(RemapTest, NotesStandBehindTheWholeExcerpt)
{
    Write("main.tl", "@def m(x) =\n{\nint z;\n\tint x = bad\nint w;\n}\n"
                     "@def n(x) =\n{\nint y;\nflaot x = 1\nint v;\n}\n"
                     "void g()\n{\nm(a)\nn(b)\n}\n");
    Generate("gen.cpp", {"--chains"});
    EXPECT_EQ(Filter("gen.cpp:4:13: error: expected ';'\n        int a = bad\n"
                     "                   ^\n                   ;\nnext\n"),
              "main.tl:4:13: error: expected ';'\n        int a = bad\n"
              "                   ^\n                   ;\n"
              "main.tl:15:1: note: in expansion of macro 'm'\nnext\n");
    EXPECT_EQ(Filter("gen.cpp:7:1: error: unknown 'flaot'\nflaot b = 1\n^~~~~\nfloat\n"
                     "2 errors generated.\n"),
              "main.tl:10:1: error: unknown 'flaot'\nflaot b = 1\n^~~~~\nfloat\n"
              "main.tl:16:1: note: in expansion of macro 'n'\n2 errors generated.\n");
    const std::string plain =
        RunShell("clang++-14 -c gen.cpp 2>&1 | \"$TLEXPAND\" remap gen.cpp.map").out;
    const std::string coloured = RunShell("clang++-14 -fcolor-diagnostics -c gen.cpp 2>&1 | "
                                          "\"$TLEXPAND\" remap gen.cpp.map | "
                                          "sed 's/\\x1b\\[[0-9;]*m//g'")
                                     .out;
    EXPECT_EQ(coloured, plain);
    std::istringstream lines(plain);
    std::string last;
    size_t count = 0;
    for (std::string line; std::getline(lines, line); last = line)
        if (line.find("note: in expansion of macro") != std::string::npos)
        {
            EXPECT_EQ(last.find_first_not_of(" ^~;"), std::string::npos) << plain;
            ++count;
        }
    EXPECT_GE(count, 2U) << plain;
}

TEST_F(RemapTest, OfALongChainTheFirstTenStepsAreShown)
{
    Write("deep.tl", "@def f(int n) = {@if(n == 0){bad}@else{f(@(n - 1))}}\n  f(30)\n");
    Expand({"-o", "deep.c", "--map", "deep.map", "--chains", "deep.tl"});
    ASSERT_EQ(Read("deep.c"), "  bad\n");
    const auto count = [](const std::string& text, const std::string& part)
    {
        size_t found = 0;
        for (size_t pos = text.find(part); pos != std::string::npos; pos = text.find(part, pos + 1))
            ++found;
        return found;
    };
    const std::string message = Run({"remap", "deep.map"}, "deep.c:1:3: error: x\nnext\n").out;
    EXPECT_EQ(count(message, ": note: in "), 10U);
    const size_t more = message.find("\n... ");
    ASSERT_NE(more, std::string::npos) << message;
    const std::string rest = message.substr(more + 1, message.find('\n', more + 1) - more - 1);
    EXPECT_TRUE(message.ends_with("'\n" + rest + "\nnext\n")) << message;
    const std::string traceback = Run({"remap", "deep.map"}, "  File \"deep.c\", line 1\n").out;
    EXPECT_TRUE(traceback.starts_with("  " + rest + "\n  File \"deep.tl\"")) << traceback;
    EXPECT_EQ(count(traceback, "\n"), 12U);
    const auto children = nlohmann::json::parse(
        Run({"remap", "deep.map"}, "[{\"kind\":\"error\",\"message\":\"x\",\"children\":[],"
                                   "\"locations\":[{\"caret\":{\"file\":\"deep.c\",\"line\":1,"
                                   "\"column\":3,\"byte-column\":3}}]}]\n")
            .out)[0]["children"];
    ASSERT_EQ(children.size(), 11U);
    EXPECT_EQ(children[10]["message"], rest);
    const std::string shown = Expand({"where", "deep.map", "deep.c:1:3"});
    EXPECT_TRUE(shown.ends_with("\n" + rest + "\n")) << shown;
    EXPECT_EQ(count(shown, "\n"), 34U);
}

TEST_F(RemapTest, ChainsOfTracebacks)
{
    Write("gen.tl", "@def check(x) =\n{\n    assert x > 1\n}\n"
                    "def f():\n    check(2)\n    @for(n in [7, 0])\n    {\n        check(n)\n\n"
                    "    }@//\nf()\n");
    Expand({"-o", "gen.py", "--map", "gen.map", "--chains", "gen.tl"});
    const ProgramResult result = Run({"remap", "gen.map", "--", "python3", "gen.py"});
    EXPECT_EQ(result.status, 1);
    // Places of a traceback stand outermost first, so the steps come before what they led to.
    EXPECT_NE(result.err.find("  File \"gen.tl\", line 7, in round 2 of the loop\n"
                              "  File \"gen.tl\", line 9, in expansion of macro 'check'\n"
                              "  File \"gen.tl\", line 3, in f\n"),
              std::string::npos)
        << result.err;
    EXPECT_EQ(result.err.find("gen.py\", line"), std::string::npos) << result.err;
}

TEST_F(RemapTest, ElementsOfListsLeadToWhereTheyStand)
{
    Write("main.tl", "@def fields =\n"
                     "{\n"
                     "    [(float, samples),\n"
                     "     (flaot, clipped)]\n"
                     "}\n"
                     "@for((type, name) in fields){type name;\n"
                     "}\n"
                     "@for((type, name) in rows)\n"
                     "{\n"
                     "    type name;\n"
                     "\n"
                     "}@//\n");
    Write("rows.csv", "type,name\nint,good\nunsinged,bad\n");
    const auto places = [this]
    {
        return RunShell("g++ -c gen.cpp 2>&1 | \"$TLEXPAND\" remap gen.cpp.map | "
                        "sed -n 's/: error.*\\| note//p'")
            .out;
    };
    Generate("gen.cpp", {"--list", "rows=rows.csv", "--chains"});
    EXPECT_EQ(places(), "main.tl:4:7\n"
                        "main.tl:6:30:: in expansion of macro 'type'\n"
                        "main.tl:6:1:: in round 2 of the loop\n"
                        "rows.csv:3:1\n"
                        "main.tl:10:5:: in expansion of macro 'type'\n"
                        "main.tl:8:1:: in round 2 of the loop\n");
    // The map alone knows the loop.
    Generate("gen.cpp", {"--list", "rows=rows.csv"});
    EXPECT_EQ(places(), "main.tl:6:1\nmain.tl:8:1\n");
}

TEST_F(RemapTest, WhatCannotBeMappedPassesAndIsReported)
{
    Generate();
    const auto expect = [&](const std::string& said)
    {
        const ProgramResult result =
            Run({"remap", "gen.cpp.map"}, "gen.cpp:99:1: x\ngen.cpp:0: y\n");
        EXPECT_EQ(result.out, "gen.cpp:99:1: x\ngen.cpp:0: y\n");
        EXPECT_EQ(result.err, said);
        EXPECT_EQ(result.status, 2);
    };
    expect("tlexpand: 'gen.cpp' has no line 99\ntlexpand: 'gen.cpp' has no line 0\n");
    // Each output that does not fit is reported once.
    const std::string output = Read("gen.cpp");
    Write("gen.cpp", output + "more\n");
    const std::string size = std::to_string(output.size());
    expect("tlexpand: 'gen.cpp.map' does not fit 'gen.cpp': the file has " +
           std::to_string(output.size() + 5) + " bytes, the map " + size + "\n");
    const size_t calculated = output.find("2");
    ASSERT_NE(calculated, std::string::npos);
    Write("gen.cpp", std::string(output).replace(calculated, 1, "3"));
    EXPECT_EQ(Run({"remap", "gen.cpp.map"}, "gen.cpp:1:1: x\n").out, "gen.cpp:1:1: x\n");
    EXPECT_EQ(Run({"remap", "gen.cpp.map"}, "gen.cpp:1:1: x\n").err,
              "tlexpand: 'gen.cpp.map' does not fit 'gen.cpp': the file has changed since it was "
              "written\n");
    Write("gen.cpp.map", "{\"version\":7}");
    expect(
        "tlexpand: 'gen.cpp.map' is no map that can be used: its version is 7, this program reads "
        "version 1\n");
    std::filesystem::remove(Path("gen.cpp.map"));
    expect("tlexpand: can't read 'gen.cpp.map': No such file or directory\n");
    // With a command, its status counts.
    EXPECT_EQ(Run({"remap", "gen.cpp.map", "--", "true"}).status, 0);
}

TEST_F(RemapTest, TextThatCameFromNoFileStaysAndIsReported)
{
    Write("lib.tl", "@def twice(x) = {x x}\n");
    const std::string text = "@import \"lib.tl\"\ntwice(flaot) fromOption\n";
    Expand({"-E", "@def fromOption = {unsinged}", "-o", "s.cpp", "--map", "s.map", "--chains"},
           text);
    ASSERT_EQ(Read("s.cpp"), "flaot flaot unsinged\n");
    const std::string messages = "s.cpp:1:1: error: x\ns.cpp:1:7: error: y\ns.cpp:1:13: error: z\n";
    const ProgramResult result = Run({"remap", "s.map"}, messages);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "tlexpand: what 's.cpp' has from '<stdin>' leads to no file\n"
                          "tlexpand: what 's.cpp' has from '<command line>' leads to no file\n");
    EXPECT_EQ(result.out, "s.cpp:1:1: error: x\n"
                          "lib.tl:1:18: note: in expansion of macro 'x'\n"
                          "s.cpp:1:7: error: y\n"
                          "lib.tl:1:20: note: in expansion of macro 'x'\n"
                          "s.cpp:1:13: error: z\n");
    const auto json =
        nlohmann::json::parse(Run({"remap", "s.map"}, "[{\"kind\":\"error\",\"message\":\"x\","
                                                      "\"children\":[],\"locations\":[{\"caret\":"
                                                      "{\"file\":\"s.cpp\",\"line\":1,"
                                                      "\"column\":1,\"byte-column\":1}}]}]\n")
                                  .out)[0];
    EXPECT_EQ(json["locations"][0]["caret"]["file"], "s.cpp");
    EXPECT_EQ(json["children"][0]["locations"][0]["caret"]["file"], "lib.tl");
}

TEST_F(RemapTest, AMissingSourceIsReported)
{
    Generate();
    std::filesystem::remove(Path("lib.tl"));
    const ProgramResult result = Run({"remap", "gen.cpp.map"}, "gen.cpp:2: x\n");
    EXPECT_EQ(result.out, "gen.cpp:2: x\n");
    EXPECT_EQ(result.err, "tlexpand: can't read 'lib.tl': No such file or directory\n");
    EXPECT_EQ(result.status, 2);
}

TEST_F(RemapTest, UrisInTextAreNamedWhole)
{
    Generate("gen.cpp", {"--chains"});
    const std::string here = "file://" + std::filesystem::canonical(Path(".")).string() + "/";
    EXPECT_EQ(Filter("at " + here + "gen.cpp:1:10 and (" + here + "gen.cpp:1)\n"),
              "at " + here + "main.tl:2:10 and (" + here + "main.tl:2)\n");
    EXPECT_EQ(Filter(here + "gen.cpp:2:9: error: x\n"),
              here + "lib.tl:3:13: error: x\n" + here +
                  "main.tl:3:1: note: in expansion of macro 'pair'\n");
    EXPECT_EQ(Filter("http://gen.cpp:1\n"), "http://gen.cpp:1\n");
}

// On Linux a backslash is a character like any other.
TEST_F(RemapTest, DirectoriesWithABackslash)
{
    std::filesystem::create_directories(Path("a\\b/c"));
    Write("a\\b/main.tl", "@def x = 1\nint ok = bad;\n");
    const std::string message = ":1:10: error: x\n";
    Expand({"-o", "a\\b/c/gen.cpp", "--map", "a\\b/gen.map", "a\\b/main.tl"});
    EXPECT_EQ(Run({"remap", "a\\b/gen.map"}, "a\\b/c/gen.cpp" + message).out,
              "a\\b/main.tl:2:10: error: x\n");
    EXPECT_EQ(RunShell("cd 'a\\b/c' && echo 'gen.cpp:1:10: error: x' | \"$TLEXPAND\" remap "
                       "../gen.map")
                  .out,
              "../main.tl:2:10: error: x\n");
    EXPECT_EQ(Run({"where", "a\\b/gen.map", "a\\b/c/gen.cpp:1:10"}).out.substr(0, 15),
              "a\\b/main.tl:2:1");
}

} // namespace telv::test
