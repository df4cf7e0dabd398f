// SPDX-License-Identifier: MIT
// The containers of the standard library, and single objects, with their memory counted as what a
// run holds (HeldMemory.h). Whatever grows with a text is kept in these or in this library's
// arrays.
#pragma once

#include "tlUtils/HeldMemory.h"
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace telv
{

/// Allocates, counted; for the containers of the standard library.
template <class T>
class HeldAllocator
{
public:
    using value_type = T;

    HeldAllocator() = default;
    template <class U>
    HeldAllocator(const HeldAllocator<U>&) noexcept
    {
    }

    T* allocate(size_t n)
    {
        if (n > static_cast<size_t>(HeldMemory::s_unlimited) / 2 / sizeof(T))
            throw std::bad_array_new_length();
        const auto bytes = static_cast<ssize_t>(n * sizeof(T));
        HoldMemory(bytes);
        try
        {
            return static_cast<T*>(::operator new(n * sizeof(T)));
        }
        catch (const std::bad_alloc&)
        {
            ReleaseMemory(bytes);
            throw;
        }
    }
    void deallocate(T* memory, size_t n) noexcept
    {
        ReleaseMemory(static_cast<ssize_t>(n * sizeof(T)));
        ::operator delete(memory);
    }

    template <class U>
    bool operator==(const HeldAllocator<U>&) const noexcept
    {
        return true;
    }
    template <class U>
    bool operator!=(const HeldAllocator<U>&) const noexcept
    {
        return false;
    }
};

/// An array of `n` new elements; who lets go of it releases `n * sizeof(T)` bytes.
template <class T>
std::unique_ptr<T[]> MakeHeldArray(size_t n)
{
    const auto bytes = static_cast<ssize_t>(n * sizeof(T));
    HoldMemory(bytes);
    try
    {
        return std::make_unique<T[]>(n);
    }
    catch (...)
    {
        ReleaseMemory(bytes);
        throw;
    }
}

template <class T>
using HeldVector = std::vector<T, HeldAllocator<T>>;

using HeldString = std::basic_string<char, std::char_traits<char>, HeldAllocator<char>>;
template <class K, class V, class Less = std::less<K>>
using HeldMap = std::map<K, V, Less, HeldAllocator<std::pair<const K, V>>>;
template <class K, class Less = std::less<K>>
using HeldSet = std::set<K, Less, HeldAllocator<K>>;
template <class K, class V, class Hash = std::hash<K>>
using HeldHashMap =
    std::unordered_map<K, V, Hash, std::equal_to<K>, HeldAllocator<std::pair<const K, V>>>;
template <class K, class Hash = std::hash<K>>
using HeldHashSet = std::unordered_set<K, Hash, std::equal_to<K>, HeldAllocator<K>>;

/// Shared, counted.
template <class T, class... Args>
std::shared_ptr<T> MakeHeldShared(Args&&... args)
{
    return std::allocate_shared<T>(HeldAllocator<T>(), std::forward<Args>(args)...);
}

/// Base of classes whose objects are counted when they are made by `new`.
class HeldObject
{
public:
    static void* operator new(size_t size) { return HeldAllocator<char>().allocate(size); }
    static void operator delete(void* object, size_t size) noexcept
    {
        HeldAllocator<char>().deallocate(static_cast<char*>(object), size);
    }
};

} // namespace telv
