// Expressions: values, precedence, errors with their places, and where the parser stops.
#include "tlMacroExpander/src/ExpressionParser.h"
#include "support/LiteralText.h"
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <vector>

using namespace telv;

namespace
{

std::string TokenText(const LSToken& token)
{
    StringStream os(4096);
    os << token;
    return StdString(os.GetString());
}

/// "text@offset" of an error in `source`.
std::string PlacedError(const LexScannerException& e, SubString source)
{
    return StdString(e.m_description) + "@" + std::to_string(e.m_pos - source.begin());
}

/// Runs `parse` on a parser of `text`: its answer, or the error with its place, or the error of a
/// value that came out without one.
template <class Parse>
std::string Parsed(const xstring& text, const Parse& parse)
{
    ExpressionParser parser;
    try
    {
        parser.Init(text);
        return parse(parser);
    }
    catch (const LexScannerException& e)
    {
        return PlacedError(e, text);
    }
    catch (const LiteralException& e)
    {
        return "unplaced: " + ErrorText(e);
    }
}

/// Kind and value of an expression, then the token that the parser stopped at when it is not the
/// end of the text.
std::string Evaluate(const xstring& text)
{
    return Parsed(text,
                  [](ExpressionParser& parser)
                  {
                      LSLiteral literal;
                      parser.ParseExpression(literal);
                      const std::string value = LiteralText(literal);
                      if (parser.m_token.m_type == TOKEN_END)
                          return value;
                      return value + " then " + TokenText(parser.m_token);
                  });
}

struct Row
{
    const char* m_text;
    const char* m_expected;
};

void Check(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(Evaluate(xstring(row.m_text)), row.m_expected) << row.m_text;
}

} // namespace

// clang-format off

TEST(ExpressionParser, Literals)
{
    Check({
        {"42",                   "int64 42"},
        {"007",                  "int64 7"},
        {"18446744073709551617", "int64 1"},
        {"0x1F",                 "int64 31"},
        {"0XffFFffFFffFFffFF",   "int64 -1"},
        {"1.5",                  "float64 1.5"},
        {"1e3",                  "float64 1000"},
        {"'a'",                  "string a"},
        {"\"a\\tb\"",            "string a\tb"},
        {"r\"a\\tb\"",           "string a\\tb"},
        {"''",                   "string "},
        {"true",                 "bool true"},
        {"false",                "bool false"},
        {"(5)",                  "int64 5"},
        {"((((5))))",            "int64 5"},
        {" /* a */ 5 // b",      "int64 5"},
    });
}

TEST(ExpressionParser, EveryLevelBindsTighterThanTheOneBefore)
{
    Check({
        {"true ? false || true : false", "bool true"},
        {"true || true && false",        "bool true"},
        {"true && 1 | 2",                "No implicit conversion from int64 to bool@13"},
        {"6 | 1 ^ 7",                    "int64 6"},
        {"6 ^ 2 & 3",                    "int64 4"},
        {"1 & 1 == 1",                   "Incompatible types (int64 and bool) for & operation@10"},
        {"1 < 2 == true",                "bool true"},
        {"true == 1 < 2",                "bool true"},
        {"1 < 1 << 1",                   "bool true"},
        {"1 << 1 + 1",                   "int64 4"},
        {"1 + 2 * 3",                    "int64 7"},
        {"3 * 2 + 1",                    "int64 7"},
        {"(1 + 2) * 3",                  "int64 9"},
        {"2 * 3 ^^ 2",                   "int64 18"},
        {"2 ^^ 3 * 2",                   "int64 16"},
        {"-2 ^^ 2",                      "int64 4"},
        {"2 ^^ -1",                      "int64 0"},
        {"-'abc'[0]",                    "Incompatible type (char) for unary - operation@9"},
        {"1 + 2 < 4 && 2 * 3 == 6",      "bool true"},
        {"1 + 2 * 3 ^^ 2 * 4 + 5",       "int64 78"},
    });
}

