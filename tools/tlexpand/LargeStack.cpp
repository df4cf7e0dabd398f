// SPDX-License-Identifier: MIT
// The sizes are tried from the largest; with a limit on the address space at most a quarter of it.
// Small ones are worth it too: where the address space is limited, the main thread's own stack can
// fail to grow long before it meets its own limit, and the process dies by a signal.
#include "LargeStack.h"
#include "Cleanup.h"
#include "tlMacroExpander/src/Run/OwnStack.h"
#include "tlMacroExpander/src/Run/StackGuard.h"

namespace telv::tool
{

namespace
{

constexpr size_t s_mebi = size_t(1) << 20;

// Enough for 100,000 nested macro calls of some size. Not more: the commonest mistake, a macro that
// calls itself without end, has to unwind all of it before it is reported.
#if defined(__OPTIMIZE__) && !defined(TELV_ADDRESS_SANITIZER)
constexpr size_t s_largest = 384 * s_mebi;
#else
constexpr size_t s_largest = 2048 * s_mebi;
#endif
constexpr size_t s_stackSizes[] = {s_largest,  64 * s_mebi, 16 * s_mebi,
                                   4 * s_mebi, s_mebi,      s_mebi / 4};

constexpr size_t s_parts = 4;

} // namespace

int RunOnLargeStack(int (*work)(int argc, char** argv), int argc, char** argv)
{
    OwnStack stack; // stays mapped until the process ends
    int result = 0;
    const auto job = [&]
    {
        HandleSignalsHere();
        result = work(argc, argv);
    };
    if (!stack.Map(s_stackSizes, s_parts))
    {
        job();
        return result;
    }
    stack.Call(
        [&]
        {
            SetStackBounds(stack.Low(), stack.Low() + stack.Size());
            job();
        });
    return result;
}

} // namespace telv::tool
