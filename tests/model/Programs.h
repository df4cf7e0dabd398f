// SPDX-License-Identifier: MIT
// The programs on which ways to expand are compared: every case, and random ones.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace telv::test
{

/// A text and what it can import: the second file is `"1"`, and so on.
struct Program
{
    std::string name; ///< For failures.
    std::vector<std::string> files;
};

/// The texts of all cases, alone: what they import is an error that all ways must report alike.
std::vector<Program> CasePrograms();

/// Depends on the seed alone.
Program RandomProgram(uint32_t seed);

/// How many random programs a test tries: fewer where sanitizers make it slow.
#if defined(TELV_ADDRESS_SANITIZER) || defined(TELV_THREAD_SANITIZER) || !defined(__OPTIMIZE__)
inline constexpr uint32_t s_randomPrograms = 600;
#else
inline constexpr uint32_t s_randomPrograms = 20'000;
#endif

} // namespace telv::test
