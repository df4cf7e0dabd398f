// SPDX-License-Identifier: MIT
// Evaluates an expression from its source text, without expanding it into a string first.
//
// What an expression means is defined in two steps: its text is expanded, then the result is parsed
// (ExpressionParser.h). Most expressions are numbers, operators and names of values, and for these
// the first step only puts digits where a name stood. Here such a name gives its value at once. The
// answer is the same as long as the digits could not have merged with what stands beside them, and
// nothing that is evaluated has an effect. Whatever might differ, or is wrong, is left to the two
// steps: the answer is false, and nothing has happened.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Expressions/ExpressionSteps.h"

namespace telv
{

class ExpansionRun;
class ExpressionProgram;
class NameTable;
struct ScanItem;

/// What is evaluated: a text, and its program when it is evaluated again and again.
struct ExpressionText
{
    SubString m_text;
    ExpressionProgram* m_program = nullptr;
};

/// One evaluation in a child of `frame`; lives on the stack. Views the text and the variables.
class DirectExpression
{
public:
    DirectExpression(ExpansionRun& run, VarFrame& frame);
    DirectExpression(const DirectExpression&) = delete;
    DirectExpression& operator=(const DirectExpression&) = delete;

    // All of these are false where the text has to be expanded and parsed instead.

    /// A condition.
    bool GetBool(const ExpressionText& text, bool& value);
    /// The value as `@(...)` writes it; valid as long as this object and the source.
    bool GetText(const ExpressionText& text, SubString& value);
    /// The written form of a value of `type`; valid as long.
    bool GetWrittenForm(const ExpressionText& text, ELSVariable type, SubString& value);

private:
    /// What a name or a value in its place comes to be read as.
    struct Substitute;

    bool Evaluate(const ExpressionText& text);
    bool Take(const ExpressionStep* step, const ExpressionStep* end, const ScanItem* items);
    bool TakeOther(const ExpressionStep& step, DirectValue*& top);
    bool CountSteps();

    const LSVariable* Find(const ExpressionStep& step, const ScanItem* items);
    bool PushName(const ExpressionStep& step, const ScanItem* items, DirectValue& value);
    bool PushStr(const ExpressionStep& step, const ScanItem* items, DirectValue& value);
    bool PushLiteral(const ExpressionStep& step, DirectValue& value);

    bool Combine(EToken op, DirectValue& x, const DirectValue& y);
    bool CombineOthers(EToken op, DirectValue& x, const DirectValue& y);
    bool Join(DirectValue& value, SubString left, SubString right);
    bool Call(EBuiltIn function, DirectValue& value);

    bool Substituted(const LSVariable& variable, VarFrame& frame, int depth, Substitute& found);
    bool SubstitutedText(SubString text, VarFrame& frame, int depth, Substitute& found);
    static bool SubstitutedWord(SubString text, Substitute& found);
    static bool SubstitutedNumber(SubString text, Substitute& found);

    bool WriteAs(ELSVariable type, SubString& text);
    bool WriteText(const DirectValue& value, SubString& text);
    bool TextOf(const DirectValue& value, SubString& text);
    bool Keep(SubString text, SubString& kept);

    static constexpr ssize_t s_scratch = 512;

    ExpansionRun& m_run;
    VarFrame& m_frame;
    NameTable& m_names;
    DirectValue m_result;
    ssize_t m_steps = 1;   ///< What expanding would have counted.
    ssize_t m_deepest = 1; ///< Expansions inside one another that it would have made.
    ssize_t m_used = 0;    ///< Of the scratch.
    char m_scratch[s_scratch];
};

/// What an operator with one operand does to a value.
bool ApplyPrefix(EToken op, DirectValue& value);
/// Replaces a text by its character at `index`.
bool ApplyIndex(DirectValue& value, const DirectValue& index);

/// A condition, evaluated directly where that is possible; false otherwise.
bool EvaluateDirectly(VarFrame& frame, const ExpressionText& text, bool& value);
/// The same for the written form of a value of `type`.
bool EvaluateDirectly(VarFrame& frame, const ExpressionText& text, ELSVariable type,
                      xstring& value);

} // namespace telv
