// SPDX-License-Identifier: MIT
// The ways into the expression parser: a function for each level, and one for each type.
#include "ExpressionSupport.h"

namespace telv::expression
{

TEST(ExpressionParser, PositionNamesNeedAPosition)
{
    const xstring file("__FILE__");
    const xstring line("1 + __LINE__ + 1");
    EXPECT_THROW(Evaluate(file), TelvAssertionError);
    try
    {
        Evaluate(line);
        FAIL();
    }
    catch (const TelvAssertionError& e)
    {
        const std::string text = e.what();
        EXPECT_EQ(text.substr(0, text.rfind('(')),
                  "Assertion failed: GetFilenameAndLineNumberAtCurrentPosition(filename, "
                  "lineNumber) at Core/tlMacroExpander/src/ExpressionParser");
    }
}

TEST(ExpressionParser, TheNameBeforeAPositionIsReadFirst)
{
    const xstring text("__LINE__ 1.x");
    EXPECT_EQ(Evaluate(text),
              "Expected digit (not 'x') after decimal point (ie after reading '1.')@11");
}

TEST(ExpressionParser, TheIdentifierLevelWantsAnIdentifier)
{
    const xstring text("1");
    ExpressionParser parser;
    parser.Init(text);
    LSLiteral literal;
    try
    {
        parser.ParsePrimaryIdentifierExpression(literal);
        FAIL();
    }
    catch (const TelvAssertionError& e)
    {
        const std::string message = e.what();
        EXPECT_EQ(message.substr(0, message.rfind('(')),
                  "Assertion failed: m_token == TOKEN_IDENTIFIER at "
                  "Core/tlMacroExpander/src/ExpressionParser");
    }
}

TEST(ExpressionParser, AssignmentTokens)
{
    const EToken assignments[] = {
        TOKEN_EQUAL,           TOKEN_PLUS_EQUAL,        TOKEN_MINUS_EQUAL,
        TOKEN_ASTERISK_EQUAL,  TOKEN_SLASH_EQUAL,       TOKEN_PERCENT_EQUAL,
        TOKEN_AMPERSAND_EQUAL, TOKEN_VLINE_EQUAL,       TOKEN_CARET_EQUAL,
        TOKEN_DBL_LESS_EQUAL,  TOKEN_DBL_GREATER_EQUAL, TOKEN_DBL_AMPERSAND_EQUAL,
        TOKEN_DBL_VLINE_EQUAL, TOKEN_DBL_CARET_EQUAL,
    };
    int count = 0;
    for (int token = TOKEN_END; token <= TOKEN_HASH; ++token)
        count += IsAssignmentToken(static_cast<EToken>(token)) ? 1 : 0;
    EXPECT_EQ(count, 14);
    for (const EToken token : assignments)
        EXPECT_TRUE(IsAssignmentToken(token)) << token;
    EXPECT_FALSE(IsAssignmentToken(TOKEN_UNDEF));
}

TEST(ExpressionParser, UnsafeExpressionsLetErrorsOfValuesOut)
{
    const auto unsafe = [](ExpressionParser& parser)
    {
        LSLiteral literal;
        parser.UnsafeParseExpression(literal);
        return LiteralText(literal);
    };
    EXPECT_EQ(Parsed(xstring("1 + 2"), unsafe), "int64 3");
    EXPECT_EQ(Parsed(xstring("1 / 0"), unsafe), "unplaced: Division by zero error");
    EXPECT_EQ(Parsed(xstring("1 = 0"), unsafe), "unplaced: Can't assign to int64 r-value");
    EXPECT_EQ(Parsed(xstring("(1 / 0)"), unsafe), "Division by zero error@6");
    EXPECT_EQ(Parsed(xstring("1 +"), unsafe), "Unexpected EOS after + in expression@3");
}

TEST(ExpressionParser, EveryLevelIsAnEntry)
{
    using Level = void (ExpressionParser::*)(LSLiteral&);
    struct LevelRow
    {
        Level m_level;
        const char* m_text;
        const char* m_expected;
    };
    // Each text goes on with the operator of the next looser level, where the level stops.
    const LevelRow rows[] = {
        {&ExpressionParser::ParseAssignmentExpression, "true ? 1 : 2 ;", "int64 1 then ;"},
        {&ExpressionParser::ParseConditionalExpression, "true ? 1 : 2 = 3", "int64 1 then ="},
        {&ExpressionParser::ParseLogicalOrExpression, "true || false ? 1 : 2", "bool true then ?"},
        {&ExpressionParser::ParseLogicalAndExpression, "true && false || 1", "bool false then ||"},
        {&ExpressionParser::ParseBitwiseOrExpression, "1 | 2 ^ 1 && 1", "int64 3 then &&"},
        {&ExpressionParser::ParseBitwiseExOrExpression, "1 ^ 3 & 2 | 1", "int64 3 then |"},
        {&ExpressionParser::ParseBitwiseAndExpression, "3 & 2 ^ 1", "int64 2 then ^"},
        {&ExpressionParser::ParseEqualityExpression, "1 == 1 & 1", "bool true then &"},
        {&ExpressionParser::ParseRelationalExpression, "1 < 2 == true", "bool true then =="},
        {&ExpressionParser::ParseShiftExpression, "1 << 1 < 3", "int64 2 then <"},
        {&ExpressionParser::ParseAdditiveExpression, "1 + 2 << 1", "int64 3 then <<"},
        {&ExpressionParser::ParseMultiplicativeExpression, "2 * 3 + 1", "int64 6 then +"},
        {&ExpressionParser::ParsePowerExpression, "2 ^^ 3 * 2", "int64 8 then *"},
        {&ExpressionParser::ParseUnaryExpression, "-2 ^^ 2", "int64 -2 then ^^"},
        {&ExpressionParser::ParsePostFixExpression, "'abc'[0] + 'a'", "char a then +"},
        {&ExpressionParser::ParsePrimaryExpression, "'abc'[0]", "string abc then ["},
        {&ExpressionParser::ParsePrimaryIdentifierExpression, "len('ab')[0]", "int64 2 then ["},
    };
    for (const LevelRow& row : rows)
        EXPECT_EQ(Parsed(xstring(row.m_text),
                         [&](ExpressionParser& parser)
                         {
                             LSLiteral literal;
                             (parser.*row.m_level)(literal);
                             return LiteralText(literal) + " then " + TokenText(parser.m_token);
                         }),
                  row.m_expected);
}

TEST(ExpressionParser, FilesAndLinesAreUnknown)
{
    const ExpressionParser parser;
    xstring filename("untouched");
    ssize_t lineNumber = 7;
    EXPECT_FALSE(parser.GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber));
    EXPECT_EQ(StdString(filename), "untouched");
    EXPECT_EQ(lineNumber, 7);
}

