// SPDX-License-Identifier: MIT
// Definitions by name, and the text in which they are replaced: what several floor programs do.
#pragma once

#include "Floor.h"
#include <functional>
#include <string_view>
#include <vector>

namespace floors
{

/// Maps names to bodies; open addressing, at most half full. Views into the texts added.
class WordTable
{
public:
    explicit WordTable(size_t names)
    {
        size_t size = 16;
        while (size < 2 * names)
            size *= 2;
        m_slots.resize(size);
    }
    void Add(std::string_view name, std::string_view body) { Slot(name) = {name, body}; }
    /// The body of a name, or null.
    const std::string_view* Find(std::string_view name)
    {
        const Entry& entry = Slot(name);
        return entry.m_name.empty() ? nullptr : &entry.m_body;
    }

private:
    struct Entry
    {
        std::string_view m_name;
        std::string_view m_body;
    };

    Entry& Slot(std::string_view name)
    {
        const size_t mask = m_slots.size() - 1;
        size_t at = std::hash<std::string_view>()(name) & mask;
        while (!m_slots[at].m_name.empty() && m_slots[at].m_name != name)
            at = (at + 1) & mask;
        return m_slots[at];
    }

    std::vector<Entry> m_slots;
};

/// Reads the lines `@def NAME = {BODY}` that `text` begins with, moving it behind them.
inline void ReadDefinitions(std::string_view& text, WordTable& table)
{
    constexpr std::string_view begin = "@def ";
    while (text.substr(0, begin.size()) == begin)
    {
        text.remove_prefix(begin.size());
        const std::string_view name = Cut(text, " = {");
        table.Add(name, Cut(text, "}\n"));
    }
}

/// Writes `text` with the words of the table replaced; strings are copied as they are.
inline void Replace(std::string_view text, WordTable& table, Output& output)
{
    const char* const end = text.data() + text.size();
    const char* pending = text.data();
    for (const char* p = pending; p != end;)
    {
        if (!IsOfWord(*p))
        {
            ++p;
            continue;
        }
        const char* const word = p;
        p = EndOfWord(p, end);
        if (const auto* const body = table.Find({word, static_cast<size_t>(p - word)}))
        {
            output.Put({pending, static_cast<size_t>(word - pending)});
            output.Put(*body);
            pending = p;
        }
    }
    output.Put({pending, static_cast<size_t>(end - pending)});
}

} // namespace floors
