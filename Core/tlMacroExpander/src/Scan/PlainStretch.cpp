// SPDX-License-Identifier: MIT
// Strings and comments of plain text.
#include "tlMacroExpander/src/Scan/PlainStretch.h"
#include "tlMacroExpander/src/Scan/CommentEnd.h"
#include <cstring>

namespace telv
{

namespace
{

/// Whether a backslash and `c` are an escape of two characters.
bool IsSimpleEscape(char c)
{
    return c != '\0' && std::strchr("abfnrtv0\\'\"?", c) != nullptr;
}

} // namespace

const char* SkipPlainString(const char* p, const char* end)
{
    const char quote = *p++;
    for (; p < end; ++p)
    {
        const char c = *p;
        if (c == quote)
            return p + 1;
        if (c == '\n' || (c == '$' && quote == '"'))
            return nullptr;
        if (c != '\\')
            continue;
        if (++p == end || !IsSimpleEscape(*p))
            return nullptr;
    }
    return nullptr;
}

const char* SkipPlainSlash(const char* p, const char* end)
{
    const size_t length = static_cast<size_t>(end - p);
    if (length > 1 && p[1] == '/')
    {
        const void* const feed = std::memchr(p, '\n', length);
        return feed == nullptr ? end : static_cast<const char*>(feed);
    }
    if (length < 2 || p[1] != '*')
        return p + 1;
    if (IsWithoutCommentEnd(SubString(p + 2, end)))
        return nullptr;
    const void* const close = memmem(p + 2, length - 2, "*/", 2);
    return close == nullptr ? nullptr : static_cast<const char*>(close) + 2;
}

} // namespace telv
