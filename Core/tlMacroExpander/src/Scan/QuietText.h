// SPDX-License-Identifier: MIT
// Passing over text in which no name is bound: most of it is names, blanks and punctuation, which
// then mean nothing, whatever stands beside them.
#pragma once

namespace telv
{

/// The first character of [p, end) that is not quiet: a digit, a quote, a slash, a plus sign, an
/// `@`, or one that begins no token. Looks at 32 at a time where the processor can.
const char* SkipQuietText(const char* p, const char* end);

/// The same, one by one, on every processor.
const char* SkipQuietTextPortably(const char* p, const char* end);

} // namespace telv
