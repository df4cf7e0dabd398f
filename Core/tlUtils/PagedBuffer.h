// SPDX-License-Identifier: MIT
// Text collected in pages of equal size: appending never moves what is there.
#pragma once

#include "tlUtils/Export.h"
#include "tlUtils/xstring.h"

namespace telv
{

/// The store of a StringStream. Owns its pages.
class TLUTILS_API PagedBuffer
{
public:
    /// @param pageSize  Bytes per page, at least 1.
    explicit PagedBuffer(ssize_t pageSize);
    ~PagedBuffer();
    PagedBuffer(const PagedBuffer&) = delete;
    PagedBuffer& operator=(const PagedBuffer&) = delete;

    /// Appends `length` characters; linear.
    void Append(const char* text, ssize_t length);

    /// Drops the contents and the pages.
    void Clear();

    /// Copies the contents into `out`, replacing what was there.
    void CopyTo(xstring& out) const;

    ssize_t m_pageSize;
    xvector<char*> m_pages;
    ssize_t m_totalSize; ///< Characters held.
    ssize_t m_writePos;  ///< Characters used of the last page.

private:
    void MakePage();
};

static_assert(sizeof(PagedBuffer) == 48, "no other fields");

} // namespace telv
