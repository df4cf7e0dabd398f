// SPDX-License-Identifier: MIT
// Expressions: each entry point gives the same twice, a plain parser with one function per level
// agrees with the one under test, brackets around an expression change nothing, and what is thrown
// has a message of the language.
#include "Checks.h"
#include "Mutator.h"
#include "PlainExpressions.h"
#include <algorithm>
#include <iterator>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace telv::fuzz
{

const Start s_start = Start::Expression;

namespace
{

using LevelFunction = void (ExpressionParser::*)(LSLiteral&);

constexpr LevelFunction s_levels[] = {
    &ExpressionParser::ParseExpression,
    &ExpressionParser::UnsafeParseExpression,
    &ExpressionParser::ParseLiteralInBrackets,
    &ExpressionParser::ParseAssignmentExpression,
    &ExpressionParser::ParseConditionalExpression,
    &ExpressionParser::ParseLogicalOrExpression,
    &ExpressionParser::ParseLogicalAndExpression,
    &ExpressionParser::ParseBitwiseOrExpression,
    &ExpressionParser::ParseBitwiseExOrExpression,
    &ExpressionParser::ParseBitwiseAndExpression,
    &ExpressionParser::ParseEqualityExpression,
    &ExpressionParser::ParseRelationalExpression,
    &ExpressionParser::ParseShiftExpression,
    &ExpressionParser::ParseAdditiveExpression,
    &ExpressionParser::ParseMultiplicativeExpression,
    &ExpressionParser::ParsePowerExpression,
    &ExpressionParser::ParseUnaryExpression,
    &ExpressionParser::ParsePostFixExpression,
    &ExpressionParser::ParsePrimaryExpression,
};

constexpr const char* s_messages[] = {
    "Expected ",
    "Unexpected ",
    "No conversion from ",
    "No implicit conversion from ",
    "Incompatible type",
    "Division by zero",
    "Modulo zero error",
    "Calculation ",
    "Can't assign to ",
    "Can't take log of value ",
    "Dot operator currently not supported",
    "Function application currently not supported",
    "Index ",
    "len() not available on ",
    "[] not available on ",
    "Bad token ",
    "Invalid token ",
    "Invalid escape character ",
    "Met ",
    "Expansion nested too deeply",
};

constexpr const char* s_assertions[] = {
    "MapEscapeCharacter(*s, c)",
    "GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber)",
};

void CheckMessage(const Outcome& outcome)
{
    const auto isStart = [&](const char* start) { return outcome.m_text.starts_with(start); };
    const auto isAssertion = [&](const char* text) { return IsAssertion(outcome, text); };
    if (outcome.m_kind == Outcome::Value)
        return;
    FUZZ_REQUIRE(outcome.m_kind == Outcome::Assertion
                     ? std::any_of(std::begin(s_assertions), std::end(s_assertions), isAssertion)
                     : std::any_of(std::begin(s_messages), std::end(s_messages), isStart));
    FUZZ_REQUIRE(outcome.m_kind != Outcome::LexError || outcome.m_offset >= 0);
}

/// The state behind an expression, as text.
std::string ShowEnd(const ExactText& text, const ParserBase& parser)
{
    FUZZ_REQUIRE(text.Holds(parser.m_token.m_str) && text.Holds(parser.m_str));
    FUZZ_REQUIRE(parser.m_token.m_str.m_p2 == parser.m_str.m_p1);
    return " then " + std::to_string(text.OffsetOf(parser.m_token.m_str.m_p1)) + " kind " +
           std::to_string(parser.m_token.m_type);
}

template <class Parse>
Outcome Parsed(const ExactText& text, Parse parse)
{
    const auto once = [&]
    {
        return Observe(text,
                       [&]
                       {
                           ExpressionParser parser;
                           parser.Init(text.View());
                           const std::string value = parse(parser);
                           return value + ShowEnd(text, parser);
                       });
    };
    const Outcome outcome = once();
    FUZZ_REQUIRE(once() == outcome);
    CheckMessage(outcome);
    return outcome;
}

Outcome ParsedLevel(const ExactText& text, LevelFunction level)
{
    return Parsed(text,
                  [&](ExpressionParser& parser)
                  {
                      LSLiteral literal;
                      (parser.*level)(literal);
                      return ShowLiteral(literal);
                  });
}

std::string ShowTyped(ExpressionParser& parser, size_t type, bool loss)
{
    switch (type)
    {
    case 0:
        return std::to_string(parser.ParseBool(loss));
    case 1:
        return std::to_string(parser.ParseInt8(loss));
    case 2:
        return std::to_string(parser.ParseInt16(loss));
    case 3:
        return std::to_string(parser.ParseInt32(loss));
    case 4:
        return std::to_string(parser.ParseInt64(loss));
    case 5:
        return std::to_string(parser.ParseUInt8(loss));
    case 6:
        return std::to_string(parser.ParseUInt16(loss));
    case 7:
        return std::to_string(parser.ParseUInt32(loss));
    case 8:
        return std::to_string(parser.ParseUInt64(loss));
    case 9:
        return ToStd(ToString(static_cast<double>(parser.ParseFloat32(loss))));
    case 10:
        return ToStd(ToString(parser.ParseFloat64(loss)));
    case 11:
        return std::string(1, parser.ParseChar(loss));
    case 12:
        return ToStd(ToString(parser.ParseFloat64Arg()));
    default:
        return ToStd(parser.ParseString(loss));
    }
}

/// A whole text that is one expression is the same expression in brackets.
void CheckInBrackets(const ExactText& text, const Outcome& outcome)
{
    const std::string end = " kind " + std::to_string(TOKEN_END);
    if (outcome.m_kind != Outcome::Value || !outcome.m_text.ends_with(end))
        return;
    const ExactText inBrackets("(\n" + ToStd(text.View()) + "\n)");
    const Outcome again = ParsedLevel(inBrackets, &ExpressionParser::ParseExpression);
    const auto value = [](const Outcome& o)
    { return o.m_text.substr(0, o.m_text.rfind(" then ")); };
    FUZZ_REQUIRE(again.m_kind == Outcome::Value && value(again) == value(outcome));
}

void Check(const ExactText& text, size_t choice)
{
    const Outcome outcome = ParsedLevel(text, &ExpressionParser::ParseExpression);
    CheckInBrackets(text, outcome);
    if (PlainExpressions::CanParse(text.View()))
    {
        const Outcome plain = Observe(text,
                                      [&]
                                      {
                                          PlainExpressions parser;
                                          parser.Init(text.View());
                                          LSLiteral literal;
                                          parser.ParseExpression(literal);
                                          return ShowLiteral(literal) + ShowEnd(text, parser);
                                      });
        FUZZ_REQUIRE(plain == outcome ||
                     (plain.m_kind == Outcome::Assertion && outcome.m_kind == Outcome::Assertion));
    }
    ParsedLevel(text, s_levels[choice % std::size(s_levels)]);
    Parsed(text, [&](ExpressionParser& parser)
           { return ShowTyped(parser, choice % 14, choice / 14 % 2 == 0); });
}

} // namespace
} // namespace telv::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // Which of the other entry points is tried varies with the input without being part of it.
    telv::fuzz::Check(telv::fuzz::ExactText(data, size), size);
    return 0;
}
