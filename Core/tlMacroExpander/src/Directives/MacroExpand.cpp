// SPDX-License-Identifier: MIT
// The entry points: an expander on the stack, and for strings an output around it.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Directives/NestedText.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Output/StringSink.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include <utility>

namespace telv
{

namespace
{

/// Makes the current run keep what the pieces of an output view.
class MappedOutputScope
{
public:
    explicit MappedOutputScope(const ExpandedOutput& output) : m_run(ExpansionRun::Current())
    {
        if (m_run != nullptr)
            m_previous = std::exchange(m_run->m_mappedOutput, &output);
    }
    ~MappedOutputScope()
    {
        if (m_run != nullptr)
            m_run->m_mappedOutput = m_previous;
    }
    MappedOutputScope(const MappedOutputScope&) = delete;
    MappedOutputScope& operator=(const MappedOutputScope&) = delete;

private:
    ExpansionRun* m_run;
    const ExpandedOutput* m_previous = nullptr;
};

} // namespace

bool ImportHandler::HandleImportPath(const xstring&, const char*)
{
    return false;
}

void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, ExpandedOutput& output)
{
    TELV_ASSERT(vf);
    MacroExpander(ih, vf, str, srcIndent, dstIndent, output).Expand();
}

void ExpandIntoString(VarFrame& frame, const LevelText& text, ssize_t srcIndent, xstring& output,
                      OutputPieces* pieces)
{
    StringSink sink;
    xostream os(&sink);
    ExpandedOutput expanded(&os);
    MacroExpander(nullptr, &frame, text.m_text, srcIndent, 0, expanded)
        .ExpandNested(text, /*isRecorded=*/pieces != nullptr);
    sink.Take(output);
    if (pieces != nullptr)
        pieces->m_pieces.swap(expanded.m_pieces.m_pieces);
}

void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& output)
{
    TELV_ASSERT(vf);
    StringSink sink;
    xostream os(&sink);
    ExpandedOutput ep(&os);
    MacroExpander(ih, vf, str, srcIndent, dstIndent, ep)
        .ExpandNested(LevelText{str, nullptr, /*m_isOfApplication=*/true}, /*isRecorded=*/false);
    sink.Take(output);
}

void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& output, OutputPieces& pieces)
{
    TELV_ASSERT(vf);
    StringSink sink;
    xostream os(&sink);
    ExpandedOutput ep(&os);
    {
        const MappedOutputScope mapped(ep);
        MacroExpander(ih, vf, str, srcIndent, dstIndent, ep)
            .ExpandNested(LevelText{str, nullptr, /*m_isOfApplication=*/true}, /*isRecorded=*/true);
    }
    sink.Take(output);
    TELV_ASSERT(output.size() == ep.size());
    pieces.m_pieces.swap(ep.m_pieces.m_pieces);
}

} // namespace telv