namespace
{

struct TypedRow
{
    const char* m_type;
    const char* m_text;
    const char* m_exact;
    const char* m_lossy; ///< Null for the same.
};

std::string Typed(const std::string& type, const char* text, bool allowDataLoss)
{
    // clang-format off
    return Parsed(xstring(text), [&](ExpressionParser& p) -> std::string {
        const bool loss = allowDataLoss;
        if (type == "bool")    return p.ParseBool(loss) ? "true" : "false";
        if (type == "int8")    return std::to_string(p.ParseInt8(loss));
        if (type == "int16")   return std::to_string(p.ParseInt16(loss));
        if (type == "int32")   return std::to_string(p.ParseInt32(loss));
        if (type == "int64")   return std::to_string(p.ParseInt64(loss));
        if (type == "uint8")   return std::to_string(p.ParseUInt8(loss));
        if (type == "uint16")  return std::to_string(p.ParseUInt16(loss));
        if (type == "uint32")  return std::to_string(p.ParseUInt32(loss));
        if (type == "uint64")  return std::to_string(p.ParseUInt64(loss));
        if (type == "float32") return StdString(ToString(static_cast<double>(p.ParseFloat32(loss))));
        if (type == "float64") return StdString(ToString(p.ParseFloat64(loss)));
        if (type == "char")    return std::string(1, p.ParseChar(loss));
        return StdString(p.ParseString(loss));
    });
    // clang-format on
}

} // namespace

TEST(ExpressionParser, TypedFamily)
{
    // clang-format off
    const TypedRow rows[] = {
        {"bool",    "1 < 2",       "true", nullptr},
        {"bool",    "1 ;",         "No implicit conversion from int64 to bool@2", "true"},
        {"int8",    "100 + 27",    "127", nullptr},
        {"int8",    "200",         "No implicit conversion from value 200 to int8@3", "-56"},
        {"int16",   "40000",       "No implicit conversion from value 40000 to int16@5", "-25536"},
        {"int32",   "2147483648",  "No implicit conversion from value 2147483648 to int32@10",
                                   "-2147483648"},
        {"int64",   "5",           "5", nullptr},
        {"int64",   "5.5",         "No implicit conversion from float64 to int64@3", "5"},
        {"uint8",   "-1",          "No implicit conversion from value -1 to uint8@2", "255"},
        {"uint16",  "65536",       "No implicit conversion from value 65536 to uint16@5", "0"},
        {"uint32",  "4294967296",  "No implicit conversion from value 4294967296 to uint32@10", "0"},
        {"uint64",  "-1",          "18446744073709551615", nullptr},
        {"float32", "0.1",         "0.10000000149011612", nullptr},
        {"float64", "1",           "1", nullptr},
        {"float64", "true",        "No implicit conversion from bool to float64@4", "1"},
        {"string",  "'a' + 'b'",   "ab", nullptr},
        {"string",  "42",          "No implicit conversion from int64 to string@2", "42"},
        {"int64",   "1/0",         "Division by zero error@3", nullptr},
        {"int64",   "1 = 2",       "Can't assign to int64 r-value@5", nullptr},
        {"bool",    "",            "Unexpected EOS after EOS in expression@0", nullptr},
        {"char",    "'x'",         "x", nullptr},
        {"char",    "'xy'",        "Expected character when read EOS@4", nullptr},
        {"char",    "'' ;",        "Expected character when read ;@3", nullptr},
        {"char",    "65",          "A", nullptr},
        {"char",    "128",         "No implicit conversion from value 128 to char@3", "\x80"},
        {"char",    "'abc'[1]",    "b", nullptr},
        {"char",    "1.5",         "No conversion from float64 to char@3", nullptr},
    };
    // clang-format on
    for (const TypedRow& row : rows)
    {
        SCOPED_TRACE(std::string(row.m_type) + ": " + row.m_text);
        const char* const lossy = row.m_lossy == nullptr ? row.m_exact : row.m_lossy;
        EXPECT_EQ(Typed(row.m_type, row.m_text, /*allowDataLoss=*/false), row.m_exact);
        EXPECT_EQ(Typed(row.m_type, row.m_text, /*allowDataLoss=*/true), lossy);
    }
}

} // namespace telv::expression
