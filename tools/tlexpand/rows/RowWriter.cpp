// SPDX-License-Identifier: MIT
// The list `[a,]` has one element: an empty last one needs another comma behind it. A tuple is
// never empty text.
#include "rows/RowWriter.h"
#include <algorithm>
#include <limits>

namespace telv::tool
{

namespace
{

constexpr size_t s_notWanted = std::numeric_limits<size_t>::max();
/// Longer values are cut in messages.
constexpr ssize_t s_longestShown = 60;

std::string Shown(SubString value)
{
    if (value.size() <= s_longestShown)
        return ToStdString(value);
    return ToStdString(SubString(value.begin(), value.begin() + s_longestShown)) + "...";
}

/// Where in the file stands what is before `end`.
ssize_t OriginIn(const WrittenValue& value, size_t end)
{
    ssize_t origin = 0;
    for (const MadePlace& place : value.m_places)
        if (place.m_offset < static_cast<ssize_t>(end))
            origin = place.m_origin;
    return origin;
}

} // namespace

std::string CountedValues(size_t count)
{
    return std::to_string(count) + (count == 1 ? " value" : " values");
}

RowWriter::RowWriter(const std::vector<std::string>& columns, RowList& list)
    : m_wanted(columns), m_list(list), m_text("[")
{
    m_list.m_places.assign(1, MadePlace{0, 0});
}

void RowWriter::SetColumns(std::vector<std::string> names, ssize_t offset)
{
    m_names = std::move(names);
    m_targets.assign(m_names.size(), s_notWanted);
    std::vector<bool> isTwice(m_names.size());
    for (size_t i = 0; i < m_names.size(); ++i)
        if (const auto [known, isNew] = m_byName.emplace(m_names[i], i); !isNew)
            isTwice[known->second] = true;
    for (const std::string& name : m_wanted)
    {
        const auto found = m_byName.find(name);
        if (found == m_byName.end())
            throw RowError("There is no column '" + name + "'", offset);
        if (isTwice[found->second])
            throw RowError("There are several columns '" + name + "'", offset);
        if (m_targets[found->second] != s_notWanted)
            throw RowError("The column '" + name + "' is wanted twice", offset);
        m_targets[found->second] = m_sources.size();
        m_sources.push_back(found->second);
    }
    for (size_t i = 0; i < m_names.size() && WantsAll(); ++i)
    {
        m_targets[i] = i;
        m_sources.push_back(i);
    }
    m_values.resize(m_sources.size());
}

void RowWriter::SetNamelessColumns(size_t count, ssize_t offset)
{
    if (!WantsAll())
        throw RowError("There is no column '" + m_wanted[0] + "': the rows are arrays", offset);
    SetColumns(std::vector<std::string>(count), offset);
    m_hasNames = false;
}

std::optional<size_t> RowWriter::FindColumn(std::string_view name, size_t guess) const
{
    if (guess < m_names.size() && m_names[guess] == name)
        return guess;
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? std::nullopt : std::optional(found->second);
}

std::string RowWriter::NameOf(size_t column) const
{
    return m_names[column].empty() ? std::to_string(column + 1) : "'" + m_names[column] + "'";
}

void RowWriter::CheckCount(size_t count, ssize_t offset) const
{
    if (count != ColumnCount())
        throw RowError("The row has " + CountedValues(count) + " instead of " +
                           std::to_string(ColumnCount()),
                       offset);
}

WrittenValue* RowWriter::AddValue(size_t column, ssize_t offset)
{
    if (m_targets[column] == s_notWanted)
        return nullptr;
    WrittenValue& value = m_values[m_targets[column]];
    if (value.m_isThere)
        throw RowError("The row has several values for column " + NameOf(column), offset);
    value.m_isThere = true;
    ++m_countInRow;
    return &value;
}

void RowWriter::EndRow(ssize_t offset)
{
    if (m_countInRow != m_values.size())
    {
        const auto missing = std::ranges::find(m_values, false, &WrittenValue::m_isThere);
        throw RowError("The row has " + CountedValues(m_countInRow) + " instead of " +
                           std::to_string(m_values.size()) + ": none for column " +
                           NameOf(m_sources[static_cast<size_t>(missing - m_values.begin())]),
                       offset);
    }
    AppendRow();
    for (WrittenValue& value : m_values)
    {
        value.m_text.clear();
        value.m_places.clear();
        value.m_openComment.reset();
        value.m_isThere = false;
    }
}

void RowWriter::AppendRow()
{
    if (m_hasRows)
        m_text += ',';
    m_hasRows = true;
    if (HasTuples())
        m_text += '(';
    for (size_t i = 0; i < m_values.size(); ++i)
    {
        if (i > 0)
            m_text += ',';
        AppendRowValue(m_values[i]);
    }
    if (HasTuples())
        m_text += ')';
    m_lastIsEmpty = !HasTuples() && m_values[0].m_text.empty();
}

void RowWriter::AppendRowValue(const WrittenValue& value)
{
    size_t searched = 0;
    if (!m_openComment && value.m_openComment)
    {
        searched = *value.m_openComment;
        m_openComment = OriginIn(value, searched);
    }
    if (m_openComment && value.m_text.find("*/", searched) != std::string::npos)
        throw RowError("The value can't be written in a list: a later one ends the comment that "
                       "it would begin",
                       *m_openComment);
    const auto begin = static_cast<ssize_t>(m_text.size());
    for (const MadePlace& place : value.m_places)
        m_list.m_places.push_back({begin + place.m_offset, place.m_origin});
    m_text += value.m_text;
}

void RowWriter::Finish()
{
    m_text += m_lastIsEmpty ? ",]" : "]";
    m_list.m_text = xstring(ViewOf(m_text));
}

void WriteValue(WrittenValue& written, SubString value, ValuePlace place, ssize_t origin)
{
    written.m_places.push_back({static_cast<ssize_t>(written.m_text.size()), origin});
    const ValueResult result = AppendValue(written.m_text, value, place);
    if (!written.m_openComment)
        written.m_openComment = result.m_openComment;
    if (result.m_isWritten)
        return;
    throw RowError("The value can't be written in a list, neither as it is nor between back "
                   "quotes: " +
                       Shown(value) + (result.m_reason.empty() ? "" : "\n    " + result.m_reason),
                   origin);
}

} // namespace telv::tool
