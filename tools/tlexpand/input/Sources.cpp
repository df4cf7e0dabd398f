// SPDX-License-Identifier: MIT
// Texts by address. Lines are counted when they are asked for, which only an error does: it may be
// that memory has run out, so nothing is allocated for it.
#include "input/Sources.h"
#include <algorithm>
#include <cstring>

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

ssize_t Source::Line(const char* pos) const
{
    return std::count(File().begin(), PlaceInFile(pos), '\n') + 1;
}

SubString Source::LineText(const char* pos) const
{
    const SubString file = File();
    pos = PlaceInFile(pos);
    const char* begin = pos;
    while (begin != file.begin() && begin[-1] != '\n')
        --begin;
    const char* end = FindLineFeed(pos, file.end());
    if (end == nullptr)
        return SubString(begin, file.end());
    if (end > begin && end[-1] == '\r')
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
