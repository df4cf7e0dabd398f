// SPDX-License-Identifier: MIT
// @quote and @scope: text as it stands, and text with a scope of its own.
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include <cstring>
#include <utility>

namespace telv
{

void MacroExpander::ProcessQuoteDirective()
{
    ssize_t indent = 0;
    SubString text = CutRoundBlock(indent).m_text;
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    const ssize_t dstIndent = std::exchange(m_dstIndent, GetOutputPos());
    while (text)
    {
        const void* const feed = std::memchr(text.begin(), '\n', static_cast<size_t>(text.size()));
        const char* const end = feed == nullptr ? text.end() : static_cast<const char*>(feed) + 1;
        WriteSubStringFromSourceFile(SubString(text.begin(), end));
        text.m_p1 = end;
        ScanIndentation(text, indent, 4);
    }
    m_dstIndent = dstIndent;
}

void MacroExpander::ProcessScopeDirective()
{
    ssize_t indent = 0;
    const LevelText block = CutBlock(indent);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    ExpandBlock(block, indent, GetOutputPos());
}

PlannedAction MacroExpander::PlanScope(PlanReader& reader)
{
    return [block = reader.Block()](MacroExpander& expander)
    {
        expander.AdvanceWritePos(expander.m_str.begin(), /*write=*/false);
        expander.ExpandBlock(block.m_text, block.m_indent, expander.GetOutputPos());
    };
}

} // namespace telv
