// SPDX-License-Identifier: MIT
// Lines matter only where indentation has to be put in front of them; else one put does. Most
// pieces are words and the like, whose columns are their characters.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/ExpandedOutput"

#include "tlMacroExpander/src/Output/UnrecordedOutput.h"
#include "tlMacroExpander/src/Output/Columns.h"
#include "tlMacroExpander/src/Scan/ReadBytes.h"
#include <algorithm>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace telv
{

namespace
{

/// Up to here a loop over the characters is cheaper than calls that search and count.
constexpr ssize_t s_few = 32;

#if defined(__SSE2__)

__m128i Load16(const char* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

__m128i Load8(const char* p)
{
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}

bool HoldsTabOrFeed(__m128i text)
{
    return _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8('\t')),
                                          _mm_cmpeq_epi8(text, _mm_set1_epi8('\n')))) != 0;
}

/// Whether each character of `s`, 1 to 32 of them, takes a column of the same line. Looks at both
/// ends, which overlap.
bool IsOneLineWithoutTab(SubString s)
{
    if (s.size() >= 16)
        return !HoldsTabOrFeed(Load16(s.begin())) && !HoldsTabOrFeed(Load16(s.end() - 16));
    if (s.size() >= 8)
        return !HoldsTabOrFeed(_mm_unpacklo_epi64(Load8(s.begin()), Load8(s.end() - 8)));
    const uint64 all = ReadUpTo8(s.begin(), static_cast<size_t>(s.size()));
    return !HoldsTabOrFeed(_mm_cvtsi64_si128(static_cast<int64>(all)));
}

#else

bool IsOneLineWithoutTab(SubString s)
{
    return std::none_of(s.begin(), s.end(), [](char c) { return c == '\t' || c == '\n'; });
}

#endif

/// The column behind `s`, which begins at `column` (not -1) and is not empty, when every line of it
/// begins at column 0.
ssize_t ColumnBehind(SubString s, ssize_t column)
{
    if (s.m_p2[-1] == '\n')
        return -1;
    if (s.size() <= s_few)
    {
        for (const char c : s)
            column = c == '\n' ? 0 : column + (c == '\t' ? s_columnsOfTab : 1);
        return column;
    }
    const void* const feed = memrchr(s.begin(), '\n', static_cast<size_t>(s.size()));
    return feed == nullptr ? column + Columns(s)
                           : Columns(SubString(static_cast<const char*>(feed) + 1, s.end()));
}

void Put(ExpandedOutput& output, SubString s)
{
    output.m_os->put(s.begin(), s.size());
    output.m_size += s.size();
    output.m_columnPos = ColumnBehind(s, output.m_columnPos);
}

void PutIndentedLines(ExpandedOutput& output, SubString s, ssize_t indent)
{
    while (s)
    {
        if (output.m_columnPos == -1)
            StartLine(output, indent);
        const SubString line(s.begin(), EndOfLine(s));
        Put(output, line);
        s.m_p1 = line.end();
    }
}

[[gnu::noinline]] void PutLines(ExpandedOutput& output, SubString s, ssize_t indent)
{
    if (indent > 0)
        return PutIndentedLines(output, s, indent);
    if (output.m_columnPos == -1)
        output.m_columnPos = indent;
    Put(output, s);
}

} // namespace

void WriteUnrecorded(ExpandedOutput& output, SubString s, ssize_t indent)
{
    TELV_ASSERT(output.m_os);
    if (s.empty())
        return;
    const bool endsLine = s.m_p2[-1] == '\n';
    const SubString line(s.m_p1, s.m_p2 - (endsLine ? 1 : 0));
    if (line.size() > s_few || (line && !IsOneLineWithoutTab(line)))
        return PutLines(output, s, indent);
    if (output.m_columnPos == -1)
    {
        if (indent > 0)
            StartLine(output, indent);
        else
            output.m_columnPos = indent;
    }
    output.m_os->put(s.begin(), s.size());
    output.m_size += s.size();
    output.m_columnPos = endsLine ? -1 : output.m_columnPos + s.size();
}

} // namespace telv
