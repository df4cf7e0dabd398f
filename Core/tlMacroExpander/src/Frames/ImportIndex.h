// SPDX-License-Identifier: MIT
// What the imports of one file provide, by name.
//
// A word that no frame of the file binds would have to be looked for in every imported file. While
// that costs less, it is; a file that asks more often than its imports have names puts these names
// into its own table, and then adds only what is new: further imports, and the definitions that
// were made in imported files since. One count of the changes in all imported files that somebody
// remembers says when to look for the latter.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlUtils/HeldContainers.h"
#include <atomic>
#include <deque>

namespace telv
{

class NameEntry;

/// What imports provide under one name.
struct ImportedName
{
    VarFrame* m_provider; ///< The first import that has the name.
    LSVariable* m_var;    ///< Its variable.
    bool m_isContested;   ///< Another import has the name too.
    uint64 m_answeredAt;  ///< The state at which `m_answer` was found; 0: never.
    LSVariable* m_answer; ///< What a contested name means.
};

/// Belongs to the table of the tree whose root is the importer.
class ImportIndex
{
public:
    explicit ImportIndex(VarFrame* importer) : m_importer(importer) {}

    /// After this the next `n` calls of `NoteImport` do not allocate.
    void MakeRoom(ssize_t n);
    /// The importer imports one more frame, directly or not.
    void NoteImport(VarFrame* imported);
    /// The importer imports what it did, but more directly.
    void NoteOrder() { ++m_state; }

    /// True when what the imports provide stands in the entries.
    bool IsCurrent() const { return m_isMade && m_pending.empty() && m_seenChanges == Changes(); }

    /// What the imports provide under `name`, whose entry is `entry` if it has one; or null.
    /// @throws LexScannerException  when they disagree.
    TLEXPANDER_API LSVariable* Find(NameEntry* entry, SubString name, uint64 hash, const char* pos);

    /// To be called when a frame changes that an index or an answer depends on.
    static void NoteChange() { s_changes.fetch_add(1, std::memory_order_relaxed); }
    /// How many such changes there have been.
    static uint64 Changes() { return s_changes.load(std::memory_order_relaxed); }

private:
    struct Source
    {
        VarFrame* m_frame;
        const LSVariable* m_seen; ///< The newest variable that is known.
    };

    bool IsWorthMaking();
    void Synchronise();
    void Read(Source& source);
    void Provide(VarFrame* provider, LSVariable* v);
    LSVariable* Answer(ImportedName& imported, SubString name, uint64 hash, const char* pos);

    TLEXPANDER_API static std::atomic<uint64> s_changes;

    VarFrame* const m_importer;
    HeldVector<Source> m_sources;
    HeldVector<VarFrame*> m_pending; ///< Imported, not yet among the sources.
    std::deque<ImportedName, HeldAllocator<ImportedName>> m_names;
    bool m_isMade = false;
    bool m_isExact = true; ///< All imports are roots, whose changes are counted.
    ssize_t m_asked = 0;   ///< How many imports have been asked, one by one.
    uint64 m_seenChanges = 0;
    uint64 m_state = 1; ///< Changes with what is imported.
};

} // namespace telv
