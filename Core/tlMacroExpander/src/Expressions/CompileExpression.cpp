// SPDX-License-Identifier: MIT
// Makes the steps of an expression: a parser of the same grammar as ExpressionParser's.
//
// Every function is false as soon as something is met that has to be expanded, or is wrong; the
// expression then has no steps.
#include "tlMacroExpander/src/Expressions/ExpressionOperators.h"
#include "tlMacroExpander/src/Expressions/ExpressionSteps.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/TokenScan.h"
#include "tlUtils/StringExt.h"
#include <algorithm>

namespace telv
{

namespace
{

constexpr const char* s_builtIns[] = {
    "false", "true", "len",    "is_bool", "is_char", "is_int", "is_double", "is_string", "bool",
    "char",  "int",  "double", "string",  "sin",     "cos",    "tan",       "exp",       "log"};
constexpr ssize_t s_shortestBuiltIn = 3;
constexpr ssize_t s_longestBuiltIn = 9;

EBuiltIn FindBuiltIn(SubString name)
{
    if (name.size() < s_shortestBuiltIn || name.size() > s_longestBuiltIn)
        return BUILT_IN_NONE;
    for (int i = 0; i < BUILT_IN_NONE; ++i)
        if (*name.m_p1 == *s_builtIns[i] && name == s_builtIns[i])
            return static_cast<EBuiltIn>(i);
    return BUILT_IN_NONE;
}

bool Holds(SubString text, char c)
{
    return std::find(text.begin(), text.end(), c) != text.end();
}

/// Whether the characters of a literal can be said: none is behind a backslash for nothing.
bool IsReadable(SubString literal)
{
    if (ClassOf(*literal.m_p1) == CHAR_RAW_PREFIX)
        return true;
    char c = 0;
    for (const char* p = literal.begin(); p != literal.end(); ++p)
        if (*p == '\\' && !MapEscapeCharacter(*++p, c))
            return false;
    return true;
}

} // namespace

class ExpressionSteps::Compiler
{
public:
    Compiler(SubString text, ExpressionSteps& steps) : m_steps(steps), m_whole(text), m_rest(text)
    {
    }

    bool Compile()
    {
        Advance();
        return Expression() && m_kind == TOKEN_END;
    }

private:
    static constexpr int s_mostNesting = 64;

    void Advance()
    {
        const LSToken token = LsScanToken(m_rest, /*returnComments=*/false);
        m_kind = token.m_type;
        m_token = token.m_str;
    }
    bool Take(EToken kind)
    {
        if (m_kind != kind)
            return false;
        Advance();
        return true;
    }

    /// A step that leaves `values` more values on the stack; null where there is no more room.
    ExpressionStep* Add(EStep kind, int values)
    {
        m_values += values;
        if (m_steps.m_count == s_most || m_values > s_mostValues)
            return nullptr;
        ExpressionStep& step = m_steps.m_steps[m_steps.m_count++];
        step = ExpressionStep{};
        step.m_kind = kind;
        return &step;
    }

    bool Expression();
    bool Conditional();
    bool Binary(int level);
    /// One level deeper; false when it would be too deep for this way.
    bool Nest() { return ++m_nesting <= s_mostNesting && HasStackLeft(); }
    bool Unary();
    bool PostFix();
    bool Primary();
    bool Number();
    bool String();
    bool Name();
    bool BuiltIn(EBuiltIn builtIn, SubString name);
    bool Str();

