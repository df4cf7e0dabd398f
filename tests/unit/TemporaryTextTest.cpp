// SPDX-License-Identifier: MIT
// Text that exists only while expanding: definitions made in it can be used for as long as they are
// found, errors never point into it once it is gone, and nothing is kept that nobody views. Most of
// this only fails under AddressSanitizer.
#include "ExpanderSupport.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <gtest/gtest.h>
#include <malloc.h>
#include <memory>

#ifdef TELV_ADDRESS_SANITIZER
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace telv::expander
{

namespace
{

/// Texts that are expanded one after the other in one frame, with their results.
struct Program
{
    const char* m_name;
    std::vector<std::pair<std::string, std::string>> m_steps;
};

/// Fills freed memory with other text.
void OverwriteFreedMemory()
{
    std::vector<std::string> texts;
    for (size_t size = 8; size < 400; size += 8)
    {
        for (int i = 0; i < 8; ++i)
            texts.emplace_back(size, '#');
    }
}

void RunProgram(const Program& program)
{
    SCOPED_TRACE(program.m_name);
    Session session;
    for (const auto& [text, result] : program.m_steps)
    {
        EXPECT_EQ(session.Expand(text), result);
        OverwriteFreedMemory();
    }
}

/// The list of a frame, as it is dumped: reads every name and body.
std::string Dump(const FileScopeVarFrame& frame)
{
    return Written([&](xostream& os) { frame.m_localVariables.WriteToStream(os); });
}

const Program s_definitions[] = {
    {"in text that is expanded twice",
     {{"@[@quote(@def + m = {body})]m", "body"}, {"m m", "body body"}, {"@[@quote(m)]", "body"}}},
    {"with arguments",
     {{"@[@quote(@def + f(first, int second) = {<first|second>})]", ""},
      {"f(a, 1 + 1) f(f(b, 3), 4)", "<a|2> <<b|3>|4>"},
      {"f(1)", "error: Insufficient arguments provided for macro f(first,second) @3"},
      {"f(x, y)", "error: Unexpected y after EOS in expression\n    expression: y\n    passing "
                  "formal argument second to macro f @0"}}},
    {"with a type", {{"@[@quote(@def + int f(x) = {x * 2})]", ""}, {"f(4) f(5)", "8 10"}}},
    {"exported from text that is expanded twice",
     {{"@[@quote(@exportdef m = {body})]m", "body"}, {"m", "body"}}},
    {"exported out of a block",
     {{"@scope{@[@quote(@exportdef m = {body})]m} m", "body m"}, {"m", "m"}}},
    {"a value, assigned and defined",
     {{"@let string s = {\"\"}@[@quote(@let s := {made here})]s", "made here"},
      {"s", "made here"}}},
    {"naked macro made in such text binds its arguments in the caller's frame",
     {{"@[@quote(@exportdef + unused = {x})@quote(@nakeddef + n(a) = {<a>})]n(1) a", "<1> 1"},
      {"a n(2) a", "1 <2> 2"},
      {"@scope{n(3) a} a", "<3> 3 2"}}},
    {"naked macro with a typed argument",
     {{"@[@quote(@nakeddef + n(int a) = {<a>})]n(1 + 1) a", "<2> 2"}, {"a", "2"}}},
    {"call through a function argument leaves a plain definition",
     {{"@def call(f()) = {f(zzz)}\ncall(@def q = {body}) q", "(zzz) body"}, {"q q", "body body"}}},
    {"call through a function argument with the arguments in the body",
     {{"@def call(f()) = {f(zzz)}\ncall(@def q = ) q", " (zzz)"}, {"q", "(zzz)"}}},
    {"naked macro called through a function argument",
     {{"@nakeddef n(x) = {[x]}\n@def call(f()) = {f(text)}\ncall(n) x", "[text] text"},
      {"x x", "text text"},
      {"call(n)x", "[text]text"}}},
    {"list of a loop", {{"@for(x in [@quote(@def + m = {body})]){x}m", "body"}, {"m", "body"}}},
    {"list of a loop, several names",
     {{"@for((a, b) in [@quote((@def + m = {body}, @def + n(p) = {<p>}))]){a@@b}m n(1)",
       "body <1>"},
      {"m n(2)", "body <2>"}}},
    {"loop variable captured by a definition",
     {{"@for(x in [one, two]){@def + m = {<x>}}", ""}, {"@def x = {later}\nm", "<later>"}}},
    {"text made in text made in text",
     {{"@[@quote(@[@quote(@[@quote(@def + m = {body})])])]m", "body"}, {"m", "body"}}},
    {"list made in text that is expanded twice",
     {{"@[@quote(@for(x in [@quote(@def + m = {body})]){x})]m", "body"}, {"m", "body"}}},
    {"call made in a list",
     {{"@def call(f()) = {f(zzz)}\n@for(x in [@quote(call(@def + q = {body}))]){x} q",
       "(zzz) body"},
      {"q", "body"}}},
    {"macro that defines a macro",
     {{"@[@quote(@def + outer = {@def + inner = {body}})]", ""},
      {"outer", ""},
      {"inner outer inner", "body  body"}}},
    {"macro made in text that fails much later",
     {{"@[@quote(@def + m = {good @fail(\"later\")})]", ""},
      {"m", "error: later\n    invoking macro m @elsewhere"},
      {"@assertfails(m) x", "x"}}},
    {"macro that redefines itself while it is expanded",
     {{"@def + m = {one @def + m = {two} m}\nm m", "onetwo two"}, {"m", "two"}}},
    {"macro in such text that redefines itself",
     {{"@[@quote(@def + m = {one @def + m = {two} m})]m m", "onetwo two"}, {"m", "two"}}},
    {"value that is replaced while it is used",
     {{"@let string s = {\"a\"}@let s := {s@@s}@let s := {s@@s}s", "aaaa"},
      {"@let s := {@let s := {inner}s@@s}s", "innerinner"},
      {"@let s = {@str(s) + \"x\"}s", "innerinnerx"}}},
    {"value that is replaced in a loop over a list made from it",
     {{"@let string s = {\"a,b\"}@for(x in [@quote()s,c]){@let s := {s@@x}}s", "a,babc"},
      {"s", "a,babc"}}},
    {"names of both kinds hide each other",
     {{"@def m = {given}\n@[@quote(@def + m = {made})]m", "made"},
      {"@def m = {given again}\nm", "given again"},
      {"@[@quote(@def + m = {made again})]m", "made again"}}},
};

} // namespace

TEST(TemporaryText, DefinitionsCanBeUsedLater)
{
    for (const Program& program : s_definitions)
        RunProgram(program);
}

TEST(TemporaryText, DefinitionsCanBeUsedLaterUnderARun)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    for (const Program& program : s_definitions)
        RunProgram(program);
}

