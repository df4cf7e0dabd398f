// SPDX-License-Identifier: MIT
// The stack that Python runs on: one of its own, of a size that is known.
//
// Python counts levels of recursion and knows nothing of bytes; what a level takes was measured.
// Its compiler counts nothing. So neither may depend on how much stack an expansion has left, or on
// the thread that the application happens to expand on.
#pragma once

#ifdef TELV_PYTHON_ENABLED

#include "tlUtils/BasicSubString.h"
#include <functional>

namespace telv
{

/// Bytes of the stack; maps it at the first call. 0 when there is no memory for the smallest one.
/// Memory is taken as it is used.
ssize_t PythonStackSize();

/// Levels of Python's recursion that fit on it, whatever C code is between them.
int RecursionThatFits();

/// Whether the compiler can't run out of it with `length` bytes of code.
bool CodeFits(ssize_t length);

/// Whether the caller runs on it; it then holds the lock.
bool IsOnPythonStack();

/// Calls `work` on it, which must be mapped, and returns when it has returned; what it throws comes
/// through. A call from `work` stays on it. One thread at a time.
void CallOnPythonStack(const std::function<void()>& work);

} // namespace telv

#endif
