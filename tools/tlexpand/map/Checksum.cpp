// SPDX-License-Identifier: MIT
// Sixteen bytes at a time: what a byte does to the sum depends on how many of them are behind it,
// so each has a table of its own, and the effects, which can be looked up at once, are added.
#include "map/Checksum.h"
#include <array>
#include <cstddef>
#include <utility>

namespace telv::tool
{

namespace
{

constexpr size_t s_step = 16;

/// `[k][b]`: the remainder of the byte `b` with `k` bytes of zero behind it.
using Tables = std::array<std::array<uint32_t, 256>, s_step>;

constexpr uint32_t s_polynomial = 0xEDB88320; // Of CRC-32, the lowest power in the highest bit.

constexpr Tables MakeTables()
{
    Tables tables{};
    for (uint32_t byte = 0; byte < 256; ++byte)
    {
        uint32_t rest = byte;
        for (int bit = 0; bit < 8; ++bit)
            rest = (rest >> 1) ^ ((rest & 1) != 0 ? s_polynomial : 0);
        tables[0][byte] = rest;
    }
    for (size_t k = 1; k < tables.size(); ++k)
        for (size_t byte = 0; byte < 256; ++byte)
        {
            const uint32_t rest = tables[k - 1][byte];
            tables[k][byte] = (rest >> 8) ^ tables[0][rest & 0xFF];
        }
    return tables;
}

constexpr Tables s_tables = MakeTables();

uint32_t Byte(const char* p, size_t index)
{
    return static_cast<unsigned char>(p[index]);
}

/// What the byte at `index` of a step does; `sum` goes into the first four.
template <size_t index>
uint32_t Effect([[maybe_unused]] uint32_t sum, const char* p)
{
    uint32_t byte = Byte(p, index);
    if constexpr (index < sizeof sum)
        byte ^= (sum >> (8 * index)) & 0xFF;
    return s_tables[s_step - 1 - index][byte];
}

template <size_t... indexes>
uint32_t AddStep(uint32_t sum, const char* p, std::index_sequence<indexes...>)
{
    return (Effect<indexes>(sum, p) ^ ...);
}

} // namespace

uint32_t AddToCrc32(uint32_t before, SubString text)
{
    uint32_t sum = ~before;
    const char* p = text.begin();
    for (; static_cast<size_t>(text.end() - p) >= s_step; p += s_step)
        sum = AddStep(sum, p, std::make_index_sequence<s_step>());
    for (; p != text.end(); ++p)
        sum = (sum >> 8) ^ s_tables[0][(sum ^ Byte(p, 0)) & 0xFF];
    return ~sum;
}

} // namespace telv::tool
