// SPDX-License-Identifier: MIT
// A stack besides that of the thread: a mapping without reserved memory and with a guard page,
// entered by a switch of contexts. So code stays on the thread that runs it, with all that belongs
// to the thread, forking included.
#pragma once

#include <cstddef>
#include <functional>
#include <span>

namespace telv
{

/// Takes memory as it is used, and stays mapped until the process ends. One call at a time.
class OwnStack
{
public:
    /// Maps the first of `sizes`, from the largest, that can be had. Where the address space is
    /// limited the texts need it too: then the stack gets one part of `parts`. False when even the
    /// smallest can't be had; nothing is done when it is mapped already.
    bool Map(std::span<const size_t> sizes, size_t parts);

    /// The lowest address that can be used; null when it is not mapped.
    char* Low() const { return m_low; }
    /// Bytes from there; 0 when it is not mapped.
    size_t Size() const { return m_size; }
    /// Whether `frame` lies on it.
    bool Holds(const void* frame) const;

    /// Calls `work` on it, which must be mapped, and returns when it has returned; what it throws
    /// comes through. A call from `work` stays on it.
    void Call(const std::function<void()>& work) const;

private:
    bool MapOne(size_t size);

    char* m_low = nullptr;
    size_t m_size = 0;
};

} // namespace telv
