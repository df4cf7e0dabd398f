// Expressions without text: a parser of the same grammar as ExpressionParser's on plain values.
//
// Every function is false as soon as something is met that it does not know; only the caller of the
// whole goes back and does it the other way. What the operators do is in DirectOperators.cpp.
#include "tlMacroExpander/src/Expressions/DirectExpression.h"
#include "tlMacroExpander/src/Expressions/ExpressionOperators.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/FastPaths.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/TokenScan.h"
#include <algorithm>
#include <charconv>
#include <cstring>

namespace telv
{

/// A name's text when it is one token, with or without a minus before it.
struct DirectExpression::Substitute
{
    DirectValue m_value;
    bool m_isNegative = false; ///< Begins with a minus sign.
    bool m_isNumber = false;   ///< Ends with a digit.
};

namespace
{

constexpr int s_mostAliases = 8;

bool IsDecimal(SubString text)
{
    constexpr ssize_t most = 18; // cannot overflow
    if (text.empty() || text.size() > most)
        return false;
    for (const char c : text)
        if (c < '0' || c > '9')
            return false;
    return true;
}

int64 DecimalValue(SubString digits)
{
    int64 value = 0;
    for (const char c : digits)
        value = value * 10 + (c - '0');
    return value;
}

} // namespace

DirectExpression::DirectExpression(ExpansionRun& run, VarFrame& frame, SubString text)
    : m_run(run), m_frame(frame), m_whole(text), m_rest(text), m_kind(TOKEN_UNDEF)
{
}

bool DirectExpression::Evaluate()
{
    if (!FastPaths::IsOn(FastPaths::DIRECT_EXPRESSIONS) || s_started || m_whole.empty() ||
        m_frame.m_fileScopeFrame == nullptr)
        return false;
    try
    {
        Advance();
        return ParseExpression(m_result) && m_kind == TOKEN_END;
    }
    catch (const LexScannerException&)
    {
        return false; // expanding will find the error again, at its place
    }
}

/// Counts what expanding would have counted, unless a limit might have been met.
bool DirectExpression::CountSteps()
{
    const ExpansionLimits& limits = m_run.m_limits;
    RunState& state = RunState::Of(m_run);
    if (limits.m_maxOutput != ExpansionLimits::s_none || m_deepest > limits.m_maxDepth - state.m_depth ||
        m_steps > limits.m_maxSteps - state.m_steps)
        return false;
    state.m_steps += m_steps;
    return true;
}

void DirectExpression::Advance()
{
    const LSToken token = LsScanToken(m_rest, /*returnComments=*/false);
    m_kind = token.m_type;
    m_token = token.m_str;
}

bool DirectExpression::Take(EToken kind)
{
    if (m_kind != kind)
        return false;
    Advance();
    return true;
}

bool DirectExpression::ParseExpression(DirectValue& value)
{
    if (++m_nesting > s_mostNesting)
        return false;
    const bool known = ParseConditional(value);
    --m_nesting;
    return known; // an assignment, which is an error, is left as the current token
}

bool DirectExpression::ParseConditional(DirectValue& value)
{
    if (!ParseBinary(value, LEVEL_LOGICAL_OR))
        return false;
    if (m_kind != TOKEN_QUESTION)
        return true;
    Advance();
    DirectValue middle;
    DirectValue last;
    if (!ParseExpression(middle) || !Take(TOKEN_COLON) || ++m_nesting > s_mostNesting ||
        !ParseConditional(last) || value.m_type != LITERAL_BOOL)
        return false;
    --m_nesting;
    value = value.m_bool ? middle : last;
    return true;
}

bool DirectExpression::ParseBinary(DirectValue& value, int level)
{
    if (!ParseUnary(value))
        return false;
    while (m_kind != TOKEN_END)
    {
        const BinaryOperator* const op = FindBinaryOperator(m_kind);
        if (op == nullptr || op->m_level < level)
            return true;
        Advance();
        DirectValue right;
        if (!ParseBinary(right, op->m_level + 1) || !Combine(op->m_token, value, right))
            return false;
    }
    return true;
}

TELV_WRAPS bool DirectExpression::ParseUnary(DirectValue& value)
{
    const EToken prefix = m_kind;
    if (prefix != TOKEN_PLUS && prefix != TOKEN_MINUS && prefix != TOKEN_EXCLAM && prefix != TOKEN_TILDE)
        return ParsePostFix(value);
    Advance();
    if (++m_nesting > s_mostNesting || !ParseUnary(value))
        return false;
    --m_nesting;
    const bool isInt = value.m_type == LITERAL_INT64;
    switch (prefix)
    {
    case TOKEN_PLUS:
        return isInt || value.m_type == LITERAL_FLOAT64;
    case TOKEN_MINUS:
        if (isInt)
            value.m_int64 = static_cast<int64>(0 - static_cast<uint64>(value.m_int64));
        else if (value.m_type == LITERAL_FLOAT64)
            value.m_float64 = -value.m_float64;
        else
            return false;
        return true;
    case TOKEN_EXCLAM:
        value.m_bool = !value.m_bool;
        return value.m_type == LITERAL_BOOL;
    default:
        value.m_int64 = ~value.m_int64;
        return isInt;
    }
}

bool DirectExpression::ParsePostFix(DirectValue& value)
{
    if (!ParsePrimary(value))
        return false;
    while (m_kind == TOKEN_LEFT_SQUARE)
    {
        Advance();
        DirectValue index;
        if (!ParseExpression(index) || !Take(TOKEN_RIGHT_SQUARE) || value.m_type != LITERAL_STRING ||
            index.m_type != LITERAL_INT64 || index.m_int64 < 0 || index.m_int64 >= value.m_text.size())
            return false;
        const char c = value.m_text.m_p1[index.m_int64];
        value = DirectValue();
        value.m_type = LITERAL_CHAR;
        value.m_char = c;
    }
    return m_kind != TOKEN_DOT && m_kind != TOKEN_LEFT_PAREN;
}

bool DirectExpression::ParsePrimary(DirectValue& value)
{
    switch (m_kind)
    {
    case TOKEN_IDENTIFIER:
        return ParseName(value);
    case TOKEN_LEFT_PAREN:
        Advance();
        return ParseExpression(value) && Take(TOKEN_RIGHT_PAREN);
    case TOKEN_INTEGER:
    case TOKEN_HEX_INTEGER:
    case TOKEN_FLOAT:
        return ParseNumber(value);
    case TOKEN_SINGLE_QUOTED_STRING:
    case TOKEN_DOUBLE_QUOTED_STRING:
        return ParseString(value);
    default:
        return false;
    }
}

bool DirectExpression::ParseNumber(DirectValue& value)
{
    const LSToken token(m_kind, m_token);
    value.m_type = LITERAL_INT64;
    if (m_kind == TOKEN_FLOAT)
    {
        value.m_type = LITERAL_FLOAT64;
        value.m_float64 = token.GetLiteralDouble();
    }
    else if (m_kind == TOKEN_HEX_INTEGER)
        value.m_int64 = token.GetLiteralHexInt64();
    else
        value.m_int64 = IsDecimal(m_token) ? DecimalValue(m_token) : token.GetLiteralInt64();
    Advance();
    return true;
}

/// A string whose characters stand for themselves; dollar macros and escapes are not looked at.
bool DirectExpression::ParseString(DirectValue& value)
{
    if (*m_token.m_p1 == 'r' || *m_token.m_p1 == 'R')
        return false;
    value.m_type = LITERAL_STRING;
    value.m_text = SubString(m_token.m_p1 + 1, m_token.m_p2 - 1);
    for (const char c : value.m_text)
        if (c == '$' || c == '\\')
            return false;
    Advance();
    return true;
}

bool DirectExpression::ParseName(DirectValue& value)
{
    const SubString name = m_token;
    const LSVariable* const variable = m_frame.Find(name, name.end());
    if (variable == nullptr)
        return ParseBuiltIn(name, value);
    Substitute found;
    ++m_steps;
    if (!Substituted(*variable, m_frame, 0, found) || !StandsAlone(name.begin(), name.end(), found))
        return false;
    value = found.m_value;
    Advance();
    return true;
}

/// Whether what stands in the place of the name would be read as a token of its own.
bool DirectExpression::StandsAlone(const char* begin, const char* end, const Substitute& found) const
{
    const char before = begin == m_whole.begin() ? ' ' : begin[-1];
    const char behind = end == m_whole.end() ? ' ' : *end;
    if (IsNameCharacter(before) || (before == '-' && found.m_isNegative))
        return false;
    return behind != '.' || !found.m_isNumber;
}

/// What the name of `variable`, used in `frame`, is read as.
bool DirectExpression::Substituted(const LSVariable& variable, VarFrame& frame, int depth,
                                   Substitute& found)
{
    const ELSVariable type = variable.GetType();
    if (type == LSV_MACRO)
    {
        const auto& macro = static_cast<const LSMacroVariable&>(variable);
        if (macro.m_isPython || macro.m_isFnArg || macro.m_returnType != LSV_MACRO ||
            macro.GetNumArgs() != 0 || depth == s_mostAliases)
            return false;
        ++m_steps;
        m_deepest = std::max<ssize_t>(m_deepest, depth + 2);
        VarFrame& context = macro.m_context != nullptr ? *macro.m_context : frame;
        if (context.m_fileScopeFrame == nullptr)
            return false;
        return SubstitutedText(macro.GetSubstitutionString(), context, depth + 1, found);
    }
    const SubString text = static_cast<const LSValueVariable&>(variable).m_value;
    if (type == LSV_BOOL)
        return SubstitutedWord(text, found);
    return (type == LSV_INT || type == LSV_DOUBLE) && SubstitutedNumber(text, found);
}

/// The body of a macro that is a number, or a name that stands for such a text.
bool DirectExpression::SubstitutedText(SubString text, VarFrame& frame, int depth,
                                       Substitute& found)
{
    text.m_p1 = SkipBlanks(text.m_p1, text.m_p2);
    while (text && ClassOf(text.m_p2[-1]) == CHAR_BLANK)
        --text.m_p2;
    if (text.empty())
        return false;
    if (ClassOf(*text.m_p1) > CHAR_RAW_PREFIX)
        return ClassOf(*text.m_p1) == CHAR_DIGIT && SubstitutedNumber(text, found);
    if (SkipNameCharacters(text.m_p1, text.m_p2) != text.m_p2)
        return false;
    const LSVariable* const variable = frame.Find(text, text.end());
    if (variable == nullptr)
        return SubstitutedWord(text, found);
    ++m_steps;
    return Substituted(*variable, frame, depth, found);
}

bool DirectExpression::SubstitutedWord(SubString text, Substitute& found)
{
    found.m_value.m_type = LITERAL_BOOL;
    found.m_value.m_bool = text == "true";
    return found.m_value.m_bool || text == "false";
}

bool DirectExpression::SubstitutedNumber(SubString text, Substitute& found)
{
    DirectValue& value = found.m_value;
    found.m_isNumber = true;
    found.m_isNegative = text && *text.m_p1 == '-';
    if (found.m_isNegative)
        ++text.m_p1;
    if (IsDecimal(text))
    {
        value.m_type = LITERAL_INT64;
        value.m_int64 = found.m_isNegative ? -DecimalValue(text) : DecimalValue(text);
        return true;
    }
    SubString rest = text;
    if (LsScanNumber(rest) != TOKEN_FLOAT || rest)
        return false;
    value.m_type = LITERAL_FLOAT64;
    value.m_float64 = LSToken(TOKEN_FLOAT, text).GetLiteralDouble();
    if (found.m_isNegative)
        value.m_float64 = -value.m_float64;
    return true;
}

bool DirectExpression::GetBool(bool& value)
{
    if (!Evaluate() || m_result.m_type != LITERAL_BOOL || !CountSteps())
        return false;
    value = m_result.m_bool;
    return true;
}

bool DirectExpression::GetText(SubString& text)
{
    return Evaluate() && WriteText(m_result, text) && CountSteps();
}

bool DirectExpression::GetWrittenForm(ELSVariable type, xstring& value)
{
    SubString text;
    if (!Evaluate() || !WriteAs(type, text) || !CountSteps())
        return false;
    value.clear();
    value += text;
    return true;
}

// Out of line: the scratch of an expression is large, and callers nest.

[[gnu::noinline]] bool EvaluateDirectly(VarFrame& frame, SubString text, bool& value)
{
    ExpansionRun* const run = RunState::CurrentRun();
    return run != nullptr && DirectExpression(*run, frame, text).GetBool(value);
}

[[gnu::noinline]] bool EvaluateDirectly(VarFrame& frame, SubString text, ELSVariable type,
                                        xstring& value)
{
    ExpansionRun* const run = RunState::CurrentRun();
    return run != nullptr && DirectExpression(*run, frame, text).GetWrittenForm(type, value);
}

/// The result in the written form of a value of `type`, unless it is of another kind.
bool DirectExpression::WriteAs(ELSVariable type, SubString& text)
{
    DirectValue& result = m_result;
    switch (type)
    {
    case LSV_BOOL:
        return result.m_type == LITERAL_BOOL && WriteText(result, text);
    case LSV_INT:
        return result.m_type == LITERAL_INT64 &&
               result.m_int64 == static_cast<int32>(result.m_int64) && WriteText(result, text);
    case LSV_DOUBLE:
        if (result.m_type == LITERAL_INT64)
            result.m_float64 = static_cast<double>(result.m_int64);
        else if (result.m_type != LITERAL_FLOAT64)
            return false;
        result.m_type = LITERAL_FLOAT64;
        return WriteText(result, text);
    case LSV_STRING:
        return TextOf(result, text);
    default:
        return false;
    }
}

/// The text of a string or a char.
bool DirectExpression::TextOf(const DirectValue& value, SubString& text)
{
    if (value.m_type == LITERAL_STRING)
    {
        text = value.m_text;
        return true;
    }
    if (value.m_type != LITERAL_CHAR)
        return false;
    return Keep(SubString(&value.m_char, &value.m_char + 1), text);
}

/// What any value is written as.
bool DirectExpression::WriteText(const DirectValue& value, SubString& text)
{
    if (value.m_type == LITERAL_BOOL)
    {
        text = value.m_bool ? "true" : "false";
        return true;
    }
    if (value.m_type != LITERAL_INT64 && value.m_type != LITERAL_FLOAT64)
        return TextOf(value, text);
    if (value.m_type == LITERAL_FLOAT64)
        return Keep(ToString(value.m_float64), text);
    char digits[24];
    char* const end = std::to_chars(digits, std::end(digits), value.m_int64).ptr;
    return Keep(SubString(digits, end), text);
}

/// Copies `text` into the scratch, behind what is there.
bool DirectExpression::Keep(SubString text, SubString& kept)
{
    const size_t size = static_cast<size_t>(text.size());
    if (size > static_cast<size_t>(s_scratch - m_used))
        return false;
    char* const room = m_scratch + m_used;
    std::memcpy(room, text.begin(), size);
    m_used += text.size();
    kept = SubString(room, room + text.size());
    return true;
}

} // namespace telv
