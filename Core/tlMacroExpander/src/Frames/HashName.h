// SPDX-License-Identifier: MIT
// The hash of names. It differs from process to process, so that no text can choose names that
// collide, and takes about a nanosecond for a word of eight letters.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlMacroExpander/src/Scan/ReadBytes.h"
#include "tlUtils/BasicSubString.h"
#include <cstring>

namespace telv
{

/// Both factors hold what a text cannot know: it cannot make the product come out as it likes.
inline uint64 MultiplyFold(uint64 a, uint64 b)
{
    __extension__ typedef unsigned __int128 uint128;
    const uint128 product = static_cast<uint128>(a) * b;
    return static_cast<uint64>(product) ^ static_cast<uint64>(product >> 64);
}

/// Its address is the seed: where a program is loaded is random.
extern const char s_placeOfSeed;

TELV_WRAPS inline uint64 HashName(SubString name)
{
    const uint64 seed = reinterpret_cast<uint64>(&s_placeOfSeed) * 0x9e3779b97f4a7c15UL;
    const uint64 secret = seed ^ 0xa0761d6478bd642fUL;
    const char* p = name.begin();
    size_t n = static_cast<size_t>(name.size());
    uint64 hash = seed ^ n;
    for (; n > 8; n -= 8, p += 8)
    {
        uint64 word;
        std::memcpy(&word, p, sizeof word);
        hash = MultiplyFold(word ^ secret, hash ^ seed);
    }
    return MultiplyFold(ReadUpTo8(p, n) ^ secret, hash ^ (seed >> 7));
}

} // namespace telv
