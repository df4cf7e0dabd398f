// SPDX-License-Identifier: MIT
// Takes the steps of an expression. What the operators do is in DirectOperators.cpp.
//
// Every function is false as soon as something is met that it does not know; only the caller of the
// whole goes back and does it the other way.
#include "tlMacroExpander/src/Expressions/DirectExpression.h"
#include "tlMacroExpander/src/Expressions/ExpressionProgram.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/LookupCount.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"
#include <algorithm>
#include <charconv>
#include <cstring>

namespace telv
{

/// A name's text when it is one token, with or without a minus before it.
struct DirectExpression::Substitute
{
    DirectValue m_value = {};
    bool m_isNegative = false; ///< Begins with a minus sign.
    bool m_isNumber = false;   ///< Ends with a digit.
};

namespace
{

constexpr int s_mostAliases = 8;

/// The value of a text that is nothing but digits, few enough not to overflow.
bool ReadDecimal(SubString text, int64& value)
{
    constexpr ssize_t most = 18;
    if (text.empty() || text.size() > most)
        return false;
    value = 0;
    for (const char c : text)
    {
        if (c < '0' || c > '9')
            return false;
        value = value * 10 + (c - '0');
    }
    return true;
}

/// Whether a literal of these characters shows them as they are.
bool IsWrittenAsItIs(SubString text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c >= ' ' && c < 0x7f && c != '"' && c != '\\'; });
}

} // namespace

DirectExpression::DirectExpression(ExpansionRun& run, VarFrame& frame)
    : m_run(run), m_frame(frame), m_names(FrameTree::Names(frame))
{
}

bool DirectExpression::Evaluate(const ExpressionText& text)
{
    if (!FastPaths::IsOn(FastPaths::DIRECT_EXPRESSIONS) || IsCountingLookups() ||
        text.m_text.empty() || m_frame.m_fileScopeFrame == nullptr ||
        RunState::Of(m_run).m_observer != nullptr || (m_run.m_warnings & WARN_UNUSED) != 0)
        return false;
    try
    {
        if (ExpressionProgram* const program = text.m_program)
            return !program->empty() &&
                   Take(program->begin(), program->end(), program->Items(m_names));
        const ExpressionSteps steps(text.m_text);
        return !steps.empty() && Take(steps.begin(), steps.end(), nullptr);
    }
    catch (const LexScannerException&)
    {
        return false; // expanding will find the error again, at its place
    }
    catch (const TelvAssertionError&)
    {
        return false; // a literal's, and what is expanded before it may have an error of its own
    }
}

/// Counts what expanding would have counted, unless a limit might have been met.
bool DirectExpression::CountSteps()
{
    const ExpansionLimits& limits = m_run.m_limits;
    RunState& state = RunState::Of(m_run);
    if (limits.m_maxOutput != ExpansionLimits::s_none ||
        m_deepest > limits.m_maxDepth - state.m_depth ||
        m_steps > limits.m_maxSteps - state.m_steps)
        return false;
    state.m_steps += m_steps;
    return true;
}

bool DirectExpression::Take(const ExpressionStep* step, const ExpressionStep* end,
                            const ScanItem* items)
{
    DirectValue values[ExpressionSteps::s_mostValues]; // each is written before it is read
    DirectValue* top = values;                         // behind the last one
    for (; step != end; ++step)
    {
        switch (step->m_kind)
        {
        case STEP_CONSTANT:
            *top++ = step->m_value;
            break;
        case STEP_NAME:
            if (!PushName(*step, items, *top++))
                return false;
            break;
        case STEP_STR:
            if (!PushStr(*step, items, *top++))
                return false;
            break;
        case STEP_LITERAL:
            if (!PushLiteral(*step, *top++))
                return false;
            break;
        case STEP_UNBOUND:
            if (Find(*step, items) != nullptr)
                return false;
            break;
        case STEP_BINARY:
            --top;
            if (!Combine(step->m_op, top[-1], *top))
                return false;
            break;
        default:
            if (!TakeOther(*step, top))
                return false;
        }
    }
    m_result = values[0];
    return true;
}

bool DirectExpression::TakeOther(const ExpressionStep& step, DirectValue*& top)
{
    switch (step.m_kind)
    {
    case STEP_UNARY:
        return ApplyPrefix(step.m_op, top[-1]);
    case STEP_INDEX:
        --top;
        return ApplyIndex(top[-1], *top);
    case STEP_CHOOSE:
        top -= 2;
        if (top[-1].m_type != LITERAL_BOOL)
            return false;
        top[-1] = top[top[-1].m_bool ? 0 : 1];
        return true;
    default:
        return Call(step.m_function, top[-1]);
    }
}

