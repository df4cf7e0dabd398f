// @if, @elseif, @else. All conditions of a chain are evaluated; the first true one chooses.
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/ExpressionParser.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Expressions/ParseExpanded.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"

namespace telv
{

namespace
{

/// The block that is expanded, once one is chosen.
struct ChosenBlock
{
    SubString m_text;
    ssize_t m_indent = -1;
    bool m_decided = false;

    void Offer(bool condition, SubString text, ssize_t indent)
    {
        if (m_decided || !condition)
            return;
        m_text = text;
        m_indent = indent;
        m_decided = true;
    }
};

/// Takes two tokens, whatever the first one is: a mistake in either is an error.
bool ScanDirectiveWord(SubString& str, const char* word)
{
    const LSToken at = LsScanToken(str, false);
    const LSToken name = LsScanToken(str, false);
    return at.m_type == TOKEN_AT && name.m_type == TOKEN_IDENTIFIER && name.m_str == word;
}

} // namespace

bool ScanElseIfBlock(SubString& str)
{
    return ScanDirectiveWord(str, "elseif");
}

bool ScanElseBlock(SubString& str)
{
    return ScanDirectiveWord(str, "else");
}

void MacroExpander::ProcessIfDirective()
{
    ChosenBlock chosen;
    ssize_t indent = 0;
    bool condition = ParseBoolExpressionInBrackets("@if");
    SubString block = ScanSubstString(m_str, indent);
    chosen.Offer(condition, block, indent);
    for (SubString ahead = m_str; ScanElseIfBlock(ahead); ahead = m_str)
    {
        m_str = ahead;
        condition = ParseBoolExpressionInBrackets("@elseif");
        block = ScanSubstString(m_str, indent);
        chosen.Offer(condition, block, indent);
    }
    SubString ahead = m_str;
    if (ScanElseBlock(ahead))
    {
        m_str = ahead;
        block = ScanSubstString(m_str, indent);
        chosen.Offer(true, block, indent);
    }
    AdvanceWritePos(m_str.begin(), false);
    if (!chosen.m_text.empty())
        ExpandLastBlock(chosen.m_text, chosen.m_indent, GetOutputPos());
}

bool MacroExpander::ParseBoolExpressionInBrackets(SubString directiveName)
{
    return EvaluateCondition(
        ScanBrackettedSection(m_str, true, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN), directiveName);
}

/// Expands a condition and evaluates it; for @while too.
bool MacroExpander::EvaluateCondition(SubString condition, SubString directiveName)
{
    xstring text;
    try
    {
        ExpandToString(condition, 0, text);
    }
    catch (LexScannerException& e)
    {
        AddErrorContext(e, {"\n    in ", directiveName, "(", condition, ")"});
        throw;
    }
    try
    {
        return ParseBoolInBracket(text);
    }
    catch (LexScannerException& e)
    {
        MoveOutOfText(e, text, m_startDirectivePos);
        AddExpressionErrorContext(e, ")", m_startDirectivePos,
                                  {"\n    in ", directiveName, "(", text, ")"});
        throw;
    }
}

} // namespace telv
