// SPDX-License-Identifier: MIT
// An owned copy is a plain byte array whose start is the start of the view, so nothing but the
// capacity has to be kept. It has at least one byte: a copy of an empty text still has an address.
#include "tlUtils/StringX.h"
#include "tlUtils/HeldContainers.h"
#include <algorithm>
#include <cstring>

namespace telv
{

namespace
{

/// A copy of `s` in memory of `capacity` bytes.
char* CopyOf(SubString s, ssize_t capacity)
{
    char* const memory = HeldAllocator<char>().allocate(static_cast<size_t>(capacity));
    if (s)
        std::memcpy(memory, s.begin(), static_cast<size_t>(s.size()));
    return memory;
}

void Free(char* copy, ssize_t capacity)
{
    if (copy != nullptr)
        HeldAllocator<char>().deallocate(copy, static_cast<size_t>(capacity));
}

} // namespace

StringX::~StringX()
{
    if (m_capacity > 0)
        Free(const_cast<char*>(m_subString.m_p1), m_capacity);
}

void StringX::Set(SubString s, bool copy)
{
    char* const owned = m_capacity > 0 ? const_cast<char*>(m_subString.m_p1) : nullptr;
    // A part of the present copy can't be borrowed from it: it would die with the copy.
    const bool ofOwned = owned != nullptr && IsWithin(s, SubString(owned, owned + m_capacity));
    if (!copy && !ofOwned)
    {
        Free(owned, m_capacity);
        m_subString = s;
        m_capacity = 0;
        return;
    }
    const ssize_t size = s.size();
    if (owned == nullptr || size > m_capacity)
    {
        const ssize_t capacity = std::max<ssize_t>(size, 1);
        m_subString.m_p1 = CopyOf(s, capacity);
        Free(owned, m_capacity);
        m_capacity = capacity;
    }
    else if (size > 0)
        std::memmove(owned, s.begin(), static_cast<size_t>(size));
    m_subString.m_p2 = m_subString.m_p1 + size;
}

} // namespace telv
