// SPDX-License-Identifier: MIT
// Text to a file descriptor. Small pieces are collected; text that fills the buffer by itself goes
// out without being copied. Interrupted and short writes are continued, and a descriptor that
// would block is waited for.
#include "tlUtils/xostream.h"
#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace telv
{

namespace
{

constexpr ssize_t s_mostPending = ssize_t(64) * 1024;

bool WaitUntilWritable(int descriptor)
{
    pollfd waited = {descriptor, POLLOUT, 0};
    return poll(&waited, 1, -1) > 0 || errno == EINTR;
}

/// False when not everything could be written.
bool WriteAll(int descriptor, const char* text, ssize_t length)
{
    constexpr ssize_t atOnce = ssize_t(1) << 30;
    while (length > 0)
    {
        const ssize_t n = ::write(descriptor, text, static_cast<size_t>(std::min(length, atOnce)));
        if (n > 0)
        {
            text += n;
            length -= n;
            continue;
        }
        const bool wouldBlock = n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
        const bool goOn = wouldBlock ? WaitUntilWritable(descriptor) : n < 0 && errno == EINTR;
        if (!goOn)
            return false;
    }
    return true;
}

} // namespace

void DescriptorStream::Write(const char* text, ssize_t length)
{
    if (length <= 0)
        return;
    m_last = text[length - 1];
    if (length > s_mostPending - m_pending.size())
    {
        Flush();
        if (length >= s_mostPending)
        {
            m_failed = !WriteAll(m_descriptor, text, length) || m_failed;
            return;
        }
    }
    m_pending += SubString(text, text + length);
}

void DescriptorStream::Flush()
{
    m_failed = !WriteAll(m_descriptor, m_pending.begin(), m_pending.size()) || m_failed;
    m_pending.clear();
}

} // namespace telv
