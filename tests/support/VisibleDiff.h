// SPDX-License-Identifier: MIT
// Differences of two texts for people to read: line by line, with everything visible that the eye
// would miss.
#pragma once

#include <string>
#include <string_view>

namespace telv::test
{

/// The lines that differ, "-" before an expected and "+" before an actual one, with two lines of
/// context around them; empty when the texts are equal. Line feeds are shown as "⏎", tabs as "→",
/// carriage returns as "␍", other control characters and bytes that are not UTF-8 as "\xNN".
std::string VisibleDiff(std::string_view expected, std::string_view actual);

/// One text in that notation, each line behind `prefix`.
std::string Visible(std::string_view text, std::string_view prefix = "");

} // namespace telv::test
