// SPDX-License-Identifier: MIT
// @print, @println, @assert, @assertfails, @fail: a text talks to its author and tests itself.
#include "tlMacroExpander/src/Expressions/ParseExpanded.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"

namespace telv
{

namespace
{

/// The kind of bracket that closes `open`, or TOKEN_UNDEF.
EToken ClosingBracket(EToken open)
{
    switch (open)
    {
    case TOKEN_LEFT_PAREN:
        return TOKEN_RIGHT_PAREN;
    case TOKEN_LEFT_SQUARE:
        return TOKEN_RIGHT_SQUARE;
    case TOKEN_LEFT_CURLY:
        return TOKEN_RIGHT_CURLY;
    default:
        return TOKEN_UNDEF;
    }
}

} // namespace

void MacroExpander::ProcessPrintDirective(bool newline)
{
    const LevelText section = CutSection(/*readOpen=*/true, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    xstring text;
    ExpandToString(section, 0, text);
    ExpansionRun* const run = ExpansionRun::Current();
    ExpansionLevel::CountPrinted(run, text.size() + (newline ? 1 : 0), m_startDirectivePos);
    xostream& os = PrintStreamOf(run);
    os << text;
    if (newline)
        os << '\n';
    os.flush();
    ScanOverWhiteSpaceAfterDirective();
}

void MacroExpander::ProcessAssertDirective()
{
    const char* const pos = m_str.begin();
    const LevelText section = CutSection(/*readOpen=*/true, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    xstring text;
    bool holds = false;
    try
    {
        ExpandToString(section, 0, text);
        holds = ParseBoolInBracket(text);
    }
    catch (LexScannerException& e)
    {
        AddExpressionContext(e, HintAtCondition, section.m_text, text, "@assert");
        throw;
    }
    if (!holds)
        ThrowAt(pos, {"Assertion failure\n        @assert(", section.m_text, ")\nie      @assert(",
                      text, ")"});
    ScanOverWhiteSpaceAfterDirective();
}

void MacroExpander::ProcessAssertFailsDirective()
{
    const char* const pos = m_str.begin();
    const LSToken open = NextToken();
    const EToken close = ClosingBracket(open.m_type);
    if (close == TOKEN_UNDEF)
        ThrowAtToken({"( expected after @assertfails when read "}, open);
    const LevelText section = CutSection(/*readOpen=*/false, open.m_type, close);
    if (!FailsToExpand(section))
        ThrowAt(pos, {"Macro expansion of ", section.m_text, " didn't generate an error"});
    ScanOverWhiteSpaceAfterDirective();
}

/// True when `text` has an error. Running out of something is no error of the text.
bool MacroExpander::FailsToExpand(const LevelText& text)
{
    try
    {
        const SwallowedErrors swallowed;
        xstring ignored;
        ExpandToString(text, 0, ignored);
        return false;
    }
    catch (const ExpansionLimitException&)
    {
        throw;
    }
    catch (const LexScannerException&)
    {
        ExpansionLevel::ForgetErrors();
        return true;
    }
}

void MacroExpander::ProcessFailDirective()
{
    const char* const pos = m_str.begin();
    throw LexScannerException(ParseStringExpressionInBrackets("@fail", /*readOpenBracket=*/true),
                              pos);
}

} // namespace telv
