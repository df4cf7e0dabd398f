// SPDX-License-Identifier: MIT
// The evaluating parser of typed expressions; to expand text, start at MacroExpand.h.
//
// It evaluates while it parses: every function parses the longest expression of its level that
// starts at the current token, puts the value into `literal`, and leaves the first token after it
// as the current one. Both operands of every operator are therefore always evaluated.
//
//     ExpressionParser parser;
//     parser.Init(text);                          // text: 2 ^^ 3 + 1 )
//     LSLiteral literal;
//     parser.ParseExpression(literal);            // literal: the int64 9; current token: )
//
// The two-operand levels share one loop over a table of operators, so a bracket costs a few frames
// of stack instead of one per level. Where the text can nest without bounds the stack is checked:
// what nests too deeply is an ExpansionLimitException.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlMacroExpander/LSLiteral.h"
#include "tlMacroExpander/src/ParserBase.h"

namespace telv
{

struct BinaryOperator;

/// True for `=` and the thirteen compound assignments.
TLEXPANDER_API bool IsAssignmentToken(EToken token);

/// Parses and evaluates expressions of the text that `Init` was given, which must outlive it.
///
/// Errors of the text are LexScannerExceptions. Errors of values are LiteralExceptions inside;
/// `ParseExpression` and the typed family turn them into LexScannerExceptions at the token that is
/// current then, the level functions do not. After an error the parser is of no further use.
class TLEXPANDER_API ExpressionParser : public ParserBase
{
public:
    /// Evaluates one expression.
    void ParseExpression(LSLiteral& literal);
    /// Evaluates one expression; errors of values come out as LiteralExceptions.
    void UnsafeParseExpression(LSLiteral& literal);

    /// With a function's name as the current token: evaluates the expression in the brackets
    /// behind it.
    void ParseLiteralInBrackets(LSLiteral& literal);
    /// The same for a number.
    double ParseFloat64Arg();

    // One expression, converted to the type; see the conversions of LSLiteral.
    bool ParseBool(bool allowDataLoss);
    signed char ParseInt8(bool allowDataLoss);
    short ParseInt16(bool allowDataLoss);
    int ParseInt32(bool allowDataLoss);
    int64 ParseInt64(bool allowDataLoss);
    unsigned char ParseUInt8(bool allowDataLoss);
    unsigned short ParseUInt16(bool allowDataLoss);
    unsigned int ParseUInt32(bool allowDataLoss);
    uint64 ParseUInt64(bool allowDataLoss);
    float ParseFloat32(bool allowDataLoss);
    double ParseFloat64(bool allowDataLoss);
    /// A text of exactly one character counts as that character, whatever `allowDataLoss` says.
    char ParseChar(bool allowDataLoss);
    xstring ParseString(bool allowDataLoss);

    /// Where `__FILE__` and `__LINE__` would get their values from. This parser knows no files:
    /// false, and nothing is set.
    bool GetFilenameAndLineNumberAtCurrentPosition(xstring& filename, ssize_t& lineNumber) const;

    // The levels, loosest first.

    /// `x = y` and the compound forms: errors always, since no value can be assigned to.
    void ParseAssignmentExpression(LSLiteral& literal);
    /// `c ? x : y`; x and y are both evaluated, and before c is found to be no bool.
    void ParseConditionalExpression(LSLiteral& literal);
    void ParseLogicalOrExpression(LSLiteral& literal);
    void ParseLogicalAndExpression(LSLiteral& literal);
    void ParseBitwiseOrExpression(LSLiteral& literal);
    void ParseBitwiseExOrExpression(LSLiteral& literal);
    void ParseBitwiseAndExpression(LSLiteral& literal);
    void ParseEqualityExpression(LSLiteral& literal);
    void ParseRelationalExpression(LSLiteral& literal);
    void ParseShiftExpression(LSLiteral& literal);
    void ParseAdditiveExpression(LSLiteral& literal);
    void ParseMultiplicativeExpression(LSLiteral& literal);
    /// `^^` associates to the left.
    void ParsePowerExpression(LSLiteral& literal);
    /// Prefix `+ - ! ~`, which bind tighter than `^^`.
    void ParseUnaryExpression(LSLiteral& literal);
    /// Indexing of texts.
    void ParsePostFixExpression(LSLiteral& literal);
    /// Literals, names, brackets.
    void ParsePrimaryExpression(LSLiteral& literal);
    /// `true`, `false` and the built-in functions; the current token must be an identifier.
    void ParsePrimaryIdentifierExpression(LSLiteral& literal);

private:
    void ParseBinaryExpression(LSLiteral& literal, int level);
    void ParseRightOperand(LSLiteral& literal, const BinaryOperator& op);
    void ParseAssignment(LSLiteral& literal);
    void ParseAlternatives(LSLiteral& literal);
    void ParseIndex(LSLiteral& literal);
    template <class T>
    T ParseAs(T (LSLiteral::*convert)(bool) const, const char* expected, bool allowDataLoss);
    void ParseValue(LSLiteral& literal, const char* expected);

    [[noreturn, gnu::cold, gnu::noinline]] void ThrowAtCurrentToken(SubString description) const;
    [[noreturn, gnu::cold, gnu::noinline]] void ThrowReadToken(const char* expected) const;
    [[noreturn, gnu::cold, gnu::noinline]] void ThrowUnexpected() const;
};

} // namespace telv
