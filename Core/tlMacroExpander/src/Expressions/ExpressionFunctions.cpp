// SPDX-License-Identifier: MIT
// What expressions offer by name, and the typed entries that C++ callers use.
//
// Built-in names stand in one table, in the order in which they are compared; a row evaluates its
// name with the name as the current token. Expressions have no variables: values of macros stand in
// the text before it is parsed.
#include "tlMacroExpander/src/ExpressionParser.h"
#include "tlMacroExpander/src/Expressions/BuiltIns.h"
#include "tlMacroExpander/src/Values/MathFunctions.h"
#include "tlUtils/StringExt.h"
#include <algorithm>

#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/ExpressionParser"

namespace telv
{

namespace
{

/// A constant: reads past its name.
template <bool value>
void Bool(ExpressionParser& parser, LSLiteral& literal)
{
    parser.ReadNextToken();
    literal = LSLiteral(value);
}

void Length(ExpressionParser& parser, LSLiteral& literal)
{
    parser.ParseLiteralInBrackets(literal);
    literal = LSLiteral(literal.GetLength());
}

/// `is_…(e)`: whether the kind of e is `type`.
template <ELiteral type>
void IsKind(ExpressionParser& parser, LSLiteral& literal)
{
    parser.ParseLiteralInBrackets(literal);
    literal = LSLiteral(literal == type);
}

// The conversions lose data without complaint.

void ToBool(ExpressionParser& parser, LSLiteral& literal)
{
    parser.ParseLiteralInBrackets(literal);
    literal = LSLiteral(literal.AsBool(/*allowDataLoss=*/true));
}

void ToChar(ExpressionParser& parser, LSLiteral& literal)
{
    parser.ParseLiteralInBrackets(literal);
    literal = LSLiteral::MakeChar(literal.AsChar(/*allowDataLoss=*/true));
}

void ToInt(ExpressionParser& parser, LSLiteral& literal)
{
    parser.ParseLiteralInBrackets(literal);
    literal = LSLiteral(literal.AsInt64(/*allowDataLoss=*/true));
}

void ToDouble(ExpressionParser& parser, LSLiteral& literal)
{
    parser.ParseLiteralInBrackets(literal);
    literal = LSLiteral(literal.AsFloat64(/*allowDataLoss=*/true));
}

void ToText(ExpressionParser& parser, LSLiteral& literal)
{
    parser.ParseLiteralInBrackets(literal);
    literal = LSLiteral(literal.AsString(/*allowDataLoss=*/true));
}

template <double (*MathFunctions::*function)(double)>
void Math(ExpressionParser& parser, LSLiteral& literal)
{
    const double argument = parser.ParseFloat64Arg();
    literal = LSLiteral((GetMathFunctions().*function)(argument));
}

[[noreturn, gnu::noinline]] void ThrowNoLog(double value, const LSToken& token)
{
    StringStream message(4096);
    message << "Can't take log of value " << value;
    throw LexScannerException(message.GetString(), token);
}

void Log(ExpressionParser& parser, LSLiteral& literal)
{
    const double value = parser.ParseFloat64Arg();
    if (value <= 0.0)
        ThrowNoLog(value, parser.m_token);
    literal = LSLiteral(GetMathFunctions().m_log(value));
}

/// Where the parser stands behind the name that it reads past here.
void ReadPosition(ExpressionParser& parser, xstring& filename, ssize_t& lineNumber)
{
    parser.ReadNextToken();
    if (!parser.GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber))
        ThrowTelvAssertionError("GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber)",
                                TELV_SOURCE_PATH, __LINE__);
}

[[gnu::noinline]] void File(ExpressionParser& parser, LSLiteral& literal)
{
    xstring filename;
    ssize_t lineNumber = -1;
    ReadPosition(parser, filename, lineNumber);
    literal = LSLiteral(filename);
}

[[gnu::noinline]] void Line(ExpressionParser& parser, LSLiteral& literal)
{
    xstring filename;
    ssize_t lineNumber = -1;
    ReadPosition(parser, filename, lineNumber);
    literal = LSLiteral(lineNumber);
}

struct BuiltIn
{
    const char* m_name;
    void (*m_evaluate)(ExpressionParser& parser, LSLiteral& literal);
};

// clang-format off
constexpr BuiltIn s_builtIns[] = {
    {"false",     Bool<false>},
    {"true",      Bool<true>},
    {"len",       Length},
    {"is_bool",   IsKind<LITERAL_BOOL>},
    {"is_char",   IsKind<LITERAL_CHAR>},
    {"is_int",    IsKind<LITERAL_INT64>},
    {"is_double", IsKind<LITERAL_FLOAT64>},
    {"is_string", IsKind<LITERAL_STRING>},
    {"bool",      ToBool},
    {"char",      ToChar},
    {"int",       ToInt},
    {"double",    ToDouble},
    {"string",    ToText},
    {"sin",       Math<&MathFunctions::m_sin>},
    {"cos",       Math<&MathFunctions::m_cos>},
    {"tan",       Math<&MathFunctions::m_tan>},
    {"exp",       Math<&MathFunctions::m_exp>},
    {"log",       Log},
    {"__FILE__",  File},
    {"__LINE__",  Line},
};
// clang-format on

} // namespace

