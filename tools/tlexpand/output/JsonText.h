// SPDX-License-Identifier: MIT
// Strings as JSON writes them.
#pragma once

#include "tlUtils/StringExt.h"
#include <string>

namespace telv::tool
{

/// `text` in double quotes. Bytes that are not UTF-8 become U+FFFD.
std::string JsonString(SubString text);

} // namespace telv::tool
