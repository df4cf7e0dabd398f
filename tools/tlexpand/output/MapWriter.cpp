// SPDX-License-Identifier: MIT
// A piece waits until the next one is known: that may continue it.
#include "output/MapWriter.h"
#include "map/Checksum.h"
#include "output/JsonText.h"

namespace telv::tool
{

namespace
{

/// The members of a place, without braces.
std::string Place(const SourceRange& range)
{
    const std::string size = ",\"inSize\":" + std::to_string(range.m_inSize);
    if (!range.IsKnown())
        return "\"source\":null,\"in\":null" + size;
    return "\"source\":" + std::to_string(range.m_source) +
           ",\"in\":" + std::to_string(range.m_in) + size;
}

std::string JsonOf(const MapPiece& piece, bool withCopies)
{
    std::string json = std::string("{\"kind\":\"") + NameOf(piece.m_kind) +
                       "\",\"out\":" + std::to_string(piece.m_out) +
                       ",\"size\":" + std::to_string(piece.m_size) + "," + Place(piece.m_place);
    if (piece.m_from.IsKnown())
        json += ",\"from\":{" + Place(piece.m_from) + "}";
    if (withCopies && piece.m_copied.IsKnown())
        json += ",\"copied\":{" + Place(piece.m_copied) + "}";
    if (piece.m_chain != s_none)
        json += ",\"chain\":" + std::to_string(piece.m_chain);
    return json + "}";
}

std::string JsonOf(const MapChain& chain)
{
    std::string json = "{\"kind\":" + JsonString(ViewOf(chain.m_kind)) +
                       ",\"name\":" + JsonString(ViewOf(chain.m_name)) + "," + Place(chain.m_place);
    if (chain.m_round != s_none)
        json += ",\"round\":" + std::to_string(chain.m_round);
    return json +
           ",\"parent\":" + (chain.m_parent == s_none ? "null" : std::to_string(chain.m_parent)) +
           "}";
}

/// Passes the pieces of an output on, joined where that is wanted.
class PieceJoiner
{
public:
    PieceJoiner(bool join, std::function<void(const MapPiece&)> take)
        : m_join(join), m_take(std::move(take))
    {
    }

    void Add(const WrittenPiece& written)
    {
        if (m_pending && Continues(written))
        {
            m_pending->m_size += written.m_piece.m_size;
            m_pending->m_place.m_inSize += written.m_piece.m_place.m_inSize;
            m_pending->m_copied.m_inSize += written.m_piece.m_copied.m_inSize;
        }
        else
        {
            Finish();
            m_pending = written.m_piece;
        }
        m_inEnd = written.m_in.end();
    }

    void Finish()
    {
        if (m_pending)
            m_take(*m_pending);
        m_pending.reset();
    }

private:
    bool Continues(const WrittenPiece& written) const
    {
        const MapPiece& piece = written.m_piece;
        return m_join && piece.m_kind == EPieceKind::Source && m_pending->m_kind == piece.m_kind &&
               written.m_in.begin() == m_inEnd &&
               m_pending->m_place.m_source == piece.m_place.m_source &&
               m_pending->m_from == piece.m_from && ContinuesCopy(piece) &&
               m_pending->m_chain == piece.m_chain;
    }
    bool ContinuesCopy(const MapPiece& piece) const
    {
        const SourceRange& last = m_pending->m_copied;
        const SourceRange& next = piece.m_copied;
        if (last.m_source != next.m_source)
            return false;
        return !next.IsKnown() ||
               (last.m_inSize != 0 && next.m_inSize != 0 && last.m_in + last.m_inSize == next.m_in);
    }

    bool m_join;
    std::function<void(const MapPiece&)> m_take;
    std::optional<MapPiece> m_pending;
    const char* m_inEnd = nullptr; ///< Where the source of the pending piece ends.
};

void ForEachMapPiece(const WrittenOutput& output, bool join,
                     const std::function<void(const MapPiece&)>& take)
{
    PieceJoiner joiner(join, take);
    ForEachWrittenPiece(output, [&](const WrittenPiece& piece) { joiner.Add(piece); });
    joiner.Finish();
}

/// Writes the items of a list, each on a line of its own.
class ListWriter
{
public:
    ListWriter(ByteSink& sink, const char* name) : m_sink(sink)
    {
        m_sink.Write(std::string(",\n \"") + name + "\":[");
    }
    void Add(const std::string& json)
    {
        m_sink.Write((m_first ? "\n   " : ",\n   ") + json);
        m_first = false;
    }
    void End() { m_sink.Write("]"); }

private:
    ByteSink& m_sink;
    bool m_first = true;
};

std::string NamesOf(const Sources& sources)
{
    std::string json;
    for (size_t i = 0; i < sources.Count(); ++i)
        json += (i == 0 ? "" : ",") + JsonString(ViewOf(sources[i].Name()));
    return json;
}

/// Of what is written.
uint32_t SumOf(const WrittenOutput& output)
{
    uint32_t sum = 0;
    ForEachStretch(output.m_text, output.m_edits,
                   [&](SubString stretch) { sum = AddToCrc32(sum, stretch); });
    return sum;
}

} // namespace

void WriteMap(ByteSink& sink, const WrittenOutput& output, const MapStyle& style)
{
    sink.Write("{\"version\":" + std::to_string(OutputMap::s_version));
    if (style.m_output)
        sink.Write(",\n \"output\":" + JsonString(ViewOf(*style.m_output)) +
                   ",\n \"directory\":" + JsonString(ViewOf(style.m_directory)));
    sink.Write(",\n \"sources\":[" + NamesOf(output.m_sources) + "]");
    sink.Write(",\n \"size\":" + std::to_string(WrittenSize(output)));
    if (style.m_hasSum)
        sink.Write(",\n \"crc32\":" + std::to_string(SumOf(output)));
    if (!output.m_chains.m_chains.empty())
    {
        ListWriter chains(sink, "chains");
        for (const MapChain& chain : output.m_chains.m_chains)
            chains.Add(JsonOf(chain));
        chains.End();
    }
    ListWriter pieces(sink, "pieces");
    ForEachMapPiece(output, style.m_joinRuns,
                    [&](const MapPiece& piece) { pieces.Add(JsonOf(piece, style.m_copies)); });
    pieces.End();
    sink.Write("}\n");
}

OutputMap MakeOutputMap(const WrittenOutput& output, const MapStyle& style)
{
    OutputMap map;
    map.m_output = style.m_output;
    map.m_directory = style.m_directory;
    for (size_t i = 0; i < output.m_sources.Count(); ++i)
        map.m_sources.push_back(output.m_sources[i].Name());
    map.m_size = WrittenSize(output);
    map.m_chains = output.m_chains.m_chains;
    ForEachMapPiece(output, style.m_joinRuns,
                    [&](const MapPiece& piece) { map.m_pieces.push_back(piece); });
    return map;
}

} // namespace telv::tool
