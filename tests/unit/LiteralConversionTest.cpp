// SPDX-License-Identifier: MIT
// Every cell of the conversion table, with and without data loss, with exceptions and without.
#include "support/LiteralText.h"
#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace telv;

namespace
{

std::string Text(bool v)
{
    return v ? "true" : "false";
}
std::string Text(char v)
{
    return std::string(1, v);
}
std::string Text(const xstring& v)
{
    return StdString(v);
}
std::string Text(double v)
{
    return StdString(ToString(v));
}
std::string Text(float v)
{
    return StdString(ToString(static_cast<double>(v)));
}
template <class T>
std::string Text(T v)
{
    return std::to_string(v);
}

/// The outcome of one conversion: "= " and the value, or the message.
template <class T>
std::string Outcome(const LSLiteral& x, bool (LSLiteral::*convert)(T&, bool, bool) const,
                    bool allowDataLoss)
{
    std::string thrown;
    T v{};
    try
    {
        EXPECT_TRUE((x.*convert)(v, allowDataLoss, /*throwExceptions=*/true));
        thrown = "= " + Text(v);
    }
    catch (const LiteralException& e)
    {
        thrown = ErrorText(e);
    }
    T w{};
    bool converted = false;
    EXPECT_NO_THROW(converted = (x.*convert)(w, allowDataLoss, /*throwExceptions=*/false));
    EXPECT_EQ(converted, thrown.substr(0, 2) == "= ") << thrown;
    if (converted)
    {
        EXPECT_EQ("= " + Text(w), thrown);
    }
    return thrown;
}

std::string Convert(const LSLiteral& x, const std::string& target, bool allowDataLoss)
{
    // clang-format off
    if (target == "bool")    return Outcome<bool>(x, &LSLiteral::AsBool, allowDataLoss);
    if (target == "char")    return Outcome<char>(x, &LSLiteral::AsChar, allowDataLoss);
    if (target == "int8")    return Outcome<signed char>(x, &LSLiteral::AsInt8, allowDataLoss);
    if (target == "int16")   return Outcome<short>(x, &LSLiteral::AsInt16, allowDataLoss);
    if (target == "int32")   return Outcome<int>(x, &LSLiteral::AsInt32, allowDataLoss);
    if (target == "int64")   return Outcome<long>(x, &LSLiteral::AsInt64, allowDataLoss);
    if (target == "uint8")   return Outcome<unsigned char>(x, &LSLiteral::AsUInt8, allowDataLoss);
    if (target == "uint16")  return Outcome<unsigned short>(x, &LSLiteral::AsUInt16, allowDataLoss);
    if (target == "uint32")  return Outcome<unsigned int>(x, &LSLiteral::AsUInt32, allowDataLoss);
    if (target == "uint64")  return Outcome<unsigned long>(x, &LSLiteral::AsUInt64, allowDataLoss);
    if (target == "float32") return Outcome<float>(x, &LSLiteral::AsFloat32, allowDataLoss);
    if (target == "float64") return Outcome<double>(x, &LSLiteral::AsFloat64, allowDataLoss);
    if (target == "string")  return Outcome<xstring>(x, &LSLiteral::AsString, allowDataLoss);
    // clang-format on
    ADD_FAILURE() << "no such target: " << target;
    return "";
}

LSLiteral Undef()
{
    return LSLiteral();
}

LSLiteral Float(double v)
{
    return LSLiteral(v);
}
LSLiteral Int(long v)
{
    return LSLiteral(v);
}

struct Row
{
    LSLiteral m_source;
    const char* m_target;
    const char* m_exact; ///< Without data loss.
    const char* m_lossy; ///< With; null for the same.
};

void Check(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
    {
        SCOPED_TRACE(LiteralText(row.m_source) + " to " + row.m_target);
        const char* const lossy = row.m_lossy == nullptr ? row.m_exact : row.m_lossy;
        EXPECT_EQ(Convert(row.m_source, row.m_target, /*allowDataLoss=*/false), row.m_exact);
        EXPECT_EQ(Convert(row.m_source, row.m_target, /*allowDataLoss=*/true), lossy);
    }
}

const double s_nan = std::numeric_limits<double>::quiet_NaN();
const double s_infinity = std::numeric_limits<double>::infinity();
const long s_max = std::numeric_limits<long>::max();
const long s_min = std::numeric_limits<long>::min();

} // namespace

