// The names that expressions know by themselves; see ExpressionFunctions.cpp.
#pragma once

#include "tlUtils/BasicSubString.h"

namespace telv
{

/// Whether `name` is a constant or a function of expressions.
bool IsBuiltIn(SubString name);

} // namespace telv
