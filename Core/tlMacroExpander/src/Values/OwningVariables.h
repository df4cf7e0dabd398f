// Variables that were defined in text which exists only while expanding.
//
// They may be placed in a frame that outlives that text, so they share its ownership: the text
// lives exactly as long as somebody views it, at the same address.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include <memory>

namespace telv
{

class TemporaryText;

/// A macro whose name, formal names or body lie in temporary texts.
class OwningMacroVariable final : public LSMacroVariable
{
public:
    using LSMacroVariable::LSMacroVariable;

    std::shared_ptr<TemporaryText> m_nameOwner; ///< Null when the application owns the text.
    std::shared_ptr<TemporaryText> m_bodyOwner; ///< Of the body and the formal names; or null.
};

/// A value whose name lies in a temporary text.
class OwningValueVariable final : public LSValueVariable
{
public:
    using LSValueVariable::LSValueVariable;

    std::shared_ptr<TemporaryText> m_nameOwner;
};

/// A macro that shares the texts of `nameOwner` and `bodyOwner`, each of which may be null.
std::unique_ptr<LSMacroVariable> MakeMacroVariable(ELSVariable returnType, SubString name,
                                                   VarFrame* context, TemporaryText* nameOwner,
                                                   TemporaryText* bodyOwner);

/// A value that shares the text of its name; `nameOwner` may be null.
std::unique_ptr<LSValueVariable> MakeValueVariable(ELSVariable type, SubString name,
                                                   TemporaryText* nameOwner);

/// Who owns the body and the formal names of a macro; null when the application does.
TemporaryText* BodyOwner(const LSMacroVariable& macroVar);

} // namespace telv
