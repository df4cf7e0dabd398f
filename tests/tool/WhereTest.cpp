// SPDX-License-Identifier: MIT
// tlexpand where: from the output to the source and back.
#include "ToolTest.h"

namespace telv::test
{

class WhereTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Write("lib.tl", "@def pair(a, b) =\n{\n    int a;\n    int b = @(1 + 1);\n}\n");
        Write("main.tl", "@import \"lib.tl\"\nfirst\n  pair(x, y)\n@for(i in [p]){i}\n");
    }

    void ExpandAll(std::vector<std::string> arguments = {}) const
    {
        arguments.insert(arguments.end(), {"-o", "out.c", "--map", "out.map", "main.tl"});
        Expand(arguments);
    }

    std::string Where(const std::string& place) const
    {
        const ProgramResult result = Run({"where", "out.map", place});
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.status, 0);
        return result.out;
    }
};

TEST_F(WhereTest, ShowsThePlaceWithItsLine)
{
    ExpandAll();
    EXPECT_EQ(Read("out.c"), "first\n  int x;\n  int y = 2;\np\n");
    EXPECT_EQ(Where("out.c:1:3"), "main.tl:2:3: copied from here\n"
                                  " 2 | first\n"
                                  "   |   ^\n");
    EXPECT_EQ(Where("out.c:2:7"), "main.tl:3:8: copied from here\n"
                                  " 3 |   pair(x, y)\n"
                                  "   |        ^\n");
    EXPECT_EQ(Where("out.c:3:11"), "lib.tl:4:13: calculated here\n"
                                   " 4 |     int b = @(1 + 1);\n"
                                   "   |             ^\n");
    EXPECT_EQ(Where("out.c:4:1"), "main.tl:4:1: made while expanding this\n"
                                  " 4 | @for(i in [p]){i}\n"
                                  "   | ^\n");
}

TEST_F(WhereTest, TheCaretStandsUnderWideCharacters)
{
    const std::string wide = "\xe6\xbc\xa2\xe5\xad\x97";
    Write("main.tl", "@def name = {x}\n" + wide + " name\n");
    Expand({"-o", "out.c", "--map", "out.map", "main.tl"});
    EXPECT_EQ(Where("out.c:1:4"), "main.tl:2:4: copied from here\n"
                                  " 2 | " +
                                      wide +
                                      " name\n"
                                      "   |   ^\n");
    EXPECT_EQ(Where("out.c:1:7"), "main.tl:2:7: copied from here\n"
                                  " 2 | " +
                                      wide +
                                      " name\n"
                                      "   |     ^\n");
}

TEST_F(WhereTest, OfALineTheFirstThingThatIsSeenCounts)
{
    ExpandAll();
    EXPECT_EQ(Where("out.c:3"), "lib.tl:4:5: copied from here\n"
                                " 4 |     int b = @(1 + 1);\n"
                                "   |     ^\n");
}

TEST_F(WhereTest, ListsTheRangesThatComeFromALine)
{
    ExpandAll();
    const ProgramResult body = Run({"where", "out.map", "--source", "lib.tl:4"});
    EXPECT_EQ(body.out, "out.c:3:3-6: int \nout.c:3:8-12:  = 2;\n");
    const ProgramResult call = Run({"where", "out.map", "--source", "./main.tl:3"});
    EXPECT_EQ(call.out, "out.c:2:1-2:   \nout.c:2:7-7: x\nout.c:3:7-7: y\nout.c:3:13-13: \n");
    const ProgramResult list = Run({"where", "out.map", "--source", "main.tl:4"});
    EXPECT_EQ(list.out, "out.c:4:1-2: p\n");
}

TEST_F(WhereTest, WithChainsWhatCameThroughTheLineIsListedToo)
{
    Write("g.tl", "@def greet = {hello}\n[@//\ngreet@//\n]\n");
    Expand({"-o", "g.txt", "--map", "g.map", "g.tl"});
    EXPECT_EQ(Read("g.txt"), "[hello]\n");
    ExpectFailure(Run({"where", "g.map", "--source", "g.tl:3"}), 1,
                  "tlexpand: nothing in 'g.txt' comes from there\n");
    for (const char* const kind : {"--map", "--map-runs"})
    {
        std::vector<std::string> arguments{"-o", "g.txt", "--map", "g.map", "--chains", "g.tl"};
        if (kind == std::string("--map-runs"))
            arguments.insert(arguments.begin(), kind);
        Expand(arguments);
        EXPECT_EQ(Expand({"where", "g.map", "--source", "g.tl:3"}),
                  "g.txt:1:2-6 through this: hello\n");
        EXPECT_EQ(Expand({"where", "g.map", "--source", "g.tl:1"}), "g.txt:1:2-6: hello\n");
        EXPECT_EQ(Expand({"where", "g.map", "--source", "g.tl:2"}), "g.txt:1:1-1: [\n");
    }
}

