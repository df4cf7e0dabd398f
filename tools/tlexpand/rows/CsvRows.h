// SPDX-License-Identifier: MIT
// Rows of a CSV file, as RFC 4180 has them.
#pragma once

#include "rows/RowWriter.h"

namespace telv::tool
{

/// Gives the rows behind the first, which names the columns, to `writer`. An empty line is a row in
/// a file of one column, and nothing elsewhere.
///
/// @throws RowError  The text is no CSV, no UTF-8, or a row has another number of values.
void ReadCsvRows(SubString text, RowWriter& writer);

} // namespace telv::tool
