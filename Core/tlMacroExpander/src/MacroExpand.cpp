// The entry points: an expander on the stack, and for strings an output around it.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/src/MacroExpander.h"

namespace telv
{

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

void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& output)
{
    OutputPieces pieces;
    MacroExpand(ih, vf, str, srcIndent, dstIndent, output, pieces);
}

void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& output, OutputPieces& pieces)
{
    TELV_ASSERT(vf);
    StringStream os(4096);
    ExpandedOutput ep(&os);
    MacroExpand(ih, vf, str, srcIndent, dstIndent, ep);
    os.GetString(output, true);
    TELV_ASSERT(output.size() == ep.size());
    pieces.m_pieces.swap(ep.m_pieces.m_pieces);
}

} // namespace telv
