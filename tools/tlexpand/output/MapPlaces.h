// SPDX-License-Identifier: MIT
// Where a map file lies and how the names in it are found from there.
#pragma once

#include "options/Options.h"
#include "output/MapWriter.h"
#include "output/SourceMapWriter.h"

namespace telv::tool
{

/// The styles of the maps, as far as the options want them. The map names its output when that has
/// a name.
MapStyle MakeMapStyle(const ExpandOptions& options);
SourceMapStyle MakeSourceMapStyle(const ExpandOptions& options);

} // namespace telv::tool
