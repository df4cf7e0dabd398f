// SPDX-License-Identifier: MIT
// posix_spawn with a pipe for each output stream, both read with poll so that neither can fill up
// while the other is waited for. Standard input is a file in memory: nothing has to be fed.
#include "support/RunProgram.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace telv::test
{
namespace
{

[[noreturn]] void Fail(const std::string& what, int error)
{
    throw std::runtime_error(what + ": " + std::strerror(error));
}

/// Owner of a file descriptor.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_fd; }
    void Set(int fd)
    {
        Close();
        m_fd = fd;
    }
    void Close()
    {
        if (m_fd >= 0)
            close(m_fd);
        m_fd = -1;
    }

private:
    int m_fd;
};

struct Pipe
{
    Descriptor read;
    Descriptor write;

    Pipe()
    {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            Fail("pipe", errno);
        read.Set(ends[0]);
        write.Set(ends[1]);
    }
};

int MakeInput(std::string_view text)
{
    const int fd = memfd_create("input", MFD_CLOEXEC);
    if (fd < 0)
        Fail("memfd_create", errno);
    while (!text.empty())
    {
        const ssize_t written = write(fd, text.data(), text.size());
        if (written < 0)
            Fail("write", errno);
        text.remove_prefix(static_cast<size_t>(written));
    }
    lseek(fd, 0, SEEK_SET);
    return fd;
}

pid_t Spawn(const std::vector<std::string>& argv, const std::string& directory, int in, int out,
            int err)
{
    std::vector<char*> arguments;
    arguments.reserve(argv.size() + 1);
    for (const std::string& argument : argv)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
    posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
    pid_t pid = -1;
    const int error =
        posix_spawn(&pid, argv[0].c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        Fail("can't start " + argv[0], error);
    return pid;
}

/// Appends what is there to read; false at the end of the stream.
bool ReadSome(int fd, std::string& text)
{
    std::array<char, 65536> buffer;
    const ssize_t count = read(fd, buffer.data(), buffer.size());
    if (count < 0)
        return errno == EINTR;
    text.append(buffer.data(), static_cast<size_t>(count));
    return count > 0;
}

/// Reads both streams to their ends; false when that takes longer than `seconds`.
bool Collect(Pipe& out, Pipe& err, ProgramResult& result, int seconds)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::seconds(seconds);
    std::array<pollfd, 2> streams{pollfd{out.read.Get(), POLLIN, 0},
                                  pollfd{err.read.Get(), POLLIN, 0}};
    while (streams[0].fd >= 0 || streams[1].fd >= 0)
    {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0)
            return false;
        if (poll(streams.data(), streams.size(), static_cast<int>(left.count())) < 0)
            continue;
        for (pollfd& stream : streams)
        {
            std::string& text = &stream == &streams[0] ? result.out : result.err;
            if (stream.fd >= 0 && stream.revents != 0 && !ReadSome(stream.fd, text))
                stream.fd = -1;
        }
    }
    return true;
}

void Wait(pid_t pid, ProgramResult& result)
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
    {
        if (errno != EINTR)
            Fail("waitpid", errno);
    }
    if (WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
}

} // namespace

ProgramResult RunProgram(const std::vector<std::string>& argv, const ProgramOptions& options)
{
    const Descriptor in(MakeInput(options.input));
    Pipe out;
    Pipe err;
    const pid_t pid = Spawn(argv, options.directory, in.Get(), out.write.Get(), err.write.Get());
    out.write.Close();
    err.write.Close();

    ProgramResult result;
    if (!Collect(out, err, result, options.seconds))
    {
        result.timedOut = true;
        kill(pid, SIGKILL);
    }
    Wait(pid, result);
    return result;
}

std::string DescribeEnd(const ProgramResult& result, const ProgramOptions& options)
{
    if (result.timedOut)
        return "no end within " + std::to_string(options.seconds) + " seconds";
    if (result.signal != 0)
        return "signal " + std::to_string(result.signal);
    return "exit status " + std::to_string(result.status);
}

} // namespace telv::test
