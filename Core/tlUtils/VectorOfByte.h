// SPDX-License-Identifier: MIT
// The byte storage under every growable array.
#pragma once

#include "tlUtils/Export.h"
#include "tlUtils/IntTypes.h"

namespace telv
{

/// Growable storage of bytes. Memory comes from the C allocator; running out of it is
/// `std::bad_alloc`. Growth doubles, so that appending is amortised constant time.
class TLUTILS_API VectorOfByte
{
public:
    /// Empty; allocates nothing.
    constexpr VectorOfByte() : m_buffer(nullptr), size_(0), m_capacity(0) {}
    ~VectorOfByte();
    VectorOfByte(const VectorOfByte&) = delete;
    VectorOfByte& operator=(const VectorOfByte&) = delete;

    /// Drops the contents and keeps the capacity.
    void clear() { size_ = 0; }

    /// Opens `n` uninitialised bytes at offset `pos` and returns where they begin.
    unsigned char* insertbytes(ssize_t pos, ssize_t n);

    /// Makes room for `n` bytes in all; never changes the size.
    void reserve(ssize_t n) const;

    void swap(VectorOfByte& other) noexcept;

    mutable unsigned char* m_buffer; ///< Null until something is reserved.
    ssize_t size_;                   ///< Bytes in use.
    mutable ssize_t m_capacity;      ///< Bytes allocated.
};

static_assert(sizeof(VectorOfByte) == 24, "three words");

} // namespace telv
