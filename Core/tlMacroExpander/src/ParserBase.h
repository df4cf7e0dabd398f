// SPDX-License-Identifier: MIT
// The token-reading base of the parsers: one token of look-ahead, and the error "Expected ...".
//
// A parser is a value that lives while one text is parsed and views that text.
#pragma once

#include "tlMacroExpander/src/Scan/ScanSection.h"

namespace telv
{

/// Reads tokens of a text one ahead. Comments are skipped. Every operation that reads on can throw
/// the lexical errors of LsScanToken.
class TLEXPANDER_API ParserBase
{
public:
    xstring m_stringForToken; ///< Scratch: the text of a token.
    LSToken m_token;          ///< The current token, not yet consumed.
    LSToken m_prevToken;      ///< The token before it.
    SubString m_str;          ///< What follows `m_token`.

    /// Without a text: both tokens are TOKEN_UNDEF and empty.
    ParserBase();

    /// Starts on `s`, which must outlive the parsing, and reads the first token.
    void Init(SubString s);

    /// Consumes the current token.
    void ReadNextToken();

    /// Consumes the current token if it is of kind `t`, otherwise ThrowExpectedException(what).
    void ParseGivenToken(EToken t, const char* what);

    /// Consumes an identifier and returns it.
    xstring ParseIdentifier();

    /// Consumes a path and returns it: identifiers and slashes, beginning with an identifier,
    /// joined without the white space between them. A dot ends it.
    xstring ParsePath();

    /// @throws LexScannerException  always: "Expected WHAT after PREVIOUS when read CURRENT", at
    ///     the current token.
    [[noreturn]] void ThrowExpectedException(const char* what);
};

static_assert(sizeof(ParserBase) == 88, "no other fields");

} // namespace telv
