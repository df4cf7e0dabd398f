// SPDX-License-Identifier: MIT
// What the tests of the scanner share: one-line forms of tokens and of errors with their place.
#pragma once

#include "TextFoundationSupport.h"
#include "tlMacroExpander/src/LSToken.h"
#include <string>

namespace telv::scanner
{

using foundation::FailedAssertion;
using foundation::Str;
using foundation::View;
using foundation::Written;

/// "MESSAGE @OFFSET" of the error that `operation` throws over `text`, or "no error".
template <class Operation>
std::string ErrorIn(SubString text, Operation operation)
{
    try
    {
        operation();
    }
    catch (const LexScannerException& e)
    {
        return Str(e.m_description) + " @" + std::to_string(e.m_pos - text.begin());
    }
    return "no error";
}

/// A word for each kind that is no operator, the number of the others.
inline std::string KindText(EToken kind)
{
    switch (kind)
    {
    case TOKEN_END:
        return "end";
    case TOKEN_COMMENT:
        return "comment";
    case TOKEN_PREPROC_COMMENT:
        return "preproc";
    case TOKEN_INTEGER:
        return "int";
    case TOKEN_HEX_INTEGER:
        return "hex";
    case TOKEN_FLOAT:
        return "float";
    case TOKEN_SINGLE_QUOTED_STRING:
        return "single";
    case TOKEN_DOUBLE_QUOTED_STRING:
        return "double";
    case TOKEN_IDENTIFIER:
        return "name";
    default:
        return std::to_string(kind);
    }
}

/// The tokens of a text as "kind<characters>", one after the other, the end left out.
inline std::string TokensOf(const std::string& text, bool returnComments = false)
{
    SubString s = View(text);
    std::string tokens;
    for (;;)
    {
        const LSToken token = LsScanToken(s, returnComments);
        if (token.m_type == TOKEN_END)
            return tokens;
        tokens +=
            (tokens.empty() ? "" : " ") + KindText(token.m_type) + "<" + Str(token.m_str) + ">";
    }
}

/// The first token of a text.
inline LSToken FirstToken(const std::string& text)
{
    SubString s = View(text);
    return LsScanToken(s, /*returnComments=*/false);
}

} // namespace telv::scanner