TEST(TemporaryText, DefinitionsAreWhole)
{
    Session session;
    const std::string filler(500, 'x');
    EXPECT_EQ(session.Expand("@[@quote(@def + first(a, b) = {" + filler + "})]"), "");
    EXPECT_EQ(session.Expand("@for(x in [@quote(@def + second = {" + filler + "})]){x}"), "");
    OverwriteFreedMemory();
    EXPECT_EQ(Dump(session.m_frame),
              "{\n    second = " + filler + "\n    first(a,b) = " + filler + "\n}\n");
}

TEST(TemporaryText, DefinitionViewsItsTextWithoutACopy)
{
    Session session;
    EXPECT_EQ(session.Expand("@[@quote(@def + m(a) = {body})]"), "");
    const auto* const m = static_cast<LSMacroVariable*>(session.m_frame.Find("m", nullptr));
    const SubString body = m->GetSubstitutionString();
    EXPECT_EQ(m->m_substitutionString.m_capacity, 0);
    EXPECT_EQ(Str(SubString(m->m_name.begin(), body.end())), "m(a) = {body");
    EXPECT_TRUE(IsWithin(m->m_argNames[0].m_name, SubString(m->m_name.begin(), body.begin())));
}

TEST(TemporaryText, BodyThatTheApplicationReplaces)
{
    Session session;
    EXPECT_EQ(session.Expand("@[@quote(@def + m = {body})]"), "");
    auto* const m = static_cast<LSMacroVariable*>(session.m_frame.Find("m", nullptr));
    const SubString body = session.Keep("@def + k = {of the application}k");
    m->SetSubstitutionString(body, false, 0);
    EXPECT_EQ(session.Expand("m|k"), "of the application|of the application");
    const auto* const k = static_cast<LSMacroVariable*>(session.m_frame.Find("k", nullptr));
    EXPECT_TRUE(IsWithin(k->GetSubstitutionString(), body));
}

