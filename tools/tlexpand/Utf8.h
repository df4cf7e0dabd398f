// SPDX-License-Identifier: MIT
// Cutting bytes into UTF-8 characters, one at a time, whatever the bytes are. (The library knows
// what is well formed for its messages, but exports nothing of it, and need not cut what is not.)
#pragma once

#include "tlUtils/StringExt.h"

namespace telv::tool
{

/// A well-formed sequence, or the longest start of one that goes wrong (at least one byte).
struct Utf8Character
{
    SubString m_bytes;
    bool m_valid = false;
};

/// Takes the first character from `s`, which must not be empty.
Utf8Character TakeUtf8Character(SubString& s);

/// The code point of a well-formed sequence.
char32_t CodePointOf(SubString character);

/// The text behind the byte order mark that `text` may begin with.
SubString WithoutByteOrderMark(SubString text);

} // namespace telv::tool
