// SPDX-License-Identifier: MIT
// A buffer in front of write.
#include "output/PrintedText.h"
#include "Cleanup.h"
#include "Files.h"
#include <unistd.h>

namespace telv::tool
{

PrintedText::PrintedText(int descriptor) : m_descriptor(descriptor), m_before(xcout.m_os)
{
    xcout.m_os = this;
}

PrintedText::~PrintedText()
{
    xcout.m_os = m_before;
}

void PrintedText::Flush()
{
    const int error = WriteAll(m_descriptor, ViewOf(m_pending));
    m_pending.clear();
    if (error != 0)
        EndRun(std::string("can't write ") + NameOfStream(m_descriptor) + ": " + ErrorText(error),
               EEnd::Streams);
}

void PrintedText::Write(const char* text, ssize_t length)
{
    constexpr size_t mostPending = size_t{64} * 1024;
    if (length <= 0)
        return;
    m_last = text[length - 1];
    m_pending.append(text, static_cast<size_t>(length));
    if (m_pending.size() >= mostPending)
        Flush();
}

} // namespace telv::tool
