// SPDX-License-Identifier: MIT
// Shared ownership within one thread: a count in the object, without atomic operations.
#pragma once

#include <utility>

namespace telv
{

/// Base of objects that a CountedRef shares.
class Counted
{
public:
    Counted() = default;
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

protected:
    ~Counted() = default;

private:
    template <class T>
    friend class CountedRef;

    long m_refs = 0;
};

/// Shares a `T`, which derives from Counted and is made by `new`; deletes it with the last one.
template <class T>
class CountedRef
{
public:
    CountedRef() = default;
    explicit CountedRef(T* object) : m_object(object)
    {
        if (m_object != nullptr)
            ++m_object->m_refs;
    }
    CountedRef(const CountedRef& other) : CountedRef(other.m_object) {}
    CountedRef(CountedRef&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    CountedRef& operator=(CountedRef other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~CountedRef()
    {
        if (m_object != nullptr && --m_object->m_refs == 0)
            delete m_object;
    }

    T* Get() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }

private:
    T* m_object = nullptr;
};

} // namespace telv
