// SPDX-License-Identifier: MIT
// tlexpand remap on messages in JSON: GCC's diagnostics, SARIF, and documents of any other shape.
#include "RemapTest.h"

namespace telv::test
{

TEST_F(RemapTest, ColumnsInJsonHaveTheirUnits)
{
    Write("main.tl", "@def x = {1}\n/* \U00010400 */\tint a = b;\n");
    Generate();
    // Behind the letter (four bytes, two units of UTF-16) and the tab: b has byte column 20.
    const auto gcc = [](const std::string& file, const std::string& column)
    {
        return R"([{"kind":"e","locations":[],"file":")" + file + R"(","line":)" +
               (file == "gen.cpp" ? "1" : "2") + R"(,"display-column":17,"byte-column":20,)" +
               R"("column":)" + column + "}]\n";
    };
    EXPECT_EQ(Filter(gcc("gen.cpp", "17")), gcc("main.tl", "17"));
    EXPECT_EQ(Filter(gcc("gen.cpp", "20")), gcc("main.tl", "20"));
    const auto sarif =
        [](const std::string& unit, const std::string& file, int line, const std::string& column)
    {
        return R"({"runs":[{"columnKind":")" + unit +
               R"(","results":[{"message":{},"locations":[{"physicalLocation":)" +
               R"({"artifactLocation":{"uri":")" + file + R"("},"region":{"startLine":)" +
               std::to_string(line) + R"(,"startColumn":)" + column + "}}}]}]}]}\n";
    };
    EXPECT_EQ(Filter(sarif("unicodeCodePoints", "gen.cpp", 1, "17")),
              sarif("unicodeCodePoints", "main.tl", 2, "17"));
    EXPECT_EQ(Filter(sarif("utf16CodeUnits", "gen.cpp", 1, "18")),
              sarif("utf16CodeUnits", "main.tl", 2, "18"));
}

TEST_F(RemapTest, DiagnosticsOfGccInJson)
{
    Generate();
    const ProgramResult result =
        RunShell("g++ -fdiagnostics-format=json -c gen.cpp 2>&1 | \"$TLEXPAND\" remap gen.cpp.map");
    std::string places;
    std::istringstream lines(result.out);
    std::string line;
    std::getline(lines, line);
    for (const auto& message : nlohmann::json::parse(line))
    {
        const auto& caret = message["locations"][0]["caret"];
        places +=
            caret["file"].get<std::string>() + ":" + std::to_string(caret["line"].get<int>()) + " ";
    }
    EXPECT_EQ(places, "main.tl:2 lib.tl:3 lib.tl:3 main.tl:4 main.tl:8 main.tl:8 main.tl:11 ");
    EXPECT_EQ(result.out.find("gen.cpp"), std::string::npos);
}

TEST_F(RemapTest, Sarif)
{
    Write("main.tl", "@def deref(p) =\n{\n    if (!p)\n        return *p;\n}\n"
                     "int f(int* p)\n{\n    deref(p)\n    return 0;\n}\n");
    Generate("gen.c");
    const ProgramResult result =
        RunShell("clang-14 --analyze --analyzer-output sarif -o out.sarif gen.c 2> /dev/null && "
                 "\"$TLEXPAND\" remap gen.c.map < out.sarif");
    const auto document = nlohmann::json::parse(result.out);
    const auto& found = document["runs"][0]["results"][0];
    const auto& location = found["locations"][0]["physicalLocation"];
    EXPECT_EQ(location["artifactLocation"]["uri"],
              "file://" + std::filesystem::canonical(Path("main.tl")).string());
    EXPECT_EQ(location["region"]["startLine"], 4);
    EXPECT_EQ(location["region"]["startColumn"], 16);
    for (const auto& step : found["codeFlows"][0]["threadFlows"][0]["locations"])
        EXPECT_NE(
            step["location"]["physicalLocation"]["artifactLocation"]["uri"].get<std::string>().find(
                "main.tl"),
            std::string::npos);
    // What is no document after all comes out as it was.
    EXPECT_EQ(Run({"remap", "gen.c.map"}, "{\n  \"runs\": [\nend\n").out,
              "{\n  \"runs\": [\nend\n");
    EXPECT_EQ(Run({"remap", "gen.c.map"}, "{\"a\": 1}\n{\n").out, "{\"a\": 1}\n{\n");
}

// The steps name their files as the result itself does.
TEST_F(RemapTest, ChainsInSarif)
{
    Generate("gen.cpp", {"--chains"});
    const auto relatedTo = [this](const std::string& uri)
    {
        const std::string result =
            Filter("{\"version\":\"2.1.0\",\"runs\":[{\"results\":[{\"message\":{\"text\":\"x\"},"
                   "\"locations\":[{\"physicalLocation\":{\"artifactLocation\":{\"uri\":\"" +
                   uri + "\"},\"region\":{\"startLine\":2,\"startColumn\":9}}}]}]}]}\n");
        const auto found = nlohmann::json::parse(result)["runs"][0]["results"][0];
        const auto place = [](const nlohmann::json& location)
        {
            const auto& physical = location["physicalLocation"];
            return physical["artifactLocation"]["uri"].get<std::string>() + ":" +
                   physical["region"]["startLine"].dump() + ":" +
                   physical["region"]["startColumn"].dump();
        };
        std::string places = place(found["locations"][0]);
        for (const auto& related : found["relatedLocations"])
            places += " " + place(related) + " " + related["message"]["text"].get<std::string>();
        return places;
    };
    EXPECT_EQ(relatedTo("gen.cpp"), "lib.tl:3:13 main.tl:3:1 in expansion of macro 'pair'");
    const std::string here = "file://" + std::filesystem::canonical(Path(".")).string() + "/";
    EXPECT_EQ(relatedTo(here + "gen.cpp"),
              here + "lib.tl:3:13 " + here + "main.tl:3:1 in expansion of macro 'pair'");
}

TEST_F(RemapTest, JsonOfUnexpectedShapesPasses)
{
    Generate();
    for (const std::string text : {
             R"({"x":1e400})",
             R"([{"kind":"e","message":"m","locations":{"a":1}}])",
             R"([{"kind":"e","message":"m","locations":"x"}])",
             R"([{"kind":"e","message":"m","locations":7}])",
             R"([{"kind":"e","message":"m","locations":[7, null]}])",
             R"([{"kind":"e","locations":[],"fixits":3}])",
             R"([{"kind":"e","locations":[],"file":"gen.cpp","line":"1"}])",
             R"({"runs":[{"results":[{"message":{},"locations":{"a":1}}]}]})",
             R"({"runs":[1, {"results":2}, {"results":[{"fixes":[{"artifactChanges":"x"}]}]}]})",
             R"({"runs":[{"artifacts":{"location":{"uri":"gen.cpp"}},"results":[{"message":{},)"
             R"("locations":[{"physicalLocation":{"artifactLocation":{"index":0},)"
             R"("region":{"startLine":1}}}]}]}]})",
         })
    {
        EXPECT_EQ(Filter(text + "\ngen.cpp:1: after\n"), text + "\nmain.tl:2: after\n");
        EXPECT_EQ(Filter(text), text);
    }
    const ProgramResult result = Run({"remap", "gen.cpp.map", "--", "sh", "-c",
                                      "echo '{\"x\":1e400}'; echo gen.cpp:1: after; exit 3"});
    EXPECT_EQ(result.out, "{\"x\":1e400}\nmain.tl:2: after\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 3);
}

/// Where notes are to be added, something else can stand.
TEST_F(RemapTest, JsonThatHasNoRoomForNotesPasses)
{
    Generate("gen.cpp", {"--chains"});
    const std::string gcc = R"([{"kind":"e","message":"m","locations":[{"caret":)"
                            R"({"file":"gen.cpp","line":2,"column":9}}],"children":@}])";
    const std::string sarif = R"({"runs":[{"results":[{"message":{},"locations":)"
                              R"([{"physicalLocation":{"artifactLocation":{"uri":"gen.cpp"},)"
                              R"("region":{"startLine":2}}}],"relatedLocations":@}]}]})";
    for (const std::string& text : {gcc, sarif})
    {
        for (const char* other : {"7", R"({"a":1})", R"("x")"})
        {
            const std::string document = Replace(text, "@", other) + "\n";
            EXPECT_EQ(Filter(document), document);
        }
        EXPECT_NE(Filter(Replace(text, "@", "[]")).find("in expansion of macro"),
                  std::string::npos);
    }
}

TEST_F(RemapTest, JsonInWhichNothingIsMappedKeepsItsBytes)
{
    Generate();
    for (const char* text : {
             "[{\"kind\":\"e\",\"locations\":[]} ]",
             "[ {\"kind\":\"e\",\"message\":\"m\",\"locations\":[{\"caret\":{\"file\":\"o.cpp\","
             "\"line\":1}}]}]\n\n",
             "{\n \"runs\": [ {\"results\": [{\"message\": {}, \"fixes\": []}]} ] }\r\n",
             "{\"runs\" :[]}",
         })
        EXPECT_EQ(Filter(text), text);
    // What stands behind the document stays, too.
    EXPECT_EQ(Filter("[{\"kind\":\"e\",\"locations\":[],\"file\":\"gen.cpp\",\"line\":1}]"),
              "[{\"kind\":\"e\",\"locations\":[],\"file\":\"main.tl\",\"line\":2}]");
}

TEST_F(RemapTest, LinesThatJsonCannotMeanAreReportedOnce)
{
    Generate();
    const auto said = [&](const std::string& line)
    {
        const std::string text = "[{\"kind\":\"e\",\"message\":\"m\",\"locations\":[{\"caret\":"
                                 "{\"file\":\"gen.cpp\",\"line\":" +
                                 line + "}}]} ]\n";
        const ProgramResult result = Run({"remap", "gen.cpp.map"}, text);
        EXPECT_EQ(result.out, text);
        EXPECT_EQ(result.status, 2);
        return result.err;
    };
    EXPECT_EQ(said("99"), "tlexpand: 'gen.cpp' has no line 99\n");
    EXPECT_EQ(said("-1"), "tlexpand: 'gen.cpp' has no line -1\n");
    EXPECT_EQ(said("18446744073709551615"),
              "tlexpand: 'gen.cpp' has no line 9223372036854775807\n");
}

TEST_F(RemapTest, RangesOfGccAreOfOnePiece)
{
    Write("lib.tl", "@def e(p) = {int p@@_value; int k = p@@_valu + other;}\n");
    Write("main.tl", "@import \"lib.tl\"\ne(my)\n");
    Generate();
    ASSERT_EQ(Read("gen.cpp"), "int my_value; int k = my_valu + other;\n");
    const auto place = [](int column, const std::string& file = "gen.cpp", int line = 1) {
        return nlohmann::ordered_json{{"file", file}, {"line", line}, {"column", column}};
    };
    const auto filter =
        [&](const nlohmann::ordered_json& location, const nlohmann::ordered_json& fixes)
    {
        nlohmann::ordered_json message = {
            {"kind", "error"}, {"locations", {location}}, {"message", "m"}};
        if (!fixes.empty())
            message["fixits"] = fixes;
        const std::string text = nlohmann::ordered_json::array({message}).dump() + "\n";
        const auto written = nlohmann::ordered_json::parse(Filter(text));
        return written[0]["locations"][0].dump() +
               (written[0].contains("fixits") ? written[0]["fixits"].dump() : "");
    };
    const auto fix = [](const auto& start, const auto& next) {
        return nlohmann::ordered_json::array({{{"start", start}, {"next", next}, {"string", "s"}}});
    };
    const auto caret = [](const auto& at) { return nlohmann::ordered_json{{"caret", at}}; };
    const auto range = [](const auto& at, const auto& finish) {
        return nlohmann::ordered_json{{"caret", at}, {"finish", finish}};
    };
    // "my" is of main.tl, "_valu" of lib.tl.
    EXPECT_EQ(filter(range(place(23), place(29)), fix(place(23), place(30))),
              caret(place(3, "main.tl", 2)).dump());
    // A piece to its very end.
    EXPECT_EQ(filter(range(place(23), place(24)), fix(place(23), place(25))),
              range(place(3, "main.tl", 2), place(4, "main.tl", 2)).dump() +
                  fix(place(3, "main.tl", 2), place(5, "main.tl", 2)).dump());
    EXPECT_EQ(filter(range(place(33), place(37)), fix(place(33), place(38))),
              range(place(48, "lib.tl"), place(52, "lib.tl")).dump() +
                  fix(place(48, "lib.tl"), place(53, "lib.tl")).dump());
    // What only inserts.
    EXPECT_EQ(filter(caret(place(33)), fix(place(38), place(38))),
              caret(place(48, "lib.tl")).dump() +
                  fix(place(53, "lib.tl"), place(53, "lib.tl")).dump());
    // Other files.
    EXPECT_EQ(
        filter(range(place(1, "x.h"), place(2, "x.h")), fix(place(1, "x.h"), place(3, "x.h"))),
        range(place(1, "x.h"), place(2, "x.h")).dump() +
            fix(place(1, "x.h"), place(3, "x.h")).dump());
}

TEST_F(RemapTest, FixesInSarifStayForOtherFiles)
{
    Generate();
    const auto fix = [](const std::string& file)
    {
        return R"({"artifactChanges":[{"artifactLocation":{"uri":")" + file +
               R"("},"replacements":[{"deletedRegion":{"startLine":2},)"
               R"("insertedContent":{"text":"x"}}]}]})";
    };
    const auto result = [](const std::string& file, const std::string& fixes)
    {
        return R"({"message":{"text":"m"},"locations":[{"physicalLocation":)"
               R"({"artifactLocation":{"uri":")" +
               file + R"("},"region":{"startLine":2}}}])" + fixes + "}";
    };
    const auto document = [](const std::string& results)
    { return R"({"runs":[{"results":[)" + results + "]}]}\n"; };
    const std::string others = ",\"fixes\":[" + fix("other.cpp") + "]";
    EXPECT_EQ(Filter(document(result("other.cpp", others))), document(result("other.cpp", others)));
    const std::string both = ",\"fixes\":[" + fix("gen.cpp") + "," + fix("other.cpp") + "]";
    const std::string own = ",\"fixes\":[" + fix("gen.cpp") + "]";
    const std::string text = Filter(document(result("gen.cpp", both) + "," + result("o.cpp", own)));
    std::string expected = document(result("lib.tl", others) + "," + result("o.cpp", ""));
    expected = Replace(expected, "\"startLine\":2}}}],\"fixes\"", "\"startLine\":3}}}],\"fixes\"");
    EXPECT_EQ(text, expected);
}
/// A SARIF document with one location.
static std::string SarifAt(const std::string& artifact, const std::string& region,
                           const std::string& run = "")
{
    return R"({"runs":[{)" + run +
           R"("results":[{"message":{},"locations":[{"physicalLocation":{"artifactLocation":)" +
           artifact + R"(,"region":)" + region + "}}]}]}]}\n";
}

