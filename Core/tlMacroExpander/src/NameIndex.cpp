// The index of bound names: a hash table of records, each with its bindings by depth.
#include "tlMacroExpander/src/NameIndex.h"
#include <algorithm>

namespace telv
{

NameIndex::~NameIndex()
{
    for (Record* record : m_table)
        delete record;
    for (Record* record : m_spare)
        delete record;
}

/// The slot of the record of `name`, or the free slot where it would go.
size_t NameIndex::Probe(SubString name, uint64 hash) const
{
    const size_t mask = m_table.size() - 1;
    size_t slot = hash & mask;
    while (const Record* record = m_table[slot])
    {
        if (record->m_hash == hash && record->m_name == name)
            break;
        slot = (slot + 1) & mask;
    }
    return slot;
}

void NameIndex::Grow()
{
    std::vector<Record*> table(m_table.empty() ? 64 : m_table.size() * 2);
    m_spare.reserve(table.size()); // so that erasing a record never has to allocate
    table.swap(m_table);
    for (Record* record : table)
    {
        if (record != nullptr)
            m_table[Probe(record->m_name, record->m_hash)] = record;
    }
}

void NameIndex::InsertRecord(size_t slot, VarFrame* frame, LSVariable* v, uint64 hash)
{
    Record* record = nullptr;
    if (m_spare.empty())
        record = new Record();
    else
    {
        record = m_spare.back();
        m_spare.pop_back();
    }
    record->m_name = v->m_name;
    record->m_hash = hash;
    record->m_one = Binding{frame, v};
    m_table[slot] = record;
    ++m_size;
}

/// Behind the last binding whose frame is at most that deep.
NameIndex::Binding* NameIndex::BehindDepth(Record& record, int64 depth)
{
    Binding* const end = record.End();
    if (end[-1].m_frame->Depth() <= depth)
        return end;
    return std::upper_bound(record.Begin(), end, depth,
                            [](int64 d, const Binding& b) { return d < b.m_frame->Depth(); });
}

/// The binding of `frame` itself, or null.
NameIndex::Binding* NameIndex::FindBinding(Record& record, const VarFrame* frame)
{
    Binding* place = BehindDepth(record, frame->Depth());
    while (place != record.Begin() && place[-1].m_frame->Depth() == frame->Depth())
    {
        --place;
        if (place->m_frame == frame)
            return place;
    }
    return nullptr;
}

/// Counts a change of what other files may have looked up here.
void NameIndex::NoteChange(const VarFrame* frame)
{
    if (m_isImported && frame->Depth() == 0)
        ++ImportEpoch::Find(m_epoch).m_changes;
}

void NameIndex::NoteImport(const VarFrame* importer, const VarFrame* imported)
{
    NameIndex* const other = imported->GetIndex();
    ImportEpoch::Join(m_epoch, other == nullptr ? m_epoch : other->m_epoch);
    // Changes are counted in the frames of files only.
    if (other == nullptr || importer->Depth() != 0 || imported->Depth() != 0)
        ImportEpoch::Find(m_epoch).m_isWhole = false;
    if (other != nullptr)
        other->m_isImported = true;
}

void NameIndex::Bind(VarFrame* frame, LSVariable* v)
{
    NoteChange(frame);
    if ((m_size + 1) * 2 > m_table.size())
        Grow();
    const uint64 hash = HashName(v->m_name);
    const size_t slot = Probe(v->m_name, hash);
    Record* const record = m_table[slot];
    if (record == nullptr)
    {
        InsertRecord(slot, frame, v, hash);
        return;
    }
    if (Binding* known = FindBinding(*record, frame))
    {
        known->m_var = v;
        return;
    }
    Binding* const place = BehindDepth(*record, frame->Depth());
    const auto offset = place - record->Begin();
    // Room first: with it, the rest cannot fail half-way.
    if (record->m_more.capacity() <= record->m_more.size() + 1)
        record->m_more.reserve(record->m_more.size() * 2 + 2);
    if (record->m_more.empty())
        record->m_more.push_back(record->m_one);
    record->m_more.insert(record->m_more.begin() + offset, Binding{frame, v});
}

void NameIndex::Unbind(VarFrame* frame, const LSVariable* v)
{
    if (m_table.empty())
        return;
    const size_t slot = Probe(v->m_name, HashName(v->m_name));
    Record* const record = m_table[slot];
    if (record == nullptr)
        return;
    Binding* const place = FindBinding(*record, frame);
    if (place == nullptr)
        return;
    if (record->m_more.empty())
    {
        EraseSlot(slot);
        return;
    }
    record->m_more.erase(record->m_more.begin() + (place - record->Begin()));
    if (record->m_more.size() == 1)
    {
        record->m_one = record->m_more.front();
        record->m_more.clear();
    }
    record->m_name = record->Begin()->m_var->m_name;
}

/// Frees a slot and moves the records behind it that would no longer be found.
TELV_WRAPS void NameIndex::EraseSlot(size_t slot)
{
    m_spare.push_back(m_table[slot]);
    --m_size;
    const size_t mask = m_table.size() - 1;
    size_t hole = slot;
    for (size_t next = (slot + 1) & mask; m_table[next] != nullptr; next = (next + 1) & mask)
    {
        const size_t home = m_table[next]->m_hash & mask;
        if (((next - home) & mask) >= ((next - hole) & mask))
        {
            m_table[hole] = m_table[next];
            hole = next;
        }
    }
    m_table[hole] = nullptr;
}

NameIndex::Hit NameIndex::Find(const VarFrame* frame, SubString name, uint64 hash) const
{
    if (m_table.empty())
        return Hit();
    Record* const record = m_table[Probe(name, hash)];
    if (record == nullptr)
        return Hit();
    const Binding* place = BehindDepth(*record, frame->Depth());
    const VarFrame* ancestor = frame;
    while (place != record->Begin())
    {
        --place;
        ancestor = ancestor->AncestorAt(place->m_frame->Depth());
        if (ancestor == place->m_frame)
            return Hit{place->m_var, place->m_frame};
    }
    return Hit();
}

} // namespace telv
