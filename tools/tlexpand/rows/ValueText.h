// SPDX-License-Identifier: MIT
// How a value is written so that the list gives it back.
//
// A list is cut by tokens: an element ends at a comma or the closing bracket, brackets, strings and
// comments within it are passed over, and an element in back quotes is taken as it stands. But back
// quotes mean nothing where an outer element is cut, which looks for the bracket that closes it. So
// each way of writing a value is tried with the scanner that will cut the list. The list is
// expanded before: what is no text of the language (a quote that is not closed) can stand nowhere
// in it.
//
// In a lenient run a sign that is not closed is text, unless a later value closes it. A quote is
// kept from that by the end of its line; nothing but the end of the list ends a comment.
#pragma once

#include "tlUtils/StringExt.h"
#include <optional>
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

/// What came of writing a value.
struct ValueResult
{
    bool m_isWritten = false;
    std::string m_reason; ///< What the scanner said to one that is not written; or empty.
    /// Behind the first sign, in the whole text, that would begin a comment if one ended behind it.
    std::optional<size_t> m_openComment;
};

/// Appends the value to `text`: as it is when the list gives it back unchanged, else in back
/// quotes; nothing when it can't be written at `place`.
ValueResult AppendValue(std::string& text, SubString value, ValuePlace place);

} // namespace telv::tool
