// Lines matter only where indentation has to be put in front of them; else one put does.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/ExpandedOutput"

#include "tlMacroExpander/src/Output/UnrecordedOutput.h"
#include "tlMacroExpander/src/Output/Columns.h"
#include <cstring>
#if defined(__SSE2__)
#include <bit>
#include <emmintrin.h>
#endif

namespace telv
{

namespace
{

/// Up to here a loop over the characters is cheaper than calls that search and count.
constexpr ssize_t s_few = 32;

#if defined(__SSE2__)

/// Line feeds and tabs among characters: a bit for each, the first character's the lowest.
struct Marks
{
    uint32 m_feeds = 0;
    uint32 m_tabs = 0;

    void Add(__m128i text, ssize_t offset)
    {
        m_feeds |= BitsOf(text, '\n') << offset;
        m_tabs |= BitsOf(text, '\t') << offset;
    }

private:
    static uint32 BitsOf(__m128i text, char c)
    {
        return static_cast<uint32>(_mm_movemask_epi8(_mm_cmpeq_epi8(text, _mm_set1_epi8(c))));
    }
};

__m128i Load16(const char* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

__m128i Load8(const char* p)
{
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}

__m128i Load4(const char* p)
{
    int32 text = 0;
    std::memcpy(&text, p, sizeof text);
    return _mm_cvtsi32_si128(text);
}

/// Of 4 to 32 characters. Looks at both ends, which overlap; a zero behind the text marks nothing.
Marks MarksOf(SubString s)
{
    const ssize_t n = s.size();
    const auto load = n >= 16 ? Load16 : n >= 8 ? Load8 : Load4;
    const ssize_t width = n >= 16 ? 16 : n >= 8 ? 8 : 4;
    Marks marks;
    marks.Add(load(s.begin()), 0);
    marks.Add(load(s.end() - width), n - width);
    return marks;
}

/// As ColumnBehind, for 4 to 32 characters.
ssize_t ColumnBehindMarks(SubString s, ssize_t column)
{
    const Marks marks = MarksOf(s);
    if (marks.m_feeds == 0)
        return column + s.size() + (s_columnsOfTab - 1) * std::popcount(marks.m_tabs);
    const ssize_t behind = std::bit_width(marks.m_feeds); // the last line feed
    if (behind == s.size())
        return -1;
    return s.size() - behind + (s_columnsOfTab - 1) * std::popcount(static_cast<uint64>(marks.m_tabs) >> behind);
}

#endif

/// The column behind `s`, which begins at `column` (not -1) and is not empty, when every line of it
/// begins at column 0.
ssize_t ColumnBehindFew(SubString s, ssize_t column)
{
    for (const char c : s)
        column = c == '\n' ? 0 : column + (c == '\t' ? s_columnsOfTab : 1);
    return s.m_p2[-1] == '\n' ? -1 : column;
}

ssize_t ColumnBehind(SubString s, ssize_t column)
{
#if defined(__SSE2__)
    if (s.size() >= 4 && s.size() <= s_few)
        return ColumnBehindMarks(s, column);
#endif
    if (s.size() <= s_few)
        return ColumnBehindFew(s, column);
    if (s.m_p2[-1] == '\n')
        return -1;
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

} // namespace

void WriteUnrecorded(ExpandedOutput& output, SubString s, ssize_t indent)
{
    TELV_ASSERT(output.m_os);
    if (s.empty())
        return;
    if (indent > 0)
        return PutIndentedLines(output, s, indent);
    if (output.m_columnPos == -1)
        output.m_columnPos = indent;
    Put(output, s);
}

} // namespace telv
