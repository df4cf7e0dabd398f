// SPDX-License-Identifier: MIT
// The data is JSON in an element of the page. Offsets become those of JavaScript strings.
#include "explain/PageWriter.h"
#include "Files.h"
#include "explain/PageFiles.h"
#include "map/ChainText.h"
#include "map/LineTable.h"
#include "output/JsonText.h"
#include <algorithm>

namespace telv::tool
{

namespace
{

/// JSON that can stand inside of HTML: no "<" that could end the element.
std::string SafeJson(SubString text)
{
    std::string safe;
    for (const char c : JsonString(text))
        if (c == '<')
            safe += "\\u003c";
        else
            safe += c;
    return safe;
}

std::string EscapeHtml(const std::string& text)
{
    std::string html;
    for (const char c : text)
        switch (c)
        {
        case '<':
            html += "&lt;";
            break;
        case '&':
            html += "&amp;";
            break;
        default:
            html += c;
        }
    return html;
}

class DataWriter
{
public:
    DataWriter(ByteSink& sink, const Page& page)
        : m_sink(sink), m_page(page), m_output(page.m_output.m_text)
    {
        for (const PageText& source : page.m_sources)
            m_sources.emplace_back(source.m_text);
    }

    void Write();

private:
    void WriteText(const PageText& text)
    {
        m_sink.Write("{\"name\":" + SafeJson(ViewOf(text.m_name)) +
                     ",\"text\":" + SafeJson(text.m_text) + "}");
    }
    void WritePieces();
    std::string NumbersOf(const MapPiece& piece);
    void WriteChains();
    ssize_t UnitsIn(const SourceRange& range) const
    {
        return UnitsBefore({range.m_source, range.m_in + range.m_inSize, 0}) - UnitsBefore(range);
    }
    ssize_t UnitsBefore(const SourceRange& range) const
    {
        return m_sources[static_cast<size_t>(range.m_source)].Before(range.m_in);
    }

    ByteSink& m_sink;
    const Page& m_page;
    Utf16Counter m_output;
    std::vector<Utf16Counter> m_sources;
};

void DataWriter::Write()
{
    m_sink.Write("{\"output\":");
    WriteText(m_page.m_output);
    m_sink.Write(",\n\"sources\":[");
    for (const PageText& source : m_page.m_sources)
    {
        m_sink.Write(&source == m_page.m_sources.data() ? "" : ",\n");
        WriteText(source);
    }
    m_sink.Write("],\n\"chains\":[");
    WriteChains();
    m_sink.Write("],\n\"pieces\":[");
    WritePieces();
    m_sink.Write("]}");
}

void DataWriter::WritePieces()
{
    const char* separator = "";
    for (const MapPiece& piece : m_page.m_map.m_pieces)
    {
        m_sink.Write(separator);
        m_sink.Write(NumbersOf(piece));
        separator = ",\n";
    }
}

/// Size, kind, source, offset and size there, chain.
std::string DataWriter::NumbersOf(const MapPiece& piece)
{
    constexpr int s_made = 3;
    SourceRange place = OriginRange(piece);
    const bool isMade = piece.m_kind == EPieceKind::Source && place.IsKnown() && !IsCopy(piece);
    place.m_inSize = std::max(place.m_inSize, ssize_t{1}); // of a value, its beginning lights up
    const int kind = isMade ? s_made : static_cast<int>(piece.m_kind);
    const ssize_t size = m_output.Before(piece.m_out + piece.m_size) - m_output.Before(piece.m_out);
    std::string numbers = std::to_string(size) + "," + std::to_string(kind) + ",";
    if (!place.IsKnown())
        numbers += "-1,0,0,";
    else
    {
        numbers += std::to_string(place.m_source) + "," + std::to_string(UnitsBefore(place)) + "," +
                   std::to_string(UnitsIn(place)) + ",";
    }
    return numbers + std::to_string(piece.m_chain);
}

void DataWriter::WriteChains()
{
    bool isFirst = true;
    for (const MapChain& chain : m_page.m_map.m_chains)
    {
        const bool isKnown = chain.m_place.IsKnown();
        m_sink.Write(std::string(isFirst ? "" : ",\n") +
                     "{\"text\":" + SafeJson(ViewOf(DescribeStep(chain))) +
                     ",\"source\":" + std::to_string(chain.m_place.m_source) +
                     ",\"at\":" + std::to_string(isKnown ? UnitsBefore(chain.m_place) : 0) +
                     ",\"size\":" + std::to_string(isKnown ? UnitsIn(chain.m_place) : 0) +
                     ",\"parent\":" + std::to_string(chain.m_parent) + "}");
        isFirst = false;
    }
}

std::string TitleOf(const Page& page)
{
    const std::string output = page.m_output.m_name;
    return page.m_sources.empty() ? output : page.m_sources[0].m_name + " \u2192 " + output;
}

} // namespace

void WritePage(ByteSink& sink, const Page& page)
{
    const std::string html = s_pageHtml;
    size_t from = 0;
    while (from < html.size())
    {
        const size_t mark = std::min(html.find("{{", from), html.size());
        sink.Write(html.substr(from, mark - from));
        if (mark == html.size())
            break;
        const size_t end = html.find("}}", mark);
        const std::string name = html.substr(mark + 2, end - mark - 2);
        if (name == "DATA")
            DataWriter(sink, page).Write();
        else if (name == "TITLE")
            sink.Write(EscapeHtml(TitleOf(page)));
        else
            sink.Write(name == "STYLE" ? s_pageStyle : s_pageScript);
        from = end + 2;
    }
}

} // namespace telv::tool
