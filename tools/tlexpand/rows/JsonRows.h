// SPDX-License-Identifier: MIT
// Rows of a JSON file: an array of objects or of arrays.
#pragma once

#include "rows/RowWriter.h"

namespace telv::tool
{

/// Gives the rows to `writer`. The first one says which columns there are. Numbers are written as
/// they are in the file; null is empty; an array within a value becomes a list, an object a tuple.
///
/// @throws RowError  The text is no JSON, or no such array; a row has other columns.
void ReadJsonRows(SubString text, RowWriter& writer);

} // namespace telv::tool
