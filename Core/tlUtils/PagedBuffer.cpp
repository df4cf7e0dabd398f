// SPDX-License-Identifier: MIT
// Pages are made when the first character for them arrives, so the last page always holds at
// least one, and an unused stream allocates nothing.
#define TELV_SOURCE_PATH "Core/tlUtils/PagedBuffer"

#include "tlUtils/PagedBuffer.h"
#include "tlUtils/HeldMemory.h"
#include "tlUtils/TelvAssert.h"
#include <algorithm>
#include <cstring>
#include <memory>

namespace telv
{

PagedBuffer::PagedBuffer(ssize_t pageSize) : m_pageSize(pageSize), m_totalSize(0), m_writePos(0)
{
    TELV_ASSERT(pageSize > 0);
}

PagedBuffer::~PagedBuffer()
{
    Clear();
}

/// A page that has been counted.
void PagedBuffer::MakePage()
try
{
    auto page = std::make_unique_for_overwrite<char[]>(static_cast<size_t>(m_pageSize));
    m_pages.push_back(page.get());
    page.release();
}
catch (const std::bad_alloc&)
{
    ReleaseMemory(m_pageSize);
    throw;
}

void PagedBuffer::Append(const char* text, ssize_t length)
{
    while (length > 0)
    {
        if (m_pages.empty() || m_writePos == m_pageSize)
        {
            HoldMemory(m_pageSize);
            MakePage();
            m_writePos = 0;
        }
        const ssize_t n = std::min(length, m_pageSize - m_writePos);
        std::memcpy(m_pages.back() + m_writePos, text, static_cast<size_t>(n));
        m_writePos += n;
        m_totalSize += n;
        text += n;
        length -= n;
    }
}

void PagedBuffer::Clear()
{
    for (const char* page : m_pages)
    {
        delete[] page;
        ReleaseMemory(m_pageSize);
    }
    m_pages.clear();
    m_totalSize = 0;
    m_writePos = 0;
}

void PagedBuffer::CopyTo(xstring& out) const
{
    out.clear();
    out.reserve(m_totalSize);
    ssize_t left = m_totalSize;
    for (const char* page : m_pages)
    {
        const ssize_t n = std::min(left, m_pageSize);
        out += SubString(page, page + n);
        left -= n;
    }
}

} // namespace telv
