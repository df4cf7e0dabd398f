// A mapping without reserved memory and with a guard page, entered by a switch of contexts: so code
// stays on the thread that runs it, with all that belongs to the thread, forking included.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/PythonStack.h"
#include <algorithm>
#include <cstdint>
#include <exception>
#include <limits>
#include <sys/mman.h>
#include <sys/resource.h>
#include <ucontext.h>
#include <unistd.h>

#ifdef TELV_ADDRESS_SANITIZER
#include <sanitizer/common_interface_defs.h>
#endif
#ifdef TELV_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
#endif

namespace telv
{

namespace
{

constexpr size_t s_mebi = size_t(1) << 20;
// The largest lets 60 MB of code compile.
constexpr size_t s_sizes[] = {32'768 * s_mebi, 1024 * s_mebi, 256 * s_mebi, 64 * s_mebi,
                              32 * s_mebi,     16 * s_mebi,   8 * s_mebi};

// Measured with Python 2.7.18: importing modules that import the next one takes most for a level,
// 10 KiB; `with a,a,...` takes most for a byte of code, 170 bytes; what is bounded by counters of
// its own (marshal, the parser's nesting) takes less than 2 MiB.
constexpr ssize_t s_perLevel = 16 * 1024;
constexpr ssize_t s_perByteOfCode = 512;
constexpr ssize_t s_forAllElse = ssize_t(4) << 20;

struct Stack
{
    char* m_low = nullptr;
    size_t m_size = 0;
};

Stack s_stack;

/// A limit on the address space is for the texts too.
size_t LargestSensibleSize()
{
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return s_sizes[0];
    return limit.rlim_cur / 8;
}

bool Map(size_t size)
{
    void* const low = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (low == MAP_FAILED)
        return false;
    if (mprotect(low, static_cast<size_t>(sysconf(_SC_PAGESIZE)), PROT_NONE) != 0)
    {
        munmap(low, size);
        return false;
    }
    s_stack = {static_cast<char*>(low), size};
    return true;
}

bool IsOnIt(const void* frame)
{
    const auto at = reinterpret_cast<std::uintptr_t>(frame);
    return at - reinterpret_cast<std::uintptr_t>(s_stack.m_low) < s_stack.m_size;
}

/// One switch to the stack and back.
struct Switch
{
    const std::function<void()>* m_work;
    std::exception_ptr m_error;
    ucontext_t m_caller;
    ucontext_t m_here;
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

void SwitchToIt(Switch& s)
{
    getcontext(&s.m_here);
    s.m_here.uc_stack.ss_sp = s_stack.m_low;
    s.m_here.uc_stack.ss_size = s_stack.m_size;
    s.m_here.uc_link = nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(&s);
    makecontext(&s.m_here, reinterpret_cast<void (*)()>(Enter), 2,
                static_cast<unsigned>(address >> 32), static_cast<unsigned>(address));
#ifdef TELV_ADDRESS_SANITIZER
    __sanitizer_start_switch_fiber(&s.m_fakeStack, s_stack.m_low, s_stack.m_size);
#endif
#ifdef TELV_THREAD_SANITIZER
    __tsan_switch_to_fiber(s.m_fiber, 0);
#endif
    swapcontext(&s.m_caller, &s.m_here);
#ifdef TELV_ADDRESS_SANITIZER
    __sanitizer_finish_switch_fiber(s.m_fakeStack, nullptr, nullptr);
#endif
#ifdef TELV_THREAD_SANITIZER
    __tsan_destroy_fiber(s.m_fiber);
#endif
}

} // namespace

ssize_t PythonStackSize()
{
    const size_t largest = LargestSensibleSize();
    for (const size_t size : s_sizes)
        if (s_stack.m_low != nullptr || (size <= largest && Map(size)))
            break;
    return static_cast<ssize_t>(s_stack.m_size);
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

void CallOnPythonStack(const std::function<void()>& work)
{
    if (IsOnIt(__builtin_frame_address(0)))
        return work();
    Switch s{&work, {}, {}, {}};
    SwitchToIt(s);
    if (s.m_error)
        std::rethrow_exception(s.m_error);
}

void ReleasePythonStack()
{
    if (s_stack.m_low != nullptr)
        munmap(s_stack.m_low, s_stack.m_size);
    s_stack = {};
}

} // namespace telv

#endif
