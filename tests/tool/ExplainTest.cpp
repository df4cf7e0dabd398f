// SPDX-License-Identifier: MIT
// tlexpand explain: the data of the page, and what is refused. What the page does with the data is
// tested in a browser (tests/page).
#include "ToolTest.h"

#include <nlohmann/json.hpp>

namespace telv::test
{

class ExplainTest : public ToolTest
{
protected:
    using Json = nlohmann::json;

    void SetUp() override
    {
        Write("lib.tl", "@def pair(a) =\n{\n    a </script> @(1 + 1)\n}\n");
        Write("main.tl",
              "@import \"lib.tl\"\n\xc3\xa4\n@for(x in [p, \xf0\x9f\x98\x80 q]){pair(x)\n}");
    }

    Json PageData(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "explain");
        const std::string page = Expand(arguments);
        const std::string open = "<script type=\"application/json\" id=\"data\">";
        const size_t begin = page.find(open) + open.size();
        return Json::parse(page.substr(begin, page.find("</script>", begin) - begin));
    }

    /// For each piece its kind and the text of its source, as the page finds them.
    static std::string Pieces(const Json& data)
    {
        static constexpr const char* s_kinds[] = {"copied", "calculated", "indentation", "made"};
        const auto& numbers = data["pieces"];
        std::string text;
        for (size_t i = 0; i < numbers.size(); i += 6)
        {
            text += s_kinds[numbers[i + 1].get<size_t>()];
            const int source = numbers[i + 2];
            if (source >= 0)
                text += " " +
                        data["sources"][static_cast<size_t>(source)]["name"].get<std::string>() +
                        ":" + numbers[i + 3].dump() + "+" + numbers[i + 4].dump();
            text += "; ";
        }
        return text;
    }
};

TEST_F(ExplainTest, ThePageHasTextsPiecesAndChains)
{
    const Json data = PageData({"main.tl"});
    EXPECT_EQ(data["output"]["text"], "\xc3\xa4\np </script> 2\n\xf0\x9f\x98\x80 q </script> 2\n");
    EXPECT_EQ(data["sources"][0]["name"], "main.tl");
    EXPECT_EQ(data["sources"][0]["text"], Read("main.tl"));
    EXPECT_EQ(data["sources"][1]["text"], Read("lib.tl"));
    const std::string pieces = Pieces(data);
    // Offsets count as JavaScript does: the face is two units, and the letter before it one.
    EXPECT_NE(pieces.find("copied main.tl:30+1; "), std::string::npos) << pieces;
    EXPECT_NE(pieces.find("copied main.tl:33+2; copied main.tl:35+2; "), std::string::npos)
        << pieces;
    EXPECT_NE(pieces.find("calculated lib.tl:33+1; "), std::string::npos) << pieces;
    std::string chain;
    for (int step = data["pieces"][data["pieces"].size() - 7]; step >= 0;
         step = data["chains"][static_cast<size_t>(step)]["parent"])
        chain += data["chains"][static_cast<size_t>(step)]["text"].get<std::string>() + "; ";
    EXPECT_EQ(chain, "in expansion of macro 'pair'; in round 2 of the loop; ");
}

TEST_F(ExplainTest, ValuesInOtherWordsLightUpWhereTheyBegin)
{
    Write("rows.csv", "a\n\"x \"\"y\"\"\"\n");
    Write("main.tl", "@for(a in rows){a}");
    const Json data = PageData({"--list", "rows=rows.csv", "main.tl"});
    EXPECT_EQ(data["output"]["text"], "x \"y\"");
    EXPECT_EQ(Pieces(data), "copied rows.csv:3+1; made rows.csv:4+1; ");
}

TEST_F(ExplainTest, AMapGivesTheSamePage)
{
    Expand({"-o", "out", "--map", "map", "--chains", "main.tl"});
    const Json made = PageData({"--from-map", "map"});
    Json whole = PageData({"main.tl"});
    whole["output"]["name"] = "out";
    EXPECT_EQ(made, whole);
}

TEST_F(ExplainTest, ThePageIsOneFileThatNeedsNoOther)
{
    const std::string page = Expand({"explain", "main.tl"});
    for (const char* const foreign : {"http:", "https:", "src=", "@import url", "fetch("})
        EXPECT_EQ(page.find(foreign), std::string::npos) << foreign;
    EXPECT_EQ(page.find("</script> 2"), std::string::npos);
}