bool IsBuiltIn(SubString name)
{
    return std::ranges::any_of(s_builtIns, [&](const BuiltIn& b) { return name == b.m_name; });
}

void ForEachBuiltIn(const std::function<void(SubString)>& visit)
{
    for (const BuiltIn& builtIn : s_builtIns)
        visit(builtIn.m_name);
}

void ExpressionParser::ParsePrimaryIdentifierExpression(LSLiteral& literal)
{
    if (m_token.m_type != TOKEN_IDENTIFIER)
        ThrowTelvAssertionError("m_token == TOKEN_IDENTIFIER", TELV_SOURCE_PATH, __LINE__);
    for (const BuiltIn& builtIn : s_builtIns)
        if (m_token.m_str == builtIn.m_name)
            return builtIn.m_evaluate(*this, literal);
    ThrowUnexpected();
}

bool ExpressionParser::GetFilenameAndLineNumberAtCurrentPosition(xstring&, ssize_t&) const
{
    return false;
}

void ExpressionParser::ParseLiteralInBrackets(LSLiteral& literal)
{
    ReadNextToken();
    ParseGivenToken(TOKEN_LEFT_PAREN, "(");
    ParseExpression(literal);
    ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
}

double ExpressionParser::ParseFloat64Arg()
{
    ReadNextToken();
    ParseGivenToken(TOKEN_LEFT_PAREN, "(");
    const double value = ParseFloat64(/*allowDataLoss=*/false);
    ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
    return value;
}

// The typed family.

/// Evaluates an expression that must have a value; `expected` begins the message when it has none.
void ExpressionParser::ParseValue(LSLiteral& literal, const char* expected)
{
    UnsafeParseExpression(literal);
    if (literal == LITERAL_UNDEF)
        ThrowReadToken(expected);
}

/// Evaluates an expression and converts it with `convert`.
template <class T>
T ExpressionParser::ParseAs(T (LSLiteral::*convert)(bool) const, const char* expected,
                            bool allowDataLoss)
{
    try
    {
        LSLiteral literal;
        ParseValue(literal, expected);
        return (literal.*convert)(allowDataLoss);
    }
    catch (const LiteralException& e)
    {
        ThrowAtCurrentToken(e.m_description);
    }
}

bool ExpressionParser::ParseBool(bool allowDataLoss)
{
    return ParseAs<bool>(&LSLiteral::AsBool, "Expected bool when read ", allowDataLoss);
}

signed char ExpressionParser::ParseInt8(bool allowDataLoss)
{
    return ParseAs<signed char>(&LSLiteral::AsInt8, "Expected int8 when read ", allowDataLoss);
}

short ExpressionParser::ParseInt16(bool allowDataLoss)
{
    return ParseAs<short>(&LSLiteral::AsInt16, "Expected int16 when read ", allowDataLoss);
}

int ExpressionParser::ParseInt32(bool allowDataLoss)
{
    return ParseAs<int>(&LSLiteral::AsInt32, "Expected int32 when read ", allowDataLoss);
}

int64 ExpressionParser::ParseInt64(bool allowDataLoss)
{
    return ParseAs<int64>(&LSLiteral::AsInt64, "Expected int64 when read ", allowDataLoss);
}

unsigned char ExpressionParser::ParseUInt8(bool allowDataLoss)
{
    return ParseAs<unsigned char>(&LSLiteral::AsUInt8, "Expected uint8 when read ", allowDataLoss);
}

unsigned short ExpressionParser::ParseUInt16(bool allowDataLoss)
{
    return ParseAs<unsigned short>(&LSLiteral::AsUInt16, "Expected uint16 when read ",
                                   allowDataLoss);
}

unsigned int ExpressionParser::ParseUInt32(bool allowDataLoss)
{
    return ParseAs<unsigned int>(&LSLiteral::AsUInt32, "Expected uint32 when read ", allowDataLoss);
}

uint64 ExpressionParser::ParseUInt64(bool allowDataLoss)
{
    return ParseAs<uint64>(&LSLiteral::AsUInt64, "Expected uint64 when read ", allowDataLoss);
}

float ExpressionParser::ParseFloat32(bool allowDataLoss)
{
    return ParseAs<float>(&LSLiteral::AsFloat32, "Expected float32 when read ", allowDataLoss);
}

double ExpressionParser::ParseFloat64(bool allowDataLoss)
{
    return ParseAs<double>(&LSLiteral::AsFloat64, "Expected float64 when read ", allowDataLoss);
}

xstring ExpressionParser::ParseString(bool allowDataLoss)
{
    return ParseAs<xstring>(&LSLiteral::AsString, "Expected string when read ", allowDataLoss);
}

char ExpressionParser::ParseChar(bool allowDataLoss)
{
    try
    {
        LSLiteral literal;
        ParseValue(literal, "Expected character when read ");
        if (literal != LITERAL_STRING)
            return literal.AsChar(allowDataLoss);
        if (literal.m_string.size() != 1)
            ThrowReadToken("Expected character when read ");
        return literal.m_string[0];
    }
    catch (const LiteralException& e)
    {
        ThrowAtCurrentToken(e.m_description);
    }
}

} // namespace telv
