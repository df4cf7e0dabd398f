// SPDX-License-Identifier: MIT
// The values of tokens, and decoding of quoted strings.
#include "ScannerSupport.h"
#include <gtest/gtest.h>

namespace telv::scanner
{

namespace
{

const std::string s_inToken = " at Core/tlMacroExpander/src/LSToken";
const std::string s_inStringExt = " at Core/tlUtils/StringExt";

std::string LiteralString(LSToken token)
{
    xstring out("what was there");
    token.GetLiteralString(out);
    return Str(out);
}

LSToken MakeToken(EToken type, const char* text)
{
    return LSToken(type, SubString(text));
}

std::string Unstringified(const std::string& text)
{
    return Written([&](xostream& os) { UnstringifyQuotedString(View(text), os); });
}

} // namespace

TEST(TokenValue, LiteralStrings)
{
    const struct
    {
        const char* m_text;
        std::string m_value;
    } rows[] = {
        {"\"\"", ""},
        {"''", ""},
        {"\"abc\"", "abc"},
        {"'a\"b'", "a\"b"},
        {"\"a'b\"", "a'b"},
        {"\"\\a\\b\\f\\n\\r\\t\\v\\\\\\'\\\"\\?\"", "\a\b\f\n\r\t\v\\'\"?"},
        {"'x\\0y'", std::string("x\0y", 3)},
        {"r\"a\\b\\\\\"", "a\\b\\\\"},
        {"R'\\'", "\\"},
        {"r''", ""},
        {"\"\xc3\xa4\"", "\xc3\xa4"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(LiteralString(FirstToken(row.m_text)), row.m_value) << row.m_text;
}

TEST(TokenValue, LiteralStringOfSomethingElse)
{
    EXPECT_EQ(FailedAssertion([] { LiteralString(FirstToken("abc")); }),
              "Assertion failed: m_type == TOKEN_DOUBLE_QUOTED_STRING || m_type == "
              "TOKEN_SINGLE_QUOTED_STRING" +
                  s_inToken);
    EXPECT_EQ(FailedAssertion([] { LiteralString(MakeToken(TOKEN_DOUBLE_QUOTED_STRING, "'a'")); }),
              "Assertion failed: *s == delimiter" + s_inToken);
}

TEST(TokenValue, LiteralStringHasNoHexEscape)
{
    EXPECT_EQ(FailedAssertion([] { LiteralString(FirstToken("\"\\x41\"")); }),
              "Assertion failed: MapEscapeCharacter(*s, c)" + s_inToken);
}

TEST(TokenValue, LiteralStringWithoutItsEnd)
{
    for (const char* text : {"\"", "\"abc", "\"a\nb\"", "\"a\\", "r\"a"})
    {
        EXPECT_EQ(
            FailedAssertion([&] { LiteralString(MakeToken(TOKEN_DOUBLE_QUOTED_STRING, text)); }),
            "Assertion failed: s && *s != '\\n'" + s_inToken)
            << text;
    }
}

TEST(TokenValue, LiteralCharacterTakesOnlyANarrowedView)
{
    EXPECT_EQ(FailedAssertion([] { FirstToken("'a'").GetLiteralCharacter(); }),
              "Assertion failed: m_str.size() == 1" + s_inToken);
    EXPECT_EQ(FailedAssertion([] { FirstToken("\"a\"").GetLiteralCharacter(); }),
              "Assertion failed: m_type == TOKEN_SINGLE_QUOTED_STRING" + s_inToken);
}

TEST(TokenValue, LiteralCharacterOfANarrowedView)
{
    const auto valueOf = [](const char* text)
    {
        LSToken token = MakeToken(TOKEN_SINGLE_QUOTED_STRING, text);
        token.m_str.m_p2 = token.m_str.m_p1 + 1;
        return token.GetLiteralCharacter();
    };
    EXPECT_EQ(valueOf("'a'"), 'a');
    EXPECT_EQ(valueOf("'\\n'"), '\n');
    EXPECT_EQ(FailedAssertion([&] { valueOf("a''"); }),
              "Assertion failed: *s == '\\''" + s_inToken);
    EXPECT_EQ(FailedAssertion([&] { valueOf("'ab"); }),
              "Assertion failed: *s == '\\''" + s_inToken);
    EXPECT_EQ(FailedAssertion([&] { valueOf("'\t'"); }),
              "Assertion failed: *s != '\\n' && *s != '\\t'" + s_inToken);
    EXPECT_EQ(FailedAssertion([&] { valueOf("'\\q'"); }),
              "Assertion failed: MapEscapeCharacter(*s, c)" + s_inToken);
}

TEST(TokenValue, Int32)
{
    EXPECT_EQ(FirstToken("0").GetLiteralInt32(), 0);
    EXPECT_EQ(FirstToken("0017").GetLiteralInt32(), 17);
    EXPECT_EQ(FirstToken("2147483648").GetLiteralInt32(), -2147483647 - 1);
    EXPECT_EQ(FirstToken("4294967297").GetLiteralInt32(), 1);
}

TEST(TokenValue, Int64)
{
    EXPECT_EQ(FirstToken("9223372036854775807").GetLiteralInt64(), 9223372036854775807L);
    EXPECT_EQ(FirstToken("18446744073709551617").GetLiteralInt64(), 1);
}

TEST(TokenValue, DecimalOfSomethingElse)
{
    const std::string isInteger = "Assertion failed: m_type == TOKEN_INTEGER" + s_inToken;
    EXPECT_EQ(FailedAssertion([] { FirstToken("0x1").GetLiteralInt32(); }), isInteger);
    EXPECT_EQ(FailedAssertion([] { FirstToken("1.5").GetLiteralInt64(); }), isInteger);
    EXPECT_EQ(FailedAssertion([] { MakeToken(TOKEN_INTEGER, "").GetLiteralInt32(); }),
              "Assertion failed: n > 0" + s_inStringExt);
    EXPECT_EQ(FailedAssertion([] { MakeToken(TOKEN_INTEGER, "1a").GetLiteralInt64(); }),
              "Assertion failed: d != -1" + s_inStringExt);
}

TEST(TokenValue, Hex)
{
    EXPECT_EQ(FirstToken("0x123456789").GetLiteralHexInt32(), 0x23456789);
    EXPECT_EQ(FirstToken("0XfF").GetLiteralHexInt32(), 255);
    EXPECT_EQ(FirstToken("0x123456789abcdef01").GetLiteralHexInt64(), 0x23456789abcdef01L);
    EXPECT_EQ(FirstToken("0xffffffffffffffff").GetLiteralHexInt64(), -1);
    EXPECT_EQ(MakeToken(TOKEN_IDENTIFIER, "0x10").GetLiteralHexInt64(), 16);
}

TEST(TokenValue, HexOfSomethingElse)
{
    const struct
    {
        const char* m_text;
        const char* m_condition;
    } rows[] = {
        {"0x", "n > 2"},
        {"1x1", "str[0] == '0'"},
        {"001", "str[1] == 'x' || str[1] == 'X'"},
        {"0xg", "d != -1"},
    };
    for (const auto& row : rows)
    {
        const std::string expected =
            std::string("Assertion failed: ") + row.m_condition + s_inStringExt;
        const LSToken token = MakeToken(TOKEN_HEX_INTEGER, row.m_text);
        EXPECT_EQ(FailedAssertion([&] { token.GetLiteralHexInt32(); }), expected);
        EXPECT_EQ(FailedAssertion([&] { token.GetLiteralHexInt64(); }), expected);
    }
}

TEST(TokenValue, Double)
{
    EXPECT_EQ(FirstToken("12").GetLiteralDouble(), 12.0);
    EXPECT_EQ(FirstToken("0.1").GetLiteralDouble(), 0.1);
    EXPECT_EQ(FirstToken("1e3x").GetLiteralDouble(), 1000.0);
    EXPECT_EQ(FailedAssertion([] { FirstToken("0x1").GetLiteralDouble(); }),
              "Assertion failed: m_type == TOKEN_INTEGER || m_type == TOKEN_FLOAT" + s_inToken);
}

TEST(TokenValue, Unstringify)
{
    const struct
    {
        const char* m_text;
        std::string m_value;
    } rows[] = {
        {"\"\"", ""},
        {"'ab'", "ab"},
        {"\"ab\" ignored \n", "ab"},
        {"'a\"b'", "a\"b"},
        {"\"\\x41\\x0a\\xfF\"", "A\n\xff"},
        {"'\\x00'", std::string(1, '\0')},
        {"\"a\\tb\\\"\"", "a\tb\""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Unstringified(row.m_text), row.m_value) << row.m_text;
}

TEST(TokenValue, UnstringifyErrors)
{
    const struct
    {
        std::string m_text;
        std::string m_error;
    } rows[] = {
        {"", "Expected quoted string @0"},
        {"\"", "Expected quoted string @1"},
        {"abc", "abc isn't a quoted string @0"},
        {"r\"a\"", "r\"a\" isn't a quoted string @0"},
        {" 'a'", " 'a' isn't a quoted string @0"},
        {"\"ab", "Met EOS in middle of string @3"},
        {"'a\nb'", "Met end of line in middle of string @2"},
        {"\"a\\", "Met EOS in middle of string @3"},
        {"\"\\x", "Expected hex character when reached EOS @3"},
        {"\"\\x4", "Expected hex character when reached EOS @4"},
        {"\"\\x4\"", "Expected hex character when read '\"' @4"},
        {"\"\\xg1\"", "Expected hex character when read 'g' @3"},
        {"\"\\q\"", "qis not a valid escape character @2"},
        {"'\\\n'", "\nis not a valid escape character @2"},
    };
    for (const auto& row : rows)
    {
        const SubString text = View(row.m_text);
        EXPECT_EQ(ErrorIn(text, [&] { Unstringified(row.m_text); }), row.m_error) << row.m_text;
    }
}

TEST(TokenValue, UnstringifyKeepsWhatWasWritten)
{
    StringStream stream(4096);
    EXPECT_THROW(UnstringifyQuotedString("\"ab\\tc\\q", stream), LexScannerException);
    EXPECT_EQ(Str(stream.GetString()), "ab\tc");
}

} // namespace telv::scanner
