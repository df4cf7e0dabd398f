// SPDX-License-Identifier: MIT
// Growable arrays whose elements stand in the bytes of a VectorOfByte.
//
// Elements that are trivially copyable move with the bytes; others (strings) are moved one by one.
#pragma once

#include "tlUtils/TelvAssert.h"
#include "tlUtils/VectorOfByte.h"
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace telv
{

/// Growable array of `T`. Appending is amortised constant time and invalidates pointers into it.
template <class T>
class TLUTILS_API xvector
{
    static constexpr bool s_plain = std::is_trivially_copyable_v<T>;
    static constexpr ssize_t s_width = static_cast<ssize_t>(sizeof(T));
    static_assert(alignof(T) <= alignof(std::max_align_t));

public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    VectorOfByte m_buffer;

    xvector() = default;
    xvector(const xvector& other) : xvector() { push_back(other.begin(), other.end()); }
    xvector(xvector&& other) noexcept { swap(other); }
    xvector& operator=(const xvector& other)
    {
        if (this != &other)
        {
            xvector copy(other);
            swap(copy);
        }
        return *this;
    }
    xvector& operator=(xvector&& other) noexcept
    {
        xvector taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~xvector() { DestroyFrom(0); }

    ssize_t size() const { return m_buffer.size_ / s_width; }
    bool empty() const { return m_buffer.size_ == 0; }
    /// Elements that fit without another allocation.
    ssize_t capacity() const { return m_buffer.m_capacity / s_width; }

    T* begin() { return reinterpret_cast<T*>(m_buffer.m_buffer); }
    T* end() { return begin() + size(); }
    const T* begin() const { return reinterpret_cast<const T*>(m_buffer.m_buffer); }
    const T* end() const { return begin() + size(); }
    T* data() { return begin(); }
    const T* data() const { return begin(); }

    T& operator[](ssize_t index)
    {
        TELV_ASSERT_IN("Core/tlUtils/xvector", 0 <= index && index < size());
        return begin()[index];
    }
    const T& operator[](ssize_t index) const
    {
        TELV_ASSERT_IN("Core/tlUtils/xvector", 0 <= index && index < size());
        return begin()[index];
    }
    T& front() { return (*this)[0]; }
    const T& front() const { return (*this)[0]; }
    T& back() { return (*this)[size() - 1]; }
    const T& back() const { return (*this)[size() - 1]; }

    /// Destroys the elements and keeps the memory.
    void clear()
    {
        DestroyFrom(0);
        m_buffer.clear();
    }

    /// Makes room for `n` elements in all.
    void reserve(ssize_t n)
    {
        if (n <= capacity())
            return;
        if (n > std::numeric_limits<ssize_t>::max() / s_width)
            throw std::bad_alloc();
        Reallocate(n);
    }

    void push_back(const T& value)
    {
        if constexpr (s_plain)
        {
            const T copy(value); // `value` may be one of our own elements
            if (m_buffer.m_capacity - m_buffer.size_ >= s_width)
            {
                std::memcpy(m_buffer.m_buffer + m_buffer.size_, &copy, sizeof(T));
                m_buffer.size_ += s_width;
            }
            else
                std::memcpy(m_buffer.insertbytes(m_buffer.size_, s_width), &copy, sizeof(T));
        }
        else
        {
            T copy(value);
            push_back(std::move(copy));
        }
    }

    void push_back(T&& value)
    {
        if constexpr (s_plain)
            push_back(static_cast<const T&>(value));
        else
        {
            if (size() == capacity())
                Reallocate(capacity() + size() + 1);
            ::new (static_cast<void*>(end())) T(std::move(value));
            m_buffer.size_ += s_width;
        }
    }

    /// Appends the elements of [src1, src2), which must not lie in this array.
    void push_back(const T* src1, const T* src2)
    {
        CheckRange(src1, src2, &m_buffer);
        if (src1 == src2)
            return;
        if constexpr (s_plain)
        {
            const ssize_t bytes = (src2 - src1) * s_width;
            std::memcpy(m_buffer.insertbytes(m_buffer.size_, bytes), src1,
                        static_cast<size_t>(bytes));
        }
        else
        {
            const ssize_t n = src2 - src1;
            if (n > capacity() - size())
                reserve(capacity() + size() + n);
            for (const T* p = src1; p != src2; ++p)
                push_back(*p);
        }
    }

    void pop_back()
    {
        TELV_ASSERT_IN("Core/tlUtils/xvector", !empty());
        DestroyFrom(size() - 1);
        m_buffer.size_ -= s_width;
    }

    /// Shortens to `n` elements, or appends value-initialised ones.
    void resize(ssize_t n)
    {
        TELV_ASSERT_IN("Core/tlUtils/xvector", n >= 0);
        if (n < size())
        {
            DestroyFrom(n);
            m_buffer.size_ = n * s_width;
        }
        else if constexpr (s_plain)
        {
            if (n > std::numeric_limits<ssize_t>::max() / s_width)
                throw std::bad_alloc();
            const ssize_t first = size();
            m_buffer.insertbytes(m_buffer.size_, (n - first) * s_width);
            std::uninitialized_value_construct(begin() + first, end());
        }
        else
        {
            if (n > capacity())
                reserve(n);
            while (size() < n)
                push_back(T());
        }
    }

    void swap(xvector& other) noexcept { m_buffer.swap(other.m_buffer); }

private:
    static void CheckRange(const T* src1, const T* src2, const VectorOfByte* dst)
    {
        TELV_ASSERT_IN("Core/tlUtils/xvector",
                       src1 == src2 || (src1 < src2 && src1 != nullptr && dst != nullptr));
    }

    void DestroyFrom(ssize_t first)
    {
        if constexpr (!std::is_trivially_destructible_v<T>)
            std::destroy(begin() + first, end());
    }

    void Reallocate(ssize_t n)
    {
        if constexpr (s_plain)
            m_buffer.reserve(n * s_width);
        else
        {
            VectorOfByte larger;
            larger.reserve(n * s_width);
            std::uninitialized_move(begin(), end(), reinterpret_cast<T*>(larger.m_buffer));
            larger.size_ = m_buffer.size_;
            DestroyFrom(0);
            m_buffer.swap(larger);
        }
    }
};

} // namespace telv
