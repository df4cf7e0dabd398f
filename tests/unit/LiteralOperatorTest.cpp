// SPDX-License-Identifier: MIT
// The operators over literals: which conversion decides, the values, and every error.
#include "support/LiteralText.h"
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <vector>

using namespace telv;

namespace
{

const long s_max = std::numeric_limits<long>::max();
const long s_min = std::numeric_limits<long>::min();
const double s_nan = std::numeric_limits<double>::quiet_NaN();

using Binary = LSLiteral (*)(const LSLiteral&, const LSLiteral&);
using Unary = LSLiteral (*)(const LSLiteral&);

// clang-format off
const std::map<std::string, Binary> s_binary = {
    {"+",  operator+},  {"-",  operator-},  {"*",  operator*}, {"/", operator/}, {"%", operator%},
    {"^^", Power},      {"<<", operator<<}, {">>", operator>>},
    {"&",  operator&},  {"|",  operator|},  {"^",  operator^},
    {"&&", operator&&}, {"||", operator||},
    {"===", [](const LSLiteral& x, const LSLiteral& y) { return LSLiteral(x == y); }},
    {"==",  [](const LSLiteral& x, const LSLiteral& y) { return LSLiteral(IsEqual(x, y)); }},
    {"<",   [](const LSLiteral& x, const LSLiteral& y) { return LSLiteral(IsLess(x, y)); }},
    {"<=",  [](const LSLiteral& x, const LSLiteral& y) { return LSLiteral(IsLessThanOrEqual(x, y)); }},
};

const std::map<std::string, Unary> s_unary = {
    {"+", operator+}, {"-", operator-}, {"~", operator~},
    {"!", [](const LSLiteral& x) { return LSLiteral(!x); }},
};
// clang-format on

template <class Function>
std::string Outcome(const Function& evaluate)
{
    try
    {
        return LiteralText(evaluate());
    }
    catch (const LiteralException& e)
    {
        return ErrorText(e);
    }
}

struct Row
{
    LSLiteral m_x;
    const char* m_op;
    LSLiteral m_y;
    const char* m_expected; ///< Kind and value, or the message.
};

void Check(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
    {
        const LSLiteral x(row.m_x);
        const LSLiteral y(row.m_y);
        EXPECT_EQ(Outcome([&] { return s_binary.at(row.m_op)(x, y); }), row.m_expected)
            << LiteralText(row.m_x) << " " << row.m_op << " " << LiteralText(row.m_y);
        EXPECT_EQ(LiteralText(x), LiteralText(row.m_x)) << "operands stay";
        EXPECT_EQ(LiteralText(y), LiteralText(row.m_y)) << "operands stay";
    }
}

struct UnaryRow
{
    const char* m_op;
    LSLiteral m_x;
    const char* m_expected;
};

} // namespace

// clang-format off

TEST(LiteralOperator, PlusJoinsTextsAndAddsNumbers)
{
    Check({
        {String("ab"), "+", String("cd"), "string abcd"},
        {String(""),   "+", String(""),   "string "},
        {Char('a'),    "+", Char('b'),    "string ab"},
        {Char('a'),    "+", String("bc"), "string abc"},
        {String("ab"), "+", Char('c'),    "string abc"},
        {1,            "+", 2,            "int64 3"},
        {s_max,        "+", 1,            "int64 -9223372036854775808"},
        {1,            "+", 0.5,          "float64 1.5"},
        {0.5,          "+", 1,            "float64 1.5"},
        {0.5,          "+", 0.5,          "float64 1"},
        {String("x"),  "+", 1,            "Incompatible types (string and int64) for + operation"},
        {1,            "+", Char('a'),    "Incompatible types (int64 and char) for + operation"},
        {true,         "+", 1,            "Incompatible types (bool and int64) for + operation"},
        {LSLiteral(),  "+", Void(),       "Incompatible types (undef and void) for + operation"},
    });
}

TEST(LiteralOperator, MinusAndTimes)
{
    Check({
        {5,     "-", 7,    "int64 -2"},
        {s_min, "-", 1,    "int64 9223372036854775807"},
        {5,     "-", 0.5,  "float64 4.5"},
        {5,     "-", true, "Incompatible types (int64 and bool) for - operation"},
        {String("a"), "-", String("a"), "Incompatible types (string and string) for - operation"},
        {6,     "*", -7,   "int64 -42"},
        {s_max, "*", 2,    "int64 -2"},
        {s_min, "*", -1,   "int64 -9223372036854775808"},
        {4294967296L, "*", 4294967296L, "int64 0"},
        {0.5,   "*", 3,    "float64 1.5"},
        {String("a"), "*", 2, "Incompatible types (string and int64) for * operation"},
    });
}

