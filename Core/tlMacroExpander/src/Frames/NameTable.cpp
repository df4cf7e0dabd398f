// SPDX-License-Identifier: MIT
// The table of names: entries in a pool, found through a hash table of their numbers.
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/Frames/HeldNames.h"
#include "tlMacroExpander/src/Frames/ImportQuery.h"
#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>
#include <utility>

namespace telv
{

const char s_placeOfSeed = 0;

namespace
{

std::atomic<uint64> s_tables = 0;

constexpr size_t s_fewestSlots = 16;

void FreeFarName(char* chars, size_t length)
{
    HeldAllocator<char>().deallocate(chars, length);
}

/// Names are short: no call.
bool IsSame(SubString a, SubString b)
{
    const size_t n = static_cast<size_t>(a.size());
    if (a.size() != b.size() || ReadUpTo8(a.begin(), std::min<size_t>(n, 8)) !=
                                    ReadUpTo8(b.begin(), std::min<size_t>(n, 8)))
        return false;
    if (n <= 8)
        return true;
    return n <= 16 ? ReadUpTo8(a.end() - 8, 8) == ReadUpTo8(b.end() - 8, 8) : a == b;
}

} // namespace

NameTable::NameTable() : m_serial(s_tables.fetch_add(1, std::memory_order_relaxed) + 1) {}

uint64 NameTable::HashOf(SubString name)
{
    return HashName(name);
}

NameTable::~NameTable()
{
    for (HeldNames* held = m_held; held != nullptr; held = held->m_next)
    {
        held->m_table = nullptr;
        held->m_entries.clear();
    }
    m_entries.ForEach(
        [](uint32, const NameEntry& entry)
        {
            if (entry.m_length > sizeof entry.m_chars)
                FreeFarName(entry.m_far, entry.m_length);
        });
}

/// The slot of `name`, or the free one where it would go.
size_t NameTable::Probe(SubString name, uint64 hash) const
{
    const size_t mask = m_slots.size() - 1;
    size_t place = FirstPlace(TagOf(hash));
    for (; m_slots[place].m_index != 0; place = (place + 1) & mask)
    {
        const Slot slot = m_slots[place];
        if (slot.m_tag == TagOf(hash) && IsSame(m_entries[slot.m_index].Name(), name))
            break;
    }
    return place;
}

NameEntry* NameTable::Known(SubString name, uint64 hash) const
{
    if (m_slots.empty())
        return nullptr;
    const Slot slot = m_slots[Probe(name, hash)];
    return slot.m_index == 0 ? nullptr : &m_entries[slot.m_index];
}

NameEntry* NameTable::Lookup(SubString name, uint64 hash)
{
    NameEntry* const known = Known(name, hash);
    if (known != nullptr || !SeesGiven())
        return known;
    std::unique_ptr<LSVariable> given = CopyGiven(name);
    return given == nullptr ? nullptr : Add(name, hash, std::move(given));
}

NameEntry* NameTable::Intern(SubString name, uint64 hash)
{
    NameEntry* const known = Known(name, hash);
    return known != nullptr ? known : Add(name, hash, CopyGiven(name));
}

std::unique_ptr<LSVariable> NameTable::CopyGiven(SubString name) const
{
    return SeesGiven() ? m_given.m_names->Copy(name, m_given.m_edition) : nullptr;
}

/// Adds an entry for a name without one. The root binds `given`, unless it is null.
NameEntry* NameTable::Add(SubString name, uint64 hash, std::unique_ptr<LSVariable> given)
{
    if (!HasRoom(1))
        MakeRoom(1);
    uint32 index = 0;
    NameEntry* const entry = MakeEntry(name, hash, index);
    m_slots[Probe(name, hash)] = Slot{TagOf(hash), index};
    ++m_size;
    if (given != nullptr)
        FrameTree::AddBound(*m_given.m_root, given.release(), *entry);
    return entry;
}

void NameTable::SeeGiven(const GivenToRoot& given)
{
    m_given = given;
    m_marks.AddAll(given.m_names->Marks());
}

NameEntry* NameTable::MakeEntry(SubString name, uint64 hash, uint32& index)
{
    const size_t length = static_cast<size_t>(name.size());
    const bool isFar = length > sizeof NameEntry::m_chars;
    const auto free = [length](char* chars) { FreeFarName(chars, length); };
    std::unique_ptr<char, decltype(free)> far(
        isFar ? HeldAllocator<char>().allocate(length) : nullptr, free);
    index = m_entries.Take();
    NameEntry& entry = m_entries[index];
    m_marks.Add(name);
    entry.m_hash = hash;
    entry.m_length = static_cast<uint32>(length);
    std::memcpy(isFar ? far.get() : entry.m_chars, name.begin(), length);
    if (isFar)
        entry.m_far = far.release();
    return &entry;
}

bool NameTable::IsUnused(const NameEntry& entry)
{
    return entry.m_holders == 0 && entry.m_rootVar == nullptr && entry.m_newest == nullptr &&
           entry.m_import == nullptr;
}

/// Half of the slots are used at most. Names that nobody needs any more go first.
void NameTable::MakeRoom(size_t n)
{
    if (HasRoom(n))
        return;
    size_t used = 0;
    m_entries.ForEach([&](uint32, const NameEntry& entry)
                      { used += entry.m_length != 0 && !IsUnused(entry) ? 1 : 0; });
    size_t capacity = s_fewestSlots;
    while ((used + n) * 2 > capacity || (used + 1) * 3 > capacity)
        capacity *= 2;
    HeldVector<Slot> slots(capacity);
    if (used != m_size)
        FreeUnused(m_size - used);
    slots.swap(m_slots);
    m_shift = s_bitsOfTag - std::countr_zero(capacity);
    const size_t mask = capacity - 1;
    for (const Slot slot : slots)
    {
        if (slot.m_index == 0)
            continue;
        size_t place = FirstPlace(slot.m_tag);
        while (m_slots[place].m_index != 0)
            place = (place + 1) & mask;
        m_slots[place] = slot;
    }
}

/// Frees the names that nobody needs, `count` of them, and their slots: the others must move then.
void NameTable::FreeUnused(size_t count)
{
    m_entries.MakeRoomToGive(count);
    m_marks = SeesGiven() ? m_given.m_names->Marks() : NameMarks();
    for (Slot& slot : m_slots)
    {
        if (slot.m_index == 0)
            continue;
        NameEntry& entry = m_entries[slot.m_index];
        if (!IsUnused(entry))
        {
            m_marks.Add(entry.Name());
            continue;
        }
        if (entry.m_length > sizeof entry.m_chars)
            FreeFarName(entry.m_far, entry.m_length);
        m_entries.Give(slot.m_index);
        slot = Slot();
    }
    m_size -= count;
}

LSVariable* NameTable::FindBound(const VarFrame* frame, SubString name, uint64 hash)
{
    const NameEntry* const entry = Lookup(name, hash);
    if (entry == nullptr)
        return nullptr;
    const NameBinding* const binding = Nearest(frame, *entry);
    return binding != nullptr ? binding->m_var : entry->m_rootVar;
}

LSVariable* NameTable::FindOwn(const VarFrame* frame, SubString name, uint64 hash)
{
    const NameEntry* const entry = Lookup(name, hash);
    if (entry == nullptr)
        return nullptr;
    const NameBinding* const binding = Nearest(frame, *entry);
    return binding != nullptr && binding->m_frame == frame ? binding->m_var : nullptr;
}

LSVariable* NameTable::FindAboveImporters(VarFrame* frame, NameEntry* entry, SubString name,
                                          uint64 hash, const char* pos)
{
    if (IsCountingLookups())
        return frame->Find(name, pos);
    NameBinding* const binding = entry == nullptr ? nullptr : Nearest(frame, *entry);
    const int64 owner = binding == nullptr ? 0 : binding->m_number;
    for (const VarFrame* from = frame; from != nullptr;)
    {
        const NameBinding* const importer = Nearest(from, m_importers);
        if (importer == nullptr || importer->m_number <= owner)
            break;
        if (LSVariable* const v = ImportQuery(name, hash, pos).FindImported(importer->m_frame))
            return v;
        from = importer->m_frame->m_parent;
    }
    if (binding != nullptr)
        return binding->m_var;
    if (entry != nullptr && entry->m_rootVar != nullptr)
        return entry->m_rootVar;
    return m_imports == nullptr ? nullptr : m_imports->Find(entry, name, hash, pos);
}

/// The next newer binding than one of a frame of this number would be, or null.
NameBinding* NameTable::NextNewer(const NameEntry& entry, int64 number)
{
    NameBinding* newer = nullptr;
    for (NameBinding* binding = entry.m_newest; binding != nullptr && binding->m_number > number;
         binding = binding->m_older)
    {
        binding->m_level = -1; // what it knows of bindings above it changes
        newer = binding;
    }
    return newer;
}

bool NameTable::Bind(VarFrame* frame, LSVariable* v, NameEntry& entry, NameBinding*& ofFrame)
{
    if (NameBinding* const known = Nearest(frame, entry);
        known != nullptr && known->m_frame == frame)
    {
        known->m_var = v;
        return false;
    }
    NameBinding* const binding = m_bindings.Take();
    const int64 number = FrameTree::Number(frame);
    NameBinding* const newer = NextNewer(entry, number);
    NameBinding* const older = newer == nullptr ? entry.m_newest : newer->m_older;
    *binding = NameBinding{&entry, frame, v, number, older, newer, ofFrame, nullptr, nullptr, -1};
    ofFrame = binding;
    if (older != nullptr)
        older->m_newer = binding;
    (newer != nullptr ? newer->m_older : entry.m_newest) = binding;
    return true;
}

void NameTable::Unbind(NameBinding* ofFrame)
{
    while (NameBinding* const binding = ofFrame)
    {
        ofFrame = binding->m_nextOfFrame;
        NameBinding*& below =
            binding->m_newer != nullptr ? binding->m_newer->m_older : binding->m_entry->m_newest;
        below = binding->m_older;
        if (binding->m_older != nullptr)
            binding->m_older->m_newer = binding->m_newer;
        m_bindings.Give(binding);
    }
}

void NameTable::MakeRoomForImports(VarFrame* importer, ssize_t count)
{
    if (!FrameTree::IsRoot(importer))
        m_bindings.MakeRoom();
    else
    {
        if (m_imports == nullptr)
            m_imports = std::make_unique<ImportIndex>(importer);
        m_imports->MakeRoom(count);
    }
}

void NameTable::NoteDefinition(const VarFrame* frame)
{
    if (frame == nullptr || FrameTree::Number(frame) != m_lastNumber)
        ++m_changes;
}

void NameTable::NoteImport(VarFrame* importer, VarFrame* imported)
{
    ++m_changes;
    if (FrameTree::IsRoot(importer))
        m_imports->NoteImport(imported);
    else
        Bind(importer, nullptr, m_importers, FrameTree::Bindings(importer));
}

void NameTable::NoteDirectImport(const VarFrame* importer)
{
    if (!FrameTree::IsRoot(importer))
        return;
    m_imports->NoteOrder();
    NoteChange();
}

DollarIndex& NameTable::DollarMacros()
{
    if (m_dollarMacros == nullptr)
        m_dollarMacros = std::make_unique<DollarIndex>();
    return *m_dollarMacros;
}

NameFetcher& NameTable::Fetcher()
{
    if (m_fetcher == nullptr)
        m_fetcher = std::make_unique<NameFetcher>(*this);
    return *m_fetcher;
}

void NameTable::CountChange()
{
    m_isWatched = false;
    ImportIndex::NoteChange();
}

} // namespace telv
