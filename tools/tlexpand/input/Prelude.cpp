// SPDX-License-Identifier: MIT
// A frame is given to files when it is finished.
#include "input/Prelude.h"
#include <memory>

namespace telv::tool
{

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

void Prelude::MakeVisibleIn(FileScopeVarFrame& frame)
{
    if (m_last == nullptr)
        return;
    if (m_given != m_last)
        m_names.Give(*m_last);
    m_given = m_last;
    m_names.MakeVisibleIn(frame);
    frame.AddImport(m_last);
}

} // namespace telv::tool
