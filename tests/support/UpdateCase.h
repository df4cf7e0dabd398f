// SPDX-License-Identifier: MIT
// Rewrites the expectation of a case from what the built tool does.
#pragma once

#include "support/TestCase.h"

#include <string>

namespace telv::test
{

/// Runs the case with the tool and writes its expectation anew: ".out" or ".err", ".print" when
/// something is printed, ".map" when there is one. Files that no longer apply go.
///
/// @param report  Receives the differences to what was there, for the author to read.
/// @return        False when nothing was written because the tool ended in another way than with
///                status 0 or 1; `report` says how.
bool UpdateCase(const TestCase& testCase, std::string& report);

} // namespace telv::test
