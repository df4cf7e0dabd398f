// Lines matter only where indentation has to be put in front of them; else one put does.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/ExpandedOutput"

#include "tlMacroExpander/src/Output/UnrecordedOutput.h"
#include "tlMacroExpander/src/Output/Columns.h"
#include <cstring>

namespace telv
{

namespace
{

/// Up to here a loop over the characters is cheaper than calls that search and count.
constexpr ssize_t s_few = 32;

/// The column behind `s`, which begins at `column` (not -1) and is not empty, when every line of it
/// begins at column 0.
ssize_t ColumnBehindFew(SubString s, ssize_t column)
{
    for (const char c : s)
        column = c == '\n' ? 0 : column + (c == '\t' ? s_columnsOfTab : 1);
    return s.m_p2[-1] == '\n' ? -1 : column;
}

ssize_t ColumnBehind(SubString s, ssize_t column)
{
    if (s.size() <= s_few)
        return ColumnBehindFew(s, column);
    if (s.m_p2[-1] == '\n')
        return -1;
    const void* const feed = memrchr(s.begin(), '\n', static_cast<size_t>(s.size()));
    return feed == nullptr ? column + Columns(s)
                           : Columns(SubString(static_cast<const char*>(feed) + 1, s.end()));
}

void Put(ExpandedOutput& output, SubString s)
{
    output.m_os->put(s.begin(), s.size());
    output.m_size += s.size();
    output.m_columnPos = ColumnBehind(s, output.m_columnPos);
}

void PutIndentedLines(ExpandedOutput& output, SubString s, ssize_t indent)
{
    while (s)
    {
        if (output.m_columnPos == -1)
            StartLine(output, indent);
        const SubString line(s.begin(), EndOfLine(s));
        Put(output, line);
        s.m_p1 = line.end();
    }
}

} // namespace

void WriteUnrecorded(ExpandedOutput& output, SubString s, ssize_t indent)
{
    TELV_ASSERT(output.m_os);
    if (s.empty())
        return;
    if (indent > 0)
        return PutIndentedLines(output, s, indent);
    if (output.m_columnPos == -1)
        output.m_columnPos = indent;
    Put(output, s);
}

} // namespace telv
