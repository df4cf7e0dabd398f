// SPDX-License-Identifier: MIT
// @str and its kin write text as string literals; @unstr does the reverse; @$ defines a dollar
// macro.
#include "tlMacroExpander/ExpansionObserver.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include <utility>

namespace telv
{

namespace
{

constexpr ssize_t s_emptyLiteral = 2;

xstring Wide(const xstring& literal)
{
    xstring wide("L");
    wide += literal;
    return wide;
}

} // namespace

void WritePrefix(xostream& os, EStrLiteralMode mode)
{
    os << (mode == SLM_WIDE ? "L\"" : "\"");
}

void WriteSuffix(xostream& os, EStrLiteralMode)
{
    os << '"';
}

void MacroExpander::ProcessStrDirective(bool splitLines, EStrLiteralMode mode)
{
    WriteStr(CutRoundBlock(), splitLines, mode);
}

template <bool splitLines, EStrLiteralMode mode>
PlannedAction MacroExpander::PlanStr(PlanReader& reader)
{
    return [block = reader.RoundBlock()](MacroExpander& expander)
    { expander.WriteStr(block, splitLines, mode); };
}

template PlannedAction MacroExpander::PlanStr<false, SLM_ASCII>(PlanReader& reader);
template PlannedAction MacroExpander::PlanStr<true, SLM_ASCII>(PlanReader& reader);
template PlannedAction MacroExpander::PlanStr<false, SLM_WIDE>(PlanReader& reader);
template PlannedAction MacroExpander::PlanStr<true, SLM_WIDE>(PlanReader& reader);

void MacroExpander::WriteStr(const TextBlock& block, bool splitLines, EStrLiteralMode mode)
{
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    xstring expanded;
    ExpandToString(block.m_text, block.m_indent, expanded);
    const ssize_t dstIndent = std::exchange(m_dstIndent, GetOutputPos());
    WriteLiteral(expanded, splitLines, mode);
    m_dstIndent = dstIndent;
}

/// Writes `text` as one literal, or as one for each line.
void MacroExpander::WriteLiteral(SubString text, bool splitLines, EStrLiteralMode mode)
{
    if (!splitLines)
    {
        xstring literal;
        MakeDoubleQuotedString(text, literal);
        if (mode == SLM_WIDE)
            return WriteCalculatedSubString(Wide(literal));
        return WriteCalculatedSubString(literal);
    }
    StringStream os(4096);
    bool isSplit = false;
    WritePrefix(os, mode);
    for (const char c : text)
    {
        if (c != '\n')
        {
            WriteCharForCStyleLiteralConstants(os, c);
            continue;
        }
        os << "\\n";
        WriteSuffix(os, mode);
        os << '\n';
        WriteCalculatedSubString(os.GetString());
        os.Clear();
        WritePrefix(os, mode);
        isSplit = true;
    }
    WriteSuffix(os, mode);
    // An empty literal behind the last line feed is dropped; a wide one is longer and stays.
    if (!isSplit || os.size() > s_emptyLiteral)
        WriteCalculatedSubString(os.GetString());
}

void MacroExpander::ProcessUnstrDirective()
{
    const LevelText section = CutSection(/*readOpen=*/true, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    xstring text;
    try
    {
        ExpandToString(section, 0, text);
        StringStream os(4096);
        UnstringifyQuotedString(text, os);
        const ssize_t dstIndent = std::exchange(m_dstIndent, GetOutputPos());
        WriteCalculatedSubString(os.GetString());
        m_dstIndent = dstIndent;
    }
    catch (LexScannerException& e)
    {
        MoveOutOfText(e, text, m_startDirectivePos);
        AddExpressionErrorContext(e, ")", m_startDirectivePos, {"\n    in @unstr(", text, ")"});
        throw;
    }
}

void MacroExpander::ProcessDollarDefDirective()
{
    const LSToken name = NextToken();
    if (name.m_type != TOKEN_IDENTIFIER)
        ThrowAtToken({"Identifier expected after @let when read "}, name);
    ReadEqualsForVariableDefn(name.m_str);
    const LSToken token = NextToken();
    xstring value;
    if (token.m_type == TOKEN_LEFT_PAREN)
        value = ParseStringExpressionInBrackets("@$", /*readOpenBracket=*/false);
    else if (token.m_type == TOKEN_DOUBLE_QUOTED_STRING)
        token.GetLiteralString(value);
    else
        ThrowAtToken({"Quoted string expected after $", name.m_str, " definition when read "},
                     token);
    if (m_vf->m_fileScopeFrame == nullptr)
        ThrowAt(name.m_str.begin(), {"No filescope frame"});
    m_vf->m_fileScopeFrame->InsertDollarMacro(name.m_str, value);
    if (RunState::CurrentObserver() != nullptr) [[unlikely]]
        TellDefined(ObservedDefinition::DEFINED_DOLLAR, name.m_str, value, nullptr);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
}

} // namespace telv
