// SPDX-License-Identifier: MIT
// "mappings" holds, for each line of output, the segments that begin on it. A segment is four
// numbers, each the difference to the one before, in base 64 with the sign in the lowest bit:
// output column, source, source line, source column. A segment of one number begins what has no
// source.
#include "output/SourceMapWriter.h"
#include "Files.h"
#include "Utf8.h"
#include "map/LineTable.h"
#include "output/JsonText.h"
#include <memory>

namespace telv::tool
{

namespace
{

void AppendVlq(std::string& text, ssize_t value)
{
    static constexpr char s_digits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    auto bits = static_cast<size_t>(value < 0 ? -value : value) << 1 | (value < 0 ? 1u : 0u);
    do
    {
        const size_t digit = bits & 31;
        bits >>= 5;
        text += s_digits[digit | (bits != 0 ? 32u : 0u)];
    } while (bits != 0);
}

/// Lines and UTF-16 columns of one source.
struct SourcePositions
{
    explicit SourcePositions(SubString text) : m_lines(text), m_units(text) {}

    LineTable m_lines;
    Utf16Counter m_units;
};

class MappingsWriter
{
public:
    MappingsWriter(ByteSink& sink, const WrittenOutput& output) : m_sink(sink), m_output(output)
    {
        m_positions.resize(output.m_sources.Count());
    }

    void Write(const WrittenPiece& written);
    void Flush()
    {
        m_sink.Write(m_text);
        m_text.clear();
    }

private:
    void AddSegment(const MapPiece& piece, ssize_t offset);
    void AddDelta(ssize_t value, ssize_t& last)
    {
        AppendVlq(m_text, value - last);
        last = value;
    }
    void Advance(SubString text);
    const SourcePositions& PositionsOf(size_t source);

    ByteSink& m_sink;
    const WrittenOutput& m_output;
    std::vector<std::unique_ptr<SourcePositions>> m_positions;
    std::string m_text;
    ssize_t m_column = 0;      ///< Of the output, in units.
    bool m_lineIsEmpty = true; ///< Of segments.
    bool m_lastIsMapped = false;
    ssize_t m_lastColumn = 0, m_lastSource = 0, m_lastSourceLine = 0, m_lastSourceColumn = 0;
};

const SourcePositions& MappingsWriter::PositionsOf(size_t source)
{
    auto& positions = m_positions[source];
    if (!positions)
        positions = std::make_unique<SourcePositions>(m_output.m_sources[source].File());
    return *positions;
}

void MappingsWriter::AddSegment(const MapPiece& piece, ssize_t offset)
{
    const std::optional<Origin> origin = OriginIn(piece, offset);
    if (!origin && (m_lineIsEmpty || !m_lastIsMapped))
        return; // Nothing is mapped there anyway.
    if (!m_lineIsEmpty)
        m_text += ',';
    AddDelta(m_column, m_lastColumn);
    m_lineIsEmpty = false;
    m_lastIsMapped = origin.has_value();
    if (!origin)
        return;
    const SourcePositions& positions = PositionsOf(origin->m_source);
    const ssize_t line = positions.m_lines.At(origin->m_offset).m_line;
    const ssize_t start =
        line <= positions.m_lines.Count() ? positions.m_lines.Start(line) : origin->m_offset;
    AddDelta(static_cast<ssize_t>(origin->m_source), m_lastSource);
    AddDelta(line - 1, m_lastSourceLine);
    AddDelta(positions.m_units.Before(origin->m_offset) - positions.m_units.Before(start),
             m_lastSourceColumn);
}

/// Goes over text that has no line feed but at its end.
void MappingsWriter::Advance(SubString text)
{
    while (!text.empty())
    {
        const Utf8Character c = TakeUtf8Character(text);
        m_column += c.m_valid && c.m_bytes.size() == 4 ? 2 : 1;
        if (*c.m_bytes.begin() != '\n')
            continue;
        m_text += ';';
        m_column = m_lastColumn = 0;
        m_lineIsEmpty = true;
    }
}

void MappingsWriter::Write(const WrittenPiece& written)
{
    SubString rest = written.m_text;
    while (!rest.empty())
    {
        const char* p = rest.begin();
        while (p != rest.end() && *p != '\n')
            ++p;
        if (p != rest.end())
            ++p;
        AddSegment(written.m_piece, rest.begin() - written.m_text.begin());
        Advance(SubString(rest.begin(), p));
        rest = SubString(p, rest.end());
    }
    constexpr size_t s_enough = size_t{64} * 1024;
    if (m_text.size() > s_enough)
        Flush();
}

/// The shortest way to a source. Names in angle brackets are no files, and absolute ones lie
/// nowhere else.
std::string PathFromMap(const std::string& name, const SourceMapStyle& style)
{
    const bool isFixed = name.starts_with('<') || name.starts_with('/');
    if (isFixed || style.m_mapDirectory.empty())
        return name;
    return RelativePath(style.m_mapDirectory, JoinPath(style.m_startDirectory, name));
}

} // namespace

void WriteSourceMap(ByteSink& sink, const WrittenOutput& output, const SourceMapStyle& style)
{
    sink.Write("{\"version\":3");
    if (style.m_file)
        sink.Write(",\n \"file\":" + JsonString(ViewOf(*style.m_file)));
    std::string names;
    std::string contents;
    for (size_t i = 0; i < output.m_sources.Count(); ++i)
    {
        const char* const comma = i == 0 ? "" : ",";
        const Source& source = output.m_sources[i];
        names += comma + JsonString(ViewOf(PathFromMap(source.Name(), style)));
        if (style.m_contents)
            contents += comma + JsonString(source.File());
    }
    sink.Write(",\n \"sources\":[" + names + "]");
    if (style.m_contents)
        sink.Write(",\n \"sourcesContent\":[" + contents + "]");
    sink.Write(",\n \"names\":[],\n \"mappings\":\"");
    MappingsWriter mappings(sink, output);
    ForEachWrittenPiece(output, [&](const WrittenPiece& piece) { mappings.Write(piece); });
    mappings.Flush();
    sink.Write("\"}\n");
}

} // namespace telv::tool
