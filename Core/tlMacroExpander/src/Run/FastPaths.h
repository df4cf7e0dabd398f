// Which of the ways that are only there for speed are taken.
//
// Each has a plain way beside it that does the same, byte for byte. A build with TELV_FAST_PATHS=0
// has only the plain ones, and tests compare the two.
#pragma once

#ifndef TELV_FAST_PATHS
#define TELV_FAST_PATHS ~0u
#endif

namespace telv::FastPaths
{

enum : unsigned
{
    DIRECT_EXPRESSIONS = 1, ///< Expressions are evaluated without being expanded into a string.
    PLAIN_STRETCHES = 2,    ///< Text that means nothing is passed over in stretches.
    SCANNED_TEXTS = 4,      ///< What a scan of a text found is kept for the next expansion.
    PLANS = 8,              ///< What a directive or a call in such a text asks for is kept too.
    WORDS = 16,             ///< A macro that is one word is written without expanding it.
    WIDE_INSTRUCTIONS = 32  ///< Text is looked at 32 characters at a time.
};

/// Whether a way is taken in this build.
constexpr bool IsOn(unsigned way)
{
    return (static_cast<unsigned>(TELV_FAST_PATHS) & way) != 0;
}

} // namespace telv::FastPaths
