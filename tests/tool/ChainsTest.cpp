// SPDX-License-Identifier: MIT
// --chains: through which macros and loops each piece of the map came.
#include "ToolTest.h"

namespace telv::test
{

class ChainsTest : public ToolTest
{
protected:
    /// The map of main.tl from its chains on, with runs joined.
    std::string Chains(std::vector<std::string> arguments = {}) const
    {
        arguments.insert(arguments.end(), {"--map", "map", "--map-runs", "--chains", "--verify-map",
                                           "-o", "out", "main.tl"});
        Expand(arguments);
        const std::string map = Read("map");
        return map.substr(std::min(map.find(" \"chains\""), map.find(" \"pieces\"")));
    }
};

TEST_F(ChainsTest, MacroOfAnImport)
{
    Write("lib.tl", "@def pair(a) = {int a = @(1 + 1);}\n");
    Write("main.tl", "@import \"lib.tl\"\npair(x)\n");
    EXPECT_EQ(
        Chains(),
        " \"chains\":[\n"
        "   {\"kind\":\"macro\",\"name\":\"pair\",\"source\":0,\"in\":17,\"inSize\":4,\"parent\":null},\n"
        "   {\"kind\":\"macro\",\"name\":\"a\",\"source\":1,\"in\":20,\"inSize\":1,\"parent\":0}],\n"
        " \"pieces\":[\n"
        "   {\"kind\":\"source\",\"out\":0,\"size\":4,\"source\":1,\"in\":16,\"inSize\":4,\"chain\":0},\n"
        "   {\"kind\":\"source\",\"out\":4,\"size\":1,\"source\":0,\"in\":22,\"inSize\":1,\"chain\":1},\n"
        "   {\"kind\":\"source\",\"out\":5,\"size\":3,\"source\":1,\"in\":21,\"inSize\":3,\"chain\":0},\n"
        "   {\"kind\":\"calculated\",\"out\":8,\"size\":1,\"source\":1,\"in\":24,\"inSize\":1,\"chain\":0},\n"
        "   {\"kind\":\"source\",\"out\":9,\"size\":1,\"source\":1,\"in\":32,\"inSize\":1,\"chain\":0},\n"
        "   {\"kind\":\"source\",\"out\":10,\"size\":1,\"source\":0,\"in\":24,\"inSize\":1}]}\n");
}

TEST_F(ChainsTest, LoopsHaveRounds)
{
    Write("main.tl", "@let int n = {0}@while(n < 2){@let n = {n + 1}.}");
    EXPECT_EQ(
        Chains(),
        " \"chains\":[\n"
        "   {\"kind\":\"loop\",\"name\":\"@while\",\"source\":0,\"in\":16,\"inSize\":1,\"round\":1,\"parent\":null},\n"
        "   {\"kind\":\"loop\",\"name\":\"@while\",\"source\":0,\"in\":16,\"inSize\":1,\"round\":2,\"parent\":null}],\n"
        " \"pieces\":[\n"
        "   {\"kind\":\"source\",\"out\":0,\"size\":1,\"source\":0,\"in\":46,\"inSize\":1,\"chain\":0},\n"
        "   {\"kind\":\"source\",\"out\":1,\"size\":1,\"source\":0,\"in\":46,\"inSize\":1,\"chain\":1}]}\n");
}

TEST_F(ChainsTest, WithoutStepsThereIsNoList)
{
    Write("main.tl", "a");
    EXPECT_EQ(
        Chains(),
        " \"pieces\":[\n"
        "   {\"kind\":\"source\",\"out\":0,\"size\":1,\"source\":0,\"in\":0,\"inSize\":1}]}\n");
}

TEST_F(ChainsTest, TextOfTheCommandLine)
{
    Write("main.tl", "f");
    const std::string map = Chains({"-E", "@def f = {a}g", "-E", "@def g = {b}"});
    EXPECT_EQ(
        map,
        " \"chains\":[\n"
        "   {\"kind\":\"macro\",\"name\":\"f\",\"source\":0,\"in\":0,\"inSize\":1,\"parent\":null}],\n"
        " \"pieces\":[\n"
        "   {\"kind\":\"source\",\"out\":0,\"size\":1,\"source\":1,\"in\":10,\"inSize\":1,\"chain\":0}]}\n");
}

TEST_F(ChainsTest, WhereFollowsThem)
{
    Write("main.tl",
          "@def int twice(int n) = {2 * n}\n@for(i in [1, 2])\n{\n    i: twice(i)\n\n}\n");
    Expand({"--map", "map", "--chains", "-o", "out", "main.tl"});
    EXPECT_EQ(Read("out"), "1: 2\n2: 4\n\n");
    EXPECT_EQ(Run({"where", "map", "out:2:4"}).out, "main.tl:4:8: calculated here\n"
                                                    " 4 |     i: twice(i)\n"
                                                    "   |        ^\n"
                                                    "main.tl:4:8: in expansion of macro 'twice'\n"
                                                    " 4 |     i: twice(i)\n"
                                                    "   |        ^\n"
                                                    "main.tl:2:1: in round 2 of the loop\n"
                                                    " 2 | @for(i in [1, 2])\n"
                                                    "   | ^\n");
}

TEST_F(ChainsTest, CopiesIntoTextsThatAreMade)
{
    Write("main.tl", "@def l = {[u,v@@w]}@def m(f()) = {f(x)}@def g(y) = {y}\n@for(i in l){i}m(g)");
    const std::string pieces =
        "{\"kind\":\"source\",\"out\":0,\"size\":1,\"source\":null,\"in\":null,\"inSize\":1,"
        "\"from\":{\"source\":0,\"in\":55,\"inSize\":1},"
        "\"copied\":{\"source\":0,\"in\":11,\"inSize\":1},\"chain\":1},\n"
        // Put together from two pieces, one name: it has no place of its own.
        "   {\"kind\":\"source\",\"out\":1,\"size\":2,\"source\":null,\"in\":null,\"inSize\":2,"
        "\"from\":{\"source\":0,\"in\":55,\"inSize\":1},\"chain\":3},\n"
        "   {\"kind\":\"source\",\"out\":3,\"size\":1,\"source\":null,\"in\":null,\"inSize\":1,"
        "\"from\":{\"source\":0,\"in\":34,\"inSize\":1},"
        "\"copied\":{\"source\":0,\"in\":36,\"inSize\":1},\"chain\":7}]}\n";
    const std::string map = Chains();
    EXPECT_EQ(Read("out"), "uvwx");
    EXPECT_TRUE(map.ends_with(pieces)) << map;
    // They belong to the chains: a map without them is as small as it can be.
    Expand({"--map", "map", "-o", "out", "main.tl"});
    EXPECT_EQ(Read("map").find("\"copied\""), std::string::npos);
}

TEST_F(ChainsTest, NeedsAMap)
{
    ExpectFailure(Run({"--chains"}, "a"), 2, "tlexpand: --chains needs --map" + s_hint);
}

} // namespace telv::test
