// SPDX-License-Identifier: MIT
// The line is read by characters (a UTF-8 sequence, an ill-formed byte): once to count them, once
// to make what is shown and what stands under it. Lines can be as long as the text and have
// thousands of warnings, and memory may have run out, so only what is near the caret is looked at,
// and only what is shown is stored.
#include "report/Excerpt.h"
#include "CharacterWidth.h"
#include "Files.h"
#include "Utf8.h"
#include "report/InvisibleCharacters.h"
#include <algorithm>

namespace telv::tool
{

namespace
{

/// Longer lines are cut to this many characters on each side of the caret.
constexpr size_t s_longestLine = 500;
constexpr size_t s_sideOfCut = 200;
/// So many bytes on a side of the caret are more characters than fit in a line that is not cut.
constexpr ssize_t s_mostBytes = 4 * (s_longestLine + 2);

std::string Escape(SubString bytes)
{
    static const char s_digits[] = "0123456789abcdef";
    std::string escaped;
    for (const char c : bytes)
    {
        const auto byte = static_cast<unsigned char>(c);
        escaped += "\\x";
        escaped += s_digits[byte >> 4];
        escaped += s_digits[byte & 15];
    }
    return escaped;
}

/// What must not reach a terminal as it is: bytes that are no UTF-8, and characters that drive it
/// or can't be seen.
bool CanDriveTerminal(const Utf8Character& c)
{
    return !c.m_valid || IsInvisible(c.m_bytes);
}

struct Column
{
    std::string m_shown;
    std::string m_below;
};

Column MakeColumn(const Utf8Character& c, bool escape)
{
    if (*c.m_bytes.begin() == '\t')
        return {"\t", "\t"};
    if (!escape || !CanDriveTerminal(c))
        return {ToStdString(c.m_bytes), std::string(static_cast<size_t>(ColumnsOf(c)), ' ')};
    std::string shown = Escape(c.m_bytes);
    std::string below(shown.size(), ' ');
    return {std::move(shown), std::move(below)};
}

/// The characters of a line that are shown: [m_first, m_last) of those that are looked at.
struct ShownPart
{
    size_t m_first = 0;
    size_t m_last = 0;
    size_t m_caret = 0; ///< The character that the caret goes under.
    size_t m_count = 0; ///< Of those that are looked at.
};

ShownPart ChoosePart(SubString line, const char* pos)
{
    ShownPart part;
    for (; !line.empty(); ++part.m_count)
    {
        if (TakeUtf8Character(line).m_bytes.end() <= pos)
            ++part.m_caret;
    }
    part.m_last = part.m_count;
    if (part.m_count > s_longestLine)
    {
        part.m_first = part.m_caret > s_sideOfCut ? part.m_caret - s_sideOfCut : 0;
        part.m_last = std::min(part.m_count, part.m_caret + s_sideOfCut);
    }
    return part;
}

} // namespace

std::string MakeExcerpt(const Source& source, const char* pos, ExcerptStyle style)
{
    SubString line = source.LineAround(pos, s_mostBytes);
    const ShownPart part = ChoosePart(line, source.PlaceInFile(pos));
    std::string shown = part.m_first > 0 ? "..." : "";
    std::string below(shown.size(), ' ');
    for (size_t i = 0; i < part.m_last; ++i)
    {
        const Utf8Character c = TakeUtf8Character(line);
        if (i < part.m_first)
            continue;
        const Column column = MakeColumn(c, style.m_escape);
        shown += column.m_shown;
        if (i < part.m_caret)
            below += column.m_below;
    }
    if (part.m_last < part.m_count)
        shown += "...";

    const std::string number = std::to_string(source.Line(pos));
    const std::string caret = style.m_colour ? "\x1b[1;32m^\x1b[0m" : "^";
    return " " + number + " | " + shown + "\n" + std::string(number.size() + 2, ' ') + "| " +
           below + caret + "\n";
}

std::string EscapeForTerminal(SubString text)
{
    std::string escaped;
    while (!text.empty())
    {
        const Utf8Character c = TakeUtf8Character(text);
        const char first = *c.m_bytes.begin();
        const bool harmless = first == '\n' || first == '\t' || !CanDriveTerminal(c);
        escaped += harmless ? ToStdString(c.m_bytes) : Escape(c.m_bytes);
    }
    return escaped;
}

} // namespace telv::tool
