// SPDX-License-Identifier: MIT
// The map from an output to its sources: pieces that tile the output, each with the place that it
// came from, and the chains of expansions that led there.
//
// Offsets and sizes are bytes. Plain data that owns everything; made by an expansion (MapWriter.h)
// or read from a file (ReadMap.h).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace telv::tool
{

/// Stands for "none" in an index or offset.
constexpr ssize_t s_none = -1;

enum class EPieceKind
{
    Source,      ///< Copied.
    Calculated,  ///< Made by a directive or a name.
    Indentation, ///< Added.
};

/// The word of the map file for a kind.
const char* NameOf(EPieceKind kind);

/// A range of a source; `m_source` is `s_none` when it lies in none, and then `m_in` too.
struct SourceRange
{
    ssize_t m_source = s_none;
    ssize_t m_in = s_none;
    ssize_t m_inSize = 0;

    bool IsKnown() const { return m_source != s_none; }
    bool operator==(const SourceRange&) const = default;
};

/// One stretch of output.
struct MapPiece
{
    EPieceKind m_kind = EPieceKind::Source;
    ssize_t m_out = 0;
    ssize_t m_size = 0;
    SourceRange m_place;
    SourceRange m_from; ///< What made the text that the place lies in, when that is no source.
    /// Where the characters were copied into such a text from. Its size is that of the piece, or 0
    /// where they stand there in other words: then it is where these begin.
    SourceRange m_copied;
    ssize_t m_chain = s_none;
};

/// One step on the way to a piece: an invocation, a round of a loop, a directive, an import.
struct MapChain
{
    std::string m_kind; ///< "macro", "loop", "directive", "import", ...
    std::string m_name;
    SourceRange m_place;       ///< Where the step was taken.
    ssize_t m_round = s_none;  ///< Of a loop, from 1.
    ssize_t m_parent = s_none; ///< The step around it: an earlier one of the list.
};

/// Where one byte of output came from.
struct Origin
{
    size_t m_source = 0;
    ssize_t m_offset = 0;
    ssize_t m_size =
        1; ///< Of what made the byte: 1 for a copied one, else of the directive or name.
    EPieceKind m_kind = EPieceKind::Source;
    bool m_isMade = false;     ///< Copied, but from text made while expanding: this is its maker.
    bool m_isReworded = false; ///< Copied, but it stands here in other words.
    ssize_t m_chain = s_none;

    bool IsCopied() const { return m_kind == EPieceKind::Source && !m_isMade && !m_isReworded; }
};

struct OutputMap
{
    static constexpr int s_version = 1;

    std::optional<std::string> m_output;
    /// From the directory of the map's file to the one that relative names are meant from; empty
    /// when it is not known, which counts as the current one.
    std::string m_directory;
    std::vector<std::string> m_sources;
    ssize_t m_size = 0;
    std::optional<uint32_t> m_crc32; ///< Of the output; a map need not say it.
    std::vector<MapPiece> m_pieces;
    std::vector<MapChain> m_chains;

    /// The piece that holds the output byte `out`, from 0 to `m_size - 1`. Logarithmic.
    const MapPiece& PieceAt(ssize_t out) const;
    /// Where that byte came from; nothing for indentation and for what lies in no source.
    std::optional<Origin> OriginOf(ssize_t out) const;
    /// The first byte of output in [begin, end) that has an origin, and that origin.
    std::optional<Origin> FirstOrigin(ssize_t begin, ssize_t end) const;
    /// The steps from the innermost outwards that lead to `chain`, which may be `s_none`.
    std::vector<const MapChain*> StepsOf(ssize_t chain) const;
};

/// The best that is known of where a piece came from: its place, where it was copied from into a
/// text that was made, or what made that. May be unknown.
const SourceRange& OriginRange(const MapPiece& piece);
/// Whether the bytes of the piece are those of that range, one by one.
bool IsCopy(const MapPiece& piece);

/// The origin of the byte `offset` of a piece.
std::optional<Origin> OriginIn(const MapPiece& piece, ssize_t offset);

} // namespace telv::tool
