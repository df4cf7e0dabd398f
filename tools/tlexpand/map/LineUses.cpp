// SPDX-License-Identifier: MIT
// A step's parent comes before it, so one pass finds all steps that lie inside others.
#include "map/LineUses.h"
#include <algorithm>

namespace telv::tool
{

namespace
{

/// Something made from a range of no length (a step without a name, say) is at its place.
bool Overlap(const SourceRange& a, const SourceRange& b)
{
    return a.m_source == b.m_source && a.m_in < b.m_in + std::max(b.m_inSize, ssize_t{1}) &&
           b.m_in < a.m_in + std::max(a.m_inSize, ssize_t{1});
}

/// For each step whether it stands in `range` or in an expansion of one that does.
std::vector<bool> FindStepsThrough(const OutputMap& map, const SourceRange& range)
{
    std::vector<bool> isThrough;
    isThrough.reserve(map.m_chains.size());
    for (const MapChain& step : map.m_chains)
        isThrough.push_back(
            Overlap(step.m_place, range) ||
            (step.m_parent != s_none && isThrough[static_cast<size_t>(step.m_parent)]));
    return isThrough;
}

class UseList
{
public:
    std::vector<RangeUse> m_uses;

    void Add(ssize_t begin, ssize_t end, bool isThrough)
    {
        if (begin == end)
            return;
        if (!m_uses.empty() && m_uses.back().m_end == begin &&
            m_uses.back().m_isThrough == isThrough)
            m_uses.back().m_end = end;
        else
            m_uses.push_back({begin, end, isThrough});
    }
};

} // namespace

std::vector<RangeUse> FindUses(const OutputMap& map, const SourceRange& range)
{
    const std::vector<bool> stepsThrough = FindStepsThrough(map, range);
    UseList list;
    for (const MapPiece& piece : map.m_pieces)
    {
        const SourceRange& origin = OriginRange(piece);
        const ssize_t end = piece.m_out + piece.m_size;
        ssize_t from = end; // What comes from the range.
        ssize_t to = end;
        if (origin.IsKnown() && Overlap(origin, range))
        {
            const bool isCopy = IsCopy(piece);
            const ssize_t before = isCopy ? range.m_in - origin.m_in : 0;
            const ssize_t behind = isCopy ? before + range.m_inSize : piece.m_size;
            from = piece.m_out + std::max(before, ssize_t{0});
            to = piece.m_out + std::min(behind, piece.m_size);
        }
        const bool isThrough =
            piece.m_chain != s_none && stepsThrough[static_cast<size_t>(piece.m_chain)];
        if (isThrough)
            list.Add(piece.m_out, from, /*isThrough=*/true);
        list.Add(from, to, /*isThrough=*/false);
        if (isThrough)
            list.Add(to, end, /*isThrough=*/true);
    }
    return list.m_uses;
}

} // namespace telv::tool
