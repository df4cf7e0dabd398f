// SPDX-License-Identifier: MIT
// Pieces are in order of output, so a byte is found by halving.
#include "map/OutputMap.h"
#include <algorithm>

namespace telv::tool
{

const char* NameOf(EPieceKind kind)
{
    switch (kind)
    {
    case EPieceKind::Source:
        return "source";
    case EPieceKind::Calculated:
        return "calculated";
    case EPieceKind::Indentation:
        break;
    }
    return "indentation";
}

bool IsCopy(const MapPiece& piece)
{
    return piece.m_kind == EPieceKind::Source && &OriginRange(piece) != &piece.m_from &&
           OriginRange(piece).m_inSize == piece.m_size;
}

const SourceRange& OriginRange(const MapPiece& piece)
{
    if (piece.m_place.IsKnown())
        return piece.m_place;
    return piece.m_copied.IsKnown() ? piece.m_copied : piece.m_from;
}

std::optional<Origin> OriginIn(const MapPiece& piece, ssize_t offset)
{
    const SourceRange& range = OriginRange(piece);
    if (!range.IsKnown())
        return std::nullopt;
    const bool isMade = &range == &piece.m_from;
    const bool isReworded = &range == &piece.m_copied && !IsCopy(piece);
    Origin origin{static_cast<size_t>(range.m_source),
                  range.m_in,
                  range.m_inSize,
                  piece.m_kind,
                  isMade,
                  isReworded,
                  piece.m_chain};
    if (origin.IsCopied())
    {
        origin.m_offset += offset;
        origin.m_size = 1;
    }
    return origin;
}

const MapPiece& OutputMap::PieceAt(ssize_t out) const
{
    const auto next = std::upper_bound(m_pieces.begin(), m_pieces.end(), out,
                                       [](ssize_t offset, const MapPiece& piece)
                                       { return offset < piece.m_out; });
    return *std::prev(next);
}

std::optional<Origin> OutputMap::OriginOf(ssize_t out) const
{
    const MapPiece& piece = PieceAt(out);
    return OriginIn(piece, out - piece.m_out);
}

std::optional<Origin> OutputMap::FirstOrigin(ssize_t begin, ssize_t end) const
{
    while (begin < end)
    {
        if (auto origin = OriginOf(begin))
            return origin;
        const MapPiece& piece = PieceAt(begin);
        begin = piece.m_out + piece.m_size;
    }
    return std::nullopt;
}

std::vector<const MapChain*> OutputMap::StepsOf(ssize_t chain) const
{
    std::vector<const MapChain*> steps;
    while (chain != s_none)
    {
        steps.push_back(&m_chains[static_cast<size_t>(chain)]);
        chain = steps.back()->m_parent;
    }
    return steps;
}

} // namespace telv::tool
