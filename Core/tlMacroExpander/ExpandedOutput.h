// SPDX-License-Identifier: MIT
// The output of an expansion and its map back to the source.
//
// All text that an expansion produces goes through one ExpandedOutput. It inserts the destination
// indentation when a line receives its first character, keeps track of the column, and records from
// which source characters each stretch of output came.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/StringExt.h"

namespace telv
{

class LexScannerException;

/// One stretch of output.
///
/// A view of text that was made while expanding is an address to compare, never to read, unless the
/// current ExpansionRun keeps such texts (`m_mappedOutput`).
struct TLEXPANDER_API OutputPiece
{
    SubString in; ///< Source: the characters copied. Calculated: what made the text. Else null.
    ssize_t out;  ///< 0 for a source piece, else the number of characters written.

    /// Characters of output; at least 1.
    ssize_t size() const
    {
        const ssize_t s = out != 0 ? out : in.size();
        TELV_ASSERT_IN("Core/tlMacroExpander/src/ExpandedOutput", s > 0);
        return s;
    }
};

/// The pieces of an output, in order; they tile it without gaps and are never merged.
class TLEXPANDER_API OutputPieces
{
public:
    xvector<OutputPiece> m_pieces;

    const OutputPiece* begin() const { return m_pieces.begin(); }
    const OutputPiece* end() const { return m_pieces.end(); }

    /// Characters of output in all. Linear.
    ssize_t size() const;

    /// The source address of the output character at `pos`: of the character itself in a source
    /// piece, the start of the source range in a calculated one, null in indentation. Linear.
    ///
    /// @throws TelvAssertionError  `pos` is not that of an existing character (the end included).
    const char* MapOutputPositionToAddress(ssize_t pos) const;

    /// Moves the position of `e` from `output`, the expanded text, to the source; a position
    /// elsewhere is left alone.
    void AdjustErrorPosition(LexScannerException& e, SubString output) const;
};

/// Receives the text of an expansion.
class TLEXPANDER_API ExpandedOutput
{
public:
    xostream* m_os;      ///< Never null; not owned.
    ssize_t m_columnPos; ///< Column of the next character; -1 at the start of a line.
    OutputPieces m_pieces;
    ssize_t m_size; ///< Characters written.

    explicit ExpandedOutput(xostream* os);
    ExpandedOutput(const ExpandedOutput&) = delete;
    ExpandedOutput& operator=(const ExpandedOutput&) = delete;

    /// Total size of the recorded pieces. Linear.
    ssize_t size() const;

    /// Writes text of a source, each line indented by `indent` columns.
    void WriteSubStringFromSourceFile(SubString s, ssize_t indent);
    /// Writes computed text that `sSrcFile` (not empty) produced.
    void WriteCalculatedSubString(SubString s, SubString sSrcFile, ssize_t indent);

private:
    void Put(SubString s);
    void AddSourcePiece(const char* p1, const char* p2);
};

/// Maps increasing output positions in linear total time.
class TLEXPANDER_API OutputPiecesMonotonePosMapper
{
public:
    const OutputPieces& m_op; ///< Must outlive the mapper.
    ssize_t m_index;          ///< Piece where the next search starts.
    ssize_t m_offset;         ///< Output position at which that piece begins.

    explicit OutputPiecesMonotonePosMapper(const OutputPieces& op);

    /// As `OutputPieces::MapOutputPositionToAddress`; positions must never decrease.
    const char* MapOutputPositionToAddress(ssize_t pos);
};

static_assert(sizeof(OutputPiece) == 24 && sizeof(OutputPieces) == 24, "no other fields");
static_assert(sizeof(ExpandedOutput) == 48, "no other fields");
static_assert(sizeof(OutputPiecesMonotonePosMapper) == 24, "no other fields");

} // namespace telv
