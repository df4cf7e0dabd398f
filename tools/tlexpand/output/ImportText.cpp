// An import named by a string is copied after its directive has run, with the white space before it
// (line ends of two characters among it): it ends where a source piece ends with the string. An
// import named by an expression has just been written, as the last piece. In both, what is to go
// begins at the first character that is no white space.
#define TELV_SOURCE_PATH "tools/tlexpand/ImportText"

#include "output/ImportText.h"
#include "Utf8.h"
#include "tlMacroExpander/src/LSToken.h"
#include <algorithm>
#include <cstring>

namespace telv::tool
{

namespace
{

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

bool IsAllBlank(SubString text, ssize_t begin, ssize_t end)
{
    return std::all_of(text.begin() + begin, text.begin() + end, IsBlank);
}

ssize_t LineStart(SubString text, ssize_t pos)
{
    while (pos > 0 && text.begin()[pos - 1] != '\n')
        --pos;
    return pos;
}

/// The offset of the line feed that ends the line, or the end of the text.
ssize_t LineEnd(SubString text, ssize_t pos)
{
    if (pos == text.size())
        return pos;
    const void* const found =
        std::memchr(text.begin() + pos, '\n', static_cast<size_t>(text.size() - pos));
    return found == nullptr ? text.size() : static_cast<const char*>(found) - text.begin();
}

/// Whether the line [begin, end) is blank but for the ranges on it.
bool IsBlankBetween(SubString text, ssize_t begin, ssize_t end, const OutputRange* first,
                    const OutputRange* last)
{
    for (const OutputRange* range = first; range != last; ++range)
    {
        if (!IsAllBlank(text, begin, range->m_begin))
            return false;
        begin = range->m_end;
    }
    return IsAllBlank(text, begin, end);
}

/// Widens the ranges on lines that would be blank without them to the whole lines.
std::vector<OutputRange> TakeBlankLines(const std::vector<OutputRange>& ranges, SubString text)
{
    std::vector<OutputRange> taken;
    const ssize_t textStart = WithoutByteOrderMark(text).begin() - text.begin();
    const OutputRange* const end = ranges.data() + ranges.size();
    for (const OutputRange* first = ranges.data(); first != end;)
    {
        const ssize_t lineStart = std::max(LineStart(text, first->m_begin), textStart);
        ssize_t lineEnd = LineEnd(text, first->m_end);
        const OutputRange* last = first + 1;
        for (; last != end && last->m_begin <= lineEnd; ++last)
            if (last->m_end > lineEnd)
                lineEnd = LineEnd(text, last->m_end);
        if (IsBlankBetween(text, lineStart, lineEnd, first, last))
            taken.push_back({lineStart, std::min(lineEnd + 1, text.size())});
        else
            taken.insert(taken.end(), first, last);
        first = last;
    }
    std::erase_if(taken, [](const OutputRange& range) { return range.m_begin == range.m_end; });
    return taken;
}

} // namespace

/// Goes through the pieces once, forwards.
class ImportMarks::PieceWalk
{
public:
    explicit PieceWalk(const OutputPieces& pieces)
        : m_piece(pieces.m_pieces.begin()), m_end(pieces.m_pieces.end())
    {
    }

    /// Output offset of the end of the first piece, not before `offset`, whose source ends with
    /// `sourceEnd`; -1 when there is none.
    ssize_t FindSourceEnd(ssize_t offset, const char* sourceEnd)
    {
        while (m_piece != m_end)
        {
            const OutputPiece& piece = *m_piece++;
            const ssize_t begin = m_offset;
            m_offset += piece.size();
            if (begin >= offset && piece.out == 0 && piece.in.end() == sourceEnd)
                return m_offset;
        }
        return -1;
    }

private:
    const OutputPiece* m_piece;
    const OutputPiece* m_end;
    ssize_t m_offset = 0;
};

void ImportMarks::NoteImport(const ExpandedOutput& output, SubString source, const char* pos)
{
    Mark mark = {output.m_size, 0, nullptr};
    SubString rest(pos, source.end());
    const LSToken token = LsScanToken(rest, false);
    if (token.m_type == TOKEN_LEFT_PAREN)
        mark.m_calculatedSize = output.m_pieces.m_pieces.back().size();
    else
        mark.m_sourceEnd = token.m_str.end();
    m_marks.push_back(mark);
}

void ImportMarks::NoteImportPath(const ExpandedOutput& output)
{
    m_marks.push_back({output.m_size, 0, nullptr});
}

OutputRange ImportMarks::Locate(const Mark& mark, PieceWalk& walk, SubString text)
{
    OutputRange range = {mark.m_outputSize - mark.m_calculatedSize, mark.m_outputSize};
    if (mark.m_sourceEnd != nullptr)
        range.m_end = walk.FindSourceEnd(mark.m_outputSize, mark.m_sourceEnd);
    TELV_ASSERT(range.m_begin <= range.m_end);
    SubString rest(text.begin() + range.m_begin, text.begin() + range.m_end);
    ScanWhiteSpace(rest);
    range.m_begin = rest.begin() - text.begin();
    return range;
}

std::vector<OutputRange> ImportMarks::FindText(const OutputPieces& pieces, SubString text) const
{
    std::vector<OutputRange> ranges;
    PieceWalk walk(pieces);
    for (const Mark& mark : m_marks)
        ranges.push_back(Locate(mark, walk, text));
    return TakeBlankLines(ranges, text);
}

} // namespace telv::tool
