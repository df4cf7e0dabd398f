// SPDX-License-Identifier: MIT
// A bracket that is never closed because its other half stands in a comment: `f(http://host)`.
//
// The text behind the opening bracket is read once more. Where a comment with `//` holds the other
// half of a bracket that was opened on the same line, that half counts; when this closes what was
// never closed, the comment is the cause.
#include "tlMacroExpander/src/Hints/HintSupport.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include <algorithm>
#include <vector>

namespace telv
{

namespace
{

/// Brackets of one kind in a text.
class OpenBrackets
{
public:
    /// `open` has been read at `opened`.
    OpenBrackets(char open, const char* opened) : m_open(open), m_opened{opened}
    {
        m_close = open == '{' ? '}' : open == '[' ? ']' : ')';
    }

    /// Counts the tokens of `text` until all is closed; those in comments, where they close what
    /// was opened on their line.
    void Read(SubString text);

    /// The first bracket in a comment that was counted, when with those everything is closed; else
    /// null.
    const char* FirstInComment() const { return m_opened.empty() ? m_inComment : nullptr; }

private:
    void ReadComment(SubString comment);

    char m_open;
    char m_close;
    std::vector<const char*> m_opened; ///< Where those stand that are not closed.
    const char* m_inComment = nullptr;
};

/// Brackets that the comment opens and closes itself belong to it, and so does a quoted one.
void OpenBrackets::ReadComment(SubString comment)
{
    const bool isLine = comment.begin()[1] == '/';
    if (!isLine || std::find(m_opened.back(), comment.begin(), '\n') != comment.begin())
        return;
    ssize_t own = 0;
    for (const char* p = comment.begin() + 2; p != comment.end() && !m_opened.empty(); ++p)
    {
        if (p[-1] == '\'' || p[-1] == '"' || p[-1] == '`')
            continue;
        if (*p == m_open)
            ++own;
        else if (*p == m_close && own > 0)
            --own;
        else if (*p == m_close)
        {
            m_opened.pop_back();
            m_inComment = m_inComment == nullptr ? p : m_inComment;
        }
    }
}

void OpenBrackets::Read(SubString text)
{
    while (!m_opened.empty())
    {
        const LSToken token = LsScanToken(text, /*returnComments=*/true);
        if (token.m_type == TOKEN_END)
            return;
        if (token.m_type == TOKEN_COMMENT)
            ReadComment(token.m_str);
        else if (token.m_str.size() == 1 && *token.m_str.begin() == m_open)
            m_opened.push_back(token.m_str.begin());
        else if (token.m_str.size() == 1 && *token.m_str.begin() == m_close)
            m_opened.pop_back();
    }
}

} // namespace

const char* FindBracketInComment(SubString text, bool isArgument)
{
    const SwallowedErrors nobodyIsTold;
    const char first = text.empty() ? '\0' : *text;
    if (!isArgument && first != '(' && first != '[' && first != '{')
        return nullptr;
    OpenBrackets brackets(isArgument ? '(' : first, text.begin());
    if (!isArgument)
        ++text;
    try
    {
        brackets.Read(text);
        return brackets.FirstInComment();
    }
    catch (const LexScannerException&)
    {
        return nullptr; // the text can't be read so far
    }
}

} // namespace telv
