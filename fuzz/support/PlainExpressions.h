// SPDX-License-Identifier: MIT
// An expression parser written the plain way, one recursion per level of precedence and one look at
// a table of tokens: what the library's parser, which has one loop for all levels, is compared
// with. Operators and conversions are the library's.
#pragma once

#include "tlMacroExpander/src/ExpressionParser.h"
#include <string>

namespace telv::fuzz
{

class PlainExpressions : public ParserBase
{
public:
    /// False for text that could nest deeper than this parser's recursion should go.
    static bool CanParse(SubString text);

    void ParseExpression(LSLiteral& literal);

private:
    void Assignment(LSLiteral& x);
    void Conditional(LSLiteral& x);
    void Binary(LSLiteral& x, size_t level);
    void Unary(LSLiteral& x);
    void PostFix(LSLiteral& x);
    void Primary(LSLiteral& x);
    void Identifier(LSLiteral& x);
    void Function(LSLiteral& x, const std::string& name);
    double Number();
    void InBrackets(LSLiteral& x);
    void Read(LSLiteral& x, LSLiteral value);

    [[noreturn]] void Throw(const char* message);
    [[noreturn]] void ThrowUnexpected();
};

/// Kind and value; floats with all their digits.
std::string ShowLiteral(const LSLiteral& literal);

} // namespace telv::fuzz
