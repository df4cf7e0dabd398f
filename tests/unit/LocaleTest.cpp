// SPDX-License-Identifier: MIT
// Numbers are read and written alike in every locale, and text is cut alike.
#include "ExpanderSupport.h"
#include "support/CommaLocale.h"
#include "tlMacroExpander/LSLiteral.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlUtils/StringExt.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace telv::expander
{
namespace
{

double Value(const std::string& text)
{
    return DecimalToDouble(SubString(text.data(), text.data() + text.size()));
}

/// Both zeros and all infinities are told apart.
std::uint64_t Bits(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

const std::vector<std::string> s_numbers = {
    "0", "1", "12", "007", "0.1", "1.5", "3.14159265358979", "123456789.123456789", "1e3", "1E+3",
    "1e-3", "1.5e300", "0.0", "0e99", "0.000e-999999999999999999999",
    // the ends of the range
    "1.7976931348623157e308", "1.7976931348623158e308", "1.7976931348623159e308", "1e309", "1e400",
    "1e99999999999999999999999", "2.2250738585072011e-308", "4.9e-324", "2.4703282292062327e-324",
    "2.4703282292062328e-324", "1e-400", "1e-99999999999999999999999", "0.00000001e-320",
    "100000000000000000000e300", "0.0000000000000000000001e330", "0.00000000000000000000001e330",
    // no number, or less of one
    "", "x", "1.", "1.e5", "1e", "1e+", "1x", "1..2", "1e5.5"};

TEST(Locale, NumbersAreReadAsStrtodReadsThem)
{
    for (const std::string& text : s_numbers)
        EXPECT_EQ(Bits(Value(text)), Bits(std::strtod(text.c_str(), nullptr))) << text;
    const std::string zeros(1'000'000, '0');
    EXPECT_EQ(Value("0." + zeros + "15e1000001"), 1.5);
    EXPECT_EQ(Bits(Value("0." + zeros + "15e1000400")), Bits(HUGE_VAL));
    EXPECT_EQ(Value("1" + zeros + "e-1000000"), 1.0);
    EXPECT_EQ(Value("1" + zeros + "e-1000400"), 0.0);
    EXPECT_EQ(Bits(Value("1" + zeros)), Bits(HUGE_VAL));
}

TEST(Locale, RandomNumbersAreReadAsStrtodReadsThem)
{
    std::mt19937_64 random(1);
    const auto digits = [&](size_t most)
    {
        std::string text;
        for (size_t n = random() % most + 1; n > 0; --n)
            text += static_cast<char>('0' + random() % 10);
        return text;
    };
    for (int i = 0; i < 200'000; ++i)
    {
        std::string text = digits(20);
        if (random() % 2 != 0)
            text += "." + digits(24);
        if (random() % 2 != 0)
            text += std::string("e") + (random() % 2 != 0 ? "-" : "") + digits(3);
        ASSERT_EQ(Bits(Value(text)), Bits(std::strtod(text.c_str(), nullptr))) << text;
    }
}

TEST(Locale, NumbersAreReadAlikeInEveryLocale)
{
    std::vector<std::uint64_t> expected;
    for (const std::string& text : s_numbers)
        expected.push_back(Bits(Value(text)));
    const test::CommaLocaleScope scope;
    for (size_t i = 0; i < s_numbers.size(); ++i)
        EXPECT_EQ(Bits(Value(s_numbers[i])), expected[i]) << s_numbers[i];
}

TEST(Locale, NumbersAreWrittenAlikeInEveryLocale)
{
    const test::CommaLocaleScope scope;
    EXPECT_EQ(Str(ToString(1.5)), "1.5");
    EXPECT_EQ(Str(ToString(1234567.25)), "1234567.25");
    EXPECT_EQ(Str(ToString(1.5e300)), "1.5e+300");
    EXPECT_EQ(Str(ToString(1234567L)), "1234567");
    StringStream os(4096);
    os << 2.5;
    os.put(1234567L);
    EXPECT_EQ(Str(os.GetString()), "2.51234567");
}

TEST(Locale, TextsAreExpandedAlikeInEveryLocale)
{
    const char* const rows[][2] = {
        {"@(1.5 + 1)", "2.5"},
        {"@(1.5)", "1.5"},
        {"@(1e-7 * 2)", "2e-07"},
        {"@(string(0.25) + \"x\")", "0.25x"},
        {"@(float(\"1.75\") * 2)", "3.5"},
        {"@let float x = {2.5}x @(x * 2)", "2.5 5"},
        {"@def f(float x) = {x}f(0.5)", "0.5"},
        {"@def float f = {1.25 + 1}f", "2.25"},
        {"@if(1.5 > 1.2){yes}@else{no}", "yes"},
        {"@for(x in [1.5,2.5]){@(x + 1);}", "2.5;3.5;"},
        {"1.5 1,5 \xc3\xa9\xff", "1.5 1,5 \xc3\xa9\xff"},
        {"@(1234567 * 10)", "12345670"},
        {"@(sin(0.5) > 0.479 && sin(0.5) < 0.48)", "true"},
    };
    std::vector<std::string> expected;
    for (const auto& row : rows)
        expected.push_back(ExpansionOf(row[0]));
    EXPECT_EQ(expected[0], rows[0][1]);
    const test::CommaLocaleScope scope;
    for (size_t i = 0; i < std::size(rows); ++i)
        EXPECT_EQ(ExpansionOf(rows[i][0]), expected[i]) << rows[i][0];
}

} // namespace
} // namespace telv::expander
