// SPDX-License-Identifier: MIT
// Lines that both texts begin or end with are put aside. Between them the greedy algorithm of Myers
// finds a shortest way: after d changes it knows, for each diagonal k (lines of the first text less
// lines of the second), how far one can get; the states of all rounds lead back from the end.
#include "output/UnifiedDiff.h"
#include <algorithm>
#include <string_view>
#include <vector>

namespace telv::tool
{

namespace
{

constexpr long s_context = 3;
constexpr long s_mostChanges = 2000;

using Lines = std::vector<SubString>;

/// Lines with their line feeds; the last one may have none.
Lines CutLines(SubString text)
{
    Lines lines;
    while (!text.empty())
    {
        const void* const feed = std::memchr(text.m_p1, '\n', static_cast<size_t>(text.size()));
        const char* const end = feed == nullptr ? text.m_p2 : static_cast<const char*>(feed) + 1;
        lines.emplace_back(text.m_p1, end);
        text.m_p1 = end;
    }
    return lines;
}

/// One step of the way: a line of both texts, or of one of them.
struct Step
{
    char m_mark; ///< ' ', '-' or '+'.
    SubString m_line;
};

class Comparison
{
public:
    Comparison(const Lines& before, const Lines& after) : m_before(before), m_after(after) {}

    std::vector<Step> FindSteps();

private:
    long Count(const Lines& lines) const { return static_cast<long>(lines.size()); }
    bool Same(long x, long y) const
    {
        return m_before[static_cast<size_t>(x)] == m_after[static_cast<size_t>(y)];
    }
    void FindMiddle();
    void ReplaceMiddle();
    void TraceBack(const std::vector<std::vector<long>>& rounds, long changes);
    void Add(char mark, const Lines& lines, long index)
    {
        m_steps.push_back({mark, lines[static_cast<size_t>(index)]});
    }

    const Lines& m_before;
    const Lines& m_after;
    long m_begin = 0; ///< Of the lines that differ, in both.
    long m_endBefore = 0;
    long m_endAfter = 0;
    std::vector<Step> m_steps;
};

std::vector<Step> Comparison::FindSteps()
{
    m_endBefore = Count(m_before);
    m_endAfter = Count(m_after);
    while (m_begin < std::min(m_endBefore, m_endAfter) && Same(m_begin, m_begin))
        ++m_begin;
    while (m_endBefore > m_begin && m_endAfter > m_begin && Same(m_endBefore - 1, m_endAfter - 1))
    {
        --m_endBefore;
        --m_endAfter;
    }
    for (long i = 0; i < m_begin; ++i)
        Add(' ', m_before, i);
    FindMiddle();
    for (long i = m_endBefore; i < Count(m_before); ++i)
        Add(' ', m_before, i);
    return std::move(m_steps);
}

void Comparison::FindMiddle()
{
    const long n = m_endBefore - m_begin;
    const long m = m_endAfter - m_begin;
    std::vector<std::vector<long>> rounds; // rounds[d][k + d]: the furthest x on diagonal k
    for (long d = 0; d <= std::min(n + m, s_mostChanges); ++d)
    {
        std::vector<long> round(static_cast<size_t>(2 * d + 1));
        for (long k = -d; k <= d; k += 2)
        {
            long x = 0;
            if (d > 0)
            {
                const std::vector<long>& last = rounds.back();
                const auto at = [&](long diagonal)
                { return last[static_cast<size_t>(diagonal + d - 1)]; };
                const bool goesDown = k == -d || (k != d && at(k - 1) < at(k + 1));
                x = goesDown ? at(k + 1) : at(k - 1) + 1;
            }
            while (x < n && x - k < m && x - k >= 0 && Same(m_begin + x, m_begin + x - k))
                ++x;
            round[static_cast<size_t>(k + d)] = x;
            if (x >= n && x - k >= m)
            {
                rounds.push_back(std::move(round));
                return TraceBack(rounds, d);
            }
        }
        rounds.push_back(std::move(round));
    }
    ReplaceMiddle();
}

/// From the end to the beginning; the steps are then turned round.
void Comparison::TraceBack(const std::vector<std::vector<long>>& rounds, long changes)
{
    const size_t first = m_steps.size();
    long x = m_endBefore - m_begin;
    long y = m_endAfter - m_begin;
    for (long d = changes; d > 0; --d)
    {
        const std::vector<long>& last = rounds[static_cast<size_t>(d - 1)];
        const auto at = [&](long diagonal) { return last[static_cast<size_t>(diagonal + d - 1)]; };
        const long k = x - y;
        const bool goesDown = k == -d || (k != d && at(k - 1) < at(k + 1));
        const long fromX = at(goesDown ? k + 1 : k - 1);
        const long fromY = fromX - (goesDown ? k + 1 : k - 1);
        for (; x > (goesDown ? fromX : fromX + 1); --x, --y)
            Add(' ', m_before, m_begin + x - 1);
        if (goesDown)
            Add('+', m_after, m_begin + y - 1);
        else
            Add('-', m_before, m_begin + x - 1);
        x = fromX;
        y = fromY;
    }
    for (; x > 0; --x)
        Add(' ', m_before, m_begin + x - 1);
    std::reverse(m_steps.begin() + static_cast<std::ptrdiff_t>(first), m_steps.end());
}

void Comparison::ReplaceMiddle()
{
    for (long i = m_begin; i < m_endBefore; ++i)
        Add('-', m_before, i);
    for (long i = m_begin; i < m_endAfter; ++i)
        Add('+', m_after, i);
}

/// "12,3", "12" for one line; where there is no line, the one before counts.
std::string Range(long first, long count)
{
    if (count == 0)
        return std::to_string(first - 1) + ",0";
    return std::to_string(first) + (count == 1 ? "" : "," + std::to_string(count));
}

/// Writes changes that are near each other together with what surrounds them.
class HunkWriter
{
public:
    explicit HunkWriter(const std::vector<Step>& steps) : m_steps(steps) {}

