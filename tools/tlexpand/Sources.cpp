// SPDX-License-Identifier: MIT
// Texts by address. Lines are counted when they are asked for. An error asks a few times, and it
// may be that memory has run out, so nothing is allocated for it; thousands of warnings ask more
// often.
#include "Sources.h"
#include <algorithm>
#include <cstring>
#include <new>

namespace telv::tool
{

namespace
{

const char* FindLineFeed(const char* begin, const char* end)
{
    if (begin == end)
        return nullptr;
    return static_cast<const char*>(std::memchr(begin, '\n', static_cast<size_t>(end - begin)));
}

constexpr ssize_t s_lineBlock = 4096;
constexpr int s_fewLines = 16;

/// Where the next UTF-8 character begins, at `begin` or behind it, if not behind `end`. Bytes that
/// go on with a character are at most three, others of their kind are characters of their own.
const char* SkipRestOfCharacter(const char* begin, const char* end)
{
    for (int i = 0; i < 3 && begin != end && (static_cast<unsigned char>(*begin) & 0xc0) == 0x80;
         ++i)
        ++begin;
    return begin;
}

} // namespace

/// In a value that stands in both alike, the same character; else where the value begins.
const char* Source::PlaceInFile(const char* pos) const
{
    if (!IsMade())
        return pos;
    const auto isBefore = [](ssize_t offset, const MadePlace& p) { return offset < p.m_offset; };
    const auto next = std::upper_bound(m_made.m_places->begin(), m_made.m_places->end(),
                                       pos - m_text.begin(), isBefore);
    const MadePlace& place = *std::prev(next);
    const char* const value = m_made.m_file.begin() + place.m_origin;
    const char* made = m_text.begin() + place.m_offset;
    const char* origin = value;
    if (made != pos && *made == '`')
        ++made;
    if (origin != m_made.m_file.end() && *origin == '"')
        ++origin;
    const ssize_t size = pos - made;
    const bool isAlike = size <= m_made.m_file.end() - origin && std::equal(made, pos, origin);
    return isAlike ? origin + size : value;
}

/// False where there is no memory for it.
bool Source::MakeLineCounts() const
{
    if (!m_linesBefore.empty())
        return true;
    const SubString file = File();
    try
    {
        m_linesBefore.reserve(static_cast<size_t>(file.size() / s_lineBlock + 1));
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    ssize_t lines = 0;
    for (const char* block = file.begin();; block += s_lineBlock)
    {
        m_linesBefore.push_back(lines);
        if (file.end() - block < s_lineBlock)
            return true;
        lines += std::count(block, block + s_lineBlock, '\n');
    }
}

ssize_t Source::Line(const char* pos) const
{
    const char* from = File().begin();
    const char* const place = PlaceInFile(pos);
    ssize_t before = 0;
    if (m_linesAsked < s_fewLines)
        ++m_linesAsked;
    else if (MakeLineCounts())
    {
        const ssize_t block = (place - from) / s_lineBlock;
        before = m_linesBefore[static_cast<size_t>(block)];
        from += block * s_lineBlock;
    }
    return before + std::count(from, place, '\n') + 1;
}

SubString Source::LineAround(const char* pos, ssize_t most) const
{
    const SubString file = File();
    pos = PlaceInFile(pos);
    const char* const first = pos - std::min(most, pos - file.begin());
    const char* begin = pos;
    while (begin != first && begin[-1] != '\n')
        --begin;
    if (begin != file.begin() && begin[-1] != '\n')
        begin = SkipRestOfCharacter(begin, pos);
    const char* const last = pos + std::min(most, file.end() - pos);
    const char* end = FindLineFeed(pos, last);
    if (end == nullptr)
        end = last;
    if (end != file.end() && *end == '\n' && end > begin && end[-1] == '\r')
        --end;
    return SubString(begin, end);
}

Source& Sources::Add(const std::string& name, SubString text, const char* importPos)
{
    m_sources.push_back(std::make_unique<Source>(name, text, m_sources.size(), importPos));
    m_byAddress[text.begin()] = m_sources.back().get();
    return *m_sources.back();
}

const Source* Sources::Find(const char* pos) const
{
    auto next = m_byAddress.upper_bound(pos);
    if (pos == nullptr || next == m_byAddress.begin())
        return nullptr;
    const Source* source = std::prev(next)->second;
    return pos <= source->Text().end() ? source : nullptr;
}

} // namespace telv::tool