TEST(TemporaryText, OtherFrameOfTheApplication)
{
    // The frame that the definition goes to is not the one of the text's expander.
    FileScopeVarFrame file;
    {
        VarFrame block(&file);
        const std::string text =
            "@[@quote(@def + m = {body})@quote(@exportdef n = {of the block})] m n";
        xstring output;
        MacroExpand(nullptr, &block, View(text), 0, 0, output);
        EXPECT_EQ(Str(output), " body of the block");
    }
    OverwriteFreedMemory();
    const std::string text = "m n";
    xstring output;
    MacroExpand(nullptr, &file, View(text), 0, 0, output);
    EXPECT_EQ(Str(output), "body n");
}

// Errors

namespace
{

struct Error
{
    std::string m_text;
    std::string m_result;
};

} // namespace

TEST(TemporaryText, ErrorsLeaveDyingTextForTheDirective)
{
    const Error rows[] = {
        {"ab @let int i = {1 2}", "error: Read 2 in middle of expression\n    expression: 1 2 @3"},
        {"@let int i = {0}\nab @let i = {1 2}",
         "error: Read 2 in middle of expression\n    expression: 1 2\n    when parsing expression "
         "'1 2' for @let directive @20"},
        {"ab @( 1 + )", "error: Unexpected ) after + in expression\n    in @(1 +) @3"},
        {"ab @[@quote(cd @fail(\"no\"))]", "error: no\n    in @[cd @fail(\"no\")] @3"},
        {"ab @if(1 2){}", ""},
        {"ab @while(1){}", ""},
        {"ab @assert(1 < \"\")", ""},
        {"ab @for(x in [(1)]){x @fail(\"in the block\")}",
         "error: in the block\n    in @for directive when x = (1) @27"},
        {"ab @for(x in [@quote(@fail(\"in the list\"))]){x}",
         "error: in the list\n    invoking macro x\n    in @for directive when x = @fail(\"in the "
         "list\") @3"},
        {"ab @for((a, b) in [(1)]){}", "error: , expected when read ) @3"},
        {"ab @for((a, b) in [c]){}", "error: ( expected when read c @3"},
        {"ab @for((a, b) in [(1, 2, 3)]){}", "error: ) expected when read , @3"},
        {"ab @for(x in [`1`2]){}", "error: , or ] expected when read 2 @3"},
        {"ab @for(x in [1, 2){x}", "error: Met EOS while reading argument 2\n    in @for directive "
                                   "for list [1, 2 @12"},
        {"ab @for(x in 1){x}", "error: [ expected when read read 1 @12"},
        {"@def c(f()) = {  f(1)}\nab c(@fail)",
         "error: No implicit conversion from int64 to string\n    in @fail(1)\n    invoking macro f\n"
         "    invoking macro c(f) with f=@fail @17"},
        {"@def c(f()) = {  f(1)}\n@def g(x, y) = {x}\nab c(g)",
         "error: Insufficient arguments provided for macro g(x,y)\n    invoking macro f\n    "
         "invoking macro c(f) with f=g @17"},
        {"@def g(int i) = {i}\nab g(1 2)", ""},
        {"@def int g = {1 2}\nab g",
         "error: Read 2 in middle of expression\n    expression: 1 2\n    invoking macro g @22"},
        {"ab @[@quote(@for(x in [@quote(@fail(\"no\"))]){x})]", ""},
        {"ab @for(y in [@quote(@for(x in [@quote(@fail(\"no\"))]){x})]){y}", ""},
    };
    for (const Error& row : rows)
    {
        const std::string result = ExpansionOf(row.m_text);
        if (!row.m_result.empty())
        {
            EXPECT_EQ(result, row.m_result);
            continue;
        }
        // The message is shown elsewhere; the place is the directive's or the macro's name.
        const size_t place = row.m_text.find("ab ") + 3;
        EXPECT_EQ(result.substr(result.rfind('@')), "@" + std::to_string(place)) << result;
    }
}

