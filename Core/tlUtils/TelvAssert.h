// SPDX-License-Identifier: MIT
// Internal assertions. A broken assumption of the library is reported as an exception that names
// the condition and the area of the source, so that a tool can still say where it happened.
#pragma once

#include "tlUtils/Export.h"

namespace telv
{

/// Reports a broken internal assumption; never returns.
///
/// @param expr  The text of the condition that does not hold.
/// @param file  The path of the area (without extension), not that of the file.
/// @throws TelvAssertionError  always: "Assertion failed: CONDITION at PATH(LINE)".
[[noreturn]] TLUTILS_API void ThrowTelvAssertionError(const char* expr, const char* file, int line);

} // namespace telv

/// Tests an internal assumption on behalf of the area `path`. The stringised condition is what
/// users see, so renaming a variable inside it changes a message.
#define TELV_ASSERT_IN(path, condition)                                                            \
    (__builtin_expect((condition) ? 1 : 0, 1)                                                      \
         ? static_cast<void>(0)                                                                    \
         : ::telv::ThrowTelvAssertionError(#condition, path, __LINE__))

/// The same for a source that defines `TELV_SOURCE_PATH`, the path of its area, before use.
#define TELV_ASSERT(condition) TELV_ASSERT_IN(TELV_SOURCE_PATH, condition)
