// SPDX-License-Identifier: MIT
// Loaded before the C library: counts the calls that the program makes to it and does something to
// one of them, as the environment says.
//
//   FAULT_AT     the number of the call, from 1
//   FAULT_KIND   ENOSPC, EIO, EINTR: it fails so;  SHORT: a read or write does a part;
//                EINTRS, SHORTS: the same for it and every later one;
//                EINVALS, ENOSYSS: two files can't be exchanged, from this call on;
//                FORESEEN: the random numbers are zeros at first;
//                GROW: before it, a read, somebody else appends a byte to the file;
//                KILL, TERM: the signal comes before it;  TERM_AFTER: right after it;
//                KILL_ONE, KILL_CHILDREN: instead of those, the calls of getpid are counted, and
//                the first process to meet the one, or each but the first process, is killed there
//   FAULT_NOTE   a file that receives the name of the call that was met
//
// Calls before main and those of the C library itself are not counted.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

struct Plan
{
    long at = 0;
    const char* kind = "";
    const char* note = nullptr;
    long count = 0;
    long firstProcess = 0;
};

Plan s_plan;

[[gnu::constructor]] void ReadPlan()
{
    const char* const at = std::getenv("FAULT_AT");
    const char* const kind = std::getenv("FAULT_KIND");
    s_plan.note = std::getenv("FAULT_NOTE");
    s_plan.kind = kind == nullptr ? "" : kind;
    s_plan.at = at == nullptr ? 0 : std::atol(at);
    s_plan.firstProcess = syscall(SYS_getpid);
}

bool Is(const char* kind)
{
    return std::strcmp(s_plan.kind, kind) == 0;
}

void WriteNote(const char* call)
{
    if (s_plan.note == nullptr)
        return;
    const long fd = syscall(SYS_openat, AT_FDCWD, s_plan.note, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    syscall(SYS_write, fd, call, std::strlen(call));
    syscall(SYS_close, fd);
}

/// A file system without the operation.
int ErrorOfExchange(const char* call)
{
    if (std::strcmp(call, "exchange") != 0)
        return 0;
    return Is("EINVALS") ? EINVAL : Is("ENOSYSS") ? ENOSYS : 0;
}

/// What is to be done to a call.
struct Fault
{
    int error = 0;
    bool isShort = false;
    bool termAfter = false;

    ~Fault()
    {
        const int before = errno;
        if (termAfter)
            kill(getpid(), SIGTERM);
        errno = before;
    }
};

/// Counts a call and says what is to be done to it; a signal that is to come before it comes here.
Fault Meet(const char* call, bool canBeShort = false)
{
    Fault fault;
    if (Is("KILL_ONE") || Is("KILL_CHILDREN"))
        return fault;
    ++s_plan.count;
    const bool isRepeated = Is("EINTRS") || Is("SHORTS") || Is("EINVALS") || Is("ENOSYSS");
    if (s_plan.count != s_plan.at && !(isRepeated && s_plan.count > s_plan.at && s_plan.at > 0))
        return fault;
    if (s_plan.count == s_plan.at)
        WriteNote(call);
    if (Is("ENOSPC"))
        fault.error = ENOSPC;
    else if (Is("EIO"))
        fault.error = EIO;
    else if (Is("EINTR") || (Is("EINTRS") && s_plan.count % 2 == 0))
        fault.error = EINTR;
    else if (const int error = ErrorOfExchange(call))
        fault.error = error;
    else if (Is("KILL"))
        kill(getpid(), SIGKILL);
    else if (Is("TERM"))
        kill(getpid(), SIGTERM);
    fault.isShort = canBeShort && (Is("SHORT") || Is("SHORTS"));
    fault.termAfter = Is("TERM_AFTER");
    return fault;
}

template <class Function>
Function Next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// A failing close still closes: what is tested is that its error is looked at.
template <class Result, class... Arguments>
Result Forward(const char* name, const Fault& fault, Arguments... arguments)
{
    if (fault.error != 0)
    {
        errno = fault.error;
        return -1;
    }
    return Next<Result (*)(Arguments...)>(name)(arguments...);
}

mode_t ModeOf(int flags, va_list arguments)
{
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

size_t Part(size_t count, const Fault& fault)
{
    return fault.isShort ? std::max<size_t>(std::min<size_t>(count, 1), count / 3) : count;
}

} // namespace

#define EXPORTED extern "C" [[gnu::visibility("default")]]

EXPORTED pid_t getpid()
{
    const long self = syscall(SYS_getpid);
    const bool isChild = Is("KILL_CHILDREN") && self != s_plan.firstProcess;
    const bool isMet = Is("KILL_ONE") && ++s_plan.count == s_plan.at;
    if (isChild || (isMet && access(s_plan.note, F_OK) != 0))
    {
        WriteNote("getpid");
        syscall(SYS_kill, self, SIGKILL);
    }
    return static_cast<pid_t>(self);
}

EXPORTED int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Forward<int>("open", Meet("open"), path, flags, mode);
}

