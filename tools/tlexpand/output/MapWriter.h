// The output map: for each stretch of what was written, the source that it came from, as JSON.
#pragma once

#include "input/Sources.h"
#include "output/OutputFile.h"
#include "output/TextStream.h"
#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/ExpansionRun.h"

namespace telv::tool
{

/// What the map describes.
struct MappedOutput
{
    const Sources& m_sources;
    const ExpansionRun& m_run; ///< Knows where text came from that was made while expanding.
    const OutputPieces& m_pieces;
    const std::vector<OutputRange>& m_removed; ///< Parts of the output that were not written.
};

/// Writes the map piece by piece. Linear in the pieces, but for a look-up of each one's source.
void WriteMap(ByteSink& sink, const MappedOutput& output);

} // namespace telv::tool
