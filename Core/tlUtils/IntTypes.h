// The integer and character types that the interfaces are written in.
#pragma once

#include <cstdint>
#include <sys/types.h>

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