TEST_F(WhereTest, WhatTheLineGaveIsToldFromWhatCameThroughIt)
{
    ExpandAll({"--chains"});
    EXPECT_EQ(Expand({"where", "out.map", "--source", "main.tl:3"}),
              "out.c:2:1-2:   \nout.c:2:3-6 through this: int \nout.c:2:7-7: x\n"
              "out.c:2:8-3:6 through this: ;\nout.c:3:7-7: y\n"
              "out.c:3:8-12 through this:  = 2;\nout.c:3:13-13: \n");
    Write("main.tl", "@for(i in [p, q])\n{\n    <i>\n}\n");
    ExpandAll({"--chains"});
    EXPECT_EQ(Read("out.c"), "<p><q>\n");
    EXPECT_EQ(Expand({"where", "out.map", "--source", "main.tl:3"}),
              "out.c:1:1-1: <\nout.c:1:2-2 through this: p\nout.c:1:3-4: ><\n"
              "out.c:1:5-5 through this: q\nout.c:1:6-6: >\n");
}

TEST_F(WhereTest, ANameCanEndLikeALine)
{
    Write("x:7", "a\nb\n");
    Expand({"-o", "o:2", "--map", "o.map", "x:7"});
    const std::string second = "x:7:2:1: copied from here\n 2 | b\n   | ^\n";
    EXPECT_EQ(Expand({"where", "o.map", "o:2:2"}), second);
    EXPECT_EQ(Expand({"where", "o.map", "./o:2:2"}), second);
    EXPECT_EQ(Expand({"where", "o.map", "o:2:2:1"}), second);
    EXPECT_EQ(Expand({"where", "-o", "o:2", "o.map", "o:2:2"}), second);
    EXPECT_EQ(Expand({"where", "o.map", "--source", "x:7:2"}), "o:2:2:1-2: b\n");
    // A column where the name ends otherwise, even beside such a file.
    Expand({"-o", "o", "--map", "o.map", "x:7"});
    EXPECT_EQ(Expand({"where", "o.map", "o:2:1"}), second);
}

TEST_F(WhereTest, PathsAreThoseFromHere)
{
    std::filesystem::create_directories(Path("sub/deep"));
    Write("sub/main.tl", "a\n");
    Expand({"-o", "sub/out", "--map", "sub/deep/map", "sub/main.tl"});
    const ProgramResult result =
        RunShell("cd sub/deep && \"$TLEXPAND\" where map ../out:1 && cd / && "
                 "\"$TLEXPAND\" where \"$OLDPWD/map\" \"$OLDPWD/../out:1\"");
    EXPECT_EQ(result.out.substr(0, 36), "../main.tl:1:1: copied from here\n 1 ");
    EXPECT_NE(result.out.find(std::filesystem::canonical(Path("sub/main.tl")).string() + ":1:1:"),
              std::string::npos)
        << result.out;
    EXPECT_EQ(result.err, "");
}

TEST_F(WhereTest, StandardOutputIsNamedByTheCaller)
{
    const ProgramResult made = RunShell("\"$TLEXPAND\" --map out.map main.tl > out.c");
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(Where("out.c:4").substr(0, 13), "main.tl:4:1: ");
    ExpectFailure(Run({"where", "out.map", "--source", "main.tl:2"}), 2,
                  "tlexpand: 'out.map' does not name its output: name it with -o" + s_hint);
    EXPECT_EQ(Run({"where", "out.map", "--source", "main.tl:2", "-o", "out.c"}).out,
              "out.c:1:1-6: first\n");
}

