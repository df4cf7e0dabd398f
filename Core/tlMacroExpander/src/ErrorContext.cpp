// Composing errors and their context lines.
#include "tlMacroExpander/src/ErrorContext.h"
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

} // namespace

SubString TokenText(const LSToken& token)
{
    return token.m_str.empty() ? SubString("EOS") : token.m_str;
}

void ThrowAtToken(std::initializer_list<SubString> before, const LSToken& token, SubString after)
{
    xstring description = Join(before);
    description += TokenText(token);
    description += after;
    throw LexScannerException(description, token);
}

void ThrowAt(const char* pos, std::initializer_list<SubString> parts)
{
    throw LexScannerException(Join(parts), pos);
}

void AddErrorContext(LexScannerException& e, std::initializer_list<SubString> parts)
{
    auto* const limit = dynamic_cast<ExpansionLimitException*>(&e);
    if (limit == nullptr || limit->m_contextLines++ < s_mostLinesOfLimit)
        Append(e.m_description, parts);
}

void AddExpressionErrorContext(LexScannerException& e, const char* bracket, const char* pos,
                               std::initializer_list<SubString> parts)
{
    if (dynamic_cast<ExpansionLimitException*>(&e) == nullptr)
    {
        StringFindAndReplace(e.m_description, "EOS", bracket);
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
