// SPDX-License-Identifier: MIT
// Names that somebody outside the table keeps as entries: the words of a scanned text, the formal
// arguments of a macro. Who holds them may be there longer than the table, and the other way round.
#pragma once

#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlUtils/HeldContainers.h"

namespace telv
{

/// Entries of one table at a time; none when that table is gone.
class HeldNames
{
public:
    HeldNames() = default;
    ~HeldNames() { LetGo(); }
    HeldNames(const HeldNames&) = delete;
    HeldNames& operator=(const HeldNames&) = delete;

    bool AreOf(const NameTable& table) const { return m_table == &table; }
    size_t Count() const { return m_entries.size(); }
    NameEntry& operator[](size_t index) const { return *m_entries[index]; }

    /// Holds `count` names of `table` instead: those that `nameAt` gives for 0, 1, and so on.
    template <class NameAt>
    void Hold(NameTable& table, size_t count, const NameAt& nameAt)
    {
        LetGo();
        m_entries.reserve(count);
        Join(table);
        try
        {
            for (size_t i = 0; i < count; ++i)
            {
                const SubString name = nameAt(i);
                NameEntry* const entry = table.Intern(name, HashName(name));
                NameTable::AddRef(*entry);
                m_entries.push_back(entry);
            }
        }
        catch (...)
        {
            LetGo();
            throw;
        }
    }

    /// Holds nothing any more.
    void LetGo() noexcept;

private:
    friend class NameTable;

    void Join(NameTable& table) noexcept;

    HeldVector<NameEntry*> m_entries;
    NameTable* m_table = nullptr; ///< Null: none, or it is gone.
    HeldNames* m_previous = nullptr;
    HeldNames* m_next = nullptr; ///< Of the same table.
};

} // namespace telv
