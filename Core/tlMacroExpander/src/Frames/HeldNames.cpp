// SPDX-License-Identifier: MIT
// The list of those who hold names of a table.
#include "tlMacroExpander/src/Frames/HeldNames.h"

namespace telv
{

void HeldNames::Join(NameTable& table) noexcept
{
    m_table = &table;
    m_previous = nullptr;
    m_next = table.m_held;
    if (m_next != nullptr)
        m_next->m_previous = this;
    table.m_held = this;
}

void HeldNames::LetGo() noexcept
{
    if (m_table == nullptr)
        return;
    for (NameEntry* const entry : m_entries)
        NameTable::Release(*entry);
    m_entries.clear();
    (m_previous != nullptr ? m_previous->m_next : m_table->m_held) = m_next;
    if (m_next != nullptr)
        m_next->m_previous = m_previous;
    m_table = nullptr;
}

} // namespace telv
