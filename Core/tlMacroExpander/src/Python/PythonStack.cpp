// SPDX-License-Identifier: MIT
// What Python's code takes of a stack, and the one that it gets.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/PythonStack.h"
#include "tlMacroExpander/src/Run/OwnStack.h"
#include <algorithm>
#include <limits>

namespace telv
{

namespace
{

constexpr size_t s_mebi = size_t(1) << 20;
// The largest lets 60 MB of code compile.
constexpr size_t s_sizes[] = {32'768 * s_mebi, 1024 * s_mebi, 256 * s_mebi, 64 * s_mebi,
                              32 * s_mebi,     16 * s_mebi,   8 * s_mebi};

// Measured with Python 2.7.18, as the growth of the stack over the levels of 45 ways of recursing
// through C code: `sorted` whose key sorts takes most for a level, 1,251 bytes, importing modules
// that import the next one 1,001. `with a,a,...` takes most for a byte of code, 165 bytes. What is
// bounded by counters of its own (marshal, the parser's nesting) takes less than 2 MiB. A library
// that was built without optimisation takes some times as much.
constexpr ssize_t s_perLevel = ssize_t{8} * 1024;
constexpr ssize_t s_perByteOfCode = 512;
constexpr ssize_t s_forAllElse = ssize_t(4) << 20;

/// A limit on the address space leaves it one part of these.
constexpr size_t s_parts = 8;

OwnStack s_stack;

} // namespace

ssize_t PythonStackSize()
{
    s_stack.Map(s_sizes, s_parts);
    return static_cast<ssize_t>(s_stack.Size());
}

int RecursionThatFits()
{
    const ssize_t levels = (PythonStackSize() - s_forAllElse) / s_perLevel;
    return static_cast<int>(std::clamp<ssize_t>(levels, 0, std::numeric_limits<int>::max()));
}

bool CodeFits(ssize_t length)
{
    return length <= (PythonStackSize() - s_forAllElse) / s_perByteOfCode;
}

bool IsOnPythonStack()
{
    return s_stack.Holds(__builtin_frame_address(0));
}

void CallOnPythonStack(const std::function<void()>& work)
{
    s_stack.Call(work);
}

} // namespace telv

#endif
