// SPDX-License-Identifier: MIT
// An excerpt is what compilers print under a message: lines with a bar, or lines with a caret and
// the line above. What it quotes is the output, names of files in it included. GCC's and clang's
// can be told from messages by their first characters.
#include "remap/LineRemapper.h"
#include "map/ChainText.h"
#include "remap/FileUri.h"
#include "remap/MessageText.h"
#include <cstring>
#include <utility>

namespace telv::tool
{

namespace
{

const std::string s_colourEnd = "\x1b[0m";

/// "   12 | text" and "      |  ^".
bool HasBar(const std::string& line)
{
    const size_t bar = line.find('|');
    return bar != std::string::npos && line.find_first_not_of(" 0123456789+-") == bar;
}

/// The line of blanks and signs.
bool HasMarks(const std::string& line)
{
    return line.find('^') != std::string::npos &&
           line.find_first_not_of(" ^~\r\n") == std::string::npos;
}

/// What clang would insert, below the marks. Only at the very beginning of a line can it be
/// mistaken for the next message, in which there are blanks.
bool IsFix(const std::string& line, const std::string& marks)
{
    if (line.starts_with(' '))
        return true;
    const bool isMarked = marks.starts_with('^') || marks.starts_with('~');
    return isMarked && line.find_first_of(" \t\r\n") == line.find_first_of("\r\n");
}

std::string WithoutBlanks(SubString line)
{
    std::string text;
    for (const char c : line)
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n')
            text += c;
    return text;
}

/// How lines end where this one comes from.
const char* EndOf(const std::string& line)
{
    return line.ends_with("\r\n") ? "\r\n" : "\n";
}

/// Of "FILE(LINE) : error : text" and "FILE(LINE): error: text", what stands between.
std::string Separator(const std::string& line, size_t end)
{
    return line.compare(end, 3, " : ") == 0 ? " : " : ": ";
}

/// Whether the place is that of a message: at the beginning of the line, with text behind it.
bool IsMessage(const std::string& line, const PlaceInLine& place)
{
    const size_t scheme = IsInUri(line, place.m_begin) ? std::strlen(s_fileScheme) : 0;
    const bool isFirst =
        line.find_first_not_of(" \t") == place.m_begin - scheme || line[0] == '\x1b';
    if (place.m_form == EPlaceForm::Python)
        return line.find_first_not_of(" \t") == line.find("File \"");
    return isFirst && line.find(':', place.m_end) != std::string::npos;
}

/// The name of a file as the line has them at `like`: in a URI, whole.
std::string NameLike(const std::string& line, const PlaceInLine& like, const MessagePlace& place)
{
    return IsInUri(line, like.m_begin) ? UriOfPath(ResolvedPath(place.m_path)) : place.m_path;
}

} // namespace

std::string LineRemapper::Remap(const std::string& line)
{
    const std::string plain = WithoutColours(line);
    const EExcerpt excerpt = ReadExcerpt(plain);
    if (excerpt == EExcerpt::Quote)
        return line;
    m_outputs.NoteDirectory(line);
    std::string written;
    size_t from = 0;
    if (excerpt == EExcerpt::None && !m_notes.empty())
    {
        // The end of the excerpt's colour stands before what follows it.
        from = line.starts_with(s_colourEnd) ? s_colourEnd.size() : 0;
        written = line.substr(0, from) + Finish();
    }
    const std::string rewritten = RemapPlaces(line, plain, from);
    written += std::exchange(m_before, "") + rewritten;
    return written;
}

/// The rest of the line, with its places rewritten. Notes are added to those that wait.
std::string LineRemapper::RemapPlaces(const std::string& line, const std::string& plain,
                                      size_t from)
{
    std::string rewritten;
    std::optional<size_t> output;
    const auto isKnown = [&](const std::string& path)
    {
        output = m_outputs.Find(path);
        return output.has_value();
    };
    const ColumnHints hints{QuotedWords(plain), HasSeverity(plain)};
    const KnownFiles files{m_outputs.LastParts(), isKnown};
    while (const auto place = FindPlace(line, from, files))
    {
        const auto origin =
            m_outputs.Map(*output, place->m_line, place->m_column, EColumnUnit::Guess, hints);
        rewritten += line.substr(from, place->m_begin - from);
        if (!origin || !origin->IsInFile())
            rewritten += line.substr(place->m_begin, place->m_end - place->m_begin);
        else
        {
            const MessagePlace& to = origin->m_place;
            const auto column = place->m_column ? std::optional(to.m_column) : std::nullopt;
            rewritten += WritePlace(place->m_form, NameLike(line, *place, to), to.m_line, column);
        }
        if (origin && IsMessage(line, *place))
            AddNotes(line, *place, *origin);
        from = place->m_end;
    }
    return rewritten + line.substr(from);
}

/// Clang quotes a line with blanks for its tabs.
LineRemapper::EExcerpt LineRemapper::ReadExcerpt(const std::string& plain)
{
    const std::string* const quoted = std::exchange(m_quoted, nullptr);
    const std::string marks = std::exchange(m_marks, "");
    if (HasBar(plain) || (quoted != nullptr && WithoutBlanks(ViewOf(plain)) == *quoted))
        return EExcerpt::Quote;
    if (HasMarks(plain))
    {
        m_marks = plain;
        return EExcerpt::Mark;
    }
    return !marks.empty() && IsFix(plain, marks) ? EExcerpt::Mark : EExcerpt::None;
}

void LineRemapper::AddNotes(const std::string& line, const PlaceInLine& place,
                            const MessageOrigin& origin)
{
    const auto [known, isNew] = m_lines.try_emplace(origin.m_line.begin());
    if (isNew)
        known->second = WithoutBlanks(origin.m_line);
    m_quoted = known->second.empty() ? nullptr : &known->second;
    const char* const end = EndOf(line);
    for (const MessageNote& note : origin.m_notes)
    {
        if (note.m_place.m_path.empty())
            continue;
        const auto column = place.m_column ? std::optional(note.m_place.m_column) : std::nullopt;
        const std::string at =
            (IsInUri(line, place.m_begin) && place.m_form != EPlaceForm::Python ? s_fileScheme
                                                                                : "") +
            WritePlace(place.m_form, NameLike(line, place, note.m_place), note.m_place.m_line,
                       column);
        const std::string separator =
            place.m_form == EPlaceForm::Brackets ? Separator(line, place.m_end) : ": ";
        if (place.m_form == EPlaceForm::Python)
            m_before.insert(0, line.substr(0, place.m_begin) + at + ", " + note.m_text + end);
        else
            m_notes.append(at)
                .append(separator)
                .append("note")
                .append(separator)
                .append(note.m_text)
                .append(end);
    }
    if (origin.m_moreNotes == 0)
        return;
    const std::string more = DescribeMoreSteps(origin.m_moreNotes) + end;
    if (place.m_form == EPlaceForm::Python)
        m_before.insert(0, line.substr(0, line.find_first_not_of(" \t")) + more);
    else
        m_notes += more;
}

std::string LineRemapper::Finish()
{
    return std::exchange(m_notes, "");
}

} // namespace telv::tool
