// SPDX-License-Identifier: MIT
// Puts rows together: chooses and orders their columns, and writes their values as a list.
//
// A reader says what the file holds, in its order; a row is written when it is complete.
#pragma once

#include "rows/RowList.h"
#include "rows/ValueText.h"
#include <string_view>
#include <unordered_map>

namespace telv::tool
{

/// A value as it is written, with the places of what it holds.
struct WrittenValue
{
    std::string m_text;
    std::vector<MadePlace> m_places;
    std::optional<size_t> m_openComment; ///< Behind the first sign that a later value could end.
    bool m_isThere = false;
};

class RowWriter
{
public:
    /// Both must outlive this; `list.m_fileText` is there, the rest of `list` is written here.
    RowWriter(const std::vector<std::string>& columns, RowList& list);

    /// Names the columns of the file. To be called first, once.
    ///
    /// @throws RowError  A column is wanted that is not there, or is there twice: at `offset`.
    void SetColumns(std::vector<std::string> names, ssize_t offset);
    /// The same for `count` columns without names.
    void SetNamelessColumns(size_t count, ssize_t offset);

    /// The index of a column of the file by its name, most likely `guess`; nothing for one that the
    /// file did not begin with.
    std::optional<size_t> FindColumn(std::string_view name, size_t guess) const;
    size_t ColumnCount() const { return m_targets.size(); }
    bool HasNames() const { return m_hasNames; }
    /// Whether all columns are wanted, as they are.
    bool WantsAll() const { return m_wanted.empty(); }
    /// Rows are tuples; else each is its only value.
    bool HasTuples() const { return m_values.size() != 1; }
    /// How a value of a row stands in the list.
    ValuePlace PlaceOfValue() const { return {HasTuples(), HasTuples(), false}; }

    /// @throws RowError  A row, at `offset`, has another number of values than the file has
    /// columns.
    void CheckCount(size_t count, ssize_t offset) const;

    void BeginRow() { m_countInRow = 0; }
    /// Where the value of a column of this row is to be put; null when the column is not wanted.
    ///
    /// @throws RowError  The row has it already.
    WrittenValue* AddValue(size_t column, ssize_t offset);
    /// @throws RowError  A wanted value is not there: at `offset`.
    void EndRow(ssize_t offset);

    /// Ends the list.
    void Finish();

private:
    void AppendRow();
    void AppendRowValue(const WrittenValue& value);
    std::string NameOf(size_t column) const;

    const std::vector<std::string>& m_wanted;
    RowList& m_list;
    std::string m_text;
    std::vector<std::string> m_names;
    std::unordered_map<std::string_view, size_t> m_byName; ///< Views `m_names`.
    std::vector<size_t> m_targets;      ///< Of each column of the file, in `m_values`.
    std::vector<WrittenValue> m_values; ///< Of the row, in the order of the list.
    std::vector<size_t> m_sources;      ///< The columns of `m_values`.
    size_t m_countInRow = 0;
    bool m_hasNames = true;
    bool m_hasRows = false;
    bool m_lastIsEmpty = false;           ///< The last row, of one column, is empty text.
    std::optional<ssize_t> m_openComment; ///< Of the value, in the file, that holds the first one.
};

/// "1 value", "2 values".
std::string CountedValues(size_t count);

/// Writes one value, or throws a RowError that shows it.
///
/// @param origin  Of the value in the file.
void WriteValue(WrittenValue& written, SubString value, ValuePlace place, ssize_t origin);

} // namespace telv::tool
