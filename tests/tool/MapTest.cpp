// The output map.
#include "ToolTest.h"

namespace telv::test
{

using MapTest = ToolTest;

TEST_F(MapTest, TilesTheOutput)
{
    Expand({"--map", "map", "-o", "out", "--dst-indent", "2"}, "a\n@(1+1)");
    EXPECT_EQ(
        Read("map"),
        "{\"version\":1,\n"
        " \"sources\":[\"<stdin>\"],\n"
        " \"size\":7,\n"
        " \"pieces\":[\n"
        "   {\"kind\":\"indentation\",\"out\":0,\"size\":2,\"source\":null,\"in\":null,\"inSize\":0},\n"
        "   {\"kind\":\"source\",\"out\":2,\"size\":1,\"source\":0,\"in\":0,\"inSize\":1},\n"
        "   {\"kind\":\"source\",\"out\":3,\"size\":1,\"source\":0,\"in\":1,\"inSize\":1},\n"
        "   {\"kind\":\"calculated\",\"out\":4,\"size\":3,\"source\":0,\"in\":2,\"inSize\":1}]}\n");
}

TEST_F(MapTest, AnEmptyOutputHasNoPieces)
{
    Expand({"--map", "map"}, "");
    EXPECT_EQ(Read("map"), "{\"version\":1,\n \"sources\":[\"<stdin>\"],\n \"size\":0,\n"
                           " \"pieces\":[]}\n");
}

TEST_F(MapTest, ListsSourcesInTheOrderOfReading)
{
    Write("main.tl", "@import \"b.tl\"\n@import \"a.tl\"\n");
    Write("a.tl", "");
    Write("b.tl", "@import \"c.tl\"\n");
    Write("c.tl", "");
    Expand({"-E", "", "--map", "map", "main.tl"});
    EXPECT_EQ(Read("map"),
              "{\"version\":1,\n"
              " \"sources\":[\"main.tl\",\"<command line>\",\"b.tl\",\"c.tl\",\"a.tl\"],\n"
              " \"size\":0,\n \"pieces\":[]}\n");
}

TEST_F(MapTest, DescribesWhatWasWritten)
{
    Write("x.tl", "");
    EXPECT_EQ(Expand({"--map", "map"}, "a @import \"x.tl\" b"), "a  b");
    EXPECT_EQ(
        Read("map"),
        "{\"version\":1,\n"
        " \"sources\":[\"<stdin>\",\"x.tl\"],\n"
        " \"size\":4,\n"
        " \"pieces\":[\n"
        "   {\"kind\":\"source\",\"out\":0,\"size\":1,\"source\":0,\"in\":0,\"inSize\":1},\n"
        "   {\"kind\":\"source\",\"out\":1,\"size\":1,\"source\":0,\"in\":1,\"inSize\":1},\n"
        "   {\"kind\":\"source\",\"out\":2,\"size\":2,\"source\":0,\"in\":16,\"inSize\":2}]}\n");
    Expand({"--map", "map", "--keep-imports"}, "@import \"x.tl\"");
    EXPECT_EQ(
        Read("map"),
        "{\"version\":1,\n"
        " \"sources\":[\"<stdin>\",\"x.tl\"],\n"
        " \"size\":14,\n"
        " \"pieces\":[\n"
        "   {\"kind\":\"source\",\"out\":0,\"size\":14,\"source\":0,\"in\":0,\"inSize\":14}]}\n");
}

TEST_F(MapTest, TextMadeWhileExpandingSaysWhereItCameFrom)
{
    Expand({"--map", "map"}, "@for(x in [ab]){x}");
    EXPECT_EQ(
        Read("map"),
        "{\"version\":1,\n"
        " \"sources\":[\"<stdin>\"],\n"
        " \"size\":2,\n"
        " \"pieces\":[\n"
        "   {\"kind\":\"source\",\"out\":0,\"size\":2,\"source\":null,\"in\":null,\"inSize\":2,"
        "\"from\":{\"source\":0,\"in\":0,\"inSize\":1}}]}\n");
}

TEST_F(MapTest, NamesAreJsonStrings)
{
    Write("a\"\\\t\xff\xc3\xa4.tl", "");
    Expand({"--map", "map", "a\"\\\t\xff\xc3\xa4.tl"});
    EXPECT_EQ(Read("map"), "{\"version\":1,\n"
                           " \"sources\":[\"a\\\"\\\\\\t\xef\xbf\xbd\xc3\xa4.tl\"],\n"
                           " \"size\":0,\n \"pieces\":[]}\n");
}

} // namespace telv::test
