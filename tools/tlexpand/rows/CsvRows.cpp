// SPDX-License-Identifier: MIT
// libcsv calls back for each value and for each end of a line, but does not say where it is. The
// place is found again from what it says: a value that begins with a quote takes two quotes, and
// one more for each in it, besides its characters.
//
// No exception may pass through the library: one that a callback would throw is kept until it has
// returned, and the text is given to it in pieces so that it does so soon.
#include "rows/CsvRows.h"
#include "Utf8.h"
#include <algorithm>
#include <csv.h>
#include <exception>
#include <new>

namespace telv::tool
{

namespace
{

constexpr size_t s_pieceSize = size_t{64} * 1024;

class CsvReader
{
public:
    CsvReader(SubString text, RowWriter& writer);
    ~CsvReader() { csv_free(&m_parser); }
    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;

    void Read();

private:
    static void OnValue(void* value, size_t size, void* self);
    static void OnLineEnd(int c, void* self);
    template <class Step>
    void Guard(Step step) noexcept;

    void TakeValue(SubString value);
    void EndLine(bool atEnd);
    void EndRow();
    void AddValue(SubString value, ssize_t origin);
    [[noreturn]] void ThrowBadText(const char* at);
    /// Of the value that is being read: behind the comma.
    const char* ValueBegin() const { return m_pos + (m_count > 0 ? 1 : 0); }
    ssize_t Offset(const char* p) const { return p - m_begin; }

    RowWriter& m_writer;
    const char* m_begin;
    const char* m_end;
    const char* m_pos; ///< Behind what the library has told of.
    const char* m_row; ///< Where the row begins.
    csv_parser m_parser;
    std::exception_ptr m_error;
    std::vector<std::string> m_header;
    bool m_inHeader = true;
    size_t m_count = 0; ///< Of the values of this row.
};

CsvReader::CsvReader(SubString text, RowWriter& writer)
    : m_writer(writer), m_begin(text.begin()), m_end(text.end()),
      m_pos(WithoutByteOrderMark(text).begin()), m_row(m_pos)
{
    if (csv_init(&m_parser, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0)
        throw std::bad_alloc();
    csv_set_space_func(&m_parser, [](unsigned char) { return 0; }); // Blanks belong to values.
    csv_set_blk_size(&m_parser, s_pieceSize);
}

void CsvReader::Read()
{
    const char* p = m_pos;
    while (p != m_end)
    {
        const size_t size = std::min(s_pieceSize, static_cast<size_t>(m_end - p));
        const size_t read = csv_parse(&m_parser, p, size, OnValue, OnLineEnd, this);
        p += read;
        if (m_error)
            std::rethrow_exception(m_error);
        if (read != size)
            ThrowBadText(p);
    }
    const bool isEnded = csv_fini(&m_parser, OnValue, OnLineEnd, this) == 0;
    if (m_error)
        std::rethrow_exception(m_error);
    if (!isEnded)
        throw RowError("Met EOS within a value in quotes", Offset(ValueBegin()));
    if (m_inHeader)
        throw RowError("The row that names the columns is missing", 0);
}

void CsvReader::ThrowBadText(const char* at)
{
    if (csv_error(&m_parser) == CSV_ENOMEM)
        throw std::bad_alloc();
    const bool isBehind = *ValueBegin() == '"';
    throw RowError(isBehind ? "Comma or line end expected behind the closing quote of a value"
                            : "Quote within a value that does not begin with one",
                   Offset(at));
}

/// Keeps what `step` throws; nothing happens any more after that.
template <class Step>
void CsvReader::Guard(Step step) noexcept
try
{
    if (!m_error)
        step();
}
catch (...)
{
    m_error = std::current_exception();
}

void CsvReader::OnValue(void* value, size_t size, void* self)
{
    auto& reader = *static_cast<CsvReader*>(self);
    const auto* const begin = static_cast<const char*>(value);
    reader.Guard([&] { reader.TakeValue(SubString(begin, begin + size)); });
}

void CsvReader::OnLineEnd(int c, void* self)
{
    auto& reader = *static_cast<CsvReader*>(self);
    reader.Guard([&] { reader.EndLine(/*atEnd=*/c == -1); });
}

void CsvReader::TakeValue(SubString value)
{
    m_pos = ValueBegin();
    const ssize_t origin = Offset(m_pos);
    const bool isQuoted = m_pos != m_end && *m_pos == '"';
    m_pos += value.size();
    if (isQuoted)
        m_pos += 2 + std::count(value.begin(), value.end(), '"');
    AddValue(value, origin);
    ++m_count;
}

void CsvReader::AddValue(SubString value, ssize_t origin)
{
    for (SubString rest = value; !rest.empty();)
    {
        const bool isAscii = static_cast<unsigned char>(*rest) < 0x80;
        if (isAscii)
            ++rest;
        else if (!TakeUtf8Character(rest).m_valid)
            throw RowError("The value is no UTF-8", origin);
    }
    if (m_inHeader)
        return m_header.push_back(ToStdString(value));
    if (m_count >= m_writer.ColumnCount())
        return; // Counted; the row is refused at its end.
    if (WrittenValue* const written = m_writer.AddValue(m_count, origin))
        WriteValue(*written, value, m_writer.PlaceOfValue(), origin);
}

void CsvReader::EndLine(bool atEnd)
{
    const bool isSecondOfTwo =
        m_pos != m_begin && m_pos != m_end && *m_pos == '\n' && m_pos[-1] == '\r' && m_pos == m_row;
    if (!isSecondOfTwo && (m_count > 0 || !atEnd))
        EndRow();
    if (!atEnd)
        ++m_pos;
    m_row = m_pos;
}

void CsvReader::EndRow()
{
    if (m_count == 0 && !m_inHeader && m_writer.ColumnCount() == 1)
        TakeValue(SubString(m_pos, m_pos));
    if (m_count == 0)
        return;
    if (m_inHeader)
    {
        m_writer.SetColumns(std::move(m_header), Offset(m_row));
        m_inHeader = false;
    }
    else
    {
        m_writer.CheckCount(m_count, Offset(m_row));
        m_writer.EndRow(Offset(m_row));
    }
    m_count = 0;
    m_writer.BeginRow();
}

} // namespace

void ReadCsvRows(SubString text, RowWriter& writer)
{
    CsvReader(text, writer).Read();
}

} // namespace telv::tool
