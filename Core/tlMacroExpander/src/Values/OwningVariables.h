// SPDX-License-Identifier: MIT
// Variables that the library makes.
//
// They may be defined in text which exists only while expanding, and be placed in a frame that
// outlives that text, so they share its ownership: the text lives exactly as long as somebody views
// it, at the same address. There are two classes, as there are two public bases. Macros besides
// keep what is known of their bodies; most need neither, so what some need is apart (MacroExtras).
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"
#include "tlMacroExpander/src/Values/Recyclable.h"
#include <memory>
#include <typeinfo>

namespace telv
{

class OwningMacroVariable;
class TemporaryText;

/// Where a macro leads whose text is the name of another one, whose text may be a name as well: an
/// argument that is passed on.
struct AliasEnd
{
    OwningMacroVariable* m_macro = nullptr; ///< Where they end: its text names no such macro.
    ssize_t m_links = 0;                    ///< Names that lead there; 0: not known.
    uint64 m_changes = 0; ///< NameTable::Changes when it was found; with another it is outdated.
};

/// What some macros have.
struct MacroExtras : HeldObject
{
    std::shared_ptr<TemporaryText> m_nameOwner; ///< Null when the application owns the text.
    std::shared_ptr<TemporaryText> m_bodyOwner; ///< Keeps alive `m_owner` of the macro; or null.
    HeldNames m_formalNames; ///< Of the formal arguments, once they have been bound.
    AliasEnd m_aliasEnd;
};

/// A macro that the library made.
class OwningMacroVariable final : public LSMacroVariable, public Recyclable<OwningMacroVariable>
{
public:
    using LSMacroVariable::LSMacroVariable;

    /// Made if need be.
    MacroExtras& Extras() const;
    /// Where the names lead that begin with the text of this macro; null when that is not known.
    const AliasEnd* KnownAliasEnd() const;

    CountedRef<ScannedText> m_scanned; ///< Once it is known; of the body or a larger text.
    TemporaryText* m_owner = nullptr;  ///< Of the body and the formal names; or null.
    uint32 m_first = 0;                ///< The body's first item in it.
    uint32 m_uses = 0; ///< How often the body has been expanded, as far as it matters.

private:
    mutable std::unique_ptr<MacroExtras> m_extras;
};

/// A value whose name lies in a temporary text.
class OwningValueVariable final : public LSValueVariable, public Recyclable<OwningValueVariable>
{
public:
    using LSValueVariable::LSValueVariable;

    std::shared_ptr<TemporaryText> m_nameOwner;
};

/// Null for another variable, or a macro that an application made. The class is made in this
/// library only.
inline const OwningMacroVariable* AsOwningMacro(const LSVariable& var)
{
    return &typeid(var) == &typeid(OwningMacroVariable)
               ? static_cast<const OwningMacroVariable*>(&var)
               : nullptr;
}

/// A macro that shares the texts of `nameOwner` and `bodyOwner`, each of which may be null. With
/// `memory` it takes its memory from that tree of frames and has to go to a frame of it.
std::unique_ptr<LSMacroVariable> MakeMacroVariable(ELSVariable returnType, SubString name,
                                                   VarFrame* context, TemporaryText* nameOwner,
                                                   TemporaryText* bodyOwner,
                                                   const VarFrame* memory);

/// What a round of a loop binds: a macro in a frame of the tree of `context`. The loop keeps the
/// text of the name alive, and `bodyOwner`, if there is one.
std::unique_ptr<OwningMacroVariable> MakeLoopVariable(SubString name, VarFrame* context,
                                                      TemporaryText* bodyOwner,
                                                      const LevelText& value);
/// Makes it what a later round binds.
void SetLoopVariable(OwningMacroVariable& var, const LevelText& value);

/// A value that shares the text of its name; `nameOwner` may be null. With `frame`, it goes to a
/// frame of that tree and takes its memory from there.
std::unique_ptr<LSValueVariable> MakeValueVariable(ELSVariable type, SubString name,
                                                   TemporaryText* nameOwner,
                                                   const VarFrame* frame = nullptr);

/// The body of a macro for the next expansion: with its owner and with what is known of it. It is
/// scanned before it is expanded the second time.
LevelText BodyOf(LSMacroVariable& macroVar);

/// The entry of the name of a formal argument in `table`; held by the macro where the library made
/// it.
NameEntry& FormalName(LSMacroVariable& macroVar, ssize_t index, NameTable& table);

/// Keeps what is known of the body of a macro that the library made.
void KeepScanned(LSMacroVariable& macroVar, const LevelText& body);

/// The variable as a value; null when it is something else.
const LSValueVariable* AsValue(const LSVariable& var);

/// Who owns the body and the formal names of a macro; null when the application does.
TemporaryText* BodyOwner(const LSMacroVariable& macroVar);

} // namespace telv
