// SPDX-License-Identifier: MIT
// Text output with indentation.
//
// An xostream is a thin front: a pointer to an IndentingStream, which inserts the indentation and
// hands the characters to wherever its derived class puts them. Indentation is written before the
// first character of a line that is not a line feed, so empty lines stay empty.
#pragma once

#include "tlUtils/Export.h"
#include "tlUtils/xstring.h"
#include <cstring>

namespace telv
{

/// A sink of characters that can indent lines.
class TLUTILS_API IndentingStream
{
public:
    IndentingStream() = default;
    IndentingStream(const IndentingStream&) = delete;
    IndentingStream& operator=(const IndentingStream&) = delete;

    /// Writes `length` characters, indented where a line starts.
    void Put(const char* text, ssize_t length)
    {
        if (length < m_roomEnd - m_room && m_indent <= 0)
        {
            if (length > 0) // an empty text may have no address
                std::memcpy(m_room, text, static_cast<size_t>(length));
            m_room += length;
        }
        else if (m_indent <= 0)
            Write(text, length);
        else
            PutIndented(text, length);
    }

    /// Adds `columns` (which may be negative) to the indentation of the lines that follow. The line
    /// in progress is not touched; a stream without text is at the start of a line.
    void AddIndent(ssize_t columns) { m_indent += columns; }

    /// Hands everything on to the final destination.
    virtual void Flush() = 0;

protected:
    ~IndentingStream() = default;

    /// Offers [begin, end) for the characters that come next: those that fit are put there without
    /// a call of `Write`. Nothing is offered at first.
    void OfferRoom(char* begin, char* end)
    {
        m_room = begin;
        m_roomEnd = end;
    }
    /// Where the next character goes: what lies between the begin of the room and here was written.
    char* Room() const { return m_room; }
    char* RoomEnd() const { return m_roomEnd; }

    /// Takes `length` characters as they are; `length` may be 0. What is in the room comes first.
    virtual void Write(const char* text, ssize_t length) = 0;

    /// The character written last, or a line feed when there is none: tells where lines start.
    virtual char LastCharacter() const = 0;

private:
    void PutIndented(const char* text, ssize_t length);

    ssize_t m_indent = 0;
    char* m_room = nullptr;
    char* m_roomEnd = nullptr;
};

/// Output stream of text. Owns nothing: the stream behind it belongs to whoever made it.
class TLUTILS_API xostream
{
public:
    IndentingStream* m_os;

    constexpr explicit xostream(IndentingStream* os) : m_os(os) {}
    xostream(const xostream&) = delete;
    xostream& operator=(const xostream&) = delete;

    void put(const char* text, ssize_t length) { m_os->Put(text, length); }
    void put(char c) { m_os->Put(&c, 1); }
    void put(int value);
    void put(long value);
    /// The shortest decimal digits that read back to the same double (see `ToString(double)`).
    void put(double value);
    void flush() { m_os->Flush(); }
};

/// The process's standard output. Text is kept until `flush`, until 64 KiB are pending or until the
/// process exits. Usable from the first static constructor to the last static destructor. A program
/// may point `m_os` elsewhere.
extern TLUTILS_API xostream xcout;

TLUTILS_API inline xostream& operator<<(xostream& os, SubString s)
{
    os.put(s.begin(), s.size());
    return os;
}
TLUTILS_API inline xostream& operator<<(xostream& os, const xstring& s)
{
    os.put(s.begin(), s.size());
    return os;
}
inline xostream& operator<<(xostream& os, const char* text)
{
    return os << SubString(text);
}
inline xostream& operator<<(xostream& os, char c)
{
    os.put(c);
    return os;
}
inline xostream& operator<<(xostream& os, int value)
{
    os.put(value);
    return os;
}
inline xostream& operator<<(xostream& os, long value)
{
    os.put(value);
    return os;
}
inline xostream& operator<<(xostream& os, double value)
{
    os.put(value);
    return os;
}

/// Indents the lines written during its life by `indent` more columns.
class TLUTILS_API Indenter
{
public:
    Indenter(xostream& os, ssize_t indent);
    ~Indenter();
    Indenter(const Indenter&) = delete;
    Indenter& operator=(const Indenter&) = delete;

    xostream& m_os;   ///< Must outlive the indenter.
    ssize_t m_indent; ///< Columns.
};

/// An IndentingStream on a file descriptor, which it does not own; used for `xcout`. Text that is
/// not flushed when the stream ends is lost. Writes that fail are remembered, not thrown: ask
/// `Failed` after `Flush`; what could not be written is dropped.
class TLUTILS_API DescriptorStream final : public IndentingStream
{
public:
    constexpr explicit DescriptorStream(int descriptor) : m_descriptor(descriptor) {}

    void Flush() override;
    /// True when a write failed since the start.
    bool Failed() const { return m_failed; }

protected:
    void Write(const char* text, ssize_t length) override;
    char LastCharacter() const override { return m_last; }

private:
    int m_descriptor;
    bool m_failed = false;
    char m_last = '\n';
    xstring m_pending;
};

static_assert(sizeof(xostream) == 8 && sizeof(Indenter) == 16, "no other fields");

} // namespace telv
