// SPDX-License-Identifier: MIT
// @let, @( and @[: typed values and text that is expanded twice.
//
// The pattern of all of them: expand the text into a string in a scope of its own, then evaluate
// the string. The string dies with the directive, so no error that leaves here points into it.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/ExpansionObserver.h"
#include "tlMacroExpander/src/Directives/NestedText.h"
#include "tlMacroExpander/src/Directives/Watching.h"
#include "tlMacroExpander/src/Expressions/DirectExpression.h"
#include "tlMacroExpander/src/Expressions/ParseExpanded.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include "tlMacroExpander/src/Run/Watch.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include "tlMacroExpander/src/Values/OwningVariables.h"

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
        return parser.ParseBool(/*allowDataLoss=*/false) ? "true" : "false";
    case LSV_INT:
        return ToString(parser.ParseInt32(/*allowDataLoss=*/false));
    case LSV_DOUBLE:
        return ToString(parser.ParseFloat64(/*allowDataLoss=*/false));
    case LSV_CHAR:
        MakeSingleQuotedLiteralChar(parser.ParseChar(/*allowDataLoss=*/false), value);
        return value;
    case LSV_STRING:
        return parser.ParseString(/*allowDataLoss=*/false);
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

/// The value of the text that `text` expands to; see ReadVariableValueFor.
[[gnu::noinline]] void ReadExpandedValue(VarFrame* frame, const LevelText& text, ELSVariable type,
                                         xstring& value, const char* origin)
{
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
        HintAtValue(*frame, type, text.m_text, expanded, e);
        MoveOutOfText(e, expanded, origin);
        AddErrorContext(e, {"\n    expression: ", expanded});
        throw;
    }
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
    if (!EvaluateDirectly(*frame, {text.m_text, text.m_program}, type, value))
        ReadExpandedValue(frame, text, type, value, origin);
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

PlannedAction MacroExpander::PlanLet(PlanReader& reader)
{
    LSToken token = reader.Token();
    const ELSVariable type = CheckVariableType(token.m_str);
    const bool isAssigned = type == LSV_MACRO;
    if (!isAssigned)
        token = reader.Token();
    LSToken equals = reader.Token();
    const bool verbatim = equals.m_type == TOKEN_COLON;
    if (verbatim)
        equals = reader.Token();
    const SubString name = token.m_str;
    const LevelText text = reader.ValueBlock();
    if (token.m_type != TOKEN_IDENTIFIER || equals.m_type != TOKEN_EQUAL ||
        (!isAssigned && verbatim && type != LSV_STRING))
        return PlannedAction();
    return [=](MacroExpander& expander)
    {
        if (isAssigned)
        {
            LSValueVariable* const var = expander.FindAssigned(name);
            CheckVerbatim(var->GetType(), name, verbatim);
            expander.Assign(*var, text, verbatim);
        }
        else
        {
            expander.CheckNotDefined(name);
            expander.Define(type, name, text, verbatim);
        }
        expander.ScanOverWhiteSpaceAfterDirective();
    };
}

void MacroExpander::AssignVariable(const LSToken& nameToken)
{
    const SubString name = nameToken.m_str;
    if (nameToken.m_type != TOKEN_IDENTIFIER)
        ThrowAtToken({"Identifier expected after @let when read "}, nameToken);
    LSValueVariable* const var = FindAssigned(name);
    bool verbatim = false;
    const LevelText text = ReadValueText(var->GetType(), name, verbatim);
    Assign(*var, text, verbatim);
    if (RunState::CurrentObserver() != nullptr)
        TellDefined(ObservedDefinition::ASSIGNED_VALUE, name, var->m_value, var);
}

/// The variable that is to be given another value.
LSValueVariable* MacroExpander::FindAssigned(SubString name)
{
    if (Warns(WARN_UNUSED))
        Watch::Current().NoteMet(name.begin());
    LSVariable* const var = m_vf->Find(name, name.end());
    if (var == nullptr && IsWithin(name, m_origStr))
        HintAtName(*m_vf, name, SubString(name.end(), m_origStr.end()));
    if (var == nullptr)
        ThrowAt(name.begin(), {"@let directive failed : there is no variable named ", name});
    if (var->GetType() == LSV_MACRO)
        ThrowAt(name.begin(),
                {"@let directive failed : ", name, " is a macro declared using @def"});
    return static_cast<LSValueVariable*>(var);
}

