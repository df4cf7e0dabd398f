// SPDX-License-Identifier: MIT
// Indentation and numbers of text streams, and the standard output.
//
// Where a line starts is known from the character written last, so a stream that is not indented
// pays nothing for the possibility.
#include "tlUtils/xostream.h"
#include "tlUtils/NumberText.h"
#include <algorithm>
#include <cstring>

namespace telv
{

void IndentingStream::PutIndented(const char* text, ssize_t length)
{
    static constexpr char blanks[] = "                                ";
    static constexpr ssize_t blankCount = sizeof blanks - 1;
    bool atLineStart = LastCharacter() == '\n';
    const char* const end = text + length;
    while (text != end)
    {
        if (atLineStart && *text != '\n')
        {
            for (ssize_t left = m_indent; left > 0; left -= blankCount)
                Write(blanks, std::min(left, blankCount));
        }
        const void* const lineFeed = std::memchr(text, '\n', static_cast<size_t>(end - text));
        atLineStart = lineFeed != nullptr;
        const char* const lineEnd = atLineStart ? static_cast<const char*>(lineFeed) + 1 : end;
        Write(text, lineEnd - text);
        text = lineEnd;
    }
}

void xostream::put(int value)
{
    put(static_cast<long>(value));
}

void xostream::put(long value)
{
    const NumberText number(value);
    put(number.m_text, number.m_length);
}

void xostream::put(double value)
{
    const NumberText number(value);
    put(number.m_text, number.m_length);
}

namespace
{

/// Standard output that is never destroyed, so that static destructors can still write to it.
union StandardOutput
{
    constexpr StandardOutput() : m_stream(1) {}
    ~StandardOutput() {}

    DescriptorStream m_stream;
};

// Both are initialised by the compiler, before any static constructor runs.
constinit StandardOutput s_standardOutput;

struct FlushAtExit
{
    ~FlushAtExit() { s_standardOutput.m_stream.Flush(); }
};

const FlushAtExit s_flushAtExit;

} // namespace

constinit xostream xcout(&s_standardOutput.m_stream);

Indenter::Indenter(xostream& os, ssize_t indent) : m_os(os), m_indent(indent)
{
    m_os.m_os->AddIndent(m_indent);
}

Indenter::~Indenter()
{
    m_os.m_os->AddIndent(-m_indent);
}

} // namespace telv
