// SPDX-License-Identifier: MIT
// From the output to the source, a piece is looked up; the other way, all pieces are gone through.
#include "WhereCommand.h"
#include "Files.h"
#include "map/ChainText.h"
#include "map/LineUses.h"
#include "map/MappedFiles.h"
#include "output/OutputFile.h"
#include "report/Diagnostics.h"
#include <algorithm>
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

/// Whether both names, from the working directory, are those of one file, be it there or not.
bool IsSamePath(const std::string& a, const std::string& b)
{
    return JoinPath("", a) == JoinPath("", b) || IsSameFile(a, b);
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
    int Print(int status) const;
    int Fail(const std::string& message) const
    {
        ReportToolError(message);
        return 1;
    }
    FilePlace PlaceInOutput() const;
    FilePlace PlaceInSource() const;
    int ShowSource(const FilePlace& place);
    int ShowOutput(const FilePlace& place);
    std::optional<Origin> FindOrigin(const LineTable& lines, const FilePlace& place) const;
    void Add(const SourceRange& range, const std::string& sentence);
    std::optional<size_t> FindSource(const std::string& file) const;
    void AddUse(const RangeUse& use);

    const WhereOptions& m_options;
    MappedFiles m_files;
    ExcerptStyle m_style;
    std::string m_text; ///< What is printed.
};

int WhereCommand::Run()
{
    if (m_options.m_place)
    {
        const FilePlace place = PlaceInOutput();
        if (m_options.m_output.empty())
            m_files.SetOutputPath(place.m_file);
        return Print(ShowSource(place));
    }
    if (m_files.OutputPath().empty())
        throw UsageError("'" + m_options.m_map + "' does not name its output: name it with -o");
    return Print(ShowOutput(PlaceInSource()));
}

int WhereCommand::Print(int status) const
{
    if (status == 0)
        WriteStandardOutput([this](ByteSink& sink) { sink.Write(m_text); });
    return status;
}

/// A name can end like a line: the longest one that is the output's counts.
FilePlace WhereCommand::PlaceInOutput() const
{
    const FilePlace& place = *m_options.m_place;
    const bool isLonger = !place.m_longerFile.empty() && !m_files.OutputPath().empty() &&
                          IsSamePath(m_files.OutputPath(), place.m_longerFile);
    return isLonger ? place.InLongerFile() : place;
}

/// The same for a source, of which a line is looked up whole.
FilePlace WhereCommand::PlaceInSource() const
{
    const FilePlace& place = *m_options.m_source;
    const bool isLonger = !place.m_longerFile.empty() && FindSource(place.m_longerFile);
    if (place.m_column && !isLonger)
        throw UsageError("bad place '" + place.m_longerFile + ":" +
                         std::to_string(*place.m_column) + "' for --source: FILE:LINE is wanted");
    return isLonger ? place.InLongerFile() : place;
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

int WhereCommand::ShowSource(const FilePlace& place)
{
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
    const auto steps = m_files.Map().StepsOf(origin->m_chain);
    const size_t shown = std::min(steps.size(), s_mostStepsShown);
    for (size_t i = 0; i < shown; ++i)
        Add(steps[i]->m_place, DescribeStep(*steps[i]));
    if (shown < steps.size())
        m_text += DescribeMoreSteps(steps.size() - shown) + "\n";
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

std::optional<size_t> WhereCommand::FindSource(const std::string& file) const
{
    const OutputMap& map = m_files.Map();
    for (size_t i = 0; i < map.m_sources.size(); ++i)
        if (map.m_sources[i] == file || IsSamePath(m_files.SourcePath(i), file))
            return i;
    return std::nullopt;
}

void WhereCommand::AddUse(const RangeUse& use)
{
    const auto [begin, end, isThrough] = use;
    const LineTable& lines = m_files.Output().m_lines;
    const LineColumn from = lines.At(begin);
    const LineColumn to = lines.At(end - 1);
    m_text += PlaceText(m_files.OutputPath(), from) + "-";
    if (to.m_line != from.m_line)
        m_text += std::to_string(to.m_line) + ":";
    const SubString line = lines.Line(from.m_line);
    const char* const last = std::min(lines.Text().begin() + end, line.end());
    const SubString shown(std::min(lines.Text().begin() + begin, last), last);
    m_text += std::to_string(to.m_column) + (isThrough ? " through this: " : ": ");
    m_text += m_style.m_escape ? EscapeForTerminal(shown) : ToStdString(shown);
    m_text += "\n";
}

int WhereCommand::ShowOutput(const FilePlace& place)
{
    const std::optional<size_t> source = FindSource(place.m_file);
    if (!source)
        throw UsageError("'" + place.m_file + "' is no source of '" + m_files.OutputPath() + "'");
    const std::string path = m_files.SourcePath(*source);
    const MappedText* const text = m_files.SourceText(*source);
    if (text == nullptr)
        throw UsageError("'" + path + "' is no file: its lines are not known");
    if (place.m_line > text->m_lines.Count())
        return Fail(LineOfText(path, place.m_line));
    const ssize_t first = text->m_lines.Start(place.m_line);
    const ssize_t last = text->m_lines.End(place.m_line);
    for (const RangeUse& use :
         FindUses(m_files.Map(), {static_cast<ssize_t>(*source), first, last - first}))
        AddUse(use);
    return m_text.empty() ? Fail("nothing in '" + m_files.OutputPath() + "' comes from there") : 0;
}

} // namespace

int RunWhereCommand(const WhereOptions& options)
{
    return WhereCommand(options).Run();
}

} // namespace telv::tool
