// SPDX-License-Identifier: MIT
// Finds the line of a position in a source file.
#include "tlMacroExpander/src/LSSourceFile.h"
#include "tlUtils/StringExt.h"

namespace telv
{

bool LSSourceFile::GetFilenameAndLineNumber(const char* pos, xstring& path, ssize_t& line) const
{
    const ssize_t found = GetLineNumber(m_buffer, pos);
    if (found == -1)
        return false;
    path = m_name;
    line = found;
    return true;
}

} // namespace telv
