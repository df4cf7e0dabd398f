// A mapping without reserved memory as the stack of a thread, with a guard page at its low end. The
// sizes are tried from the largest; with a limit on the address space at most a quarter of it.
// Small ones are worth a thread too: where the address space is limited, the main thread's stack
// can fail to grow long before it meets its own limit, and the process dies by a signal.
#include "LargeStack.h"
#include "Cleanup.h"
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
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

struct Job
{
    const std::function<int()>& m_work;
    int m_result = 2;
};

void* DoJob(void* argument)
{
    Job& job = *static_cast<Job*>(argument);
    UnblockSignals();
    job.m_result = job.m_work();
    return nullptr;
}

size_t LargestSensibleSize()
{
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return s_stackSizes[0];
    return limit.rlim_cur / 4;
}

/// A thread with a stack of `size` bytes; false when the system refuses either.
bool StartThread(pthread_t& thread, size_t size, Job& job)
{
    void* const stack = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (stack == MAP_FAILED)
        return false;
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    pthread_attr_t attributes;
    bool started = false;
    if (mprotect(stack, page, PROT_NONE) == 0 && pthread_attr_init(&attributes) == 0)
    {
        started = pthread_attr_setstack(&attributes, static_cast<char*>(stack) + page,
                                        size - page) == 0 &&
                  pthread_create(&thread, &attributes, DoJob, &job) == 0;
        pthread_attr_destroy(&attributes);
    }
    if (!started)
        munmap(stack, size);
    return started;
}

} // namespace

int RunOnLargeStack(const std::function<int()>& work)
{
    Job job{work};
    const SignalBlocker blocker;
    const size_t largest = LargestSensibleSize();
    pthread_t thread;
    for (const size_t size : s_stackSizes)
        if (size <= largest && StartThread(thread, size, job))
        {
            pthread_join(thread, nullptr);
            return job.m_result;
        }
    DoJob(&job);
    return job.m_result;
}

} // namespace telv::tool
