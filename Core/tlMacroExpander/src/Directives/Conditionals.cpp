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

/// Takes two tokens, whatever the first one is: a mistake in either is an error.
bool ScanDirectiveWord(SubString& str, const char* word)
{
    const LSToken at = LsScanToken(str, /*returnComments=*/false);
    const LSToken name = LsScanToken(str, /*returnComments=*/false);
    return at.m_type == TOKEN_AT && name.m_type == TOKEN_IDENTIFIER && name.m_str == word;
}

/// Takes an `@` and this word, if they are next.
bool TakeDirectiveWord(SubString& str, const char* word)
{
    SubString rest = str;
    if (!ScanDirectiveWord(rest, word))
        return false;
    str = rest;
    return true;
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
    std::optional<TextBlock> chosen;
    const char* word = "@if";
    do
    {
        const bool condition = ParseBoolExpressionInBrackets(word);
        const TextBlock block = CutBlock();
        if (condition && !chosen)
            chosen = block;
        word = "@elseif";
    } while (TakeDirectiveWord(m_str, "elseif"));
    if (TakeDirectiveWord(m_str, "else"))
    {
        const TextBlock block = CutBlock();
        if (!chosen)
            chosen = block;
    }
    ExpandChosen(chosen ? &*chosen : nullptr);
}

PlannedAction MacroExpander::PlanIf(PlanReader& reader)
{
    struct Branch
    {
        LevelText m_condition;
        TextBlock m_block;
    };
    std::vector<Branch> branches;
    do
        branches.push_back({reader.Condition(/*readOpen=*/true), reader.Block()});
    while (TakeDirectiveWord(reader.m_rest, "elseif"));
    std::optional<TextBlock> last;
    if (TakeDirectiveWord(reader.m_rest, "else"))
        last = reader.Block();
    return [branches = std::move(branches), last](MacroExpander& expander)
    {
        const TextBlock* chosen = nullptr;
        const char* word = "@if";
        for (const Branch& branch : branches)
        {
            if (expander.EvaluateCondition(branch.m_condition, word) && chosen == nullptr)
                chosen = &branch.m_block;
            word = "@elseif";
        }
        if (chosen == nullptr && last)
            chosen = &*last;
        expander.ExpandChosen(chosen);
    };
}

/// Null: no branch is chosen.
void MacroExpander::ExpandChosen(const TextBlock* block)
{
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    if (block != nullptr && !block->m_text.m_text.empty())
        ExpandBlock(block->m_text, block->m_indent, GetOutputPos());
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
        AddExpressionContext(e, HintAtCondition, condition.m_text, text, directiveName);
        throw;
    }
}

/// Adds to an error in the text `expanded`, which dies, that `source` in the brackets of the
/// directive was expanded to; `hint` says what would mend it.
void MacroExpander::AddExpressionContext(LexScannerException& e, Hint hint, SubString source,
                                         SubString expanded, SubString directiveName) const
{
    hint(*m_vf, source, expanded, e);
    MoveOutOfText(e, expanded, m_startDirectivePos);
    AddExpressionErrorContext(e, ")", m_startDirectivePos,
                              {"\n    in ", directiveName, "(", expanded, ")"});
}

} // namespace telv