// clang-format off

TEST(LiteralConversion, UndefHasNothingToConvert)
{
    Check({
        {Undef(), "bool",    "Expected bool",    nullptr},
        {Undef(), "char",    "Expected char",    nullptr},
        {Undef(), "int8",    "Expected int64",   nullptr},
        {Undef(), "int16",   "Expected int64",   nullptr},
        {Undef(), "int32",   "Expected int64",   nullptr},
        {Undef(), "int64",   "Expected int64",   nullptr},
        {Undef(), "uint8",   "Expected int64",   nullptr},
        {Undef(), "uint16",  "Expected int64",   nullptr},
        {Undef(), "uint32",  "Expected int64",   nullptr},
        {Undef(), "uint64",  "Expected int64",   nullptr},
        {Undef(), "float32", "Expected float32", nullptr},
        {Undef(), "float64", "Expected float64", nullptr},
        {Undef(), "string",  "Expected string",  nullptr},
    });
}

TEST(LiteralConversion, VoidConvertsToNothing)
{
    Check({
        {Void(), "bool",    "No conversion from void to bool",    nullptr},
        {Void(), "char",    "No conversion from void to char",    nullptr},
        {Void(), "int8",    "No conversion from void to int64",   nullptr},
        {Void(), "int16",   "No conversion from void to int64",   nullptr},
        {Void(), "int32",   "No conversion from void to int64",   nullptr},
        {Void(), "int64",   "No conversion from void to int64",   nullptr},
        {Void(), "uint8",   "No conversion from void to int64",   nullptr},
        {Void(), "uint16",  "No conversion from void to int64",   nullptr},
        {Void(), "uint32",  "No conversion from void to int64",   nullptr},
        {Void(), "uint64",  "No conversion from void to int64",   nullptr},
        {Void(), "float32", "No conversion from void to float32", nullptr},
        {Void(), "float64", "No conversion from void to float64", nullptr},
        {Void(), "string",  "No conversion from void to string",  nullptr},
    });
}

TEST(LiteralConversion, BoolIsANumberOrATextOnlyWithLoss)
{
    Check({
        {true,  "bool",    "= true",                                       nullptr},
        {false, "bool",    "= false",                                      nullptr},
        {true,  "char",    "No conversion from bool to char",              nullptr},
        {true,  "int8",    "No implicit conversion from bool to int64",    "= 1"},
        {true,  "int16",   "No implicit conversion from bool to int64",    "= 1"},
        {true,  "int32",   "No implicit conversion from bool to int64",    "= 1"},
        {true,  "int64",   "No implicit conversion from bool to int64",    "= 1"},
        {false, "int64",   "No implicit conversion from bool to int64",    "= 0"},
        {true,  "uint8",   "No implicit conversion from bool to int64",    "= 1"},
        {true,  "uint16",  "No implicit conversion from bool to int64",    "= 1"},
        {true,  "uint32",  "No implicit conversion from bool to int64",    "= 1"},
        {true,  "uint64",  "No implicit conversion from bool to int64",    "= 1"},
        {true,  "float32", "No implicit conversion from bool to float32",  "= 1"},
        {false, "float32", "No implicit conversion from bool to float32",  "= 0"},
        {true,  "float64", "No implicit conversion from bool to float64",  "= 1"},
        {false, "float64", "No implicit conversion from bool to float64",  "= 0"},
        {true,  "string",  "No implicit conversion from bool to string",   "= true"},
        {false, "string",  "No implicit conversion from bool to string",   "= false"},
    });
}

TEST(LiteralConversion, Int64ToOtherKinds)
{
    Check({
        {Int(0),  "bool",    "No implicit conversion from int64 to bool",   "= false"},
        {Int(-2), "bool",    "No implicit conversion from int64 to bool",   "= true"},
        {Int(42), "int64",   "= 42",                                        nullptr},
        {Int(-1), "uint64",  "= 18446744073709551615",                      nullptr},
        {Int(42), "float32", "= 42",                                        nullptr},
        {Int(16777217), "float32", "= 16777216",                            nullptr},
        {Int(42), "float64", "= 42",                                        nullptr},
        {Int(9007199254740993), "float64", "= 9007199254740992",            nullptr},
        {Int(42), "string",  "No implicit conversion from int64 to string", "= 42"},
        {Int(s_min), "string", "No implicit conversion from int64 to string",
                     "= -9223372036854775808"},
    });
}

