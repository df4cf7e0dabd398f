// SPDX-License-Identifier: MIT
#include "PlainExpressions.h"
#include "Checks.h"
#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

namespace telv::fuzz
{

namespace
{

using Combine = LSLiteral (*)(const LSLiteral&, const LSLiteral&);
using Level = std::map<EToken, Combine>;

LSLiteral Plus(const LSLiteral& x, const LSLiteral& y)
{
    return x + y;
}
LSLiteral Minus(const LSLiteral& x, const LSLiteral& y)
{
    return x - y;
}
LSLiteral Times(const LSLiteral& x, const LSLiteral& y)
{
    return x * y;
}
LSLiteral Divide(const LSLiteral& x, const LSLiteral& y)
{
    return x / y;
}
LSLiteral Modulo(const LSLiteral& x, const LSLiteral& y)
{
    return x % y;
}
LSLiteral Left(const LSLiteral& x, const LSLiteral& y)
{
    return x << y;
}
LSLiteral Right(const LSLiteral& x, const LSLiteral& y)
{
    return x >> y;
}
LSLiteral BitAnd(const LSLiteral& x, const LSLiteral& y)
{
    return x & y;
}
LSLiteral BitOr(const LSLiteral& x, const LSLiteral& y)
{
    return x | y;
}
LSLiteral BitXor(const LSLiteral& x, const LSLiteral& y)
{
    return x ^ y;
}
LSLiteral And(const LSLiteral& x, const LSLiteral& y)
{
    return x && y;
}
LSLiteral Or(const LSLiteral& x, const LSLiteral& y)
{
    return x || y;
}
LSLiteral Equal(const LSLiteral& x, const LSLiteral& y)
{
    return IsEqual(x, y);
}
LSLiteral NotEqual(const LSLiteral& x, const LSLiteral& y)
{
    return !IsEqual(x, y);
}
LSLiteral Less(const LSLiteral& x, const LSLiteral& y)
{
    return IsLess(x, y);
}
LSLiteral Greater(const LSLiteral& x, const LSLiteral& y)
{
    return IsLess(y, x);
}
LSLiteral LessEqual(const LSLiteral& x, const LSLiteral& y)
{
    return IsLessThanOrEqual(x, y);
}
LSLiteral GreaterEqual(const LSLiteral& x, const LSLiteral& y)
{
    return IsLessThanOrEqual(y, x);
}

const std::vector<Level> s_levels = {
    {{TOKEN_DBL_VLINE, Or}},
    {{TOKEN_DBL_AMPERSAND, And}},
    {{TOKEN_VLINE, BitOr}},
    {{TOKEN_CARET, BitXor}},
    {{TOKEN_AMPERSAND, BitAnd}},
    {{TOKEN_DBL_EQUAL, Equal}, {TOKEN_EXCLAM_EQUAL, NotEqual}},
    {{TOKEN_LESS, Less},
     {TOKEN_GREATER, Greater},
     {TOKEN_LESS_EQUAL, LessEqual},
     {TOKEN_GREATER_EQUAL, GreaterEqual}},
    {{TOKEN_DBL_LESS, Left}, {TOKEN_DBL_GREATER, Right}},
    {{TOKEN_PLUS, Plus}, {TOKEN_MINUS, Minus}},
    {{TOKEN_ASTERISK, Times}, {TOKEN_FORWARD_SLASH, Divide}, {TOKEN_PERCENT, Modulo}},
    {{TOKEN_DBL_CARET, Power}},
};

const Level s_assignments = {
    {TOKEN_EQUAL, nullptr},           {TOKEN_PLUS_EQUAL, Plus},
    {TOKEN_MINUS_EQUAL, Minus},       {TOKEN_ASTERISK_EQUAL, Times},
    {TOKEN_SLASH_EQUAL, Divide},      {TOKEN_PERCENT_EQUAL, Modulo},
    {TOKEN_AMPERSAND_EQUAL, BitAnd},  {TOKEN_VLINE_EQUAL, BitOr},
    {TOKEN_CARET_EQUAL, BitXor},      {TOKEN_DBL_LESS_EQUAL, Left},
    {TOKEN_DBL_GREATER_EQUAL, Right}, {TOKEN_DBL_AMPERSAND_EQUAL, And},
    {TOKEN_DBL_VLINE_EQUAL, Or},      {TOKEN_DBL_CARET_EQUAL, Power},
};

} // namespace

std::string ShowLiteral(const LSLiteral& literal)
{
    const std::string kind = TypeToString(literal.m_type);
    switch (literal.m_type)
    {
    case LITERAL_BOOL:
        return kind + (literal.m_bool ? " true" : " false");
    case LITERAL_INT64:
        return kind + " " + std::to_string(literal.m_int64);
    case LITERAL_FLOAT64:
        return kind + " " + ToStd(ToString(literal.m_float64));
    case LITERAL_CHAR:
        return kind + " " + std::string(1, literal.m_char);
    case LITERAL_STRING:
        return kind + " " + ToStd(literal.m_string);
    default:
        return kind;
    }
}

bool PlainExpressions::CanParse(SubString text)
{
    const std::string whole = ToStd(text);
    return std::count_if(whole.begin(), whole.end(),
                         [](char c)
                         { return std::string("([?!~+-").find(c) != std::string::npos; }) < 200;
}

void PlainExpressions::ParseExpression(LSLiteral& literal)
{
    try
    {
        Assignment(literal);
    }
    catch (const LiteralException& e)
    {
        throw LexScannerException(e.m_description, m_token);
    }
}

void PlainExpressions::Assignment(LSLiteral& x)
{
    Conditional(x);
    const auto found = s_assignments.find(m_token.m_type);
    if (found == s_assignments.end())
        return;
    ReadNextToken();
    LSLiteral y;
    Conditional(y);
    x.Assign(found->second == nullptr ? y : found->second(x, y));
}

void PlainExpressions::Conditional(LSLiteral& x)
{
    Binary(x, 0);
    if (m_token.m_type != TOKEN_QUESTION)
        return;
    ReadNextToken();
    LSLiteral yes;
    ParseExpression(yes);
    ParseGivenToken(TOKEN_COLON, ":");
    LSLiteral no;
    Conditional(no);
    x = x.AsBool(false) ? yes : no;
}

void PlainExpressions::Binary(LSLiteral& x, size_t level)
{
    if (level == s_levels.size())
        return Unary(x);
    Binary(x, level + 1);
    for (;;)
    {
        const auto found = s_levels[level].find(m_token.m_type);
        if (found == s_levels[level].end())
            return;
        ReadNextToken();
        LSLiteral y;
        Binary(y, level + 1);
        x = found->second(x, y);
    }
}

void PlainExpressions::Unary(LSLiteral& x)
{
    const EToken token = m_token.m_type;
    if (token != TOKEN_PLUS && token != TOKEN_MINUS && token != TOKEN_EXCLAM &&
        token != TOKEN_TILDE)
        return PostFix(x);
    ReadNextToken();
    LSLiteral y;
    Unary(y);
    x = token == TOKEN_PLUS ? +y : token == TOKEN_MINUS ? -y : token == TOKEN_TILDE ? ~y : !y;
}

void PlainExpressions::PostFix(LSLiteral& x)
{
    Primary(x);
    for (;;)
        switch (m_token.m_type)
        {
        case TOKEN_LEFT_SQUARE:
        {
            ReadNextToken();
            LSLiteral index;
            ParseExpression(index);
            ParseGivenToken(TOKEN_RIGHT_SQUARE, "]");
            x = x[index];
            break;
        }
        case TOKEN_DOT:
            Throw("Dot operator currently not supported");
        case TOKEN_LEFT_PAREN:
            Throw("Function application currently not supported");
        default:
            return;
        }
}

void PlainExpressions::Primary(LSLiteral& x)
{
    switch (m_token.m_type)
    {
    case TOKEN_INTEGER:
        return Read(x, m_token.GetLiteralInt64());
    case TOKEN_HEX_INTEGER:
        return Read(x, m_token.GetLiteralHexInt64());
    case TOKEN_FLOAT:
        return Read(x, m_token.GetLiteralDouble());
    case TOKEN_SINGLE_QUOTED_STRING:
    case TOKEN_DOUBLE_QUOTED_STRING:
    {
        xstring text;
        m_token.GetLiteralString(text);
        return Read(x, text);
    }
    case TOKEN_IDENTIFIER:
        return Identifier(x);
    case TOKEN_LEFT_PAREN:
        ReadNextToken();
        ParseExpression(x);
        return ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
    default:
        ThrowUnexpected();
    }
}

void PlainExpressions::Identifier(LSLiteral& x)
{
    const std::string name = ToStd(m_token.m_str);
    if (name == "true" || name == "false")
        return Read(x, name == "true");
    if (name == "__FILE__" || name == "__LINE__")
    {
        ReadNextToken();
        ThrowTelvAssertionError("no position", "fuzz", 0);
    }
    Function(x, name);
}

void PlainExpressions::Function(LSLiteral& x, const std::string& name)
{
    static const std::map<std::string, ELiteral> s_tests = {{"is_bool", LITERAL_BOOL},
                                                            {"is_char", LITERAL_CHAR},
                                                            {"is_int", LITERAL_INT64},
                                                            {"is_double", LITERAL_FLOAT64},
                                                            {"is_string", LITERAL_STRING}};
    static const std::map<std::string, double (*)(double)> s_maths = {
        {"sin", std::sin}, {"cos", std::cos}, {"tan", std::tan}, {"exp", std::exp}};
    LSLiteral y;
    if (const auto test = s_tests.find(name); test != s_tests.end())
    {
        InBrackets(y);
        x = y.m_type == test->second;
    }
    else if (const auto maths = s_maths.find(name); maths != s_maths.end())
        x = maths->second(Number());
    else if (name == "log")
    {
        const double value = Number();
        if (value <= 0.0)
            Throw(("Can't take log of value " + ToStd(ToString(value))).c_str());
        x = std::log(value);
    }
    else if (name == "len" || name == "bool" || name == "char" || name == "int" ||
             name == "double" || name == "string")
    {
        InBrackets(y);
        x = name == "len"      ? LSLiteral(y.GetLength())
            : name == "bool"   ? LSLiteral(y.AsBool(true))
            : name == "char"   ? LSLiteral::MakeChar(y.AsChar(true))
            : name == "int"    ? LSLiteral(y.AsInt64(true))
            : name == "double" ? LSLiteral(y.AsFloat64(true))
                               : LSLiteral(y.AsString(true));
    }
    else
        ThrowUnexpected();
}

/// A number in brackets; errors of values are positioned before the closing bracket is read.
double PlainExpressions::Number()
{
    ReadNextToken();
    ParseGivenToken(TOKEN_LEFT_PAREN, "(");
    LSLiteral y;
    double value = 0;
    try
    {
        Assignment(y);
        value = y.AsFloat64(false);
    }
    catch (const LiteralException& e)
    {
        throw LexScannerException(e.m_description, m_token);
    }
    ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
    return value;
}

void PlainExpressions::InBrackets(LSLiteral& x)
{
    ReadNextToken();
    ParseGivenToken(TOKEN_LEFT_PAREN, "(");
    ParseExpression(x);
    ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
}

void PlainExpressions::Read(LSLiteral& x, LSLiteral value)
{
    x = std::move(value);
    ReadNextToken();
}

void PlainExpressions::Throw(const char* message)
{
    throw LexScannerException(message, m_token);
}

void PlainExpressions::ThrowUnexpected()
{
    StringStream message(4096);
    message << "Unexpected " << m_token << " after " << m_prevToken << " in expression";
    throw LexScannerException(message.GetString(), m_token);
}

} // namespace telv::fuzz
