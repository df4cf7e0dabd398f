// SPDX-License-Identifier: MIT
// An xostream that collects its text in memory.
#pragma once

#include "tlUtils/PagedBuffer.h"
#include "tlUtils/xostream.h"

namespace telv
{

/// Lets an xostream write into a PagedBuffer.
class TLUTILS_API PagedBufferStream final : public IndentingStream
{
public:
    /// `pb` must outlive the stream.
    explicit PagedBufferStream(PagedBuffer& pb) : m_pb(pb) {}

    void Flush() override {}

protected:
    void Write(const char* text, ssize_t length) override { m_pb.Append(text, length); }
    char LastCharacter() const override;

private:
    PagedBuffer& m_pb;
};

/// In-memory stream; every message is composed in one.
class TLUTILS_API StringStream : public xostream
{
public:
    explicit StringStream(ssize_t pageSize);

    /// Copies the text into `out`, replacing what was there. `all` is true: the whole text; with
    /// false the text is appended to `out`.
    void GetString(xstring& out, bool all) const;
    xstring GetString() const;

    /// Forgets the text.
    void Clear() { m_pb.Clear(); }
    ssize_t size() const { return m_pb.m_totalSize; }

    PagedBuffer m_pb;
    PagedBufferStream m_outs;
};

} // namespace telv
