// The index of bound names: a hash table of records, each with its bindings by depth.
#include "tlMacroExpander/src/Frames/NameIndex.h"
#include <algorithm>
#include <limits>

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
    record->m_one = Binding{frame, v, PlaceOf(frame)};
    m_table[slot] = record;
    ++m_size;
}

NameIndex::Place NameIndex::PlaceOf(const VarFrame* frame)
{
    return Place{frame->Depth(), frame->Number()};
}

/// Behind the last binding before `end` whose place is at most `place`.
NameIndex::Binding* NameIndex::Behind(Record& record, Binding* end, Place place)
{
    Binding* const begin = record.Begin();
    if (end == begin || end[-1].m_place <= place)
        return end;
    return std::upper_bound(begin, end, place,
                            [](const Place& p, const Binding& b) { return p < b.m_place; });
}

/// The binding of `frame` itself, or null.
NameIndex::Binding* NameIndex::FindBinding(Record& record, const VarFrame* frame)
{
    Binding* const place = Behind(record, record.End(), PlaceOf(frame));
    return place != record.Begin() && place[-1].m_frame == frame ? place - 1 : nullptr;
}

/// Forgets answers for frames that may be below a frame of this depth.
void NameIndex::ForgetPassed(Record& record, int64 depth)
{
    std::vector<Passed>& passed = record.m_passed;
    while (!passed.empty() && passed.back().m_place.m_depth >= depth)
        passed.pop_back();
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
    ForgetPassed(*record, frame->Depth());
    Binding* const place = Behind(*record, record->End(), PlaceOf(frame));
    const auto offset = place - record->Begin();
    // Room first: with it, the rest cannot fail half-way.
    if (record->m_more.capacity() <= record->m_more.size() + 1)
        record->m_more.reserve(record->m_more.size() * 2 + 2);
    if (record->m_more.empty())
        record->m_more.push_back(record->m_one);
    record->m_more.insert(record->m_more.begin() + offset, Binding{frame, v, PlaceOf(frame)});
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
    ForgetPassed(*record, frame->Depth());
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
    m_table[slot]->m_passed.clear();
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

/// One look-up: goes through the depths at which the name is bound, from the deepest.
class NameIndex::Search
{
public:
    Search(Record& record, const VarFrame* frame)
        : m_record(record), m_frame(frame), m_ancestor(frame),
          m_end(Behind(record, record.End(), PlaceBehind(frame->Depth())))
    {
    }

    Hit Run()
    {
        for (int depths = 0; m_end != m_record.Begin(); ++depths)
        {
            if (depths == s_manyDepths)
                return RunOn();
            if (const Binding* const binding = TryNextDepth())
                return Hit{binding->m_var, binding->m_frame};
        }
        return Hit();
    }

private:
    /// A look-up that passes more depths than these is worth being remembered.
    static constexpr int s_manyDepths = 8;

    static Place PlaceBehind(int64 depth)
    {
        return Place{depth, std::numeric_limits<int64>::max()};
    }

    int64 NextDepth() const { return m_end == m_record.Begin() ? -1 : m_end[-1].m_place.m_depth; }

    /// The binding of the ancestor at the next depth, or null; what is bound there is passed.
    const Binding* TryNextDepth()
    {
        const int64 depth = NextDepth();
        m_ancestor = m_ancestor->AncestorAt(depth);
        if (m_end[-1].m_frame == m_ancestor)
            return &m_end[-1];
        const Binding* const behind = Behind(m_record, m_end, PlaceOf(m_ancestor));
        if (behind != m_record.Begin() && behind[-1].m_frame == m_ancestor)
            return &behind[-1];
        m_end = Behind(m_record, m_end, PlaceBehind(depth - 1));
        return nullptr;
    }

    /// The rest of a long look-up: asks what earlier ones have found.
    Hit RunOn();
    const Passed* FindPassed();
    Hit Remember(std::vector<Passed>& further, const VarFrame* answer);

    Record& m_record;
    const VarFrame* m_frame;
    const VarFrame* m_ancestor;
    Binding* m_end; ///< What is bound from here on is passed.
    size_t m_passedEnd = 0;
};

/// What is known for an ancestor that is at least as deep as the next binding. What is found to
/// belong elsewhere is forgotten: mostly its frame has been destroyed.
const NameIndex::Passed* NameIndex::Search::FindPassed()
{
    std::vector<Passed>& passed = m_record.m_passed;
    while (m_passedEnd > 0)
    {
        const Passed& known = passed[m_passedEnd - 1];
        if (known.m_place.m_depth < NextDepth())
            return nullptr;
        const VarFrame* const ancestor = m_frame->AncestorAt(known.m_place.m_depth);
        if (known.m_frame == ancestor && known.m_place == PlaceOf(ancestor))
            return &known;
        --m_passedEnd;
        passed.erase(passed.begin() + static_cast<ptrdiff_t>(m_passedEnd));
    }
    return nullptr;
}

NameIndex::Hit NameIndex::Search::RunOn()
{
    const std::vector<Passed>& passed = m_record.m_passed;
    m_passedEnd = static_cast<size_t>(
        std::upper_bound(passed.begin(), passed.end(), m_frame->Depth(),
                         [](int64 d, const Passed& p) { return d < p.m_place.m_depth; }) -
        passed.begin());
    std::vector<Passed> further;
    for (int depths = 0;; ++depths)
    {
        if (const Passed* const known = FindPassed())
            return Remember(further, known->m_answer);
        if (m_end == m_record.Begin())
            return Remember(further, nullptr);
        if (depths % s_manyDepths == 0)
        {
            const VarFrame* const frame = depths == 0 ? m_frame : m_ancestor;
            further.push_back(Passed{frame, PlaceOf(frame), nullptr});
        }
        if (const Binding* const binding = TryNextDepth())
            return Remember(further, binding->m_frame);
    }
}

/// Remembers the answer for the frame and some of its ancestors, deepest first in `further`: what
/// is looked up when the invocations end comes from those.
NameIndex::Hit NameIndex::Search::Remember(std::vector<Passed>& further, const VarFrame* answer)
{
    for (Passed& known : further)
        known.m_answer = answer;
    m_record.m_passed.insert(m_record.m_passed.begin() + static_cast<ptrdiff_t>(m_passedEnd),
                             further.rbegin(), further.rend());
    return answer == nullptr ? Hit() : Hit{FindBinding(m_record, answer)->m_var, answer};
}

NameIndex::Hit NameIndex::Find(const VarFrame* frame, SubString name, uint64 hash) const
{
    if (m_table.empty())
        return Hit();
    Record* const record = m_table[Probe(name, hash)];
    return record == nullptr ? Hit() : Search(*record, frame).Run();
}

} // namespace telv
