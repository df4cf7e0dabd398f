// The map of a variable list: two slots in place, then a hash table at most half full.
#include "tlMacroExpander/LSVariableMap.h"
#include "tlMacroExpander/LSVariable.h"
#include <algorithm>
#include <cstring>

namespace telv
{

namespace
{

__extension__ typedef unsigned __int128 uint128;

/// Both factors hold what a text cannot know: it cannot make the product come out as it likes.
uint64 MultiplyFold(uint64 a, uint64 b)
{
    const uint128 product = static_cast<uint128>(a) * b;
    return static_cast<uint64>(product) ^ static_cast<uint64>(product >> 64);
}

} // namespace

TELV_WRAPS uint64 HashName(SubString name)
{
    // Where the library was loaded is random.
    static const char place = 0;
    const uint64 seed = reinterpret_cast<uint64>(&place) * 0x9e3779b97f4a7c15UL;
    const uint64 secret = seed ^ 0xa0761d6478bd642fUL;
    const char* p = name.begin();
    size_t n = static_cast<size_t>(name.size());
    uint64 hash = seed ^ n;
    uint64 word = 0;
    for (; n > sizeof(word); n -= sizeof(word), p += sizeof(word))
    {
        std::memcpy(&word, p, sizeof(word));
        hash = MultiplyFold(word ^ secret, hash ^ seed);
    }
    word = 0;
    if (n > 0)
        std::memcpy(&word, p, n);
    return MultiplyFold(word ^ secret, hash ^ (seed >> 7));
}

LSVariableMap::~LSVariableMap()
{
    delete[] m_table;
    delete[] m_sorted;
}

LSVariable** LSVariableMap::FindSlot(LSVariable** table, int32 capacity, SubString name) const
{
    const uint64 mask = static_cast<uint64>(capacity) - 1;
    uint64 slot = HashName(name) & mask;
    while (table[slot] != nullptr && table[slot]->m_name != name)
        slot = (slot + 1) & mask;
    return table + slot;
}

LSVariable* LSVariableMap::Lookup(SubString name) const
{
    if (m_capacity != 0)
        return *FindSlot(m_table, m_capacity, name);
    for (int32 i = 0; i < m_size; ++i)
    {
        if (m_few[i]->m_name == name)
            return m_few[i];
    }
    return nullptr;
}

void LSVariableMap::Set(LSVariable* v)
{
    delete[] m_sorted;
    m_sorted = nullptr;
    if (m_capacity == 0)
    {
        for (int32 i = 0; i < m_size; ++i)
        {
            if (m_few[i]->m_name == v->m_name)
            {
                m_few[i] = v;
                return;
            }
        }
        if (m_size < s_inPlace)
        {
            m_few[m_size++] = v;
            return;
        }
    }
    MakeRoom();
    LSVariable** const slot = FindSlot(m_table, m_capacity, v->m_name);
    m_size += *slot == nullptr ? 1 : 0;
    *slot = v;
}

void LSVariableMap::MakeRoom()
{
    if (m_size >= s_inPlace && m_size * 2 >= m_capacity)
        Grow();
}

void LSVariableMap::Grow()
{
    const int32 capacity = m_capacity == 0 ? 16 : m_capacity * 2;
    LSVariable** const table = new LSVariable*[static_cast<size_t>(capacity)]();
    ForEach([&](LSVariable* v) { *FindSlot(table, capacity, v->m_name) = v; });
    delete[] m_table;
    m_table = table;
    m_capacity = capacity;
}

void LSVariableMap::Sort() const
{
    if (m_sorted != nullptr)
        return;
    m_sorted = new LSVariable*[static_cast<size_t>(m_size)];
    LSVariable** next = m_sorted;
    ForEach([&](LSVariable* v) { *next++ = v; });
    std::sort(m_sorted, next,
              [](const LSVariable* a, const LSVariable* b)
              { return strcmp(a->m_name, b->m_name) < 0; });
}

LSVariableMap::const_iterator LSVariableMap::begin() const
{
    if (m_size == 0)
        return end();
    Sort();
    return const_iterator(this, m_sorted[0]);
}

LSVariableMap::value_type LSVariableMap::const_iterator::operator*() const
{
    return value_type(m_var->m_name, m_var);
}

LSVariableMap::const_iterator& LSVariableMap::const_iterator::operator++()
{
    m_map->Sort();
    LSVariable** const last = m_map->m_sorted + m_map->m_size;
    LSVariable** const next = std::upper_bound(m_map->m_sorted, last, m_var,
                                               [](const LSVariable* a, const LSVariable* b)
                                               { return strcmp(a->m_name, b->m_name) < 0; });
    m_var = next == last ? nullptr : *next;
    return *this;
}

} // namespace telv
