// SPDX-License-Identifier: MIT
// What Python code prints is counted like the output of an expansion.
#pragma once

#ifdef TELV_PYTHON_ENABLED

namespace telv
{

/// @throws ExpansionLimitException  Code of the current run has printed too much; at `errorPos`.
void CheckPrinted(const char* errorPos);

} // namespace telv

#endif
