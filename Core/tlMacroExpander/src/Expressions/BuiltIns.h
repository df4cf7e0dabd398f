// SPDX-License-Identifier: MIT
// The names that expressions know by themselves; see ExpressionFunctions.cpp.
#pragma once

#include "tlUtils/BasicSubString.h"
#include <functional>

namespace telv
{

/// Whether `name` is a constant or a function of expressions.
bool IsBuiltIn(SubString name);

/// Calls `visit` with the name of each.
void ForEachBuiltIn(const std::function<void(SubString)>& visit);

} // namespace telv
