// Making variables that share the text that they view.
#include "tlMacroExpander/src/Values/OwningVariables.h"
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include <typeinfo>

namespace telv
{

namespace
{

std::shared_ptr<TemporaryText> Share(TemporaryText* text)
{
    return text == nullptr ? nullptr : text->shared_from_this();
}

} // namespace

std::unique_ptr<LSMacroVariable> MakeMacroVariable(ELSVariable returnType, SubString name,
                                                   VarFrame* context, TemporaryText* nameOwner,
                                                   TemporaryText* bodyOwner)
{
    if (nameOwner == nullptr && bodyOwner == nullptr)
        return std::make_unique<LSMacroVariable>(returnType, name, context, false, false, false);
    auto owning =
        std::make_unique<OwningMacroVariable>(returnType, name, context, false, false, false);
    owning->m_nameOwner = Share(nameOwner);
    owning->m_bodyOwner = Share(bodyOwner);
    return owning;
}

std::unique_ptr<LSValueVariable> MakeValueVariable(ELSVariable type, SubString name,
                                                   TemporaryText* nameOwner)
{
    if (nameOwner == nullptr)
        return std::make_unique<LSValueVariable>(type, name, SubString());
    auto owning = std::make_unique<OwningValueVariable>(type, name, SubString());
    owning->m_nameOwner = Share(nameOwner);
    return owning;
}

TemporaryText* BodyOwner(const LSMacroVariable& macroVar)
{
    if (typeid(macroVar) != typeid(OwningMacroVariable))
        return nullptr;
    return static_cast<const OwningMacroVariable&>(macroVar).m_bodyOwner.get();
}

} // namespace telv
