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

/// So many steps of a chain are shown, as many as of the calls on the way to an error.
constexpr size_t s_mostStepsShown = 10;

/// What stands in place of the others: "... 7 more".
std::string DescribeMoreSteps(size_t count);

/// "copied from here" and the like: what an origin is to its output.
const char* DescribeOrigin(const Origin& origin);

} // namespace telv::tool
