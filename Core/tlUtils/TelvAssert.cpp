// SPDX-License-Identifier: MIT
// Composes the text of a failed assertion. Uses the standard string only: assertions of the text
// types themselves end here.
#include "tlUtils/TelvAssert.h"
#include "tlUtils/IException.h"
#include <string>

namespace telv
{

void ThrowTelvAssertionError(const char* expr, const char* file, int line)
{
    throw TelvAssertionError("Assertion failed: " + std::string(expr) + " at " + file + "(" +
                             std::to_string(line) + ")");
}

} // namespace telv
