// SPDX-License-Identifier: MIT
// The members of the expander that its directives share, used directly, and the free functions.
#include "tlMacroExpander/src/MacroExpander.h"
#include "ExpanderSupport.h"
#include <gtest/gtest.h>
#include <memory>

namespace telv::expander
{

namespace
{

const std::string s_area = "MacroExpander";

/// Only what has to be implemented.
class SmallHandler : public ImportHandler
{
public:
    bool HandleImport(VarFrame*, const xstring&, const char*) override { return true; }
};

} // namespace

TEST(MacroExpander, NewExpander)
{
    SmallHandler handler;
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

TEST(ReadVariableValueByParsingExpression, RefusesATypeThatHasNoValues)
{
    FileScopeVarFrame frame;
    const std::string text = "1";
    xstring value("before");
    EXPECT_EQ(FailedAssertion(
                  [&]
                  { ReadVariableValueByParsingExpression(&frame, View(text), LSV_MACRO, value); }),
              AssertionIn(s_area, "0"));
    EXPECT_EQ(Str(value), "before");
}

TEST(MacroExpander, DollarMacrosNeedAFile)
{
    SmallHandler handler;
    VarFrame frame(nullptr);
    const std::string text = "@$A = \"x\"";
    xstring output;
    try
    {
        MacroExpand(&handler, &frame, View(text), 0, 0, output);
        FAIL() << Str(output);
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(Str(e.m_description), "No filescope frame");
        EXPECT_EQ(e.m_pos, text.data() + 2);
    }
}

} // namespace telv::expander
