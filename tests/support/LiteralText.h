// SPDX-License-Identifier: MIT
// One-line text forms of literals and errors, so that tests of values can be tables.
#pragma once

#include "tlMacroExpander/LSLiteral.h"
#include "tlUtils/StringExt.h"
#include <string>

namespace telv
{

inline std::string StdString(SubString s)
{
    return std::string(s.begin(), s.end());
}

/// Kind and value: "int64 5", "string abc", "char a", "bool true", "float64 0.5", "void".
inline std::string LiteralText(const LSLiteral& literal)
{
    std::string text = TypeToString(literal.m_type);
    if (literal != LITERAL_UNDEF && literal != LITERAL_VOID)
        text += " " + StdString(literal.AsString(/*allowDataLoss=*/true));
    return text;
}

// Literals that no constructor makes as briefly.

inline LSLiteral Void()
{
    LSLiteral literal;
    literal.m_type = LITERAL_VOID;
    return literal;
}

inline LSLiteral String(const char* text)
{
    return LSLiteral(xstring(text));
}

inline LSLiteral Char(char c)
{
    return LSLiteral::MakeChar(c);
}

/// What `Write` writes: the whole text of an error.
inline std::string ErrorText(const IException& e)
{
    StringStream os(4096);
    e.Write(os);
    return StdString(os.GetString());
}

} // namespace telv
