// SPDX-License-Identifier: MIT
// Columns of lines in the units that messages count in.
//
// Many messages can point into one long line, of a minified output, say. So the columns at some
// places of each long line are kept, from which the others are counted.
#pragma once

#include "Utf8.h"
#include <map>
#include <utility>
#include <vector>

namespace telv::tool
{

/// What a column counts.
enum class EColumnUnit
{
    Guess, ///< Bytes or terminal columns, whichever fits the message.
    Bytes,
    Terminal, ///< A tab goes to the next multiple of eight.
    CodePoints,
    Utf16
};

/// Answers for lines that stay where they are as long as this object. Columns count from 0; the
/// unit is Terminal, CodePoints or Utf16.
class LineColumns
{
public:
    /// The bytes of the first `columns` columns of a line, at most all. Of a terminal's, as
    /// BytesOfColumns; a pair of UTF-16 units of which one is counted belongs to them whole.
    ssize_t BytesOf(SubString line, ssize_t columns, EColumnUnit unit);
    /// The columns of the first `bytes` bytes of a line, at most its size.
    ssize_t ColumnsOf(SubString line, ssize_t bytes, EColumnUnit unit);
    /// The first byte of a line that is no white space, from 0; 0 when there is none.
    ssize_t Visible(SubString line);

    /// Characters that were looked at.
    ssize_t CountOfSteps() const { return m_steps; }

private:
    /// The beginning of a character.
    struct Mark
    {
        ssize_t m_bytes;
        ssize_t m_columns;
    };

    const std::vector<Mark>& MarksOf(SubString line, EColumnUnit unit);
    ssize_t ColumnBehind(ssize_t column, SubString& rest, EColumnUnit unit);

    /// Of long lines, by where they begin.
    std::map<std::pair<const char*, EColumnUnit>, std::vector<Mark>> m_marks;
    std::map<const char*, ssize_t> m_visible; ///< Of lines that begin with much white space.
    ssize_t m_steps = 0;
};

} // namespace telv::tool
