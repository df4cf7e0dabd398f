// SPDX-License-Identifier: MIT
// What is given, by name and edition.
#include "tlMacroExpander/src/Frames/GivenNames.h"
#include "tlMacroExpander/src/Frames/NameTable.h"

namespace telv
{

namespace
{

class GivenMacro final : public LSMacroVariable, public HeldObject
{
public:
    explicit GivenMacro(const LSMacroVariable& macro)
        : LSMacroVariable(macro.m_returnType, macro.m_name, macro.m_context, macro.m_isPython,
                          macro.m_naked, macro.m_isFnArg)
    {
        m_argNames = macro.m_argNames;
        SetSubstitutionString(macro.GetSubstitutionString(), /*copy=*/false, macro.m_indentation);
    }
};

} // namespace

xstring DollarVariable::NameOf(SubString dollarMacro)
{
    xstring name("_");
    name += dollarMacro;
    name += '_';
    return name;
}

template <class T>
const T* GivenNames::Find(const ByName<T>& map, SubString name, Edition edition)
{
    const auto found = map.find(name);
    return found == map.end() ? nullptr : found->second.At(edition);
}

void GivenNames::Give(FileScopeVarFrame& frame)
{
    ++m_edition;
    NameTable& names = FrameTree::Names(frame);
    names.NoteGiven(*this);
    names.ForEachRootVar(
        [&](const LSVariable* v)
        {
            const bool isMacro = v->GetType() == LSV_MACRO;
            if (!isMacro && !m_macros.contains(v->m_name))
                return;
            m_marks.Add(v->m_name);
            m_macros[v->m_name].Set(m_edition,
                                    isMacro ? static_cast<const LSMacroVariable*>(v) : nullptr);
        });
    for (const auto& [name, value] : frame.m_dollarMacrosMap)
    {
        m_marks.Add(DollarVariable::NameOf(name));
        m_dollarMacros[name].Set(m_edition, &value);
    }
}

void GivenNames::MakeVisibleIn(FileScopeVarFrame& frame) const
{
    FrameTree::Names(frame).SeeGiven({this, m_edition, &frame});
}

const xstring* GivenNames::FindDollarMacro(SubString name, Edition edition) const
{
    return Find(m_dollarMacros, name, edition);
}

const xstring* GivenNames::FindDollarVariable(SubString name, Edition edition) const
{
    constexpr ssize_t underscores = 2;
    if (m_dollarMacros.empty() || name.size() <= underscores || name.m_p1[0] != '_' ||
        name.m_p2[-1] != '_')
        return nullptr;
    return FindDollarMacro(SubString(name.begin() + 1, name.end() - 1), edition);
}

std::unique_ptr<LSVariable> GivenNames::Copy(SubString name, Edition edition) const
{
    // A file is given the macros first.
    if (const xstring* const value = FindDollarVariable(name, edition))
        return std::make_unique<DollarVariable>(name, *value);
    if (const LSMacroVariable* const macro = Find(m_macros, name, edition))
        return std::make_unique<GivenMacro>(*macro);
    return nullptr;
}

bool GivenNames::Has(SubString name, Edition edition) const
{
    return FindDollarVariable(name, edition) != nullptr || Find(m_macros, name, edition) != nullptr;
}

} // namespace telv