TEST_F(ExplainTest, AMapThatDoesNotFitIsRefused)
{
    Write("page", "earlier");
    const auto expect = [this](const std::string& err)
    {
        ExpectFailure(Run({"explain", "--from-map", "map", "-o", "page"}), 2, err);
        EXPECT_EQ(Read("page"), "earlier");
    };
    expect("tlexpand: can't read 'map': No such file or directory\n");
    Expand({"-o", "out", "--map", "map", "main.tl"});
    const std::string map = Read("map");
    const std::string output = Read("out");
    Write("map", map.substr(0, map.size() / 2));
    expect("tlexpand: 'map' is no map that can be used: it is no JSON, or not all of it\n");
    Write("map", "{\"version\":2}");
    expect("tlexpand: 'map' is no map that can be used: its version is 2, this program reads "
           "version 1\n");
    Write("map", map);
    Write("out", "x" + output.substr(1));
    expect("tlexpand: 'map' does not fit 'out': the file has changed since it was written\n");
    Write("out", output + "x");
    expect("tlexpand: 'map' does not fit 'out': the file has " + std::to_string(output.size() + 1) +
           " bytes, the map " + std::to_string(output.size()) + "\n");
    Write("out", output);
    std::filesystem::remove(Path("lib.tl"));
    expect("tlexpand: can't read 'lib.tl': No such file or directory\n");
    std::filesystem::remove(Path("out"));
    expect("tlexpand: can't read 'out': No such file or directory\n");
}

TEST_F(ExplainTest, ThePageTakesThePlaceOfNothingThatItShows)
{
    Expand({"-o", "out", "--map", "map", "main.tl"});
    std::filesystem::create_symlink("map", Path("link"));
    const auto expect = [this](const std::vector<std::string>& shown, const std::string& page)
    {
        const std::string earlier = Read(page);
        std::vector<std::string> arguments{"explain", "-o", page};
        arguments.insert(arguments.end(), shown.begin(), shown.end());
        ExpectFailure(Run(arguments), 2,
                      "tlexpand: the output '" + page + "' is a file that is read" + s_hint);
        EXPECT_EQ(Read(page), earlier);
    };
    for (const char* const page : {"map", "out", "main.tl", "lib.tl", "./out", "link"})
        expect({"--from-map", "map"}, page);
    for (const char* const page : {"main.tl", "lib.tl"})
        expect({"main.tl"}, page);
    Expand({"explain", "-o", "page", "--from-map", "map"});
    Expand({"explain", "-o", "page", "--from-map", "map"}); // The page itself is no input.
}

TEST_F(ExplainTest, AnErrorOfTheTextLeavesTheEarlierPage)
{
    Write("page", "earlier");
    Write("main.tl", "a\n@(1 / 0)\n");
    const ProgramResult result = Run({"explain", "-o", "page", "main.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.rfind("main.tl(2) : error : Division by zero error\n", 0), 0u);
    EXPECT_EQ(Read("page"), "earlier");
}

TEST_F(ExplainTest, TheOutputOfAMapIsNamedByTheCaller)
{
    Write("gen.c", Expand({"--map", "map", "--chains", "main.tl"}));
    ExpectFailure(Run({"explain", "--from-map", "map", "-o", "page"}), 2,
                  "tlexpand: 'map' does not name its output: name it behind it\n"
                  "Try 'tlexpand --help' for more information.\n");
    const Json made = PageData({"--from-map", "map", "gen.c"});
    EXPECT_EQ(made["output"]["name"], "gen.c");
    EXPECT_EQ(made["pieces"], PageData({"main.tl"})["pieces"]);
    // One that was moved is found too.
    Expand({"-o", "out", "--map", "map", "main.tl"});
    std::filesystem::rename(Path("out"), Path("moved"));
    EXPECT_EQ(PageData({"--from-map", "map", "moved"})["output"]["name"], "moved");
    ExpectFailure(Run({"explain", "--from-map", "map", "main.tl", "-o", "page"}), 2,
                  "tlexpand: 'map' does not fit 'main.tl': the file has 52 bytes, the map 36\n");
}

} // namespace telv::test
