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
    const TextBlock block = CutRoundBlock();
    SubString text = block.m_text.m_text;
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    const ssize_t dstIndent = std::exchange(m_dstIndent, GetOutputPos());
    while (text)
    {
        const void* const feed = std::memchr(text.begin(), '\n', static_cast<size_t>(text.size()));
        const char* const end = feed == nullptr ? text.end() : static_cast<const char*>(feed) + 1;
        WriteSubStringFromSourceFile(SubString(text.begin(), end));
        text.m_p1 = end;
        ScanIndentation(text, block.m_indent, 4);
    }
    m_dstIndent = dstIndent;
}

void MacroExpander::ProcessScopeDirective()
{
    ExpandScope(CutBlock());
}

void MacroExpander::ExpandScope(const TextBlock& block)
{
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    ExpandBlock(block.m_text, block.m_indent, GetOutputPos());
}

PlannedAction MacroExpander::PlanScope(PlanReader& reader)
{
    return [block = reader.Block()](MacroExpander& expander) { expander.ExpandScope(block); };
}

} // namespace telv