TEST_F(WhereTest, SaysWhatIsNotThere)
{
    ExpandAll({"--dst-indent", "1"});
    ExpectFailure(Run({"where", "out.map", "out.c:9"}), 1, "tlexpand: 'out.c' has no line 9\n");
    ExpectFailure(Run({"where", "out.map", "out.c:1:99"}), 1,
                  "tlexpand: line 1 of 'out.c' has no column 99\n");
    ExpectFailure(Run({"where", "out.map", "out.c:1:1"}), 1,
                  "tlexpand: what stands there comes from no source: it is indentation that was "
                  "added\n");
    ExpectFailure(Run({"where", "out.map", "--source", "main.tl:1"}), 1,
                  "tlexpand: nothing in 'out.c' comes from there\n");
    ExpectFailure(Run({"where", "out.map", "--source", "main.tl:99"}), 1,
                  "tlexpand: 'main.tl' has no line 99\n");
    ExpectFailure(Run({"where", "out.map", "--source", "main.tl:3:2"}), 2,
                  "tlexpand: bad place 'main.tl:3:2' for --source: FILE:LINE is wanted" + s_hint);
    ExpectFailure(Run({"where", "out.map", "--source", "other.tl:1"}), 2,
                  "tlexpand: 'other.tl' is no source of 'out.c'" + s_hint);
}

TEST_F(WhereTest, AMapThatDoesNotFitIsRefused)
{
    ExpandAll();
    Write("main.tl", Read("main.tl") + "more\n");
    EXPECT_EQ(Where("out.c:1").substr(0, 13), "main.tl:2:1: "); // Nothing that counts has changed.
    Write("main.tl", "more\n" + Read("main.tl"));
    const std::string changed = "tlexpand: 'out.map' does not fit 'out.c' and 'main.tl': one of "
                                "them has changed since it was written\n";
    ExpectFailure(Run({"where", "out.map", "out.c:1"}), 2, changed);
    Write("main.tl", "");
    ExpectFailure(Run({"where", "out.map", "out.c:1"}), 2, changed);
    std::filesystem::remove(Path("main.tl"));
    ExpectFailure(Run({"where", "out.map", "out.c:1"}), 2,
                  "tlexpand: can't read 'main.tl': No such file or directory\n");
    Write("out.c", Read("out.c") + "x");
    ExpectFailure(Run({"where", "out.map", "out.c:1"}), 2,
                  "tlexpand: 'out.map' does not fit 'out.c': the file has 31 bytes, the map 30\n");
}

// What was calculated stands in no source that it could be compared with.
TEST_F(WhereTest, ACalculatedTextThatWasEditedIsNoticed)
{
    ExpandAll();
    const std::string output = Read("out.c");
    std::string edited = output;
    edited[edited.find("y = 2") + 4] = '3';
    Write("out.c", edited);
    ExpectFailure(
        Run({"where", "out.map", "out.c:1"}), 2,
        "tlexpand: 'out.map' does not fit 'out.c': the file has changed since it was written\n");
    ExpectFailure(
        Run({"where", "out.map", "--source", "main.tl:2"}), 2,
        "tlexpand: 'out.map' does not fit 'out.c': the file has changed since it was written\n");
    // A map without a sum, one of an earlier version of the tool.
    std::string map = Read("out.map");
    const size_t sum = map.find(" \"crc32\"");
    map.erase(sum, map.find('\n', sum) + 1 - sum);
    Write("out.map", map);
    EXPECT_EQ(Where("out.c:1").substr(0, 13), "main.tl:2:1: ");
}

