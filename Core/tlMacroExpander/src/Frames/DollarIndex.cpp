// SPDX-License-Identifier: MIT
// The walk through the imports, and its memory.
#include "tlMacroExpander/src/Frames/DollarIndex.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include <vector>

namespace telv
{

namespace
{

using Visited = HeldHashSet<const FileScopeVarFrame*>;

/// Calls `visit` with what `file` imports, from the given one of its imports on and through them:
/// depth first in the order of import, each file once, until it returns true. A file that was left
/// has nothing more to offer.
template <class Visitor>
void Walk(const FileScopeVarFrame& file, ssize_t from, Visited& visited, Visitor visit)
{
    HeldVector<const FileScopeVarFrame*> pending;
    const auto pushImports = [&](const FileScopeVarFrame& importer, ssize_t first)
    {
        for (ssize_t i = importer.m_imports.size(); i-- > first;)
            pending.push_back(importer.m_imports[i]);
    };
    visited.insert(&file);
    pushImports(file, from);
    while (!pending.empty())
    {
        const FileScopeVarFrame* const at = pending.back();
        pending.pop_back();
        if (!visited.insert(at).second)
            continue;
        FrameTree::Names(*at).Watch();
        if (visit(*at))
            return;
        pushImports(*at, 0);
    }
}

/// The literal way.
const xstring* FindByWalking(const FileScopeVarFrame& file, const xstring& name)
{
    Visited visited;
    const xstring* value = nullptr;
    Walk(file, 0, visited,
         [&](const FileScopeVarFrame& at)
         {
             const auto found = at.m_dollarMacrosMap.find(name);
             if (found != at.m_dollarMacrosMap.end())
                 value = &found->second;
             return value != nullptr;
         });
    return value;
}

} // namespace

const xstring* DollarIndex::FindImported(const FileScopeVarFrame& file, const xstring& name)
{
    if (m_seenChanges != ImportIndex::Changes())
        Forget();
    if (!m_isAsked)
    {
        m_isAsked = true;
        return FindByWalking(file, name);
    }
    if (!m_isWhole || m_imports != file.m_imports.size())
        Synchronise(file);
    const auto found = m_values.find(name);
    return found == m_values.end() ? nullptr : found->second;
}

void DollarIndex::Forget()
{
    m_values.clear();
    m_visited.clear();
    m_imports = 0;
    m_isWhole = false;
    m_isAsked = false;
    m_seenChanges = ImportIndex::Changes();
}

void DollarIndex::Synchronise(const FileScopeVarFrame& file)
{
    if (!m_isWhole)
    {
        Forget(); // an earlier attempt may have failed half-way
        m_isAsked = true;
    }
    m_isWhole = false;
    const NameTable& names = FrameTree::Names(file);
    Walk(file, m_imports, m_visited,
         [&](const FileScopeVarFrame& at)
         {
             if (names.SeesAllOf(FrameTree::Names(at)))
                 return false; // found before the imports are asked
             for (const auto& [name, value] : at.m_dollarMacrosMap)
                 m_values.try_emplace(name, &value);
             return false;
         });
    m_imports = file.m_imports.size();
    m_isWhole = true;
}

} // namespace telv
