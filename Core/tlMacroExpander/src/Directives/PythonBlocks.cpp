// SPDX-License-Identifier: MIT
// @runpython: a block of Python statements, expanded before it runs. Its pieces tell which lines of
// the file the lines of what runs come from.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Directives/NestedText.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/UsePythonInside.h"
#include <algorithm>
#include <utility>
#include <vector>

namespace telv
{

namespace
{

/// What tracebacks call a block, and where it stands there.
struct BlockPlace
{
    xstring m_name;
    CodeLines m_lines;
};

BlockPlace PlaceOf(SubString block)
{
    const RunState* const run = RunState::Current();
    SubString origin;
    if (run != nullptr && run->FindOrigin(block.begin(), origin))
        return {"<expanded text>", {}};
    const RunState::KnownText* const text = run == nullptr ? nullptr : run->FindText(block.begin());
    if (text == nullptr)
        return {"<runpython>", {}};
    const ssize_t before = GetLineNumber(text->m_text, block.begin()) - 1;
    return {xstring(text->m_name), {before, {}, text->m_text}};
}

/// For each line of the code the place in `file` that its first visible character came from, or
/// any other character of it; null for a line that has nothing of the file.
std::vector<const char*> PlacesOfLines(SubString code, const OutputPieces& pieces, SubString file)
{
    std::vector<const char*> places;
    const char* place = nullptr;
    bool isVisible = false;
    const char* p = code.begin();
    for (const OutputPiece& piece : pieces)
    {
        const bool isOfFile = piece.in.begin() != nullptr && IsWithin(piece.in, file);
        for (ssize_t i = 0; i < piece.size(); ++i)
        {
            const char c = *p++;
            const bool isBlank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
            if (isOfFile && !isVisible && (place == nullptr || !isBlank))
            {
                place = piece.in.begin() + (piece.out == 0 ? i : 0);
                isVisible = !isBlank;
            }
            if (c != '\n')
                continue;
            places.push_back(std::exchange(place, nullptr));
            isVisible = false;
        }
    }
    places.push_back(place);
    return places;
}

/// Whether the places lie on lines that follow on one another, from the one of `begin` on.
bool FollowOnOneAnother(const std::vector<const char*>& places, const char* begin)
{
    const char* last = begin;
    ssize_t line = 0; // of `last`
    ssize_t wanted = -1;
    for (const char* const place : places)
    {
        ++wanted;
        if (place == nullptr)
            continue;
        if (place < last)
            return false;
        line += std::count(last, place, '\n');
        if (line != wanted)
            return false;
        last = place;
    }
    return true;
}

/// The lines of the places; that of `begin` is `line`. What is not of the file counts with the
/// line before it. Only the part of the file is looked at in which they lie.
std::vector<int> LinesOf(const std::vector<const char*>& places, const char* begin, ssize_t line)
{
    const char* first = begin;
    const char* last = begin;
    for (const char* const place : places)
        if (place != nullptr)
        {
            first = std::min(first, place);
            last = std::max(last, place);
        }
    std::vector<const char*> feeds;
    for (const char* p = first; (p = std::find(p, last, '\n')) != last; ++p)
        feeds.push_back(p);
    const auto feedsBefore = [&](const char* place)
    { return std::lower_bound(feeds.begin(), feeds.end(), place) - feeds.begin(); };
    const ssize_t firstLine = line - feedsBefore(begin);
    std::vector<int> lines;
    for (const char* const place : places)
    {
        if (place != nullptr)
            line = firstLine + feedsBefore(place);
        lines.push_back(static_cast<int>(line));
    }
    return lines;
}

/// The code with its lines moved to column 0, as Python wants them.
xstring AlignedCode(SubString code)
{
    StringStream os(4096);
    WriteSubStringWithAdjustedIndent(os, code, 0);
    os << '\n';
    return os.GetString();
}

} // namespace

void MacroExpander::ProcessRunPythonDirective()
{
    const char* const errorPos = m_str.begin();
    const char* const word = errorPos - SubString("runpython").size();
    CheckPythonAllowed(word);
    const TextBlock block = CutBlock();
    xstring code;
    try
    {
        BlockPlace place = PlaceOf(block.m_text.m_text);
        OutputPieces pieces;
        VarFrame frame(m_vf);
        const SubString file = place.m_lines.m_file;
        ExpandIntoString(frame, block.m_text, block.m_indent, code, file ? &pieces : nullptr);
        if (!code.empty())
        {
            LoadPython(word);
            const char* const begin = block.m_text.m_text.begin();
            const auto places = PlacesOfLines(code, pieces, file);
            if (file && !FollowOnOneAnother(places, begin))
                place.m_lines.m_lines = LinesOf(places, begin, place.m_lines.m_before + 1);
            RunPythonOfFile(place.m_name, place.m_lines, AlignedCode(code), errorPos);
        }
    }
    catch (LexScannerException& e)
    {
        AddErrorContext(e, {"\n    in @runpython()\n", code});
        throw;
    }
    ScanOverWhiteSpaceAfterDirective();
}

} // namespace telv
