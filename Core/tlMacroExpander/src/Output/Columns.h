// SPDX-License-Identifier: MIT
// Lines and columns of output, shared by the writing operations that record pieces and those that
// do not.
#pragma once

#include "tlMacroExpander/ExpandedOutput.h"
#include <algorithm>
#include <cstring>

namespace telv
{

/// A tab counts so many columns wherever it stands.
inline constexpr ssize_t s_columnsOfTab = 4;

/// Columns of a stretch without a line feed.
inline ssize_t Columns(SubString s)
{
    return s.size() + (s_columnsOfTab - 1) * std::count(s.begin(), s.end(), '\t');
}

/// Behind the first line feed of `s`, which is not empty; its end when there is none.
inline const char* EndOfLine(SubString s)
{
    const void* const feed = std::memchr(s.begin(), '\n', static_cast<size_t>(s.size()));
    return feed == nullptr ? s.end() : static_cast<const char*>(feed) + 1;
}

/// Writes the indentation of a line that is about to receive its first character.
void StartLine(ExpandedOutput& output, ssize_t indent);

} // namespace telv