/// What the name of a step means, or null.
const LSVariable* DirectExpression::Find(const ExpressionStep& step, const ScanItem* items)
{
    const SubString name = step.Name();
    if (items == nullptr)
        return m_frame.Find(name, name.end());
    NameEntry& entry = *items[step.m_item].m_name;
    return m_names.MayBeBound(entry) ? m_names.Find(&m_frame, entry, name.end()) : nullptr;
}

bool DirectExpression::PushName(const ExpressionStep& step, const ScanItem* items,
                                DirectValue& value)
{
    const LSVariable* const variable = Find(step, items);
    if (variable == nullptr)
        return false;
    Substitute found;
    ++m_steps;
    if (!Substituted(*variable, m_frame, 0, found) ||
        (step.m_isBehindMinus && found.m_isNegative) || (step.m_isBeforeDot && found.m_isNumber))
        return false;
    value = found.m_value;
    return true;
}

/// The text of a value, written as a literal and read again.
bool DirectExpression::PushStr(const ExpressionStep& step, const ScanItem* items,
                               DirectValue& value)
{
    const LSVariable* const variable = Find(step, items);
    if (variable == nullptr || variable->GetType() == LSV_MACRO)
        return false;
    const SubString text = static_cast<const LSValueVariable*>(variable)->m_value;
    if (!IsWrittenAsItIs(text))
        return false;
    m_steps += 2; // the expansion of what stands in the brackets, and the name
    m_deepest = std::max<ssize_t>(m_deepest, 2);
    value.SetText(text);
    return true;
}

bool DirectExpression::PushLiteral(const ExpressionStep& step, DirectValue& value)
{
    xstring text;
    LSToken(step.m_op, step.m_value.Text()).GetLiteralString(text);
    SubString kept;
    if (!Keep(text, kept))
        return false;
    value.SetText(kept);
    return true;
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
    text = WithoutBlanks(text);
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
    if (int64 decimal = 0; ReadDecimal(text, decimal))
    {
        value.SetInt64(found.m_isNegative ? -decimal : decimal);
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

bool DirectExpression::GetBool(const ExpressionText& text, bool& value)
{
    if (!Evaluate(text) || m_result.m_type != LITERAL_BOOL || !CountSteps())
        return false;
    value = m_result.m_bool;
    return true;
}

bool DirectExpression::GetText(const ExpressionText& text, SubString& value)
{
    return Evaluate(text) && WriteText(m_result, value) && CountSteps();
}

bool DirectExpression::GetWrittenForm(const ExpressionText& text, ELSVariable type,
                                      SubString& value)
{
    return Evaluate(text) && WriteAs(type, value) && CountSteps();
}

// Out of line: the scratch of an expression is large, and callers nest.

[[gnu::noinline]] bool EvaluateDirectly(VarFrame& frame, const ExpressionText& text, bool& value)
{
    ExpansionRun* const run = RunState::CurrentRun();
    return run != nullptr && DirectExpression(*run, frame).GetBool(text, value);
}

[[gnu::noinline]] bool EvaluateDirectly(VarFrame& frame, const ExpressionText& text,
                                        ELSVariable type, xstring& value)
{
    ExpansionRun* const run = RunState::CurrentRun();
    if (run == nullptr)
        return false;
    DirectExpression expression(*run, frame);
    SubString written;
    if (!expression.GetWrittenForm(text, type, written))
        return false;
    if (written.begin() == value.begin() && written.size() == value.size())
        return true; // the text of a variable, which it keeps
    value.clear();
    value += written;
    return true;
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
        text = value.Text();
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
    const std::to_chars_result written =
        std::to_chars(m_scratch + m_used, std::end(m_scratch), value.m_int64);
    if (written.ec != std::errc())
        return false;
    text = SubString(m_scratch + m_used, written.ptr);
    m_used = written.ptr - m_scratch;
    return true;
}

/// Copies `text` into the scratch, behind what is there.
bool DirectExpression::Keep(SubString text, SubString& kept)
{
    const size_t size = static_cast<size_t>(text.size());
    if (size > static_cast<size_t>(s_scratch - m_used))
        return false;
    char* const room = m_scratch + m_used;
    if (size > 0) // an empty text may be nowhere
        std::memcpy(room, text.begin(), size);
    m_used += text.size();
    kept = SubString(room, room + text.size());
    return true;
}

} // namespace telv
