// Evaluates an expression from its source text, without expanding it into a string first.
//
// What an expression means is defined in two steps: its text is expanded, then the result is parsed
// (ExpressionParser.h). Most expressions are numbers, operators and names of values, and for these
// the first step only puts digits where a name stood. Here such a name gives its value at once. The
// answer is the same as long as the digits could not have merged with what stands beside them, and
// nothing that is evaluated has an effect. Whatever might differ, or is wrong, is left to the two
// steps: `Evaluate` is false, and nothing has happened.
#pragma once

#include "tlMacroExpander/LSLiteral.h"
#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/LSToken.h"

namespace telv
{

class ExpansionRun;

/// A value of a kind that needs no memory of its own; text is viewed where it stands.
struct DirectValue
{
    ELiteral m_type = LITERAL_UNDEF;
    union
    {
        bool m_bool;
        int64 m_int64 = 0;
        double m_float64;
        char m_char;
    };
    SubString m_text; ///< Of a string: views the source or the scratch of the expression.
};

/// One evaluation; lives on the stack. Views the text and the variables of the frame.
class DirectExpression
{
public:
    /// `text`: what stands in the brackets, to be evaluated in a child of `frame`.
    DirectExpression(ExpansionRun& run, VarFrame& frame, SubString text);
    DirectExpression(const DirectExpression&) = delete;
    DirectExpression& operator=(const DirectExpression&) = delete;

    // All of these are false where the text has to be expanded and parsed instead.

    /// A condition.
    bool GetBool(bool& value);
    /// The value as `@(...)` writes it; valid as long as this object and the source.
    bool GetText(SubString& text);
    /// The written form of a value of `type`. `value` is unchanged when false.
    bool GetWrittenForm(ELSVariable type, xstring& value);

private:
    /// What a name or a value in its place comes to be read as.
    struct Substitute;

    bool Evaluate();
    bool CountSteps();
    void Advance();
    bool Take(EToken kind);

    bool ParseExpression(DirectValue& value);
    bool ParseConditional(DirectValue& value);
    bool ParseBinary(DirectValue& value, int level);
    bool ParseUnary(DirectValue& value);
    bool ParsePostFix(DirectValue& value);
    bool ParsePrimary(DirectValue& value);
    bool ParseNumber(DirectValue& value);
    bool ParseString(DirectValue& value);
    bool ParseName(DirectValue& value);
    bool ParseBuiltIn(SubString name, DirectValue& value);
    bool Combine(EToken op, DirectValue& x, const DirectValue& y);
    bool CombineOthers(EToken op, DirectValue& x, const DirectValue& y);
    bool Join(DirectValue& value, SubString left, SubString right);

    bool Substituted(const LSVariable& variable, VarFrame& frame, int depth, Substitute& found);
    bool SubstitutedText(SubString text, VarFrame& frame, int depth, Substitute& found);
    static bool SubstitutedWord(SubString text, Substitute& found);
    static bool SubstitutedNumber(SubString text, Substitute& found);
    bool StandsAlone(const char* begin, const char* end, const Substitute& found) const;

    bool WriteAs(ELSVariable type, SubString& text);
    bool WriteText(const DirectValue& value, SubString& text);
    bool TextOf(const DirectValue& value, SubString& text);
    bool Keep(SubString text, SubString& kept);

    static constexpr ssize_t s_scratch = 512;
    static constexpr int s_mostNesting = 64;

    ExpansionRun& m_run;
    VarFrame& m_frame;
    SubString m_whole;
    SubString m_rest;        ///< Behind the current token.
    EToken m_kind;           ///< Of the current token.
    SubString m_token;       ///< Its characters.
    DirectValue m_result;
    int m_nesting = 0;
    ssize_t m_steps = 1;     ///< What expanding would have counted.
    ssize_t m_deepest = 1;   ///< Expansions inside one another that it would have made.
    ssize_t m_used = 0;      ///< Of the scratch.
    char m_scratch[s_scratch];
};

/// A condition, evaluated directly where that is possible; false otherwise.
bool EvaluateDirectly(VarFrame& frame, SubString text, bool& value);
/// The same for the written form of a value of `type`.
bool EvaluateDirectly(VarFrame& frame, SubString text, ELSVariable type, xstring& value);

} // namespace telv
