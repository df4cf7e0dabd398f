// SPDX-License-Identifier: MIT
// File-scope frames: imports and dollar macros.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/LSVariable"

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Frames/DollarMacroPass.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include "tlUtils/HeldContainers.h"
#include <cstring>
#include <memory>

namespace telv
{

FileScopeVarFrame::FileScopeVarFrame() : VarFrame(nullptr)
{
    m_fileScopeFrame = this;
}

FileScopeVarFrame::~FileScopeVarFrame() = default;

void FileScopeVarFrame::AddImport(FileScopeVarFrame* md)
{
    TELV_ASSERT(md);
    ImportFrame(md);
    m_imports.push_back(md);
    FrameTree::Names(*this).NoteChange();
}

namespace
{

/// The map of a frame is made of the standard library's nodes, which are not counted.
void HoldNode()
{
    constexpr ssize_t pointers = 4 * sizeof(void*);
    if (RunState* const state = RunState::Current())
        state->HoldToEnd(pointers + 2 * sizeof(xstring));
}

} // namespace

void FileScopeVarFrame::InsertDollarMacro(const xstring& name, const xstring& value)
{
    const auto [macro, isNew] = m_dollarMacrosMap.try_emplace(name);
    if (isNew)
        HoldNode();
    macro->second = value;
    const xstring variable = DollarVariable::NameOf(name);
    m_localVariables.Add(std::make_unique<DollarVariable>(variable, value).release());
}

const xstring* FileScopeVarFrame::FindDollarMacro(const xstring& name) const
{
    const auto own = m_dollarMacrosMap.find(name);
    if (own != m_dollarMacrosMap.end())
        return &own->second;
    if (const xstring* const given = FrameTree::Names(*this).FindGivenDollarMacro(name))
        return given;
    if (m_imports.empty())
        return nullptr;
    return FrameTree::Names(*this).DollarMacros().FindImported(*this, name);
}

const char* ScanDollarMacro(SubString s, SubString& name)
{
    if (s.size() < 4 || s.m_p1[0] != '$' || s.m_p1[1] != '(')
        return nullptr;
    SubString rest(s.begin() + 2, s.end());
    const char* const start = rest.begin();
    if (!ScanIdentifier(rest) || rest.empty() || *rest != ')')
        return nullptr;
    name = SubString(start, rest.begin());
    return rest.begin() + 1;
}

bool FileScopeVarFrame::ApplyDollarMacros(xostream& os, SubString s) const
{
    return RunDollarMacroPass(*this, os, s);
}

bool FileScopeVarFrame::ApplyDollarMacros(xstring& s) const
{
    const void* const dollar =
        s.empty() ? nullptr : std::memchr(s.begin(), '$', static_cast<size_t>(s.size()));
    return dollar != nullptr && SubstituteDollarMacros(*this, s);
}

} // namespace telv
