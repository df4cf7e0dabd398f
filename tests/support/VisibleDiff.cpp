// SPDX-License-Identifier: MIT
// The common head and tail of the two texts are cut off first; between them the longest common
// subsequence of lines decides what is kept. Where that table would get large the middle is shown
// as it is, first all that is expected, then all that came.
#include "support/VisibleDiff.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace telv::test
{
namespace
{

using Lines = std::vector<std::string_view>;

constexpr size_t s_contextLines = 2;
constexpr size_t s_largestTable = 4'000'000;

/// Lines with their line feeds; only the last one may have none.
Lines SplitLines(std::string_view text)
{
    Lines lines;
    while (!text.empty())
    {
        const size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return lines;
}

/// Length of the UTF-8 sequence at the start of `text`, 0 when there is no complete one.
size_t Utf8Length(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const size_t length = lead < 0x80   ? 1
                          : lead < 0xc2 ? 0
                          : lead < 0xe0 ? 2
                          : lead < 0xf0 ? 3
                          : lead < 0xf5 ? 4
                                        : 0;
    if (length > text.size())
        return 0;
    for (size_t i = 1; i < length; ++i)
    {
        if ((static_cast<unsigned char>(text[i]) & 0xc0) != 0x80)
            return 0;
    }
    return length;
}

void AppendByte(std::string& out, char byte)
{
    std::array<char, 5> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "\\x%02x", static_cast<unsigned char>(byte));
    out += buffer.data();
}

void AppendVisible(std::string& out, std::string_view line)
{
    while (!line.empty())
    {
        const size_t length = std::max<size_t>(Utf8Length(line), 1);
        const char c = line[0];
        if (c == '\n')
            out += "⏎";
        else if (c == '\t')
            out += "→";
        else if (c == '\r')
            out += "␍";
        else if (Utf8Length(line) == 0 || static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            AppendByte(out, c);
        else
            out += line.substr(0, length);
        line.remove_prefix(length);
    }
}

/// A line of the diff: ' ', '-' or '+', and the text.
struct Row
{
    char mark;
    std::string_view line;
};

using Rows = std::vector<Row>;

/// Lengths of the longest common subsequences of all tails of `a` and `b`, row by row.
std::vector<unsigned> CommonTails(const Lines& a, const Lines& b)
{
    const size_t width = b.size() + 1;
    std::vector<unsigned> table((a.size() + 1) * width, 0);
    for (size_t i = a.size(); i-- > 0;)
    {
        for (size_t j = b.size(); j-- > 0;)
        {
            table[i * width + j] =
                a[i] == b[j] ? table[(i + 1) * width + j + 1] + 1
                             : std::max(table[(i + 1) * width + j], table[i * width + j + 1]);
        }
    }
    return table;
}

void CompareMiddle(const Lines& a, const Lines& b, Rows& rows)
{
    const bool small = (a.size() + 1) * (b.size() + 1) <= s_largestTable;
    const std::vector<unsigned> table = small ? CommonTails(a, b) : std::vector<unsigned>();
    const size_t width = b.size() + 1;
    size_t i = 0;
    size_t j = 0;
    while (i < a.size() || j < b.size())
    {
        if (small && i < a.size() && j < b.size() && a[i] == b[j])
        {
            rows.push_back({' ', a[i++]});
            ++j;
            continue;
        }
        const bool remove =
            j == b.size() ||
            (i < a.size() && (!small || table[(i + 1) * width + j] >= table[i * width + j + 1]));
        rows.push_back(remove ? Row{'-', a[i++]} : Row{'+', b[j++]});
    }
}

Rows Compare(Lines a, Lines b)
{
    const auto head = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
    Rows rows;
    for (const std::string_view line : Lines(a.begin(), a.begin() + head))
        rows.push_back({' ', line});
    a.erase(a.begin(), a.begin() + head);
    b.erase(b.begin(), b.begin() + head);

    const auto tail = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend()).first - a.rbegin();
    const Lines kept(a.end() - tail, a.end());
    a.erase(a.end() - tail, a.end());
    b.erase(b.end() - tail, b.end());
    CompareMiddle(a, b, rows);
    for (const std::string_view line : kept)
        rows.push_back({' ', line});
    return rows;
}

/// Whether a changed line is at most `s_contextLines` away.
bool IsNearChange(const Rows& rows, size_t index)
{
    const size_t first = index < s_contextLines ? 0 : index - s_contextLines;
    const size_t last = std::min(index + s_contextLines, rows.size() - 1);
    for (size_t i = first; i <= last; ++i)
    {
        if (rows[i].mark != ' ')
            return true;
    }
    return false;
}

} // namespace

std::string VisibleDiff(std::string_view expected, std::string_view actual)
{
    if (expected == actual)
        return "";
    const Rows rows = Compare(SplitLines(expected), SplitLines(actual));
    std::string out;
    bool gap = false;
    for (size_t i = 0; i < rows.size(); ++i)
    {
        if (!IsNearChange(rows, i))
        {
            gap = true;
            continue;
        }
        if (gap)
            out += "  ...\n";
        gap = false;
        out += rows[i].mark;
        out += ' ';
        AppendVisible(out, rows[i].line);
        out += '\n';
    }
    return out;
}

std::string Visible(std::string_view text, std::string_view prefix)
{
    std::string out;
    for (const std::string_view line : SplitLines(text))
    {
        out += prefix;
        AppendVisible(out, line);
        out += '\n';
    }
    return out;
}

} // namespace telv::test
