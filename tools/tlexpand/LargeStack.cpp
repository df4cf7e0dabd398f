// A mapping without reserved memory, with a guard page at its low end. The sizes are tried from the
// largest; with a limit on the address space at most a quarter of it. Small ones are worth it too:
// where the address space is limited, the main thread's own stack can fail to grow long before it
// meets its own limit, and the process dies by a signal.
#include "LargeStack.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include <cstddef>
#include <sys/mman.h>
#include <sys/resource.h>
#include <ucontext.h>
#include <unistd.h>
#ifdef TELV_ADDRESS_SANITIZER
#include <sanitizer/common_interface_defs.h>
#endif

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

/// The usable part of a mapping.
struct Stack
{
    char* m_low = nullptr; ///< Null when there is none.
    size_t m_size = 0;
};

/// What the new stack's first function takes; a context passes nothing but numbers.
struct Job
{
    int (*m_work)(int, char**);
    int m_argc;
    char** m_argv;
    Stack m_stack;
    int m_result = 2;
    ucontext_t m_caller = {};
#ifdef TELV_ADDRESS_SANITIZER
    const void* m_callerLow = nullptr;
    size_t m_callerSize = 0;
#endif
};

Job* s_job = nullptr;

size_t LargestSensibleSize()
{
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return s_stackSizes[0];
    return limit.rlim_cur / 4;
}

Stack MapStack(size_t size)
{
    void* const mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (mapping == MAP_FAILED)
        return {};
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    if (mprotect(mapping, page, PROT_NONE) == 0)
        return {static_cast<char*>(mapping) + page, size - page};
    munmap(mapping, size);
    return {};
}

Stack MapLargestStack()
{
    const size_t largest = LargestSensibleSize();
    for (const size_t size : s_stackSizes)
    {
        if (size > largest)
            continue;
        if (const Stack stack = MapStack(size); stack.m_low != nullptr)
            return stack;
    }
    return {};
}

/// AddressSanitizer has to be told of each change of stacks.
void AnnounceStack([[maybe_unused]] void** fakeStack, [[maybe_unused]] const void* low,
                   [[maybe_unused]] size_t size)
{
#ifdef TELV_ADDRESS_SANITIZER
    __sanitizer_start_switch_fiber(fakeStack, low, size);
#endif
}

void ArriveOnStack([[maybe_unused]] void* fakeStack)
{
#ifdef TELV_ADDRESS_SANITIZER
    const void** const low = fakeStack == nullptr ? &s_job->m_callerLow : nullptr;
    size_t* const size = fakeStack == nullptr ? &s_job->m_callerSize : nullptr;
    __sanitizer_finish_switch_fiber(fakeStack, low, size);
#endif
}

void DoJob()
{
    Job& job = *s_job;
    ArriveOnStack(nullptr);
    const char* const low = job.m_stack.m_low;
    SetStackBounds(low, low + job.m_stack.m_size);
    job.m_result = job.m_work(job.m_argc, job.m_argv);
#ifdef TELV_ADDRESS_SANITIZER
    AnnounceStack(nullptr, job.m_callerLow, job.m_callerSize);
#endif
    setcontext(&job.m_caller);
}

} // namespace

int RunOnLargeStack(int (*work)(int argc, char** argv), int argc, char** argv)
{
    Job job{work, argc, argv, MapLargestStack()};
    ucontext_t context = {};
    if (job.m_stack.m_low == nullptr || getcontext(&context) != 0)
        return work(argc, argv);
    s_job = &job;
    context.uc_stack.ss_sp = job.m_stack.m_low;
    context.uc_stack.ss_size = job.m_stack.m_size;
    makecontext(&context, DoJob, 0);
    void* fakeStack = nullptr;
    AnnounceStack(&fakeStack, job.m_stack.m_low, job.m_stack.m_size);
    const bool isSwitched = swapcontext(&job.m_caller, &context) == 0;
    ArriveOnStack(fakeStack);
    return isSwitched ? job.m_result : work(argc, argv);
}

} // namespace telv::tool
