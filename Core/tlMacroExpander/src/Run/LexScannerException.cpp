// SPDX-License-Identifier: MIT
// Errors with a place in a text, and how they are written once their file and line are known.
#include "tlMacroExpander/src/LSToken.h"

namespace telv
{

LexScannerException::LexScannerException(const xstring& description, SubString s)
    : LexScannerException(description, s.begin())
{
}

LexScannerException::LexScannerException(const xstring& description, const char* pos)
    : m_description(description), m_lineNumber(-1), m_pos(pos)
{
}

LexScannerException::LexScannerException(const xstring& description, LSToken t)
    : LexScannerException(description, t.m_str.begin())
{
}

void LexScannerException::Write(xostream& os) const
{
    const bool lineKnown = m_lineNumber >= 0;
    if (!m_path.empty())
    {
        os << m_path;
        if (lineKnown)
            os << "(" << m_lineNumber << ")";
        os << " : ";
    }
    else if (lineKnown)
        os << "Line " << m_lineNumber << ": ";
    os << "error : " << m_description;
}

const char* LexScannerException::what() const
{
    return m_description.c_str();
}

ExpansionLimitException::ExpansionLimitException(const xstring& description, const char* pos)
    : LexScannerException(description, pos)
{
}

} // namespace telv