TEST(LiteralConversion, Int64RangesAreCheckedAtBothEnds)
{
    Check({
        {Int(127),  "char", "= \x7f", nullptr},
        {Int(-128), "char", "= \x80", nullptr},
        {Int(65),   "char", "= A",    nullptr},
        {Int(128),  "char", "No implicit conversion from value 128 to char",  "= \x80"},
        {Int(-129), "char", "No implicit conversion from value -129 to char", "= \x7f"},
        {Int(127),  "int8", "= 127",  nullptr},
        {Int(-128), "int8", "= -128", nullptr},
        {Int(128),  "int8", "No implicit conversion from value 128 to int8",  "= -128"},
        {Int(200),  "int8", "No implicit conversion from value 200 to int8",  "= -56"},
        {Int(-129), "int8", "No implicit conversion from value -129 to int8", "= 127"},
        {Int(32767),  "int16", "= 32767",  nullptr},
        {Int(-32768), "int16", "= -32768", nullptr},
        {Int(32768),  "int16", "No implicit conversion from value 32768 to int16",  "= -32768"},
        {Int(-32769), "int16", "No implicit conversion from value -32769 to int16", "= 32767"},
        {Int(2147483647),  "int32", "= 2147483647",  nullptr},
        {Int(-2147483648), "int32", "= -2147483648", nullptr},
        {Int(2147483648),  "int32", "No implicit conversion from value 2147483648 to int32",
                                    "= -2147483648"},
        {Int(-2147483649), "int32", "No implicit conversion from value -2147483649 to int32",
                                    "= 2147483647"},
        {Int(0),     "uint8", "= 0",   nullptr},
        {Int(255),   "uint8", "= 255", nullptr},
        {Int(256),   "uint8", "No implicit conversion from value 256 to uint8", "= 0"},
        {Int(-1),    "uint8", "No implicit conversion from value -1 to uint8",  "= 255"},
        {Int(65535), "uint16", "= 65535", nullptr},
        {Int(65536), "uint16", "No implicit conversion from value 65536 to uint16", "= 0"},
        {Int(-1),    "uint16", "No implicit conversion from value -1 to uint16",    "= 65535"},
        {Int(4294967295), "uint32", "= 4294967295", nullptr},
        {Int(4294967296), "uint32", "No implicit conversion from value 4294967296 to uint32",
                                    "= 0"},
        {Int(-1),         "uint32", "No implicit conversion from value -1 to uint32",
                                    "= 4294967295"},
    });
}

TEST(LiteralConversion, Float64IsAnIntegerOrATextOnlyWithLoss)
{
    Check({
        {Float(0.0),   "bool", "No implicit conversion from float64 to bool",   "= false"},
        {Float(-0.0),  "bool", "No implicit conversion from float64 to bool",   "= false"},
        {Float(0.25),  "bool", "No implicit conversion from float64 to bool",   "= true"},
        {Float(s_nan), "bool", "No implicit conversion from float64 to bool",   "= true"},
        {Float(2.75),  "char", "No conversion from float64 to char",            nullptr},
        {Float(2.75),  "int64", "No implicit conversion from float64 to int64", "= 2"},
        {Float(-2.75), "int64", "No implicit conversion from float64 to int64", "= -2"},
        {Float(2.75),  "int8",   "No implicit conversion from float64 to int64", "= 2"},
        {Float(200.5), "int8",   "No implicit conversion from float64 to int64", "= -56"},
        {Float(2.75),  "int16",  "No implicit conversion from float64 to int64", "= 2"},
        {Float(2.75),  "int32",  "No implicit conversion from float64 to int64", "= 2"},
        {Float(2.75),  "uint8",  "No implicit conversion from float64 to int64", "= 2"},
        {Float(2.75),  "uint16", "No implicit conversion from float64 to int64", "= 2"},
        {Float(2.75),  "uint32", "No implicit conversion from float64 to int64", "= 2"},
        {Float(2.75),  "uint64", "No implicit conversion from float64 to int64", "= 2"},
        {Float(2.75),  "float32", "= 2.75", nullptr},
        {Float(0.1),   "float32", "= 0.10000000149011612", nullptr},
        {Float(1e300), "float32", "= inf", nullptr},
        {Float(0.1),   "float64", "= 0.1", nullptr},
        {Float(s_nan), "float64", "= nan", nullptr},
        {Float(2.75),  "string", "No implicit conversion from float64 to string", "= 2.75"},
        {Float(6.0),   "string", "No implicit conversion from float64 to string", "= 6"},
    });
}