TEST_F(WhereTest, ABadMapIsRefused)
{
    const struct
    {
        const char* m_map;
        const char* m_why;
    } rows[] = {
        {"", "it is no JSON, or not all of it"},
        {"{\"version\":1,\"sources\":[", "it is no JSON, or not all of it"},
        {"[]", "it has no \"version\""},
        {"{}", "it has no \"version\""},
        {"{\"version\":2}", "its version is 2, this program reads version 1"},
        {"{\"version\":3,\"sources\":[],\"mappings\":\"\"}",
         "its version is 3, this program reads version 1"},
        {"{\"version\":1,\"size\":0,\"pieces\":[]}", "\"sources\" is missing or no list"},
        {"{\"version\":1,\"sources\":[1],\"size\":0,\"pieces\":[]}", "a source that is no text"},
        {"{\"version\":1,\"sources\":[],\"size\":-1,\"pieces\":[]}",
         "\"size\" is missing or no number"},
        {"{\"version\":1,\"sources\":[],\"size\":0,\"crc32\":\"0\",\"pieces\":[]}",
         "\"crc32\" is missing or no number"},
        {"{\"version\":1,\"sources\":[],\"size\":0,\"crc32\":4294967296,\"pieces\":[]}",
         "\"crc32\" has more than 32 bits"},
        {"{\"version\":1,\"sources\":[],\"size\":1,\"pieces\":[]}",
         "the pieces end at 0, the output at 1"},
        {"{\"version\":1,\"sources\":[],\"size\":1,\"pieces\":[{\"kind\":\"x\"}]}",
         "a piece of the unknown kind \"x\""},
        {"{\"version\":1,\"sources\":[],\"size\":1,\"pieces\":[{\"kind\":\"calculated\",\"out\":1,"
         "\"size\":1,\"source\":0,\"in\":0,\"inSize\":1}]}",
         "the pieces leave a gap or overlap at 0"},
        {"{\"version\":1,\"sources\":[],\"size\":1,\"pieces\":[{\"kind\":\"calculated\",\"out\":0,"
         "\"size\":1,\"source\":0,\"in\":0,\"inSize\":1}]}",
         "a source that is not in the list"},
        {"{\"version\":1,\"sources\":[\"a\"],\"size\":1,\"pieces\":[{\"kind\":\"source\",\"out\":0,"
         "\"size\":1,\"source\":0,\"in\":null,\"inSize\":1}]}",
         "\"source\" and \"in\" don't go together"},
        {"{\"version\":1,\"sources\":[\"a\"],\"size\":1,\"pieces\":[{\"kind\":\"source\",\"out\":0,"
         "\"size\":1,\"source\":0,\"in\":0,\"inSize\":2}]}",
         "the copied piece at 0 has another size than its source"},
        {"{\"version\":1,\"sources\":[\"a\"],\"size\":1,\"pieces\":[{\"kind\":\"source\",\"out\":0,"
         "\"size\":1,\"source\":0,\"in\":0,\"inSize\":1,\"chain\":0}]}",
         "a chain that is not in the list"},
        {"{\"version\":1,\"sources\":[\"a\"],\"size\":2,\"pieces\":[{\"kind\":\"source\",\"out\":0,"
         "\"size\":2,\"source\":null,\"in\":null,\"inSize\":2,\"copied\":{\"source\":0,\"in\":0,"
         "\"inSize\":1}}]}",
         "the copied piece at 0 has another size than its source"},
        {"{\"version\":1,\"sources\":[\"a\"],\"size\":1,\"pieces\":[{\"kind\":\"source\",\"out\":0,"
         "\"size\":1,\"source\":null,\"in\":null,\"inSize\":1,\"copied\":{\"source\":1,\"in\":0,"
         "\"inSize\":1}}]}",
         "a source that is not in the list"},
        {"{\"version\":1,\"sources\":[\"a\"],\"size\":0,\"chains\":[{\"kind\":\"macro\",\"name\":"
         "\"m\",\"source\":0,\"in\":0,\"inSize\":1,\"parent\":0}],\"pieces\":[]}",
         "a chain has a parent that does not come before it"},
        {"{\"version\":1,\"sources\":[\"a\"],\"size\":0,\"chains\":[{\"kind\":\"macro\",\"name\":"
         "\"m\",\"source\":0,\"in\":9223372036854775807,\"inSize\":1}],\"pieces\":[]}",
         "\"in\" is larger than any text"},
    };
    Write("out.c", "x");
    for (const auto& row : rows)
    {
        Write("bad.map", row.m_map);
        ExpectFailure(Run({"where", "bad.map", "out.c:1"}), 2,
                      std::string("tlexpand: 'bad.map' is no map that can be used: ") + row.m_why +
                          "\n");
    }
    ExpectFailure(Run({"where", "none.map", "out.c:1"}), 2,
                  "tlexpand: can't read 'none.map': No such file or directory\n");
}

