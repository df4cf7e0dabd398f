// SPDX-License-Identifier: MIT
// What the text of a message tells, whichever program wrote it: its words without the colours, what
// it quotes, and whether it is of the kind that compilers write.
#pragma once

#include <string>
#include <vector>

namespace telv::tool
{

/// `line` without the escape sequences by which terminals are told of colours.
std::string WithoutColours(const std::string& line);

/// The words in 'single' and ‘typographic’ quotes of a line without colours.
std::vector<std::string> QuotedWords(const std::string& line);

/// Whether a line without colours gives its severity as compilers do: "error: ".
bool HasSeverity(const std::string& line);

} // namespace telv::tool
