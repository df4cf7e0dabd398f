// SPDX-License-Identifier: MIT
// One pass over what is written: at the end of each line the source line that it belongs to is
// compared with the one that a compiler would count to. A byte order mark at the very beginning is
// no part of the first line: compilers know it there alone.
#include "output/LineDirectives.h"
#include "Files.h"
#include "Utf8.h"
#include "map/LineTable.h"
#include "output/CLineScan.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <algorithm>
#include <memory>
#include <utility>

namespace telv::tool
{

namespace
{

std::string QuotedName(const std::string& file)
{
    std::string text;
    for (const char c : file)
    {
        if (c == '"' || c == '\\')
            text += '\\';
        text += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    return text;
}

std::string FormatDirective(const std::string& format, ssize_t line, const std::string& file)
{
    std::string text;
    for (size_t i = 0; i < format.size(); ++i)
    {
        if (format[i] != '%')
        {
            text += format[i];
            continue;
        }
        ++i;
        if (format[i] == 'l')
            text += std::to_string(line);
        else
            text += format[i] == 'f' ? QuotedName(file) : "%";
    }
    return text;
}

/// An output line made of more source lines than these is not worth counting on.
constexpr size_t s_mostShares = 64;

/// A line of a source that an output line has characters of.
struct LineShare
{
    size_t m_source = 0;
    ssize_t m_line = 0;
    Origin m_first;      ///< Of its first character there.
    ssize_t m_count = 0; ///< Characters that are no white space.

    bool IsLine(size_t source, ssize_t line) const { return m_source == source && m_line == line; }
};

class DirectivePlacer
{
public:
    DirectivePlacer(const WrittenOutput& output, const std::string& format)
        : m_output(output), m_format(format)
    {
        m_tables.resize(output.m_sources.Count());
    }

    std::vector<TextEdit> Place();

private:
    void Visit(const WrittenPiece& written);
    void Count(const Origin& origin);
    const LineShare& ChooseShare() const;
    void EndLine();
    void Insert(const LineShare& share);
    void StartLine(const MapPiece& piece, ssize_t offset);
    ssize_t LineOf(const Origin& origin);

    const WrittenOutput& m_output;
    const std::string& m_format;
    std::vector<std::unique_ptr<LineTable>> m_tables;
    std::vector<TextEdit> m_directives;
    CLineScan m_scan;
    const char* m_lineStart = nullptr; ///< In the expansion; null until a line has a character.
    std::vector<LineShare> m_shares;   ///< Of this line, in the order of their first characters.
    ssize_t m_nextSource = s_none;     ///< The source line that follows the last line feed there.
    ssize_t m_nextLine = 0;
    const char* m_lineEnd = "\n"; ///< Of this line, or the last one that has an end.
    bool m_isReturn = false;      ///< The last character was a carriage return.
    bool m_canInsert = true;      ///< At the start of this line.
    ssize_t m_source = s_none;    ///< What the compiler takes this line for.
    ssize_t m_line = 0;
    // The source line that was looked up last: most characters lie beside the one before.
    size_t m_knownSource = 0;
    ssize_t m_knownBegin = 0, m_knownEnd = 0, m_knownLine = 0;
};

std::vector<TextEdit> DirectivePlacer::Place()
{
    ForEachWrittenPiece(m_output, [this](const WrittenPiece& piece) { Visit(piece); });
    EndLine();
    std::vector<TextEdit> edits;
    auto removal = m_output.m_edits.begin();
    for (TextEdit& directive : m_directives)
    {
        for (; removal != m_output.m_edits.end() && removal->m_begin < directive.m_begin; ++removal)
            edits.push_back(*removal);
        edits.push_back(std::move(directive));
    }
    edits.insert(edits.end(), removal, m_output.m_edits.end());
    return edits;
}

void DirectivePlacer::Visit(const WrittenPiece& written)
{
    const bool isFirst = written.m_piece.m_out == 0;
    for (const char& c : isFirst ? WithoutByteOrderMark(written.m_text) : written.m_text)
    {
        const ssize_t offset = &c - written.m_text.begin();
        if (m_lineStart == nullptr)
            m_lineStart = &c;
        if (ClassOf(c) != CHAR_BLANK)
            if (const std::optional<Origin> origin = OriginIn(written.m_piece, offset))
                Count(*origin);
        m_scan.Read(c);
        const bool isBehindReturn = std::exchange(m_isReturn, c == '\r');
        if (c != '\n')
            continue;
        m_lineEnd = isBehindReturn ? "\r\n" : "\n";
        EndLine();
        StartLine(written.m_piece, offset);
    }
}

void DirectivePlacer::Count(const Origin& origin)
{
    const ssize_t line = LineOf(origin);
    const auto isIt = [&](const LineShare& share) { return share.IsLine(origin.m_source, line); };
    const auto found = std::find_if(m_shares.begin(), m_shares.end(), isIt);
    if (found != m_shares.end())
        ++found->m_count;
    else if (m_shares.size() < s_mostShares)
        m_shares.push_back({origin.m_source, line, origin, 1});
}

/// Text that goes on where the line feed before it stands decides for the whole line, so that an
/// inline call belongs to the line of the caller. Otherwise a name was replaced at the beginning: a
/// call by its body, or a parameter by its argument. The larger share tells which.
const LineShare& DirectivePlacer::ChooseShare() const
{
    const LineShare& first = m_shares.front();
    if (m_nextSource != s_none && first.IsLine(static_cast<size_t>(m_nextSource), m_nextLine))
        return first;
    return *std::max_element(m_shares.begin(), m_shares.end(),
                             [](const LineShare& a, const LineShare& b)
                             { return a.m_count < b.m_count; });
}

/// Decides about the line that has been read.
void DirectivePlacer::EndLine()
{
    if (m_shares.empty())
        return;
    const LineShare& share = ChooseShare();
    const auto source = static_cast<ssize_t>(share.m_source);
    if (m_canInsert && (source != m_source || share.m_line != m_line))
    {
        Insert(share);
        m_source = source;
        m_line = share.m_line;
    }
    m_shares.clear();
}

/// A line begins behind the line feed at `offset` of the piece.
void DirectivePlacer::StartLine(const MapPiece& piece, ssize_t offset)
{
    ++m_line;
    m_lineStart = nullptr;
    m_canInsert = m_scan.CanStartDirective();
    const std::optional<Origin> feed = OriginIn(piece, offset);
    m_nextSource = feed && feed->IsCopied() ? static_cast<ssize_t>(feed->m_source) : s_none;
    m_nextLine = m_nextSource == s_none ? 0 : LineOf(*feed) + 1;
}

void DirectivePlacer::Insert(const LineShare& share)
{
    const std::string& file = m_output.m_sources[share.m_source].Name();
    const ssize_t at = m_lineStart - m_output.m_text.begin();
    const SourceRange place{static_cast<ssize_t>(share.m_source), share.m_first.m_offset,
                            share.m_first.m_size};
    m_directives.push_back(
        {at, at, FormatDirective(m_format, share.m_line, file) + m_lineEnd, place});
}

ssize_t DirectivePlacer::LineOf(const Origin& origin)
{
    const bool isKnown = origin.m_source == m_knownSource && origin.m_offset >= m_knownBegin &&
                         origin.m_offset < m_knownEnd;
    if (isKnown)
        return m_knownLine;
    auto& table = m_tables[origin.m_source];
    if (!table)
        table = std::make_unique<LineTable>(m_output.m_sources[origin.m_source].File());
    m_knownSource = origin.m_source;
    m_knownLine = table->At(origin.m_offset).m_line;
    m_knownBegin = table->Start(m_knownLine);
    m_knownEnd = table->End(m_knownLine);
    return m_knownLine;
}

} // namespace

std::vector<TextEdit> AddLineDirectives(const WrittenOutput& output, const std::string& format)
{
    return DirectivePlacer(output, format).Place();
}

} // namespace telv::tool
