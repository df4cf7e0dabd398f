// SPDX-License-Identifier: MIT
// Expressions: values, precedence, errors with their places, and where the parser stops.
#include "ExpressionSupport.h"

namespace telv::expression
{

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

} // namespace telv::expression