    ExpressionSteps& m_steps;
    SubString m_whole;
    SubString m_rest;            ///< Behind the current token.
    EToken m_kind = TOKEN_UNDEF; ///< Of the current token.
    SubString m_token;           ///< Its characters.
    int m_nesting = 0;
    int m_values = 0; ///< On the stack behind the last step.
};

ExpressionSteps::ExpressionSteps(SubString text)
{
    bool isKnown = false;
    try
    {
        isKnown = Compiler(text, *this).Compile();
    }
    catch (const LexScannerException&)
    {
        // expanding will find the error again, at its place
    }
    catch (const TelvAssertionError&)
    {
        // A literal's: what is expanded before it may have an error of its own.
    }
    if (!isKnown)
        m_count = 0;
}

bool ExpressionSteps::Compiler::Expression()
{
    if (!Nest() || !Conditional())
        return false;
    --m_nesting;
    return true; // an assignment, which is an error, is left as the current token
}

bool ExpressionSteps::Compiler::Conditional()
{
    if (!Binary(LEVEL_LOGICAL_OR))
        return false;
    if (m_kind != TOKEN_QUESTION)
        return true;
    Advance();
    if (!Expression() || !Take(TOKEN_COLON) || !Nest() || !Conditional())
        return false;
    --m_nesting;
    return Add(STEP_CHOOSE, -2) != nullptr;
}

bool ExpressionSteps::Compiler::Binary(int level)
{
    if (!Unary())
        return false;
    while (m_kind != TOKEN_END && m_kind != TOKEN_RIGHT_PAREN)
    {
        const BinaryOperator* const op = FindBinaryOperator(m_kind);
        if (op == nullptr || op->m_level < level)
            return true;
        Advance();
        if (!Binary(op->m_level + 1))
            return false;
        ExpressionStep* const step = Add(STEP_BINARY, -1);
        if (step == nullptr)
            return false;
        step->m_op = op->m_token;
    }
    return true;
}

bool ExpressionSteps::Compiler::Unary()
{
    const EToken prefix = m_kind;
    if (prefix != TOKEN_PLUS && prefix != TOKEN_MINUS && prefix != TOKEN_EXCLAM &&
        prefix != TOKEN_TILDE)
        return PostFix();
    Advance();
    if (!Nest() || !Unary())
        return false;
    --m_nesting;
    ExpressionStep* const step = Add(STEP_UNARY, 0);
    if (step == nullptr)
        return false;
    step->m_op = prefix;
    return true;
}

bool ExpressionSteps::Compiler::PostFix()
{
    if (!Primary())
        return false;
    while (m_kind == TOKEN_LEFT_SQUARE)
    {
        Advance();
        if (!Expression() || !Take(TOKEN_RIGHT_SQUARE) || Add(STEP_INDEX, -1) == nullptr)
            return false;
    }
    return m_kind != TOKEN_DOT && m_kind != TOKEN_LEFT_PAREN;
}

bool ExpressionSteps::Compiler::Primary()
{
    switch (m_kind)
    {
    case TOKEN_IDENTIFIER:
        return Name();
    case TOKEN_LEFT_PAREN:
        Advance();
        return Expression() && Take(TOKEN_RIGHT_PAREN);
    case TOKEN_INTEGER:
    case TOKEN_HEX_INTEGER:
    case TOKEN_FLOAT:
        return Number();
    case TOKEN_SINGLE_QUOTED_STRING:
    case TOKEN_DOUBLE_QUOTED_STRING:
        return String();
    case TOKEN_AT:
        return Str();
    default:
        return false;
    }
}

bool ExpressionSteps::Compiler::Number()
{
    ExpressionStep* const step = Add(STEP_CONSTANT, 1);
    if (step == nullptr)
        return false;
    const LSToken token(m_kind, m_token);
    if (m_kind == TOKEN_FLOAT)
        step->m_value.SetFloat64(token.GetLiteralDouble());
    else if (m_kind == TOKEN_HEX_INTEGER)
        step->m_value.SetInt64(token.GetLiteralHexInt64());
    else
        step->m_value.SetInt64(token.GetLiteralInt64());
    Advance();
    return true;
}

/// A string. Dollar macros would have been replaced in one between double quotes.
bool ExpressionSteps::Compiler::String()
{
    if (Holds(m_token, '$') || !IsReadable(m_token))
        return false;
    const bool isPlain = ClassOf(*m_token.m_p1) != CHAR_RAW_PREFIX && !Holds(m_token, '\\');
    ExpressionStep* const step = Add(isPlain ? STEP_CONSTANT : STEP_LITERAL, 1);
    if (step == nullptr)
        return false;
    step->m_op = m_kind;
    step->m_value.SetText(isPlain ? SubString(m_token.m_p1 + 1, m_token.m_p2 - 1) : m_token);
    Advance();
    return true;
}

/// The text of a value in its place is read as a token of its own unless it merges with a
/// neighbour.
bool ExpressionSteps::Compiler::Name()
{
    const SubString name = m_token;
    const char before = name.begin() == m_whole.begin() ? ' ' : name.begin()[-1];
    if (IsNameCharacter(before))
        return false;
    const EBuiltIn builtIn = FindBuiltIn(name);
    if (builtIn != BUILT_IN_NONE)
        return BuiltIn(builtIn, name);
    ExpressionStep* const step = Add(STEP_NAME, 1);
    if (step == nullptr)
        return false;
    step->SetName(name);
    step->m_isBehindMinus = before == '-';
    step->m_isBeforeDot = name.end() != m_whole.end() && *name.end() == '.';
    Advance();
    return true;
}

bool ExpressionSteps::Compiler::BuiltIn(EBuiltIn builtIn, SubString name)
{
    ExpressionStep* step = Add(STEP_UNBOUND, 0);
    if (step == nullptr)
        return false;
    step->SetName(name);
    Advance();
    if (builtIn <= BUILT_IN_TRUE)
    {
        step = Add(STEP_CONSTANT, 1);
        if (step != nullptr)
            step->m_value.SetBool(builtIn == BUILT_IN_TRUE);
        return step != nullptr;
    }
    if (!Take(TOKEN_LEFT_PAREN) || !Expression() || !Take(TOKEN_RIGHT_PAREN))
        return false;
    step = Add(STEP_CALL, 0);
    if (step != nullptr)
        step->m_function = builtIn;
    return step != nullptr;
}

/// `@str(name)`, with nothing that would be a part of the text beside the name.
bool ExpressionSteps::Compiler::Str()
{
    constexpr ssize_t around = 5; // @str(
    const char* const at = m_token.begin();
    Advance();
    if (m_kind != TOKEN_IDENTIFIER || m_token != "str" || m_token.begin() != at + 1)
        return false;
    Advance();
    if (m_kind != TOKEN_LEFT_PAREN || m_token.end() != at + around)
        return false;
    Advance();
    const SubString name = m_token;
    if (m_kind != TOKEN_IDENTIFIER || name.begin() != at + around)
        return false;
    Advance();
    if (m_kind != TOKEN_RIGHT_PAREN || m_token.begin() != name.end())
        return false;
    ExpressionStep* const step = Add(STEP_STR, 1);
    if (step == nullptr)
        return false;
    step->SetName(name);
    Advance();
    return true;
}

} // namespace telv
