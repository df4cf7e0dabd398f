// SPDX-License-Identifier: MIT
// A name without @str is found by trial: the expression is read again with a string in the place of
// the name. Nothing is expanded for that, so only names whose text is plain can be tried.
#include "tlMacroExpander/src/Hints/StringHints.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Expressions/ParseExpanded.h"
#include "tlMacroExpander/src/Hints/HintSupport.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/Hints/NearName.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <algorithm>
#include <string_view>

namespace telv
{

namespace
{

using Tokens = std::vector<LSToken>;

bool ComparesOrAppends(const LSToken& token)
{
    switch (token.m_type)
    {
    case TOKEN_PLUS:
    case TOKEN_DBL_EQUAL:
    case TOKEN_EXCLAM_EQUAL:
    case TOKEN_LESS:
    case TOKEN_GREATER:
    case TOKEN_LESS_EQUAL:
    case TOKEN_GREATER_EQUAL:
        return true;
    default:
        return false;
    }
}

bool IsQuoted(const LSToken& token)
{
    return token.m_type == TOKEN_SINGLE_QUOTED_STRING || token.m_type == TOKEN_DOUBLE_QUOTED_STRING;
}

bool IsWord(const LSToken& token)
{
    return token.m_type == TOKEN_IDENTIFIER;
}

bool IsOperand(const LSToken& token)
{
    return IsWord(token) || token.m_type == TOKEN_INTEGER || token.m_type == TOKEN_FLOAT ||
           token.m_type == TOKEN_HEX_INTEGER;
}

/// A name in an expression, and what it stands for.
struct NamedText
{
    bool m_isString = false; ///< A variable of that type, or a name that stands for one.
    bool m_isMacro = false;
    SubString m_text;
};

/// What a name stands for; false when that takes an expansion.
bool FollowName(VarFrame& frame, const LSVariable* var, NamedText& named)
{
    constexpr ssize_t longest = 4096; // of what is meant as a string
    for (int steps = 0; steps < 8; ++steps)
    {
        if (var->GetType() != LSV_MACRO)
        {
            named.m_text = static_cast<const LSValueVariable*>(var)->m_value;
            named.m_isString = var->GetType() == LSV_STRING;
            return true;
        }
        const auto& macro = static_cast<const LSMacroVariable&>(*var);
        if (macro.m_isPython || macro.GetNumArgs() > 0)
            return false;
        named.m_isMacro = true;
        named.m_text = macro.GetSubstitutionString();
        if (named.m_text.size() > longest)
            return false;
        const Tokens tokens = TokensOf(named.m_text);
        const auto isBound = [&](const LSToken& token)
        { return IsWord(token) && FindVisible(frame, token.m_str) != nullptr; };
        if (tokens.size() != 1 || !isBound(tokens.front()))
            return std::ranges::none_of(tokens, [&](const LSToken& token)
                                        { return token.m_type == TOKEN_AT || isBound(token); });
        var = FindVisible(frame, tokens.front().m_str);
    }
    return false;
}

/// Whether a macro's text can be meant as text: words, a single number, nothing.
bool IsTextOfWords(SubString text)
{
    const Tokens tokens = TokensOf(text);
    if (tokens.empty())
        return WithoutBlanks(text).empty();
    return std::ranges::all_of(tokens, IsWord) || (tokens.size() == 1 && IsOperand(tokens.front()));
}

/// An expression in which names are tried as strings.
class Trial
{
public:
    Trial(VarFrame& frame, const Tokens& source);

    /// Whether the expression can be put together: all names have a plain text.
    bool IsComplete() const { return m_isComplete; }
    /// Whether the expression can be read when those of its names are strings that stand where one
    /// is expected; with `everywhere`, all variables of that type too. Sets the name of the first.
    bool ReadsWithStrings(bool everywhere, Wanted wanted, SubString& name) const;
    /// The first name that stands where a string is expected, and whose text has this word; empty
    /// for none.
    SubString FindStringWith(SubString word) const;

private:
    bool IsString(size_t i) const { return IsQuoted(m_source[i]) || m_names[i].m_isString; }
    bool IsBesideString(size_t i) const;
    bool IsWhereStringIs(size_t i) const;
    bool IsTried(size_t i, bool everywhere) const;

