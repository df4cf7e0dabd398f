// SPDX-License-Identifier: MIT
// Tells of a character that the end of a block takes away; see ScanBlock.cpp.
#pragma once

namespace telv
{

/// The bracket `close`, which is not alone on its line, makes the character at `lost` no part of
/// the block.
void NoteLostText(const char* lost, const char* close);

} // namespace telv
