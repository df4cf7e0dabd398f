// SPDX-License-Identifier: MIT
// How many columns a tab stands for, wherever indentation is counted, removed or written.
#pragma once

namespace telv
{

inline constexpr long s_tabWidth = 4;

} // namespace telv