TEST(TemporaryText, ErrorsUnderARunStandAtTheSamePlaces)
{
    const char* const texts[] = {
        "ab @for(x in [@quote(@fail(\"in the list\"))]){x}",
        "ab @for(y in [@quote(@for(x in [@quote(@fail(\"no\"))]){x})]){y}",
        "@scope{@for(x in [@quote(@def m = {@fail(\"no\")}m)]){x}}",
        "@scope{@[@quote(@exportdef m = {@fail(\"no\")})]m}",
    };
    for (const char* text : texts)
    {
        const std::string without = ExpansionOf(text);
        EXPECT_EQ(without.substr(0, 7), "error: ");
        EXPECT_EQ(without.find("elsewhere"), std::string::npos) << without;
        ExpansionRun run;
        const ExpansionRunScope scope(run);
        EXPECT_EQ(ExpansionOf(text), without);
    }
}

TEST(TemporaryText, DefinitionThatDiesWithItsBlockUnderAnError)
{
    EXPECT_EQ(ExpansionOf("ab @scope{@[@quote(@exportdef m = {@fail(\"no\")})]cd m}"),
              "error: no\n    invoking macro m @10");
    EXPECT_EQ(ExpansionOf("ab @scope{@for(x in [@quote(@exportdef m = {@fail(\"no\")})]){x}m}")
                  .substr(0, 10),
              "error: no\n");
}

TEST(TemporaryText, ErrorInTextThatAVariableKeepsAliveStaysThere)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    EXPECT_EQ(session.Expand("ab @[@quote(@def + m = {good @fail(\"later\")})]"), "ab ");
    const auto* const m = static_cast<LSMacroVariable*>(session.m_frame.Find("m", nullptr));
    const std::string text = "m";
    xstring output;
    try
    {
        MacroExpand(nullptr, &session.m_frame, View(text), 0, 0, output);
        FAIL() << "no error";
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(e.m_pos, m->GetSubstitutionString().begin() + 10);
        EXPECT_EQ(session.Place(run.ResolvePosition(e.m_pos)), "3");
    }
}

TEST(TemporaryText, SwallowedErrorsDoNotMoveLaterOnes)
{
    // The second list may lie where the first, which died under a swallowed error, has been.
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    const std::string swallowed = "@assertfails{@[@quote(@exportdef m = {@fail(\"no\")})]m}";
    const std::string list = "@for(x in [@quote(@fail(\"in the list, which is long\"))]){x}";
    const std::string result = session.Expand(swallowed + swallowed + swallowed + list);
    EXPECT_EQ(result.substr(result.rfind('@')), "@" + std::to_string(3 * swallowed.size()));
}

TEST(TemporaryText, AssertionsOnTheWayOutDoNotMoveLaterErrors)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    session.m_frame.m_localVariables.Add(new LSValueVariable(LSV_INT, "@n", "1"));
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_THROW(session.Expand("@for(x in [@quote(@n)]){x}"), TelvAssertionError);
        const std::string result = session.Expand("abcdef @for(x in [@quote(@fail(\"\"))]){x}");
        EXPECT_EQ(result.substr(result.rfind('@')), "@7");
    }
}

// The output's pieces

TEST(TemporaryText, PiecesOfAMappedOutputAreReadable)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    const SubString text = session.Keep("@def g(x) = {got x}\n@def c(f()) = {f(1)}\n"
                                        "ab @for(x in [one, two]){x }c(g) @[@quote(last)]");
    StringStream os(4096);
    ExpandedOutput output(&os);
    run.m_mappedOutput = &output;
    MacroExpand(nullptr, &session.m_frame, text, 0, 0, output);
    OverwriteFreedMemory();
    std::string copied;
    for (const OutputPiece& piece : output.m_pieces.m_pieces)
    {
        copied += piece.out == 0 ? Str(piece.in) : std::string(static_cast<size_t>(piece.out), '?');
        SubString origin;
        EXPECT_NE(IsWithin(piece.in, text), run.FindOrigin(piece.in.begin(), origin));
        EXPECT_TRUE(IsWithin(SubString(run.ResolvePosition(piece.in.begin()), text.end()), text));
    }
    EXPECT_EQ(Str(os.GetString()), "ab one two got 1 last");
    EXPECT_EQ(copied, "ab one two got 1 ????");
}

/// For each piece that was made while expanding: its text and where that was copied from.
std::string Copies(const char* source, bool isMapped = true)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    const SubString text = session.Keep(source);
    StringStream os(4096);
    ExpandedOutput output(&os);
    run.m_mappedOutput = isMapped ? &output : nullptr;
    MacroExpand(nullptr, &session.m_frame, text, 0, 0, output);
    OverwriteFreedMemory();
    std::string copies;
    for (const OutputPiece& piece : output.m_pieces.m_pieces)
    {
        if (piece.out != 0 || IsWithin(piece.in, text))
            continue;
        const char* const given = run.FindCopied(piece.in);
        copies += isMapped ? Str(piece.in) : std::string("?");
        copies += given == nullptr ? " " : "@" + std::to_string(given - text.begin()) + " ";
        if (given != nullptr)
        {
            EXPECT_EQ(Str(SubString(given, given + piece.in.size())), Str(piece.in)) << source;
        }
    }
    return copies;
}

