// The line is cut into characters first (a UTF-8 sequence, an ill-formed byte); what is shown and
// what stands under it are then made from the same list.
#include "Excerpt.h"
#include "Files.h"
#include "Utf8.h"
#include <vector>

namespace telv::tool
{

namespace
{

/// Longer lines are cut to this many characters on each side of the caret.
constexpr size_t s_longestLine = 500;
constexpr size_t s_sideOfCut = 200;

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

/// Escape characters, DEL, the control characters of Latin-1, and bytes that are no UTF-8.
bool CanDriveTerminal(const Utf8Character& c)
{
    if (!c.m_valid)
        return true;
    const auto first = static_cast<unsigned char>(*c.m_bytes.begin());
    if (c.m_bytes.size() == 1)
        return first < 0x20 || first == 0x7f;
    return c.m_bytes.size() == 2 && first == 0xc2 &&
           static_cast<unsigned char>(c.m_bytes.begin()[1]) < 0xa0;
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
        return {ToStdString(c.m_bytes), " "};
    std::string shown = Escape(c.m_bytes);
    std::string below(shown.size(), ' ');
    return {std::move(shown), std::move(below)};
}

/// A line as characters, and the index of the one that the caret goes under.
struct CutLine
{
    std::vector<Utf8Character> m_characters;
    size_t m_caret = 0;
};

CutLine CutIntoCharacters(SubString line, const char* pos)
{
    CutLine cut;
    while (!line.empty())
    {
        const Utf8Character c = TakeUtf8Character(line);
        if (c.m_bytes.end() <= pos)
            ++cut.m_caret;
        cut.m_characters.push_back(c);
    }
    return cut;
}

} // namespace

std::string MakeExcerpt(const Source& source, const char* pos, ExcerptStyle style)
{
    const CutLine line = CutIntoCharacters(source.LineText(pos), pos);
    const size_t count = line.m_characters.size();
    size_t first = 0;
    size_t last = count;
    if (count > s_longestLine)
    {
        first = line.m_caret > s_sideOfCut ? line.m_caret - s_sideOfCut : 0;
        last = std::min(count, line.m_caret + s_sideOfCut);
    }
    std::string shown = first > 0 ? "..." : "";
    std::string below(shown.size(), ' ');
    for (size_t i = first; i < last; ++i)
    {
        const Column column = MakeColumn(line.m_characters[i], style.m_escape);
        shown += column.m_shown;
        if (i < line.m_caret)
            below += column.m_below;
    }
    if (last < count)
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
