// Numbers are rarer than names: each one is looked at for what stands around it.
#include "remap/PlaceScan.h"
#include <charconv>

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

/// Whether a name can begin at `pos`: at the beginning, behind a blank, a quote or bracket, or behind
/// an escape sequence of a terminal.
bool CanBegin(const std::string& line, size_t pos, size_t from)
{
    if (pos == from)
        return true;
    const char before = line[pos - 1];
    if (std::string(" \t\"'`(<[,=").find(before) != std::string::npos)
        return true;
    const size_t escape = line.rfind('\x1b', pos);
    return (before == 'm' || before == 'K') && escape != std::string::npos && pos - escape < 12 &&
           line.find_first_not_of("[0123456789;", escape + 1) == pos - 1;
}

} // namespace

std::optional<PlaceInLine> FindPlace(const std::string& line, size_t from,
                                     const std::function<bool(const std::string&)>& isKnown)
{
    for (size_t pos = from; pos < line.size(); ++pos)
    {
        auto place = ReadPlaceEnd(line, pos);
        if (!place)
            continue;
        for (size_t begin = from; begin < pos; ++begin)
            if (CanBegin(line, begin, from) && isKnown(line.substr(begin, pos - begin)))
            {
                place->m_begin = begin;
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
