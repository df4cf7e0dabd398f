// SPDX-License-Identifier: MIT
// A path is compared by name first; files are looked at when the last parts are equal, or when the
// path leads through a symbolic link to one whose last part is.
#include "remap/MappedOutputs.h"
#include "Files.h"
#include "map/ChainText.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <algorithm>

namespace telv::tool
{

namespace
{

std::string LastPart(const std::string& path)
{
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string AbsolutePath(const std::string& directory, const std::string& path)
{
    return path.starts_with('/') ? JoinPath("", path) : JoinPath(directory, path);
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

/// Whether something can begin or end there: not inside a word, nor between blanks.
bool IsEdge(SubString line, ssize_t offset)
{
    if (offset > line.size())
        return false;
    const char before = offset == 0 ? ' ' : line.begin()[offset - 1];
    const char here = offset == line.size() ? ' ' : line.begin()[offset];
    return !(IsBlank(before) && IsBlank(here)) &&
           !(IsNameCharacter(before) && IsNameCharacter(here));
}

bool HasWordAt(SubString line, ssize_t offset, const std::string& word)
{
    const auto end = offset + static_cast<ssize_t>(word.size());
    return end <= line.size() && IsEdge(line, offset) && IsEdge(line, end) &&
           std::equal(word.begin(), word.end(), line.begin() + offset);
}

/// GCC counts terminal columns, most others bytes; they differ behind tabs and what is not ASCII.
/// The word that the message speaks of decides, else where something can stand. The very end of a
/// line, where clang misses a semicolon, is hardly met by chance.
ssize_t GuessOffset(SubString line, ssize_t byte, ssize_t shown, const ColumnHints& hints)
{
    const auto fits = [&](ssize_t offset)
    {
        return std::any_of(hints.m_quoted.begin(), hints.m_quoted.end(),
                           [&](const std::string& word) { return HasWordAt(line, offset, word); });
    };
    if (fits(byte) != fits(shown))
        return fits(byte) ? byte : shown;
    if (IsEdge(line, byte) != IsEdge(line, shown))
        return IsEdge(line, byte) ? byte : shown;
    const bool isShown = byte > line.size() || (hints.m_isOfCompiler && byte < line.size());
    return isShown ? shown : byte;
}

} // namespace

/// The offset of a column of a line, from 0, held within the line.
ssize_t MappedOutputs::ColumnOffset(SubString line, ssize_t column, EColumnUnit unit,
                                    const ColumnHints& hints)
{
    ssize_t offset = std::max(column, ssize_t{1}) - 1;
    if (unit == EColumnUnit::Guess)
        offset = GuessOffset(line, offset, m_columns.BytesOf(line, offset, EColumnUnit::Terminal),
                             hints);
    else if (unit != EColumnUnit::Bytes)
        offset = m_columns.BytesOf(line, offset, unit);
    return std::clamp(offset, ssize_t{0}, line.size());
}

ssize_t MappedOutputs::ColumnIn(const MessagePlace& place, EColumnUnit unit)
{
    if (unit == EColumnUnit::Guess || unit == EColumnUnit::Bytes)
        return place.m_column;
    const ssize_t offset = std::min(place.m_column - 1, place.m_text.size());
    return m_columns.ColumnsOf(place.m_text, offset, unit) + 1;
}

void MappedOutputs::Add(const std::string& mapPath, const std::string& output)
try
{
    auto added = std::make_unique<Output>(mapPath, output);
    const std::string& path = added->m_files.OutputPath();
    if (path.empty())
        return m_report("'" + mapPath + "' does not name its output: name it with -o");
    added->m_absolute = AbsolutePath(m_here, path);
    const std::string name = LastPart(path);
    const std::string realName = LastPart(ResolvedPath(path));
    AddName(name);
    if (realName != name)
        AddName(realName);
    m_outputs.push_back(std::move(added));
}
catch (const std::runtime_error& e)
{
    m_report(e.what());
}

/// Of the output that is added next.
void MappedOutputs::AddName(const std::string& name)
{
    if (!m_byName.contains(name))
        m_lastParts.push_back(name);
    m_byName.emplace(name, m_outputs.size());
}

std::optional<size_t> MappedOutputs::FindByName(const std::string& path) const
{
    const auto [first, last] = m_byName.equal_range(LastPart(path));
    for (auto named = first; named != last; ++named)
    {
        const std::string& output = m_outputs[named->second]->m_absolute;
        if (output == path || IsSameFile(output, path))
            return named->second;
    }
    return std::nullopt;
}

/// The output at `path`, from the root; of what exists the answer is kept.
std::optional<size_t> MappedOutputs::FindAbsolute(const std::string& path)
{
    const auto known = m_known.find(path);
    if (known != m_known.end())
        return known->second;
    std::optional<size_t> found = FindByName(path);
    if (!found)
        found = FindByName(ResolvedPath(path));
    if (found || StatusOf(path))
        m_known[path] = found;
    return found;
}

std::optional<size_t> MappedOutputs::Find(const std::string& path)
{
    const std::string& directory = m_directories.empty() ? m_here : m_directories.back();
    const std::string absolute = AbsolutePath(directory, path);
    const std::optional<size_t> found = FindAbsolute(absolute);
    // The commands of several directories can be mixed; but what is there is meant.
    if (!found && directory != m_here && !StatusOf(absolute))
        return FindAbsolute(AbsolutePath(m_here, path));
    return found;
}

std::optional<MessageOrigin> MappedOutputs::Map(size_t index, ssize_t line,
                                                std::optional<ssize_t> column, EColumnUnit unit,
                                                const ColumnHints& hints)
{
    Output& output = *m_outputs[index];
    if (output.m_isBroken)
        return std::nullopt;
    try
    {
        return MapIn(output, line, column, unit, hints);
    }
    catch (const std::runtime_error& e)
    {
        output.m_isBroken = true;
        m_report(e.what());
        return std::nullopt;
    }
}

std::optional<MessageOrigin> MappedOutputs::MapIn(Output& output, ssize_t line,
                                                  std::optional<ssize_t> column, EColumnUnit unit,
                                                  const ColumnHints& hints)
{
    MappedFiles& files = output.m_files;
    const LineTable& lines = files.Output().m_lines;
    if (line < 1 || line > lines.Count())
    {
        if (output.m_missing.insert(line).second)
            m_report("'" + files.OutputPath() + "' has no line " + std::to_string(line));
        return std::nullopt;
    }
    const SubString text = lines.Line(line);
    const ssize_t offset =
        column ? ColumnOffset(text, *column, unit, hints) : m_columns.Visible(text);
    const ssize_t begin = lines.Start(line);
    auto origin =
        files.Map().FirstOrigin(std::min(begin + offset, lines.End(line) - 1), lines.End(line));
    if (!origin)
        origin = files.Map().FirstOrigin(begin, lines.End(line));
    if (!origin)
        return std::nullopt;
    const auto place =
        PlaceOf(files, {static_cast<ssize_t>(origin->m_source), origin->m_offset, 1});
    if (!place && output.m_noFiles.insert(origin->m_source).second)
        m_report("what '" + files.OutputPath() + "' has from '" +
                 files.SourcePath(origin->m_source) + "' leads to no file");
    MessageOrigin result;
    result.m_place = place.value_or(MessagePlace());
    result.m_isCopied = origin->IsCopied();
    result.m_line = text;
    AddNotes(files, *origin, result);
    return result;
}

std::optional<CopiedRange> MappedOutputs::MapRange(size_t index, const OutputPlace& first,
                                                   const OutputPlace& end)
{
    Output& output = *m_outputs[index];
    if (output.m_isBroken)
        return std::nullopt;
    try
    {
        return MapRangeIn(output.m_files, first, end);
    }
    catch (const std::runtime_error& e)
    {
        output.m_isBroken = true;
        m_report(e.what());
        return std::nullopt;
    }
}

std::optional<CopiedRange> MappedOutputs::MapRangeIn(MappedFiles& files, const OutputPlace& first,
                                                     const OutputPlace& end)
{
    const LineTable& lines = files.Output().m_lines;
    const auto offsetOf = [&](const OutputPlace& place)
    {
        return lines.Start(place.m_line) +
               ColumnOffset(lines.Line(place.m_line), place.m_column, place.m_unit, {});
    };
    if (std::min(first.m_line, end.m_line) < 1 ||
        std::max(first.m_line, end.m_line) > lines.Count())
        return std::nullopt;
    const ssize_t from = offsetOf(first);
    const ssize_t to = offsetOf(end);
    const auto origin = from < to ? files.Map().OriginOf(from) : std::nullopt;
    for (ssize_t at = from; at < to;)
    {
        const auto here = files.Map().OriginOf(at);
        if (!here || !here->IsCopied() || here->m_source != origin->m_source ||
            here->m_offset - origin->m_offset != at - from)
            return std::nullopt;
        const MapPiece& piece = files.Map().PieceAt(at);
        at = piece.m_out + piece.m_size;
    }
    if (!origin)
        return std::nullopt;
    const auto source = static_cast<ssize_t>(origin->m_source);
    const auto begin = PlaceOf(files, {source, origin->m_offset, 1});
    const auto behind = PlaceOf(files, {source, origin->m_offset + (to - from), 0});
    if (!begin || !behind)
        return std::nullopt;
    return CopiedRange{*begin, *behind};
}

/// Nothing for a source that is no file.
std::optional<MessagePlace> MappedOutputs::PlaceOf(MappedFiles& files, const SourceRange& range)
{
    if (!range.IsKnown())
        return std::nullopt;
    const auto source = static_cast<size_t>(range.m_source);
    const MappedText* const text = files.SourceText(source);
    if (text == nullptr)
        return std::nullopt;
    const LineColumn at = text->m_lines.At(std::min(range.m_in, text->m_text.size()));
    const SubString line =
        at.m_line <= text->m_lines.Count() ? text->m_lines.Line(at.m_line) : SubString();
    return MessagePlace{files.SourcePath(source), at.m_line, at.m_column, line};
}

void MappedOutputs::AddNotes(MappedFiles& files, const Origin& origin, MessageOrigin& result)
{
    for (const MapChain* step : files.Map().StepsOf(origin.m_chain))
    {
        if (result.m_notes.size() == s_mostStepsShown)
        {
            ++result.m_moreNotes;
            continue;
        }
        result.m_notes.push_back(
            {PlaceOf(files, step->m_place).value_or(MessagePlace()), DescribeStep(*step)});
    }
}

void MappedOutputs::NoteDirectory(const std::string& line)
{
    static const std::string s_entering = "Entering directory ";
    const size_t entering = line.find(s_entering);
    if (entering != std::string::npos)
    {
        const size_t begin = entering + s_entering.size() + 1; // Behind the quote.
        const size_t end = line.find_last_of('\'');
        const std::string here = m_directories.empty() ? m_here : m_directories.back();
        if (end != std::string::npos && end > begin)
            m_directories.push_back(AbsolutePath(here, line.substr(begin, end - begin)));
    }
    else if (line.find("Leaving directory ") != std::string::npos && !m_directories.empty())
        m_directories.pop_back();
}

} // namespace telv::tool
