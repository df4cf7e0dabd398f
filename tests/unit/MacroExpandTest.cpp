// The entry points and the members of the expander that callers may use: what is appended, replaced
// or left alone, assertion texts, the import handler, and the shared free functions.
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
class RecordingHandler : public ImportHandler
{
public:
    bool HandleImportPath(const xstring& path, const char* pos) override
    {
        m_calls += "path " + Str(path) + "; ";
        m_pos = pos;
        return m_answer;
    }

    bool HandleImport(VarFrame* vf, const xstring& path, const char* pos) override
    {
        m_calls += "import " + Str(path) + "; ";
        m_pos = pos;
        m_vf = vf;
        if (m_imported != nullptr)
            static_cast<FileScopeVarFrame*>(vf)->AddImport(m_imported);
        if (m_error != nullptr)
            throw LexScannerException(m_error, pos);
        return m_answer;
    }

    std::string m_calls;
    const char* m_pos = nullptr;
    VarFrame* m_vf = nullptr;
    FileScopeVarFrame* m_imported = nullptr;
    const char* m_error = nullptr;
    bool m_answer = true;
};

/// Only what has to be implemented.
class SmallHandler : public ImportHandler
{
public:
    bool HandleImport(VarFrame*, const xstring&, const char*) override { return true; }
};

struct Row
{
    std::string m_text;
    std::string m_result;
};

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

// Import handlers

