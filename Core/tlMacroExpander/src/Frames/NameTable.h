// SPDX-License-Identifier: MIT
// The names of one tree of frames, and who binds them.
//
// Scoping is dynamic: the parent of an invocation's frame is the frame of the caller, so a chain of
// parents is as long as the invocations are nested, and walking it for each identifier would make
// recursion quadratic. So each name has an entry that lists the frames below the root that bind it,
// newest first; what the root binds stands in the entry itself. A frame is newer than its
// ancestors: the first frame of the list that is an ancestor of the one that asks has the answer,
// and nearly always it is the first of all, because frames elsewhere live only while the text of an
// argument is expanded in its caller's frame. BindingSearch.cpp has the rest.
//
// Who reads a text keeps entries instead of words: most words cost one look at an entry that nobody
// binds.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Frames/DollarIndex.h"
#include "tlMacroExpander/src/Frames/FrameTree.h"
#include "tlMacroExpander/src/Frames/GivenNames.h"
#include "tlMacroExpander/src/Frames/HashName.h"
#include "tlMacroExpander/src/Frames/ImportIndex.h"
#include "tlMacroExpander/src/Frames/NameFetcher.h"
#include "tlMacroExpander/src/Frames/NameMarks.h"
#include "tlMacroExpander/src/Frames/Pool.h"
#include "tlMacroExpander/src/Run/LookupCount.h"
#include "tlUtils/HeldContainers.h"
#include <memory>

namespace telv
{

class HeldNames;
class NameEntry;

/// One frame, not a root, binds one name. Lives as long as the frame.
struct NameBinding
{
    NameEntry* m_entry;
    VarFrame* m_frame;
    LSVariable* m_var; ///< The visible variable of the name.
    int64 m_number;    ///< Of the frame.
    NameBinding* m_older;
    NameBinding* m_newer;
    NameBinding* m_nextOfFrame;

    // Made when a search needs them, for all older bindings of the name first.
    NameBinding* m_above; ///< What an ancestor of the frame binds: the nearest one; or null.
    NameBinding* m_jump;  ///< Further up, or null.
    int64 m_level;        ///< Number of bindings above; -1: not made.
};

/// A name. Its address stays until it is bound nowhere, provided by no import and held by nobody;
/// even then it stays until the table needs the room.
class NameEntry
{
public:
    SubString Name() const
    {
        const char* const chars = m_length <= sizeof m_chars ? m_chars : m_far;
        return SubString(chars, chars + m_length);
    }
    uint64 Hash() const { return m_hash; }
    /// What the root of the tree binds, or null.
    const LSVariable* RootVar() const { return m_rootVar; }
    /// What its imports provide, or null. Lives as long as the table.
    const ImportedName* Import() const { return m_import; }

private:
    friend class BindingSearch;
    friend class ImportIndex;
    friend class NameTable;

    uint64 m_hash = 0;
    LSVariable* m_rootVar = nullptr;  ///< What the root of the tree binds.
    NameBinding* m_newest = nullptr;  ///< What other frames bind, newest first.
    ImportedName* m_import = nullptr; ///< What the imports of the root provide.
    uint32 m_length = 0;
    uint32 m_holders = 0;
    union
    {
        char m_chars[24]; ///< The name, when it fits.
        char* m_far;      ///< Else its own memory.
    };
};

static_assert(sizeof(NameEntry) == 64);

/// Owned by the variables of the frame at the root of the tree, or by a list without a frame.
class NameTable
{
public:
    /// HashName as this library computes it: for tests, whose own copy would have another seed.
    TLEXPANDER_API static uint64 HashOf(SubString name);

    NameTable();
    ~NameTable();
    NameTable(const NameTable&) = delete;
    NameTable& operator=(const NameTable&) = delete;

    /// Unique in the process: who holds entries can tell, without touching it, that the table which
    /// they belong to is not the one at hand.
    uint64 Serial() const { return m_serial; }

    /// The entry of `name`, made if need be. Copies the name.
    TLEXPANDER_API NameEntry* Intern(SubString name, uint64 hash);
    /// The entry of `name` or null. With null, no frame of the tree binds it; imports may provide
    /// it (`FindUnknown`). What is given to the root is bound when it is first asked for.
    TLEXPANDER_API NameEntry* Lookup(SubString name, uint64 hash);

    /// False when no name at all is bound or provided.
    bool BindsAny() const
    {
        return m_size != 0 || SeesGiven() || m_imports != nullptr ||
               m_importers.m_newest != nullptr || IsCountingLookups();
    }
    /// False only for names that no frame of the tree binds and no import provides. Needs no hash.
    bool MayBeBound(SubString name) const
    {
        if (m_imports != nullptr || m_importers.m_newest != nullptr || IsCountingLookups())
            return true;
        return m_marks.MayHave(name);
    }

