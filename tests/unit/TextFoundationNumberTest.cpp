// SPDX-License-Identifier: MIT
// Numbers as text and digits as numbers.
#include "TextFoundationSupport.h"
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>

namespace telv::foundation
{

TEST(TextFoundationNumber, Integers)
{
    EXPECT_EQ(Str(ToString(0)), "0");
    EXPECT_EQ(Str(ToString(-17)), "-17");
    EXPECT_EQ(Str(ToString(std::numeric_limits<int>::min())), "-2147483648");
    EXPECT_EQ(Str(ToString(std::numeric_limits<long>::max())), "9223372036854775807");
    EXPECT_EQ(Str(ToString(std::numeric_limits<long>::min())), "-9223372036854775808");
}

struct DoubleRow
{
    double m_value;
    const char* m_text;
};

const DoubleRow s_doubleRows[] = {
    {0.0, "0"},
    {-0.0, "-0"},
    {6.0, "6"},
    {-6.5, "-6.5"},
    {0.1, "0.1"},
    {0.1 + 0.2, "0.30000000000000004"},
    {1.0 / 3.0, "0.3333333333333333"},
    {123.456, "123.456"},
    {100000.0, "100000"},
    {120.0, "120"},
    {0.0001, "0.0001"},
    {0.00012345, "0.00012345"},
    {-0.001, "-0.001"},
    {0.00001, "1e-05"},
    {0.000012345, "1.2345e-05"},
    {1e15, "1000000000000000"},
    {1234567890123456.0, "1234567890123456"},
    {123456789012345.67, "123456789012345.67"},
    {1e16, "1e+16"},
    {-1.5e16, "-1.5e+16"},
    {1.5e300, "1.5e+300"},
    {1e-300, "1e-300"},
    {5e-324, "5e-324"},
    {2.2250738585072014e-308, "2.2250738585072014e-308"},
    {-1.7976931348623157e308, "-1.7976931348623157e+308"},
    {std::numeric_limits<double>::infinity(), "inf"},
    {-std::numeric_limits<double>::infinity(), "-inf"},
    {std::numeric_limits<double>::quiet_NaN(), "nan"},
    {-std::numeric_limits<double>::quiet_NaN(), "nan"},
};

TEST(TextFoundationNumber, Doubles)
{
    for (const DoubleRow& row : s_doubleRows)
        EXPECT_EQ(Str(ToString(row.m_value)), row.m_text);
}

TEST(TextFoundationNumber, StreamsWriteTheSameText)
{
    for (const DoubleRow& row : s_doubleRows)
        EXPECT_EQ(Written([&](xostream& os) { os.put(row.m_value); }), row.m_text);
    EXPECT_EQ(Written([](xostream& os) { os.put(-1); }), "-1");
    EXPECT_EQ(Written([](xostream& os) { os.put(std::numeric_limits<long>::min()); }),
              "-9223372036854775808");
}

TEST(TextFoundationNumber, DoublesReadBackToThemselves)
{
    uint64 bits = 1;
    for (int i = 0; i < 20000; ++i)
    {
        bits = bits * 6364136223846793005u + 1442695040888963407u;
        const double value = std::bit_cast<double>(bits);
        if (std::isfinite(value))
        {
            EXPECT_EQ(std::strtod(ToString(value).c_str(), nullptr), value);
        }
        const double ordinary = static_cast<double>(static_cast<int64>(bits)) * 1e-12;
        EXPECT_EQ(std::strtod(ToString(ordinary).c_str(), nullptr), ordinary);
    }
}

TEST(TextFoundationNumber, DecimalDigitsWrapAround)
{
    EXPECT_EQ(DecimalToInt32("0"), 0);
    EXPECT_EQ(DecimalToInt32("007"), 7);
    EXPECT_EQ(DecimalToInt32("4294967297"), 1);
    EXPECT_EQ(DecimalToInt32("2147483648"), std::numeric_limits<int32>::min());
    EXPECT_EQ(DecimalToInt64("9223372036854775807"), std::numeric_limits<int64>::max());
    EXPECT_EQ(DecimalToInt64("18446744073709551618"), 2);
}

TEST(TextFoundationNumber, HexadecimalDigitsShiftTheHighOnesOut)
{
    EXPECT_EQ(HexToInt32("0x0"), 0);
    EXPECT_EQ(HexToInt32("0X1aF"), 0x1af);
    EXPECT_EQ(HexToInt32("0x123456789"), 0x23456789);
    EXPECT_EQ(HexToInt32("0xffffffff"), -1);
    EXPECT_EQ(HexToInt64("0xFFFFFFFFFFFFFFFF"), -1);
    EXPECT_EQ(HexToInt64("0x123456789abcdef01"), 0x23456789abcdef01);
}

TEST(TextFoundationNumber, BrokenDigitsAreAssertions)
{
    const auto expected = [](const char* condition) { return AssertionIn("StringExt", condition); };
    EXPECT_EQ(FailedAssertion([] { DecimalToInt32(""); }), expected("n > 0"));
    EXPECT_EQ(FailedAssertion([] { DecimalToInt64(SubString()); }), expected("n > 0"));
    EXPECT_EQ(FailedAssertion([] { DecimalToInt32("1a"); }), expected("d != -1"));
    EXPECT_EQ(FailedAssertion([] { DecimalToInt64("-1"); }), expected("d != -1"));
    EXPECT_EQ(FailedAssertion([] { HexToInt32("0x"); }), expected("n > 2"));
    EXPECT_EQ(FailedAssertion([] { HexToInt64("1x2"); }), expected("str[0] == '0'"));
    EXPECT_EQ(FailedAssertion([] { HexToInt32("0b1"); }),
              expected("str[1] == 'x' || str[1] == 'X'"));
    EXPECT_EQ(FailedAssertion([] { HexToInt64("0x1g"); }), expected("d != -1"));
}

} // namespace telv::foundation
