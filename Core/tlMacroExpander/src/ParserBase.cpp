// SPDX-License-Identifier: MIT
// Look-ahead, and the small pieces that both parsers read.
#include "tlMacroExpander/src/ParserBase.h"

namespace telv
{

ParserBase::ParserBase() = default;

void ParserBase::Init(SubString s)
{
    m_str = s;
    ReadNextToken();
}

void ParserBase::ReadNextToken()
{
    m_prevToken = m_token;
    m_token = LsScanToken(m_str, /*returnComments=*/false);
}

void ParserBase::ParseGivenToken(EToken t, const char* what)
{
    if (m_token.m_type != t)
        ThrowExpectedException(what);
    ReadNextToken();
}

xstring ParserBase::ParseIdentifier()
{
    m_stringForToken = xstring(m_token.m_str);
    ParseGivenToken(TOKEN_IDENTIFIER, "identifier");
    return m_stringForToken;
}

xstring ParserBase::ParsePath()
{
    if (m_token.m_type != TOKEN_IDENTIFIER)
        ThrowExpectedException("identifier (for path)");
    xstring path;
    while (m_token.m_type == TOKEN_IDENTIFIER || m_token.m_type == TOKEN_FORWARD_SLASH)
    {
        path += m_token.m_str;
        ReadNextToken();
    }
    return path;
}

void ParserBase::ThrowExpectedException(const char* what)
{
    StringStream message(4096);
    message << "Expected " << what << " after " << m_prevToken << " when read " << m_token;
    throw LexScannerException(message.GetString(), m_token);
}

} // namespace telv