TEST(LiteralConversion, Float64OutsideInt64SaturatesAndNanIsZero)
{
    const char* const refused = "No implicit conversion from float64 to int64";
    Check({
        {Float(1e300),                  "int64", refused, "= 9223372036854775807"},
        {Float(9223372036854775808.0),  "int64", refused, "= 9223372036854775807"},
        {Float(9223372036854774784.0),  "int64", refused, "= 9223372036854774784"},
        {Float(-9223372036854775808.0), "int64", refused, "= -9223372036854775808"},
        {Float(-1e300),                 "int64", refused, "= -9223372036854775808"},
        {Float(s_infinity),             "int64", refused, "= 9223372036854775807"},
        {Float(-s_infinity),            "int64", refused, "= -9223372036854775808"},
        {Float(s_nan),                  "int64", refused, "= 0"},
        {Float(1e300),                  "int8",  refused, "= -1"},
        {Float(-1.0),                   "uint64", refused, "= 18446744073709551615"},
    });
}

TEST(LiteralConversion, CharIsATextAndWithLossAnInteger)
{
    Check({
        {Char('a'), "bool",    "No conversion from char to bool",            nullptr},
        {Char('a'), "char",    "= a",                                        nullptr},
        {Char('a'), "int8",    "No implicit conversion from char to int64",  "= 97"},
        {Char('a'), "int16",   "No implicit conversion from char to int64",  "= 97"},
        {Char('a'), "int32",   "No implicit conversion from char to int64",  "= 97"},
        {Char('a'), "int64",   "No implicit conversion from char to int64",  "= 97"},
        {Char('\xff'), "int64", "No implicit conversion from char to int64", "= -1"},
        {Char('a'), "uint8",   "No implicit conversion from char to int64",  "= 97"},
        {Char('\xff'), "uint8", "No implicit conversion from char to int64", "= 255"},
        {Char('a'), "uint16",  "No implicit conversion from char to int64",  "= 97"},
        {Char('a'), "uint32",  "No implicit conversion from char to int64",  "= 97"},
        {Char('a'), "uint64",  "No implicit conversion from char to int64",  "= 97"},
        {Char('a'), "float32", "No conversion from char to float32",         nullptr},
        {Char('a'), "float64", "No conversion from char to float64",         nullptr},
        {Char('a'), "string",  "= a",                                        nullptr},
    });
}

TEST(LiteralConversion, StringIsOnlyATextAndWithLossOneCharacter)
{
    Check({
        {String("a"),  "bool",    "No conversion from string to bool",    nullptr},
        {String("a"),  "char",    "No implicit conversion from value a to char", "= a"},
        {String("ab"), "char",    "No implicit conversion from value ab to char", nullptr},
        {String(""),   "char",    "No implicit conversion from value  to char",   nullptr},
        {String("1"),  "int8",    "No conversion from string to int64",   nullptr},
        {String("1"),  "int16",   "No conversion from string to int64",   nullptr},
        {String("1"),  "int32",   "No conversion from string to int64",   nullptr},
        {String("1"),  "int64",   "No conversion from string to int64",   nullptr},
        {String("1"),  "uint8",   "No conversion from string to int64",   nullptr},
        {String("1"),  "uint16",  "No conversion from string to int64",   nullptr},
        {String("1"),  "uint32",  "No conversion from string to int64",   nullptr},
        {String("1"),  "uint64",  "No conversion from string to int64",   nullptr},
        {String("1"),  "float32", "No conversion from string to float32", nullptr},
        {String("1"),  "float64", "No conversion from string to float64", nullptr},
        {String("ab"), "string",  "= ab",                                 nullptr},
        {String(""),   "string",  "= ",                                   nullptr},
    });
}

// clang-format on

