// SPDX-License-Identifier: MIT
// Numbers are rarer than names: each one is looked at for what stands around it.
#include "remap/PlaceScan.h"
#include "remap/FileUri.h"
#include <algorithm>
#include <charconv>
#include <cstring>

namespace telv::tool
{

namespace
{

const std::string s_pythonLine = "\", line ";

/// The number at `pos`, which moves behind it; nothing when there is none.
std::optional<ssize_t> ReadNumber(const std::string& line, size_t& pos)
{
    ssize_t number = 0;
    const char* const begin = line.data() + pos;
    if (pos >= line.size() || *begin < '0' || *begin > '9')
        return std::nullopt;
    const auto [stop, error] = std::from_chars(begin, line.data() + line.size(), number);
    if (error != std::errc())
        return std::nullopt;
    pos = static_cast<size_t>(stop - line.data());
    return number;
}

/// Whether more numbers follow a place, as in "3.18-20", "3-5" and "3,18": with them it means
/// something else, of which a part must not be rewritten alone.
bool IsContinued(const std::string& line, size_t end)
{
    return end + 1 < line.size() && std::string(".,-+~/:").find(line[end]) != std::string::npos &&
           '0' <= line[end + 1] && line[end + 1] <= '9';
}

/// ":LINE" or ":LINE:COLUMN" at `pos`.
std::optional<PlaceInLine> ReadColons(const std::string& line, size_t pos)
{
    PlaceInLine place;
    place.m_nameEnd = pos++;
    const auto number = ReadNumber(line, pos);
    if (!number)
        return std::nullopt;
    place.m_line = *number;
    place.m_end = pos;
    if (pos < line.size() && line[pos] == ':')
    {
        ++pos;
        place.m_column = ReadNumber(line, pos);
        if (place.m_column)
            place.m_end = pos;
    }
    if (IsContinued(line, place.m_end))
        return std::nullopt;
    return place;
}

/// "(LINE)" or "(LINE,COLUMN)" at `pos`.
std::optional<PlaceInLine> ReadBrackets(const std::string& line, size_t pos)
{
    PlaceInLine place;
    place.m_form = EPlaceForm::Brackets;
    place.m_nameEnd = pos++;
    const auto number = ReadNumber(line, pos);
    if (!number)
        return std::nullopt;
    place.m_line = *number;
    if (pos < line.size() && line[pos] == ',')
    {
        ++pos;
        place.m_column = ReadNumber(line, pos);
    }
    if (pos >= line.size() || line[pos] != ')')
        return std::nullopt;
    place.m_end = pos + 1;
    return place;
}

/// `", line LINE` at `pos`.
std::optional<PlaceInLine> ReadPython(const std::string& line, size_t pos)
{
    if (line.compare(pos, s_pythonLine.size(), s_pythonLine) != 0)
        return std::nullopt;
    PlaceInLine place;
    place.m_form = EPlaceForm::Python;
    place.m_nameEnd = pos;
    pos += s_pythonLine.size();
    const auto number = ReadNumber(line, pos);
    if (!number)
        return std::nullopt;
    place.m_line = *number;
    place.m_end = pos;
    return place;
}

std::optional<PlaceInLine> ReadPlaceEnd(const std::string& line, size_t pos)
{
    switch (line[pos])
    {
    case ':':
        return ReadColons(line, pos);
    case '(':
        return ReadBrackets(line, pos);
    case '"':
        return ReadPython(line, pos);
    default:
        return std::nullopt;
    }
}

/// Whether a word can begin at `pos`: at the beginning, behind a blank, a quote or bracket, or
/// behind an escape sequence of a terminal.
bool CanBeginWord(const std::string& line, size_t pos, size_t from)
{
    if (pos == from)
        return true;
    const char before = line[pos - 1];
    if (std::string(" \t\"'`(<[,=").find(before) != std::string::npos)
        return true;
    if (before != 'm' && before != 'K')
        return false;
    constexpr size_t longest = 12;
    const size_t tailBegin = pos - std::min(pos, longest);
    const std::string tail = line.substr(tailBegin, pos - 1 - tailBegin);
    const size_t escape = tail.rfind('\x1b');
    return escape != std::string::npos &&
           tail.find_first_not_of("[0123456789;", escape + 1) == std::string::npos;
}

/// Whether a name can begin at `pos`: as a word, or behind "file://".
bool CanBegin(const std::string& line, size_t pos, size_t from)
{
    return CanBeginWord(line, pos, from) ||
           (IsInUri(line, pos) && CanBeginWord(line, pos - std::strlen(s_fileScheme), from));
}

/// Blanks and the like in one path; in a line with more of them no path is looked for further back.
constexpr size_t s_mostBeginnings = 8;
constexpr size_t s_longestPath = 4096;

/// Where a path can begin that ends at `end`, from the farthest on; its last part begins at `last`.
std::vector<size_t> BeginningsOf(const std::string& line, size_t from, size_t last, size_t end)
{
    std::vector<size_t> beginnings;
    const bool hasDirectory = last > from && (line[last - 1] == '/' || line[last - 1] == '\\');
    const size_t farthest =
        hasDirectory ? std::max(from, end - std::min(end, s_longestPath)) : last;
    for (size_t begin = last + 1; begin-- > farthest && beginnings.size() < s_mostBeginnings;)
        if (CanBegin(line, begin, from))
            beginnings.push_back(begin);
    std::reverse(beginnings.begin(), beginnings.end());
    return beginnings;
}

/// Where the known path begins that ends at `end`.
std::optional<size_t> FindPath(const std::string& line, size_t from, size_t end,
                               const KnownFiles& files)
{
    for (const std::string& name : files.m_lastParts)
    {
        if (end - from < name.size() || line.compare(end - name.size(), name.size(), name) != 0)
            continue;
        for (const size_t begin : BeginningsOf(line, from, end - name.size(), end))
            if (files.m_isKnown(line.substr(begin, end - begin)))
                return begin;
    }
    // Any other name can be that of a link.
    size_t begin = end;
    while (begin > from && !CanBegin(line, begin, from))
        --begin;
    const bool isLink = begin < end && files.m_isKnown(line.substr(begin, end - begin));
    return isLink ? std::optional(begin) : std::nullopt;
}

} // namespace

bool IsInUri(const std::string& line, size_t pos)
{
    const size_t length = std::strlen(s_fileScheme);
    return pos >= length && line[pos] == '/' &&
           line.compare(pos - length, length, s_fileScheme) == 0;
}

std::optional<PlaceInLine> FindPlace(const std::string& line, size_t from, const KnownFiles& files)
{
    for (size_t pos = from; pos < line.size(); ++pos)
    {
        auto place = ReadPlaceEnd(line, pos);
        if (!place)
            continue;
        if (const auto begin = FindPath(line, from, pos, files))
        {
            place->m_begin = *begin;
            return place;
        }
    }
    return std::nullopt;
}

std::string WritePlace(EPlaceForm form, const std::string& path, ssize_t line,
                       std::optional<ssize_t> column)
{
    const std::string number = std::to_string(line);
    switch (form)
    {
    case EPlaceForm::Brackets:
        return path + "(" + number + (column ? "," + std::to_string(*column) : "") + ")";
    case EPlaceForm::Python:
        return path + s_pythonLine + number;
    case EPlaceForm::Colons:
        break;
    }
    return path + ":" + number + (column ? ":" + std::to_string(*column) : "");
}

} // namespace telv::tool