    const Tokens& m_source;
    std::vector<NamedText> m_names; ///< For each token; of no use where it is no name.
    std::vector<bool> m_isName;
    bool m_isComplete = true;
};

Trial::Trial(VarFrame& frame, const Tokens& source)
    : m_source(source), m_names(source.size()), m_isName(source.size())
{
    for (size_t i = 0; i < m_source.size(); ++i)
    {
        const LSToken& token = m_source[i];
        const LSVariable* const var = IsWord(token) ? FindVisible(frame, token.m_str) : nullptr;
        m_isName[i] = var != nullptr && FollowName(frame, var, m_names[i]);
        if (token.m_type == TOKEN_AT || (var != nullptr && !m_isName[i]))
            m_isComplete = false;
    }
}

/// Whether the name at `i` is compared with a string, or joined to one.
bool Trial::IsBesideString(size_t i) const
{
    return (i + 2 < m_source.size() && ComparesOrAppends(m_source[i + 1]) && IsString(i + 2)) ||
           (i >= 2 && ComparesOrAppends(m_source[i - 1]) && IsString(i - 2));
}

/// Whether a string is what is expected at `i`.
bool Trial::IsWhereStringIs(size_t i) const
{
    const bool isMeasured =
        i >= 2 && i + 1 < m_source.size() && m_source[i - 2].m_str == SubString("len") &&
        m_source[i - 1].m_type == TOKEN_LEFT_PAREN && m_source[i + 1].m_type == TOKEN_RIGHT_PAREN;
    return isMeasured || m_source.size() == 1 || IsBesideString(i);
}

bool Trial::IsTried(size_t i, bool everywhere) const
{
    if (!m_isName[i])
        return false;
    if (m_names[i].m_isString)
        return everywhere || IsWhereStringIs(i);
    const bool isOneWord = m_source.size() == 1 && TokensOf(m_names[i].m_text).size() < 2;
    return m_names[i].m_isMacro && !isOneWord && IsTextOfWords(m_names[i].m_text) &&
           IsWhereStringIs(i);
}

/// Whether an expression can be read as what is wanted.
bool ReadsAs(SubString text, Wanted wanted)
{
    const SwallowedErrors nobodyIsTold;
    try
    {
        ExpressionParser parser;
        switch (wanted)
        {
        case Wanted::Bool:
            ParseBoolInBracket(text);
            return true;
        case Wanted::Number:
            parser.Init(text);
            parser.ParseFloat64(/*allowDataLoss=*/false);
            return parser.m_token.m_type == TOKEN_END;
        case Wanted::Char:
            parser.Init(text);
            parser.ParseChar(/*allowDataLoss=*/false);
            return parser.m_token.m_type == TOKEN_END;
        default:
            ParseStringInBracket(text, /*allowDataLoss=*/wanted == Wanted::Any, "");
            return true;
        }
    }
    catch (const IException&) // also what is no fault of the text
    {
        return false;
    }
}

bool Trial::ReadsWithStrings(bool everywhere, Wanted wanted, SubString& name) const
{
    xstring text;
    for (size_t i = 0; i < m_source.size(); ++i)
    {
        const bool isTried = IsTried(i, everywhere);
        if (isTried && name.empty())
            name = m_source[i].m_str;
        xstring quoted;
        if (isTried)
            MakeDoubleQuotedString(m_names[i].m_text, quoted);
        text += isTried ? SubString(quoted) : m_isName[i] ? m_names[i].m_text : m_source[i].m_str;
        text += " ";
    }
    return !name.empty() && ReadsAs(text, wanted);
}

SubString Trial::FindStringWith(SubString word) const
{
    const auto isWord = [&](const LSToken& token) { return IsWord(token) && token.m_str == word; };
    for (size_t i = 0; i < m_source.size(); ++i)
        if (IsTried(i, /*everywhere=*/false) &&
            std::ranges::any_of(TokensOf(m_names[i].m_text), isWord))
            return m_source[i].m_str;
    return SubString();
}

/// The name that wants @str; empty when none is known to.
SubString FindMissingStr(const Trial& trial, SubString word, Wanted wanted)
{
    SubString name;
    if (!trial.IsComplete())
        return word.empty() ? name : trial.FindStringWith(word);
    for (const bool everywhere : {true, false})
    {
        name = SubString();
        if (trial.ReadsWithStrings(everywhere, wanted, name))
            return name;
    }
    return SubString();
}

/// What is near to a known name is rather that name, written wrong, than a text.
bool IsNearName(VarFrame& frame, SubString word)
{
    return !word.empty() && !NearestTo(frame, word).empty();
}

/// Whether a token stands in no expression.
bool IsOutsideExpressions(const LSToken& token)
{
    switch (token.m_type)
    {
    case TOKEN_DOT:
    case TOKEN_COMMA:
    case TOKEN_SEMICOLON:
    case TOKEN_HASH:
    case TOKEN_DOLLAR:
    case TOKEN_DOLLAR_DOLLAR:
    case TOKEN_COLON_COLON:
    case TOKEN_MINUS_GREATER:
    case TOKEN_LEFT_CURLY:
    case TOKEN_RIGHT_CURLY:
        return true;
    default:
        return false;
    }
}

bool IsBetween(const LSToken& token, const LSToken& left, const LSToken& right)
{
    return left.m_str.end() == token.m_str.begin() && token.m_str.end() == right.m_str.begin();
}

/// Whether the operator at `i` joins words without blanks: `foo-bar`, `usr/lib`.
bool JoinsWords(const Tokens& tokens, size_t i)
{
    const bool isJoint = tokens[i].m_type == TOKEN_MINUS || tokens[i].m_type == TOKEN_FORWARD_SLASH;
    return isJoint && i > 0 && i + 1 < tokens.size() && IsOperand(tokens[i - 1]) &&
           IsOperand(tokens[i + 1]) && IsBetween(tokens[i], tokens[i - 1], tokens[i + 1]);
}

/// Whether the text begins or ends as no expression does: `/usr`, `100%`, `Hello!`. An operator
/// behind a blank may wait for its operand.
bool HasEndsOfText(const Tokens& tokens)
{
    const EToken first = tokens.front().m_type;
    const EToken last = tokens.back().m_type;
    const bool isAttached =
        tokens.size() > 1 && tokens[tokens.size() - 2].m_str.end() == tokens.back().m_str.begin();
    return first == TOKEN_FORWARD_SLASH || first == TOKEN_ASTERISK || first == TOKEN_PERCENT ||
           (isAttached && (last == TOKEN_EXCLAM || last == TOKEN_QUESTION || last == TOKEN_COLON ||
                           last == TOKEN_PERCENT || last == TOKEN_ASTERISK));
}

/// Whether tokens are rather words of a text than an expression.
bool AreRatherText(const Tokens& tokens)
{
    bool isCall = false;
    bool isText = tokens.size() < 2 || HasEndsOfText(tokens);
    bool isPath = std::ranges::any_of(tokens, IsWord);
    for (size_t i = 0; i < tokens.size(); ++i)
    {
        const bool isOperand = IsOperand(tokens[i]);
        if (i > 0 && isOperand && IsOperand(tokens[i - 1]))
            return true;
        isCall |= i > 0 && tokens[i].m_type == TOKEN_LEFT_PAREN && IsWord(tokens[i - 1]);
        isText |= IsOutsideExpressions(tokens[i]);
        isPath &= isOperand || JoinsWords(tokens, i);
    }
    return !isCall && (isText || isPath);
}

/// What would end a string, or be something else in one.
bool ChangesInQuotes(char c)
{
    return c == '"' || c == '\'' || c == '`' || c == '\\' || c == '@' ||
           static_cast<unsigned char>(c) < ' ';
}

} // namespace

bool HintAtMissingStr(VarFrame& frame, const std::vector<LSToken>& source, SubString word,
                      Wanted wanted)
{
    constexpr size_t most = 400; // of the tokens of what is read again
    if (source.size() > most)
        return false;
    const SubString name = FindMissingStr(Trial(frame, source), word, wanted);
    if (!name.empty() && !IsNearName(frame, word))
        NoteHint({"'", name, "' is replaced by its text before the expression is read; @str(", name,
                  ") is its text as a string"});
    return !name.empty();
}

bool GetQuotable(VarFrame& frame, SubString source, SubString& text)
{
    constexpr ssize_t longest = 200; // that is still easily read in a hint
    const SubString whole = WithoutBlanks(source);
    const Tokens tokens = TokensOf(whole);
    const auto isBound = [&](const LSToken& token)
    { return IsWord(token) && FindVisible(frame, token.m_str) != nullptr; };
    const bool isRead =
        whole.empty() || (!tokens.empty() && tokens.back().m_str.end() == whole.end());
    if (whole.size() > longest || !isRead ||
        std::ranges::any_of(whole.begin(), whole.end(), ChangesInQuotes) ||
        std::ranges::any_of(tokens, isBound) || !(tokens.empty() || AreRatherText(tokens)))
        return false;
    const std::string_view characters(whole.begin(), static_cast<size_t>(whole.size()));
    if (characters.find("//") != std::string_view::npos ||
        characters.find("/*") != std::string_view::npos)
        return false;
    text = whole;
    return true;
}

} // namespace telv
