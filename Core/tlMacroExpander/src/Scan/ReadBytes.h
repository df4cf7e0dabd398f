// SPDX-License-Identifier: MIT
// Characters of short texts as one number.
#pragma once

#include "tlUtils/IntTypes.h"
#include <cstddef>
#include <cstring>

namespace telv
{

/// Eight bytes; `n` of them, at most eight, are read.
inline uint64 ReadUpTo8(const char* p, size_t n)
{
    const auto word = [](const char* at)
    {
        uint32 bytes;
        std::memcpy(&bytes, at, sizeof bytes);
        return uint64{bytes};
    };
    const auto byte = [](const char* at) { return uint64{static_cast<unsigned char>(*at)}; };
    if (n >= 4)
        return word(p) << 32 | word(p + n - 4);
    return n == 0 ? 0 : byte(p) << 16 | byte(p + n / 2) << 8 | byte(p + n - 1);
}

} // namespace telv
