// SPDX-License-Identifier: MIT
// Differences between two texts in the unified form of diff.
#pragma once

#include "tlUtils/BasicSubString.h"
#include <string>

namespace telv::tool
{

/// What turns `before` into `after`, with three lines of context; empty when they are equal. The
/// names stand in the two lines at the top, in quotes where `patch` would not find their end
/// otherwise, and behind a tab `afterNote`. A shortest set of changes while there are few of them;
/// beyond, one change from the first difference to the last. Time and memory are bounded by the
/// lines and by the square of that limit.
std::string MakeUnifiedDiff(const std::string& beforeName, SubString before,
                            const std::string& afterName, const std::string& afterNote,
                            SubString after);

} // namespace telv::tool
