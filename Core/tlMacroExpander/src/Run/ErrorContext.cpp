// SPDX-License-Identifier: MIT
// Composing errors and their context lines.
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlUtils/HeldMemory.h"
#include <algorithm>
#include <cstring>

namespace telv
{

namespace
{

constexpr int s_mostLinesOfLimit = 20;

xstring Join(std::initializer_list<SubString> parts)
{
    ssize_t size = 0;
    for (const SubString& part : parts)
        size += part.size();
    xstring joined;
    joined.reserve(size);
    for (const SubString& part : parts)
        joined += part;
    return joined;
}

void Append(xstring& description, std::initializer_list<SubString> parts)
{
    for (const SubString& part : parts)
        description += part;
}

/// Replaces the "EOS" of a description. Descriptions grow with each level that an error passes, and
/// each level replaces; the run remembers how much has been seen to, so that this stays linear.
void ReplaceEndMark(xstring& description, const char* bracket)
{
    constexpr ssize_t overlap = 2;
    RunState* const state = RunState::Current();
    const ssize_t seen = state == nullptr ? 0 : state->m_markFreeLength;
    const ssize_t from = std::clamp<ssize_t>(seen - overlap, 0, description.size());
    const SubString rest(description.begin() + from, description.end());
    if (rest && memmem(rest.begin(), static_cast<size_t>(rest.size()), "EOS", 3) != nullptr)
    {
        xstring replaced(rest);
        StringFindAndReplace(replaced, "EOS", bracket);
        description.resize(from);
        description += replaced;
    }
    if (state != nullptr)
        state->m_markFreeLength = description.size();
}

/// A line that there is no memory for is left out, and so are those further out.
void AppendToLimit(ExpansionLimitException& e, std::initializer_list<SubString> parts)
{
    const ssize_t size = e.m_description.size();
    try
    {
        Append(e.m_description, parts);
        ++e.m_contextLines;
    }
    catch (const MemoryLimitReached&)
    {
        e.m_description.resize(size);
        e.m_contextLines = s_mostLinesOfLimit;
    }
}

} // namespace

SubString TokenText(const LSToken& token)
{
    return token.m_str.empty() ? SubString("EOS") : token.m_str;
}

void ThrowAtToken(std::initializer_list<SubString> before, const LSToken& token, SubString after)
{
    if (SwallowedErrors::AreExpected())
        throw LexScannerException(xstring(), token);
    xstring description = Join(before);
    description += TokenText(token);
    description += after;
    throw LexScannerException(description, token);
}

void ThrowAt(const char* pos, std::initializer_list<SubString> parts)
{
    throw LexScannerException(SwallowedErrors::AreExpected() ? xstring() : Join(parts), pos);
}

bool IsSwallowed(const LexScannerException& e)
{
    return SwallowedErrors::AreExpected() &&
           dynamic_cast<const ExpansionLimitException*>(&e) == nullptr;
}

bool TakesContext(const LexScannerException& e)
{
    const auto* const limit = dynamic_cast<const ExpansionLimitException*>(&e);
    return limit == nullptr ? !SwallowedErrors::AreExpected()
                            : limit->m_contextLines < s_mostLinesOfLimit;
}

void AddErrorContext(LexScannerException& e, std::initializer_list<SubString> parts)
{
    ExpansionLevel::MoveOutOfDeadTexts(e);
    if (!TakesContext(e))
        return;
    if (auto* const limit = dynamic_cast<ExpansionLimitException*>(&e))
        AppendToLimit(*limit, parts);
    else
        Append(e.m_description, parts);
}

void AddExpressionErrorContext(LexScannerException& e, const char* bracket, const char* pos,
                               std::initializer_list<SubString> parts)
{
    if (dynamic_cast<ExpansionLimitException*>(&e) == nullptr)
    {
        if (TakesContext(e))
            ReplaceEndMark(e.m_description, bracket);
        e.m_pos = pos;
    }
    AddErrorContext(e, parts);
}

void MoveOutOfText(LexScannerException& e, SubString text, const char* origin)
{
    if (text.begin() <= e.m_pos && e.m_pos <= text.end())
        e.m_pos = origin;
}

} // namespace telv
