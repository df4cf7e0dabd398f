// SPDX-License-Identifier: MIT
// The integer and character types that the interfaces are written in.
#pragma once

#include <cstdint>
#include <sys/types.h>

/// Marks a function whose unsigned arithmetic is meant to wrap: clang's check of unsigned overflow,
/// which finds sizes that went below zero, leaves it out.
#if defined(__clang__)
#define TELV_WRAPS __attribute__((no_sanitize("unsigned-integer-overflow", "unsigned-shift-base")))
#else
#define TELV_WRAPS
#endif

namespace telv
{

using xchar = char;
using int8 = signed char;
using int16 = short;
using int32 = int;
using int64 = long;
using uint8 = unsigned char;
using uint16 = unsigned short;
using uint32 = unsigned int;
using uint64 = unsigned long;
using ssize_t = ::ssize_t;

static_assert(sizeof(int64) == 8 && sizeof(ssize_t) == 8, "the library is for 64-bit platforms");

} // namespace telv
