// SPDX-License-Identifier: MIT
// The parser tells what it reads, one thing at a time, and keeps its own list of what is open:
// depth costs no stack. It does not tell where; but it reads character by character, and between
// two things there is only white space, a comma or a colon.
//
// The text is read twice: up to the end of the first row, to know the columns, then as a whole.
#include "rows/JsonRows.h"
#include "Utf8.h"
#include "rows/TupleWriter.h"
#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace telv::tool
{

namespace
{

// The widest floating point type: a number that it can't hold is refused.
using Json = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t,
                                  std::uint64_t, long double>;

/// Reads characters and tells how far the reading has come.
class Cursor
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    Cursor(const char* pos, const char** reached) : m_pos(pos), m_reached(reached) {}
    reference operator*() const { return *m_pos; }
    Cursor& operator++()
    {
        *m_reached = ++m_pos;
        return *this;
    }
    Cursor operator++(int)
    {
        const Cursor before = *this;
        ++*this;
        return before;
    }
    bool operator==(const Cursor& other) const { return m_pos == other.m_pos; }

private:
    const char* m_pos;
    const char** m_reached;
};

/// What both readings have in common: where things are, and what is no JSON.
class JsonReader : public nlohmann::json_sax<Json>
{
public:
    explicit JsonReader(SubString text)
        : m_begin(text.begin()), m_end(text.end()), m_reached(text.begin()),
          m_last(WithoutByteOrderMark(text).begin())
    {
    }

    void Read() { Json::sax_parse(Cursor(m_begin, &m_reached), Cursor(m_end, &m_reached), this); }

    bool null() override { return Scalar(TakeWord(), SubString()); }
    bool boolean(bool) override { return Whole(TakeWord()); }
    bool number_integer(std::int64_t) override { return Whole(TakeWord()); }
    bool number_unsigned(std::uint64_t) override { return Whole(TakeWord()); }
    bool number_float(long double, const std::string&) override { return Whole(TakeWord()); }
    bool string(std::string& value) override { return Scalar(TakeString(), ViewOf(value)); }
    bool binary(Json::binary_t&) override { return true; } // not in text
    bool key(std::string& name) override { return Key(TakeString(), name); }
    bool start_object(std::size_t) override { return Open(TakeBracket(), /*isObject=*/true); }
    bool start_array(std::size_t) override { return Open(TakeBracket(), /*isObject=*/false); }
    bool end_object() override { return Close(TakeBracket()); }
    bool end_array() override { return Close(TakeBracket()); }
    [[noreturn]] bool parse_error(std::size_t position, const std::string& lastToken,
                                  const nlohmann::detail::exception& error) override;

protected:
    /// Each returns false to stop the reading.
    virtual bool Scalar(SubString source, SubString value) = 0;
    virtual bool Key(SubString source, const std::string& name) = 0;
    virtual bool Open(SubString bracket, bool isObject) = 0;
    virtual bool Close(SubString bracket) = 0;

    ssize_t Offset(SubString place) const { return place.begin() - m_begin; }

private:
    bool Whole(SubString source) { return Scalar(source, source); }
    SubString Take(const char* end);
    SubString TakeWord();
    SubString TakeString() { return Take(m_reached); }
    SubString TakeBracket();
    void SkipSeparators();

    const char* m_begin;
    const char* m_end;
    const char* m_reached; ///< By the parser, which may look at one character more.
    const char* m_last;    ///< Behind what was told last.
};

void JsonReader::SkipSeparators()
{
    while (m_last != m_end && *m_last != '\0' && std::strchr(" \t\r\n,:", *m_last) != nullptr)
        ++m_last;
}

SubString JsonReader::Take(const char* end)
{
    SkipSeparators();
    const SubString taken(m_last, end);
    m_last = end;
    return taken;
}

/// A number or one of the three words.
SubString JsonReader::TakeWord()
{
    SkipSeparators();
    const char* end = m_last;
    while (end != m_end && *end != '\0' && std::strchr(" \t\r\n,:]}", *end) == nullptr)
        ++end;
    return Take(end);
}

SubString JsonReader::TakeBracket()
{
    SkipSeparators();
    return Take(m_last + 1);
}

/// The message of the exception without the parser's own way of telling the place.
bool JsonReader::parse_error(std::size_t position, const std::string& /*lastToken*/,
                             const nlohmann::detail::exception& error)
{
    std::string message = error.what();
    for (const char* const behind : {"] ", ": "})
        if (const size_t found = message.find(behind); found != std::string::npos)
            message.erase(0, found + std::strlen(behind));
    const auto size = static_cast<size_t>(m_end - m_begin);
    const size_t offset = std::min(position == 0 ? 0 : position - 1, size);
    throw RowError("Bad JSON: " + message, static_cast<ssize_t>(offset));
}

/// Learns the columns from the first row.
class ColumnReader final : public JsonReader
{
public:
    ColumnReader(SubString text, RowWriter& writer) : JsonReader(text), m_writer(writer) {}

private:
    bool Scalar(SubString source, SubString value) override;
    bool Key(SubString source, const std::string& name) override;
    bool Open(SubString bracket, bool isObject) override;
    bool Close(SubString bracket) override;
    void CountValue(SubString source);

    RowWriter& m_writer;
    size_t m_depth = 0;
    size_t m_count = 0;
    bool m_isObject = false;
    ssize_t m_row = 0;
    std::vector<std::string> m_names;
    std::set<std::string, std::less<>> m_known; ///< The same names.
    bool m_isRepeated = false;                  ///< The last one of them.
};

constexpr const char* s_wanted = "An array of objects or of arrays is wanted";

bool ColumnReader::Scalar(SubString source, SubString)
{
    if (m_depth < 2)
        throw RowError(s_wanted, Offset(source));
    CountValue(source);
    return true;
}

/// Of a column that is not wanted there may be several values, as in any other row; one that is
/// wanted by its name is looked up by the writer.
void ColumnReader::CountValue(SubString source)
{
    if (m_depth != 2)
        return;
    ++m_count;
    if (m_isRepeated && m_writer.WantsAll())
        throw RowError("The row has several values for column '" + m_names.back() + "'",
                       Offset(source));
}

bool ColumnReader::Key(SubString, const std::string& name)
{
    if (m_depth != 2)
        return true;
    m_isRepeated = !m_known.insert(name).second;
    m_names.push_back(name);
    return true;
}

bool ColumnReader::Open(SubString bracket, bool isObject)
{
    if (m_depth == 0 && isObject)
        throw RowError(s_wanted, Offset(bracket));
    CountValue(bracket);
    if (++m_depth == 2)
    {
        m_isObject = isObject;
        m_row = Offset(bracket);
    }
    return true;
}

bool ColumnReader::Close(SubString)
{
    --m_depth;
    if (m_depth == 0) // There are no rows, so nothing can be wrong with their columns.
        return false;
    if (m_depth > 1)
        return true;
    if (m_count == 0)
        throw RowError("The first row has no values", m_row);
    if (m_isObject)
        m_writer.SetColumns(std::move(m_names), m_row);
    else
        m_writer.SetNamelessColumns(m_count, m_row);
    return false;
}

/// Writes the rows.
class RowReader final : public JsonReader
{
public:
    RowReader(SubString text, RowWriter& writer)
        : JsonReader(text), m_writer(writer), m_columnShapes(writer.ColumnCount())
    {
    }

private:
    /// An array or object within a value.
    struct Group
    {
        bool m_isObject;
        ObjectShape* m_shape;               ///< Of what stands in it; null: written nowhere.
        std::optional<TupleWriter> m_tuple; ///< Of an object that is written.
        bool m_isFirst = true;
        size_t m_begin = 0; ///< Of the last value of an array in the text.
    };

    bool Scalar(SubString source, SubString value) override;
    bool Key(SubString source, const std::string& name) override;
    bool Open(SubString bracket, bool isObject) override;
    bool Close(SubString bracket) override;
    bool IsBetweenRows() const { return m_depth < 2; }
    void OpenRow(SubString bracket, bool isObject);
    void CloseRow();
    void OpenGroup(SubString bracket, bool isObject);
    void CloseGroup();
    void BeginValue(SubString source);
    ValuePlace Place() const;

    RowWriter& m_writer;
    size_t m_depth = 0; ///< 1 between rows, 2 in one; groups are not counted.
    bool m_isObject = false;
    ssize_t m_row = 0;
    size_t m_column = 0;             ///< The next one of the row.
    WrittenValue* m_value = nullptr; ///< Where values go now; null: nowhere.
    ObjectShape** m_shape =
        nullptr; ///< The link to that of the value at hand, if it goes anywhere.
    ObjectShapes m_shapes;
    std::vector<ObjectShape*> m_columnShapes;
    std::vector<Group> m_groups;
    size_t m_lists = 0; ///< Groups that are arrays.
    size_t m_tuples = 0;
};

bool RowReader::Scalar(SubString source, SubString value)
{
    if (IsBetweenRows())
        throw RowError(s_wanted, Offset(source));
    BeginValue(source);
    if (m_value != nullptr)
        WriteValue(*m_value, value, Place(), Offset(source));
    return true;
}

bool RowReader::Key(SubString source, const std::string& name)
{
    if (!m_groups.empty())
    {
        if (auto& tuple = m_groups.back().m_tuple)
        {
            m_value = &tuple->Begin(name, Offset(source));
            m_shape = &tuple->MemberShape();
        }
        return true;
    }
    const auto column = m_writer.FindColumn(name, m_column);
    if (!column && m_writer.WantsAll())
        throw RowError("The first row has no column '" + name + "'", Offset(source));
    m_column = column.value_or(m_writer.ColumnCount());
    return true;
}

bool RowReader::Open(SubString bracket, bool isObject)
{
    if (m_depth == 0)
        ++m_depth;
    else if (m_depth == 1)
        OpenRow(bracket, isObject);
    else
        OpenGroup(bracket, isObject);
    return true;
}

bool RowReader::Close(SubString)
{
    if (!m_groups.empty())
        CloseGroup();
    else if (m_depth-- == 2)
        CloseRow();
    return true;
}

void RowReader::OpenRow(SubString bracket, bool isObject)
{
    ++m_depth;
    if (m_writer.HasNames() != isObject)
        throw RowError(isObject ? "An array is wanted, as the first row"
                                : "An object is wanted, as the first row",
                       Offset(bracket));
    m_isObject = isObject;
    m_row = Offset(bracket);
    m_column = 0;
    m_writer.BeginRow();
}

void RowReader::CloseRow()
{
    if (!m_isObject)
        m_writer.CheckCount(m_column, m_row);
    m_writer.EndRow(m_row);
}

/// Finds out where the next value goes.
void RowReader::BeginValue(SubString source)
{
    if (!m_groups.empty())
    {
        Group& group = m_groups.back();
        if (m_value == nullptr || group.m_isObject)
            return;
        if (!std::exchange(group.m_isFirst, false))
            m_value->m_text += ',';
        group.m_begin = m_value->m_text.size();
        m_shape = &group.m_shape->m_element;
        return;
    }
    const bool isKnown = m_column < m_writer.ColumnCount();
    m_value = isKnown ? m_writer.AddValue(m_column, Offset(source)) : nullptr;
    m_shape = isKnown ? &m_columnShapes[m_column] : nullptr;
    ++m_column;
}

void RowReader::OpenGroup(SubString bracket, bool isObject)
{
    BeginValue(bracket);
    Group group{isObject, m_value == nullptr ? nullptr : &m_shapes.At(*m_shape), std::nullopt};
    if (m_value != nullptr && isObject)
        group.m_tuple.emplace(*group.m_shape, *m_value, Offset(bracket));
    else if (m_value != nullptr)
    {
        m_value->m_places.push_back(
            {static_cast<ssize_t>(m_value->m_text.size()), Offset(bracket)});
        m_value->m_text += '[';
    }
    m_groups.push_back(std::move(group));
    ++(isObject ? m_tuples : m_lists);
}

void RowReader::CloseGroup()
{
    Group group = std::move(m_groups.back());
    m_groups.pop_back();
    --(group.m_isObject ? m_tuples : m_lists);
    if (group.m_tuple)
    {
        group.m_tuple->End();
        m_value = &group.m_tuple->Target();
    }
    if (m_value == nullptr || group.m_isObject)
        return;
    std::string& text = m_value->m_text;
    // As at the end of the whole list.
    const bool lastIsEmpty = !group.m_isFirst && group.m_begin == text.size();
    text += lastIsEmpty ? ",]" : "]";
}

ValuePlace RowReader::Place() const
{
    ValuePlace place = m_writer.PlaceOfValue();
    if (!m_groups.empty())
        place.m_isInTuple = m_groups.back().m_isObject;
    place.m_isInParentheses = place.m_isInParentheses || m_tuples > 0;
    place.m_isInSquares = m_lists > 0;
    return place;
}

} // namespace

void ReadJsonRows(SubString text, RowWriter& writer)
{
    ColumnReader(text, writer).Read();
    RowReader(text, writer).Read();
}

} // namespace telv::tool
