// SPDX-License-Identifier: MIT
// Which of the ways that are only there for speed are taken, of those that can be switched.
//
// Each has a plain way beside it that does the same, byte for byte. Tests take them one by one and
// compare (tests/model). What has no bit here, and how it is tested, is in docs/design.md.
#pragma once

namespace telv::FastPaths
{

enum : unsigned
{
    DIRECT_EXPRESSIONS = 1, ///< Expressions are evaluated without being expanded into a string.
    PLAIN_STRETCHES = 2,    ///< Text that means nothing is passed over in stretches; so are tokens
                            ///< that are no bracket where one is looked for.
    SCANNED_TEXTS = 4,      ///< What a scan of a text found is kept for the next expansion.
    PLANS = 8,              ///< What a directive or a call in such a text asks for is kept too.
    WORDS = 16,             ///< A macro that is one word is written without expanding it.
    WIDE_INSTRUCTIONS = 32, ///< Text is looked at 32 characters at a time.
    ROUNDS = 64,            ///< A round of a @for takes over the frame of the one before.
    END                     ///< Above the last one.
};

inline constexpr unsigned s_all = ~0u;

/// Those that are taken, on all threads. Changed by `Take` only.
extern unsigned s_taken;

/// Takes these ways and no others. For tests: to be called while nothing is expanded.
void Take(unsigned ways);

inline bool IsOn(unsigned way)
{
    return (s_taken & way) != 0;
}

} // namespace telv::FastPaths
