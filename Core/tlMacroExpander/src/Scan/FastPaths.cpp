// SPDX-License-Identifier: MIT
// All ways are taken, unless a test says otherwise.
#include "tlMacroExpander/src/Scan/FastPaths.h"

namespace telv::FastPaths
{

constinit unsigned s_taken = s_all;

void Take(unsigned ways)
{
    s_taken = ways;
}

} // namespace telv::FastPaths