TEST(TemporaryText, WhereCharactersWereCopiedFrom)
{
    static constexpr struct
    {
        const char* m_text;
        const char* m_copies;
    } rows[] = {
        {"@for(x in [one, two]){x}", "one@11 two@16 "},
        {"@def l = {[one, `t,o`]}@for(x in l){x}", "one@11 t@17 ,@18 o@19 "},
        {"@def a = {one}@for(x in [a, b]){x}", "one@10 b@28 "},
        // Texts in texts: the loop in a list, the list of an element, what is expanded twice.
        {"@for(x in [@for(y in [p, q]){y,}]){x}", "p@22 q@25 "},
        {"@for(x in [[p, q], [r]]){@for(y in x){y}}", "p@12 q@15 r@20 "},
        {"@for(x in @[[p, q]]){x}", "p q "},
        {"@[@quote(@def + m = {body})]m", "body@21 "},
        {"@def t(f()) = {f(x, y)}@def b(u, v) = {v-u}t(b)", "y@20 x@17 "},
        {"@def t(f()) = {f(`x`)}@def b(u) = {u}t(b)", "x@18 "},
        // Calculated, or put together: it stands nowhere.
        {"@for(x in [@(1 + 2), a@@b, c]){x}", "3 ab c@27 "},
        {"@let int n = {7}@for(x in [n, n@@m]){x}", "7 7 m@33 "},
        {"@for(x in [one, two]){@[x]}", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Copies(row.m_text), row.m_copies) << row.m_text;
    EXPECT_EQ(Copies("@for(x in [one, two]){x}", false), "? ? ");
}

TEST(TemporaryText, PiecesOfOtherOutputsAreOnlyAddresses)
{
    Session session;
    const SubString text = session.Keep("@for(x in [one]){x}");
    xstring output;
    OutputPieces pieces;
    MacroExpand(nullptr, &session.m_frame, text, 0, 0, output, pieces);
    ASSERT_EQ(pieces.m_pieces.size(), 1);
    EXPECT_FALSE(IsWithin(pieces.m_pieces[0].in, text));
    EXPECT_EQ(pieces.m_pieces[0].size(), 3);
}

// What is kept

namespace
{

/// Bytes on the heap.
size_t HeapInUse()
{
#ifdef TELV_ADDRESS_SANITIZER
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

/// Whether many expansions of `text` leave little more on the heap than one.
bool LeavesNothing(ExpansionRun* run, const std::string& text)
{
    Session session;
    const SubString source = session.Keep(text);
    const auto expand = [&](int times)
    {
        const auto work = [&]
        {
            xstring output;
            for (int i = 0; i < times; ++i)
                MacroExpand(nullptr, &session.m_frame, source, 0, 0, output);
        };
        if (run == nullptr)
            return work();
        const ExpansionRunScope scope(*run);
        work();
    };
    expand(10);
    const size_t before = HeapInUse();
    expand(500);
    return HeapInUse() < before + 20000;
}

} // namespace

TEST(TemporaryText, TextThatNobodyViewsIsNotKept)
{
    const std::string filler(1000, 'x');
    const std::string texts[] = {
        "@[@quote(" + filler + ")]",
        "@for(x in [" + filler + "]){x}",
        "@[@quote(@def m = {" + filler + "}m)]",
        "@scope{@[@quote(@exportdef m = {" + filler + "})]m}",
        "@scope{@def c(f()) = {f(" + filler + ")}@def g(x) = {x}c(g)}",
        "@assertfails{@for(x in [@quote(@fail(\"" + filler + "\"))]){x}}",
    };
    for (const std::string& text : texts)
    {
        EXPECT_TRUE(LeavesNothing(nullptr, text)) << text.substr(0, 20);
        ExpansionRun run;
        EXPECT_TRUE(LeavesNothing(&run, text)) << text.substr(0, 20) << " under a run";
    }
}

} // namespace telv::expander
