// SPDX-License-Identifier: MIT
// The few states of C's lexical grammar that can reach over the end of a line.
#include "output/CLineScan.h"
#include "tlMacroExpander/src/Scan/CharClass.h"

namespace telv::tool
{

namespace
{

bool IsNumber(const std::string& word)
{
    return !word.empty() && word[0] >= '0' && word[0] <= '9';
}

bool IsRawPrefix(const std::string& word)
{
    return word == "R" || word == "LR" || word == "uR" || word == "UR" || word == "u8R";
}

} // namespace

void CLineScan::Read(char c)
{
    const bool wasEscaped = m_isEscaped;
    m_isContinued = c == '\n' && wasEscaped;
    // A carriage return before the line feed changes nothing.
    m_isEscaped = (c == '\\' && !wasEscaped) || (c == '\r' && wasEscaped);
    if (m_isContinued && m_state != EState::RawString)
        return;
    switch (m_state)
    {
    case EState::Slash:
        m_state = c == '*' ? EState::BlockComment : (c == '/' ? EState::LineComment : EState::Code);
        if (m_state == EState::Code)
            ReadCode(c);
        break;
    case EState::Code:
        ReadCode(c);
        break;
    case EState::LineComment:
        if (c == '\n')
            m_state = EState::Code;
        break;
    case EState::BlockComment:
        if (c == '*')
            m_state = EState::Star;
        break;
    case EState::Star:
        if (c != '*')
            m_state = c == '/' ? EState::Code : EState::BlockComment;
        break;
    case EState::Quote:
        if (c == '\n' || (c == m_quote && !wasEscaped))
            m_state = EState::Code;
        break;
    case EState::RawPrefix:
        ReadRawPrefix(c);
        break;
    case EState::RawString:
        m_rawTail += c;
        if (m_rawTail.size() > m_rawEnd.size())
            m_rawTail.erase(0, 1);
        if (m_rawTail == m_rawEnd)
            m_state = EState::Code;
        break;
    }
}

void CLineScan::ReadCode(char c)
{
    // The quote inside a number separates digits.
    if (IsNameCharacter(c) || (c == '\'' && IsNumber(m_word)))
    {
        m_word += c;
        return;
    }
    if (c == '/')
        m_state = EState::Slash;
    if (c == '"' || c == '\'')
    {
        m_quote = c;
        m_state = EState::Quote;
        m_isEscaped = false;
    }
    if (c == '"' && IsRawPrefix(m_word))
    {
        m_state = EState::RawPrefix;
        m_rawEnd = ")";
    }
    m_word.clear();
}

void CLineScan::ReadRawPrefix(char c)
{
    if (c == '(')
    {
        m_rawEnd += '"';
        m_rawTail.clear();
        m_state = EState::RawString;
    }
    else if (c == '\n' || c == '"')
        m_state = EState::Code; // No raw string after all.
    else
        m_rawEnd += c;
}

} // namespace telv::tool
