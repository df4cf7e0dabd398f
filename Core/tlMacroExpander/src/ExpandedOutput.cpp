// SPDX-License-Identifier: MIT
// Writing with lazy indentation. Text goes out a line at a time; the column is counted in bulk.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/ExpandedOutput"

#include "tlMacroExpander/src/Output/Columns.h"
#include <algorithm>

namespace telv
{

ExpandedOutput::ExpandedOutput(xostream* os) : m_os(os), m_columnPos(-1), m_size(0)
{
    TELV_ASSERT(m_os);
}

ssize_t ExpandedOutput::size() const
{
    return m_pieces.size();
}

void StartLine(ExpandedOutput& output, ssize_t indent)
{
    constexpr ssize_t few = 64;
    static constexpr char blanks[few + 1] =
        "                                                                ";
    for (ssize_t left = indent; left > 0; left -= few)
        output.m_os->put(blanks, std::min(left, few));
    output.m_size += std::max<ssize_t>(indent, 0);
    output.m_columnPos = indent;
}

/// Writes a stretch that has no line feed but at its end.
void ExpandedOutput::Put(SubString s)
{
    m_os->put(s.begin(), s.size());
    m_size += s.size();
    m_columnPos = s.m_p2[-1] == '\n' ? -1 : m_columnPos + Columns(s);
}

void ExpandedOutput::AddSourcePiece(const char* p1, const char* p2)
{
    if (p1 != p2)
        m_pieces.m_pieces.push_back(OutputPiece{SubString(p1, p2), 0});
}

void ExpandedOutput::WriteSubStringFromSourceFile(SubString s, ssize_t indent)
{
    TELV_ASSERT(m_os);
    const char* pending = s.begin();
    while (s)
    {
        if (m_columnPos == -1)
        {
            if (indent > 0)
            {
                AddSourcePiece(pending, s.begin());
                pending = s.begin();
                m_pieces.m_pieces.push_back(OutputPiece{SubString(), indent});
            }
            StartLine(*this, indent);
        }
        const SubString line(s.begin(), EndOfLine(s));
        Put(line);
        s.m_p1 = line.end();
    }
    TELV_ASSERT(s.begin() == s.end());
    AddSourcePiece(pending, s.end());
}

void ExpandedOutput::WriteCalculatedSubString(SubString s, SubString sSrcFile, ssize_t indent)
{
    TELV_ASSERT(m_os);
    if (s.empty())
        return;
    TELV_ASSERT(sSrcFile);
    const ssize_t before = m_size;
    while (s)
    {
        if (m_columnPos == -1)
            StartLine(*this, indent);
        const SubString line(s.begin(), EndOfLine(s));
        Put(line);
        s.m_p1 = line.end();
    }
    m_pieces.m_pieces.push_back(OutputPiece{sSrcFile, m_size - before});
}

} // namespace telv
