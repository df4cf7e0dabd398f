// SPDX-License-Identifier: MIT
// What is written, piece by piece: the pieces of the expansion, less what is taken out of it (the
// text of imports), with what is put into it (line directives). Every map is made from this walk,
// so all of them describe the same text.
#pragma once

#include "Sources.h"
#include "map/OutputMap.h"
#include "output/TextStream.h"
#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <functional>
#include <string>
#include <vector>

namespace telv::tool
{

/// A change to the expansion: its characters [m_begin, m_end) are replaced by `m_text`. A removal
/// has no text, an insertion no characters.
struct TextEdit
{
    ssize_t m_begin = 0;
    ssize_t m_end = 0;
    std::string m_text;
    SourceRange m_place; ///< What an insertion speaks of.
};

/// A range of a source as a map has it.
SourceRange RangeIn(const Source& source, SubString in);

/// The chains that led to the pieces of an expansion; empty when nobody asked for them.
struct OutputChains
{
    std::vector<MapChain> m_chains;
    std::vector<ssize_t> m_chainOfPiece; ///< For each piece of the expansion: an index or `s_none`.
};

/// An expansion, and how what is written differs from it. Borrows everything.
struct WrittenOutput
{
    const Sources& m_sources;
    const ExpansionRun& m_run;    ///< Knows where text came from that was made while expanding.
    SubString m_text;             ///< The whole expansion,
    const OutputPieces& m_pieces; ///< and its pieces.
    const std::vector<TextEdit>& m_edits; ///< Sorted, disjoint.
    const OutputChains& m_chains;
};

/// A piece with the characters themselves. Valid during the visit.
struct WrittenPiece
{
    MapPiece m_piece;
    SubString m_text;                 ///< What is written; of the expansion or of an edit.
    SubString m_in;                   ///< The place, also in text that was made while expanding.
    const TextEdit* m_edit = nullptr; ///< The edit that the text is of, if it is of one.
};

/// Visits all pieces in order. Linear, but for a look-up of each one's source.
void ForEachWrittenPiece(const WrittenOutput& output,
                         const std::function<void(const WrittenPiece&)>& visit);

/// Bytes that are written.
ssize_t WrittenSize(const WrittenOutput& output);

/// Edits that take `ranges` (sorted, disjoint) out of a text.
std::vector<TextEdit> MakeRemovals(const std::vector<OutputRange>& ranges);

/// The text with its edits, in stretches.
void ForEachStretch(SubString text, const std::vector<TextEdit>& edits,
                    const std::function<void(SubString)>& visit);

} // namespace telv::tool
