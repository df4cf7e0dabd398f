// SPDX-License-Identifier: MIT
// How a value is written so that the list gives it back.
//
// A list is cut by tokens: an element ends at a comma or the closing bracket, brackets, strings and
// comments within it are passed over, and an element in back quotes is taken as it stands. But back
// quotes mean nothing where an outer element is cut, which looks for the bracket that closes it. So
// each way of writing a value is tried with the scanner that will cut the list. The list is
// expanded before: what is no text of the language (a quote that is not closed) can stand nowhere
// in it.
#pragma once

#include "tlUtils/StringExt.h"
#include <string>

namespace telv::tool
{

/// Where a value stands.
struct ValuePlace
{
    bool m_isInTuple = false;       ///< Directly; else in a list.
    bool m_isInParentheses = false; ///< An element around it is cut by its round brackets.
    bool m_isInSquares = false;     ///< By its square ones.
};

/// Appends the value to `text`: as it is when the list gives it back unchanged, else in back
/// quotes. False, with nothing appended, when it can't be written at `place`; `reason` is then what
/// the scanner said, or empty.
bool AppendValue(std::string& text, SubString value, ValuePlace place, std::string& reason);

} // namespace telv::tool
