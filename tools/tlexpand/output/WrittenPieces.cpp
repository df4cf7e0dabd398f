// SPDX-License-Identifier: MIT
// The pieces are cut at the edits, in one pass over both. What is left of a source piece keeps its
// own part of the source; what is left of a calculated one keeps the whole range.
#include "output/WrittenPieces.h"
#include "Files.h"
#include <algorithm>

namespace telv::tool
{

namespace
{

class PieceWalk
{
public:
    PieceWalk(const WrittenOutput& output, const std::function<void(const WrittenPiece&)>& visit)
        : m_output(output), m_visit(visit), m_edit(output.m_edits.begin())
    {
    }

    void VisitAll();

private:
    void VisitPiece(const OutputPiece& piece);
    void Visit(const OutputPiece& piece, ssize_t from, ssize_t to);
    void VisitInserted(const TextEdit& edit);
    void Send(WrittenPiece& written);
    void SetPlace(MapPiece& piece, SubString in) const;
    void SetCopied(MapPiece& piece, SubString in) const;

    const WrittenOutput& m_output;
    const std::function<void(const WrittenPiece&)>& m_visit;
    std::vector<TextEdit>::const_iterator m_edit;
    ssize_t m_offset = 0;  ///< Of the current piece in the expansion.
    ssize_t m_written = 0; ///< Bytes of what is written, so far.
    size_t m_index = 0;    ///< Of the current piece.
};

void PieceWalk::VisitAll()
{
    for (const OutputPiece& piece : m_output.m_pieces.m_pieces)
    {
        VisitPiece(piece);
        m_offset += piece.size();
        ++m_index;
    }
}

void PieceWalk::VisitPiece(const OutputPiece& piece)
{
    const ssize_t end = m_offset + piece.size();
    ssize_t from = m_offset;
    while (m_edit != m_output.m_edits.end() && m_edit->m_begin < end)
    {
        if (m_edit->m_begin > from)
            Visit(piece, from, m_edit->m_begin);
        // An edit that reaches over several pieces inserts before the first of them.
        if (m_edit->m_begin >= m_offset && !m_edit->m_text.empty())
            VisitInserted(*m_edit);
        from = std::max(from, std::min(m_edit->m_end, end));
        if (m_edit->m_end > end)
            break;
        ++m_edit;
    }
    if (from < end)
        Visit(piece, from, end);
}

/// A made text (rows of data) is no source: its place in the file is where it came from.
void PieceWalk::SetPlace(MapPiece& piece, SubString in) const
{
    const Source* source = m_output.m_sources.Find(in.begin());
    if (source != nullptr && !source->IsMade())
    {
        piece.m_place = RangeIn(*source, in);
        return;
    }
    piece.m_place.m_inSize = in.size();
    SubString maker(in.begin(), in.begin());
    if (source == nullptr && m_output.m_run.FindOrigin(in.begin(), maker))
    {
        source = m_output.m_sources.Find(maker.begin());
        if (piece.m_kind == EPieceKind::Source)
            SetCopied(piece, in);
    }
    if (source != nullptr)
        piece.m_from = RangeIn(*source, maker);
}

/// Where text that was made while expanding got its characters from. Of rows of data, whose values
/// may be written in other ways in their file, it is the value.
void PieceWalk::SetCopied(MapPiece& piece, SubString in) const
{
    const char* const given = m_output.m_run.FindCopied(in);
    const Source* const source = m_output.m_sources.Find(given);
    if (source == nullptr)
        return;
    piece.m_copied = RangeIn(*source, SubString(given, given + in.size()));
    const SubString rest(source->File().begin() + piece.m_copied.m_in, source->File().end());
    const bool isAlike = in.size() <= rest.size() && std::equal(in.begin(), in.end(), rest.begin());
    if (source->IsMade() && !isAlike)
        piece.m_copied.m_inSize = 0;
}

/// The characters [from, to) of the expansion, which lie in the piece.
void PieceWalk::Visit(const OutputPiece& piece, ssize_t from, ssize_t to)
{
    WrittenPiece written;
    written.m_text = SubString(m_output.m_text.begin() + from, m_output.m_text.begin() + to);
    written.m_in = piece.in;
    if (piece.out == 0)
        written.m_in =
            SubString(piece.in.begin() + (from - m_offset), piece.in.begin() + (to - m_offset));
    else
        written.m_piece.m_kind =
            piece.in.begin() == nullptr ? EPieceKind::Indentation : EPieceKind::Calculated;
    SetPlace(written.m_piece, written.m_in);
    if (m_index < m_output.m_chains.m_chainOfPiece.size())
        written.m_piece.m_chain = m_output.m_chains.m_chainOfPiece[m_index];
    Send(written);
}

void PieceWalk::VisitInserted(const TextEdit& edit)
{
    WrittenPiece written;
    written.m_text = ViewOf(edit.m_text);
    written.m_edit = &edit;
    written.m_piece.m_kind = EPieceKind::Calculated;
    written.m_piece.m_place = edit.m_place;
    Send(written);
}

void PieceWalk::Send(WrittenPiece& written)
{
    written.m_piece.m_out = m_written;
    written.m_piece.m_size = written.m_text.size();
    m_written += written.m_text.size();
    m_visit(written);
}

} // namespace

SourceRange RangeIn(const Source& source, SubString in)
{
    return {static_cast<ssize_t>(source.Index()), source.OffsetInFile(in.begin()), in.size()};
}

void ForEachWrittenPiece(const WrittenOutput& output,
                         const std::function<void(const WrittenPiece&)>& visit)
{
    PieceWalk(output, visit).VisitAll();
}

ssize_t WrittenSize(const WrittenOutput& output)
{
    ssize_t size = output.m_text.size();
    for (const TextEdit& edit : output.m_edits)
        size += static_cast<ssize_t>(edit.m_text.size()) - (edit.m_end - edit.m_begin);
    return size;
}

std::vector<TextEdit> MakeRemovals(const std::vector<OutputRange>& ranges)
{
    std::vector<TextEdit> edits;
    edits.reserve(ranges.size());
    for (const OutputRange& range : ranges)
        edits.push_back({range.m_begin, range.m_end, "", SourceRange()});
    return edits;
}

void ForEachStretch(SubString text, const std::vector<TextEdit>& edits,
                    const std::function<void(SubString)>& visit)
{
    const char* p = text.begin();
    for (const TextEdit& edit : edits)
    {
        visit(SubString(p, text.begin() + edit.m_begin));
        visit(ViewOf(edit.m_text));
        p = text.begin() + edit.m_end;
    }
    visit(SubString(p, text.end()));
}

} // namespace telv::tool
