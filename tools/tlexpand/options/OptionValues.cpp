// SPDX-License-Identifier: MIT
// Numbers are read with from_chars: digits only, and what does not fit is refused.
#include "options/OptionValues.h"
#include "Files.h"
#include "WarningNames.h"
#include <charconv>
#include <limits>
#include <utility>

namespace telv::tool
{

namespace
{

constexpr ssize_t s_largestIndent = 1'000'000;
constexpr ssize_t s_largest = std::numeric_limits<ssize_t>::max();

[[noreturn]] void ThrowBadValue(const char* option, const std::string& text,
                                const std::string& wanted)
{
    throw UsageError(std::string("bad value '") + text + "' for " + option + ": " + wanted);
}

/// Reads digits at the start of the text; returns where they end, or null when they are none or
/// too many.
const char* ReadDigits(const std::string& text, ssize_t& value)
{
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    const bool isNumber = error == std::errc() && value >= 0 && text.front() != '-';
    return isNumber ? stop : nullptr;
}

ssize_t ParseNumber(const char* option, const std::string& text, ssize_t least, ssize_t most,
                    const char* wanted)
{
    ssize_t number = 0;
    if (ReadDigits(text, number) != text.data() + text.size() || number < least || number > most)
        ThrowBadValue(option, text, wanted);
    return number;
}

bool IsIdentifier(const std::string& text)
{
    SubString rest = ViewOf(text);
    return ScanIdentifier(rest) && rest.empty();
}

/// What stands before the '=', an identifier, and behind it.
std::pair<std::string, std::string> SplitDefinition(const char* option, const std::string& text,
                                                    const char* wanted)
{
    const size_t equals = text.find('=');
    if (equals == std::string::npos)
        ThrowBadValue(option, text, wanted);
    const std::string name = text.substr(0, equals);
    if (!IsIdentifier(name))
        ThrowBadValue(option, text, "the name before '=' must be an identifier");
    return {name, text.substr(equals + 1)};
}

/// Where the name of the data file ends that `text` begins with: at its end or before a colon.
/// npos when there is no such name.
size_t FindEndOfDataFile(const std::string& text, bool& isJson)
{
    for (size_t end = text.find(':');; end = text.find(':', end + 1))
    {
        const std::string file = text.substr(0, end);
        isJson = file.ends_with(".json");
        if (isJson || file.ends_with(".csv"))
            return file.size();
        if (end == std::string::npos)
            return end;
    }
}

std::vector<std::string> SplitAtCommas(const std::string& text)
{
    std::vector<std::string> parts;
    size_t begin = 0;
    for (size_t end = 0; end != std::string::npos; begin = end + 1)
    {
        end = text.find(',', begin);
        parts.push_back(text.substr(begin, end - begin));
    }
    return parts;
}

} // namespace

Definition ParseDefinition(const char* option, const std::string& text)
{
    const auto [name, value] = SplitDefinition(option, text, "NAME=VALUE is wanted");
    return {Definition::EKind::DollarMacro, name, value};
}

Definition ParseList(const char* option, const std::string& text)
{
    const auto [name, file] = SplitDefinition(option, text, "NAME=FILE[:COLUMNS] is wanted");
    Definition list = {Definition::EKind::List, name, ""};
    const size_t end = FindEndOfDataFile(file, list.m_rows.m_isJson);
    if (end == std::string::npos)
        ThrowBadValue(option, text, "the name of a .csv or .json file is wanted behind '='");
    list.m_rows.m_file = file.substr(0, end);
    if (end < file.size())
        list.m_rows.m_columns = SplitAtCommas(file.substr(end + 1));
    for (const std::string& column : list.m_rows.m_columns)
        if (column.empty())
            ThrowBadValue(option, text, "the name of a column is empty");
    return list;
}

Definition ParseEvaluatedText(const char* /*option*/, const std::string& text)
{
    return {Definition::EKind::Text, "", text};
}

std::string ParseAnyText(const char* /*option*/, const std::string& text)
{
    return text;
}

std::string ParseIdentifier(const char* option, const std::string& text)
{
    if (!IsIdentifier(text))
        ThrowBadValue(option, text, "an identifier is wanted");
    return text;
}

std::string ParseFileName(const char* option, const std::string& text)
{
    if (text.empty())
        ThrowBadValue(option, text, "the name of a file is wanted");
    return text;
}

std::string ParseAbsolutePath(const char* option, const std::string& text)
{
    return AbsolutePath(ParseFileName(option, text));
}

ssize_t ParseIndent(const char* option, const std::string& text)
{
    return ParseNumber(option, text, 0, s_largestIndent,
                       "a number of columns from 0 to 1000000 is wanted");
}

ssize_t ParseCount(const char* option, const std::string& text)
{
    return ParseNumber(option, text, 0, s_largest, "a number of 0 or more is wanted");
}

ssize_t ParsePositiveCount(const char* option, const std::string& text)
{
    return ParseNumber(option, text, 1, s_largest, "a number of 1 or more is wanted");
}

ssize_t ParseSize(const char* option, const std::string& text)
{
    static const std::string s_units = "KMG";
    const char* const wanted = "a number of bytes is wanted, or of K, M or G";
    ssize_t size = 0;
    const char* const stop = ReadDigits(text, size);
    if (stop == nullptr)
        ThrowBadValue(option, text, wanted);
    const std::string unit(stop, text.data() + text.size());
    if (unit.empty())
        return size;
    const size_t power = unit.size() == 1 ? s_units.find(unit) : std::string::npos;
    if (power == std::string::npos)
        ThrowBadValue(option, text, wanted);
    const auto shift = static_cast<int>(10 * (power + 1));
    if (size > (ExpansionLimits::s_none >> shift))
        ThrowBadValue(option, text, wanted);
    return size << shift;
}

std::string ParseLineFormat(const char* option, const std::string& text)
{
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '\n')
            ThrowBadValue(option, text, "one line is wanted");
        if (text[i] != '%')
            continue;
        ++i;
        if (i == text.size() || (text[i] != 'l' && text[i] != 'f' && text[i] != '%'))
            ThrowBadValue(option, text, "behind '%' stands 'l', the line, 'f', the file, or '%'");
    }
    if (text.empty())
        ThrowBadValue(option, text, "a text is wanted");
    return text;
}

unsigned ParseWarnings(const char* option, const std::string& text)
{
    unsigned warnings = WARN_NONE;
    for (const std::string& name : SplitAtCommas(text))
    {
        if (name == "all")
            warnings = WARN_ALL;
        else if (name == "none")
            warnings = WARN_NONE;
        else if (const EWarning kind = FindWarning(name); kind != WARN_NONE)
            warnings |= kind;
        else
            ThrowBadValue(option, text,
                          "all, none or names out of " + NamesOfWarnings() + " are wanted");
    }
    return warnings;
}

Colour ParseColour(const char* option, const std::string& text)
{
    if (text == "auto")
        return Colour::Auto;
    if (text == "always")
        return Colour::Always;
    if (text == "never")
        return Colour::Never;
    ThrowBadValue(option, text, "auto, always or never is wanted");
}

} // namespace telv::tool
