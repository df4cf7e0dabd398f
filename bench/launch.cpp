// SPDX-License-Identifier: MIT
// Runs a program several times, one after the other, and prints for each run what the kernel
// counted:
//
//     launch TIMES CPU-SECONDS OUTPUT|- PROGRAM [ARGUMENT]...
//     ... a line per run: status user sys wall peak     (seconds, seconds, seconds, KiB)
//
// It is a small static program because a child's peak memory begins at that of its parent. With
// OUTPUT, the program's standard output goes to that file, which is made anew each time. The status
// is the exit status, or 256 and the signal.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

double Now()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double Seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// In the child: never returns. Only what is allowed between vfork and exec.
[[noreturn]] void Become(char** program, const char* output, const rlimit& limit)
{
    const int in = open("/dev/null", O_RDONLY);
    const int out = std::strcmp(output, "-") == 0
                        ? open("/dev/null", O_WRONLY)
                        : open(output, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (in < 0 || out < 0 || dup2(in, 0) < 0 || dup2(out, 1) < 0 ||
        setrlimit(RLIMIT_CPU, &limit) != 0)
        _exit(126);
    close(in);
    close(out);
    execvp(program[0], program);
    _exit(127);
}

/// False when the program could not be started or waited for.
bool RunOnce(char** program, const char* output, const rlimit& limit)
{
    const double start = Now();
    const pid_t child = vfork();
    if (child < 0)
        return false;
    if (child == 0)
        Become(program, output, limit);
    int status = 0;
    rusage usage{};
    while (wait4(child, &status, 0, &usage) < 0)
        if (errno != EINTR)
            return false;
    const double wall = Now() - start;
    std::printf("%d %.6f %.6f %.6f %ld\n",
                WIFEXITED(status) ? WEXITSTATUS(status) : 256 + WTERMSIG(status),
                Seconds(usage.ru_utime), Seconds(usage.ru_stime), wall, usage.ru_maxrss);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 5)
    {
        std::fputs("usage: launch TIMES CPU-SECONDS OUTPUT|- PROGRAM [ARGUMENT]...\n", stderr);
        return 2;
    }
    const rlim_t seconds = std::strtoul(argv[2], nullptr, 10);
    const rlimit limit{seconds, seconds};
    for (long left = std::strtol(argv[1], nullptr, 10); left > 0; --left)
    {
        if (std::strcmp(argv[3], "-") != 0)
            unlink(argv[3]);
        if (!RunOnce(argv + 4, argv[3], limit))
        {
            std::perror("launch");
            return 1;
        }
    }
}
