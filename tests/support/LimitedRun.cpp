// SPDX-License-Identifier: MIT
// fork, limits, exec. The streams are files in memory, so nothing has to be read while the program
// runs and a program that is killed leaves what it wrote.
#include "support/LimitedRun.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace telv::test
{
namespace
{

constexpr int s_cannotStart = 127;

[[noreturn]] void Fail(const char* what)
{
    throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

int MakeFile(std::string_view text)
{
    const int fd = memfd_create("stream", MFD_CLOEXEC);
    if (fd < 0)
        Fail("memfd_create");
    if (write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        Fail("write");
    lseek(fd, 0, SEEK_SET);
    return fd;
}

std::string ReadFrom(int fd)
{
    std::string text;
    std::array<char, 65536> buffer;
    ssize_t got = 0;
    while ((got = pread(fd, buffer.data(), buffer.size(), static_cast<off_t>(text.size()))) > 0)
        text.append(buffer.data(), static_cast<size_t>(got));
    return text;
}

void SetLimit(__rlimit_resource resource, const std::optional<unsigned long>& value)
{
    if (!value)
        return;
    rlimit limit;
    getrlimit(resource, &limit);
    limit.rlim_cur = *value;
    if (limit.rlim_max < limit.rlim_cur)
        limit.rlim_max = limit.rlim_cur;
    if (setrlimit(resource, &limit) != 0)
        _exit(s_cannotStart);
}

void SetLimits(const LimitedOptions& options)
{
    SetLimit(RLIMIT_CORE, 0);
    SetLimit(RLIMIT_STACK, options.stack);
    SetLimit(RLIMIT_NOFILE, options.descriptors);
    SetLimit(RLIMIT_FSIZE, options.fileSize);
    if (!s_underAddressSanitizer)
        SetLimit(RLIMIT_AS, options.addressSpace);
}

void SetStream(int target, int fd, const std::string& path, int flags)
{
    if (!path.empty())
        fd = open(path.c_str(), flags | O_CLOEXEC);
    if (fd < 0 || dup2(fd, target) < 0)
        _exit(s_cannotStart);
}

/// The rest of the child's life. `streams` are used where no path is given.
[[noreturn]] void Become(const std::vector<char*>& argv, const LimitedOptions& options,
                         const std::array<int, 3>& streams)
{
    SetStream(0, streams[0], options.inputPath, O_RDONLY);
    SetStream(1, streams[1], options.outputPath, O_WRONLY);
    SetStream(2, streams[2], options.errorPath, O_WRONLY);
    if (chdir(options.directory.c_str()) != 0)
        _exit(s_cannotStart);
    for (const int signal : {SIGPIPE, SIGXFSZ}) // Some programs that run tests ignore these.
        std::signal(signal, SIG_DFL);
    for (const int signal : options.ignoredSignals)
        std::signal(signal, SIG_IGN);
    for (const std::string& variable : options.environment)
        putenv(const_cast<char*>(variable.c_str()));
    for (const int fd : options.closed)
        close(fd);
    SetLimits(options);
    execv(argv[0], argv.data());
    _exit(s_cannotStart);
}

/// False when the process has not ended after the seconds.
bool WaitForEnd(pid_t pid, int seconds)
{
    const int fd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (fd < 0)
        Fail("pidfd_open");
    pollfd waited{fd, POLLIN, 0};
    int ready = 0;
    do
        ready = poll(&waited, 1, seconds * 1000);
    while (ready < 0 && errno == EINTR);
    close(fd);
    return ready > 0;
}

} // namespace

LimitedProgram::LimitedProgram(const std::vector<std::string>& argv, const LimitedOptions& options)
    : m_seconds(options.seconds)
{
    std::vector<char*> arguments;
    for (const std::string& argument : argv)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const int in = MakeFile(options.input);
    m_out = MakeFile("");
    m_err = MakeFile("");
    m_pid = fork();
    if (m_pid < 0)
        Fail("fork");
    if (m_pid == 0)
        Become(arguments, options, {in, m_out, m_err});
    close(in);
}

LimitedProgram::~LimitedProgram()
{
    if (m_pid > 0)
    {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    close(m_out);
    close(m_err);
}

void LimitedProgram::Send(int signal) const
{
    kill(m_pid, signal);
}

std::string LimitedProgram::ErrorSoFar() const
{
    return ReadFrom(m_err);
}

ProgramResult LimitedProgram::Finish()
{
    ProgramResult result;
    result.timedOut = !WaitForEnd(m_pid, m_seconds);
    if (result.timedOut)
        kill(m_pid, SIGKILL);
    int status = 0;
    rusage usage = {};
    if (wait4(m_pid, &status, 0, &usage) < 0)
        Fail("wait4");
    m_pid = -1;
    result.peakKibi = usage.ru_maxrss;
    if (WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
    result.out = ReadFrom(m_out);
    result.err = ReadFrom(m_err);
    return result;
}

ProgramResult RunLimited(const std::vector<std::string>& argv, const LimitedOptions& options)
{
    return LimitedProgram(argv, options).Finish();
}

} // namespace telv::test
