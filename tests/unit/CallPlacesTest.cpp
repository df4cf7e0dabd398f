// SPDX-License-Identifier: MIT
// Where an error came through: the macros, loops and imports that a run names afterwards.
#include "ExpanderSupport.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/LSSourceFile.h"
#include <gtest/gtest.h>
#include <new>

namespace telv::expander
{

namespace
{

/// "FILE:OFFSET" of a position.
std::string Place(const ExpansionRun& run, const char* pos)
{
    const LSSourceFile* const file = run.FindSource(pos);
    return file == nullptr ? "nowhere"
                           : Str(file->m_name) + ":" + std::to_string(pos - file->m_buffer.begin());
}

/// The places of the last error in a line: "NAME@PLACE", "round N@PLACE", "import@PLACE", "+MORE".
std::string Places(const ExpansionRun& run)
{
    std::string line;
    for (const CallPlace& call : run.CallPlaces())
    {
        const bool isLoop = call.m_kind == CallPlace::CALL_LOOP;
        EXPECT_EQ(call.m_name.empty(), isLoop);
        EXPECT_EQ(call.m_round > 0, isLoop);
        line += (isLoop ? "round " + std::to_string(call.m_round) : Str(call.m_name)) + "@" +
                Place(run, call.m_pos) + " ";
    }
    if (run.MoreCallPlaces() > 0)
        line += "+" + std::to_string(run.MoreCallPlaces()) + " ";
    for (const char* const pos : run.ImportPlaces())
        line += "import@" + Place(run, pos) + " ";
    return line;
}

LSSourceFile File(const char* name, const std::string& text)
{
    LSSourceFile file;
    file.m_name = name;
    file.m_buffer = xstring(text.c_str());
    return file;
}

/// Expands "lib" for every import, in the frame that asks.
class Library final : public ImportHandler
{
public:
    explicit Library(const LSSourceFile& file) : m_file(file) {}
    bool HandleImport(VarFrame* vf, const xstring&, const char*) override
    {
        xstring dropped;
        MacroExpand(nullptr, vf, m_file.m_buffer, 0, 0, dropped);
        return true;
    }

private:
    const LSSourceFile& m_file;
};

/// The places behind the error of `text`, which can import `library`.
std::string PlacesOf(const std::string& text, const std::string& library = "",
                     const ExpansionLimits& limits = {})
{
    const LSSourceFile main = File("main", text);
    const LSSourceFile lib = File("lib", library);
    ExpansionRun run;
    run.m_limits = limits;
    run.AddSource(main);
    run.AddSource(lib);
    const ExpansionRunScope scope(run);
    Library handler(lib);
    FileScopeVarFrame frame;
    xstring output;
    try
    {
        MacroExpand(&handler, &frame, main.m_buffer, 0, 0, output);
    }
    catch (const LexScannerException&)
    {
        return Places(run);
    }
    catch (const std::exception&)
    {
        return "other: " + Places(run);
    }
    return "no error";
}

TEST(CallPlaces, OfErrors)
{
    static constexpr struct
    {
        const char* m_text;
        const char* m_places;
    } rows[] = {
        {"@(1 / 0)", ""},
        {"@def f = {@(1 / 0)}f", "f@main:19 "},
        {"@def f = {@(1 / 0)}@def g = {f}g", "f@main:29 g@main:31 "},
        {"@def f(x) = {x}f(@(1 / 0))", "x@main:13 f@main:15 "},
        {"@def f(int n) = {}f(1 / 0)", ""},
        {"@def int f = {1 / 0}f", "f@main:20 "},
        {"@for(i in [a,b]){@if(i == 2){}}", "round 1@main:0 "},
        {"@let int n = {0}@while(n < 3){@let n = {n + 1}@(1 / (2 - n))}", "round 2@main:16 "},
        {"@def f(m()) = {m(1)}@def d(int n) = {@(n / 0)}f(d)", "d@main:15 m@main:15 f@main:46 "},
        {"@def f = {@(1 / 0)}@assertfails(f)@(1 / 0)", ""},
        {"@def f = {@(1 / 0)}@def g = {@assertfails(f)@(2 / 0)}g", "g@main:53 "},
    };
    for (const auto& row : rows)
        EXPECT_EQ(PlacesOf(row.m_text), row.m_places) << row.m_text;
}

TEST(CallPlaces, TenAndHowManyMore)
{
    const std::string places =
        PlacesOf("@def f(int n) = {@if(n == 0){@(1 / 0)}@else{f(n - 1)}}f(99)");
    EXPECT_EQ(places.substr(0, 20), "f@main:44 f@main:44 ");
    EXPECT_EQ(places.substr(places.size() - 14), "f@main:44 +90 ");
}

TEST(CallPlaces, OfImports)
{
    EXPECT_EQ(PlacesOf("@import \"lib\"", "@def f = {@(1 / 0)}f"), "f@lib:19 import@main:8 ");
    // An import that has been read has nothing to do with it.
    EXPECT_EQ(PlacesOf("@import \"lib\"\nf", "@def f = {@(1 / 0)}"), "f@main:14 ");
}

TEST(CallPlaces, OfLimits)
{
    ExpansionLimits limits;
    limits.m_maxSteps = 20;
    EXPECT_EQ(PlacesOf("@def f = {@while(true){}}f", "", limits), "f@main:25 ");
    EXPECT_EQ(PlacesOf("@def f = {@while(true){a}}f", "", limits), "round 6@main:10 f@main:26 ");
    // No limit is swallowed, so its places are not either. The directive's text is a step more.
    limits.m_maxSteps = 21;
    EXPECT_EQ(PlacesOf("@def f = {@while(true){a}}@assertfails(f)", "", limits),
              "round 6@main:10 f@main:39 ");
}

TEST(CallPlaces, OfExceptionsThatAreNoErrorsOfTheText)
{
    EXPECT_EQ(PlacesOf("@def f = {@(\"\\x41\")}@for(i in [1]){f}"),
              "other: f@main:35 round 1@main:20 ");
    EXPECT_EQ(PlacesOf("@def f = {@(\"\\x41\")}@while(true){f}"),
              "other: f@main:33 round 1@main:20 ");
    EXPECT_EQ(PlacesOf("@def f(m()) = {m(1)}@def d(n) = {@(\"\\x41\")}f(d)"),
              "other: d@main:15 m@main:15 f@main:43 ");
    EXPECT_EQ(PlacesOf("@import \"lib\"", "@(\"\\x41\")"), "other: import@main:8 ");
}

} // namespace

} // namespace telv::expander
