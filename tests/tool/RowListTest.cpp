// SPDX-License-Identifier: MIT
// --list: rows of CSV and JSON files as the text of a macro.
#include "ToolTest.h"
#include <random>

namespace telv::test
{

class RowListTest : public ToolTest
{
protected:
    /// The text of the macro that the file gives.
    std::string List(const std::string& file, std::string_view text,
                     const std::string& columns = "") const
    {
        Write(file, text);
        return Expand({"--list", "rows=" + file + columns}, "rows");
    }

    std::string Csv(std::string_view text, const std::string& columns = "") const
    {
        return List("a.csv", text, columns);
    }

    std::string Json(std::string_view text, const std::string& columns = "") const
    {
        return List("a.json", text, columns);
    }

    /// Expects that the file is refused with this message, which begins behind "FILE(".
    void ExpectError(const std::string& file, std::string_view text, const std::string& message,
                     const std::string& columns = "") const
    {
        Write(file, text);
        Write("out", "earlier");
        const ProgramResult result =
            Run({"-o", "out", "--list", "rows=" + file + columns, "-"}, "rows");
        EXPECT_EQ(result.status, 2) << text;
        EXPECT_EQ(result.err.substr(0, result.err.find('\n')), file + "(" + message) << text;
        EXPECT_EQ(Read("out"), "earlier");
    }
};

/// What is written behind a message that shows a value.
const std::string s_cantBeWritten =
    "The value can't be written in a list, neither as it is nor between back quotes: ";

TEST_F(RowListTest, EachRowIsATuple)
{
    EXPECT_EQ(Csv("a,b\n1,one\n2,two\n"), "[(1,one),(2,two)]");
    EXPECT_EQ(Csv("a,b\r\n1,one\r\n2,two"), "[(1,one),(2,two)]");
    EXPECT_EQ(Csv("a,b\n"), "[]");
    EXPECT_EQ(Csv("a,b\n,\n"), "[(,)]");
    EXPECT_EQ(Json("[{\"a\":1,\"b\":\"one\"},{\"b\":\"two\",\"a\":2}]"), "[(1,one),(2,two)]");
    EXPECT_EQ(Json("[[1,\"one\"],[2,\"two\"]]"), "[(1,one),(2,two)]");
    EXPECT_EQ(Json(" [ ] "), "[]");
}

TEST_F(RowListTest, OneColumnGivesAPlainList)
{
    EXPECT_EQ(Csv("a\n1\n2\n"), "[1,2]");
    EXPECT_EQ(Json("[{\"a\":1},{\"a\":2}]"), "[1,2]");
    EXPECT_EQ(Json("[[1],[2]]"), "[1,2]");
    EXPECT_EQ(Csv("a,b\n1,one\n2,two\n", ":b"), "[one,two]");
}

TEST_F(RowListTest, ColumnsAreChosenAndOrdered)
{
    EXPECT_EQ(Csv("a,b,c\n1,2,3\n", ":c,a"), "[(3,1)]");
    EXPECT_EQ(Csv("a b,\"c:d\"\n1,2\n", ":c:d,a b"), "[(2,1)]");
    EXPECT_EQ(Json("[{\"a\":1,\"b\":2,\"c\":3},{\"x\":[{}],\"c\":6,\"a\":4}]", ":c,a"),
              "[(3,1),(6,4)]");
    EXPECT_EQ(Json("[]", ":c,a"), "[]");
    EXPECT_EQ(Csv("a,a,b\n1,2,3\n"), "[(1,2,3)]"); // told apart by their places
    EXPECT_EQ(Json("[{\"a\":1,\"a\":2,\"b\":3},{\"a\":1,\"a\":2,\"b\":4}]", ":b"), "[3,4]");
}

TEST_F(RowListTest, ALoopGetsTheValuesBack)
{
    const std::string loop = "@for((a, b) in rows){<a|\nb>}";
    Write("a.csv", "a,b\n\"x, y\",\" blank \"\n\"say \"\"hi\"\"\",f(x; y)\n[],\n"
                   "see http://host/ and,\"two\nlines\"\n{a,\"]\"\n");
    EXPECT_EQ(
        Expand({"--list", "rows=a.csv"}, loop),
        "<x, y|\n blank ><say \"hi\"|\nf(x; y)><[]|\n><see http://host/ and|\ntwo\nlines><{a|\n]>");
    Write("b.csv", "a\n\"(\"\n\n\" \"\n\"a,b\"\n\"\"\n");
    EXPECT_EQ(Expand({"--list", "rows=b.csv"}, "@for(a in rows){<a>}"), "<(><>< ><a,b><>");
}

TEST_F(RowListTest, ALaterQuoteClosesNothingInALenientRun)
{
    const std::string loop = "@for((a,b) in rows){a=b;}";
    Write("a.csv", "a,b\nO'Brien,1\nSmith,2\nD'Arcy,3\nLee,4\n");
    EXPECT_EQ(Expand({"--lenient", "--list", "rows=a.csv"}, loop),
              "O'Brien=1;Smith=2;D'Arcy=3;Lee=4;");
    Write("a.csv", "a,b\n\"3\"\"\",1\n5,\"6\"\"\"\n");
    EXPECT_EQ(Expand({"--lenient", "--list", "rows=a.csv"}, loop), "3\"=1;5=6\";");
    // What stands between them is still text of the language.
    Write("a.csv", "a\nO'Brien\n@(1+1)\nD'Arcy\nsee //x\n@(2+2)\n");
    EXPECT_EQ(Expand({"--lenient", "--list", "rows=a.csv"}, "@for(a in rows){a;}"),
              "O'Brien;2;D'Arcy;see //x;4;");
    Write("a.csv", "a\nsee //x\n@(2+2)\n");
    EXPECT_EQ(Expand({"--list", "rows=a.csv"}, "@for(a in rows){a;}"), "see //x;4;");
}

TEST_F(RowListTest, ACommentIsTextWhereNoLaterValueEndsIt)
{
    const auto expectRefused = [&](const std::string& file, std::string_view text, int line)
    {
        Write(file, text);
        const ProgramResult result = Run({"--lenient", "--list", "rows=" + file}, "rows");
        EXPECT_EQ(result.status, 2) << text;
        EXPECT_EQ(result.err.substr(0, result.err.find('\n')),
                  file + "(" + std::to_string(line) +
                      ") : error : The value can't be written in a list: a later one ends the "
                      "comment that it would begin");
    };
    Write("a.csv", "a,b\nsrc/*,1\n*/ x,/*/\n");
    expectRefused("a.csv", Read("a.csv"), 2);
    expectRefused("a.csv", "a,b\n1,2\n3,a /* b\nx,*/\n", 3);
    expectRefused("a.json", "[[1,\n[2,{\"x\":\"/*\",\n\"y\":\"*\\/\"}]]]", 2);
    Write("a.csv", "a,b\n*/,src/*\nx,/* y */\n");
    expectRefused("a.csv", Read("a.csv"), 2);
    const std::string loop = "@for((a,b) in rows){a=b;}";
    Write("a.csv", "a,b\n*/,src/*\nit's /*,lib/*\n");
    EXPECT_EQ(Expand({"--lenient", "--list", "rows=a.csv"}, loop), "*/=src/*;it's /*=lib/*;");
    // The order in the list counts.
    Write("a.csv", "a,b\nsrc/*,*/\n");
    EXPECT_EQ(Expand({"--lenient", "--list", "rows=a.csv:b,a"}, loop), "*/=src/*;");
}

/// Each value of any table is given back, or a line of the file is refused.
TEST_F(RowListTest, NoValueIsLostWhateverItHolds)
{
    static constexpr const char* s_parts[] = {"'", "\"", "/*", "*/", "//", "/",   "(",   ")",
                                              "[", "]",  "{",  "}",  ",",  "`",   " ",   "\\",
                                              "x", "1",  "r",  "'",  "x",  "y z", "it's"};
    std::mt19937 random(20);
    const auto upTo = [&](size_t count) { return random() % count; };
    const auto makeValue = [&]
    {
        std::string value;
        for (size_t count = upTo(5); count-- > 0;)
            value += s_parts[upTo(std::size(s_parts))];
        return value;
    };
    size_t given = 0;
    for (int table = 0; table < 600; ++table)
    {
        const bool hasTwo = table % 3 != 0;
        const bool isLenient = table % 2 != 0;
        std::string csv = hasTwo ? "va,vb\n" : "va\n";
        std::string expected;
        // Most values are words, so that there are tables without one that is refused.
        for (size_t row = 0; row < 4; ++row)
            for (int column = hasTwo ? 0 : 1; column < 2; ++column)
            {
                const std::string value = upTo(2) == 0 ? makeValue() : "word";
                std::string doubled = value;
                for (size_t i = 0; (i = doubled.find('"', i)) != std::string::npos; i += 2)
                    doubled.insert(i, 1, '"');
                csv += '"' + doubled + (column == 0 ? "\"," : "\"\n");
                expected += (column == 0 ? "<" : hasTwo ? "|" : "<") + value;
                expected += column == 1 ? ">" : "";
            }
        Write("a.csv", csv);
        std::vector<std::string> args{"--list", "rows=a.csv"};
        if (isLenient)
            args.emplace_back("--lenient");
        const ProgramResult result =
            Run(args, hasTwo ? "@for((va,vb) in rows){<va|vb>}" : "@for(va in rows){<va>}");
        if (result.status == 2)
            EXPECT_TRUE(result.err.starts_with("a.csv(")) << csv << result.err;
        else
        {
            ASSERT_EQ(result.status, 0) << csv << result.err;
            ASSERT_EQ(result.out, expected) << (isLenient ? "lenient: " : "") << csv;
            ++given;
        }
    }
    EXPECT_GT(given, 150U);
    EXPECT_LT(given, 550U);
}

TEST_F(RowListTest, ValuesAreInBackQuotesOnlyWhereTheyMust)
{
    EXPECT_EQ(Csv("a,b\n\"x, y\",\"f(x, y)\"\n"), "[(`x, y`,f(x, y))]");
    EXPECT_EQ(Csv("a,b\na-b 1:2,]\n"), "[(a-b 1:2,])]");
    EXPECT_EQ(Csv("a,b\n[, x\n"), "[(`[`,` x`)]");
    EXPECT_EQ(Csv("a,b\n\"\"\"a, b\"\"\",$(X)\n"), "[(\"a, b\",$(X))]");
    EXPECT_EQ(Csv("a\n1.5\n)\n]\n"), "[1.5,),`]`]");
    EXPECT_EQ(Csv("a\na`b\n"), "[a`b]");
}

TEST_F(RowListTest, AnEmptyLastElementIsKept)
{
    EXPECT_EQ(Csv("a\n1\n\n"), "[1,,]");
    EXPECT_EQ(Csv("a\n\n1\n"), "[,1]");
    EXPECT_EQ(Json("[[1,null]]"), "[(1,)]");
    EXPECT_EQ(Json("[[1,[1,null]],[2,[null]],[3,[]]]"), "[(1,[1,,]),(2,[,]),(3,[])]");
    EXPECT_EQ(Expand({"--list", "rows=a.json"}, "@for((a,b) in rows){a@for(x in b){<x>}}"),
              "1<1><>2<>3");
}

TEST_F(RowListTest, EmptyLinesCountWhereThereIsOneColumn)
{
    EXPECT_EQ(Csv("a,b\n\n1,2\n\r\n\n3,4\n\n"), "[(1,2),(3,4)]");
    EXPECT_EQ(Csv("a\r\n\r\n1\r\n"), "[,1]");
}

TEST_F(RowListTest, JsonValuesKeepTheirWriting)
{
    EXPECT_EQ(Json("[[-0, 1E5, 1.50, 12345678901234567890123, true, false, null]]"),
              "[(-0,1E5,1.50,12345678901234567890123,true,false,)]");
    EXPECT_EQ(Json("[[\"a\\u00e9\\n\", \"\\\"q\\\"\"]]"), "[(`a\xc3\xa9\n`,\"q\")]");
    EXPECT_EQ(Json("[[1,[2,{\"x\":3,\"y\":[\"a,b\"]}]]]"), "[(1,[2,(3,[`a,b`])])]");
    EXPECT_EQ(Json("[{\"a\":{\"x\":1,\"y\":\"]\"}}]"), "[(1,])]");
}

TEST_F(RowListTest, ObjectsAtOnePlaceHaveTheOrderOfTheFirst)
{
    EXPECT_EQ(Json("[[1,[{\"n\":2,\"as\":\"sda\"},{\"as\":\"scl\",\"n\":3}]],"
                   "[2,[{\"as\":\"sck\",\"n\":4}]]]"),
              "[(1,[(2,sda),(3,scl)]),(2,[(4,sck)])]");
    EXPECT_EQ(Json("[{\"a\":{\"x\":1,\"y\":2,\"z\":3}},{\"a\":{\"z\":6,\"y\":\"5,5\",\"x\":4}},"
                   "{\"a\":{\"y\":8,\"z\":null,\"x\":[]}}]"),
              "[(1,2,3),(4,`5,5`,6),([],8,)]");
    // One within another, and each place by itself.
    EXPECT_EQ(Json("[{\"a\":{\"x\":{\"p\":1,\"q\":2},\"y\":{\"q\":3,\"p\":4}},\"b\":{\"y\":5}},"
                   "{\"b\":{\"y\":6},\"a\":{\"y\":{\"p\":7,\"q\":8},\"x\":{\"q\":9,\"p\":10}}}]"),
              "[(((1,2),(3,4)),(5)),(((10,9),(8,7)),(6))]");
    // What is not wanted may have any shape.
    EXPECT_EQ(Json("[{\"a\":1,\"b\":{\"x\":1}},{\"a\":2,\"b\":{\"y\":1,\"y\":2}}]", ":a"), "[1,2]");
}

TEST_F(RowListTest, AnErrorInAValueThatHasWaitedIsLocatedInTheFile)
{
    Write("a.json", "[{\"a\":{\"x\":1,\"y\":2}},\n {\"a\":{\"y\":4,\n\"x\":\"@(1 / 0)\"}}]\n");
    ExpectFailure(Run({"--list", "rows=a.json"}, "@for(v in rows){v}"), 1,
                  "a.json(3) : error : Division by zero error\n"
                  "    in @(1 / 0)\n"
                  "    invoking macro rows\n"
                  " 3 | \"x\":\"@(1 / 0)\"}}]\n"
                  "   |      ^\n"
                  "called from <stdin>(1)\n");
}

TEST_F(RowListTest, AByteOrderMarkIsSkipped)
{
    EXPECT_EQ(Csv("\xef\xbb\xbf"
                  "a,b\n1,2\n",
                  ":b,a"),
              "[(2,1)]");
    EXPECT_EQ(Json("\xef\xbb\xbf[[1,2]]"), "[(1,2)]");
}

TEST_F(RowListTest, EveryFileSeesTheListInOrder)
{
    Write("a.csv", "a\n1\n");
    Write("lib.tl", "@def inLib = {rows}@print(rows)");
    const ProgramResult result = Run({"--list", "rows=a.csv", "-E", "@def rows = {x rows2}",
                                      "--list", "rows2=a.csv", "-E", "@import \"lib.tl\""},
                                     "rows inLib");
    EXPECT_EQ(result.err, "x [1]");
    EXPECT_EQ(result.out, "x [1] x [1]");
}

TEST_F(RowListTest, WhatIsWrongIsLocatedInTheFile)
{
    ExpectError("a.csv", "", "1) : error : The row that names the columns is missing");
    ExpectError("a.csv", "a,b\n1,2\n3\n", "3) : error : The row has 1 value instead of 2");
    ExpectError("a.csv", "a,b\n1,\"2\n\"\n3,4,5\n",
                "4) : error : The row has 3 values instead of 2");
    ExpectError("a.csv", "a\n1,2\n", "2) : error : The row has 2 values instead of 1");
    ExpectError("a.csv", "a,b\n1,\"x\"y\n",
                "2) : error : Comma or line end expected behind the closing quote of a value");
    ExpectError("a.csv", "a,b\n1,x\"y\n",
                "2) : error : Quote within a value that does not begin with one");
    ExpectError("a.csv", "a,b\n1,\"x\n\n", "2) : error : Met EOS within a value in quotes");
    ExpectError("a.csv", "a,b\n1,\xe9\n", "2) : error : The value is no UTF-8");
    ExpectError("a.csv", "a,b\n1,2\n", "1) : error : There is no column 'c'", ":a,c");
    ExpectError("a.csv", "a,b\n1,2\n", "1) : error : The column 'a' is wanted twice", ":a,a");
    ExpectError("a.csv", "a,a\n1,2\n", "1) : error : There are several columns 'a'", ":a");
    ExpectError("a.csv", "a,b\n1,2\n`,3\n", "3) : error : " + s_cantBeWritten + "`");
    ExpectError("a.csv", "a,b\n1,2\n(,3\n", "3) : error : " + s_cantBeWritten + "(");
    ExpectError("a.csv", "a\nit's\n", "2) : error : " + s_cantBeWritten + "it's");
    ExpectError("a.csv", "a,b\nx,/* y\n", "2) : error : " + s_cantBeWritten + "/* y");
    ExpectError("a.json", "{\"a\":1}\n", "1) : error : An array of objects or of arrays is wanted");
    ExpectError("a.json", "[[1],\n3]", "2) : error : An array of objects or of arrays is wanted");
    ExpectError("a.json", "[[1],\n{\"a\":3}]", "2) : error : An array is wanted, as the first row");
    ExpectError("a.json", "[{\"a\":3},[1]]", "1) : error : An object is wanted, as the first row");
    ExpectError("a.json", "[[]]", "1) : error : The first row has no values");
    ExpectError("a.json", "[[1,2],\n[1]]", "2) : error : The row has 1 value instead of 2");
    ExpectError("a.json", "[[1,2],\n[1,2,3]]", "2) : error : The row has 3 values instead of 2");
    ExpectError("a.json", "[{\"a\":1,\"b\":2},\n{\"a\":1}]",
                "2) : error : The row has 1 value instead of 2: none for column 'b'");
    ExpectError("a.json", "[{\"a\":1},\n{\"a\":1,\n\"b\":2}]",
                "3) : error : The first row has no column 'b'");
    ExpectError("a.json", "[{\"a\":1},\n{\"a\":1,\n\"a\":2}]",
                "3) : error : The row has several values for column 'a'");
    ExpectError("a.json", "[{\"a\":1,\n\"a\":2}]",
                "2) : error : The row has several values for column 'a'");
    ExpectError("a.json", "[{\"a\":1,\n\"b\":{\"b\":1,\"b\":2},\n\"a\":[2]}]",
                "3) : error : The row has several values for column 'a'");
    ExpectError("a.json", "[[{\"x\":1,\"y\":2}],\n[{\"y\":3}]]",
                "2) : error : The object has 1 value instead of 2: none for member 'x'");
    ExpectError("a.json", "[[[{\"x\":1},\n{\"x\":1,\n\"y\":2}]]]",
                "3) : error : The first object of these has no member 'y'");
    ExpectError("a.json", "[[{\"x\":1,\n\"x\":2}]]",
                "2) : error : The object has several values for member 'x'");
    ExpectError("a.json", "[[{\"x\":1,\"y\":2}],[{\"y\":1,\n\"y\":2}]]",
                "2) : error : The object has several values for member 'y'");
    ExpectError("a.json", "[{\"a\":1,\"a\":2}]", "1) : error : There are several columns 'a'",
                ":a");
    ExpectError("a.json", "[{\"a\":1}]", "1) : error : There is no column 'b'", ":b");
    ExpectError("a.json", "[[1]]", "1) : error : There is no column 'b': the rows are arrays",
                ":b");
    ExpectError("a.json", "[[1],\n[2]",
                "2) : error : Bad JSON: syntax error while parsing array - "
                "unexpected end of input; expected ']'");
    ExpectError(
        "a.json", "[[1],\n[\"\\u00\"]]",
        "2) : error : Bad JSON: syntax error while parsing value - invalid string: '\\u' must "
        "be followed by 4 hex digits; last read: '\"\\u00\"'");
    ExpectError("a.json", "[[1e5000]]", "1) : error : Bad JSON: number overflow parsing '1e5000'");
    ExpectError("a.json", "[[1,\n\"it's\"]]", "2) : error : " + s_cantBeWritten + "it's");
}

TEST_F(RowListTest, AnErrorShowsTheValue)
{
    Write("a.csv", "name,note\nCTRL,\"a \"\"b\"\" it's\"\n");
    ExpectFailure(Run({"--list", "rows=a.csv"}), 2,
                  "a.csv(2) : error : " + s_cantBeWritten + "a \"b\" it's\n" +
                      "    Met EOS within single quoted string after reading 's\n" +
                      " 2 | CTRL,\"a \"\"b\"\" it's\"\n"
                      "   |      ^\n");
}

TEST_F(RowListTest, AnErrorInAValueIsLocatedInTheFile)
{
    Write("a.csv", "name,size\nA,1\n\"B\",\"x @(1 / 0)\"\n");
    ExpectFailure(Run({"--list", "rows=a.csv"}, "\n@for((n, s) in rows){n s}"), 1,
                  "a.csv(3) : error : Division by zero error\n"
                  "    in @(1 / 0)\n"
                  "    invoking macro rows\n"
                  " 3 | \"B\",\"x @(1 / 0)\"\n"
                  "   |        ^\n"
                  "called from <stdin>(2)\n");
}

TEST_F(RowListTest, TheFileIsADependencyAndASource)
{
    Write("data/a.csv", "a\n7\n");
    Write("main.tl", "rows");
    Expand(
        {"--list", "rows=data/a.csv", "-o", "out", "--depfile", "dep", "--map", "map", "main.tl"});
    EXPECT_EQ(Read("dep"), "out: main.tl \\\n  data/a.csv\n\ndata/a.csv:\n");
    EXPECT_NE(Read("map").find("\"sources\":[\"main.tl\",\"data/a.csv\"]"), std::string::npos);
    EXPECT_NE(
        Read("map").find("{\"kind\":\"source\",\"out\":1,\"size\":1,\"source\":null,\"in\":null,"
                         "\"inSize\":1,\"from\":{\"source\":1,\"in\":2,"),
        std::string::npos);
    ExpectFailure(Run({"--list", "rows=data/a.csv", "-o", "data/a.csv", "main.tl"}), 2,
                  "tlexpand: the output 'data/a.csv' is a file that is read" + s_hint);
}

TEST_F(RowListTest, RefusesWhatIsNoFileOfRows)
{
    const std::pair<std::string, std::string> rows[] = {
        {"rows", "bad value 'rows' for --list: NAME=FILE[:COLUMNS] is wanted"},
        {"1a=a.csv", "bad value '1a=a.csv' for --list: the name before '=' must be an identifier"},
        {"a=a.txt",
         "bad value 'a=a.txt' for --list: the name of a .csv or .json file is wanted behind '='"},
        {"a=", "bad value 'a=' for --list: the name of a .csv or .json file is wanted behind '='"},
        {"a=a.csv:", "bad value 'a=a.csv:' for --list: the name of a column is empty"},
        {"a=a.csv:x,,y", "bad value 'a=a.csv:x,,y' for --list: the name of a column is empty"},
    };
    for (const auto& [value, message] : rows)
        ExpectFailure(Run({"--list", value}), 2, "tlexpand: " + message + s_hint);
    ExpectFailure(Run({"--list", "a=none.csv"}), 2,
                  "tlexpand: can't read 'none.csv': No such file or directory\n");
    std::filesystem::create_directory(Path("dir.csv"));
    ExpectFailure(Run({"--list", "a=dir.csv"}), 2,
                  "tlexpand: can't read 'dir.csv': Not a regular file\n");
    RunShell("mkfifo fifo.json");
    ExpectFailure(Run({"--list", "a=fifo.json"}), 2,
                  "tlexpand: can't read 'fifo.json': Not a regular file\n");
    EXPECT_EQ(List("a:b.csv", "x\n1\n", ":x"), "[1]");
}

TEST_F(RowListTest, DepthAndWidthAreNoDanger)
{
    const size_t depth = 100'000;
    EXPECT_EQ(Json("[[" + std::string(depth, '[') + std::string(depth, ']') + "]]"),
              "[" + std::string(depth, '[') + std::string(depth, ']') + "]");
    ExpectError(
        "a.json", std::string(depth, '['),
        "1) : error : Bad JSON: syntax error while parsing value - unexpected end of input; "
        "expected '[', '{', or a literal");
    std::string wide = "c0";
    std::string numbers = "0";
    for (int i = 1; i < 1'000'000; ++i)
    {
        wide += ",c" + std::to_string(i);
        numbers += "," + std::to_string(i % 10);
    }
    EXPECT_EQ(Csv(wide + "\n" + numbers + "\n", ":c999999,c0"), "[(9,0)]");
    EXPECT_EQ(Csv(wide + "\n" + numbers + "\n"), "[(" + numbers + ")]");
    ExpectError("a.csv", wide + "\n" + numbers + ",0\n",
                "2) : error : The row has 1000001 values instead of 1000000");
}

// The comment would take the rest of the list out of the text.
TEST_F(RowListTest, ACommentThatWouldGoOnBehindTheValueIsRefused)
{
    const std::string reason = "\n    the comment that @// begins would go on behind it";
    for (const std::string value : {"@//", "a @// b"})
    {
        Write("a.csv", "a,b\n1,x\n" + value + ",y\n");
        const ProgramResult result = Run({"--list", "rows=a.csv", "-"}, "rows");
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err.substr(0, result.err.find("\n 3 | ")),
                  "a.csv(3) : error : " + s_cantBeWritten + value + reason);
    }
    EXPECT_EQ(Csv("a,b\n\"x @// y\nz\",1\n"), "[(xz,1)]");
    EXPECT_EQ(Csv("a,b\nx @/* y */ z,1\n"), "[(xz,1)]");
}

// What a macro makes of a value is seen when the loop cuts the list.
TEST_F(RowListTest, ARowThatIsNoElementAnyMoreIsNamed)
{
    const auto expect = [this](const std::string& value, const std::string& place)
    {
        Write("a.csv", "a,b\n1,one\n2,two\n" + value + ",three\n4,four\n");
        Write("main.tl", "@def pair = {x, y}\n@def open = {(}\n@def close = {)}\n"
                         "@for((a, b) in rows){a=b }\n");
        const ProgramResult result = Run({"--list", "rows=a.csv", "main.tl"});
        EXPECT_EQ(result.status, 1) << value;
        EXPECT_EQ(result.err.substr(0, 11), "main.tl(4) ") << result.err;
        EXPECT_NE(result.err.find("\nelement at " + place + "\n"), std::string::npos) << result.err;
    };
    expect("pair", "a.csv(4)");
    expect("\"@(\"\"x,y\"\")\"", "a.csv(4)");
    expect("open", "a.csv(4)");
    expect("@def v = 5", "a.csv(4)");
}

} // namespace telv::test
