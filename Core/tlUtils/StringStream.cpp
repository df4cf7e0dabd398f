// SPDX-License-Identifier: MIT
// The in-memory stream: an xostream on its own paged buffer.
#include "tlUtils/StringStream.h"

namespace telv
{

char PagedBufferStream::LastCharacter() const
{
    return m_pb.m_totalSize == 0 ? '\n' : m_pb.m_pages.back()[m_pb.m_writePos - 1];
}

StringStream::StringStream(ssize_t pageSize) : xostream(nullptr), m_pb(pageSize), m_outs(m_pb)
{
    m_os = &m_outs; // only now does it live
}

void StringStream::GetString(xstring& out, bool all) const
{
    if (all)
        m_pb.CopyTo(out);
    else
        out += GetString();
}

xstring StringStream::GetString() const
{
    xstring text;
    m_pb.CopyTo(text);
    return text;
}

} // namespace telv
