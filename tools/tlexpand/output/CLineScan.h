// SPDX-License-Identifier: MIT
// Tells at which line starts of a C or C++ text a directive can stand.
#pragma once

#include "tlUtils/StringExt.h"
#include <string>

namespace telv::tool
{

/// Reads a text in stretches, character by character. Strings and character constants end with
/// their line, as in C; what other languages write is read as if it were C.
class CLineScan
{
public:
    void Read(char c);

    /// Whether what was read last is the end of a line, or nothing, and a directive can follow.
    bool CanStartDirective() const { return m_state == EState::Code && !m_isContinued; }

private:
    enum class EState
    {
        Code,
        Slash, ///< Behind a slash.
        LineComment,
        BlockComment,
        Star,      ///< Behind a star of a block comment.
        Quote,     ///< Inside quotes of either kind.
        RawPrefix, ///< Between `R"` and `(`.
        RawString
    };

    void ReadCode(char c);
    void ReadRawPrefix(char c);

    EState m_state = EState::Code;
    char m_quote = '"';
    bool m_isEscaped = false;   ///< Behind a backslash.
    bool m_isContinued = false; ///< The last line ended with a backslash.
    std::string m_word;         ///< The identifier or number being read.
    std::string m_rawEnd;       ///< `)delimiter"`, which ends the raw string.
    std::string m_rawTail;      ///< The last characters of the raw string, as many.
};

} // namespace telv::tool
