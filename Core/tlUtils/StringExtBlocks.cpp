// SPDX-License-Identifier: MIT
// Moving a block of lines to another indentation: once through the lines to find what they have in
// common, once to write them. A tab that reaches beyond the common indentation leaves spaces for
// the columns that remain of it, so the lines keep their places relative to each other.
#include "tlUtils/StringExt.h"
#include "tlUtils/TabWidth.h"
#include <algorithm>
#include <cstring>
#include <limits>

namespace telv
{

namespace
{

/// Cuts the next line off the front of `s`, with its line feed if it has one.
SubString CutLine(SubString& s)
{
    const void* const lineFeed = std::memchr(s.begin(), '\n', static_cast<size_t>(s.size()));
    const SubString line(s.begin(),
                         lineFeed == nullptr ? s.end() : static_cast<const char*>(lineFeed) + 1);
    s.m_p1 = line.end();
    return line;
}

/// Moves `line` over its spaces and tabs and returns their columns.
long CutIndentation(SubString& line)
{
    long columns = 0;
    for (; line && (*line == ' ' || *line == '\t'); ++line)
        columns += *line == ' ' ? 1 : s_tabWidth;
    return columns;
}

/// Drops so many columns of the indentation that `line` has. Returns by how many columns the last
/// tab went beyond them.
long DropColumns(SubString& line, long columns)
{
    for (; columns > 0; ++line)
        columns -= *line == ' ' ? 1 : s_tabWidth;
    return -columns;
}

/// True when the rest of a line behind its indentation is nothing but its end.
bool IsLineEnd(SubString rest)
{
    return rest.empty() || rest == "\n" || rest == "\r\n" || rest == "\r";
}

long CommonIndentation(SubString s)
{
    long common = std::numeric_limits<long>::max();
    while (s)
    {
        SubString line = CutLine(s);
        const long columns = CutIndentation(line);
        if (!IsLineEnd(line))
            common = std::min(common, columns);
    }
    return common;
}

void WriteSpaces(xostream& os, long count)
{
    static constexpr char spaces[] = "                                ";
    static constexpr long most = sizeof spaces - 1;
    for (; count > 0; count -= most)
        os.put(spaces, std::min(count, most));
}

} // namespace

void WriteSubStringWithAdjustedIndent(xostream& os, SubString s, long indent)
{
    const long common = CommonIndentation(s);
    while (s)
    {
        SubString line = CutLine(s);
        SubString text = line;
        CutIndentation(text);
        if (IsLineEnd(text))
        {
            os << text;
            continue;
        }
        const long beyond = DropColumns(line, common);
        WriteSpaces(os, indent);
        WriteSpaces(os, beyond);
        os << line;
    }
}

} // namespace telv
