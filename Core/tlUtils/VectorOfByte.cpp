// SPDX-License-Identifier: MIT
// Byte storage on malloc and realloc: large arrays then grow without a copy.
#define TELV_SOURCE_PATH "Core/tlUtils/xvector"

#include "tlUtils/VectorOfByte.h"
#include "tlUtils/HeldMemory.h"
#include "tlUtils/TelvAssert.h"
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace telv
{

VectorOfByte::~VectorOfByte()
{
    if (m_buffer == nullptr)
        return;
    ReleaseMemory(m_capacity);
    std::free(m_buffer);
}

void VectorOfByte::reserve(ssize_t n) const
{
    if (n <= m_capacity)
        return;
    HoldMemory(n, m_capacity);
    void* grown = std::realloc(m_buffer, static_cast<size_t>(n));
    if (grown == nullptr)
    {
        HoldMemory(m_capacity, n); // less than was held
        throw std::bad_alloc();
    }
    m_buffer = static_cast<unsigned char*>(grown);
    m_capacity = n;
}

unsigned char* VectorOfByte::insertbytes(ssize_t pos, ssize_t n)
{
    const ssize_t size = n;
    TELV_ASSERT(size >= 0);
    TELV_ASSERT(0 <= pos && pos <= size_);
    if (n > m_capacity - size_)
    {
        constexpr ssize_t most = std::numeric_limits<ssize_t>::max();
        if (n > most - size_ || m_capacity > most - size_ - n)
            throw std::bad_alloc();
        reserve(m_capacity + size_ + n);
    }
    if (pos < size_ && n > 0)
        std::memmove(m_buffer + pos + n, m_buffer + pos, static_cast<size_t>(size_ - pos));
    size_ += n;
    return m_buffer + pos;
}

void VectorOfByte::swap(VectorOfByte& other) noexcept
{
    std::swap(m_buffer, other.m_buffer);
    std::swap(size_, other.size_);
    std::swap(m_capacity, other.m_capacity);
}

} // namespace telv