TEST_F(WhereTest, ShowsTheChainOfARealMap)
{
    Write("main.tl", "@import \"lib.tl\"\n@def list = {[p,\n  q]}\n"
                     "@for(i in list)\n{\n    pair(i, @(1 + 1))\n\n}@//\n");
    ExpandAll({"--chains"});
    EXPECT_EQ(Read("out.c"), "int p;\nint 2 = 2;\nint q;\nint 2 = 2;\n");
    EXPECT_EQ(Where("out.c:3:5"), "main.tl:3:3: copied from here\n"
                                  " 3 |   q]}\n"
                                  "   |   ^\n"
                                  "main.tl:6:10: in expansion of macro 'i'\n"
                                  " 6 |     pair(i, @(1 + 1))\n"
                                  "   |          ^\n"
                                  "lib.tl:3:9: in expansion of macro 'a'\n"
                                  " 3 |     int a;\n"
                                  "   |         ^\n"
                                  "main.tl:6:5: in expansion of macro 'pair'\n"
                                  " 6 |     pair(i, @(1 + 1))\n"
                                  "   |     ^\n"
                                  "main.tl:4:1: in round 2 of the loop\n"
                                  " 4 | @for(i in list)\n"
                                  "   | ^\n");
    EXPECT_EQ(Where("out.c:2:5"), "main.tl:6:13: calculated here\n"
                                  " 6 |     pair(i, @(1 + 1))\n"
                                  "   |             ^\n"
                                  "lib.tl:4:9: in expansion of macro 'b'\n"
                                  " 4 |     int b = @(1 + 1);\n"
                                  "   |         ^\n"
                                  "main.tl:6:5: in expansion of macro 'pair'\n"
                                  " 6 |     pair(i, @(1 + 1))\n"
                                  "   |     ^\n"
                                  "main.tl:4:1: in round 1 of the loop\n"
                                  " 4 | @for(i in list)\n"
                                  "   | ^\n");
    EXPECT_EQ(Run({"where", "out.map", "--source", "main.tl:3"}).out, "out.c:3:5-5: q\n");
}

TEST_F(WhereTest, RowsOfDataLeadToTheirFile)
{
    Write("rows.csv", "name,note\nx,plain\ny,\"a \"\"b\"\" c\"\n");
    Write("main.tl", "@for((n, t) in rows){n: t\n}");
    ExpandAll({"--chains", "--verify-map", "--list", "rows=rows.csv"});
    EXPECT_EQ(Read("out.c"), "x: plain\ny: a \"b\" c\n");
    EXPECT_EQ(Where("out.c:1:4").substr(0, 30), "rows.csv:2:3: copied from here");
    EXPECT_EQ(Where("out.c:2:4").substr(0, 30), "rows.csv:3:4: copied from here");
    // Where the file writes it in another way, the value is told.
    EXPECT_EQ(Where("out.c:2:6").substr(0, 28), "rows.csv:3:5: made from this");
    EXPECT_EQ(Run({"where", "out.map", "--source", "rows.csv:2"}).out,
              "out.c:1:1-1: x\nout.c:1:4-8: plain\n");
}

TEST_F(WhereTest, ShowsTheChain)
{
    ExpandAll({"--map-runs"});
    std::string map = Read("out.map");
    const std::string pieces = " \"pieces\":[";
    map.insert(map.find(pieces),
               " \"chains\":["
               "{\"kind\":\"import\",\"name\":\"main.tl\",\"source\":null,\"in\":null,\"inSize\":0,"
               "\"parent\":null},"
               "{\"kind\":\"loop\",\"name\":\"@for\",\"source\":0,\"in\":36,\"inSize\":1,"
               "\"round\":2,\"parent\":0},"
               "{\"kind\":\"macro\",\"name\":\"pair\",\"source\":0,\"in\":25,\"inSize\":4,"
               "\"parent\":1},"
               "{\"kind\":\"directive\",\"name\":\"@if\",\"source\":1,\"in\":24,\"inSize\":1,"
               "\"parent\":2}],\n");
    const size_t calculated = map.find("}", map.find("\"kind\":\"calculated\""));
    map.insert(calculated, ",\"chain\":3");
    Write("out.map", map);
    EXPECT_EQ(Where("out.c:3:11"), "lib.tl:4:13: calculated here\n"
                                   " 4 |     int b = @(1 + 1);\n"
                                   "   |             ^\n"
                                   "lib.tl:3:5: in directive '@if'\n"
                                   " 3 |     int a;\n"
                                   "   |     ^\n"
                                   "main.tl:3:3: in expansion of macro 'pair'\n"
                                   " 3 |   pair(x, y)\n"
                                   "   |   ^\n"
                                   "main.tl:4:1: in round 2 of the loop\n"
                                   " 4 | @for(i in [p]){i}\n"
                                   "   | ^\n"
                                   "imported as 'main.tl'\n");
}

// The output may take the place of its source; then the map speaks of what was there.
TEST_F(WhereTest, ASourceThatWasReplacedByItsOutputIsSeen)
{
    Write("same.tl", "@def x = {1}\nx\n");
    Expand({"-o", "same.tl", "--map", "same.map", "same.tl"});
    EXPECT_EQ(Read("same.tl"), "1\n");
    ExpectFailure(Run({"where", "same.map", "same.tl:1:1"}), 2,
                  "tlexpand: 'same.map' does not fit 'same.tl' and 'same.tl': one of them has "
                  "changed since it was written\n");
}

} // namespace telv::test
