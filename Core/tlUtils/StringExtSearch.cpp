// SPDX-License-Identifier: MIT
// Comparing, counting lines and replacing. The byte loops are those of the C library.
#include "tlUtils/StringExt.h"
#include <algorithm>
#include <cstring>

namespace telv
{

namespace
{

char LowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The first occurrence of `wanted`, which is not empty, in `text`, or null.
const char* Find(SubString text, SubString wanted)
{
    if (text.size() < wanted.size())
        return nullptr;
    return static_cast<const char*>(::memmem(text.begin(), static_cast<size_t>(text.size()),
                                             wanted.begin(), static_cast<size_t>(wanted.size())));
}

} // namespace

ssize_t GetLineNumber(SubString buffer, const char* pos)
{
    if (pos == nullptr || !IsWithin(SubString(pos, pos), buffer))
        return -1;
    ssize_t line = 1;
    const char* p = buffer.begin();
    while (p != pos)
    {
        const void* const lineFeed = std::memchr(p, '\n', static_cast<size_t>(pos - p));
        if (lineFeed == nullptr)
            break;
        p = static_cast<const char*>(lineFeed) + 1;
        ++line;
    }
    return line;
}

bool CaseInsensitiveCompare(SubString a, SubString b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

int strcmp(SubString a, SubString b)
{
    const ssize_t common = std::min(a.size(), b.size());
    const int order =
        common > 0 ? std::memcmp(a.begin(), b.begin(), static_cast<size_t>(common)) : 0;
    if (order != 0)
        return order;
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

int strcmp(SubString a, const char* b)
{
    return strcmp(a, SubString(b));
}

void StringFindAndReplace(xstring& s, const xstring& find, const xstring& replace)
{
    if (find.empty())
        return;
    SubString rest = s;
    const char* found = Find(rest, find);
    if (found == nullptr)
        return;
    xstring result; // built aside: `find` or `replace` may be `s` itself
    result.reserve(s.size());
    for (; found != nullptr; found = Find(rest, find))
    {
        result += SubString(rest.begin(), found);
        result += replace;
        rest.m_p1 = found + find.size();
    }
    result += rest;
    s.swap(result);
}

} // namespace telv
