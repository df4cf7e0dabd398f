// SPDX-License-Identifier: MIT
// Making variables that share the text that they view, and keeping what is known of it.
#include "tlMacroExpander/src/Values/OwningVariables.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include <typeinfo>
#include <utility>

namespace telv
{

namespace
{

std::shared_ptr<TemporaryText> Share(TemporaryText* text)
{
    return text == nullptr ? nullptr : text->shared_from_this();
}

/// A short text is not worth being scanned for so few uses; a longer one for one.
constexpr ssize_t s_short = 64;
constexpr uint32 s_fewUses = 3;

OwningMacroVariable* AsOwningMacro(LSMacroVariable& macroVar)
{
    return const_cast<OwningMacroVariable*>(AsOwningMacro(std::as_const(macroVar)));
}

/// A value that owns nothing but itself.
class PlainValueVariable final : public LSValueVariable, public HeldObject
{
public:
    using LSValueVariable::LSValueVariable;
};

/// A variable in the memory of the tree of `frame`; in its own when that is null.
template <class T, class... Args>
std::unique_ptr<T> MakeFor(const VarFrame* frame, const Args&... args)
{
    if (frame == nullptr)
        return std::make_unique<T>(args...);
    return std::unique_ptr<T>(new (FrameTree::Names(*frame).VariableMemory()) T(args...));
}

} // namespace

MacroExtras& OwningMacroVariable::Extras() const
{
    if (m_extras == nullptr)
        m_extras = std::make_unique<MacroExtras>();
    return *m_extras;
}

const AliasEnd* OwningMacroVariable::KnownAliasEnd() const
{
    if (m_extras == nullptr || m_extras->m_aliasEnd.m_links == 0)
        return nullptr;
    const AliasEnd& end = m_extras->m_aliasEnd;
    return end.m_changes == FrameTree::Names(*m_context).Changes() ? &end : nullptr;
}

std::unique_ptr<LSMacroVariable> MakeMacroVariable(ELSVariable returnType, SubString name,
                                                   VarFrame* context, TemporaryText* nameOwner,
                                                   TemporaryText* bodyOwner, const VarFrame* memory)
{
    auto owning =
        MakeFor<OwningMacroVariable>(memory, returnType, name, context, false, false, false);
    owning->m_owner = bodyOwner;
    if (nameOwner != nullptr || bodyOwner != nullptr)
    {
        owning->Extras().m_nameOwner = Share(nameOwner);
        owning->Extras().m_bodyOwner = Share(bodyOwner);
    }
    return owning;
}

std::unique_ptr<OwningMacroVariable> MakeLoopVariable(SubString name, VarFrame* context,
                                                      TemporaryText* bodyOwner,
                                                      const LevelText& value)
{
    auto owning =
        MakeFor<OwningMacroVariable>(context, LSV_MACRO, name, context, false, false, false);
    owning->m_owner = bodyOwner;
    SetLoopVariable(*owning, value);
    return owning;
}

void SetLoopVariable(OwningMacroVariable& var, const LevelText& value)
{
    var.SetSubstitutionString(value.m_text, /*copy=*/false, 0);
    if (var.m_scanned.Get() != value.m_scanned)
        var.m_scanned = CountedRef<ScannedText>(value.m_scanned);
    var.m_first = value.m_scanned == nullptr ? 0 : value.m_first;
    var.m_uses = 0;
}

std::unique_ptr<LSValueVariable> MakeValueVariable(ELSVariable type, SubString name,
                                                   TemporaryText* nameOwner, const VarFrame* frame)
{
    if (nameOwner == nullptr && frame == nullptr)
        return std::make_unique<PlainValueVariable>(type, name, SubString());
    auto owning = MakeFor<OwningValueVariable>(frame, type, name, SubString());
    owning->m_nameOwner = Share(nameOwner);
    return owning;
}

LevelText BodyOf(LSMacroVariable& macroVar)
{
    LevelText text{macroVar.GetSubstitutionString()};
    OwningMacroVariable* const owning = AsOwningMacro(macroVar);
    if (owning == nullptr)
        return text;
    // An application may have given the macro another body.
    if (owning->m_scanned && !owning->m_scanned->Begins(text.m_text, owning->m_first))
        owning->m_scanned = CountedRef<ScannedText>();
    if (!owning->m_scanned && ++owning->m_uses > (text.m_text.size() <= s_short ? s_fewUses : 1))
    {
        owning->m_scanned = ScannedText::Make(text.m_text);
        owning->m_first = 0;
    }
    text.m_scanned = owning->m_scanned.Get();
    text.m_first = owning->m_first;
    text.m_owner = owning->m_owner;
    return text;
}

NameEntry& FormalName(LSMacroVariable& macroVar, ssize_t index, NameTable& table)
{
    const xvector<LSFormalArg>& formals = macroVar.m_argNames;
    OwningMacroVariable* const owning = AsOwningMacro(macroVar);
    if (owning == nullptr || (owning->m_uses <= 1 && !owning->m_scanned))
    {
        const SubString name = formals[index].m_name;
        return *table.Intern(name, HashName(name));
    }
    HeldNames& names = owning->Extras().m_formalNames;
    if (!names.AreOf(table) || names.Count() != static_cast<size_t>(formals.size()))
        names.Hold(table, static_cast<size_t>(formals.size()),
                   [&](size_t i) { return formals[static_cast<ssize_t>(i)].m_name; });
    return names[static_cast<size_t>(index)];
}

void KeepScanned(LSMacroVariable& macroVar, const LevelText& body)
{
    OwningMacroVariable* const owning = AsOwningMacro(macroVar);
    if (body.m_scanned == nullptr || owning == nullptr)
        return;
    owning->m_scanned = CountedRef<ScannedText>(body.m_scanned);
    owning->m_first = body.m_first;
}

const LSValueVariable* AsValue(const LSVariable& var)
{
    const std::type_info* const type = &typeid(var);
    if (type == &typeid(OwningValueVariable) || type == &typeid(LSValueVariable))
        return static_cast<const LSValueVariable*>(&var);
    return dynamic_cast<const LSValueVariable*>(&var);
}

TemporaryText* BodyOwner(const LSMacroVariable& macroVar)
{
    const OwningMacroVariable* const owning = AsOwningMacro(macroVar);
    return owning == nullptr ? nullptr : owning->m_owner;
}

} // namespace telv
