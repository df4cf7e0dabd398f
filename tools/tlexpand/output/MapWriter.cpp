// The pieces are cut at the removed ranges, in one pass over both. What is left of a source piece
// keeps its own part of the source; what is left of a calculated one keeps the whole range.
#include "output/MapWriter.h"
#include "output/JsonText.h"

namespace telv::tool
{

namespace
{

/// Writes the pieces of one map, keeping count of the output.
class PieceWriter
{
public:
    PieceWriter(ByteSink& sink, const MappedOutput& output) : m_sink(sink), m_output(output) {}

    void WriteAll();

private:
    void WritePart(const OutputPiece& piece, ssize_t from, ssize_t to);
    void WriteSource(const OutputPiece& piece, SubString in);
    std::string Place(const Source& source, SubString in) const;

    ByteSink& m_sink;
    const MappedOutput& m_output;
    ssize_t m_written = 0;
    bool m_first = true;
};

void PieceWriter::WriteAll()
{
    auto removed = m_output.m_removed.begin();
    const auto lastRemoved = m_output.m_removed.end();
    ssize_t offset = 0;
    for (const OutputPiece& piece : m_output.m_pieces.m_pieces)
    {
        const ssize_t end = offset + piece.size();
        ssize_t from = offset;
        while (removed != lastRemoved && removed->m_begin < end)
        {
            if (removed->m_begin > from)
                WritePart(piece, from - offset, removed->m_begin - offset);
            from = std::max(from, std::min(removed->m_end, end));
            if (removed->m_end > end)
                break;
            ++removed;
        }
        if (from < end)
            WritePart(piece, from - offset, end - offset);
        offset = end;
    }
}

std::string PieceWriter::Place(const Source& source, SubString in) const
{
    return "\"source\":" + std::to_string(source.Index()) +
           ",\"in\":" + std::to_string(source.OffsetInFile(in.begin())) +
           ",\"inSize\":" + std::to_string(in.size());
}

void PieceWriter::WriteSource(const OutputPiece& piece, SubString in)
{
    const Source* const found = m_output.m_sources.Find(in.begin());
    if (found != nullptr && !found->IsMade())
        return m_sink.Write(Place(*found, in));
    m_sink.Write("\"source\":null,\"in\":null,\"inSize\":" + std::to_string(in.size()));
    if (found != nullptr) // Rows of data: the place in their file.
        return m_sink.Write(",\"from\":{" + Place(*found, SubString(in.begin(), in.begin())) + "}");
    SubString origin;
    if (piece.out != 0 || !m_output.m_run.FindOrigin(in.begin(), origin))
        return;
    if (const Source* source = m_output.m_sources.Find(origin.begin()))
        m_sink.Write(",\"from\":{" + Place(*source, origin) + "}");
}

/// Writes the characters [from, to) of the piece's output.
void PieceWriter::WritePart(const OutputPiece& piece, ssize_t from, ssize_t to)
{
    const bool isSource = piece.out == 0;
    const char* kind = "indentation";
    if (isSource)
        kind = "source";
    else if (piece.in.begin() != nullptr)
        kind = "calculated";
    m_sink.Write(std::string(m_first ? "\n" : ",\n") + "   {\"kind\":\"" + kind + "\",\"out\":" +
                 std::to_string(m_written) + ",\"size\":" + std::to_string(to - from) + ",");
    WriteSource(piece,
                isSource ? SubString(piece.in.begin() + from, piece.in.begin() + to) : piece.in);
    m_sink.Write("}");
    m_written += to - from;
    m_first = false;
}

} // namespace

void WriteMap(ByteSink& sink, const MappedOutput& output)
{
    sink.Write("{\"version\":1,\n \"sources\":[");
    for (size_t i = 0; i < output.m_sources.Count(); ++i)
    {
        sink.Write(i == 0 ? "" : ",");
        sink.Write(JsonString(ViewOf(output.m_sources[i].Name())));
    }
    ssize_t size = output.m_pieces.size();
    for (const OutputRange& range : output.m_removed)
        size -= range.m_end - range.m_begin;
    sink.Write("],\n \"size\":" + std::to_string(size) + ",\n \"pieces\":[");
    PieceWriter(sink, output).WriteAll();
    sink.Write("]}\n");
}

} // namespace telv::tool
