// SPDX-License-Identifier: MIT
// A mark about every 256th byte; the first one is the beginning of the line.
#include "remap/LineColumns.h"
#include "CharacterWidth.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <algorithm>

namespace telv::tool
{

namespace
{

constexpr ssize_t s_stride = 256;
/// As of GCC, whose default can't be seen in its messages.
constexpr ssize_t s_tabWidth = 8;

} // namespace

/// The column behind the first character of `rest`, which is taken.
ssize_t LineColumns::ColumnBehind(ssize_t column, SubString& rest, EColumnUnit unit)
{
    ++m_steps;
    const Utf8Character character = TakeUtf8Character(rest);
    if (unit == EColumnUnit::Terminal)
        return tool::ColumnBehind(column, character, s_tabWidth);
    const bool isPair = unit == EColumnUnit::Utf16 && character.m_bytes.size() == 4;
    return column + (isPair ? 2 : 1);
}

const std::vector<LineColumns::Mark>& LineColumns::MarksOf(SubString line, EColumnUnit unit)
{
    static const std::vector<Mark> s_ofShort = {{0, 0}};
    if (line.size() <= s_stride)
        return s_ofShort;
    std::vector<Mark>& marks = m_marks[{line.begin(), unit}];
    if (!marks.empty())
        return marks;
    ssize_t column = 0;
    for (SubString rest = line; !rest.empty(); column = ColumnBehind(column, rest, unit))
    {
        const ssize_t bytes = rest.begin() - line.begin();
        if (marks.empty() || bytes - marks.back().m_bytes >= s_stride)
            marks.push_back({bytes, column});
    }
    return marks;
}

ssize_t LineColumns::BytesOf(SubString line, ssize_t columns, EColumnUnit unit)
{
    const std::vector<Mark>& marks = MarksOf(line, unit);
    const auto next =
        std::ranges::upper_bound(marks, std::max(columns, ssize_t{0}), {}, &Mark::m_columns);
    const Mark mark = *std::prev(next);
    SubString rest(line.begin() + mark.m_bytes, line.end());
    ssize_t column = mark.m_columns;
    ssize_t bytes = mark.m_bytes;
    while (!rest.empty() && (unit == EColumnUnit::Terminal || column < columns))
    {
        column = ColumnBehind(column, rest, unit);
        if (unit == EColumnUnit::Terminal && column > columns)
            break;
        bytes = rest.begin() - line.begin();
    }
    return bytes;
}

ssize_t LineColumns::ColumnsOf(SubString line, ssize_t bytes, EColumnUnit unit)
{
    bytes = std::max(bytes, ssize_t{0});
    const std::vector<Mark>& marks = MarksOf(line, unit);
    const auto next = std::ranges::upper_bound(marks, bytes, {}, &Mark::m_bytes);
    const Mark mark = *std::prev(next);
    SubString rest(line.begin() + mark.m_bytes, line.begin() + bytes);
    ssize_t column = mark.m_columns;
    while (!rest.empty())
        column = ColumnBehind(column, rest, unit);
    return column;
}

ssize_t LineColumns::Visible(SubString line)
{
    const auto known = m_visible.find(line.begin());
    if (known != m_visible.end())
        return known->second;
    SubString seen = line;
    ScanWhiteSpace(seen);
    const ssize_t space = seen.begin() - line.begin();
    m_steps += space;
    const ssize_t visible = seen.empty() ? 0 : space;
    if (space > s_stride)
        m_visible[line.begin()] = visible;
    return visible;
}

} // namespace telv::tool