TEST(LiteralOperator, DivisionAndRemainderCutTowardZero)
{
    Check({
        {7,     "/", 2,    "int64 3"},
        {-7,    "/", 2,    "int64 -3"},
        {7,     "/", -2,   "int64 -3"},
        {7,     "/", -1,   "int64 -7"},
        {7,     "/", 2.0,  "float64 3.5"},
        {7.0,   "/", 2,    "float64 3.5"},
        {7,     "/", 0,    "Division by zero error"},
        {7.0,   "/", 0,    "Division by zero"},
        {7,     "/", 0.0,  "Division by zero"},
        {7,     "/", -0.0, "Division by zero"},
        {s_min, "/", -1,   "int64 -9223372036854775808"},
        {true,  "/", 1,    "Incompatible types (bool and int64) for / operation"},
        {7,     "%", 3,    "int64 1"},
        {-7,    "%", 3,    "int64 -1"},
        {7,     "%", -3,   "int64 1"},
        {7,     "%", 0,    "Modulo zero error"},
        {s_min, "%", -1,   "int64 0"},
        {7.5,   "%", 2,    "Incompatible types (float64 and int64) for % operation"},
    });
}

TEST(LiteralOperator, PowerIsAnInt64OfTwoInt64)
{
    Check({
        {2,    "^^", 10,   "int64 1024"},
        {2,    "^^", 62,   "int64 4611686018427387904"},
        {2,    "^^", 63,   "int64 9223372036854775807"},
        {2,    "^^", 64,   "int64 9223372036854775807"},
        {-2,   "^^", 63,   "int64 -9223372036854775808"},
        {-2,   "^^", 65,   "int64 -9223372036854775808"},
        {2,    "^^", -1,   "int64 0"},
        {0,    "^^", 0,    "int64 1"},
        {2.0,  "^^", 3,    "float64 8"},
        {2,    "^^", 0.5,  "float64 1.4142135623730951"},
        {-8,   "^^", 0.5,  "float64 nan"},
        {0,    "^^", -1,   "Calculation 0 ^^ -1 ill defined"},
        {0.0,  "^^", -0.5, "Calculation 0 ^^ -0.5 ill defined"},
        {-0.0, "^^", -1,   "Calculation -0 ^^ -1 ill defined"},
        {true, "^^", 1,    "Incompatible types (bool and int64) for ^ operation"},
    });
}

TEST(LiteralOperator, ShiftCountsAreTakenModulo64)
{
    Check({
        {1,     "<<", 4,  "int64 16"},
        {1,     "<<", 63, "int64 -9223372036854775808"},
        {1,     "<<", 64, "int64 1"},
        {1,     "<<", -1, "int64 -9223372036854775808"},
        {-1,    "<<", 1,  "int64 -2"},
        {-8,    ">>", 1,  "int64 -4"},
        {s_min, ">>", 63, "int64 -1"},
        {16,    ">>", 68, "int64 1"},
        {1.0,   "<<", 1,  "Incompatible types (float64 and int64) for << operation"},
        {1,     ">>", true, "Incompatible types (int64 and bool) for >> operation"},
    });
}

TEST(LiteralOperator, BitwiseOperatorsTakeInt64Only)
{
    Check({
        {12,  "&", 10, "int64 8"},
        {12,  "|", 10, "int64 14"},
        {12,  "^", 10, "int64 6"},
        {-1,  "&", s_max, "int64 9223372036854775807"},
        {1.0, "&", 1,    "Incompatible types (float64 and int64) for & operation"},
        {1,   "|", Char('a'), "Incompatible types (int64 and char) for | operation"},
        {true, "^", true, "Incompatible types (bool and bool) for ^ operation"},
    });
}

TEST(LiteralOperator, LogicalOperatorsConvertTheSecondOperandOnlyWhenItDecides)
{
    Check({
        {true,  "&&", true,  "bool true"},
        {true,  "&&", false, "bool false"},
        {false, "&&", true,  "bool false"},
        {false, "&&", 5,     "bool false"},
        {true,  "&&", 5,     "No implicit conversion from int64 to bool"},
        {5,     "&&", false, "No implicit conversion from int64 to bool"},
        {String("a"), "&&", true, "No conversion from string to bool"},
        {false, "||", false, "bool false"},
        {false, "||", true,  "bool true"},
        {true,  "||", 5,     "bool true"},
        {false, "||", 0.5,   "No implicit conversion from float64 to bool"},
        {LSLiteral(), "||", true, "Expected bool"},
    });
}

