// SPDX-License-Identifier: MIT
// Whole files as strings, byte for byte.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace telv::test
{

/// The bytes of the file, or nothing when there is none that can be read.
std::optional<std::string> ReadFile(const std::string& path);

/// Replaces or makes the file. @throws std::runtime_error  It can't be written.
void WriteFile(const std::string& path, std::string_view text);

} // namespace telv::test
