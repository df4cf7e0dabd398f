// SPDX-License-Identifier: MIT
// The lines of a text: from offsets to lines and columns and back.
//
// Lines and byte columns count from 1; a line ends behind its line feed. Columns are also wanted in
// other units (UTF-16 for source maps and browsers, terminal columns for GCC); these count from 0.
#pragma once

#include "tlUtils/StringExt.h"
#include <optional>
#include <vector>

namespace telv::tool
{

struct LineColumn
{
    ssize_t m_line = 1;
    ssize_t m_column = 1;
};

class LineTable
{
public:
    /// Views `text`. Linear.
    explicit LineTable(SubString text);

    SubString Text() const { return m_text; }
    /// Lines; text behind the last line feed is one, nothing behind it is none.
    ssize_t Count() const;
    /// Line and byte column of an offset, from 0 to the size of the text. Logarithmic.
    LineColumn At(ssize_t offset) const;
    /// Offset of the beginning of a line, from 1 to `Count()`.
    ssize_t Start(ssize_t line) const { return m_starts[static_cast<size_t>(line - 1)]; }
    /// Offset behind the last byte of a line, its line feed included.
    ssize_t End(ssize_t line) const;
    /// A line without its end (LF or CR LF).
    SubString Line(ssize_t line) const;
    /// The offset of a byte column of a line, held within the line.
    ssize_t Offset(ssize_t line, ssize_t column) const;

private:
    SubString m_text;
    std::vector<ssize_t> m_starts;
};

/// Counts the UTF-16 units between positions of a text, whose bad bytes count as U+FFFD. A position
/// inside a character counts as its beginning.
class Utf16Counter
{
public:
    /// Views `text`. Linear.
    explicit Utf16Counter(SubString text);

    /// Units before an offset. Constant.
    ssize_t Before(ssize_t offset) const;

private:
    static constexpr ssize_t s_stride = 256;

    SubString m_text;
    bool m_isAscii = true;
    struct Mark
    {
        ssize_t m_offset; ///< Of a character's beginning.
        ssize_t m_units;  ///< Before it.
    };
    std::vector<Mark> m_marks; ///< The first character at or after each multiple of the stride.
};

/// The bytes of the first `columns` terminal columns of a line, where a tab goes to the next
/// multiple of `tabWidth`. Combining characters belong to the one before them.
ssize_t BytesOfColumns(SubString line, ssize_t columns, ssize_t tabWidth);
/// The terminal columns of the first `bytes` bytes of a line, counted in the same way.
ssize_t ColumnsOfBytes(SubString line, ssize_t bytes, ssize_t tabWidth);

} // namespace telv::tool
