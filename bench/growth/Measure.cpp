// SPDX-License-Identifier: MIT
#include "Measure.h"
#include <algorithm>
#include <ctime>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace telv::bench
{

namespace
{

constexpr size_t s_stackSize = size_t{4} << 30;
constexpr rlim_t s_longestSeconds = 20;

struct Job
{
    const std::function<Work()>& m_makeWork;
    double m_seconds;
};

double Now()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void* RunJob(void* argument)
{
    Job& job = *static_cast<Job*>(argument);
    const Work work = job.m_makeWork();
    const double start = Now();
    work();
    job.m_seconds = Now() - start;
    return nullptr;
}

/// In the child: runs the work, sends its time and ends.
[[noreturn]] void RunChild(const std::function<Work()>& makeWork, int pipeEnd)
{
    Job job{makeWork, -1};
    const rlimit limit{s_longestSeconds, s_longestSeconds};
    setrlimit(RLIMIT_CPU, &limit);
    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    const bool runs = pthread_attr_setstacksize(&attributes, s_stackSize) == 0 &&
                      pthread_create(&thread, &attributes, RunJob, &job) == 0 &&
                      pthread_join(thread, nullptr) == 0;
    const bool isSent = write(pipeEnd, &job.m_seconds, sizeof job.m_seconds) ==
                        static_cast<ssize_t>(sizeof job.m_seconds);
    _exit(runs && isSent ? 0 : 1);
}

} // namespace

std::optional<Cost> MeasureOnce(const std::function<Work()>& makeWork)
{
    int ends[2];
    if (pipe(ends) != 0)
        return std::nullopt;
    const pid_t child = fork();
    if (child == 0)
        RunChild(makeWork, ends[1]);
    close(ends[1]);
    Cost cost;
    const bool isRead = child > 0 && read(ends[0], &cost.m_seconds, sizeof cost.m_seconds) ==
                                         static_cast<ssize_t>(sizeof cost.m_seconds);
    close(ends[0]);
    int status = -1;
    rusage usage{};
    const bool isOver = child > 0 && wait4(child, &status, 0, &usage) == child;
    cost.m_megabytes = static_cast<double>(usage.ru_maxrss) / 1024;
    if (!isRead || !isOver || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    return cost;
}

std::optional<Cost> Measure(const std::function<Work()>& makeWork, int times)
{
    std::optional<Cost> least;
    for (; times > 0; --times)
    {
        const std::optional<Cost> cost = MeasureOnce(makeWork);
        if (!cost)
            return std::nullopt;
        if (!least)
            least = cost;
        least->m_seconds = std::min(least->m_seconds, cost->m_seconds);
        least->m_megabytes = std::min(least->m_megabytes, cost->m_megabytes);
    }
    return least;
}

} // namespace telv::bench
