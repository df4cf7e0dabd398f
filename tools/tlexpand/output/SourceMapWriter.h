// SPDX-License-Identifier: MIT
// A source map, version 3, as browsers and JavaScript tools read it.
#pragma once

#include "output/OutputFile.h"
#include "output/WrittenPieces.h"

namespace telv::tool
{

/// How a source map is written.
struct SourceMapStyle
{
    std::optional<std::string> m_file; ///< The output's name, relative to the map; or none.
    /// The directory of the source map and the one that the sources' names are relative to, both
    /// absolute; empty when they are the same.
    std::string m_mapDirectory;
    std::string m_startDirectory;
    bool m_contents = false; ///< With the texts of the sources.
};

/// Writes the map, with a segment for each piece and each line of one. Lines and columns are those
/// of the standard: they count from 0, columns in UTF-16 units. Linear.
void WriteSourceMap(ByteSink& sink, const WrittenOutput& output, const SourceMapStyle& style);

} // namespace telv::tool
