// SPDX-License-Identifier: MIT
// The first line is composed by the exception itself; colour is put around its parts afterwards.
#include "report/Diagnostics.h"
#include "Files.h"
#include "WarningNames.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace telv::tool
{

namespace
{

/// A message can quote the rest of a text. Of one with more lines, the first and the last are
/// shown; of a longer one the beginning.
constexpr ssize_t s_mostLines = 60;
constexpr ssize_t s_firstLines = 40;
constexpr ssize_t s_lastLines = 10;
constexpr size_t s_longestMessage = size_t{64} * 1024;

constexpr const char* s_bold = "\x1b[1m";
constexpr const char* s_red = "\x1b[31m";
constexpr const char* s_magenta = "\x1b[35m";
constexpr const char* s_boldAgain = "\x1b[0m\x1b[1m";
constexpr const char* s_plain = "\x1b[0m";

/// Behind so many line feeds.
const char* SkipLines(SubString text, ssize_t count)
{
    const char* p = text.begin();
    for (; count > 0; --count)
        p = std::find(p, text.end(), '\n') + 1;
    return p;
}

/// Tells of a message without the lines in its middle. What Python says ends with the cause, and
/// may be long before that.
std::string LeaveLinesOut(SubString message)
{
    const ssize_t lines = 1 + std::count(message.begin(), message.end(), '\n');
    const SubString python("Python error: ");
    const bool isPython =
        message.size() > python.size() && std::equal(python.begin(), python.end(), message.begin());
    if (lines <= s_mostLines || isPython)
        return ToStdString(message);
    const char* const middle = SkipLines(message, s_firstLines);
    const char* const last = SkipLines(message, lines - s_lastLines);
    return ToStdString(SubString(message.begin(), middle)) + "... (" +
           std::to_string(lines - s_firstLines - s_lastLines) + " lines left out)\n" +
           ToStdString(SubString(last, message.end()));
}

/// `message`, or parts of it when it is too long.
std::string Shorten(SubString message)
{
    const size_t length = static_cast<size_t>(message.size());
    if (length <= s_longestMessage)
        return LeaveLinesOut(message);
    return ToStdString(SubString(message.begin(), message.begin() + s_longestMessage)) + "\n... (" +
           std::to_string(length - s_longestMessage) + " bytes left out)";
}

void WriteToStandardError(const std::string& text)
{
    // There is nobody left to tell about a failure.
    (void)WriteAll(STDERR_FILENO, ViewOf(text));
}

} // namespace

bool IsCapableTerminal(int descriptor)
{
    const char* const terminal = std::getenv("TERM");
    return isatty(descriptor) == 1 && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

bool WantsColour(Colour colour, int descriptor)
{
    if (colour != Colour::Auto)
        return colour == Colour::Always;
    const char* const refusal = std::getenv("NO_COLOR");
    const bool refused = refusal != nullptr && *refusal != '\0';
    return !refused && IsCapableTerminal(descriptor);
}

Diagnostics::Diagnostics(const Sources& sources, Colour colour) : m_sources(sources)
{
    m_style.m_escape = isatty(STDERR_FILENO) == 1;
    m_style.m_colour = WantsColour(colour, STDERR_FILENO);
}

void Diagnostics::Report(const LexScannerException& error, const ExpansionRun* run) const
{
    const Place place = PlaceOf(error.m_pos);
    std::string notes;
    if (run != nullptr)
        notes = MakeCauseLines(*run, place.m_pos) +
                MakeCallLines(run->CallPlaces(), run->MoreCallPlaces(), run->ImportPlaces()) +
                MakeNotes(*run, error, place.m_pos);
    else if (place.m_source != nullptr)
        notes = MakeImportLines(*place.m_source);
    Write(error, place, notes);
}

void Diagnostics::ReportInProject(const LexScannerException& error, const ExpansionRun& run) const
{
    const Place place = PlaceOf(error.m_pos);
    std::string notes = MakeCallLines(run.CallPlaces(), run.MoreCallPlaces(), {});
    if (place.m_source != nullptr)
        notes += MakeImportLines(*place.m_source);
    Write(error, place, notes + MakeNotes(run, error, place.m_pos));
}

/// A position in no source counts as the beginning of the first one.
Diagnostics::Place Diagnostics::PlaceOf(const char* pos) const
{
    if (const Source* const source = m_sources.Find(pos))
        return {source, pos};
    if (m_sources.Count() == 0)
        return {nullptr, nullptr};
    return {&m_sources[0], m_sources[0].Text().begin()};
}

void Diagnostics::Write(const LexScannerException& error, const Place& place,
                        const std::string& notes) const
{
    if (place.m_source == nullptr)
        return ReportToolError(ToStdString(error.m_description));
    WriteToStandardError(MakeFirstLines(error, *place.m_source, place.m_pos) +
                         MakeExcerpt(*place.m_source, place.m_pos, m_style) + notes);
}

/// Where else the fault may lie: in the Python code of a macro, in an element of a list.
std::string Diagnostics::MakeCauseLines(const ExpansionRun& run, const char* pos) const
{
    std::string lines = MakeNote("defined at ", run.DefinedAt());
    if (MakePlace(run.ElementAt()) != MakePlace(pos))
        lines += MakeNote("element at ", run.ElementAt());
    return lines;
}

/// A place besides that of the error; empty for one in no source.
std::string Diagnostics::MakeNote(const char* what, const char* pos) const
{
    const Source* const source = m_sources.Find(pos);
    return source == nullptr ? std::string()
                             : what + MakePlace(pos) + "\n" + MakeExcerpt(*source, pos, m_style);
}

/// Where what has no end was opened, and what would mend the error.
std::string Diagnostics::MakeNotes(const ExpansionRun& run, const LexScannerException& error,
                                   const char* pos) const
{
    std::string notes = MakeNote("opened at ", run.OpenedAt(pos));
    if (const xstring hint = run.Hint(error); !hint.empty())
        notes += "hint: " + Show(hint) + "\n";
    return notes;
}

void Diagnostics::Warn(const ExpansionWarning& warning) const
{
    const auto [source, pos] = PlaceOf(warning.m_pos);
    WriteToStandardError(
        Paint(s_bold) + MakePlace(pos) + " : " + Paint(s_magenta) + "warning" + Paint(s_boldAgain) +
        " : " + Show(ViewOf(Shorten(warning.m_text))) + " [" + NameOfWarning(warning.m_kind) + "]" +
        Paint(s_plain) + "\n" + MakeExcerpt(*source, pos, m_style) +
        MakeCallLines(warning.m_callPlaces, warning.m_moreCallPlaces, warning.m_importPlaces));
}

/// "PATH(LINE)"; empty for a position in no source.
std::string Diagnostics::MakePlace(const char* pos) const
{
    const Source* const source = m_sources.Find(pos);
    return source == nullptr
               ? std::string()
               : Show(ViewOf(source->Name())) + "(" + std::to_string(source->Line(pos)) + ")";
}

/// The macros, loops and imports that the error came through.
std::string Diagnostics::MakeCallLines(const std::vector<CallPlace>& calls, ssize_t more,
                                       const std::vector<const char*>& imports) const
{
    std::string lines;
    for (const CallPlace& call : calls)
    {
        const std::string place = MakePlace(call.m_pos);
        if (place.empty())
            continue;
        if (call.m_kind == CallPlace::CALL_LOOP)
            lines += "in round " + std::to_string(call.m_round) + " of the loop at " + place + "\n";
        else
            lines += "called from " + place + "\n";
    }
    if (more > 0)
        lines += "... " + std::to_string(more) + " more\n";
    for (const char* const pos : imports)
        lines += "imported from " + MakePlace(pos) + "\n";
    return lines;
}

/// What is written before a part of the first line.
std::string Diagnostics::Paint(const char* sequence) const
{
    return m_style.m_colour ? sequence : "";
}

std::string Diagnostics::Show(SubString text) const
{
    return m_style.m_escape ? EscapeForTerminal(text) : ToStdString(text);
}

std::string Diagnostics::MakeFirstLines(const LexScannerException& error, const Source& source,
                                        const char* pos) const
{
    const std::string place = source.Name() + "(" + std::to_string(source.Line(pos)) + ") : ";
    const std::string word = "error";
    // Before anything is composed: the message may be most of what there is memory for.
    const std::string message = Shorten(error.m_description);
    LexScannerException located(ViewOf(message), pos);
    located.m_path = xstring(ViewOf(source.Name()));
    located.m_lineNumber = source.Line(pos);
    StringStream os(4096);
    located.Write(os);
    const std::string text = ToStdString(os.GetString());
    const std::string rest = text.substr(place.size() + word.size());
    return Paint(s_bold) + Show(ViewOf(place)) + Paint(s_red) + word + Paint(s_boldAgain) +
           Show(ViewOf(rest)) + Paint(s_plain) + "\n";
}

std::string Diagnostics::MakeImportLines(const Source& source) const
{
    std::string lines;
    const char* pos = source.ImportPosition();
    while (const Source* importer = m_sources.Find(pos))
    {
        lines += "imported from " + MakePlace(pos) + "\n";
        pos = importer->ImportPosition();
    }
    return lines;
}

void ReportToolError(const std::string& message)
{
    const std::string shown =
        isatty(STDERR_FILENO) == 1 ? EscapeForTerminal(ViewOf(message)) : message;
    WriteToStandardError("tlexpand: " + shown + "\n");
}

} // namespace telv::tool
