// SPDX-License-Identifier: MIT
// Families of programs: each makes, for a size n, a program whose expansion should take time and
// memory in proportion to n.
#pragma once

#include "Measure.h"
#include <cstddef>
#include <vector>

namespace telv::bench
{

struct Family
{
    const char* m_name;
    size_t m_size; ///< The smallest n; twice and four times that follow.
    Work (*m_make)(size_t n);
    /// Why it may grow faster than in proportion, or null: what it asks for does.
    const char* m_note;
};

std::vector<Family> TextFamilies();
std::vector<Family> FrameFamilies();
std::vector<Family> ImportFamilies();

} // namespace telv::bench