    std::string Write()
    {
        const long count = static_cast<long>(m_steps.size());
        long i = 0;
        while (i < count)
        {
            if (At(i).m_mark == ' ')
            {
                ++i;
                continue;
            }
            long end = i;
            for (long next = i; next < count && next <= end + 2 * s_context; ++next)
                if (At(next).m_mark != ' ')
                    end = next;
            WriteHunk(std::max(m_written, i - s_context), std::min(count, end + 1 + s_context));
            i = m_written;
        }
        return std::move(m_text);
    }

private:
    const Step& At(long i) const { return m_steps[static_cast<size_t>(i)]; }

    void WriteHunk(long begin, long end)
    {
        for (; m_written < begin; ++m_written)
            CountLine(At(m_written), m_before, m_after);
        long before = 0;
        long after = 0;
        std::string body;
        for (; m_written < end; ++m_written)
        {
            const Step& step = At(m_written);
            CountLine(step, before, after);
            body += step.m_mark;
            body.append(step.m_line.m_p1, step.m_line.m_p2);
            if (step.m_line.m_p2[-1] != '\n')
                body += "\n\\ No newline at end of file\n";
        }
        m_text += "@@ -" + Range(m_before + 1, before) + " +" + Range(m_after + 1, after) + " @@\n";
        m_text += body;
        m_before += before;
        m_after += after;
    }

    static void CountLine(const Step& step, long& before, long& after)
    {
        before += step.m_mark != '+';
        after += step.m_mark != '-';
    }

    const std::vector<Step>& m_steps;
    std::string m_text;
    long m_written = 0; ///< Steps that are done with.
    long m_before = 0;  ///< Lines that they took.
    long m_after = 0;
};

/// The escape of a string literal of C; empty for what needs none.
std::string Escape(char c)
{
    constexpr std::string_view named = "\a\b\t\n\v\f\r\"\\";
    constexpr std::string_view letters = "abtnvfr\"\\";
    if (const size_t i = named.find(c); i != std::string_view::npos)
        return {'\\', letters[i]};
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f)
        return {};
    const auto digit = [&](int shift) { return static_cast<char>('0' + (byte >> shift & 7)); };
    return {'\\', digit(6), digit(3), digit(0)};
}

/// A name with a blank, a tab and the like as diff and patch of the GNU project quote it; other
/// names as they are.
std::string Quoted(const std::string& name)
{
    std::string quoted;
    bool mustQuote = false;
    for (const char c : name)
    {
        const std::string escape = Escape(c);
        mustQuote = mustQuote || c == ' ' || !escape.empty();
        quoted += escape.empty() ? std::string(1, c) : escape;
    }
    return mustQuote ? '"' + quoted + '"' : name;
}

} // namespace

std::string MakeUnifiedDiff(const std::string& beforeName, SubString before,
                            const std::string& afterName, const std::string& afterNote,
                            SubString after)
{
    if (before == after)
        return {};
    const Lines beforeLines = CutLines(before);
    const Lines afterLines = CutLines(after);
    const std::vector<Step> steps = Comparison(beforeLines, afterLines).FindSteps();
    return "--- " + Quoted(beforeName) + "\n+++ " + Quoted(afterName) + "\t" + afterNote + "\n" +
           HunkWriter(steps).Write();
}

} // namespace telv::tool
