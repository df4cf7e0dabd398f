// SPDX-License-Identifier: MIT
// The output map: for each stretch of what was written, the source that it came from, as JSON.
// docs/map-format.md describes the format.
#pragma once

#include "output/OutputFile.h"
#include "output/WrittenPieces.h"

namespace telv::tool
{

/// How a map is written.
struct MapStyle
{
    /// The output's name as it was given; nothing for standard output, whose map names none.
    std::optional<std::string> m_output;
    /// From the directory of the map to the one that names are relative to; written with the name.
    std::string m_directory;
    bool m_hasSum = false;   ///< Say the sum of the output.
    bool m_joinRuns = false; ///< Copied neighbours that continue each other are one piece.
    bool m_copies = false;   ///< Say where text made while expanding got its characters from.
};

/// Writes the map piece by piece.
void WriteMap(ByteSink& sink, const WrittenOutput& output, const MapStyle& style);

/// The same map as data.
OutputMap MakeOutputMap(const WrittenOutput& output, const MapStyle& style);

} // namespace telv::tool
