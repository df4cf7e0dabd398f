// Texts by address, lines by binary search.
#include "Sources.h"
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
    if (m_lineStarts.empty())
    {
        m_lineStarts.push_back(m_text.begin());
        const char* p = m_text.begin();
        while ((p = FindLineFeed(p, m_text.end())) != nullptr)
            m_lineStarts.push_back(++p);
    }
    return std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), pos) - m_lineStarts.begin();
}

SubString Source::LineText(const char* pos) const
{
    const char* const begin = m_lineStarts.at(static_cast<size_t>(Line(pos) - 1));
    const char* end = FindLineFeed(begin, m_text.end());
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
