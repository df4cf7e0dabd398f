// SPDX-License-Identifier: MIT
// Temporary texts on guarded pages. Dead texts queue up; the oldest is unmapped when there are
// many.
#include "tlMacroExpander/src/Run/TextMemory.h"

#ifdef TELV_GUARD_TEXTS

#include "tlUtils/HeldMemory.h"
#include <atomic>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace telv
{

namespace
{

struct DeadPages
{
    char* m_pages = nullptr;
    size_t m_size = 0;
};

constexpr size_t s_mostDead = 10000;

/// The system keeps only so many mappings for a process; each text takes two, and others want some.
constexpr size_t s_mostGuarded = 15000;
std::atomic<size_t> s_guarded = 0;

/// A ring of dead texts. Unmaps the pages that are left when the thread ends.
class Graveyard
{
public:
    ~Graveyard()
    {
        for (const DeadPages& dead : m_ring)
            Unmap(dead);
    }

    /// After this `Bury` does not allocate: it is called from destructors.
    void MakeRoom() { m_ring.resize(s_mostDead); }

    void Bury(char* pages, size_t size)
    {
        madvise(pages, size, MADV_DONTNEED); // the addresses stay taken, the memory need not
        mprotect(pages, size, PROT_NONE);
        DeadPages& oldest = m_ring[m_next];
        Unmap(oldest);
        oldest = DeadPages{pages, size};
        m_next = (m_next + 1) % s_mostDead;
    }

private:
    static void Unmap(const DeadPages& dead)
    {
        if (dead.m_pages != nullptr)
            munmap(dead.m_pages, dead.m_size);
    }

    std::vector<DeadPages> m_ring;
    size_t m_next = 0;
};

thread_local Graveyard t_graveyard;

} // namespace

TextMemory::TextMemory(xstring& text)
{
    if (text.empty())
        return;
    if (s_guarded >= s_mostGuarded)
    {
        m_unguarded.swap(text);
        m_text = m_unguarded;
        return;
    }
    t_graveyard.MakeRoom();
    const size_t page = static_cast<size_t>(getpagesize());
    const size_t length = static_cast<size_t>(text.size());
    const size_t readable = (length + page - 1) / page * page;
    m_size = readable + page;
    HoldMemory(text.size()); // as if no pages were guarded
    void* const pages =
        mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
    {
        ReleaseMemory(text.size());
        throw std::bad_alloc();
    }
    ++s_guarded;
    m_pages = static_cast<char*>(pages);
    char* const start = m_pages + readable - length;
    std::memcpy(start, text.begin(), length);
    mprotect(m_pages, readable, PROT_READ);
    mprotect(m_pages + readable, page, PROT_NONE);
    m_text = SubString(start, start + length);
    text.clear();
}

TextMemory::~TextMemory()
{
    if (m_pages == nullptr)
        return;
    --s_guarded;
    ReleaseMemory(m_text.size());
    t_graveyard.Bury(m_pages, m_size);
}

} // namespace telv

#endif
