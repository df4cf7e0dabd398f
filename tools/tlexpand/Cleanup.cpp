// A fixed table of temporary names, the one state here that is process-wide: a signal handler has
// no other way to reach it. An entry is filled before its file is made and freed after it is gone.
#include "Cleanup.h"
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

namespace telv::tool
{

namespace
{

constexpr int s_signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGALRM, SIGXCPU, SIGUSR1, SIGUSR2};

struct Entry
{
    std::atomic<bool> m_used = false;
    int m_directory = -1;
    char m_name[32] = {};
};

/// One for each output that a run can have, and some.
Entry s_entries[8];
pid_t s_owner = 0;

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

void OnSignal(int signal)
{
    const int error = errno;
    RemoveTemporaryFiles();
    raise(signal); // Its default effect is back; it comes when this handler returns.
    errno = error;
}

sigset_t HandledSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : s_signals)
        sigaddset(&set, signal);
    return set;
}

void IgnoreSignal(int /*signal*/) {}

/// Sets the handler of a signal that is not ignored.
void Handle(int signal, void (*handler)(int), int flags)
{
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    action.sa_mask = HandledSignals();
    sigaction(signal, &action, nullptr);
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
    std::snprintf(entry.m_name, sizeof(entry.m_name), ".tlexpand-%016lx", random);
}

/// The mask can only be read by setting it.
mode_t PermissionsOfNewFile()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
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
                    0600);
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

void TemporaryFile::Finish()
{
    // A file system that cannot synchronise a file has nothing to report either.
    const bool synced = Uninterrupted([this] { return fsync(m_fd.Get()); }) == 0 ||
                        errno == EINVAL || errno == ENOSYS;
    const auto setPermissions = [this] { return fchmod(m_fd.Get(), PermissionsOfNewFile()); };
    if (!synced || Uninterrupted(setPermissions) != 0)
        throw MakeFileError("write", m_path, errno);
    if (const int error = m_fd.Close())
        throw MakeFileError("write", m_path, error);
}

bool TemporaryFile::HasBytesOf(const std::string& name) const
{
    const Entry& entry = s_entries[m_slot];
    constexpr int flags = O_RDONLY | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW;
    const Descriptor own(OpenAt(entry.m_directory, entry.m_name, flags));
    const Descriptor earlier(OpenAt(entry.m_directory, name.c_str(), flags));
    return own.IsOpen() && earlier.IsOpen() && HoldSameBytes(own.Get(), earlier.Get());
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
    if (const int error = Rename(name, 0))
        throw MakeFileError("write", m_path, error);
    m_state = EState::Gone;
    s_entries[m_slot].m_used = false;
}

void TemporaryFile::ExchangeWith(const std::string& name)
{
    const int error = Rename(name, RENAME_EXCHANGE);
    if (error == ENOENT || error == EINVAL || error == ENOSYS)
    {
        RenameTo(name);
        m_state = error == ENOENT ? EState::Nothing : EState::Gone;
    }
    else if (error != 0)
        throw MakeFileError("write", m_path, error);
    else
        m_state = EState::Earlier;
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
    // A program that is started gets defaults for handlers, but would inherit SIG_IGN.
    for (const int signal : {SIGPIPE, SIGXFSZ})
        Handle(signal, IgnoreSignal, SA_RESTART);
    for (const int signal : s_signals)
        Handle(signal, OnSignal, static_cast<int>(SA_RESETHAND | SA_RESTART));
}

SignalBlocker::SignalBlocker()
{
    const sigset_t set = HandledSignals();
    pthread_sigmask(SIG_BLOCK, &set, &m_before);
}

SignalBlocker::~SignalBlocker()
{
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

void UnblockSignals()
{
    const sigset_t set = HandledSignals();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void EndRun(const std::string& message)
{
    EndForkedProcess(/*succeeded=*/false);
    RemoveTemporaryFiles();
    WriteAll(STDERR_FILENO, ViewOf("tlexpand: " + message + "\n"));
    _exit(2);
}

void EndForkedProcess(bool succeeded)
{
    if (getpid() != s_owner)
        _exit(succeeded ? 0 : 1);
}

} // namespace telv::tool