TEST(ExpressionParser, OperatorsOfALevelAssociateToTheLeft)
{
    Check({
        {"10 - 4 - 3",     "int64 3"},
        {"100 / 10 / 5",   "int64 2"},
        {"100 / 10 * 5",   "int64 50"},
        {"7 % 4 * 3",      "int64 9"},
        {"2 ^^ 3 ^^ 2",    "int64 64"},
        {"1 << 2 << 3",    "int64 32"},
        {"64 >> 2 << 1",   "int64 32"},
        {"1 == 1 == true", "bool true"},
        {"1 != 2 != true", "bool false"},
        {"1 < 2 < 3",      "Incompatible types (bool and int64) for comparison operation@9"},
        {"12 & 10 & 9",    "int64 8"},
        {"1 | 2 | 4",      "int64 7"},
        {"1 ^ 3 ^ 7",      "int64 5"},
        {"'a' + 'b' + 'c'", "string abc"},
    });
}

TEST(ExpressionParser, Comparisons)
{
    Check({
        {"1 == 1.0",    "bool true"},
        {"1 != 1.0",    "bool false"},
        {"1 < 2",       "bool true"},
        {"2 > 1",       "bool true"},
        {"1 > 1",       "bool false"},
        {"1 <= 1",      "bool true"},
        {"1 >= 2",      "bool false"},
        {"2 >= 2",      "bool true"},
        {"'a' < 'b'",   "bool true"},
        {"'b' >= 'a'",  "bool true"},
        {"'abc'[0] == 97", "bool true"},
        {"true > false",
         "Incompatible types (bool and bool) for comparison operation@12"},
        {"1 > 'a'", // the operands are swapped
         "Incompatible types (string and int64) for comparison operation@7"},
        {"1 >= 'a'",
         "Incompatible types (string and int64) for comparison operation@8"},
        {"1 <= 'a'",
         "Incompatible types (int64 and string) for comparison operation@8"},
    });
}

TEST(ExpressionParser, PrefixOperatorsNest)
{
    Check({
        {"-5",      "int64 -5"},
        {"- -5",    "int64 5"},
        {"+-+5",    "int64 -5"},
        {"!true",   "bool false"},
        {"!!true",  "bool true"},
        {"~~5",     "int64 5"},
        {"-~5",     "int64 6"},
        {"!1",      "No implicit conversion from int64 to bool@2"},
        {"1 - -1",  "int64 2"},
    });
}

TEST(ExpressionParser, TwoMinusSignsAreAShift)
{
    Check({
        {"1--2", "int64 4"},
        {"--5",  "Unexpected -- after EOS in expression@0"},
    });
}

TEST(ExpressionParser, LogicalOperatorsEvaluateBothOperands)
{
    Check({
        {"false && 1/0",    "Division by zero error@12"},
        {"true || 1/0",     "Division by zero error@11"},
        {"false && 5",      "bool false"},
        {"true || 5",       "bool true"},
        {"true && 5",       "No implicit conversion from int64 to bool@9"},
        {"false || true",   "bool true"},
    });
}

TEST(ExpressionParser, ConditionalExpression)
{
    Check({
        {"true ? 1 : 2",                     "int64 1"},
        {"false ? 1 : 2",                    "int64 2"},
        {"false ? 1 : true ? 2 : 3",         "int64 2"},
        {"true ? false ? 1 : 2 : 3",         "int64 2"},
        {"1 < 2 ? 'a' : 5",                  "string a"},
        {"1 ? 2 : 3",                        "No implicit conversion from int64 to bool@9"},
        {"(true ? 1 : 2) + 1",               "int64 2"},
        {"true ? 1 : 2 + 1",                 "int64 1"},
        {"true ? 1 ; 2",                     "Expected : after 1 when read ;@9"},
        {"true ? 1",                         "Expected : after 1 when read EOS@8"},
        {"true ? : 2",                       "Unexpected : after ? in expression@7"},
        {"true ? 1 :: 2",                    "Expected : after 1 when read ::@9"},
    });
}

TEST(ExpressionParser, ErrorsInsideAlternativesComeBeforeABadCondition)
{
    Check({
        {"1 ? 1/0 : 3",     "Division by zero error@8"},
        {"1 ? 2 : 1/0",     "Division by zero error@11"},
        {"1 ? 2 : )",       "Unexpected ) after : in expression@8"},
        {"true ? 1 : 1/0",  "Division by zero error@14"},
        {"false ? 1/0 : 1", "Division by zero error@12"},
        {"1 ? 2 : 3 ? 4 : 5", "No implicit conversion from int64 to bool@17"},
    });
}