// The end stays where what lies between it and the beginning was copied in one.
TEST_F(RemapTest, EndsOfRegionsInSarif)
{
    Generate();
    const auto expect =
        [this](const std::string& region, const std::string& file, const std::string& mapped)
    {
        EXPECT_EQ(Filter(SarifAt(R"({"uri":"gen.cpp"})", region)),
                  SarifAt(R"({"uri":")" + file + R"("})", mapped));
    };
    // int ok = bad_in_text;
    expect(R"({"startLine":1,"startColumn":10,"endColumn":21})", "main.tl",
           R"({"startLine":2,"startColumn":10,"endColumn":21})");
    expect(R"({"startLine":1,"startColumn":10,"endLine":1,"endColumn":21})", "main.tl",
           R"({"startLine":2,"startColumn":10,"endLine":2,"endColumn":21})");
    // int x = bad_in_body; in which x is the argument.
    expect(R"({"startLine":2,"startColumn":9,"endColumn":20})", "lib.tl",
           R"({"startLine":3,"startColumn":13,"endColumn":24})");
    expect(R"({"startLine":2,"startColumn":5,"endColumn":20})", "main.tl",
           R"({"startLine":3,"startColumn":6})");
    expect(R"({"startLine":2,"startColumn":1,"endColumn":20})", "lib.tl",
           R"({"startLine":3,"startColumn":5,"endColumn":24})");
    // int c = bad_calculated;
    expect(R"({"startLine":10,"startColumn":9,"endColumn":23})", "main.tl",
           R"({"startLine":11,"startColumn":9})");
}