TEST(LiteralConversion, TheTruncatedValueIsWrittenBeforeTheRangeIsChecked)
{
    signed char i8 = 1;
    EXPECT_FALSE(Int(200).AsInt8(i8, false, false));
    EXPECT_EQ(i8, -56);
    short i16 = 1;
    EXPECT_FALSE(Int(32768).AsInt16(i16, false, false));
    EXPECT_EQ(i16, -32768);
    int i32 = 1;
    EXPECT_FALSE(Int(4294967298).AsInt32(i32, false, false));
    EXPECT_EQ(i32, 2);
    unsigned char u8 = 1;
    EXPECT_FALSE(Int(-1).AsUInt8(u8, false, false));
    EXPECT_EQ(u8, 255);
    unsigned short u16 = 1;
    EXPECT_FALSE(Int(65538).AsUInt16(u16, false, false));
    EXPECT_EQ(u16, 2);
    unsigned int u32 = 1;
    EXPECT_FALSE(Int(4294967298).AsUInt32(u32, false, false));
    EXPECT_EQ(u32, 2U);
    char c = 'x';
    EXPECT_FALSE(Int(65 + 256).AsChar(c, false, false));
    EXPECT_EQ(c, 'A');
}

TEST(LiteralConversion, TheTruncatedValueIsWrittenAlsoWhenTheCheckThrows)
{
    signed char i8 = 1;
    EXPECT_THROW(Int(200).AsInt8(i8, false, true), LiteralException);
    EXPECT_EQ(i8, -56);
    char c = 'x';
    EXPECT_THROW(Int(65 + 256).AsChar(c, false, true), LiteralException);
    EXPECT_EQ(c, 'A');
}

TEST(LiteralConversion, ARefusedKindLeavesTheTargetAlone)
{
    int i = 7;
    EXPECT_FALSE(LSLiteral(true).AsInt32(i, false, false));
    EXPECT_EQ(i, 7);
    xstring text("old");
    EXPECT_FALSE(Int(5).AsString(text, false, false));
    EXPECT_EQ(StdString(text), "old");
    bool b = true;
    EXPECT_FALSE(Int(0).AsBool(b, false, false));
    EXPECT_TRUE(b);
}

TEST(LiteralConversion, OneArgumentFormsReturnTheValueOrThrow)
{
    EXPECT_TRUE(LSLiteral(true).AsBool(false));
    EXPECT_EQ(Char('q').AsChar(false), 'q');
    EXPECT_EQ(Int(-5).AsInt8(false), -5);
    EXPECT_EQ(Int(-5).AsInt16(false), -5);
    EXPECT_EQ(Int(-5).AsInt32(false), -5);
    EXPECT_EQ(Int(-5).AsInt64(false), -5);
    EXPECT_EQ(Int(5).AsUInt8(false), 5);
    EXPECT_EQ(Int(5).AsUInt16(false), 5);
    EXPECT_EQ(Int(5).AsUInt32(false), 5U);
    EXPECT_EQ(Int(-1).AsUInt64(false), 18446744073709551615UL);
    EXPECT_EQ(Float(0.5).AsFloat32(false), 0.5F);
    EXPECT_EQ(Float(0.1).AsFloat64(false), 0.1);
    EXPECT_EQ(StdString(String("abc").AsString(false)), "abc");
    xstring text;
    Int(42).AsString(text, true);
    EXPECT_EQ(StdString(text), "42");
    EXPECT_THROW(Int(42).AsString(text, false), LiteralException);
}

TEST(LiteralConversion, CoercibleMeansWithoutDataLoss)
{
    EXPECT_TRUE(LSLiteral(true).CoercibleToBool());
    EXPECT_FALSE(Int(1).CoercibleToBool());
    EXPECT_TRUE(Int(65).CoercibleToChar());
    EXPECT_FALSE(String("a").CoercibleToChar());
    EXPECT_TRUE(Int(127).CoercibleToInt8());
    EXPECT_FALSE(Int(128).CoercibleToInt8());
    EXPECT_TRUE(Int(32767).CoercibleToInt16());
    EXPECT_FALSE(Int(32768).CoercibleToInt16());
    EXPECT_TRUE(Int(2147483647).CoercibleToInt32());
    EXPECT_FALSE(Int(2147483648).CoercibleToInt32());
    EXPECT_TRUE(Int(1).CoercibleToInt64());
    EXPECT_FALSE(Float(1).CoercibleToInt64());
    EXPECT_TRUE(Int(255).CoercibleToUInt8());
    EXPECT_FALSE(Int(256).CoercibleToUInt8());
    EXPECT_TRUE(Int(65535).CoercibleToUInt16());
    EXPECT_FALSE(Int(65536).CoercibleToUInt16());
    EXPECT_TRUE(Int(4294967295).CoercibleToUInt32());
    EXPECT_FALSE(Int(4294967296).CoercibleToUInt32());
    EXPECT_TRUE(Int(-1).CoercibleToUInt64());
    EXPECT_FALSE(LSLiteral(true).CoercibleToUInt64());
    EXPECT_TRUE(Int(s_max).CoercibleToFloat32());
    EXPECT_FALSE(LSLiteral(true).CoercibleToFloat32());
    EXPECT_TRUE(Int(1).CoercibleToFloat64());
    EXPECT_FALSE(String("1").CoercibleToFloat64());
    EXPECT_TRUE(Char('a').CoercibleToString());
    EXPECT_FALSE(Int(1).CoercibleToString());
    EXPECT_FALSE(Undef().CoercibleToString());
}

