// SPDX-License-Identifier: MIT
// Half-open views into text that is owned elsewhere: the currency of both libraries.
//
// A view is two pointers, copied by value. Scanners take one by reference and consume it from the
// front. Whoever keeps a view beyond a call must know who keeps the text alive.
#pragma once

#include "tlUtils/Export.h"
#include "tlUtils/IntTypes.h"
#include "tlUtils/TelvAssert.h"
#include "tlUtils/safe_bool.h"
#include <cstring>
#include <iosfwd>
#include <string_view>
#include <type_traits>

namespace telv
{

/// A view [m_p1, m_p2) of characters. Tests true when it is not empty.
template <class C>
class TLUTILS_API BasicSubString : public safe_bool<BasicSubString<C>>
{
public:
    const C* m_p1;
    const C* m_p2;

    /// The empty view: both ends null.
    BasicSubString() : m_p1(nullptr), m_p2(nullptr) {}

    /// Views [p1, p2); the text must outlive the view.
    BasicSubString(const C* p1 TELV_LIFETIMEBOUND, const C* p2) : m_p1(p1), m_p2(p2) {}

    /// Views a NUL-terminated text, terminator excluded. Null gives the empty view.
    BasicSubString(const C* text TELV_LIFETIMEBOUND)
        : m_p1(text), m_p2(text == nullptr ? nullptr : text + std::strlen(text))
    {
    }

    /// Views what `text` views. A template, so that only a string_view itself converts.
    template <class Traits>
    BasicSubString(std::basic_string_view<C, Traits> text)
        : m_p1(text.data()), m_p2(text.data() + text.size())
    {
    }

    operator std::basic_string_view<C>() const
    {
        return std::basic_string_view<C>(m_p1, static_cast<size_t>(size()));
    }

    const C* begin() const { return m_p1; }
    const C* end() const { return m_p2; }
    const C* data() const { return m_p1; }
    /// Length in characters.
    ssize_t size() const { return m_p2 - m_p1; }
    bool empty() const { return m_p1 == m_p2; }
    bool boolean_test() const { return m_p1 != m_p2; }

    /// The first character; the view must not be empty.
    const C& operator*() const
    {
        TELV_ASSERT_IN("Core/tlUtils/BasicSubString", m_p1 < m_p2);
        return *m_p1;
    }

    /// The character at `index`, which must lie inside the view.
    const C& operator[](ssize_t index) const
    {
        TELV_ASSERT_IN("Core/tlUtils/BasicSubString", 0 <= index && index < size());
        return m_p1[index];
    }

    /// Drops the first character; the view must not be empty.
    BasicSubString& operator++()
    {
        TELV_ASSERT_IN("Core/tlUtils/BasicSubString", m_p1 < m_p2);
        ++m_p1;
        return *this;
    }

    BasicSubString operator++(int)
    {
        const BasicSubString before(*this);
        ++*this;
        return before;
    }
};

using SubString = BasicSubString<char>;

/// True when the characters are equal.
TLUTILS_API inline bool operator==(SubString a, SubString b)
{
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.m_p1, b.m_p1, static_cast<size_t>(a.size())) == 0);
}

inline bool operator!=(SubString a, SubString b)
{
    return !(a == b);
}

template <class C>
class basic_xstring;

// Which comparisons of other types than two views there are.
namespace comparison
{

/// The types of text of this library.
template <class T>
inline constexpr bool s_isOwnText =
    std::is_same_v<T, SubString> || std::is_base_of_v<basic_xstring<char>, T>;

/// What a text of this library can be compared with: itself, what C++ and its library call a
/// string.
template <class T>
inline constexpr bool s_isText =
    std::is_convertible_v<const T&, SubString> || std::is_convertible_v<const T&, std::string_view>;

/// A text of this library and one of any type, but not two views, for which there is the operator
/// above.
template <class A, class B>
inline constexpr bool
    s_areMixedTexts = ((s_isOwnText<A> && s_isText<B>) || (s_isText<A> && s_isOwnText<B>)) &&
                      !(std::is_same_v<A, SubString> && std::is_same_v<B, SubString>);

template <class T>
SubString ViewOf(const T& text)
{
    if constexpr (std::is_convertible_v<const T&, SubString>)
        return text;
    else
        return SubString(std::string_view(text));
}

} // namespace comparison

// Templates, which take arguments as they are and nothing that isn't of this library: no conversion
// competes with another one, in C++17 or C++20 (which tries operators the other way round), and
// where an application has said `using namespace telv`, comparisons of other types are left alone.
template <class A, class B, std::enable_if_t<comparison::s_areMixedTexts<A, B>, int> = 0>
bool operator==(const A& a, const B& b)
{
    return comparison::ViewOf(a) == comparison::ViewOf(b);
}
template <class A, class B, std::enable_if_t<comparison::s_areMixedTexts<A, B>, int> = 0>
bool operator!=(const A& a, const B& b)
{
    return !(a == b);
}

/// Writes the characters as a string_view is written, with width and alignment; needs `<ostream>`.
template <class Traits>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& os, SubString s)
{
    return os << std::basic_string_view<char, Traits>(s.data(), static_cast<size_t>(s.size()));
}

/// True when `[inner.begin(), inner.end()]` lies within `[outer.begin(), outer.end()]`. The end of
/// a text belongs to it. Addresses only: neither text is read.
inline bool IsWithin(SubString inner, SubString outer)
{
    return outer.m_p1 <= inner.m_p1 && inner.m_p2 <= outer.m_p2;
}

extern template class BasicSubString<char>;

static_assert(sizeof(SubString) == 16, "two pointers");

} // namespace telv