TEST(LiteralOperator, UnaryOperators)
{
    const UnaryRow rows[] = {
        {"!", true,        "bool false"},
        {"!", false,       "bool true"},
        {"!", 1,           "No implicit conversion from int64 to bool"},
        {"!", 1.0,         "No implicit conversion from float64 to bool"},
        {"!", Char('a'),   "No conversion from char to bool"},
        {"!", String("a"), "No conversion from string to bool"},
        {"~", 5,           "int64 -6"},
        {"~", 5.0,         "Incompatible type (float64) for unary ~ operation"},
        {"~", true,        "Incompatible type (bool) for unary ~ operation"},
        {"+", 5,           "int64 5"},
        {"+", 0.5,         "float64 0.5"},
        {"+", Char('a'),   "Incompatible type (char) for unary + operation"},
        {"-", 5,           "int64 -5"},
        {"-", s_min,       "int64 -9223372036854775808"},
        {"-", 0.5,         "float64 -0.5"},
        {"-", 0.0,         "float64 -0"},
        {"-", String("a"), "Incompatible type (string) for unary - operation"},
    };
    for (const UnaryRow& row : rows)
        EXPECT_EQ(Outcome([&] { return s_unary.at(row.m_op)(row.m_x); }), row.m_expected)
            << row.m_op << " " << LiteralText(row.m_x);
}

TEST(LiteralOperator, StrictEqualityNeedsTheSameKindAndNeverThrows)
{
    Check({
        {LSLiteral(), "===", LSLiteral(), "bool true"},
        {Void(),      "===", Void(),      "bool true"},
        {LSLiteral(), "===", Void(),      "bool false"},
        {true,        "===", true,        "bool true"},
        {true,        "===", false,       "bool false"},
        {true,        "===", 1,           "bool false"},
        {5,           "===", 5,           "bool true"},
        {5,           "===", 6,           "bool false"},
        {5,           "===", 5.0,         "bool false"},
        {0.0,         "===", -0.0,        "bool true"},
        {s_nan,       "===", s_nan,       "bool false"},
        {Char('a'),   "===", Char('a'),   "bool true"},
        {Char('a'),   "===", 97,          "bool false"},
        {Char('a'),   "===", String("a"), "bool false"},
        {String("a"), "===", String("a"), "bool true"},
        {String("a"), "===", String("b"), "bool false"},
        {String("a"), "===", String("ab"), "bool false"},
    });
}

TEST(LiteralOperator, EqualityTriesBoolCharTextInt64Float64)
{
    Check({
        {true,        "==", true,        "bool true"},
        {true,        "==", false,       "bool false"},
        {Char('a'),   "==", 97,          "bool true"},
        {97,          "==", Char('a'),   "bool true"},
        {Char('a'),   "==", Char('b'),   "bool false"},
        {Char('a'),   "==", String("a"), "bool true"},
        {String("a"), "==", Char('a'),   "bool true"},
        {Char('a'),   "==", String("ab"), "bool false"},
        {String(""),  "==", String(""),  "bool true"},
        {String("a"), "==", String("A"), "bool false"},
        {5,           "==", 5,           "bool true"},
        {5,           "==", 261,         "bool false"},
        {300,         "==", 300,         "bool true"},
        {5,           "==", 5.0,         "bool true"},
        {0.5,         "==", 0.5,         "bool true"},
        {s_nan,       "==", s_nan,       "bool false"},
        {true,        "==", 1,    "Incompatible types (bool and int64) for comparison operation"},
        {Char('a'),   "==", 300,  "Incompatible types (char and int64) for comparison operation"},
        {Char('a'),   "==", 97.0, "Incompatible types (char and float64) for comparison operation"},
        {String("1"), "==", 1,    "Incompatible types (string and int64) for comparison operation"},
        {LSLiteral(), "==", LSLiteral(), "Incompatible types (undef and undef) for comparison operation"},
    });
}

TEST(LiteralOperator, OrderComparesTextsByBytesAndNumbersByValue)
{
    Check({
        {String("ab"),  "<",  String("abc"), "bool true"},
        {String("abc"), "<",  String("ab"),  "bool false"},
        {String("ab"),  "<",  String("ab"),  "bool false"},
        {String(""),    "<",  String("a"),   "bool true"},
        {String("a"),   "<",  String("\xc3"), "bool true"},
        {String("\xc3"), "<", String("a"),   "bool false"},
        {Char('a'),     "<",  String("b"),   "bool true"},
        {String("ab"),  "<=", String("ab"),  "bool true"},
        {String("abc"), "<=", String("ab"),  "bool false"},
        {String("ab"),  "<=", String("abc"), "bool true"},
        {1,     "<",  2,     "bool true"},
        {2,     "<",  2,     "bool false"},
        {2,     "<=", 2,     "bool true"},
        {3,     "<=", 2,     "bool false"},
        {s_min, "<",  s_max, "bool true"},
        {1,     "<",  1.5,   "bool true"},
        {1.5,   "<=", 1,     "bool false"},
        {s_nan, "<",  1,     "bool false"},
        {1,     "<",  s_nan, "bool false"},
        {s_nan, "<=", s_nan, "bool false"},
        {true,  "<",  false, "Incompatible types (bool and bool) for comparison operation"},
        {true,  "<=", false, "Incompatible types (bool and bool) for comparison operation"},
        {Char('a'), "<", 97, "Incompatible types (char and int64) for comparison operation"},
        {String("1"), "<=", 1, "Incompatible types (string and int64) for comparison operation"},
    });
}

// clang-format on
