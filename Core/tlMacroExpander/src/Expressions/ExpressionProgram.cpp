// SPDX-License-Identifier: MIT
// Keeping the steps of an expression.
#include "tlMacroExpander/src/Expressions/ExpressionProgram.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"

namespace telv
{

ExpressionProgram::ExpressionProgram(SubString text, ScannedText& scanned) : m_scanned(scanned)
{
    const ExpressionSteps steps(text);
    m_steps.assign(steps.begin(), steps.end());
    for (ExpressionStep& step : m_steps)
    {
        if (!Keep(step))
        {
            m_steps.clear();
            return;
        }
    }
}

/// Finds the item of a name, and makes a literal a constant.
bool ExpressionProgram::Keep(ExpressionStep& step)
{
    if (step.m_kind == STEP_LITERAL)
    {
        xstring& text = m_texts.emplace_back();
        try
        {
            LSToken(step.m_op, step.m_value.Text()).GetLiteralString(text);
        }
        catch (const TelvAssertionError&)
        {
            return false; // when and where it is an error is found by expanding
        }
        step.m_kind = STEP_CONSTANT;
        step.m_value.SetText(text);
    }
    if (step.m_nameBegin == nullptr)
        return true;
    step.m_item = m_scanned.IndexAt(step.m_nameBegin, 0);
    return step.m_item != ScannedText::s_unknown && m_scanned.IsName(step.m_item, step.Name());
}

const ScanItem* ExpressionProgram::Items(NameTable& names)
{
    m_scanned.ResolveNames(names);
    return m_scanned.Items();
}

} // namespace telv