    /// Whether looking up a name mostly means waiting for memory.
    bool IsLarge() const { return m_slots.size() >= s_large; }
    /// Where the table is large, asks for what looking up the names behind the begin of `rest` will
    /// need. `unseen` is the caller's for one text, at first more than its length.
    void LookAhead(SubString rest, ssize_t& unseen)
    {
        if (IsLarge()) [[unlikely]]
            Fetcher().LookAhead(rest, unseen);
    }
    /// Asks for what a look-up reads first, without waiting for it.
    void FetchSlot(uint64 hash) const
    {
        if (IsLarge())
            __builtin_prefetch(&m_slots[FirstPlace(TagOf(hash))]);
    }
    /// Asks for what it reads then, provided that it is found at once; which may be freed later,
    /// and then is another's. Null where it is not.
    const NameEntry* FetchEntry(uint64 hash) const
    {
        const Slot slot = IsLarge() ? m_slots[FirstPlace(TagOf(hash))] : Slot();
        if (slot.m_index == 0 || slot.m_tag != TagOf(hash))
            return nullptr;
        const NameEntry* const entry = &m_entries[slot.m_index];
        __builtin_prefetch(entry);
        return entry;
    }

    /// After this, `n` new names find room in the table of slots.
    void MakeRoom(size_t n);

    /// Keeps an entry at its place until `Release`.
    static void AddRef(NameEntry& entry) { ++entry.m_holders; }
    static void Release(NameEntry& entry) { --entry.m_holders; }

    /// False when `Find` would give null from every frame of the tree.
    bool MayBeBound(const NameEntry& entry) const
    {
        return entry.m_newest != nullptr || entry.m_rootVar != nullptr || MayBeImported(entry);
    }

    /// What `VarFrame::Find` gives for the name in `frame`, a frame of the tree.
    LSVariable* Find(VarFrame* frame, NameEntry& entry, const char* pos)
    {
        const NameBinding* const binding = Nearest(frame, entry);
        if (IsCountingLookups() || m_importers.m_newest != nullptr) [[unlikely]]
            return FindAboveImporters(frame, &entry, entry.Name(), entry.m_hash, pos);
        if (binding != nullptr)
            return binding->m_var;
        if (entry.m_rootVar != nullptr || m_imports == nullptr)
            return entry.m_rootVar;
        return m_imports->Find(&entry, entry.Name(), entry.m_hash, pos);
    }
    /// The same by name.
    LSVariable* Find(VarFrame* frame, SubString name, uint64 hash, const char* pos)
    {
        NameEntry* const entry = Lookup(name, hash);
        return entry != nullptr ? Find(frame, *entry, pos) : FindUnknown(frame, name, hash, pos);
    }
    /// The same for a name that has no entry.
    LSVariable* FindUnknown(VarFrame* frame, SubString name, uint64 hash, const char* pos)
    {
        if (m_imports == nullptr && m_importers.m_newest == nullptr && !IsCountingLookups())
            [[likely]]
            return nullptr;
        return FindAboveImporters(frame, nullptr, name, hash, pos);
    }

    /// What `frame` or its nearest ancestor that binds the name binds, imports apart; or null.
    LSVariable* FindBound(const VarFrame* frame, SubString name, uint64 hash);
    /// What `frame` itself binds, or null.
    LSVariable* FindOwn(const VarFrame* frame, SubString name, uint64 hash);
    LSVariable* RootVar(SubString name, uint64 hash)
    {
        const NameEntry* const entry = Lookup(name, hash);
        return entry == nullptr ? nullptr : entry->m_rootVar;
    }

    /// `v` is now the visible variable of the name in `frame`, which is not the root; `ofFrame` is
    /// the list of its bindings. True when the frame had none of the name. Changes nothing when it
    /// throws.
    bool Bind(VarFrame* frame, LSVariable* v, NameEntry& entry, NameBinding*& ofFrame);
    /// The same for the root. Does not throw.
    bool BindInRoot(LSVariable* v, NameEntry& entry)
    {
        const bool isNew = entry.m_rootVar == nullptr;
        entry.m_rootVar = v;
        NoteChange();
        return isNew;
    }
    /// A frame ends.
    void Unbind(NameBinding* ofFrame);

    int64 TakeFrameNumber() { return ++m_lastNumber; }

    /// Grows when a name may stand for something else, imports included, in any frame but the one
    /// that was made last. What a new frame binds changes nothing for older ones.
    uint64 Changes() const { return m_changes; }
    /// `frame`, null for the root, defines a name.
    void NoteDefinition(const VarFrame* frame);
    /// A variable of the tree stands for another text.
    void NoteChangedText() { ++m_changes; }

    // Given definitions

    /// The root, in which nothing is bound yet, sees `given`.
    void SeeGiven(const GivenToRoot& given);
    bool SeesGiven() const { return m_given.m_names != nullptr; }
    /// Whether the root would bind the name when it is asked for.
    bool IsGiven(SubString name) const
    {
        return SeesGiven() && m_given.m_names->Has(name, m_given.m_edition);
    }
    /// The value of a dollar macro that is given to the root, or null.
    const xstring* FindGivenDollarMacro(SubString name) const
    {
        return SeesGiven() ? m_given.m_names->FindDollarMacro(name, m_given.m_edition) : nullptr;
    }
    /// Calls `visit` with each name that the root binds when it is asked for, or has bound.
    template <class Visitor>
    void ForEachGivenName(Visitor visit) const
    {
        if (SeesGiven())
            m_given.m_names->ForEachName(m_given.m_edition, visit);
    }
    /// What the root binds is given to others.
    void NoteGiven(const GivenNames& by) { m_givenBy = &by; }
    /// Whether what the root of `other` binds is given to this root.
    bool SeesAllOf(const NameTable& other) const
    {
        return SeesGiven() && other.m_givenBy == m_given.m_names;
    }

