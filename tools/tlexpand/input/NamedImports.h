// SPDX-License-Identifier: MIT
// The imports of a text whose names stand in it. Which of them it takes, and those whose names it
// makes up, only its expansion tells.
#pragma once

#include "tlUtils/StringExt.h"
#include <string>
#include <vector>

namespace telv::tool
{

struct NamedImports
{
    std::vector<std::string> m_files;       ///< As written behind `@import`.
    std::vector<std::string> m_directories; ///< As written behind `@importpath`.
};

/// In the order of the text.
NamedImports FindNamedImports(SubString text);

} // namespace telv::tool
