// SPDX-License-Identifier: MIT
// One pass over the steps of the chains, one over the pieces.
#include "output/MapCheck.h"
#include "Files.h"
#include <algorithm>

namespace telv::tool
{

namespace
{

/// Whether what was copied into a text that was made stands where it is said to.
bool IsCopiedRight(const WrittenPiece& written, const Sources& sources)
{
    const SourceRange& copied = written.m_piece.m_copied;
    if (copied.m_inSize == 0)
        return true;
    const SubString file = sources[static_cast<size_t>(copied.m_source)].File();
    if (copied.m_in > file.size() - copied.m_inSize)
        return false;
    const char* const begin = file.begin() + copied.m_in;
    return written.m_text == SubString(begin, begin + copied.m_inSize);
}

bool IsIndexOrNone(ssize_t index, size_t count)
{
    return index == s_none || (index >= 0 && static_cast<size_t>(index) < count);
}

bool IsInside(const SourceRange& range, const Sources& sources)
{
    if (!IsIndexOrNone(range.m_source, sources.Count()))
        return false;
    if (!range.IsKnown())
        return true;
    const ssize_t size = sources[static_cast<size_t>(range.m_source)].File().size();
    return range.m_in >= 0 && range.m_in <= size && range.m_inSize <= size - range.m_in;
}

/// What is wrong with the steps that led to the pieces.
std::string FindChainError(const WrittenOutput& output)
{
    const std::vector<MapChain>& steps = output.m_chains.m_chains;
    for (size_t i = 0; i < steps.size(); ++i)
    {
        const std::string step = "the step " + std::to_string(i);
        if (!IsIndexOrNone(steps[i].m_parent, i))
            return step + " has a parent that does not come before it";
        if (!IsInside(steps[i].m_place, output.m_sources))
            return step + " stands outside its source";
    }
    const size_t chains = output.m_chains.m_chainOfPiece.size();
    const auto pieces = static_cast<size_t>(output.m_pieces.m_pieces.size());
    if (chains == 0 || chains == pieces)
        return "";
    return "there are the chains of " + std::to_string(chains) + " pieces, and " +
           std::to_string(pieces) + " pieces";
}

/// What is wrong with one piece, whose text is known to be the one that is written.
const char* FindPieceError(const WrittenPiece& written, const WrittenOutput& output)
{
    const MapPiece& piece = written.m_piece;
    if (!IsIndexOrNone(piece.m_chain, output.m_chains.m_chains.size()))
        return "has a chain that does not exist";
    const bool hasOrigin = piece.m_place.IsKnown() || piece.m_from.IsKnown();
    if (piece.m_size <= 0)
        return "is empty";
    switch (piece.m_kind)
    {
    case EPieceKind::Source:
        if (!hasOrigin)
            return "was copied from an unknown text";
        return written.m_text == written.m_in && IsCopiedRight(written, output.m_sources)
                   ? nullptr
                   : "differs from its source";
    case EPieceKind::Calculated:
        return hasOrigin ? nullptr : "has no origin";
    case EPieceKind::Indentation:
        break;
    }
    const bool isBlank =
        std::all_of(written.m_text.begin(), written.m_text.end(), [](char c) { return c == ' '; });
    return isBlank ? nullptr : "is indentation that is not blank";
}

} // namespace

std::string FindMapError(const WrittenOutput& output)
{
    std::string error = FindChainError(output);
    if (!error.empty())
        return error;
    const ssize_t pieces = output.m_pieces.size();
    if (pieces != output.m_text.size())
        return "the pieces hold " + std::to_string(pieces) + " bytes, the text " +
               std::to_string(output.m_text.size());
    ssize_t offset = 0;
    const auto check = [&](const WrittenPiece& written)
    {
        const char* const fault = FindPieceError(written, output);
        if (fault != nullptr && error.empty())
            error = "the piece at " + std::to_string(written.m_piece.m_out) + " " + fault;
        offset += written.m_piece.m_size;
    };
    ForEachWrittenPiece(output, check);
    if (error.empty() && offset != WrittenSize(output))
        error = "the pieces end at " + std::to_string(offset) + ", the text at " +
                std::to_string(WrittenSize(output));
    return error;
}

} // namespace telv::tool
