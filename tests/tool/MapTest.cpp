// SPDX-License-Identifier: MIT
// The output map.
#include "ToolTest.h"
#include "support/PlainCrc32.h"

namespace telv::test
{

using MapTest = ToolTest;

std::string CrcOf(const std::string& text)
{
    return std::to_string(PlainCrc32(text));
}

/// The sum that a map says; empty when it says none.
std::string CrcIn(const std::string& map)
{
    const std::string key = ",\n \"crc32\":";
    const size_t begin = map.find(key);
    if (begin == std::string::npos)
        return "";
    return map.substr(begin + key.size(), map.find(',', begin + key.size()) - begin - key.size());
}

TEST_F(MapTest, TilesTheOutput)
{
    Expand({"--map", "map", "-o", "out", "--dst-indent", "2"}, "a\n@(1+1)");
    EXPECT_EQ(
        Read("map"),
        "{\"version\":1,\n"
        " \"output\":\"out\",\n"
        " \"directory\":\".\",\n"
        " \"sources\":[\"<stdin>\"],\n"
        " \"size\":7,\n"
        " \"crc32\":4220284559,\n"
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

TEST_F(MapTest, NamesTheOutputAndTheWayToIt)
{
    Write("sub/deep/main.tl", "a");
    Expand({"--map", "sub/deep/map", "-o", "sub/out", "sub/deep/main.tl"});
    EXPECT_EQ(Read("sub/deep/map").substr(0, 84),
              "{\"version\":1,\n \"output\":\"sub/out\",\n \"directory\":\"../..\",\n"
              " \"sources\":[\"sub/deep/main.");
}

TEST_F(MapTest, RunsAreJoinedWhereTheyContinueEachOther)
{
    const std::string text = "one two, three\n  four\n";
    Expand({"--map", "map", "--map-runs"}, text);
    EXPECT_EQ(Read("map"), "{\"version\":1,\n \"sources\":[\"<stdin>\"],\n \"size\":22,\n"
                           " \"pieces\":[\n   {\"kind\":\"source\",\"out\":0,\"size\":22,"
                           "\"source\":0,\"in\":0,\"inSize\":22}]}\n");
    // Neither over calculated text, nor over a gap in the source, nor over indentation.
    Expand({"--map", "map", "--map-runs", "--dst-indent", "1"}, "a b@@c d\ne @(1) f");
    EXPECT_EQ(
        Read("map"),
        "{\"version\":1,\n \"sources\":[\"<stdin>\"],\n \"size\":14,\n \"pieces\":[\n"
        "   {\"kind\":\"indentation\",\"out\":0,\"size\":1,\"source\":null,\"in\":null,\"inSize\":0},\n"
        "   {\"kind\":\"source\",\"out\":1,\"size\":3,\"source\":0,\"in\":0,\"inSize\":3},\n"
        "   {\"kind\":\"source\",\"out\":4,\"size\":4,\"source\":0,\"in\":5,\"inSize\":4},\n"
        "   {\"kind\":\"indentation\",\"out\":8,\"size\":1,\"source\":null,\"in\":null,\"inSize\":0},\n"
        "   {\"kind\":\"source\",\"out\":9,\"size\":2,\"source\":0,\"in\":9,\"inSize\":2},\n"
        "   {\"kind\":\"calculated\",\"out\":11,\"size\":1,\"source\":0,\"in\":11,\"inSize\":1},\n"
        "   {\"kind\":\"source\",\"out\":12,\"size\":2,\"source\":0,\"in\":15,\"inSize\":2}]}\n");
}

TEST_F(MapTest, TheMapOfATextWithoutMacrosIsOnePiece)
{
    std::string text;
    while (text.size() < 1024 * 1024)
        text += "for (int i = 0; i < n; ++i) /* all of them */\n    total += values[i];\n\n";
    Write("main.tl", text);
    Expand({"-o", "out", "--map", "map", "--map-runs", "--verify-map", "main.tl"});
    EXPECT_EQ(Read("out"), text);
    const std::string size = std::to_string(text.size());
    EXPECT_EQ(Read("map"), "{\"version\":1,\n \"output\":\"out\",\n \"directory\":\".\",\n"
                           " \"sources\":[\"main.tl\"],\n \"size\":" +
                               size + ",\n \"crc32\":" + CrcOf(text) +
                               ",\n \"pieces\":[\n"
                               "   {\"kind\":\"source\",\"out\":0,\"size\":" +
                               size + ",\"source\":0,\"in\":0,\"inSize\":" + size + "}]}\n");
    Expand({"-o", "out", "--map", "map", "--map-runs", "--chains", "main.tl"});
    EXPECT_LT(Read("map").size(), text.size());
}

// A map to which only that would be added, one of standard output, has the members of old.
TEST_F(MapTest, HasTheSumOfWhatIsWritten)
{
    Write("lib.tl", "@def call(x) = {<x @(1 + 1)>}\n");
    Write("main.tl", "@import \"lib.tl\"\nfor\n    call(a)\n@for(i in [b]){call(i)}\n");
    const auto expectSum = [this](std::vector<std::string> arguments)
    {
        std::string what;
        for (const std::string& argument : arguments)
            what += argument + " ";
        arguments.insert(arguments.end(), {"-o", "out", "--map", "map", "main.tl"});
        Expand(arguments);
        EXPECT_EQ(CrcIn(Read("map")), CrcOf(Read("out"))) << what;
    };
    expectSum({});
    expectSum({"--keep-imports"});
    expectSum({"--line-directives"});
    expectSum({"--map-runs", "--dst-indent", "3"});
    expectSum({"--chains", "--lenient"});
    const std::string kept = Read("map");
    expectSum({"--chains", "--lenient", "--keep-unchanged"});
    EXPECT_EQ(Read("map"), kept);
    const std::string text = Expand({"--map", "map", "--chains", "main.tl"});
    EXPECT_EQ(CrcIn(Read("map")), CrcOf(text));
    Expand({"--map", "map", "main.tl"});
    EXPECT_EQ(CrcIn(Read("map")), "");
}

TEST_F(MapTest, ASourceMapNamesItsOutputByTheShortestWay)
{
    Write("sub/deep/main.tl", "a\n");
    Write("other/x", "");
    std::filesystem::create_directory_symlink("sub/deep", Path("link"));
    const auto fileIn = [this](const std::string& output, const std::string& map)
    {
        Expand({"-o", output, "--source-map", map, "sub/deep/main.tl"});
        const std::string text = Read(map);
        const std::string key = "\"file\":\"";
        const size_t begin = text.find(key) + key.size();
        return text.substr(begin, text.find('"', begin) - begin);
    };
    EXPECT_EQ(fileIn("sub/out.js", "sub/deep/map"), "../out.js");
    EXPECT_EQ(fileIn("sub/out.js", "link/map"), "../out.js");
    EXPECT_EQ(fileIn("sub/out.js", "sub/map"), "out.js");
    EXPECT_EQ(fileIn("sub/out.js", "other/map"), "../sub/out.js");
    EXPECT_EQ(fileIn("sub/out.js", "map"), "sub/out.js");
    EXPECT_EQ(fileIn("out.js", "sub/deep/map"), "../../out.js");
    EXPECT_EQ(fileIn(Path("out.js"), "sub/map"), Path("out.js"));
}

TEST_F(MapTest, ASourceMapNamesItsSourcesByTheShortestWay)
{
    Write("sub/deep/main.tl",
          "@import \"../lib.tl\"\n@import \"" + Path("abs.tl") + "\"\n@import \"x%y.tl\"\na\n");
    Write("sub/deep/x%y.tl", "");
    Write("sub/lib.tl", "");
    Write("abs.tl", "");
    Write("other/x", "");
    std::filesystem::create_directory_symlink("sub/deep", Path("link"));
    const auto sourcesIn = [this](const std::string& map, const std::string& main)
    {
        Expand({"-E", "", "--source-map", map, main});
        const std::string text = Read(map);
        const std::string key = "\"sources\":";
        const size_t begin = text.find(key) + key.size();
        return text.substr(begin, text.find(']', begin) + 1 - begin);
    };
    const std::string fixed = ",\"" + Path("abs.tl") + "\",";
    const std::string main = "sub/deep/main.tl";
    EXPECT_EQ(sourcesIn("map", main), "[\"sub/deep/main.tl\",\"<command line>\",\"sub/lib.tl\"" +
                                          fixed + "\"sub/deep/x%y.tl\"]");
    EXPECT_EQ(sourcesIn("sub/map", main),
              "[\"deep/main.tl\",\"<command line>\",\"lib.tl\"" + fixed + "\"deep/x%y.tl\"]");
    EXPECT_EQ(sourcesIn("sub/deep/map", main),
              "[\"main.tl\",\"<command line>\",\"../lib.tl\"" + fixed + "\"x%y.tl\"]");
    EXPECT_EQ(sourcesIn("link/map", main),
              "[\"main.tl\",\"<command line>\",\"../lib.tl\"" + fixed + "\"x%y.tl\"]");
    EXPECT_EQ(sourcesIn("other/map", main),
              "[\"../sub/deep/main.tl\",\"<command line>\",\"../sub/lib.tl\"" + fixed +
                  "\"../sub/deep/x%y.tl\"]");
}

TEST_F(MapTest, DirectivesOfLinesAreCalculated)
{
    Expand({"--map", "map", "--map-runs", "--line-directives", "--verify-map", "-o", "out"},
           "@def x = {1}\na\nb\n");
    EXPECT_EQ(Read("out"), "#line 2 \"<stdin>\"\na\nb\n");
    EXPECT_NE(
        Read("map").find(
            "   {\"kind\":\"calculated\",\"out\":0,\"size\":18,\"source\":0,\"in\":13,\"inSize\":1},\n"
            "   {\"kind\":\"source\",\"out\":18,\"size\":4,\"source\":0,\"in\":13,\"inSize\":4}]}"),
        std::string::npos)
        << Read("map");
}

} // namespace telv::test