EXPORTED int __open_2(const char* path, int flags)
{
    return Forward<int>("__open_2", Meet("open"), path, flags);
}

EXPORTED int openat(int directory, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Forward<int>("openat", Meet("open"), directory, path, flags, mode);
}

EXPORTED int __openat_2(int directory, const char* path, int flags)
{
    return Forward<int>("__openat_2", Meet("open"), directory, path, flags);
}

/// Where the descriptor is that of a regular file.
void Grow(int fd)
{
    struct stat status;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return;
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
    const long end = syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_APPEND);
    syscall(SYS_write, end, "x", 1);
    syscall(SYS_close, end);
}

EXPORTED ssize_t read(int fd, void* buffer, size_t count)
{
    const Fault fault = Meet("read", true);
    if (Is("GROW") && s_plan.count == s_plan.at)
        Grow(fd);
    return Forward<ssize_t>("read", fault, fd, buffer, Part(count, fault));
}

EXPORTED ssize_t __read_chk(int fd, void* buffer, size_t count, size_t size)
{
    const Fault fault = Meet("read", true);
    if (Is("GROW") && s_plan.count == s_plan.at)
        Grow(fd);
    return Forward<ssize_t>("__read_chk", fault, fd, buffer, Part(count, fault), size);
}

EXPORTED ssize_t write(int fd, const void* buffer, size_t count)
{
    const Fault fault = Meet("write", true);
    return Forward<ssize_t>("write", fault, fd, buffer, Part(count, fault));
}

EXPORTED int close(int fd)
{
    const Fault fault = Meet("close");
    if (fault.error != 0)
        syscall(SYS_close, fd);
    return Forward<int>("close", fault, fd);
}

EXPORTED int fsync(int fd)
{
    return Forward<int>("fsync", Meet("fsync"), fd);
}

EXPORTED int fchmod(int fd, mode_t mode)
{
    return Forward<int>("fchmod", Meet("fchmod"), fd, mode);
}

EXPORTED int renameat(int from, const char* oldName, int to, const char* newName)
{
    return Forward<int>("renameat", Meet("rename"), from, oldName, to, newName);
}

EXPORTED int rename(const char* oldName, const char* newName)
{
    return Forward<int>("rename", Meet("rename"), oldName, newName);
}

EXPORTED int renameat2(int from, const char* oldName, int to, const char* newName, unsigned flags)
{
    return Forward<int>("renameat2", Meet("exchange"), from, oldName, to, newName, flags);
}

EXPORTED int unlinkat(int directory, const char* name, int flags)
{
    return Forward<int>("unlinkat", Meet("unlink"), directory, name, flags);
}

EXPORTED ssize_t getrandom(void* buffer, size_t size, unsigned flags)
{
    static int s_zeros = 8;
    if (!Is("FORESEEN") || s_zeros == 0)
        return Next<ssize_t (*)(void*, size_t, unsigned)>("getrandom")(buffer, size, flags);
    --s_zeros;
    std::memset(buffer, 0, size);
    return static_cast<ssize_t>(size);
}
