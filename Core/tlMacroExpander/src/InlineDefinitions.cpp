// SPDX-License-Identifier: MIT
// Exported definitions of small operations that the headers inline, for those who call them by
// name; see the file of this name in tlUtils.
#include "tlMacroExpander/LSLiteral.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/UsePython.h"
#include <new>
#include <utility>

namespace telv
{

namespace
{

/// Constructors and destructors have no address; calls are all that there is.
[[gnu::used]] void Construct(void* place, LSLiteral& other, const xstring& s, LSToken& token)
{
    ::new (place) LSLiteral;
    ::new (place) LSLiteral(/*v=*/true);
    ::new (place) LSLiteral(static_cast<signed char>(1));
    ::new (place) LSLiteral(static_cast<short>(1));
    ::new (place) LSLiteral(1);
    ::new (place) LSLiteral(1L);
    ::new (place) LSLiteral(1.0);
    ::new (place) LSLiteral(s);
    ::new (place) LSLiteral(other);
    ::new (place) LSLiteral(std::move(other));
    static_cast<LSLiteral*>(place)->operator=(other); // NOLINT(bugprone-use-after-move): never run
    static_cast<LSLiteral*>(place)->operator=(std::move(other));
    static_cast<LSLiteral*>(place)->~LSLiteral();
    ::new (place) LiteralException(s);
    ::new (place) LSToken;
    ::new (place) LSToken(token.m_type, token.m_str);
    ::new (place) LSVariableList;
    ::new (place) PyObjectRef;
    ::new (place) PyObjectRef(static_cast<PyObject*>(place));
    ::new (place) PyObjectRef(std::move(*static_cast<PyObjectRef*>(place)));
    // With the tables of virtual functions, which optimisation at link time would drop.
    static_cast<ExpansionLimitException*>(place)
        ->ExpansionLimitException::~ExpansionLimitException();
    static_cast<LSVar*>(place)->LSVar::~LSVar();
}

using Literal = LSLiteral;
[[gnu::used]] Literal (*const s_makeChar)(char) = &Literal::MakeChar;
[[gnu::used]] bool (Literal::*const s_isType)(ELiteral) const = &Literal::operator==;
[[gnu::used]] bool (Literal::*const s_isNotType)(ELiteral) const = &Literal::operator!=;
[[gnu::used]] bool (Literal::*const s_asBool)(bool) const = &Literal::AsBool;
[[gnu::used]] char (Literal::*const s_asChar)(bool) const = &Literal::AsChar;
[[gnu::used]] signed char (Literal::*const s_asInt8)(bool) const = &Literal::AsInt8;
[[gnu::used]] short (Literal::*const s_asInt16)(bool) const = &Literal::AsInt16;
[[gnu::used]] int (Literal::*const s_asInt32)(bool) const = &Literal::AsInt32;
[[gnu::used]] long (Literal::*const s_asInt64)(bool) const = &Literal::AsInt64;
[[gnu::used]] unsigned char (Literal::*const s_asUInt8)(bool) const = &Literal::AsUInt8;
[[gnu::used]] unsigned short (Literal::*const s_asUInt16)(bool) const = &Literal::AsUInt16;
[[gnu::used]] unsigned int (Literal::*const s_asUInt32)(bool) const = &Literal::AsUInt32;
[[gnu::used]] unsigned long (Literal::*const s_asUInt64)(bool) const = &Literal::AsUInt64;
[[gnu::used]] float (Literal::*const s_asFloat32)(bool) const = &Literal::AsFloat32;
[[gnu::used]] double (Literal::*const s_asFloat64)(bool) const = &Literal::AsFloat64;
[[gnu::used]] xstring (Literal::*const s_asString)(bool) const = &Literal::AsString;
[[gnu::used]] void (Literal::*const s_putString)(xstring&, bool) const = &Literal::AsString;

[[gnu::used]] bool (LSToken::*const s_isToken)() const = &LSToken::boolean_test;
[[gnu::used]] bool (PyObjectRef::*const s_isObject)() const = &PyObjectRef::boolean_test;
[[gnu::used]] bool (LSMacroVariable::*const s_isPython)() const = &LSMacroVariable::IsPython;
[[gnu::used]] bool (LSMacroVariable::*const s_isNaked)() const = &LSMacroVariable::IsNaked;
[[gnu::used]] ssize_t (LSMacroVariable::*const s_numArgs)() const = &LSMacroVariable::GetNumArgs;
[[gnu::used]] SubString (LSMacroVariable::*const s_body)() const =
    &LSMacroVariable::GetSubstitutionString;

} // namespace

} // namespace telv
