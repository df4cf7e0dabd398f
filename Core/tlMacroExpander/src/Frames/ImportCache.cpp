// The memory of look-ups through imports.
#include "tlMacroExpander/src/Frames/ImportCache.h"
#include <utility>

namespace telv
{

namespace
{

constexpr size_t s_fewestSlots = size_t(1) << 6;
constexpr size_t s_mostSlots = size_t(1) << 14;

} // namespace

ImportEpoch& ImportEpoch::Find(Ptr& epoch)
{
    while (epoch->m_joined != nullptr)
        epoch = Ptr(epoch->m_joined);
    return *epoch;
}

void ImportEpoch::Join(Ptr& a, Ptr& b)
{
    if (a == nullptr)
        a = std::make_shared<ImportEpoch>();
    if (b == nullptr)
        b = std::make_shared<ImportEpoch>();
    ImportEpoch& first = Find(a);
    ImportEpoch& second = Find(b);
    ++first.m_changes;
    if (&first == &second)
        return;
    // The count must differ from any that either group has had.
    first.m_changes += second.m_changes;
    first.m_isWhole = first.m_isWhole && second.m_isWhole;
    second.m_joined = a;
    b = a;
}

ImportCache::Entry& ImportCache::Probe(SubString name, uint64 hash)
{
    const size_t mask = m_table.size() - 1;
    for (size_t slot = hash & mask;; slot = (slot + 1) & mask)
    {
        Entry& entry = m_table[slot];
        if (entry.m_length < 0)
            return entry;
        const char* const known = m_names.begin() + entry.m_name;
        if (entry.m_hash == hash && SubString(known, known + entry.m_length) == name)
            return entry;
    }
}

bool ImportCache::Find(SubString name, uint64 hash, uint64 epoch, LSVariable*& v)
{
    if (m_epoch != epoch)
    {
        Clear();
        m_epoch = epoch;
    }
    if (m_table.empty())
        return false;
    const Entry& entry = Probe(name, hash);
    v = entry.m_var;
    return entry.m_length >= 0;
}

void ImportCache::Store(SubString name, uint64 hash, LSVariable* v)
{
    MakeRoom();
    const ssize_t start = m_names.size();
    m_names += name;
    Probe(name, hash) = Entry{hash, start, name.size(), v};
    ++m_size;
}

void ImportCache::MakeRoom()
{
    if (m_size * 2 < m_table.size())
        return;
    if (m_table.size() == s_mostSlots)
    {
        Clear();
        return;
    }
    std::vector<Entry> known(m_table.empty() ? s_fewestSlots : m_table.size() * 2);
    known.swap(m_table);
    for (const Entry& entry : known)
    {
        const char* const name = m_names.begin() + entry.m_name;
        if (entry.m_length >= 0)
            Probe(SubString(name, name + entry.m_length), entry.m_hash) = entry;
    }
}

void ImportCache::Clear()
{
    m_table.assign(m_table.size(), Entry());
    m_names.clear();
    m_size = 0;
}

} // namespace telv