TEST(ExpressionParser, AssignmentIsAlwaysAnError)
{
    Check({
        {"1 = 2",            "Can't assign to int64 r-value@5"},
        {"1 += 2",           "Can't assign to int64 r-value@6"},
        {"1 -= 2",           "Can't assign to int64 r-value@6"},
        {"1 *= 2",           "Can't assign to int64 r-value@6"},
        {"1 /= 2",           "Can't assign to int64 r-value@6"},
        {"1 %= 2",           "Can't assign to int64 r-value@6"},
        {"1 &= 2",           "Can't assign to int64 r-value@6"},
        {"1 |= 2",           "Can't assign to int64 r-value@6"},
        {"1 ^= 2",           "Can't assign to int64 r-value@6"},
        {"1 <<= 2",          "Can't assign to int64 r-value@7"},
        {"1 >>= 2",          "Can't assign to int64 r-value@7"},
        {"true &&= false",   "Can't assign to bool r-value@14"},
        {"false ||= true",   "Can't assign to bool r-value@14"},
        {"2 ^^= 2",          "Can't assign to int64 r-value@7"},
        {"'a' += 'b'",       "Can't assign to string r-value@10"},
        {"1.0 = 2",          "Can't assign to float64 r-value@7"},
        {"'abc'[0] = 2",     "Can't assign to char r-value@12"},
    });
}

TEST(ExpressionParser, ErrorsOfTheCompoundOperationComeBeforeTheAssignment)
{
    Check({
        {"1 += 'a'",   "Incompatible types (int64 and string) for + operation@8"},
        {"'a' -= 1",   "Incompatible types (string and int64) for - operation@8"},
        {"'a' *= 1",   "Incompatible types (string and int64) for * operation@8"},
        {"1 /= 0",     "Division by zero error@6"},
        {"1 %= 0",     "Modulo zero error@6"},
        {"1 &= 'a'",   "Incompatible types (int64 and string) for & operation@8"},
        {"1 |= 'a'",   "Incompatible types (int64 and string) for | operation@8"},
        {"1.0 ^= 1",   "Incompatible types (float64 and int64) for ^ operation@8"},
        {"1.0 <<= 1",  "Incompatible types (float64 and int64) for << operation@9"},
        {"1.0 >>= 1",  "Incompatible types (float64 and int64) for >> operation@9"},
        {"true &&= 1", "No implicit conversion from int64 to bool@10"},
        {"1 ||= true", "No implicit conversion from int64 to bool@10"},
        {"0 ^^= -1",   "Calculation 0 ^^ -1 ill defined@8"},
        {"1 = 1/0",    "Division by zero error@7"},
        {"x = 1",      "Unexpected x after EOS in expression@0"},
    });
}

TEST(ExpressionParser, TheRightSideOfAnAssignmentIsAConditional)
{
    Check({
        {"1 = true ? 2 : 3", "Can't assign to int64 r-value@16"},
        {"1 = 2 = 3",        "Can't assign to int64 r-value@6"},
        {"1 + 2 = 3",        "Can't assign to int64 r-value@9"},
        {"true ? 1 : 2 = 3", "Can't assign to int64 r-value@16"},
    });
}

TEST(ExpressionParser, Indexing)
{
    Check({
        {"'abc'[1]",           "char b"},
        {"'abc'[1 + 1]",       "char c"},
        {"('a' + 'b')[1]",     "char b"},
        {"'abc'['abc'[0] == 'a' ? 1 : 0]", "char b"},
        {"'abc'[3]",           "Index 3 out of range [0,3) on string@8"},
        {"'abc'[-1]",          "Index -1 out of range [0,3) on string@9"},
        {"'abc'[0][0]",        "[] not available on char@11"},
        {"5[0]",               "[] not available on int64@4"},
        {"'abc'[1.0]",         "No implicit conversion from float64 to int64@10"},
        {"'abc'[1/0]",         "Division by zero error@9"},
        {"'abc'[1",            "Expected ] after 1 when read EOS@7"},
        {"'abc'[]",            "Unexpected ] after [ in expression@6"},
    });
}

