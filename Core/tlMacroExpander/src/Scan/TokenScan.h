// SPDX-License-Identifier: MIT
// Scanner operations that only this library uses: loops over tokens without a call per token.
#pragma once

#include "tlMacroExpander/src/LSToken.h"

namespace telv
{

/// Reads tokens, comments skipped, up to and including the first one of kind `a` or `b`, and
/// returns that one, or TOKEN_END. `lastEnd` becomes the end of the last token before it; it is
/// left alone when there is none.
///
/// @throws LexScannerException  As LsScanToken.
LSToken ScanToEither(SubString& s, EToken a, EToken b, const char*& lastEnd);

} // namespace telv
