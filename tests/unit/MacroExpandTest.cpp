// SPDX-License-Identifier: MIT
// The entry points: what is appended, replaced or left alone, assertion texts, indentation, and
// variables that bear the name of a directive.
#include "ExpanderSupport.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include <gtest/gtest.h>
#include <memory>

namespace telv::expander
{

namespace
{

const std::string s_area = "MacroExpander";

/// Notes what it is asked and answers as it is told.

} // namespace

// The three forms

TEST(MacroExpand, IntoAnOutputAppends)
{
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(&os);
    const std::string first = "@def m = {macro}\nab ";
    const std::string second = "m\n";
    MacroExpand(nullptr, &frame, View(first), 0, 2, output);
    MacroExpand(nullptr, &frame, View(second), 0, 7, output);
    MacroExpand(nullptr, &frame, SubString(), 0, 0, output);
    EXPECT_EQ(Str(os.GetString()), "  ab macro\n");
    EXPECT_EQ(output.m_columnPos, -1);
    EXPECT_EQ(output.m_size, 11);
    EXPECT_EQ(output.size(), 11);
}

TEST(MacroExpand, IntoAStringReplaces)
{
    FileScopeVarFrame frame;
    const std::string text = "a b";
    xstring output("what was there before");
    MacroExpand(nullptr, &frame, View(text), 0, 0, output);
    EXPECT_EQ(Str(output), "a b");
    MacroExpand(nullptr, &frame, SubString(), 0, 0, output);
    EXPECT_EQ(Str(output), "");
}

TEST(MacroExpand, IntoTheStringThatIsExpanded)
{
    FileScopeVarFrame frame;
    xstring text("a@@b @(1 + 1)");
    MacroExpand(nullptr, &frame, text, 0, 0, text);
    EXPECT_EQ(Str(text), "ab 2");
}

TEST(MacroExpand, WithPiecesReplacesBoth)
{
    Session session;
    const SubString text = session.Keep("a b@(1+2)\n c");
    xstring output("before");
    OutputPieces pieces;
    pieces.m_pieces.push_back(OutputPiece{"x", 7});
    MacroExpand(nullptr, &session.m_frame, text, 0, 1, output, pieces);
    EXPECT_EQ(Str(output), " a b3\n  c");
    EXPECT_EQ(PiecesText(pieces, text), "indent 1, source 0+1, source 1+2, calculated 1 from 3+1, "
                                        "source 9+1, indent 1, source 10+2");
    EXPECT_EQ(pieces.size(), output.size());
    MacroExpand(nullptr, &session.m_frame, SubString(), 0, 0, output, pieces);
    EXPECT_TRUE(pieces.m_pieces.empty());
}

TEST(MacroExpand, OutputIsKeptAfterAnErrorAndStringsAreUnchanged)
{
    FileScopeVarFrame frame;
    const std::string text = "@def m = {macro}\nwritten m @fail(\"no\")";
    StringStream os(4096);
    ExpandedOutput output(&os);
    EXPECT_THROW(MacroExpand(nullptr, &frame, View(text), 0, 0, output), LexScannerException);
    EXPECT_EQ(Str(os.GetString()), "written macro");
    EXPECT_EQ(output.size(), 13);
    EXPECT_NE(frame.Find("m", nullptr), nullptr);

    xstring str("before");
    OutputPieces pieces;
    pieces.m_pieces.push_back(OutputPiece{"x", 7});
    EXPECT_THROW(MacroExpand(nullptr, &frame, View(text), 0, 0, str), LexScannerException);
    EXPECT_EQ(Str(str), "before");
    EXPECT_THROW(MacroExpand(nullptr, &frame, View(text), 0, 0, str, pieces), LexScannerException);
    EXPECT_EQ(Str(str), "before");
    ASSERT_EQ(pieces.m_pieces.size(), 1);
    EXPECT_EQ(pieces.m_pieces[0].out, 7);
}

TEST(MacroExpand, Assertions)
{
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(&os);
    xstring str;
    OutputPieces pieces;
    const struct
    {
        std::function<void()> m_operation;
        const char* m_condition;
    } rows[] = {
        {[&] { MacroExpand(nullptr, nullptr, "x", 0, 0, output); }, "vf"},
        {[&] { MacroExpand(nullptr, nullptr, "x", 0, 0, str); }, "vf"},
        {[&] { MacroExpand(nullptr, nullptr, "x", 0, 0, str, pieces); }, "vf"},
        {[&] { MacroExpand(nullptr, nullptr, "", 0, 0, str); }, "vf"},
        {[&] { MacroExpand(nullptr, &frame, "x", -1, 0, output); }, "srcIndent >= 0"},
        {[&] { MacroExpand(nullptr, &frame, "x", 0, -1, output); }, "dstIndent >= 0"},
        {[&] { MacroExpand(nullptr, &frame, "", -1, 0, str); }, "srcIndent >= 0"},
        {[&] { MacroExpander(nullptr, nullptr, "x", -1, -1, output); }, "vf"},
        {[&] { MacroExpander(nullptr, &frame, "x", -1, -1, output); }, "srcIndent >= 0"},
        {[&] { MacroExpander(nullptr, &frame, "x", 0, -1, output); }, "dstIndent >= 0"},
        {[&] { MacroExpander(nullptr, &frame, "x", 0, 0, output).FindVariable(SubString()); },
         "!name.empty()"},
        {[&]
         {
             const char* const text = "name";
             MacroExpander(nullptr, &frame, text, 0, 0, output)
                 .FindVariable(SubString(text + 4, text));
         },
         "name.begin() <= name.end()"},
        {[&] { MacroExpander(nullptr, &frame, "\"x\"", 0, 0, output).ProcessImportDirective(); },
         "m_importHandler"},
        {[&]
         { MacroExpander(nullptr, &frame, "\"x\"", 0, 0, output).ProcessImportPathDirective(); },
         "m_importHandler"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FailedAssertion(row.m_operation), AssertionIn(s_area, row.m_condition))
            << &row - rows;
    EXPECT_EQ(output.size(), 0);
}

TEST(MacroExpand, EmptyText)
{
    EXPECT_EQ(ExpansionOf(""), "");
    EXPECT_EQ(ExpansionOf("", 4, 4), "");
    Session session;
    xstring output;
    OutputPieces pieces;
    MacroExpand(nullptr, &session.m_frame, session.Keep(""), 0, 4, output, pieces);
    EXPECT_TRUE(pieces.m_pieces.empty());
}

TEST(MacroExpand, FrameWithoutAFile)
{
    VarFrame frame(nullptr);
    xstring output;
    const std::string text = "@def m = {x}\n@@a \"$(A)\"";
    MacroExpand(nullptr, &frame, View(text), 0, 0, output);
    EXPECT_EQ(Str(output), "a \"$(A)\"");
    EXPECT_NE(frame.Find("m", nullptr), nullptr);
    EXPECT_EQ(FailedAssertion([&] { MacroExpand(nullptr, &frame, "m", 0, 0, output); }),
              AssertionIn("LSVariable", "m_fileScopeFrame"));
    const std::string atFile = "@def + n = {y}";
    try
    {
        MacroExpand(nullptr, &frame, View(atFile), 0, 0, output);
        FAIL() << "no error";
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(Str(e.m_description), "No filescope frame");
        EXPECT_EQ(e.m_pos - atFile.data(), 7);
    }
}

TEST(MacroExpand, ExportWithoutAParent)
{
    EXPECT_EQ(ExpansionOf("@exportdef int m = {1}"), "error: No parent frame @15");
    EXPECT_EQ(ExpansionOf("@exportdef + m = {1}\nm"), "1");
}

// Indentation

TEST(MacroExpand, SourceAndDestinationIndentation)
{
    const struct
    {
        const char* m_text;
        ssize_t m_srcIndent;
        ssize_t m_dstIndent;
        const char* m_result;
    } rows[] = {
        {"    a\n    b\n  c\n      d\n", 4, 0, "    a\nb\nc\n  d\n"},
        {"a\n\tb\n \tc\n\t\td", 4, 0, "a\nb\n\tc\n\td"},
        {"a\n    b\n\nc", 4, 2, "  a\n  b\n  \n  c"},
        {"a\n  b", 0, 3, "   a\n     b"},
        {"@def m = {\n  x\n}\n  y", 2, 1, " y"},
        {"  @def m = {x}\n\n  \n    y", 2, 0, "  y"},
        {"a\r\n  b", 2, 1, " a\r\n   b"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ExpansionOf(row.m_text, row.m_srcIndent, row.m_dstIndent), row.m_result)
            << row.m_text;
}

// Variables that bear the name of a directive

TEST(MacroExpand, VariableWithTheNameOfADirective)
{
    Session session;
    session.m_frame.m_localVariables.Add(new LSVar("@version", "1.2\n3"));
    EXPECT_EQ(session.Expand("a @version b"), "a 1.2\n3 b");
    EXPECT_EQ(session.Expand("a @ version b @versions"), "a 1.2\n3 b @versions");
    EXPECT_EQ(session.Expand("@scope{@version}"), "1.2\n3");
    session.m_frame.m_localVariables.Add(new LSVar("@elseif", "else-if"));
    EXPECT_EQ(session.Expand("@elseif"), "else-if");
    session.m_frame.m_localVariables.Add(new LSVar("@if", "never"));
    EXPECT_EQ(session.Expand("@if(false){}"), "");
}

TEST(MacroExpand, VariableWithTheNameOfADirectiveIsWrittenAsCalculated)
{
    Session session;
    session.m_frame.m_localVariables.Add(new LSVar("@version", "1.2"));
    const SubString text = session.Keep("a @version b");
    xstring output;
    OutputPieces pieces;
    MacroExpand(nullptr, &session.m_frame, text, 0, 0, output, pieces);
    EXPECT_EQ(PiecesText(pieces, text),
              "source 0+1, source 1+1, calculated 3 from 2+1, source 10+2");
}

TEST(MacroExpand, VariableWithTheNameOfADirectiveMustBeAString)
{
    Session session;
    session.m_frame.m_localVariables.Add(new LSValueVariable(LSV_INT, "@n", "1"));
    EXPECT_EQ(FailedAssertion([&] { session.Expand("@n"); }),
              AssertionIn(s_area, "var->GetType() == LSV_STRING"));
}

TEST(MacroExpand, VariableWithTheNameOfADirectiveIsNotLookedForInImports)
{
    FileScopeVarFrame imported;
    imported.m_localVariables.Add(new LSVar("@version", "1.2"));
    Session session;
    session.m_frame.AddImport(&imported);
    EXPECT_EQ(session.Expand("@version"), "@version");
}

TEST(MacroExpand, AmbiguousNameStandsBehindItsUse)
{
    FileScopeVarFrame one;
    FileScopeVarFrame two;
    one.m_localVariables.Add(new LSVar("x", "1"));
    two.m_localVariables.Add(new LSVar("x", "2"));
    Session session;
    session.m_frame.AddImport(&one);
    session.m_frame.AddImport(&two);
    EXPECT_EQ(session.Expand("a x b"), "error: Ambiguous macro name : x @3");
    EXPECT_EQ(session.Expand("a y b"), "a y b");
}

/// Whether a text handed over like this can be expanded.
template <class Text>
concept CanBeExpanded = requires(Text&& text, FileScopeVarFrame& frame, xstring& out,
                                 ExpandedOutput& output, OutputPieces& pieces)
{
    MacroExpand(nullptr, &frame, static_cast<Text&&>(text), 0, 0, out);
    MacroExpand(nullptr, &frame, static_cast<Text&&>(text), 0, 0, output);
    MacroExpand(nullptr, &frame, static_cast<Text&&>(text), 0, 0, out, pieces);
};

/// A text that ends with the call would leave its definitions viewing nothing.
static_assert(CanBeExpanded<xstring&> && CanBeExpanded<const xstring&>);
static_assert(CanBeExpanded<SubString> && CanBeExpanded<const char*>);
static_assert(CanBeExpanded<const char (&)[5]>);
static_assert(!CanBeExpanded<xstring> && !CanBeExpanded<const xstring>);

} // namespace telv::expander
