// SPDX-License-Identifier: MIT
// The owning, growable string. It is not kept NUL-terminated and may hold any bytes.
#pragma once

#include "tlUtils/BasicSubString.h"
#include "tlUtils/xvector.h"

namespace telv
{

/// Owning string of characters. Converts to a view of itself, valid until the next change.
template <class C>
class TLUTILS_API basic_xstring : public xvector<C>
{
public:
    basic_xstring() = default;
    /// Copies a NUL-terminated text; null gives the empty string.
    basic_xstring(const C* text) { append(SubString(text)); }
    /// Copies the viewed characters.
    basic_xstring(BasicSubString<C> s) { append(s); }
    /// Copies the viewed characters. A template, so that only a string_view itself converts.
    template <class Traits>
    basic_xstring(std::basic_string_view<C, Traits> text)
    {
        append(BasicSubString<C>(text));
    }
    /// Copies [r1, r2); a reversed range is an assertion failure.
    basic_xstring(const C* r1, const C* r2)
    {
        TELV_ASSERT_IN("Core/tlUtils/xstring", r1 <= r2);
        append(BasicSubString<C>(r1, r2));
    }
    /// `size` copies of `c`.
    basic_xstring(ssize_t size, C c)
    {
        TELV_ASSERT_IN("Core/tlUtils/xstring", size >= 0);
        if (size > 0)
            std::memset(this->m_buffer.insertbytes(0, size), c, static_cast<size_t>(size));
    }

    /// The characters with a NUL behind the last one; valid until the next change.
    const C* c_str() const
    {
        this->m_buffer.reserve(this->m_buffer.size_ + 1);
        this->m_buffer.m_buffer[this->m_buffer.size_] = 0;
        return this->begin();
    }

    operator BasicSubString<C>() const TELV_LIFETIMEBOUND
    {
        return BasicSubString<C>(this->begin(), this->end());
    }

    operator std::basic_string_view<C>() const TELV_LIFETIMEBOUND
    {
        return BasicSubString<C>(*this);
    }

    basic_xstring& operator+=(const C* text) { return append(BasicSubString<C>(text)); }
    basic_xstring& operator+=(BasicSubString<C> s) { return append(s); }
    basic_xstring& operator+=(const basic_xstring& s) { return append(BasicSubString<C>(s)); }
    basic_xstring& operator+=(C c)
    {
        this->push_back(c);
        return *this;
    }

    /// Appends `s`, which may view this string.
    basic_xstring& append(BasicSubString<C> s)
    {
        if (s.empty())
            return *this;
        const C* const base = this->begin();
        if (base != nullptr && base <= s.begin() && s.begin() < this->end())
        {
            const ssize_t offset = s.begin() - base;
            const ssize_t n = s.size();
            unsigned char* added = this->m_buffer.insertbytes(this->size(), n);
            std::memcpy(added, this->begin() + offset, static_cast<size_t>(n));
            return *this;
        }
        this->push_back(s.begin(), s.end());
        return *this;
    }

    void swap(basic_xstring& other) noexcept { xvector<C>::swap(other); }
};

extern template class xvector<char>;
extern template class basic_xstring<char>;

using xstring = basic_xstring<char>;

/// As for the view. Include `<ostream>`.
template <class Traits>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& os, const xstring& s)
{
    return os << SubString(s);
}

/// Byte-wise order, a proper prefix first.
TLUTILS_API bool operator<(const xstring& a, const xstring& b);

inline xstring operator+(const xstring& a, const xstring& b)
{
    xstring sum(a);
    sum += b;
    return sum;
}

static_assert(sizeof(xstring) == 24, "no field of its own");

} // namespace telv