TEST(ExpressionParser, PostfixFormsThatDoNotExist)
{
    Check({
        {"1 .x",    "Dot operator currently not supported@2"},
        {"'a'.b",   "Dot operator currently not supported@3"},
        {"(1)(2)",  "Function application currently not supported@3"},
        {"true(1)", "Function application currently not supported@4"},
        {"f(1)",    "Unexpected f after EOS in expression@0"},
    });
}

TEST(ExpressionParser, SyntaxErrorsNameBothTokens)
{
    Check({
        {"",        "Unexpected EOS after EOS in expression@0"},
        {"   ",     "Unexpected EOS after EOS in expression@3"},
        {")",       "Unexpected ) after EOS in expression@0"},
        {"1 +",     "Unexpected EOS after + in expression@3"},
        {"1 + * 2", "Unexpected * after + in expression@4"},
        {"(1",      "Expected ) after 1 when read EOS@2"},
        {"(1;",     "Expected ) after 1 when read ;@2"},
        {"()",      "Unexpected ) after ( in expression@1"},
        {"{",       "Unexpected { after EOS in expression@0"},
        {"1 + x",   "Unexpected x after + in expression@4"},
    });
}

TEST(ExpressionParser, LexicalErrorsPassThrough)
{
    Check({
        {"1 + 1.x", "Expected digit (not 'x') after decimal point (ie after reading '1.')@6"},
        {"(1 \x01", "Bad token \x01@3"},
    });
}

TEST(ExpressionParser, StopsAtTheFirstTokenThatCannotContinue)
{
    Check({
        {"1 2",      "int64 1 then 2"},
        {"1 )",      "int64 1 then )"},
        {"1 + 2, 3", "int64 3 then ,"},
        {"true x",   "bool true then x"},
        {"1 ++ 2",   "int64 1 then ++"},
        {"1 ! 2",    "int64 1 then !"},
        {"1 ?= 2",   "int64 1 then ?="},
        {"1 : 2",    "int64 1 then :"},
        {"'a' 'b'",  "string a then 'b'"},
    });
}

TEST(ExpressionParser, QuestionsAboutKinds)
{
    Check({
        {"is_bool(true)",       "bool true"},
        {"is_bool(1)",          "bool false"},
        {"is_char('a')",        "bool false"},
        {"is_char('abc'[0])",   "bool true"},
        {"is_int(1)",           "bool true"},
        {"is_int(1.0)",         "bool false"},
        {"is_double(1.0)",      "bool true"},
        {"is_double(1)",        "bool false"},
        {"is_string('a')",      "bool true"},
        {"is_string('abc'[0])", "bool false"},
    });
}

TEST(ExpressionParser, ConversionsLoseData)
{
    Check({
        {"bool(0.0)",    "bool false"},
        {"bool(2)",      "bool true"},
        {"bool('a')",    "No conversion from string to bool@9"},
        {"char(65)",     "char A"},
        {"char(321)",    "char A"},
        {"char('a')",    "char a"},
        {"char('ab')",   "No implicit conversion from value ab to char@10"},
        {"char(1.0)",    "No conversion from float64 to char@9"},
        {"int(2.9)",     "int64 2"},
        {"int(-2.9)",    "int64 -2"},
        {"int(true)",    "int64 1"},
        {"int('abc'[0])", "int64 97"},
        {"int(1e300)",   "int64 9223372036854775807"},
        {"int(-1e300)",  "int64 -9223372036854775808"},
        {"int((-8) ^^ 0.5)", "int64 0"},
        {"int('1')",     "No conversion from string to int64@8"},
        {"double(2)",    "float64 2"},
        {"double(true)", "float64 1"},
        {"double('a')",  "No conversion from string to float64@11"},
        {"string(42)",   "string 42"},
        {"string(true)", "string true"},
        {"string(0.5)",  "string 0.5"},
        {"string('abc'[1])", "string b"},
        {"string('a') + string(1)", "string a1"},
    });
}

