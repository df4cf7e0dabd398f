// @let, @( and @[: typed values and text that is expanded twice.
//
// The pattern of all of them: expand the text into a string in a scope of its own, then evaluate
// the string. The string dies with the directive, so no error that leaves here points into it.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Values/OwningVariables.h"
#include "tlMacroExpander/src/Expressions/DirectExpression.h"
#include "tlMacroExpander/src/Expressions/ParseExpanded.h"
#include "tlMacroExpander/src/Run/TemporaryText.h"

namespace telv
{

namespace
{

/// Evaluates `text` as a value of `type` and returns its written form.
xstring ParseWrittenForm(ExpressionParser& parser, ELSVariable type)
{
    xstring value;
    switch (type)
    {
    case LSV_BOOL:
        return parser.ParseBool(false) ? "true" : "false";
    case LSV_INT:
        return ToString(parser.ParseInt32(false));
    case LSV_DOUBLE:
        return ToString(parser.ParseFloat64(false));
    case LSV_CHAR:
        MakeSingleQuotedLiteralChar(parser.ParseChar(false), value);
        return value;
    case LSV_STRING:
        return parser.ParseString(false);
    default:
        TELV_ASSERT(0);
    }
    return value;
}

xstring ParseWholeText(SubString text, ELSVariable type)
{
    ExpressionParser parser;
    parser.Init(text);
    xstring value = ParseWrittenForm(parser, type);
    if (parser.m_token.m_type != TOKEN_END)
        ThrowAtToken({"Read "}, parser.m_token, " in middle of expression");
    return value;
}

} // namespace

void ReadVariableValueByParsingExpression(VarFrame* frame, SubString text, ELSVariable type,
                                          xstring& value)
{
    ReadVariableValueFor(frame, LevelText{text, nullptr, /*m_isOfApplication=*/true}, type, value,
                         text.begin());
}

void ReadVariableValueFor(VarFrame* frame, const LevelText& text, ELSVariable type, xstring& value,
                          const char* origin)
{
    if (EvaluateDirectly(*frame, text.m_text, type, value))
        return;
    xstring expanded;
    {
        VarFrame tempFrame(frame);
        ExpandIntoString(tempFrame, text, 0, expanded);
    }
    try
    {
        xstring parsed = ParseWholeText(expanded, type);
        value.swap(parsed);
    }
    catch (LexScannerException& e)
    {
        MoveOutOfText(e, expanded, origin);
        AddErrorContext(e, {"\n    expression: ", expanded});
        throw;
    }
}

void MacroExpander::ProcessLetDirective()
{
    const LSToken token = NextToken();
    const ELSVariable type = CheckVariableType(token.m_str);
    if (type == LSV_MACRO)
        AssignVariable(token);
    else
        DefineVariable(type);
    ScanOverWhiteSpaceAfterDirective();
}

void MacroExpander::AssignVariable(const LSToken& nameToken)
{
    const SubString name = nameToken.m_str;
    if (nameToken.m_type != TOKEN_IDENTIFIER)
        ThrowAtToken({"Identifier expected after @let when read "}, nameToken);
    LSVariable* const var = FindVariable(name);
    if (var == nullptr)
        ThrowAt(name.begin(), {"@let directive failed : there is no variable named ", name});
    if (var->GetType() == LSV_MACRO)
        ThrowAt(name.begin(),
                {"@let directive failed : ", name, " is a macro declared using @def"});
    LevelText text;
    const bool verbatim = ReadValueText(var->GetType(), name, text);
    xstring value;
    try
    {
        EvaluateValueText(var->GetType(), text, verbatim, value);
    }
    catch (LexScannerException& e)
    {
        if (!verbatim)
            AddErrorContext(e, {"\n    when parsing expression '", text.m_text, "' for @let directive"});
        throw;
    }
    // The new value may have been made from the old one.
    static_cast<LSValueVariable*>(var)->m_value.swap(value);
}

/// Reads `=` or `:=` and cuts the text of the value; true when it is taken as it expands.
bool MacroExpander::ReadValueText(ELSVariable type, SubString name, LevelText& text)
{
    const bool verbatim = ReadEqualsForVariableDefn2(name);
    ssize_t indent = 0;
    text = CutBlock(indent);
    if (verbatim && type != LSV_STRING)
        ThrowAt(name.begin(),
                {"@let directive failed: ", name, " := may only be used for string type"});
    return verbatim;
}

void MacroExpander::EvaluateValueText(ELSVariable type, const LevelText& text, bool verbatim,
                                      xstring& value)
{
    if (verbatim)
        ExpandToString(text, 0, value);
    else
        ReadVariableValueFor(m_vf, text, type, value, m_startDirectivePos);
}

void MacroExpander::DefineVariable(ELSVariable type)
{
    const LSToken token = NextToken();
    const SubString name = token.m_str;
    if (token.m_type != TOKEN_IDENTIFIER)
        ThrowAtToken({"Identifier expected for macro name when read "}, token);
    if (m_vf->FindLocal(name, name.begin()) != nullptr)
        ThrowAt(name.begin(), {"Redefinition of variable ", name, " in this scope"});
    auto var = MakeValueVariable(type, name, ExpansionLevel::CurrentOwner());
    LevelText text;
    const bool verbatim = ReadValueText(type, name, text);
    EvaluateValueText(type, text, verbatim, var->m_value);
    AddVariable(var.release());
}

xstring MacroExpander::EvaluateString(SubString text, SubString directiveName)
{
    return EvaluateText(LevelText{text}, directiveName);
}

xstring MacroExpander::EvaluateText(const LevelText& text, SubString directiveName)
{
    xstring expanded;
    ExpandToString(text, 0, expanded);
    try
    {
        return ParseStringInBracket(expanded, /*allowDataLoss=*/false, " when read ");
    }
    catch (LexScannerException& e)
    {
        MoveOutOfText(e, expanded, m_startDirectivePos);
        AddExpressionErrorContext(e, ")", m_startDirectivePos,
                                  {"\n    in ", directiveName, "(", expanded, ")"});
        throw;
    }
}

xstring MacroExpander::ParseStringExpressionInBrackets(SubString directiveName,
                                                       bool readOpenBracket)
{
    return EvaluateText(CutSection(readOpenBracket, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN),
                        directiveName);
}

void MacroExpander::ProcessRndBracketDirective()
{
    const LevelText section = CutSection(false, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    AdvanceWritePos(m_str.begin(), false);
    if (WriteValueDirectly(section.m_text))
        return;
    xstring text;
    try
    {
        ExpandToString(section, 0, text);
        // The blank that is missing before "when" is part of the message.
        WriteCalculatedSubString(ParseStringInBracket(text, /*allowDataLoss=*/true, "when read "));
    }
    catch (LexScannerException& e)
    {
        MoveOutOfText(e, text, m_startDirectivePos);
        AddExpressionErrorContext(e, ")", m_startDirectivePos, {"\n    in @(", text, ")"});
        throw;
    }
}

/// Out of line: the scratch of an expression is large.
[[gnu::noinline]] bool MacroExpander::WriteValueDirectly(SubString expression)
{
    ExpansionRun* const run = RunState::CurrentRun();
    if (run == nullptr)
        return false;
    DirectExpression direct(*run, *m_vf, expression);
    SubString text;
    if (!direct.GetText(text))
        return false;
    WriteCalculatedSubString(text);
    return true;
}

void MacroExpander::ProcessSqrBracketDirective()
{
    const LevelText section = CutSection(false, TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE);
    AdvanceWritePos(m_str.begin(), false);
    xstring first;
    ExpandToString(section, 0, first);
    const TextScope text(first, DirectiveRange());
    try
    {
        xstring second;
        ExpandToString(LevelText{text.Text(), text.Owner()}, 0, second);
        WriteCalculatedSubString(second);
    }
    catch (LexScannerException& e)
    {
        AddExpressionErrorContext(e, "]", m_startDirectivePos, {"\n    in @[", text.Text(), "]"});
        throw;
    }
}

} // namespace telv
