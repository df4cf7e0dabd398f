// SPDX-License-Identifier: MIT
// The sum of a text as it is defined: the rest of a division, bit by bit.
#pragma once

#include <cstdint>
#include <string>

namespace telv::test
{

inline uint32_t PlainCrc32(const std::string& text)
{
    uint32_t sum = 0xFFFFFFFF;
    for (const char c : text)
    {
        sum ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1) != 0 ? (sum >> 1) ^ 0xEDB88320 : sum >> 1;
    }
    return sum ^ 0xFFFFFFFF;
}

} // namespace telv::test
