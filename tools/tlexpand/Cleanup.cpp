// SPDX-License-Identifier: MIT
// A fixed table of temporary names, the one state here that is process-wide: a signal handler has
// no other way to reach it. An entry is filled before its file is made and freed after it is gone.
#include "Cleanup.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <fcntl.h>
#include <iterator>
#include <new>
#include <string_view>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <typeinfo>
#include <unistd.h>
#include <utility>

namespace telv::tool
{

namespace
{

/// Not those that end a process: some are ignored, some stop or continue it, two can't be caught.
constexpr int s_harmless[] = {SIGKILL, SIGSTOP, SIGCHLD, SIGCONT, SIGURG,
                              SIGTSTP, SIGTTIN, SIGTTOU, SIGWINCH};
/// A write that meets one of these fails instead.
constexpr int s_ofWriting[] = {SIGPIPE, SIGXFSZ};

struct Entry
{
    std::atomic<bool> m_used = false;
    int m_directory = -1;
    char m_name[32] = {};
};

/// One for each output that a run can have, and some.
Entry s_entries[8];
pid_t s_owner = 0;
/// A byte that the system clears in a child process, however that was made. Null: not known.
const volatile unsigned char* s_isOwner = nullptr;
/// The thread that makes, renames and removes temporary files.
std::atomic<pid_t> s_worker = 0;
/// Of a worker of a batch.
std::function<bool(EEnd)> s_endHook;
/// A process that was started and is to end with this one; 0 for none.
std::atomic<pid_t> s_child = 0;
/// What `s_worker` handles a fault on when its stack has run out.
alignas(16) char s_faultStack[64 * 1024];

void Remove(const Entry& entry)
{
    Uninterrupted([&] { return unlinkat(entry.m_directory, entry.m_name, 0); });
}

void RemoveTemporaryFiles()
{
    if (getpid() != s_owner)
        return;
    for (const Entry& entry : s_entries)
        if (entry.m_used)
            Remove(entry);
}

/// Whether the signal says that the code of this very thread can't go on.
bool IsOfThisThread(int signal, const siginfo_t& info)
{
    return info.si_code > 0 ? signal == SIGSEGV || signal == SIGBUS || signal == SIGFPE ||
                                  signal == SIGILL || signal == SIGTRAP || signal == SIGSYS
                            : signal == SIGABRT && info.si_code == SI_TKILL;
}

/// Hands a signal that has come to another thread (Python code can start some) to the one that
/// works on the files: only there it is known to meet none between two states.
bool HandOn(int signal)
{
    const pid_t worker = s_worker;
    return worker != gettid() && getpid() == s_owner &&
           syscall(SYS_tgkill, s_owner, worker, signal) == 0;
}

void SetHandler(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(signal, &action, nullptr);
}

void OnSignal(int signal, siginfo_t* info, void* /*context*/)
{
    const int error = errno;
    const bool isFault = IsOfThisThread(signal, *info);
    if (isFault || !HandOn(signal))
    {
        const pid_t child = s_child;
        if (child != 0 && !isFault && info->si_code <= 0 && getpid() == s_owner)
            kill(child, signal);
        RemoveTemporaryFiles();
        // The first process of a container gets no signal that it does not handle.
        if (getpid() == 1)
            _exit(128 + signal);
        SetHandler(signal, SIG_DFL);
        raise(signal); // It comes when this handler returns.
    }
    errno = error;
}

bool Holds(const auto& signals, int signal)
{
    return std::find(std::begin(signals), std::end(signals), signal) != std::end(signals);
}

/// Calls `use` with each signal that ends a process and can be caught.
template <class Use>
void ForEachEndingSignal(Use use)
{
    for (int signal = 1; signal <= SIGRTMAX; ++signal)
        // Between the two, the C library keeps some for itself.
        if ((signal < __SIGRTMIN || signal >= SIGRTMIN) && !Holds(s_harmless, signal) &&
            !Holds(s_ofWriting, signal))
            use(signal);
}

sigset_t HandledSignals()
{
    sigset_t set;
    sigemptyset(&set);
    ForEachEndingSignal([&](int signal) { sigaddset(&set, signal); });
    return set;
}

/// The same without those that a fault of the code raises: held back, they would be lost.
sigset_t BlockableSignals()
{
    sigset_t set = HandledSignals();
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
        sigdelset(&set, signal);
    return set;
}

void IgnoreSignal(int /*signal*/) {}

/// Handles the signal with `action`, unless somebody handles or ignores it. (Sanitizers handle
/// faults.) The exception is put back, so that the rule costs one call.
void HandleUnlessHandled(int signal, const struct sigaction& action)
{
    struct sigaction earlier = {};
    if (sigaction(signal, &action, &earlier) == 0 && earlier.sa_handler != SIG_DFL)
        sigaction(signal, &earlier, nullptr);
}

size_t TakeEntry(int directory)
{
    for (size_t i = 0; i < std::size(s_entries); ++i)
        if (!s_entries[i].m_used)
        {
            s_entries[i].m_directory = directory;
            return i;
        }
    throw FileError("too many outputs");
}

void MakeName(Entry& entry)
{
    static unsigned long s_count = 0; // Another name each time, whatever the system has to offer.
    unsigned long random = 0;
    if (getrandom(&random, sizeof(random), 0) != sizeof(random))
        random = static_cast<unsigned long>(getpid()) + (s_count++ << 32);
    // Not by printf, whose code would have to be fetched at each start.
    static constexpr std::string_view prefix = ".tlexpand-";
    char* end = std::ranges::copy(prefix, entry.m_name).out;
    for (int shift = 60; shift >= 0; shift -= 4)
        *end++ = "0123456789abcdef"[random >> shift & 15];
    *end = '\0';
}

} // namespace

TemporaryFile::TemporaryFile(int directory, const std::string& path)
    : m_path(path), m_slot(TakeEntry(directory))
{
    Entry& entry = s_entries[m_slot];
    int fd = -1;
    do
    {
        entry.m_used = false;
        MakeName(entry);
        entry.m_used = true;
        fd = openat(directory, entry.m_name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                    0666);
    } while (fd < 0 && (errno == EEXIST || errno == EINTR));
    const int error = errno;
    m_fd = Descriptor(fd);
    if (fd < 0)
    {
        entry.m_used = false;
        throw MakeFileError("write", m_path, error);
    }
}

TemporaryFile::~TemporaryFile()
{
    Entry& entry = s_entries[m_slot];
    if (entry.m_used)
        Remove(entry);
    entry.m_used = false;
}

/// The file is not synchronised: that would protect against a loss of power, which costs a build
/// tool more than it is worth. A disk that is full or fails shows in `write`, over a network here.
void TemporaryFile::Finish()
{
    m_fd.Finish(m_path);
}

bool TemporaryFile::HasBytesOf(const std::string& name) const
{
    const Entry& entry = s_entries[m_slot];
    constexpr int flags = O_RDONLY | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW;
    const Descriptor own(OpenAt(entry.m_directory, entry.m_name, flags));
    const Descriptor earlier(OpenAt(entry.m_directory, name.c_str(), flags));
    return own.IsOpen() && earlier.IsOpen() && HoldSameBytes(own.Get(), earlier.Get());
}

/// Whether what has come to `name` since the run began may be replaced: nothing, or a regular file.
void TemporaryFile::CheckPlace(const std::string& name) const
{
    struct stat status;
    const int directory = s_entries[m_slot].m_directory;
    if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        !S_ISREG(status.st_mode))
        throw MakeFileError("write", m_path, S_ISDIR(status.st_mode) ? EISDIR : EEXIST);
}

