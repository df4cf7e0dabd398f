// SPDX-License-Identifier: MIT
// A value of an expression that needs no memory of its own.
#pragma once

#include "tlMacroExpander/LSLiteral.h"

namespace telv
{

/// Text is viewed where it stands.
struct DirectValue
{
    struct TextRange
    {
        const char* m_begin;
        const char* m_end;
    };

    ELiteral m_type;
    union
    {
        bool m_bool;
        int64 m_int64;
        double m_float64;
        char m_char;
        TextRange m_text; ///< Of a string: in the source, or in the scratch of the evaluation.
    };

    SubString Text() const { return SubString(m_text.m_begin, m_text.m_end); }

    void SetBool(bool value)
    {
        m_type = LITERAL_BOOL;
        m_bool = value;
    }
    void SetInt64(int64 value)
    {
        m_type = LITERAL_INT64;
        m_int64 = value;
    }
    void SetFloat64(double value)
    {
        m_type = LITERAL_FLOAT64;
        m_float64 = value;
    }
    void SetChar(char value)
    {
        m_type = LITERAL_CHAR;
        m_char = value;
    }
    void SetText(SubString value)
    {
        m_type = LITERAL_STRING;
        m_text = {value.begin(), value.end()};
    }
};

} // namespace telv