TEST(ImportHandler, NoneIsAnErrorForImports)
{
    const Row rows[] = {
        {"a @import \"x\"", "error: @import statement not allowed here @3"},
        {"@ importpath \"x\"", "error: @importpath statement not allowed here @2"},
        {"a @$A = \"x\" b", "a @$A = \"x\" b"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ExpansionOf(row.m_text), row.m_result);
}

TEST(ImportHandler, IsNotPassedToNestedText)
{
    const Row rows[] = {
        {"@scope{@import \"x\"}", "error: @import statement not allowed here @8"},
        {"@if(true){@import \"x\"}", "error: @import statement not allowed here @11"},
        {"@scope{@$A = \"x\"}", "@$A = \"x\""},
        {"@def m = {@$A = \"x\"}\nm", "@$A = \"x\""},
        {"@[@$A = \"x\"]", "@$A = \"x\""},
        {"@def m = {@import \"x\"}\nm",
         "error: @import statement not allowed here\n    invoking macro m @11"},
        {"@for(i in [1]){@import \"x\"}",
         "error: @import statement not allowed here\n    in @for directive when i = 1 @16"},
    };
    for (const Row& row : rows)
    {
        RecordingHandler handler;
        EXPECT_EQ(Session(&handler).Expand(row.m_text), row.m_result);
        EXPECT_EQ(handler.m_calls, "");
    }
}

TEST(ImportHandler, IsAskedForWhatTheDirectiveNames)
{
    const struct
    {
        const char* m_text;
        const char* m_result;
        const char* m_calls;
        ssize_t m_offset;
    } rows[] = {
        {"a @import \"f.tl\" b", "a @import \"f.tl\" b", "import f.tl; ", 10},
        {"@import(\"a\" + \"b\") c", "@import \"ab\" c", "import ab; ", 7},
        {"@import \"a\\tb\"", "@import \"a\\tb\"", "import a\tb; ", 8},
        {"a @importpath \"dir\" b", "a b", "path dir; ", 14},
        {"@importpath(\"d\" + \"ir\")", "", "path dir; ", 11},
    };
    for (const auto& row : rows)
    {
        RecordingHandler handler;
        Session session(&handler);
        EXPECT_EQ(session.Expand(row.m_text), row.m_result);
        EXPECT_EQ(handler.m_calls, row.m_calls);
        EXPECT_EQ(session.Place(handler.m_pos), std::to_string(row.m_offset));
        EXPECT_TRUE(handler.m_vf == nullptr || handler.m_vf == &session.m_frame);
    }
}

TEST(ImportHandler, FalseIsAnError)
{
    RecordingHandler handler;
    handler.m_answer = false;
    Session session(&handler);
    EXPECT_EQ(session.Expand("@import \"n\""), "error: Can't import file: n @8");
    EXPECT_EQ(session.Expand("@import(\"n\" + \"m\")"), "error: Can't import file: nm @7");
    EXPECT_EQ(session.Expand("@importpath \"d\""),
              "error: @importpath directive not supported @12");
}

TEST(ImportHandler, BaseDoesNotSupportImportPaths)
{
    SmallHandler handler;
    EXPECT_FALSE(handler.HandleImportPath("dir", nullptr));
    EXPECT_EQ(Session(&handler).Expand("@importpath \"dir\""),
              "error: @importpath directive not supported @12");
    EXPECT_EQ(Session(&handler).Expand("@import \"x\""), "@import \"x\"");
}

TEST(ImportHandler, ErrorsPassThroughUnchanged)
{
    RecordingHandler handler;
    handler.m_error = "the handler's own";
    EXPECT_EQ(Session(&handler).Expand("  @import \"x\""), "error: the handler's own @10");
}

TEST(ImportHandler, Operands)
{
    const Row rows[] = {
        {"@import 'x'", "error: Quoted string expected after 'import' when read 'x' @8"},
        {"@import x", "error: Quoted string expected after 'import' when read x @8"},
        {"@import", "error: Quoted string expected after 'import' when read EOS @7"},
        {"@importpath 1", "error: Quoted string expected after 'importpath' when read 1 @12"},
        {"@import(\"a\" \"b\")",
         "error: Expected ) after \"a\" when read \"b\" in expression\n    in @import(\"a\" \"b\") @0"},
    };
    for (const Row& row : rows)
    {
        RecordingHandler handler;
        EXPECT_EQ(Session(&handler).Expand(row.m_text), row.m_result);
        EXPECT_EQ(handler.m_calls, "");
    }
}

TEST(ImportHandler, DefinitionsThatItMakesVisibleAreFound)
{
    Session library;
    library.Expand("@def m = {imported}");
    RecordingHandler handler;
    handler.m_imported = &library.m_frame;
    EXPECT_EQ(Session(&handler).Expand("m @import \"x\" m"), "m @import \"x\" imported");
}

TEST(ImportHandler, DollarDefinitionsNeedIt)
{
    SmallHandler handler;
    Session session(&handler);
    EXPECT_EQ(session.Expand("a@$ROOT = \"/usr\" \"$(ROOT)\" _ROOT_"), "a \"/usr\" /usr");
    EXPECT_EQ(session.Expand("@$A = (\"x\" + \"y\")\"$(A)\""), "\"xy\"");
    EXPECT_EQ(session.Expand("@$ = \"x\""), "error: Identifier expected after @let when read = @3");
    EXPECT_EQ(session.Expand("@$A := \"x\""),
              "error: = expected in definition of macro A when read : @4");
    EXPECT_EQ(session.Expand("@$A = x"),
              "error: Quoted string expected after $A definition when read x @6");
}

// Members

TEST(MacroExpander, NewExpander)
{
    RecordingHandler handler;
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(&os);
    const std::string text = "text";
    const MacroExpander e(&handler, &frame, View(text), 3, 5, output);
    EXPECT_EQ(e.m_importHandler, &handler);
    EXPECT_EQ(e.m_vf, &frame);
    EXPECT_EQ(&e.m_output, &output);
    EXPECT_EQ(e.m_srcIndent, 3);
    EXPECT_EQ(e.m_dstIndent, 5);
    EXPECT_EQ(e.m_origStr.begin(), text.data());
    EXPECT_EQ(e.m_origStr.end(), text.data() + 4);
    EXPECT_EQ(e.m_str.begin(), text.data());
    EXPECT_EQ(e.m_str.end(), text.data() + 4);
    EXPECT_EQ(e.m_startDirectivePos, nullptr);
    EXPECT_EQ(e.m_endDirectivePos, nullptr);
    EXPECT_EQ(e.m_writePos, text.data());
}

TEST(MacroExpander, StateAfterAnExpansion)
{
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(&os);
    const std::string text = "ab cd ";
    MacroExpander e(nullptr, &frame, View(text), 0, 0, output);
    e.Expand();
    EXPECT_EQ(Str(os.GetString()), "ab cd ");
    EXPECT_EQ(e.m_writePos, text.data() + 6);
    EXPECT_TRUE(e.m_str.empty());
    EXPECT_EQ(e.m_startDirectivePos, text.data() + 3);
    EXPECT_EQ(e.m_endDirectivePos, text.data() + 5);
}

TEST(MacroExpander, WritePosition)
{
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(&os);
    const std::string text = "abcdef";
    MacroExpander e(nullptr, &frame, View(text), 0, 2, output);
    EXPECT_EQ(e.GetOutputPos(), 2);
    e.AdvanceWritePos(text.data() + 2, true);
    EXPECT_EQ(e.GetOutputPos(), 4);
    e.AdvanceWritePos(text.data() + 4, false);
    EXPECT_EQ(e.m_writePos, text.data() + 4);
    e.AdvanceWritePos(text.data() + 4, true);
    e.WriteSubStringFromSourceFile("source\n");
    EXPECT_EQ(e.GetOutputPos(), 2);
    e.m_startDirectivePos = text.data() + 1;
    e.m_endDirectivePos = text.data() + 3;
    e.WriteCalculatedSubString("made");
    e.WriteCalculatedSubString("more", SubString(text.data(), text.data() + 1));
    EXPECT_EQ(Str(os.GetString()), "  absource\n  mademore");
    const auto& pieces = output.m_pieces.m_pieces;
    ASSERT_EQ(pieces.size(), 5);
    EXPECT_EQ(Str(pieces[3].in), "bc");
    EXPECT_EQ(pieces[3].out, 6);
    EXPECT_EQ(Str(pieces[4].in), "a");
    EXPECT_EQ(pieces[4].out, 4);
}

TEST(MacroExpander, WhiteSpaceAfterADirective)
{
    const struct
    {
        const char* m_text;
        ssize_t m_srcIndent;
        const char* m_rest;
    } rows[] = {
        {"", 0, ""},
        {"x", 0, "x"},
        {" \t x", 0, "x"},
        {" \n x", 0, " x"},
        {" \n \t\n\n  x", 1, " x"},
        {" \n \t\n\n\tx", 4, "x"},
        {"\n\n", 2, ""},
        {"\r\nx", 2, "\r\nx"},
        {"// comment\nx", 0, "// comment\nx"},
    };
    for (const auto& row : rows)
    {
        FileScopeVarFrame frame;
        StringStream os(4096);
        ExpandedOutput output(&os);
        MacroExpander e(nullptr, &frame, row.m_text, row.m_srcIndent, 0, output);
        e.ScanOverWhiteSpaceAfterDirective();
        EXPECT_EQ(Str(e.m_str), row.m_rest) << row.m_text;
        EXPECT_EQ(e.m_writePos, e.m_str.begin());
        EXPECT_EQ(output.size(), 0);
    }
}

TEST(MacroExpander, AddAndFindVariable)
{
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(&os);
    VarFrame child(&frame);
    MacroExpander e(nullptr, &child, "x", 0, 0, output);
    EXPECT_EQ(e.FindVariable("v"), nullptr);
    LSVariable* const v = new LSVar("v", "1");
    e.AddVariable(v);
    EXPECT_EQ(e.FindVariable("v"), v);
    EXPECT_EQ(child.m_localVariables.m_first, v);
    EXPECT_EQ(frame.Find("v", nullptr), nullptr);
}

TEST(MacroExpander, EqualsSigns)
{
    const auto read = [](const char* text, bool both)
    {
        FileScopeVarFrame frame;
        StringStream os(4096);
        ExpandedOutput output(&os);
        MacroExpander e(nullptr, &frame, text, 0, 0, output);
        try
        {
            if (both)
                return std::string(e.ReadEqualsForVariableDefn2("m") ? ":=" : "=");
            e.ReadEqualsForVariableDefn("m");
            return std::string("=");
        }
        catch (const LexScannerException& error)
        {
            return Str(error.m_description) + " @" + std::to_string(error.m_pos - text);
        }
    };
    EXPECT_EQ(read(" = x", false), "=");
    EXPECT_EQ(read("/* */ =", true), "=");
    EXPECT_EQ(read(":=", true), ":=");
    EXPECT_EQ(read(" : =", true), ":=");
    EXPECT_EQ(read(" :=", false), "= expected in definition of macro m when read : @1");
    EXPECT_EQ(read(": x", true), "= expected in definition of macro m when read x @2");
    EXPECT_EQ(read("", true), "= expected in definition of macro m when read EOS @0");
    EXPECT_EQ(read("==", false), "= expected in definition of macro m when read == @0");
}

TEST(MacroExpander, StringAndBoolInBrackets)
{
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(&os);
    const std::string text = "(1 < 2) (\"a\" + \"b\") \"c\") (3)";
    MacroExpander e(nullptr, &frame, View(text), 0, 0, output);
    EXPECT_TRUE(e.ParseBoolExpressionInBrackets("@if"));
    EXPECT_EQ(Str(e.ParseStringExpressionInBrackets("@x", true)), "ab");
    EXPECT_EQ(Str(e.ParseStringExpressionInBrackets("@x", false)), "c");
    EXPECT_EQ(Str(e.EvaluateString("\"d\"", "@x")), "d");
    e.m_startDirectivePos = text.data() + 1;
    try
    {
        e.ParseStringExpressionInBrackets("@x", true);
        FAIL() << "no error";
    }
    catch (const LexScannerException& error)
    {
        EXPECT_EQ(Str(error.m_description),
                  "No implicit conversion from int64 to string\n    in @x(3)");
        EXPECT_EQ(error.m_pos, text.data() + 1);
    }
}

// Free functions

TEST(MacroExpander, TypeKeywords)
{
    const struct
    {
        const char* m_word;
        ELSVariable m_type;
    } rows[] = {
        {"bool", LSV_BOOL},     {"int", LSV_INT},     {"double", LSV_DOUBLE}, {"char", LSV_CHAR},
        {"string", LSV_STRING}, {"macro", LSV_MACRO}, {"Int", LSV_MACRO},     {"ints", LSV_MACRO},
        {"in", LSV_MACRO},      {"", LSV_MACRO},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CheckVariableType(row.m_word), row.m_type) << row.m_word;
}

TEST(MacroExpander, ElseAndElseIf)
{
    const struct
    {
        const char* m_text;
        bool m_isElse;
        bool m_isElseIf;
        const char* m_rest;
    } rows[] = {
        {"@else{x}", true, false, "{x}"},
        {"@elseif(y)", false, true, "(y)"},
        {" /* c */ @ // c\n else z", true, false, " z"},
        {"@Else", false, false, ""},
        {"@elseifs x", false, false, " x"},
        {"else @", false, false, ""},
        {"@\"else\"", false, false, ""},
        {"@ @else", false, false, "else"},
        {"", false, false, ""},
    };
    for (const auto& row : rows)
    {
        SubString s(row.m_text);
        EXPECT_EQ(ScanElseBlock(s), row.m_isElse) << row.m_text;
        EXPECT_EQ(Str(s), row.m_rest) << row.m_text;
        s = SubString(row.m_text);
        EXPECT_EQ(ScanElseIfBlock(s), row.m_isElseIf) << row.m_text;
        EXPECT_EQ(Str(s), row.m_rest) << row.m_text;
    }
}

TEST(MacroExpander, PrefixAndSuffixOfLiterals)
{
    const auto written = [](EStrLiteralMode mode)
    {
        return Written(
            [&](xostream& os)
            {
                WritePrefix(os, mode);
                os << 'x';
                WriteSuffix(os, mode);
            });
    };
    EXPECT_EQ(written(SLM_ASCII), "\"x\"");
    EXPECT_EQ(written(SLM_WIDE), "L\"x\"");
}

namespace
{

/// The written form; "error: MESSAGE @OFFSET" with what was in the value before.
std::string ValueOf(ELSVariable type, const std::string& text)
{
    FileScopeVarFrame frame;
    const std::string definitions = "@def two = {2}\n@let string s = {\"text\"}\n";
    xstring ignored;
    MacroExpand(nullptr, &frame, View(definitions), 0, 0, ignored);
    xstring value("before");
    try
    {
        ReadVariableValueByParsingExpression(&frame, View(text), type, value);
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(Str(value), "before");
        const SubString source = View(text);
        const bool isInside = IsWithin(SubString(e.m_pos, e.m_pos), source);
        return "error: " + Str(e.m_description) + " @" +
               (isInside ? std::to_string(e.m_pos - text.data()) : "elsewhere");
    }
    EXPECT_EQ(frame.Find("new", nullptr), nullptr);
    return Str(value);
}

} // namespace

TEST(MacroExpander, ValuesByExpression)
{
    const struct
    {
        ELSVariable m_type;
        const char* m_text;
        const char* m_value;
    } rows[] = {
        {LSV_BOOL, "1 < two", "true"},
        {LSV_BOOL, "!true", "false"},
        {LSV_BOOL, "1", "error: No implicit conversion from int64 to bool\n    expression: 1 @0"},
        {LSV_INT, "two + 3", "5"},
        {LSV_INT, "-7", "-7"},
        {LSV_INT, "2147483647", "2147483647"},
        {LSV_INT, "1 two", "error: Read 2 in middle of expression\n    expression: 1 2 @0"},
        {LSV_DOUBLE, "1.0 / 4", "0.25"},
        {LSV_DOUBLE, "3.0", "3"},
        {LSV_DOUBLE, "1e30", "1e+30"},
        {LSV_CHAR, "'x'", "'x'"},
        {LSV_CHAR, "'\\n'", "'\\n'"},
        {LSV_CHAR, "'\\''", "'\\''"},
        {LSV_STRING, "\"a\\tb\" + \"c\"", "a\tbc"},
        {LSV_STRING, "@str(s)", "text"},
        {LSV_STRING, "\"\"", ""},
        {LSV_STRING, "1",
         "error: No implicit conversion from int64 to string\n    expression: 1 @0"},
        {LSV_INT, "@let int new = {4}\nnew", "4"},
        {LSV_INT, "@fail(\"no\")", "error: no @5"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ValueOf(row.m_type, row.m_text), row.m_value) << row.m_text;
}

} // namespace telv::expander
