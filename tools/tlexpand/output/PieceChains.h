// SPDX-License-Identifier: MIT
// The chains that the library recorded, as the map has them.
#pragma once

#include "Sources.h"
#include "output/WrittenPieces.h"
#include "tlMacroExpander/ChainRecorder.h"

namespace telv::tool
{

/// The steps and pieces of `recorder`, with places in `sources`.
OutputChains MakeOutputChains(const ChainRecorder& recorder, const Sources& sources);

} // namespace telv::tool
