// SPDX-License-Identifier: MIT
// Line starts in a sorted list; for UTF-16, a count at every 256th byte.
#include "map/LineTable.h"
#include "CharacterWidth.h"
#include "Utf8.h"
#include <algorithm>
#include <cstring>

namespace telv::tool
{

namespace
{

ssize_t Utf16Units(const Utf8Character& c)
{
    return c.m_valid && c.m_bytes.size() == 4 ? 2 : 1;
}

} // namespace

LineTable::LineTable(SubString text) : m_text(text)
{
    const char* p = text.begin();
    while (p != text.end())
    {
        m_starts.push_back(p - text.begin());
        const void* const feed = std::memchr(p, '\n', static_cast<size_t>(text.end() - p));
        p = feed == nullptr ? text.end() : static_cast<const char*>(feed) + 1;
    }
}

ssize_t LineTable::Count() const
{
    return static_cast<ssize_t>(m_starts.size());
}

LineColumn LineTable::At(ssize_t offset) const
{
    // The end behind a last line feed is the beginning of a line that is not there.
    if (offset == m_text.size() && (m_text.empty() || m_text.end()[-1] == '\n'))
        return {Count() + 1, 1};
    const auto next = std::upper_bound(m_starts.begin(), m_starts.end(), offset);
    return {next - m_starts.begin(), offset - *std::prev(next) + 1};
}

ssize_t LineTable::End(ssize_t line) const
{
    return line == Count() ? m_text.size() : Start(line + 1);
}

SubString LineTable::Line(ssize_t line) const
{
    const char* const begin = m_text.begin() + Start(line);
    const char* end = m_text.begin() + End(line);
    if (end != begin && end[-1] == '\n')
        --end;
    if (end != begin && end[-1] == '\r')
        --end;
    return SubString(begin, end);
}

ssize_t LineTable::Offset(ssize_t line, ssize_t column) const
{
    const ssize_t last = std::max(Start(line), End(line) - 1);
    return std::clamp(Start(line) + column - 1, Start(line), last);
}

Utf16Counter::Utf16Counter(SubString text) : m_text(text)
{
    m_isAscii = std::all_of(text.begin(), text.end(),
                            [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (m_isAscii)
        return;
    ssize_t units = 0;
    SubString rest = text;
    while (!rest.empty())
    {
        const ssize_t offset = rest.begin() - text.begin();
        while (static_cast<ssize_t>(m_marks.size()) * s_stride <= offset)
            m_marks.push_back({offset, units});
        units += Utf16Units(TakeUtf8Character(rest));
    }
    m_marks.push_back({text.size(), units});
}

ssize_t Utf16Counter::Before(ssize_t offset) const
{
    if (m_isAscii)
        return offset;
    // A mark can lie a little behind its multiple, inside a character that begins before it.
    auto mark =
        m_marks.begin() + std::min(offset / s_stride, static_cast<ssize_t>(m_marks.size()) - 1);
    if (mark->m_offset > offset && mark != m_marks.begin())
        --mark;
    ssize_t units = mark->m_units;
    SubString rest(m_text.begin() + mark->m_offset, m_text.end());
    while (!rest.empty())
    {
        const Utf8Character c = TakeUtf8Character(rest);
        if (c.m_bytes.end() - m_text.begin() > offset)
            break;
        units += Utf16Units(c);
    }
    return units;
}

ssize_t BytesOfColumns(SubString line, ssize_t columns, ssize_t tabWidth)
{
    SubString rest = line;
    ssize_t column = 0;
    ssize_t bytes = 0;
    while (!rest.empty())
    {
        column = ColumnBehind(column, TakeUtf8Character(rest), tabWidth);
        if (column > columns)
            break;
        bytes = rest.begin() - line.begin();
    }
    return bytes;
}

ssize_t ColumnsOfBytes(SubString line, ssize_t bytes, ssize_t tabWidth)
{
    SubString rest(line.begin(), line.begin() + bytes);
    ssize_t column = 0;
    while (!rest.empty())
        column = ColumnBehind(column, TakeUtf8Character(rest), tabWidth);
    return column;
}

} // namespace telv::tool
