// SPDX-License-Identifier: MIT
// Mapping positions of the output back to addresses in the source.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/ExpandedOutput"

#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/src/LSToken.h"

namespace telv
{

namespace
{

const char* AddressInPiece(const OutputPiece& piece, ssize_t offset)
{
    return piece.out != 0 ? piece.in.begin() : piece.in.begin() + offset;
}

} // namespace

ssize_t OutputPieces::size() const
{
    ssize_t total = 0;
    for (const OutputPiece& piece : m_pieces)
        total += piece.size();
    return total;
}

const char* OutputPieces::MapOutputPositionToAddress(ssize_t pos) const
{
    TELV_ASSERT(0 <= pos && pos <= size());
    ssize_t offset = 0;
    for (const OutputPiece& piece : m_pieces)
    {
        TELV_ASSERT(offset <= pos);
        const ssize_t pieceSize = piece.size();
        if (pos < offset + pieceSize)
            return AddressInPiece(piece, pos - offset);
        offset += pieceSize;
    }
    TELV_ASSERT(offset == size());
    TELV_ASSERT(pos == offset);
    // The end has no character that could have come from anywhere.
    TELV_ASSERT(0);
    return nullptr;
}

void OutputPieces::AdjustErrorPosition(LexScannerException& e, SubString output) const
{
    if (e.m_pos != nullptr && output.begin() <= e.m_pos && e.m_pos < output.end())
        e.m_pos = MapOutputPositionToAddress(e.m_pos - output.begin());
}

OutputPiecesMonotonePosMapper::OutputPiecesMonotonePosMapper(const OutputPieces& op)
    : m_op(op), m_index(0), m_offset(0)
{
}

const char* OutputPiecesMonotonePosMapper::MapOutputPositionToAddress(ssize_t pos)
{
    TELV_ASSERT(0 <= m_index && m_index <= m_op.m_pieces.size());
    TELV_ASSERT(0 <= m_offset);
    TELV_ASSERT(m_offset <= pos);
    for (; m_index < m_op.m_pieces.size(); ++m_index)
    {
        TELV_ASSERT(m_offset <= pos);
        const OutputPiece& piece = m_op.m_pieces[m_index];
        const ssize_t pieceSize = piece.size();
        if (pos < m_offset + pieceSize)
            return AddressInPiece(piece, pos - m_offset);
        m_offset += pieceSize;
    }
    TELV_ASSERT(m_offset == m_op.size());
    TELV_ASSERT(pos == m_offset);
    TELV_ASSERT(0);
    return nullptr;
}

} // namespace telv
