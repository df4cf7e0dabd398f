// SPDX-License-Identifier: MIT
// Values of tokens, literals of values, conversions and the text helpers: each against its inverse
// or a plain reference.
#include "Checks.h"
#include "PlainOperators.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace telv::fuzz
{
namespace
{

xstring ToX(const std::string& text)
{
    return xstring(SubString(text.data(), text.data() + text.size()));
}

/// Any bytes come back from their literal, which is one token.
void CheckQuoting(const ExactText& text)
{
    xstring literal("dropped");
    MakeDoubleQuotedString(text.View(), literal);
    StringStream decoded(4096);
    UnstringifyQuotedString(literal, decoded);
    FUZZ_REQUIRE(decoded.GetString() == xstring(text.View()));
    SubString s(literal);
    const LSToken token = LsScanToken(s, false);
    FUZZ_REQUIRE(token.m_type == TOKEN_DOUBLE_QUOTED_STRING && s.empty());
    StringStream shown(4096);
    shown << token;
    FUZZ_REQUIRE(shown.GetString() == literal);
}

void CheckCharacter(char c)
{
    xstring literal;
    MakeSingleQuotedLiteralChar(c, literal);
    SubString s(literal);
    FUZZ_REQUIRE(LsScanLiteralCharacter(s) && s.empty());
    StringStream decoded(4096);
    UnstringifyQuotedString(literal, decoded);
    FUZZ_REQUIRE(decoded.GetString() == xstring(1, c));
    char mapped = '?';
    FUZZ_REQUIRE(MapEscapeCharacter(c, mapped) || mapped == c);
    FUZZ_REQUIRE(IsHexDigit(c) == (MapHexDigit(c) >= 0));
}

uint64_t Digits(SubString digits, unsigned base)
{
    uint64_t value = 0;
    for (const char c : ToStd(digits))
        value = value * base + static_cast<unsigned>(MapHexDigit(c));
    return value;
}

void CheckString(const LSToken& token)
{
    const std::string text = ToStd(token.m_str);
    const bool isRaw = text[0] == 'r' || text[0] == 'R';
    xstring value("dropped");
    if (isRaw)
    {
        token.GetLiteralString(value);
        FUZZ_REQUIRE(ToStd(value) == text.substr(2, text.size() - 3));
        return;
    }
    StringStream decoded(4096);
    UnstringifyQuotedString(token.m_str, decoded);
    try
    {
        token.GetLiteralString(value);
        FUZZ_REQUIRE(decoded.GetString() == value);
    }
    catch (const TelvAssertionError&)
    {
        FUZZ_REQUIRE(text.find("\\x") != std::string::npos);
    }
}

void CheckToken(const LSToken& token)
{
    const SubString s = token.m_str;
    switch (token.m_type)
    {
    case TOKEN_INTEGER:
        FUZZ_REQUIRE(static_cast<uint64_t>(token.GetLiteralInt64()) == Digits(s, 10));
        FUZZ_REQUIRE(static_cast<uint32_t>(token.GetLiteralInt32()) ==
                     static_cast<uint32_t>(Digits(s, 10)));
        FUZZ_REQUIRE(token.GetLiteralDouble() == std::strtod(ToStd(s).c_str(), nullptr));
        break;
    case TOKEN_HEX_INTEGER:
    {
        const uint64_t value = Digits(SubString(s.m_p1 + 2, s.m_p2), 16);
        FUZZ_REQUIRE(static_cast<uint64_t>(token.GetLiteralHexInt64()) == value);
        FUZZ_REQUIRE(static_cast<uint32_t>(token.GetLiteralHexInt32()) ==
                     static_cast<uint32_t>(value));
        break;
    }
    case TOKEN_FLOAT:
        FUZZ_REQUIRE(token.GetLiteralDouble() == std::strtod(ToStd(s).c_str(), nullptr));
        break;
    case TOKEN_SINGLE_QUOTED_STRING:
    case TOKEN_DOUBLE_QUOTED_STRING:
        CheckString(token);
        break;
    default:
        break;
    }
}

void CheckTokens(const ExactText& text)
{
    Observe(text,
            [&]
            {
                SubString s = text.View();
                for (;;)
                {
                    const LSToken token = LsScanToken(s, false);
                    if (token.m_type == TOKEN_END)
                        return std::string();
                    CheckToken(token);
                }
            });
    Observe(text,
            [&]
            {
                StringStream decoded(4096);
                UnstringifyQuotedString(text.View(), decoded);
                FUZZ_REQUIRE(decoded.size() <= text.View().size() - 2);
                return std::string();
            });
}

void CheckNumbers(uint64_t bits)
{
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    const std::string text = ToStd(ToString(value));
    const double back = std::strtod(text.c_str(), nullptr);
    FUZZ_REQUIRE(std::isnan(value) ? text == "nan" : back == value);
    FUZZ_REQUIRE(std::isnan(value) || std::signbit(back) == std::signbit(value));
    const auto integer = static_cast<long>(bits);
    FUZZ_REQUIRE(ToStd(ToString(integer)) == std::to_string(integer));
    const auto small = static_cast<int>(bits);
    FUZZ_REQUIRE(ToStd(ToString(small)) == std::to_string(small));
}

std::string ReplaceAll(const std::string& s, const std::string& find, const std::string& by)
{
    std::string result;
    for (size_t i = 0; i < s.size();)
    {
        const bool isHere = !find.empty() && s.compare(i, find.size(), find) == 0;
        result += isHere ? by : s.substr(i, 1);
        i += isHere ? find.size() : 1;
    }
    return result;
}

void CheckText(Decisions& decisions)
{
    const std::string a = decisions.Text(40);
    const std::string b = decisions.Text(3);
    const std::string c = decisions.Text(5);
    xstring replaced = ToX(a);
    StringFindAndReplace(replaced, ToX(b), ToX(c));
    FUZZ_REQUIRE(ToStd(replaced) == ReplaceAll(a, b, c));
    const int order = a.compare(c);
    const int compared = strcmp(SubString(ToX(a)), SubString(ToX(c)));
    FUZZ_REQUIRE((order < 0) == (compared < 0) && (order == 0) == (compared == 0));
    const ExactText text(a);
    for (const char* p = text.View().m_p1; p != text.View().m_p2; ++p)
    {
        const ssize_t line = 1 + std::count(text.View().m_p1, p, '\n');
        FUZZ_REQUIRE(GetLineNumber(text.View(), p) == line);
    }
    FUZZ_REQUIRE(GetLineNumber(text.View(), a.data()) == -1);
    StringStream os(4096);
    WriteSubStringWithAdjustedIndent(os, text.View(), static_cast<long>(decisions.Below(9)));
    os << HumanReadableCharInSubString(text.View());
}

void CheckPaths(Decisions& decisions)
{
    std::string parts[2];
    for (std::string& path : parts)
        for (size_t left = decisions.Below(8); left != 0; --left)
        {
            static constexpr const char* s_words[] = {"/", "..", ".", "a", "b", "\\", "//", "c.h"};
            path += std::string(s_words[decisions.Below(8)]) + (decisions.Below(3) != 0 ? "/" : "");
        }
    xstring from = ToX(parts[0]);
    NormalisePath(from);
    xstring again(from);
    NormalisePath(again);
    FUZZ_REQUIRE(again == from);
    xstring to = ToX(parts[1]);
    NormalisePath(to);
    xstring relative;
    CalcRelativePath(ToX(parts[0]), ToX(parts[1]), relative);
    if (relative == ToX(parts[1]) || relative == to)
        return;
    // An empty path means what "." means.
    xstring joined(from.empty() ? xstring(".") : from);
    joined += "/";
    joined += relative;
    NormalisePath(joined);
    FUZZ_REQUIRE(joined == (to.empty() ? xstring(".") : to));
}

LSLiteral MakeLiteral(Decisions& decisions)
{
    switch (decisions.Below(7))
    {
    case 0:
        return LSLiteral(decisions.Below(2) != 0);
    case 1:
        return LSLiteral(static_cast<long>(decisions.Word()));
    case 2:
        return LSLiteral(static_cast<int>(decisions.Byte()) - 128);
    case 3:
    {
        const uint64_t bits = decisions.Word();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return LSLiteral(value);
    }
    case 4:
        return LSLiteral::MakeChar(static_cast<char>(decisions.Byte()));
    case 5:
        return LSLiteral(ToX(decisions.Text(4)));
    default:
        return LSLiteral();
    }
}

/// The three ways to ask for a conversion agree.
template <class T>
void CheckConversion(const LSLiteral& x, bool (LSLiteral::*convert)(T&, bool, bool) const,
                     bool allowDataLoss)
{
    T quiet{};
    T loud{};
    const bool converts = (x.*convert)(quiet, allowDataLoss, false);
    bool thrown = false;
    try
    {
        FUZZ_REQUIRE((x.*convert)(loud, allowDataLoss, true));
    }
    catch (const LiteralException& e)
    {
        thrown = true;
        FUZZ_REQUIRE(!e.m_description.empty());
    }
    FUZZ_REQUIRE(converts != thrown);
    FUZZ_REQUIRE(!converts || std::memcmp(&quiet, &loud, sizeof quiet) == 0);
}

/// One conversion per input: most of them throw, which takes its time under sanitizers.
void CheckSomeConversion(const LSLiteral& x, Decisions& decisions)
{
    const bool loss = decisions.Below(2) != 0;
    switch (decisions.Below(12))
    {
    case 0:
        return CheckConversion<bool>(x, &LSLiteral::AsBool, loss);
    case 1:
        return CheckConversion<char>(x, &LSLiteral::AsChar, loss);
    case 2:
        return CheckConversion<signed char>(x, &LSLiteral::AsInt8, loss);
    case 3:
        return CheckConversion<short>(x, &LSLiteral::AsInt16, loss);
    case 4:
        return CheckConversion<int>(x, &LSLiteral::AsInt32, loss);
    case 5:
        return CheckConversion<long>(x, &LSLiteral::AsInt64, loss);
    case 6:
        return CheckConversion<unsigned char>(x, &LSLiteral::AsUInt8, loss);
    case 7:
        return CheckConversion<unsigned short>(x, &LSLiteral::AsUInt16, loss);
    case 8:
        return CheckConversion<unsigned int>(x, &LSLiteral::AsUInt32, loss);
    case 9:
        return CheckConversion<unsigned long>(x, &LSLiteral::AsUInt64, loss);
    case 10:
        return CheckConversion<float>(x, &LSLiteral::AsFloat32, loss);
    default:
        return CheckConversion<double>(x, &LSLiteral::AsFloat64, loss);
    }
}

LSLiteral Result(EBinary operation, const LSLiteral& x, const LSLiteral& y)
{
    switch (operation)
    {
    case EBinary::Plus:
        return x + y;
    case EBinary::Minus:
        return x - y;
    case EBinary::Times:
        return x * y;
    case EBinary::Divide:
        return x / y;
    case EBinary::Remainder:
        return x % y;
    case EBinary::Power:
        return Power(x, y);
    case EBinary::ShiftLeft:
        return x << y;
    case EBinary::ShiftRight:
        return x >> y;
    case EBinary::And:
        return x & y;
    case EBinary::Or:
        return x | y;
    case EBinary::ExclusiveOr:
        return x ^ y;
    case EBinary::LogicalAnd:
        return x && y;
    default:
        return x || y;
    }
}

LSLiteral Result(EUnary operation, const LSLiteral& x)
{
    switch (operation)
    {
    case EUnary::Plus:
        return +x;
    case EUnary::Minus:
        return -x;
    case EUnary::Complement:
        return ~x;
    default:
        return LSLiteral(!x);
    }
}

LSLiteral Result(EComparison operation, const LSLiteral& x, const LSLiteral& y)
{
    switch (operation)
    {
    case EComparison::Equal:
        return LSLiteral(IsEqual(x, y));
    case EComparison::Less:
        return LSLiteral(IsLess(x, y));
    default:
        return LSLiteral(IsLessThanOrEqual(x, y));
    }
}

/// The operator gives what the plain one does, or an error where that has none.
template <class Operation, class... Literals>
void CheckOperator(Operation operation, const Literals&... operands)
{
    const std::optional<LSLiteral> expected = PlainResult(operation, operands...);
    std::optional<LSLiteral> result;
    try
    {
        result = Result(operation, operands...);
    }
    catch (const LiteralException& e)
    {
        FUZZ_REQUIRE(!e.m_description.empty());
    }
    FUZZ_REQUIRE(result.has_value() == expected.has_value());
    FUZZ_REQUIRE(!result || IsSame(*result, *expected));
}

/// One character, where the index is one of the text's.
void CheckIndex(const LSLiteral& x, const LSLiteral& index)
{
    const bool isInside = x.m_type == LITERAL_STRING && index.m_type == LITERAL_INT64 &&
                          index.m_int64 >= 0 && index.m_int64 < x.m_string.size();
    try
    {
        const LSLiteral c = x[index];
        FUZZ_REQUIRE(isInside && c == LSLiteral::MakeChar(x.m_string.begin()[index.m_int64]));
    }
    catch (const LiteralException&)
    {
        FUZZ_REQUIRE(!isInside);
    }
}

/// A literal is never assignable.
void CheckAssignment(const LSLiteral& x, const LSLiteral& y)
{
    LSLiteral assigned(x);
    bool thrown = false;
    try
    {
        assigned.Assign(y);
    }
    catch (const LiteralException&)
    {
        thrown = true;
    }
    FUZZ_REQUIRE(thrown && IsSame(assigned, x));
}

void CheckSomeOperator(const LSLiteral& x, const LSLiteral& y, Decisions& decisions)
{
    size_t choice = decisions.Below(s_numBinaries + s_numUnaries + s_numComparisons + 2);
    if (choice < s_numBinaries)
        return CheckOperator(static_cast<EBinary>(choice), x, y);
    choice -= s_numBinaries;
    if (choice < s_numUnaries)
        return CheckOperator(static_cast<EUnary>(choice), x);
    choice -= s_numUnaries;
    if (choice < s_numComparisons)
        return CheckOperator(static_cast<EComparison>(choice), x, y);
    if (choice == s_numComparisons)
        return CheckIndex(x, y);
    CheckAssignment(x, y);
}

void Check(const uint8_t* data, size_t size)
{
    const ExactText text(data, size);
    CheckQuoting(text);
    CheckTokens(text);
    Decisions decisions(data, size);
    CheckCharacter(static_cast<char>(decisions.Byte()));
    CheckNumbers(decisions.Word());
    const LSLiteral x = MakeLiteral(decisions);
    const LSLiteral y = MakeLiteral(decisions);
    CheckSomeConversion(x, decisions);
    CheckSomeOperator(x, y, decisions);
    CheckText(decisions);
    CheckPaths(decisions);
}

} // namespace
} // namespace telv::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    telv::fuzz::Check(data, size);
    return 0;
}
