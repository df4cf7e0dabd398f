// SPDX-License-Identifier: MIT
// The source line of an error with a caret under its column, and text made fit for a terminal.
#pragma once

#include "Sources.h"
#include <string>

namespace telv::tool
{

/// How the excerpt is to look.
struct ExcerptStyle
{
    bool m_escape = false; ///< Control characters and bad UTF-8 become \x and two digits.
    bool m_colour = false;
};

/// Two lines, each with its line feed:
///
///      12 | x = pair(1, 2, 3);
///         |              ^
///
/// A tab of the line is a tab under it too, every other character is one column. A line of more
/// than 500 characters is cut around the caret.
std::string MakeExcerpt(const Source& source, const char* pos, ExcerptStyle style);

/// `text` with what could drive a terminal made visible; line feeds and tabs stay.
std::string EscapeForTerminal(SubString text);

} // namespace telv::tool
