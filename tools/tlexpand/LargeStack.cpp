// A mapping without reserved memory, with a guard page at its low end. The sizes are tried from the
// largest; with a limit on the address space at most a quarter of it. Small ones are worth it too:
// where the address space is limited, the main thread's own stack can fail to grow long before it
// meets its own limit, and the process dies by a signal.
//
// The thread moves to the stack as to a coroutine's. AddressSanitizer knows the stacks of threads
// only, so there it is another thread's.
#include "LargeStack.h"
#include "Cleanup.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include <csignal>
#include <cstddef>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <ucontext.h>
#include <unistd.h>

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

/// What is to be done on the stack.
struct Job
{
    int (*m_work)(int, char**);
    int m_argc;
    char** m_argv;
    Stack m_stack;
    int m_result = 2;

    void Do()
    {
        HandleSignalsHere();
        m_result = m_work(m_argc, m_argv);
    }
};

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

#ifdef TELV_ADDRESS_SANITIZER

/// The signals go to the thread that works.
struct ThreadJob
{
    Job& m_job;
    sigset_t m_signals;
};

void* DoOnThread(void* argument)
{
    auto* const threadJob = static_cast<ThreadJob*>(argument);
    pthread_sigmask(SIG_SETMASK, &threadJob->m_signals, nullptr);
    threadJob->m_job.Do();
    return nullptr;
}

/// False when nothing was done.
bool DoOnStack(Job& job)
{
    ThreadJob threadJob = {job, {}};
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &threadJob.m_signals);
    pthread_attr_t attributes;
    pthread_t thread;
    bool started = false;
    if (pthread_attr_init(&attributes) == 0)
    {
        started = pthread_attr_setstack(&attributes, job.m_stack.m_low, job.m_stack.m_size) == 0 &&
                  pthread_create(&thread, &attributes, DoOnThread, &threadJob) == 0;
        pthread_attr_destroy(&attributes);
    }
    if (started)
        pthread_join(thread, nullptr);
    pthread_sigmask(SIG_SETMASK, &threadJob.m_signals, nullptr);
    return started;
}

#else

/// A context's first function takes nothing but numbers.
Job* s_job = nullptr;

void DoInContext()
{
    const char* const low = s_job->m_stack.m_low;
    SetStackBounds(low, low + s_job->m_stack.m_size);
    s_job->Do();
}

/// False when nothing was done.
bool DoOnStack(Job& job)
{
    s_job = &job;
    ucontext_t caller = {};
    ucontext_t context = {};
    if (getcontext(&context) != 0)
        return false;
    context.uc_stack.ss_sp = job.m_stack.m_low;
    context.uc_stack.ss_size = job.m_stack.m_size;
    context.uc_link = &caller;
    makecontext(&context, DoInContext, 0);
    return swapcontext(&caller, &context) == 0;
}

#endif

} // namespace

int RunOnLargeStack(int (*work)(int argc, char** argv), int argc, char** argv)
{
    Job job{work, argc, argv, MapLargestStack()};
    if (job.m_stack.m_low == nullptr || !DoOnStack(job))
        job.Do();
    return job.m_result;
}

} // namespace telv::tool
