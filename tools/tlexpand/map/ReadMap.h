// SPDX-License-Identifier: MIT
// Reading a map file.
#pragma once

#include "map/OutputMap.h"
#include "tlUtils/StringExt.h"
#include <stdexcept>

namespace telv::tool
{

/// A map that can't be used; the text says which and why. Ends a run with status 2.
class MapError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The map that `json` holds. Everything that the format demands is checked, so that the map's own
/// functions can rely on it: pieces tile the output, indexes exist, a chain's parent comes before
/// it.
///
/// @param name  Of the file, for errors.
/// @throws MapError
OutputMap ReadMap(SubString json, const std::string& name);

} // namespace telv::tool
