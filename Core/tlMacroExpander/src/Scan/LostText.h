// SPDX-License-Identifier: MIT
// Tells of a character that the end of a block takes away; see ScanBlock.cpp. The run
// keeps it, so it is defined in Run/Watch.cpp.
#pragma once

namespace telv
{

/// The bracket `close`, which is not alone on its line, makes the character at `lost` no part of
/// the block.
void NoteLostText(const char* lost, const char* close);

} // namespace telv
