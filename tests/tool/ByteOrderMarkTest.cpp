// SPDX-License-Identifier: MIT
// A byte order mark before the first word of a file.
#include "ToolTest.h"

namespace telv::test
{

using ByteOrderMarkTest = ToolTest;

const std::string s_mark = "\xef\xbb\xbf";

TEST_F(ByteOrderMarkTest, OfTheMainFileIsCopiedAndNoPartOfTheFirstWord)
{
    EXPECT_EQ(Expand({"-E", "@def m = {x}"}, s_mark + "m\n"), s_mark + "x\n");
    EXPECT_EQ(Expand({}, s_mark), s_mark);
    EXPECT_EQ(Expand({}, s_mark + s_mark), s_mark + s_mark);
    EXPECT_EQ(Expand({}, "\xef\xbb"), "\xef\xbb");
    EXPECT_EQ(Expand({"-E", "@def m = {x}"}, "m " + s_mark + "m"), "x " + s_mark + "m");
}

TEST_F(ByteOrderMarkTest, TheFirstLineBeginsBehindIt)
{
    EXPECT_EQ(Expand({"--dst-indent", "2"}, s_mark + "a\nb\n"), s_mark + "  a\n  b\n");
    EXPECT_EQ(Expand({"-E", "@def m =\n{\n    a\n    b\n}"}, s_mark + "m"), s_mark + "a\nb");
}

TEST_F(ByteOrderMarkTest, OfAnImportedFileIsSkipped)
{
    Write("lib.tl", s_mark + "n @def m = {n}");
    EXPECT_EQ(Expand({"-E", "@def n = {x}"}, "@import \"lib.tl\"\nm"), "x");
    Write("twice.tl", s_mark + "@def m = {" + s_mark + "}");
    EXPECT_EQ(Expand({}, s_mark + "@import \"twice.tl\"\nm"), s_mark + s_mark);
}

TEST_F(ByteOrderMarkTest, AnImportOnTheFirstLineTakesItsLineAway)
{
    Write("lib.tl", "@def m = {x}");
    EXPECT_EQ(Expand({}, s_mark + "@import \"lib.tl\"\nm\n"), s_mark + "x\n");
}

TEST_F(ByteOrderMarkTest, StandsInTheMapAndCountsInPositions)
{
    Write("a.tl", s_mark + "a\n");
    Expand({"-o", "out", "--map", "map", "a.tl"});
    EXPECT_EQ(Read("map"),
              "{\"version\":1,\n \"output\":\"out\",\n \"directory\":\".\",\n"
              " \"sources\":[\"a.tl\"],\n \"size\":5,\n \"crc32\":4108608605,\n \"pieces\":[\n"
              "   {\"kind\":\"source\",\"out\":0,\"size\":3,\"source\":0,\"in\":0,"
              "\"inSize\":3},\n"
              "   {\"kind\":\"source\",\"out\":3,\"size\":1,\"source\":0,\"in\":3,"
              "\"inSize\":1},\n"
              "   {\"kind\":\"source\",\"out\":4,\"size\":1,\"source\":0,\"in\":4,"
              "\"inSize\":1}]}\n");
}

TEST_F(ByteOrderMarkTest, CameThroughNoChain)
{
    Write("a.tl", s_mark + "@def m(x) = {bad_@@x;}\nint a;\nm(q)\n");
    Expand({"--chains", "--verify-map", "-o", "out", "--map", "map", "a.tl"});
    EXPECT_EQ(Expand({"where", "map", "out:1:1"}), "a.tl:1:1: copied from here\n"
                                                   " 1 | \xef\xbb\xbf@def m(x) = {bad_@@x;}\n"
                                                   "   | ^\n");
    const std::string lines = Expand({"where", "map", "out:2:1"});
    EXPECT_EQ(lines, "a.tl:1:17: copied from here\n"
                     " 1 | \xef\xbb\xbf@def m(x) = {bad_@@x;}\n"
                     "   |              ^\n"
                     "a.tl:3:1: in expansion of macro 'm'\n"
                     " 3 | m(q)\n"
                     "   | ^\n");
}

TEST_F(ByteOrderMarkTest, IsNoStatementOfAProject)
{
    Write("lib.project", s_mark + "$A = \"1\"\n");
    EXPECT_EQ(Expand({"project"}, s_mark + "@import \"lib.project\"\n$B = \"2\"\n"),
              "{\"version\":1,\"files\":[\"<stdin>\",\"lib.project\"],\"macros\":[{\"name\":\"A\","
              "\"value\":\"1\"},{\"name\":\"B\",\"value\":\"2\"}],\n"
              " \"importPaths\":[],\"settings\":{}}\n");
}

} // namespace telv::test
