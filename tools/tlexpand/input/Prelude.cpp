// SPDX-License-Identifier: MIT
// Copies of macros view the same text as the originals, which live as long as the prelude.
#include "input/Prelude.h"
#include <memory>

namespace telv::tool
{

namespace
{

void AddCopy(FileScopeVarFrame& frame, const LSMacroVariable& macro)
{
    auto copy = std::make_unique<LSMacroVariable>(macro.m_returnType, macro.m_name, macro.m_context,
                                                  macro.m_isPython, macro.m_naked, macro.m_isFnArg);
    copy->m_argNames = macro.m_argNames;
    copy->SetSubstitutionString(macro.GetSubstitutionString(), /*copy=*/false, macro.m_indentation);
    frame.m_localVariables.Add(copy.release());
}

} // namespace

FileScopeVarFrame& Prelude::LastFrame()
{
    if (m_last == nullptr)
    {
        StartText(/*mayImport=*/false);
        FinishText();
    }
    return *m_last;
}

void Prelude::Define(const xstring& name, const xstring& value)
{
    LastFrame().InsertDollarMacro(name, value);
}

void Prelude::DefineMacro(SubString name, SubString body)
{
    auto macro = std::make_unique<LSMacroVariable>(LSV_MACRO, name, nullptr, /*isPython=*/false,
                                                   /*naked=*/false, /*isFnArg=*/false);
    macro->SetSubstitutionString(body, /*copy=*/false, /*indentation=*/0);
    LastFrame().m_localVariables.Add(macro.release());
}

FileScopeVarFrame& Prelude::StartText(bool mayImport)
{
    if (m_last != nullptr && !mayImport)
        return *m_last;
    FileScopeVarFrame& frame = m_frames.emplace_back();
    MakeVisibleIn(frame);
    return frame;
}

void Prelude::MakeVisibleIn(FileScopeVarFrame& frame) const
{
    if (m_last == nullptr)
        return;
    for (const auto& [name, variable] : m_last->m_localVariables.m_map)
        if (variable->GetType() == LSV_MACRO)
            AddCopy(frame, static_cast<const LSMacroVariable&>(*variable));
    for (const auto& [name, value] : m_last->m_dollarMacrosMap)
        frame.InsertDollarMacro(name, value);
    frame.AddImport(m_last);
}

} // namespace telv::tool
