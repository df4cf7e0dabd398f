// SPDX-License-Identifier: MIT
// Two pipes, read as they have something. The program finds signals as a program does that a shell
// has started, and is sent those that end this one.
#include "remap/CommandRun.h"
#include "Cleanup.h"
#include "Files.h"
#include "report/Diagnostics.h"
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace telv::tool
{

namespace
{

constexpr size_t s_chunk = size_t{64} * 1024;

struct Pipe
{
    Descriptor m_read;
    Descriptor m_write;

    Pipe()
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw MakeFileError("open", "a pipe", errno);
        m_read = Descriptor(ends[0]);
        m_write = Descriptor(ends[1]);
    }
};

/// What is told to the new process.
class SpawnSettings
{
public:
    SpawnSettings(int out, int err)
    {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_adddup2(&m_actions, out, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&m_actions, err, STDERR_FILENO);
        posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&m_attributes, &signals);
        for (const int signal : {SIGPIPE, SIGXFSZ})
            sigaddset(&signals, signal);
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
        posix_spawnattr_setflags(
            &m_attributes, static_cast<short>(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK));
    }
    ~SpawnSettings()
    {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
};

/// One read; false at the end.
bool ReadSome(int fd, const std::function<void(SubString)>& take)
{
    std::array<char, s_chunk> chunk;
    const ssize_t size = Uninterrupted([&] { return read(fd, chunk.data(), chunk.size()); });
    if (size < 0)
        throw MakeFileError("read", "the messages", errno);
    take(SubString(chunk.data(), chunk.data() + size));
    return size > 0;
}

int WaitFor(pid_t child)
{
    // No signal goes to a number that is another's by now.
    siginfo_t ended = {};
    Uninterrupted([&]
                  { return waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT); });
    PassSignalsTo(0);
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return 1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace

void ReadStream(int fd, const std::function<void(SubString)>& take)
{
    while (ReadSome(fd, take))
    {
    }
}

int RunAndRead(char** arguments, const std::function<void(SubString)>& out,
               const std::function<void(SubString)>& err)
{
    Pipe outPipe;
    Pipe errPipe;
    SpawnSettings settings(outPipe.m_write.Get(), errPipe.m_write.Get());
    pid_t child = 0;
    int error = 0;
    {
        const SignalBlocker blocker; // The program runs only when it is known.
        error = posix_spawnp(&child, arguments[0], &settings.m_actions, &settings.m_attributes,
                             arguments, environ);
        PassSignalsTo(error == 0 ? child : 0);
    }
    if (error != 0)
    {
        ReportToolError(std::string("can't run '") + arguments[0] + "': " + ErrorText(error));
        return error == ENOENT ? 127 : 126;
    }
    outPipe.m_write.Close();
    errPipe.m_write.Close();
    std::array<pollfd, 2> streams{
        {{outPipe.m_read.Get(), POLLIN, 0}, {errPipe.m_read.Get(), POLLIN, 0}}};
    const std::array<const std::function<void(SubString)>*, 2> takers{&out, &err};
    while (streams[0].fd >= 0 || streams[1].fd >= 0)
    {
        if (Uninterrupted([&] { return poll(streams.data(), streams.size(), -1); }) < 0)
            throw MakeFileError("read", "the messages", errno);
        for (size_t i = 0; i < streams.size(); ++i)
            if (streams[i].fd >= 0 && streams[i].revents != 0 &&
                !ReadSome(streams[i].fd, *takers[i]))
                streams[i].fd = -1;
    }
    return WaitFor(child);
}

} // namespace telv::tool
