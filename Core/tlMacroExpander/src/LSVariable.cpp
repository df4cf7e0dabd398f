// SPDX-License-Identifier: MIT
// Variables: construction and the written forms.
#include "tlMacroExpander/LSVariable.h"

namespace telv
{

LSVariable::LSVariable(SubString name) : m_name(name), m_next(nullptr) {}

LSVariable::~LSVariable() = default;

LSValueVariable::LSValueVariable(ELSVariable type, SubString name, SubString value)
    : LSVariable(name), m_type(type), m_value(value)
{
}

ELSVariable LSValueVariable::GetType() const
{
    return m_type;
}

void LSValueVariable::WriteToStream(xostream& os) const
{
    os << m_name << " = " << m_value;
}

void LSValueVariable::WriteValue(xostream& os) const
{
    os << m_value;
}

LSVar::LSVar(SubString name, SubString value)
    : LSValueVariable(LSV_STRING, SubString(), value), m_nameStr(name)
{
    m_name = m_nameStr;
}

LSMacroVariable::LSMacroVariable(ELSVariable returnType, SubString name, VarFrame* context,
                                 bool isPython, bool naked, bool isFnArg)
    : LSVariable(name), m_isPython(isPython), m_naked(naked), m_isFnArg(isFnArg),
      m_returnType(returnType), m_context(context), m_indentation(-1)
{
}

ELSVariable LSMacroVariable::GetType() const
{
    return LSV_MACRO;
}

void LSMacroVariable::WriteToStream(xostream& os) const
{
    WriteNameAndFormalParameterList(os);
    os << " = " << GetSubstitutionString();
}

void LSMacroVariable::WriteValue(xostream& os) const
{
    os << GetSubstitutionString();
}

void LSMacroVariable::SetSubstitutionString(SubString body, bool copy, ssize_t indentation)
{
    m_indentation = indentation;
    m_substitutionString.Set(body, copy);
}

ssize_t LSMacroVariable::FindArgName(SubString name) const
{
    for (ssize_t i = 0; i < m_argNames.size(); ++i)
    {
        if (m_argNames[i].m_name == name)
            return i;
    }
    return -1;
}

void LSMacroVariable::WriteNameAndFormalParameterList(xostream& os) const
{
    os << m_name;
    if (m_argNames.empty())
        return;
    os << '(';
    for (ssize_t i = 0; i < m_argNames.size(); ++i)
    {
        if (i > 0)
            os << ',';
        os << m_argNames[i].m_name;
    }
    os << ')';
}

} // namespace telv
