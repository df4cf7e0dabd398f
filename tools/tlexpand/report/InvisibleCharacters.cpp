// SPDX-License-Identifier: MIT
// The ranges are those of Unicode 15 for the general categories Cc, Cf, Zl and Zp and for the
// property Default_Ignorable_Code_Point, joined where only unassigned characters lie between.
#include "report/InvisibleCharacters.h"
#include "Utf8.h"
#include <algorithm>
#include <iterator>

namespace telv::tool
{

namespace
{

struct Range
{
    char32_t m_first;
    char32_t m_last;
};

// In order.
constexpr Range s_invisible[] = {
    {0x0000, 0x001f},   {0x007f, 0x009f},   {0x00ad, 0x00ad},   {0x034f, 0x034f},
    {0x0600, 0x0605},   {0x061c, 0x061c},   {0x06dd, 0x06dd},   {0x070f, 0x070f},
    {0x0890, 0x0891},   {0x08e2, 0x08e2},   {0x115f, 0x1160},   {0x17b4, 0x17b5},
    {0x180b, 0x180f},   {0x200b, 0x200f},   {0x2028, 0x202e},   {0x2060, 0x206f},
    {0x3164, 0x3164},   {0xfe00, 0xfe0f},   {0xfeff, 0xfeff},   {0xffa0, 0xffa0},
    {0xfff0, 0xfffb},   {0x110bd, 0x110bd}, {0x110cd, 0x110cd}, {0x13430, 0x1343f},
    {0x1bca0, 0x1bca3}, {0x1d173, 0x1d17a}, {0xe0000, 0xe0fff},
};

} // namespace

bool IsInvisible(SubString character)
{
    const char32_t c = CodePointOf(character);
    const Range* const range =
        std::lower_bound(std::begin(s_invisible), std::end(s_invisible), c,
                         [](const Range& r, char32_t value) { return r.m_last < value; });
    return range != std::end(s_invisible) && range->m_first <= c;
}

} // namespace telv::tool