TEST(ExpressionParser, Length)
{
    Check({
        {"len('')",         "int64 0"},
        {"len('a')",        "int64 1"},
        {"len('abc') + 1",  "int64 4"},
        {"len(1)",          "len() not available on int64@6"},
        {"len('abc'[0])",   "len() not available on char@13"},
        {"len 'a'",         "Expected ( after len when read 'a'@4"},
        {"len",             "Expected ( after len when read EOS@3"},
        {"len('a'",         "Expected ) after 'a' when read EOS@7"},
        {"len()",           "Unexpected ) after ( in expression@4"},
        {"len('a', 'b')",   "Expected ) after 'a' when read ,@7"},
        {"len(1/0)",        "Division by zero error@7"},
    });
}

TEST(ExpressionParser, MathematicalFunctions)
{
    Check({
        {"sin(0)",      "float64 0"},
        {"cos(0)",      "float64 1"},
        {"tan(0.0)",    "float64 0"},
        {"exp(0)",      "float64 1"},
        {"log(1)",      "float64 0"},
        {"log(0)",      "Can't take log of value 0@6"},
        {"log(-1.5) ;", "Can't take log of value -1.5@10"},
        {"sin('a')",    "No conversion from string to float64@7"},
        {"sin(true)",   "No implicit conversion from bool to float64@8"},
        {"exp 1",       "Expected ( after exp when read 1@4"},
        {"cos(0",       "Expected ) after 0 when read EOS@5"},
    });
}

// clang-format on

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

namespace
{

std::string Repeated(const char* part, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += part;
    return text;
}

xstring ToXString(const std::string& text)
{
    return xstring(text.data(), text.data() + text.size());
}

} // namespace

TEST(ExpressionParser, DeepNestingWorksWhileThereIsStack)
{
    const int depth = 1000;
    EXPECT_EQ(Evaluate(ToXString(Repeated("(", depth) + "5" + Repeated(")", depth))), "int64 5");
    EXPECT_EQ(Evaluate(ToXString(Repeated("- ", depth) + "5")), "int64 5");
    EXPECT_EQ(Evaluate(ToXString(Repeated("false ? 1 : ", depth) + "5")), "int64 5");
    EXPECT_EQ(Evaluate(ToXString(Repeated("true ? ", depth) + "5" + Repeated(" : 1", depth))),
              "int64 5");
    EXPECT_EQ(Evaluate(ToXString(Repeated("1 + (", depth) + "5" + Repeated(")", depth))),
              "int64 1005");
}

TEST(ExpressionParser, LongChainsOfOneLevelNeedNoStack)
{
    EXPECT_EQ(Evaluate(ToXString("0" + Repeated(" + 1", 100000))), "int64 100000");
    EXPECT_EQ(Evaluate(ToXString("1" + Repeated(" ^^ 1", 100000))), "int64 1");
    EXPECT_EQ(Evaluate(ToXString("'a'" + Repeated("[0]", 1) + Repeated(" == 97 == true", 1))),
              "bool true");
}

namespace
{

/// Evaluates `part` repeated a million times: the description of the error, whose place must lie
/// in the text.
std::string EvaluateEndless(const char* part)
{
    const xstring text = ToXString(Repeated(part, 1000000));
    ExpressionParser parser;
    parser.Init(text);
    LSLiteral literal;
    try
    {
        parser.ParseExpression(literal);
        return "no error";
    }
    catch (const ExpansionLimitException& e)
    {
        EXPECT_TRUE(text.begin() <= e.m_pos && e.m_pos <= text.end()) << part;
        return StdString(e.m_description);
    }
    catch (const LexScannerException& e)
    {
        return "wrong class: " + StdString(e.m_description);
    }
}

/// The stack of the main thread may be without bounds: this one is not.
void RunOnOneMebibyte(void* (*function)(void*))
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 1 << 20), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, function, nullptr), 0);
    pthread_attr_destroy(&attributes);
    pthread_join(thread, nullptr);
}

} // namespace

TEST(ExpressionParser, EndlessNestingIsAnErrorInsteadOfACrash)
{
    RunOnOneMebibyte(
        [](void*) -> void*
        {
            for (const char* part : {"(", "- ", "+ ", "!", "~", "1?", "true?1:", "'a'[", "len(",
                                     "sin(", "1+(", "1||1&&1|1^1&1==1<1<<1+1*1^^("})
                EXPECT_EQ(EvaluateEndless(part), "Expansion nested too deeply") << part;
            return nullptr;
        });
}
