// SPDX-License-Identifier: MIT
// A function is called with the stack pointer elsewhere; there is nothing else to switch. Other
// processors than the one at hand, and sanitizers, which are told of each switch, get contexts of
// the C library: these cost system calls.
#include "tlMacroExpander/src/Run/OwnStack.h"
#include <cstdint>
#include <exception>
#include <sys/mman.h>
#include <sys/resource.h>
#include <ucontext.h>
#include <unistd.h>

#ifdef TELV_ADDRESS_SANITIZER
#include <dlfcn.h>
#include <sanitizer/common_interface_defs.h>
#endif
#ifdef TELV_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
#endif

#if defined(__x86_64__) && !defined(TELV_ADDRESS_SANITIZER) && !defined(TELV_THREAD_SANITIZER)
#define TELV_CALLS_ON_STACK
#endif

namespace telv
{

namespace
{

size_t LargestSensibleSize(size_t largest, size_t parts)
{
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return largest;
    return limit.rlim_cur / parts;
}

#ifdef TELV_ADDRESS_SANITIZER

using SwapContext = int (*)(ucontext_t*, const ucontext_t*);

/// The C library's own. The sanitizer's, which stands before it, does not know that it is told of
/// the switch, and prints a warning.
SwapContext RealSwapContext()
{
    static const auto s_real = reinterpret_cast<SwapContext>(
        dlsym(dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD), "swapcontext"));
    return s_real;
}

#endif

/// One switch to a stack and back.
struct Switch
{
    const std::function<void()>* m_work;
    std::exception_ptr m_error = {};
#ifndef TELV_CALLS_ON_STACK
    ucontext_t m_caller = {};
    ucontext_t m_here = {};
#endif
#ifdef TELV_ADDRESS_SANITIZER
    void* m_fakeStack = nullptr;
    const void* m_callerLow = nullptr;
    size_t m_callerSize = 0;
#endif
#ifdef TELV_THREAD_SANITIZER
    void* m_callerFiber = __tsan_get_current_fiber();
    void* m_fiber = __tsan_create_fiber(0);
#endif
};

void DoWork(Switch& s)
{
#ifdef TELV_ADDRESS_SANITIZER
    __sanitizer_finish_switch_fiber(nullptr, &s.m_callerLow, &s.m_callerSize);
#endif
    try
    {
        (*s.m_work)();
    }
    catch (...)
    {
        s.m_error = std::current_exception();
    }
}

#ifdef TELV_CALLS_ON_STACK

void Enter(void* s)
{
    DoWork(*static_cast<Switch*>(s));
}

/// What a function may change is named, but for the register that keeps the stack pointer, which it
/// may not. Nothing is thrown through here.
void SwitchTo(Switch& s, char* low, size_t size)
{
    char* const top = low + size; // of a page
    void* argument = &s;
    asm volatile("movq %%rsp, %%rbx\n\t"
                 "movq %[top], %%rsp\n\t"
                 "callq *%[enter]\n\t"
                 "movq %%rbx, %%rsp"
                 : "+D"(argument)
                 : [top] "r"(top), [enter] "r"(&Enter)
                 : "rax", "rbx", "rcx", "rdx", "rsi", "r8", "r9", "r10", "r11", "xmm0", "xmm1",
                   "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11",
                   "xmm12", "xmm13", "xmm14", "xmm15", "st", "cc", "memory");
}

#else

/// The first function on the stack: it gets its argument in two halves, and never returns.
void Enter(unsigned high, unsigned low)
{
    auto& s = *reinterpret_cast<Switch*>(std::uintptr_t(high) << 32 | low);
    DoWork(s);
#ifdef TELV_ADDRESS_SANITIZER
    __sanitizer_start_switch_fiber(nullptr, s.m_callerLow, s.m_callerSize);
#endif
#ifdef TELV_THREAD_SANITIZER
    __tsan_switch_to_fiber(s.m_callerFiber, 0);
#endif
    setcontext(&s.m_caller);
}

void SwitchTo(Switch& s, char* low, size_t size)
{
    getcontext(&s.m_here);
    s.m_here.uc_stack.ss_sp = low;
    s.m_here.uc_stack.ss_size = size;
    s.m_here.uc_link = nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(&s);
    makecontext(&s.m_here, reinterpret_cast<void (*)()>(Enter), 2,
                static_cast<unsigned>(address >> 32), static_cast<unsigned>(address));
#ifdef TELV_THREAD_SANITIZER
    __tsan_switch_to_fiber(s.m_fiber, 0);
#endif
#ifdef TELV_ADDRESS_SANITIZER
    const SwapContext swap = RealSwapContext();
    __sanitizer_start_switch_fiber(&s.m_fakeStack, low, size);
    swap(&s.m_caller, &s.m_here);
    __sanitizer_finish_switch_fiber(s.m_fakeStack, nullptr, nullptr);
#else
    swapcontext(&s.m_caller, &s.m_here);
#endif
#ifdef TELV_THREAD_SANITIZER
    __tsan_destroy_fiber(s.m_fiber);
#endif
}

#endif

} // namespace

bool OwnStack::Map(std::span<const size_t> sizes, size_t parts)
{
    if (m_low != nullptr)
        return true;
    const size_t largest = LargestSensibleSize(sizes.front(), parts);
    for (const size_t size : sizes)
        if (size <= largest && MapOne(size))
            return true;
    return false;
}

bool OwnStack::MapOne(size_t size)
{
    void* const low = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (low == MAP_FAILED)
        return false;
    const auto page = static_cast<size_t>(getpagesize());
    if (mprotect(low, page, PROT_NONE) != 0)
    {
        munmap(low, size);
        return false;
    }
    m_low = static_cast<char*>(low) + page;
    m_size = size - page;
    return true;
}

bool OwnStack::Holds(const void* frame) const
{
    const auto at = reinterpret_cast<std::uintptr_t>(frame);
    return at - reinterpret_cast<std::uintptr_t>(m_low) < m_size;
}

void OwnStack::Call(const std::function<void()>& work) const
{
    if (Holds(__builtin_frame_address(0)))
        return work();
    Switch s{&work};
    SwitchTo(s, m_low, m_size);
    if (s.m_error)
        std::rethrow_exception(s.m_error);
}

} // namespace telv
