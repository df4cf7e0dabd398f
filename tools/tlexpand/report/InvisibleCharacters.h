// SPDX-License-Identifier: MIT
// Characters that a terminal does not show, or that change how it shows others: what a reader sees
// would not be what the text says.
#pragma once

#include "Utf8.h"

namespace telv::tool
{

/// Whether a well-formed character is a control or format character, a separator of lines, or one
/// that is not shown at all (variation selectors and fillers among them).
bool IsInvisible(SubString character);

} // namespace telv::tool
