// SPDX-License-Identifier: MIT
// The move from the short buffer to the string, and the string's growth.
#include "tlMacroExpander/src/Output/StringSink.h"
#include <cstring>
#include <limits>
#include <new>

namespace telv
{

void StringSink::Write(const char* text, ssize_t length)
{
    if (length <= 0)
        return;
    const ssize_t used = size();
    if (length > std::numeric_limits<ssize_t>::max() / 2 - used)
        throw std::bad_alloc();
    const bool wasShort = m_many.capacity() == 0;
    m_many.reserve(2 * (used + length));
    if (wasShort)
        std::memcpy(m_many.begin(), m_few, static_cast<size_t>(used));
    std::memcpy(m_many.begin() + used, text, static_cast<size_t>(length));
    OfferRoom(m_many.begin() + used + length, m_many.begin() + m_many.capacity());
}

void StringSink::Take(xstring& out)
{
    const ssize_t used = size();
    if (m_many.capacity() == 0)
    {
        out.clear();
        out += Text();
    }
    else
    {
        m_many.m_buffer.size_ = used;
        out.swap(m_many);
        m_many = xstring();
    }
    OfferRoom(m_few, m_few + s_few);
}

} // namespace telv
