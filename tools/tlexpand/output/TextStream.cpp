// SPDX-License-Identifier: MIT
// What is held begins at the start of a line, or in one that is known not to be blank; so whether a
// line is blank can always be told from what is held. While nothing is being removed, text goes
// straight into the buffer; long stretches go from where they stand to the file.
#define TELV_SOURCE_PATH "tools/tlexpand/output/TextStream"

#include "output/TextStream.h"
#include <algorithm>
#include <cstring>
#include <new>

namespace telv::tool
{

namespace
{

constexpr ssize_t s_firstBuffer = ssize_t{16} * 1024;
constexpr ssize_t s_largestBuffer = ssize_t{256} * 1024;
/// Not worth copying.
constexpr ssize_t s_longStretch = ssize_t{64} * 1024;
/// Of what came last, so much is held in any case.
constexpr ssize_t s_lookBack = ssize_t{16} * 1024;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

/// Where the blanks begin that end at `end`.
const char* BlanksBefore(const char* end, const char* begin)
{
    while (end != begin && IsBlank(end[-1]))
        --end;
    return end;
}

/// How much of `text` may be sent: not what came last, and no line that is blank up to there. Sets
/// `endsInText` when a line is cut that is not.
const char* EndOfSendable(SubString text, bool& endsInText)
{
    if (text.size() <= s_lookBack)
        return text.begin();
    const char* const end = text.end() - s_lookBack;
    const char* const blanks = BlanksBefore(end, text.begin());
    if (blanks == text.begin())
        return endsInText ? end : blanks;
    endsInText = blanks[-1] != '\n';
    return endsInText ? end : blanks;
}

} // namespace

TextStream::TextStream(OutputFile* file, xstring* whole)
    : m_file(file != nullptr && file->IsDirect() ? nullptr : file), m_whole(whole)
{
    m_buffer.reserve(s_firstBuffer);
    OfferRoom(m_buffer.begin(), nullptr);
    OfferBuffer();
}

/// Offers the rest of the buffer when text may go there as it comes.
void TextStream::OfferBuffer()
{
    const bool isPlain = m_nextSource == m_sources.size() && !m_isLineToGo && m_whole == nullptr;
    OfferRoom(Room(), isPlain ? m_buffer.begin() + m_buffer.capacity() : Room());
}

void TextStream::StartText()
{
    if (m_file == nullptr)
        m_textBegin = Held().size();
    else
    {
        Send(Held());
        OfferRoom(m_buffer.begin(), nullptr);
    }
    OfferBuffer();
}

void TextStream::RemoveSource(const char* begin, const char* end)
{
    m_sources.push_back({begin, end});
    OfferBuffer();
}

bool TextStream::RemoveLast(ssize_t length)
{
    if (length > s_lookBack)
        return false;
    TELV_ASSERT(length <= Held().size());
    const ssize_t begin = Position() - length;
    OfferRoom(Room() - length, nullptr);
    m_sentAndRemoved += length;
    AddRemoved(begin);
    BeginRemoval();
    return true;
}

/// Something goes at the place that was reached.
void TextStream::BeginRemoval()
{
    if (!m_isLineToGo)
    {
        const char* const begin = m_buffer.begin() + m_textBegin;
        const char* const blanks = BlanksBefore(Room(), begin);
        m_isLineToGo = blanks == begin ? !m_beginsInText : blanks[-1] == '\n';
        m_lineBegin = blanks - m_buffer.begin();
    }
    OfferBuffer();
}

/// All that came from `begin` on, and is not held, is removed.
void TextStream::AddRemoved(ssize_t begin)
{
    if (begin != Position())
        m_removed.push_back({begin, Position()});
}

/// Takes back the last line, which is blank, and what was removed of it.
void TextStream::RemoveLine()
{
    const ssize_t length = Held().size() - m_lineBegin;
    ssize_t begin = Position() - length;
    for (; !m_removed.empty() && m_removed.back().m_end >= begin; m_removed.pop_back())
        begin -= m_removed.back().m_end - m_removed.back().m_begin;
    OfferRoom(m_buffer.begin() + m_lineBegin, nullptr);
    m_sentAndRemoved += length;
    AddRemoved(begin);
    m_isLineToGo = false;
}

void TextStream::Finish()
{
    TELV_ASSERT(m_nextSource == m_sources.size());
    if (m_isLineToGo)
        RemoveLine();
}

void TextStream::Write(const char* text, ssize_t length)
{
    SubString rest(text, text + length);
    if (m_whole != nullptr)
        m_whole->append(rest);
    while (rest && m_nextSource != m_sources.size())
        rest = PassSource(rest, m_sources[m_nextSource]);
    Take(rest);
    OfferBuffer();
}

/// Takes what comes before the source that is to be removed next, or drops what belongs to it; what
/// is left of `text` is not looked at yet.
SubString TextStream::PassSource(SubString text, const SourceRange& source)
{
    if (m_removalBegin < 0)
    {
        const bool begins = text.begin() <= source.m_begin && source.m_begin < text.end();
        const char* const begin = begins ? source.m_begin : text.end();
        Take(SubString(text.begin(), begin));
        if (begins)
        {
            BeginRemoval();
            m_removalBegin = Position();
        }
        return SubString(begin, text.end());
    }
    const bool ends = text.begin() < source.m_end && source.m_end <= text.end();
    const char* const end = ends ? source.m_end : text.end();
    m_sentAndRemoved += end - text.begin();
    if (ends)
    {
        AddRemoved(m_removalBegin);
        m_removalBegin = -1;
        ++m_nextSource;
    }
    return SubString(end, text.end());
}

void TextStream::Take(SubString text)
{
    if (m_isLineToGo)
        text = PassBlanks(text);
    Append(text);
}

/// Takes what `text` has of a line that is to go if it stays blank.
SubString TextStream::PassBlanks(SubString text)
{
    const char* const blanksEnd = std::find_if_not(text.begin(), text.end(), IsBlank);
    if (blanksEnd == text.end())
        return text;
    if (*blanksEnd != '\n')
    {
        m_isLineToGo = false;
        return text;
    }
    Append(SubString(text.begin(), blanksEnd + 1));
    RemoveLine();
    return SubString(blanksEnd + 1, text.end());
}

void TextStream::Append(SubString text)
{
    if (m_file != nullptr && text.size() >= s_longStretch)
    {
        bool endsInText = false;
        const char* const end = EndOfSendable(text, endsInText);
        if (end != text.begin())
        {
            Send(Held());
            OfferRoom(m_buffer.begin(), nullptr);
            Send(SubString(text.begin(), end));
            m_beginsInText = endsInText;
            text.m_p1 = end;
        }
    }
    else if (CanSend(text.size()))
        SendHeld();
    Copy(text);
}

/// Whether it is time to make room for so many characters.
bool TextStream::CanSend(ssize_t length) const
{
    return m_file != nullptr && m_buffer.capacity() >= s_largestBuffer &&
           length > m_buffer.capacity() - Held().size();
}

void TextStream::Copy(SubString text)
{
    const ssize_t used = Held().size();
    if (text.size() > m_buffer.capacity() - used)
    {
        m_buffer.reserve(std::max(used + text.size(), 2 * m_buffer.capacity()));
        OfferRoom(m_buffer.begin() + used, nullptr);
    }
    if (text)
        std::memcpy(Room(), text.begin(), static_cast<size_t>(text.size()));
    OfferRoom(Room() + text.size(), nullptr);
}

void TextStream::SendHeld()
{
    const SubString held = Held();
    const char* const end = EndOfSendable(held, m_beginsInText);
    const ssize_t left = held.end() - end;
    Send(SubString(held.begin(), end));
    std::memmove(m_buffer.begin(), end, static_cast<size_t>(left));
    m_lineBegin -= end - held.begin();
    OfferRoom(m_buffer.begin() + left, nullptr);
}

void TextStream::Send(SubString text)
{
    m_file->Append(text);
    m_sentAndRemoved += text.size();
}

} // namespace telv::tool
