// SPDX-License-Identifier: MIT
// The laws that every map keeps, checked on the pieces of a run.
#pragma once

#include "output/WrittenPieces.h"

namespace telv::tool
{

/// What is wrong with the map of `output`; empty when nothing is. The pieces must tile the text
/// that is written, copied ones must equal their source, each calculated one must have an
/// origin, and a chain must be a way outwards through places of the sources.
std::string FindMapError(const WrittenOutput& output);

} // namespace telv::tool