    // Imports

    /// A frame of the tree, `importer`, is about to import `count` more frames.
    void MakeRoomForImports(VarFrame* importer, ssize_t count);
    /// It imports `imported`. Does not throw after `MakeRoomForImports`.
    void NoteImport(VarFrame* importer, VarFrame* imported);
    /// It imports one more frame directly.
    void NoteDirectImport(const VarFrame* importer);
    /// What the imports of the root provide; null while it imports nothing.
    ImportIndex* Imports() { return m_imports.get(); }

    /// Somebody remembers what the root of this tree binds or imports: its next change is to be
    /// counted.
    void Watch() { m_isWatched = true; }
    /// The root changes.
    void NoteChange()
    {
        if (m_isWatched) [[unlikely]]
            CountChange();
    }
    /// What the root finds in its imports under the names of dollar macros.
    DollarIndex& DollarMacros();

    /// Memory for variables that come and go with the frames of the tree.
    BlockPool& VariableMemory() { return m_variableMemory; }

    /// Calls `visit` with each variable that the root binds.
    template <class Visitor>
    void ForEachRootVar(Visitor visit) const
    {
        m_entries.ForEach(
            [&](uint32, const NameEntry& entry)
            {
                if (entry.m_rootVar != nullptr)
                    visit(entry.m_rootVar);
            });
    }

private:
    friend class HeldNames;

    struct Slot
    {
        uint32 m_tag = 0;   ///< The upper half of the hash.
        uint32 m_index = 0; ///< Of the entry, from 1; 0: free.
    };

    /// The nearest binding of `frame` and its ancestors below the root, or null.
    static NameBinding* Nearest(const VarFrame* frame, const NameEntry& entry)
    {
        NameBinding* const newest = entry.m_newest;
        if (newest == nullptr || newest->m_frame == frame || newest->m_frame == frame->m_parent)
            return newest;
        return FindNearest(frame, newest);
    }
    TLEXPANDER_API static NameBinding* FindNearest(const VarFrame* frame, NameBinding* newest);
    static NameBinding* NextNewer(const NameEntry& entry, int64 number);

    bool MayBeImported(const NameEntry& entry) const
    {
        if (m_imports == nullptr && m_importers.m_newest == nullptr)
            return false;
        return entry.m_import != nullptr || m_importers.m_newest != nullptr ||
               !m_imports->IsCurrent();
    }
    TLEXPANDER_API LSVariable* FindAboveImporters(VarFrame* frame, NameEntry* entry, SubString name,
                                                  uint64 hash, const char* pos);

    /// Where the search for a name begins. The upper bits of the tag say it, so that a larger table
    /// has the names in the order of the smaller one and is made without looking at them.
    size_t FirstPlace(uint32 tag) const { return static_cast<size_t>(uint64{tag} >> m_shift); }
    static uint32 TagOf(uint64 hash) { return static_cast<uint32>(hash >> (64 - s_bitsOfTag)); }
    bool HasRoom(size_t n) const { return (m_size + n) * 2 <= m_slots.size(); }

    NameFetcher& Fetcher();
    void CountChange();
    size_t Probe(SubString name, uint64 hash) const;
    NameEntry* Known(SubString name, uint64 hash) const;
    std::unique_ptr<LSVariable> CopyGiven(SubString name) const;
    NameEntry* Add(SubString name, uint64 hash, std::unique_ptr<LSVariable> given);
    NameEntry* MakeEntry(SubString name, uint64 hash, uint32& index);
    void FreeUnused(size_t count);
    static bool IsUnused(const NameEntry& entry);

    static constexpr int s_bitsOfTag = 32;
    static constexpr size_t s_large = 16384; ///< With entries and variables, more than a cache.

    NameMarks m_marks;         ///< Of the names that have entries, and of those that are given.
    HeldVector<Slot> m_slots;  ///< Open addressing, a power of two.
    int m_shift = s_bitsOfTag; ///< From a tag to a place in them.
    size_t m_size = 0;
    IndexedPool<NameEntry> m_entries;
    Pool<NameBinding> m_bindings;
    int64 m_lastNumber = 0;
    uint64 m_changes = 0;
    const uint64 m_serial;

    std::unique_ptr<ImportIndex> m_imports;
    std::unique_ptr<DollarIndex> m_dollarMacros;
    GivenToRoot m_given;
    const GivenNames* m_givenBy = nullptr; ///< What the root binds is a part of these; or null.
    NameEntry m_importers; ///< "Bound" in each frame below the root that imports others.
    bool m_isWatched = false;
    HeldNames* m_held = nullptr; ///< Who holds entries.

    BlockPool m_variableMemory;
    std::unique_ptr<NameFetcher> m_fetcher; ///< Made when it is needed.
};

} // namespace telv