/// 0, or an `errno`.
int TemporaryFile::Rename(const std::string& name, unsigned flags) const
{
    const Entry& entry = s_entries[m_slot];
    const int directory = entry.m_directory;
    const auto rename = [&]
    {
        return flags == 0 ? renameat(directory, entry.m_name, directory, name.c_str())
                          : renameat2(directory, entry.m_name, directory, name.c_str(), flags);
    };
    return Uninterrupted(rename) == 0 ? 0 : errno;
}

void TemporaryFile::RenameTo(const std::string& name)
{
    CheckPlace(name);
    if (const int error = Rename(name, 0))
        throw MakeFileError("write", m_path, error);
    m_state = EState::Gone;
    s_entries[m_slot].m_used = false;
}

void TemporaryFile::ExchangeWith(const std::string& name)
{
    CheckPlace(name);
    const int error = Rename(name, RENAME_EXCHANGE);
    if (error == ENOENT || error == EINVAL || error == ENOSYS)
    {
        RenameTo(name);
        m_state = error == ENOENT ? EState::Nothing : EState::Gone;
    }
    else if (error != 0)
        throw MakeFileError("write", m_path, error);
    else
    {
        m_state = EState::Earlier;
        CheckTaken(name);
    }
}

/// What came to the place after the last look may not be what a file replaces: then back with it.
void TemporaryFile::CheckTaken(const std::string& name)
{
    struct stat status;
    const Entry& entry = s_entries[m_slot];
    if (fstatat(entry.m_directory, entry.m_name, &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        S_ISREG(status.st_mode))
        return;
    MoveBack(name);
    m_state = EState::Own;
    throw MakeFileError("write", m_path, S_ISDIR(status.st_mode) ? EISDIR : EEXIST);
}

void TemporaryFile::MoveBack(const std::string& name)
{
    if (m_state == EState::Earlier)
        Rename(name, RENAME_EXCHANGE);
    if (m_state == EState::Nothing)
        Uninterrupted([&] { return unlinkat(s_entries[m_slot].m_directory, name.c_str(), 0); });
}

void InstallSignalHandlers()
{
    s_owner = getpid();
    s_isOwner = nullptr;         // that of the process that forked this one, if any
    const SignalBlocker blocker; // What is ignored doesn't come between the two calls either.
    // A program that is started gets defaults for handlers, but would inherit SIG_IGN.
    struct sigaction ignoring = {};
    ignoring.sa_handler = IgnoreSignal;
    for (const int signal : s_ofWriting)
        HandleUnlessHandled(signal, ignoring);
    struct sigaction ending = {};
    ending.sa_sigaction = OnSignal;
    ending.sa_flags = SA_SIGINFO | SA_RESTART | SA_ONSTACK;
    ending.sa_mask = HandledSignals();
    ForEachEndingSignal([&](int signal) { HandleUnlessHandled(signal, ending); });
}

void PassSignalsTo(pid_t child)
{
    s_child = child;
}

SignalBlocker::SignalBlocker()
{
    const sigset_t set = BlockableSignals();
    pthread_sigmask(SIG_BLOCK, &set, &m_before);
}

SignalBlocker::~SignalBlocker()
{
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

void HandleSignalsHere()
{
    stack_t current = {};
    if (sigaltstack(nullptr, &current) == 0 && (current.ss_flags & SS_DISABLE) != 0)
    {
        stack_t stack = {};
        stack.ss_sp = s_faultStack;
        stack.ss_size = sizeof(s_faultStack);
        sigaltstack(&stack, nullptr);
    }
    s_worker = gettid();
    const sigset_t set = HandledSignals();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void SetEndHook(std::function<bool(EEnd)> hook)
{
    s_endHook = std::move(hook);
}

void EndRun(const std::string& message, EEnd end)
{
    EndForkedProcess(/*succeeded=*/false);
    RemoveTemporaryFiles();
    if (!s_endHook || s_endHook(end))
        WriteAll(STDERR_FILENO, ViewOf("tlexpand: " + message + "\n"));
    _exit(2);
}

namespace
{

/// Takes no memory.
[[noreturn]] void EndForLackOfMemory()
{
    constexpr std::string_view message = "tlexpand: Out of memory\n";
    EndForkedProcess(/*succeeded=*/false);
    RemoveTemporaryFiles();
    WriteAll(STDERR_FILENO, SubString(message.data(), message.data() + message.size()));
    _exit(2);
}

/// Without an exception under way, one could not be made. To throw it again would need memory.
void Terminate()
{
    const std::type_info* const error = abi::__cxa_current_exception_type();
    if (error == nullptr || *error == typeid(std::bad_alloc))
        EndForLackOfMemory();
    abort(); // a broken assumption of this program, of which a core is worth having
}

} // namespace

void EndRunWithoutMemory()
{
    std::set_terminate(Terminate);
}

void WatchForForks()
{
    constexpr size_t size = 1; // a page
    void* const page =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED || madvise(page, size, MADV_WIPEONFORK) != 0)
        return;
    auto* const isOwner = static_cast<unsigned char*>(page);
    *isOwner = 1;
    s_isOwner = isOwner;
}

void EndForkedProcess(bool succeeded)
{
    if (s_isOwner != nullptr ? *s_isOwner == 0 : getpid() != s_owner)
        _exit(succeeded ? 0 : 1);
}

} // namespace telv::tool
