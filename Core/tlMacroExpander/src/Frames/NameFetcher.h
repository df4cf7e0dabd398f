// SPDX-License-Identifier: MIT
// Has what looking up the next names of a text will need on its way from memory.
//
// In a table of many names each look-up waits for its slot, for the entry, and for the variable,
// one after the other. This looks at names ahead of the expansion and asks for these, without
// waiting. It changes nothing; what it reads may be of another name by the time it is used.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlUtils/HeldContainers.h"

namespace telv
{

class NameEntry;
class NameTable;

/// Belongs to a table, whatever texts are expanded with its names.
class NameFetcher : public HeldObject
{
public:
    explicit NameFetcher(const NameTable& names) : m_names(names) {}

    /// Looks at what comes behind the begin of `rest`, a token of a text. All but the last `unseen`
    /// characters of the text have been looked at.
    void LookAhead(SubString rest, ssize_t& unseen);

private:
    struct Stage
    {
        uint64 m_hash;
        const NameEntry* m_entry;
        const LSVariable* m_var; ///< Of the root or an import: lives as long as the table.
    };

    static constexpr ssize_t s_least = 96; ///< So far ahead it stays,
    static constexpr ssize_t s_most = 192; ///< or goes, in characters.
    static constexpr size_t s_stages = 16;
    static constexpr size_t s_wait = 3; ///< Names between two stages.

    void Fetch(SubString name);
    static void FetchBinding(Stage& stage);
    static void FetchImported(Stage& stage);
    static void FetchBody(const Stage& stage);

    const NameTable& m_names;
    size_t m_count = 0;       ///< Of the names that were seen.
    Stage m_stages[s_stages]; ///< Of the last of them.
};

} // namespace telv
