// SPDX-License-Identifier: MIT
// One pass over the pieces beside one over the text.
#include "output/MapCheck.h"
#include "Files.h"
#include <algorithm>
#include <cstring>

namespace telv::tool
{

namespace
{

bool IsEqual(SubString a, SubString b)
{
    return a.size() == b.size() &&
           std::memcmp(a.begin(), b.begin(), static_cast<size_t>(a.size())) == 0;
}

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
    return IsEqual(written.m_text, SubString(begin, begin + copied.m_inSize));
}

/// What is wrong with one piece, whose text is known to be the one that is written.
const char* FindPieceError(const WrittenPiece& written, const Sources& sources)
{
    const MapPiece& piece = written.m_piece;
    const bool hasOrigin = piece.m_place.IsKnown() || piece.m_from.IsKnown();
    if (piece.m_size <= 0)
        return "is empty";
    switch (piece.m_kind)
    {
    case EPieceKind::Source:
        if (!hasOrigin)
            return "was copied from an unknown text";
        return IsEqual(written.m_text, written.m_in) && IsCopiedRight(written, sources)
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
    std::string error;
    const ssize_t pieces = output.m_pieces.size();
    if (pieces != output.m_text.size())
        return "the pieces hold " + std::to_string(pieces) + " bytes, the text " +
               std::to_string(output.m_text.size());
    ssize_t offset = 0;
    const auto check = [&](const WrittenPiece& written)
    {
        const char* const fault = written.m_piece.m_out == offset
                                      ? FindPieceError(written, output.m_sources)
                                      : "does not begin where the last one ends";
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