void MacroExpander::Assign(LSValueVariable& var, const LevelText& text, bool verbatim)
{
    try
    {
        EvaluateValueText(var.m_type, text, verbatim, var.m_value);
    }
    catch (LexScannerException& e)
    {
        if (!verbatim)
            AddErrorContext(
                e, {"\n    when parsing expression '", text.m_text, "' for @let directive"});
        throw;
    }
}

/// Reads `=` or `:=` and cuts the text of the value, which with `:=` is taken as it expands.
LevelText MacroExpander::ReadValueText(ELSVariable type, SubString name, bool& verbatim)
{
    verbatim = ReadEqualsForVariableDefn2(name);
    const LevelText text = CutBlock().m_text;
    CheckVerbatim(type, name, verbatim);
    return text;
}

void MacroExpander::CheckVerbatim(ELSVariable type, SubString name, bool verbatim)
{
    if (verbatim && type != LSV_STRING)
        ThrowAt(name.begin(),
                {"@let directive failed: ", name, " := may only be used for string type"});
}

/// `value` is unchanged until the new one, which may be made from it, is complete.
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
    CheckNotDefined(name);
    bool verbatim = false;
    const LevelText text = ReadValueText(type, name, verbatim);
    Define(type, name, text, verbatim);
    if (RunState::CurrentObserver() != nullptr)
    {
        const auto& added = static_cast<const LSValueVariable&>(*m_vf->m_localVariables.m_first);
        TellDefined(ObservedDefinition::DEFINED_VALUE, name, added.m_value, &added);
    }
}

void MacroExpander::CheckNotDefined(SubString name)
{
    if (m_vf->FindLocal(name, name.begin()) != nullptr)
        ThrowAt(name.begin(), {"Redefinition of variable ", name, " in this scope"});
}

void MacroExpander::Define(ELSVariable type, SubString name, const LevelText& text, bool verbatim)
{
    auto var = MakeValueVariable(type, name, ExpansionLevel::CurrentOwner());
    EvaluateValueText(type, text, verbatim, var->m_value);
    if (Warns(WARN_UNUSED))
        WatchDefinition(name, SubString(), /*isMacro=*/false);
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
        AddExpressionContext(e, HintAtString, text.m_text, expanded, directiveName);
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
    WriteExpression(CutSection(/*readOpen=*/false, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN));
}

PlannedAction MacroExpander::PlanRndBracket(PlanReader& reader)
{
    return [section = reader.Condition(/*readOpen=*/false)](MacroExpander& expander)
    { expander.WriteExpression(section); };
}

void MacroExpander::WriteExpression(const LevelText& section)
{
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    if (WriteValueDirectly(section))
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
        AddExpressionContext(e, HintAtExpression, section.m_text, text, "@");
        throw;
    }
}

/// Out of line: the scratch of an expression is large.
[[gnu::noinline]] bool MacroExpander::WriteValueDirectly(const LevelText& expression)
{
    ExpansionRun* const run = RunState::CurrentRun();
    if (run == nullptr)
        return false;
    DirectExpression direct(*run, *m_vf);
    SubString text;
    if (!direct.GetText({expression.m_text, expression.m_program}, text))
        return false;
    WriteCalculatedSubString(text);
    return true;
}

void MacroExpander::ProcessSqrBracketDirective()
{
    ExpandTwice(CutSection(/*readOpen=*/false, TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE));
}

PlannedAction MacroExpander::PlanSqrBracket(PlanReader& reader)
{
    return [section = reader.Section(/*readOpen=*/false, TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE)](
               MacroExpander& expander) { expander.ExpandTwice(section); };
}

void MacroExpander::ExpandTwice(const LevelText& section)
{
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    const std::shared_ptr<TemporaryText> text = MakeText(section);
    if (Warns(WARN_UNKNOWN_NAME))
        WatchComputedName(*this, text->Text());
    try
    {
        xstring second;
        ExpandToString(LevelText{text->Text(), text.get()}, 0, second);
        WriteCalculatedSubString(second);
    }
    catch (LexScannerException& e)
    {
        AddExpressionErrorContext(e, "]", m_startDirectivePos, {"\n    in @[", text->Text(), "]"});
        throw;
    }
}

} // namespace telv
