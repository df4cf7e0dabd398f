// SPDX-License-Identifier: MIT
// The map of a variable list: what the table of names says about one frame, and the order of names.
#include "tlMacroExpander/LSVariableMap.h"
#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include <algorithm>

namespace telv
{

void LSVariableMap::MakeNames()
{
    m_names = new NameTable();
    m_ownsNames = true;
}

void LSVariableMap::Free()
{
    delete[] m_sorted;
    if (m_ownsNames)
        delete m_names;
}

bool LSVariableMap::HasNone() const
{
    const bool mayBeGiven = m_frame == nullptr && m_names != nullptr && m_names->SeesGiven();
    return m_size == 0 && !mayBeGiven;
}

LSVariable* LSVariableMap::Lookup(SubString name) const
{
    return HasNone() ? nullptr : Lookup(name, HashName(name));
}

LSVariable* LSVariableMap::Lookup(SubString name, uint64 hash) const
{
    if (HasNone())
        return nullptr;
    return m_frame != nullptr ? m_names->FindOwn(m_frame, name, hash)
                              : m_names->RootVar(name, hash);
}

void LSVariableMap::Set(LSVariable* v)
{
    if (m_names == nullptr)
        MakeNames();
    Set(v, *m_names->Intern(v->m_name, HashName(v->m_name)));
    m_names->NoteDefinition(m_frame);
}

void LSVariableMap::Set(LSVariable* v, NameEntry& entry)
{
    const bool isNew = m_frame != nullptr ? m_names->Bind(m_frame, v, entry, m_bindings)
                                          : m_names->BindInRoot(v, entry);
    m_size += isNew ? 1 : 0;
    if (m_sorted != nullptr)
    {
        delete[] m_sorted;
        m_sorted = nullptr;
    }
}

void LSVariableMap::Sort() const
{
    if (m_sorted != nullptr)
        return;
    m_sorted = new LSVariable*[static_cast<size_t>(m_size)];
    LSVariable** next = m_sorted;
    if (m_frame == nullptr)
        m_names->ForEachRootVar([&](LSVariable* v) { *next++ = v; });
    for (const NameBinding* binding = m_bindings; binding != nullptr;
         binding = binding->m_nextOfFrame)
    {
        if (binding->m_var != nullptr)
            *next++ = binding->m_var;
    }
    std::sort(m_sorted, next,
              [](const LSVariable* a, const LSVariable* b)
              { return strcmp(a->m_name, b->m_name) < 0; });
}

LSVariableMap::const_iterator LSVariableMap::begin() const
{
    if (m_size == 0)
        return end();
    Sort();
    return const_iterator(this, m_sorted[0]);
}

LSVariableMap::value_type LSVariableMap::const_iterator::operator*() const
{
    return value_type(m_var->m_name, m_var);
}

LSVariableMap::const_iterator& LSVariableMap::const_iterator::operator++()
{
    m_map->Sort();
    LSVariable** const last = m_map->m_sorted + m_map->m_size;
    LSVariable** const next = std::upper_bound(m_map->m_sorted, last, m_var,
                                               [](const LSVariable* a, const LSVariable* b)
                                               { return strcmp(a->m_name, b->m_name) < 0; });
    m_var = next == last ? nullptr : *next;
    return *this;
}

} // namespace telv