TEST(LiteralConversion, AKindThatDoesNotExistIsAnAssertionFailure)
{
    LSLiteral bad(1);
    bad.m_type = static_cast<ELiteral>(7);
    bool b = false;
    char c = 0;
    long i = 0;
    float f = 0;
    double d = 0;
    xstring s;
    EXPECT_THROW(bad.AsBool(b, true, false), TelvAssertionError);
    EXPECT_THROW(bad.AsChar(c, true, false), TelvAssertionError);
    EXPECT_THROW(bad.AsInt64(i, true, false), TelvAssertionError);
    EXPECT_THROW(bad.AsFloat32(f, true, false), TelvAssertionError);
    EXPECT_THROW(bad.AsFloat64(d, true, false), TelvAssertionError);
    EXPECT_THROW(bad.AsString(s, true, false), TelvAssertionError);
    EXPECT_THROW(TypeToString(static_cast<ELiteral>(7)), TelvAssertionError);
    EXPECT_THROW(TypeToString(static_cast<ELiteral>(-1)), TelvAssertionError);
}

TEST(LiteralMembers, KindsHaveTheirNames)
{
    EXPECT_STREQ(TypeToString(LITERAL_UNDEF), "undef");
    EXPECT_STREQ(TypeToString(LITERAL_VOID), "void");
    EXPECT_STREQ(TypeToString(LITERAL_BOOL), "bool");
    EXPECT_STREQ(TypeToString(LITERAL_INT64), "int64");
    EXPECT_STREQ(TypeToString(LITERAL_FLOAT64), "float64");
    EXPECT_STREQ(TypeToString(LITERAL_CHAR), "char");
    EXPECT_STREQ(TypeToString(LITERAL_STRING), "string");
}

TEST(LiteralMembers, ConstructionFixesTheKind)
{
    EXPECT_EQ(LiteralText(LSLiteral()), "undef");
    EXPECT_EQ(LiteralText(LSLiteral(true)), "bool true");
    EXPECT_EQ(LiteralText(LSLiteral(static_cast<signed char>(-3))), "int64 -3");
    EXPECT_EQ(LiteralText(LSLiteral(static_cast<short>(-3))), "int64 -3");
    EXPECT_EQ(LiteralText(LSLiteral(-3)), "int64 -3");
    EXPECT_EQ(LiteralText(LSLiteral(s_min)), "int64 -9223372036854775808");
    EXPECT_EQ(LiteralText(LSLiteral(0.5)), "float64 0.5");
    EXPECT_EQ(LiteralText(LSLiteral(xstring("abc"))), "string abc");
    EXPECT_EQ(LiteralText(LSLiteral::MakeChar('z')), "char z");
    EXPECT_TRUE(LSLiteral(1) == LITERAL_INT64);
    EXPECT_TRUE(LSLiteral(1) != LITERAL_BOOL);
}

TEST(LiteralMembers, CopiesAreIndependent)
{
    LSLiteral x = String("abc");
    LSLiteral y(x);
    x = LSLiteral(5);
    EXPECT_EQ(LiteralText(x), "int64 5");
    EXPECT_EQ(LiteralText(y), "string abc");
    x = y;
    y = LSLiteral(true);
    EXPECT_EQ(LiteralText(x), "string abc");
}

