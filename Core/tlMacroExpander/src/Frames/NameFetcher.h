// SPDX-License-Identifier: MIT
// Has what looking up the next names of a text will need on its way from memory.
//
// In a table of many names each look-up waits for its slot, for the entry, and for the variable,
// one after the other. This looks at names ahead of the expansion and asks for these, without
// waiting. It changes nothing; what it reads may be of another name by the time it is used.
#pragma once

#include "tlMacroExpander/src/Frames/NameTable.h"
#include <limits>

namespace telv
{

/// For one text that is expanded with the names of one table.
class NameFetcher
{
public:
    explicit NameFetcher(const NameTable& names) : m_names(names) {}

    /// The expansion has come to the begin of `rest`, a token of the text.
    void Advance(SubString rest)
    {
        if (m_names.IsLarge() && m_unseen > 0 && rest.size() - m_unseen < s_least) [[unlikely]]
            LookAhead(rest);
    }

private:
    struct Stage
    {
        uint64 m_hash;
        const NameEntry* m_entry;
        const LSVariable* m_var; ///< Of the root: lives as long as the text is expanded.
    };

    static constexpr ssize_t s_least = 96; ///< So far ahead it stays,
    static constexpr ssize_t s_most = 192; ///< or goes, in characters.
    static constexpr size_t s_stages = 16;
    static constexpr size_t s_wait = 4; ///< Names between two stages.

    TLEXPANDER_API void LookAhead(SubString rest);
    void Fetch(SubString name);
    static void FetchVariable(Stage& stage);
    static void FetchBody(const Stage& stage);

    const NameTable& m_names;
    ssize_t m_unseen = std::numeric_limits<ssize_t>::max(); ///< At the end of the text.
    size_t m_count = 0;                                     ///< Of the names that were seen.
    Stage m_stages[s_stages];                               ///< Of the last of them.
};

} // namespace telv
