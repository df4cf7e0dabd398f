// SPDX-License-Identifier: MIT
// An expression as steps on a stack of values, in the order in which they are taken.
//
// The steps are made from the text as it was written. They stand for what the text means as long as
// what its names stand for cannot merge with their neighbours; what has to be looked at for that is
// kept with each name. Expressions with anything else in them have no steps and are expanded into a
// string, which is then parsed (ExpressionParser.h).
#pragma once

#include "tlMacroExpander/src/Expressions/DirectValue.h"
#include "tlMacroExpander/src/LSToken.h"

namespace telv
{

enum EStep : uint8
{
    STEP_CONSTANT, ///< Pushes `m_value`.
    STEP_LITERAL,  ///< Pushes the text of the string literal that `m_value.m_text` holds.
    STEP_NAME,     ///< Pushes what the name stands for.
    STEP_STR,      ///< Pushes what stands for `@str(name)`.
    STEP_UNBOUND,  ///< The name must not be bound: it is meant as that of a function or constant.
    STEP_UNARY,    ///< Replaces the topmost value.
    STEP_BINARY,   ///< Replaces two by one.
    STEP_INDEX,    ///< The same: text and position.
    STEP_CHOOSE,   ///< Replaces three by one: a bool and two alternatives.
    STEP_CALL      ///< Replaces the topmost value by that of the function `m_function`.
};

enum EBuiltIn : uint8
{
    BUILT_IN_FALSE,
    BUILT_IN_TRUE,
    BUILT_IN_LEN,
    BUILT_IN_IS_BOOL,
    BUILT_IN_IS_CHAR,
    BUILT_IN_IS_INT,
    BUILT_IN_IS_DOUBLE,
    BUILT_IN_IS_STRING,
    BUILT_IN_BOOL,
    BUILT_IN_CHAR,
    BUILT_IN_INT,
    BUILT_IN_DOUBLE,
    BUILT_IN_STRING,
    BUILT_IN_SIN,
    BUILT_IN_COS,
    BUILT_IN_TAN,
    BUILT_IN_EXP,
    BUILT_IN_LOG,
    BUILT_IN_NONE
};

struct ExpressionStep
{
    EStep m_kind;
    EBuiltIn m_function;
    bool m_isBehindMinus; ///< A negative value in the place of the name would merge.
    bool m_isBeforeDot;   ///< A number would.
    EToken m_op;          ///< The operator.
    uint32 m_item;        ///< Of the name in the scanned text, if there is one.
    DirectValue m_value;
    const char* m_nameBegin; ///< In the source; null where there is no name.
    const char* m_nameEnd;

    SubString Name() const { return SubString(m_nameBegin, m_nameEnd); }
    void SetName(SubString name)
    {
        m_nameBegin = name.begin();
        m_nameEnd = name.end();
    }
};

/// Steps of an expression, in memory of fixed size.
class ExpressionSteps
{
public:
    static constexpr int s_most = 48;
    static constexpr int s_mostValues = 12; ///< On the stack at a time.

    /// Makes the steps of `text`; none where it has to be expanded and parsed.
    explicit ExpressionSteps(SubString text);
    ExpressionSteps(const ExpressionSteps&) = delete;
    ExpressionSteps& operator=(const ExpressionSteps&) = delete;

    bool empty() const { return m_count == 0; }
    const ExpressionStep* begin() const { return m_steps; }
    const ExpressionStep* end() const { return m_steps + m_count; }

private:
    class Compiler;

    ExpressionStep m_steps[s_most]; // beyond `m_count` without a value
    int m_count = 0;
};

} // namespace telv
