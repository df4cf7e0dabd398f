// SPDX-License-Identifier: MIT
// From the output to the source, a piece is looked up; the other way, all pieces are gone through.
#include "WhereCommand.h"
#include "Files.h"
#include "map/ChainText.h"
#include "map/MappedFiles.h"
#include "output/OutputFile.h"
#include "report/Diagnostics.h"
#include <unistd.h>

namespace telv::tool
{

namespace
{

std::string PlaceText(const std::string& path, LineColumn at)
{
    return path + ":" + std::to_string(at.m_line) + ":" + std::to_string(at.m_column);
}

std::string LineOfText(const std::string& path, ssize_t line)
{
    return "'" + path + "' has no line " + std::to_string(line);
}

class WhereCommand
{
public:
    explicit WhereCommand(const WhereOptions& options)
        : m_options(options), m_files(options.m_map, options.m_output)
    {
        const bool isTerminal = isatty(STDOUT_FILENO) == 1;
        m_style.m_escape = isTerminal;
        m_style.m_colour = WantsColour(options.m_colour, STDOUT_FILENO);
    }

    int Run();

private:
    int Fail(const std::string& message) const
    {
        ReportToolError(message);
        return 1;
    }
    int ShowSource();
    int ShowOutput();
    std::optional<Origin> FindOrigin(const LineTable& lines, const FilePlace& place) const;
    void Add(const SourceRange& range, const std::string& sentence);
    size_t FindSource(const std::string& file) const;
    void AddRange(ssize_t begin, ssize_t end);

    const WhereOptions& m_options;
    MappedFiles m_files;
    ExcerptStyle m_style;
    std::string m_text; ///< What is printed.
};

int WhereCommand::Run()
{
    if (m_files.OutputPath().empty())
        throw UsageError("'" + m_options.m_map + "' does not name its output: name it with -o");
    const int status = m_options.m_place ? ShowSource() : ShowOutput();
    if (status == 0)
        WriteStandardOutput([this](ByteSink& sink) { sink.Write(m_text); });
    return status;
}

std::optional<Origin> WhereCommand::FindOrigin(const LineTable& lines, const FilePlace& place) const
{
    const OutputMap& map = m_files.Map();
    if (place.m_column)
        return map.OriginOf(lines.Offset(place.m_line, *place.m_column));
    // Of a line, the first thing that can be seen.
    const ssize_t begin = lines.Start(place.m_line);
    const SubString line = lines.Line(place.m_line);
    SubString seen = line;
    ScanWhiteSpace(seen);
    const ssize_t skipped = seen.empty() ? 0 : seen.begin() - line.begin();
    return map.FirstOrigin(begin + skipped, lines.End(place.m_line));
}

int WhereCommand::ShowSource()
{
    const FilePlace& place = *m_options.m_place;
    const LineTable& lines = m_files.Output().m_lines;
    if (place.m_line > lines.Count())
        return Fail(LineOfText(m_files.OutputPath(), place.m_line));
    const ssize_t length = lines.End(place.m_line) - lines.Start(place.m_line);
    if (place.m_column > length)
        return Fail("line " + std::to_string(place.m_line) + " of '" + m_files.OutputPath() +
                    "' has no column " + std::to_string(*place.m_column));
    const std::optional<Origin> origin = FindOrigin(lines, place);
    if (!origin)
        return Fail("what stands there comes from no source: it is indentation that was added");
    Add({static_cast<ssize_t>(origin->m_source), origin->m_offset, origin->m_size},
        DescribeOrigin(*origin));
    for (const MapChain* step : m_files.Map().StepsOf(origin->m_chain))
        Add(step->m_place, DescribeStep(*step));
    return 0;
}

/// Adds a place with what it is, and its excerpt.
void WhereCommand::Add(const SourceRange& range, const std::string& sentence)
{
    if (!range.IsKnown())
    {
        m_text += sentence + "\n";
        return;
    }
    const auto source = static_cast<size_t>(range.m_source);
    const std::string path = m_files.SourcePath(source);
    const MappedText* const text = m_files.SourceText(source);
    if (text == nullptr)
    {
        m_text += path + ": " + sentence + ", at byte " + std::to_string(range.m_in) + "\n";
        return;
    }
    if (range.m_in > text->m_text.size())
        throw MapError("'" + m_files.MapPath() + "' does not fit '" + path + "'");
    m_text += PlaceText(path, text->m_lines.At(range.m_in)) + ": " + sentence + "\n";
    const Source shown(path, text->m_text, source, nullptr);
    m_text += MakeExcerpt(shown, text->m_text.begin() + range.m_in, m_style);
}

size_t WhereCommand::FindSource(const std::string& file) const
{
    const OutputMap& map = m_files.Map();
    const std::string path = JoinPath("", file);
    for (size_t i = 0; i < map.m_sources.size(); ++i)
        if (map.m_sources[i] == file || m_files.SourcePath(i) == path ||
            IsSameFile(m_files.SourcePath(i), path))
            return i;
    throw UsageError("'" + file + "' is no source of '" + m_files.OutputPath() + "'");
}

void WhereCommand::AddRange(ssize_t begin, ssize_t end)
{
    const LineTable& lines = m_files.Output().m_lines;
    const LineColumn from = lines.At(begin);
    const LineColumn to = lines.At(end - 1);
    m_text += PlaceText(m_files.OutputPath(), from) + "-";
    if (to.m_line != from.m_line)
        m_text += std::to_string(to.m_line) + ":";
    const SubString line = lines.Line(from.m_line);
    const char* const last = std::min(lines.Text().begin() + end, line.end());
    const SubString shown(std::min(lines.Text().begin() + begin, last), last);
    m_text += std::to_string(to.m_column) + ": ";
    m_text += m_style.m_escape ? EscapeForTerminal(shown) : ToStdString(shown);
    m_text += "\n";
}

int WhereCommand::ShowOutput()
{
    const FilePlace& place = *m_options.m_source;
    const auto source = static_cast<ssize_t>(FindSource(place.m_file));
    const std::string path = m_files.SourcePath(static_cast<size_t>(source));
    const MappedText* const text = m_files.SourceText(static_cast<size_t>(source));
    if (text == nullptr)
        throw UsageError("'" + path + "' is no file: its lines are not known");
    if (place.m_line > text->m_lines.Count())
        return Fail(LineOfText(path, place.m_line));
    const ssize_t first = text->m_lines.Start(place.m_line);
    const ssize_t last = text->m_lines.End(place.m_line);
    ssize_t begin = 0;
    ssize_t end = 0; // Of the range that grows.
    for (const MapPiece& piece : m_files.Map().m_pieces)
    {
        const SourceRange& range = OriginRange(piece);
        const ssize_t size = std::max(range.m_inSize, ssize_t{1});
        if (range.m_source != source || range.m_in >= last || range.m_in + size <= first)
            continue;
        const bool isCopy = IsCopy(piece);
        const ssize_t from = isCopy ? std::max(first - range.m_in, ssize_t{0}) : 0;
        const ssize_t to = isCopy ? std::min(last - range.m_in, piece.m_size) : piece.m_size;
        if (piece.m_out + from != end)
        {
            if (begin != end)
                AddRange(begin, end);
            begin = piece.m_out + from;
        }
        end = piece.m_out + to;
    }
    if (begin != end)
        AddRange(begin, end);
    return m_text.empty() ? Fail("nothing in '" + m_files.OutputPath() + "' comes from there") : 0;
}

} // namespace

int RunWhereCommand(const WhereOptions& options)
{
    return WhereCommand(options).Run();
}

} // namespace telv::tool
