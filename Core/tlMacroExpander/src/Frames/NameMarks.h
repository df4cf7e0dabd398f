// SPDX-License-Identifier: MIT
// A set that may have a name, or certainly has not: asked with a look at the name's ends.
#pragma once

#include "tlUtils/BasicSubString.h"
#include <algorithm>
#include <iterator>

namespace telv
{

class NameMarks
{
public:
    void Add(SubString name)
    {
        const uint32 mark = MarkOf(name);
        m_marks[mark / 64] |= uint64{1} << (mark % 64);
    }
    void AddAll(const NameMarks& others)
    {
        std::transform(std::begin(m_marks), std::end(m_marks), others.m_marks, m_marks,
                       [](uint64 a, uint64 b) { return a | b; });
    }
    /// False only for names that have not been added.
    bool MayHave(SubString name) const
    {
        const uint32 mark = MarkOf(name);
        return (m_marks[mark / 64] >> (mark % 64) & 1) != 0;
    }

private:
    /// A number that few names have in common: their ends and their length.
    static uint32 MarkOf(SubString name)
    {
        const auto bits = [](ssize_t value, uint32 mask)
        { return static_cast<uint32>(value) & mask; };
        return bits(name.m_p1[0], 31) | bits(name.m_p2[-1], 7) << 5 | bits(name.size(), 7) << 8;
    }

    static constexpr uint32 s_marks = 2048;

    uint64 m_marks[s_marks / 64] = {};
};

} // namespace telv
