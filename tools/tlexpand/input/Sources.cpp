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

ssize_t Source::Line(const char* pos) const
{
    return std::count(m_text.begin(), pos, '\n') + 1;
}

SubString Source::LineText(const char* pos) const
{
    const char* begin = pos;
    while (begin != m_text.begin() && begin[-1] != '\n')
        --begin;
    const char* end = FindLineFeed(pos, m_text.end());
    if (end == nullptr)
        return SubString(begin, m_text.end());
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
