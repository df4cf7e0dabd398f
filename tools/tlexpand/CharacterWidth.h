// SPDX-License-Identifier: MIT
// How wide a character stands on a terminal: East Asian ones take two columns, combining ones none.
#pragma once

#include "Utf8.h"

namespace telv::tool
{

/// The columns of a character other than a tab; 1 for bytes that are no UTF-8, and for everything
/// where the system knows no locale C.UTF-8.
int ColumnsOf(const Utf8Character& character);

/// The column behind `character`, which begins at `column`, where tabs go to the next multiple of
/// `tabWidth`. Columns count from 0.
ssize_t ColumnBehind(ssize_t column, const Utf8Character& character, ssize_t tabWidth);

} // namespace telv::tool
