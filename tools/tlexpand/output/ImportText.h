// Takes the text of the main file's import directives out of its expansion.
//
// The library leaves `@import "NAME"` where it stands. Where in the output that is, is noted while
// the directives run; nothing is searched for, so text that only looks like an import stays. A line
// on which nothing but blanks is left goes whole, and so does the empty line of an `@importpath`.
#pragma once

#include "tlMacroExpander/ExpandedOutput.h"
#include <vector>

namespace telv::tool
{

/// Characters [m_begin, m_end) of an output.
struct OutputRange
{
    ssize_t m_begin;
    ssize_t m_end;
};

/// Notes where the directives of one text run.
class ImportMarks
{
public:
    /// An `@import` runs now.
    ///
    /// @param source  The text being expanded.
    /// @param pos     The token in it that names the file.
    void NoteImport(const ExpandedOutput& output, SubString source, const char* pos);
    /// An `@importpath` runs now.
    void NoteImportPath(const ExpandedOutput& output);

    /// The ranges of `text`, the finished output that `pieces` describe, that are to go: sorted,
    /// disjoint, not empty.
    std::vector<OutputRange> FindText(const OutputPieces& pieces, SubString text) const;

private:
    struct Mark
    {
        ssize_t m_outputSize;     ///< When the directive ran.
        ssize_t m_calculatedSize; ///< Of the piece just written as the directive; 0 if none was.
        const char* m_sourceEnd;  ///< Where the directive that will be copied ends; or null.
    };

    class PieceWalk;

    static OutputRange Locate(const Mark& mark, PieceWalk& walk, SubString text);

    std::vector<Mark> m_marks;
};

} // namespace telv::tool
