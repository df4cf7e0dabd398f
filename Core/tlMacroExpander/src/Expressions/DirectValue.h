// A value of an expression that needs no memory of its own.
#pragma once

#include "tlMacroExpander/LSLiteral.h"

namespace telv
{

/// Text is viewed where it stands.
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
    SubString m_text; ///< Of a string: views the source, or the scratch of the evaluation.

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
        m_text = value;
    }
};

} // namespace telv
