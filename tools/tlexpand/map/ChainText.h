// SPDX-License-Identifier: MIT
// The words for a step of a chain, the same in every command.
#pragma once

#include "map/OutputMap.h"
#include <string>

namespace telv::tool
{

/// "in expansion of macro 'pair'", "in round 2 of the loop", "in directive '@if'", "imported as
/// 'lib.tl'"; for a kind that this version does not know, "in KIND 'NAME'".
std::string DescribeStep(const MapChain& step);

/// "copied from here" and the like: what an origin is to its output.
const char* DescribeOrigin(const Origin& origin);

} // namespace telv::tool