TEST_F(RemapTest, BasesOfUrisInSarif)
{
    std::filesystem::create_directories(Path("out/deep"));
    Expand({"-o", "out/deep/gen.cpp", "--map", "gen.map", "main.tl"});
    const std::string here = "file://" + std::filesystem::canonical(Path(".")).string() + "/";
    const auto bases = [](const std::string& base)
    {
        return R"("originalUriBaseIds":{"ROOT":)" + base +
               R"(,"OUT":{"uri":"out","uriBaseId":"ROOT"}},)";
    };
    const std::string root = bases(R"({"uri":")" + here + R"("})");
    const auto expect =
        [this](const std::string& run, const std::string& from, const std::string& to)
    {
        EXPECT_EQ(Run({"remap", "gen.map"}, SarifAt(from, R"({"startLine":1})", run)).out,
                  SarifAt(to, R"({"startLine":2})", run));
    };
    expect(root, R"({"uri":"out/deep/gen.cpp","uriBaseId":"ROOT"})",
           R"({"uri":"main.tl","uriBaseId":"ROOT"})");
    // The source lies not below the base: it is named whole.
    expect(root, R"({"uri":"deep/gen.cpp","uriBaseId":"OUT"})",
           R"({"uri":")" + here + R"(main.tl"})");
    // A base that is not said is the current directory.
    expect("", R"({"uri":"out/deep/gen.cpp","uriBaseId":"%SRCROOT%"})",
           R"({"uri":"main.tl","uriBaseId":"%SRCROOT%"})");
    expect("", R"({"uri":"out/deep/gen.cpp"})", R"({"uri":"main.tl"})");
    // Bases that are relative to each other are none.
    const std::string ring = bases(R"({"uri":"x/","uriBaseId":"OUT"})");
    const std::string lost =
        SarifAt(R"({"uri":"y/gen.cpp","uriBaseId":"ROOT"})", R"({"startLine":1})", ring);
    EXPECT_EQ(Run({"remap", "gen.map"}, lost).out, lost);
}

} // namespace telv::test