TEST(LiteralMembers, AssignAlwaysThrows)
{
    const std::pair<LSLiteral, const char*> rows[] = {
        {Undef(), "Can't assign to undef"},
        {Void(), "Can't assign to void"},
        {true, "Can't assign to bool r-value"},
        {Int(1), "Can't assign to int64 r-value"},
        {0.5, "Can't assign to float64 r-value"},
        {Char('a'), "Can't assign to char r-value"},
        {String(""), "Can't assign to string r-value"},
    };
    for (auto [literal, message] : rows)
    {
        LSLiteral target(literal);
        try
        {
            target.Assign(Int(2));
            ADD_FAILURE() << message;
        }
        catch (const LiteralException& e)
        {
            EXPECT_EQ(ErrorText(e), message);
        }
    }
}

TEST(LiteralMembers, LengthIsThatOfATextInBytes)
{
    EXPECT_EQ(String("").GetLength(), 0);
    EXPECT_EQ(String("abc").GetLength(), 3);
    EXPECT_EQ(String("\xc3\xa4").GetLength(), 2);
    const std::pair<LSLiteral, const char*> rows[] = {
        {Undef(), "len() not available on undef"}, {Void(), "len() not available on void"},
        {true, "len() not available on bool"},     {Int(1), "len() not available on int64"},
        {0.5, "len() not available on float64"},   {Char('a'), "len() not available on char"},
    };
    for (const auto& [literal, message] : rows)
    {
        try
        {
            literal.GetLength();
            ADD_FAILURE() << message;
        }
        catch (const LiteralException& e)
        {
            EXPECT_EQ(ErrorText(e), message);
        }
    }
}

TEST(LiteralMembers, IndexingGivesACharOrSaysWhatIsWrong)
{
    struct IndexRow
    {
        LSLiteral m_literal;
        LSLiteral m_index;
        const char* m_expected;
    };
    const IndexRow rows[] = {
        {String("abc"), 0, "char a"},
        {String("abc"), 2, "char c"},
        {String("abc"), 3, "Index 3 out of range [0,3) on string"},
        {String("abc"), -1, "Index -1 out of range [0,3) on string"},
        {String(""), 0, "Index 0 out of range [0,0) on string"},
        {String("abc"), 1.0, "No implicit conversion from float64 to int64"},
        {String("abc"), true, "No implicit conversion from bool to int64"},
        {String("abc"), Char('a'), "No implicit conversion from char to int64"},
        {String("abc"), String("a"), "No conversion from string to int64"},
        {String("abc"), Undef(), "Expected int64"},
        {String("abc"), Int(5000000000), "No implicit conversion from value 5000000000 to int32"},
        {Int(5), 0, "[] not available on int64"},
        {Char('a'), 0, "[] not available on char"},
        {Undef(), String("a"), "[] not available on undef"},
    };
    for (const IndexRow& row : rows)
    {
        std::string outcome;
        try
        {
            outcome = LiteralText(row.m_literal[row.m_index]);
        }
        catch (const LiteralException& e)
        {
            outcome = ErrorText(e);
        }
        EXPECT_EQ(outcome, row.m_expected);
    }
}

TEST(LiteralErrors, ThrowFunctionsComposeTheirMessages)
{
    const std::pair<void (*)(), const char*> rows[] = {
        {[] { ThrowNoConversion("a", "b"); }, "No conversion from a to b"},
        {[] { ThrowNoConversion(LITERAL_CHAR, "b"); }, "No conversion from char to b"},
        {[] { ThrowNoImplicitConversion("a", "b"); }, "No implicit conversion from a to b"},
        {[] { ThrowNoImplicitConversion(LITERAL_VOID, "b"); },
         "No implicit conversion from void to b"},
        {[] { ThrowNoImplicitConversionFromValue<long>(s_min, "b"); },
         "No implicit conversion from value -9223372036854775808 to b"},
        {[] { ThrowNoImplicitConversionFromValue<xstring>(xstring("\"x\""), "b"); },
         "No implicit conversion from value \"x\" to b"},
        {[] { ThrowIncompatibleTypesException(LSLiteral(1), LSLiteral(), "op"); },
         "Incompatible types (int64 and undef) for op operation"},
        {[] { ThrowIncompatibleTypeException(LSLiteral(0.5), "op"); },
         "Incompatible type (float64) for unary op operation"},
    };
    for (const auto& [function, message] : rows)
    {
        try
        {
            function();
            ADD_FAILURE() << message;
        }
        catch (const LiteralException& e)
        {
            EXPECT_EQ(StdString(e.m_description), message);
            EXPECT_EQ(ErrorText(e), message);
        }
    }
}
