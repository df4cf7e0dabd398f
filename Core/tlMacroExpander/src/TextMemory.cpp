// Temporary texts on guarded pages. Dead texts queue up; the oldest is unmapped when there are
// many.
#include "tlMacroExpander/src/TextMemory.h"

#ifdef TELV_GUARD_TEXTS

#include <cstring>
#include <deque>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace telv
{

namespace
{

struct DeadPages
{
    char* m_pages;
    size_t m_size;
};

constexpr size_t s_mostDead = 10000;

/// Unmaps the pages that are left when the thread ends.
class Graveyard
{
public:
    ~Graveyard()
    {
        while (!m_dead.empty())
            UnmapOldest();
    }

    void Bury(char* pages, size_t size)
    {
        mprotect(pages, size, PROT_NONE);
        if (m_dead.size() >= s_mostDead)
            UnmapOldest();
        m_dead.push_back(DeadPages{pages, size});
    }

private:
    void UnmapOldest()
    {
        munmap(m_dead.front().m_pages, m_dead.front().m_size);
        m_dead.pop_front();
    }

    std::deque<DeadPages> m_dead;
};

thread_local Graveyard t_graveyard;

} // namespace

TextMemory::TextMemory(xstring& text)
{
    if (text.empty())
        return;
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t length = static_cast<size_t>(text.size());
    const size_t readable = (length + page - 1) / page * page;
    m_size = readable + page;
    void* const pages =
        mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        throw std::bad_alloc();
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
    if (m_pages != nullptr)
        t_graveyard.Bury(m_pages, m_size);
}

} // namespace telv

#endif
