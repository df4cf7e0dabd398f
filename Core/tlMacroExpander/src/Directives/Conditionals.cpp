// SPDX-License-Identifier: MIT
// @if, @elseif, @else. All conditions of a chain are evaluated; the first true one chooses.
#include "tlMacroExpander/src/ExpressionParser.h"
#include "tlMacroExpander/src/Expressions/DirectExpression.h"
#include "tlMacroExpander/src/Expressions/ParseExpanded.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include <optional>

namespace telv
{

namespace
{

/// The block that is expanded, once one is chosen.
struct ChosenBlock
{
    LevelText m_text;
    ssize_t m_indent = -1;
    bool m_decided = false;

    void Offer(bool condition, const LevelText& text, ssize_t indent)
    {
        if (m_decided || !condition)
            return;
        m_text = text;
        m_indent = indent;
        m_decided = true;
    }
};

bool IsDirectiveWord(const LSToken& at, const LSToken& name, const char* word)
{
    return at.m_type == TOKEN_AT && name.m_type == TOKEN_IDENTIFIER && name.m_str == word;
}

/// Takes two tokens, whatever the first one is: a mistake in either is an error.
bool ScanDirectiveWord(SubString& str, const char* word)
{
    const LSToken at = LsScanToken(str, /*returnComments=*/false);
    const LSToken name = LsScanToken(str, /*returnComments=*/false);
    return IsDirectiveWord(at, name, word);
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
    LevelText block = CutBlock(indent);
    chosen.Offer(condition, block, indent);
    while (TakeDirectiveWord("elseif"))
    {
        condition = ParseBoolExpressionInBrackets("@elseif");
        block = CutBlock(indent);
        chosen.Offer(condition, block, indent);
    }
    if (TakeDirectiveWord("else"))
    {
        block = CutBlock(indent);
        chosen.Offer(/*condition=*/true, block, indent);
    }
    ExpandChosen(chosen.m_text, chosen.m_indent);
}

PlannedAction MacroExpander::PlanIf(PlanReader& reader)
{
    struct Branch
    {
        LevelText m_condition;
        PlannedBlock m_block;
    };
    std::vector<Branch> branches;
    do
        branches.push_back({reader.Condition(/*readOpen=*/true), reader.Block()});
    while (reader.TakeDirectiveWord("elseif"));
    std::optional<PlannedBlock> last;
    if (reader.TakeDirectiveWord("else"))
        last = reader.Block();
    return [branches = std::move(branches), last](MacroExpander& expander)
    {
        ChosenBlock chosen;
        const char* word = "@if";
        for (const Branch& branch : branches)
        {
            chosen.Offer(expander.EvaluateCondition(branch.m_condition, word),
                         branch.m_block.m_text, branch.m_block.m_indent);
            word = "@elseif";
        }
        if (last)
            chosen.Offer(/*condition=*/true, last->m_text, last->m_indent);
        expander.ExpandChosen(chosen.m_text, chosen.m_indent);
    };
}

void MacroExpander::ExpandChosen(const LevelText& block, ssize_t indent)
{
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    if (!block.m_text.empty())
        ExpandBlock(block, indent, GetOutputPos());
}

/// Reads an `@` and this word, if they are next.
bool MacroExpander::TakeDirectiveWord(const char* word)
{
    const SubString before = m_str;
    const LSToken at = NextToken();
    const LSToken name = NextToken();
    if (IsDirectiveWord(at, name, word))
        return true;
    m_str = before;
    return false;
}

bool MacroExpander::ParseBoolExpressionInBrackets(SubString directiveName)
{
    return EvaluateCondition(CutSection(/*readOpen=*/true, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN),
                             directiveName);
}

/// Expands a condition and evaluates it; for @while too.
bool MacroExpander::EvaluateCondition(const LevelText& condition, SubString directiveName)
{
    bool value = false;
    if (EvaluateDirectly(*m_vf, {condition.m_text, condition.m_program}, value))
        return value;
    xstring text;
    try
    {
        ExpandToString(condition, 0, text);
    }
    catch (LexScannerException& e)
    {
        AddErrorContext(e, {"\n    in ", directiveName, "(", condition.m_text, ")"});
        throw;
    }
    try
    {
        return ParseBoolInBracket(text);
    }
    catch (LexScannerException& e)
    {
        HintAtExpression(*m_vf, condition.m_text, text, e);
        MoveOutOfText(e, text, m_startDirectivePos);
        AddExpressionErrorContext(e, ")", m_startDirectivePos,
                                  {"\n    in ", directiveName, "(", text, ")"});
        throw;
    }
}

} // namespace telv
