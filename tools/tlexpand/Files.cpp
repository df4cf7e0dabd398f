// SPDX-License-Identifier: MIT
// open, read, write and close with their errors looked at.
#include "Files.h"
#include "tlUtils/HeldMemory.h"
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <new>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace telv::tool
{

namespace
{

/// What a regular file tells; 0 when it is not known.
ssize_t SizeOf(int fd)
{
    struct stat status;
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode) ? static_cast<ssize_t>(status.st_size)
                                                              : 0;
}

/// Whether a read or write that failed with `error` should be tried again, after waiting for a
/// descriptor that would block.
bool MayRetry(int fd, short events, int error)
{
    if (error == EINTR)
        return true;
    if (error != EAGAIN && error != EWOULDBLOCK)
        return false;
    pollfd waited = {fd, events, 0};
    return poll(&waited, 1, -1) > 0 || errno == EINTR;
}

/// Appends what the descriptor gives next; 0 at its end.
ssize_t ReadSome(int fd, xstring& text, ssize_t room, const std::string& path)
{
    const ssize_t size = text.size();
    unsigned char* const to = text.m_buffer.insertbytes(size, room);
    ssize_t got = read(fd, to, static_cast<size_t>(room));
    while (got < 0 && MayRetry(fd, POLLIN, errno))
        got = read(fd, to, static_cast<size_t>(room));
    const int error = errno;
    text.m_buffer.size_ = size + std::max<ssize_t>(got, 0);
    if (got < 0)
        throw MakeFileError("read", path, error);
    return got;
}

/// Reads `size` bytes at `offset`; false when they are not there.
bool ReadAt(int fd, std::string& bytes, ssize_t size, ssize_t offset)
{
    for (ssize_t done = 0; done < size;)
    {
        const ssize_t got = Uninterrupted(
            [&] {
                return pread(fd, bytes.data() + done, static_cast<size_t>(size - done),
                             offset + done);
            });
        if (got <= 0)
            return false;
        done += got;
    }
    return true;
}

/// What the system calls the open file; empty when it does not tell.
std::string NameOfOpenFile(int fd)
{
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    char name[PATH_MAX];
    const ssize_t length = readlink(link.c_str(), name, sizeof(name));
    const bool isWhole = length > 0 && static_cast<size_t>(length) < sizeof(name);
    return isWhole ? std::string(name, static_cast<size_t>(length)) : std::string();
}

} // namespace

int OpenAt(int directory, const char* path, int flags)
{
    return Uninterrupted([=] { return openat(directory, path, flags | O_CLOEXEC); });
}

std::string ErrorText(int error)
{
    const char* const text = strerrordesc_np(error);
    return text != nullptr ? text : "error " + std::to_string(error);
}

FileError MakeFileError(const char* verb, const std::string& path, int error)
{
    return FileError(std::string("can't ") + verb + " '" + path + "': " + ErrorText(error));
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    if (this != &other)
    {
        Close();
        m_fd = other.Release();
    }
    return *this;
}

int Descriptor::Release()
{
    const int fd = m_fd;
    m_fd = -1;
    return fd;
}

int Descriptor::Close()
{
    if (m_fd < 0)
        return 0;
    // After EINTR the descriptor is gone on Linux; trying again could close somebody else's.
    const int failed = close(Release());
    return failed == 0 || errno == EINTR ? 0 : errno;
}

void Descriptor::Finish(const std::string& path)
{
    if (const int error = Close())
        throw MakeFileError("write", path, error);
}

void OpenMissingStandardDescriptors()
{
    const int modes[] = {O_WRONLY, O_RDONLY, O_WRONLY};
    for (int fd = 0; fd <= 2; ++fd)
        if (fcntl(fd, F_GETFD) == -1 && errno == EBADF)
            (void)!open("/dev/null", modes[fd]);
}

int StartDirectory()
{
    static const int s_directory = OpenAt(AT_FDCWD, ".", O_PATH | O_DIRECTORY);
    return s_directory < 0 ? AT_FDCWD : s_directory;
}

xstring ReadAll(int fd, const std::string& path)
{
    return ReadAll(fd, path, SizeOf(fd));
}

xstring ReadAll(int fd, const std::string& path, ssize_t size)
try
{
    constexpr ssize_t chunk = ssize_t{64} * 1024;
    xstring text;
    ssize_t room = size > 0 ? size + 1 : chunk;
    while (const ssize_t got = ReadSome(fd, text, room, path))
    {
        if (text.size() == size)
            break; // it gave less than it was asked for
        room = std::max({room - got, chunk, text.size() / 2});
    }
    return text;
}
catch (const MemoryLimitReached&)
{
    throw;
}
catch (const std::bad_alloc&)
{
    throw MakeFileError("read", path, ENOMEM);
}

namespace
{

/// A text that the system can't read is a part of a mapped file that is gone. Touching it brings
/// the signal that says so.
void TouchAll(SubString text)
{
    for (const char& c : text)
        (void)*static_cast<const volatile char*>(&c);
}

} // namespace

int WriteAll(int fd, SubString text)
{
    while (!text.empty())
    {
        const ssize_t written = write(fd, text.begin(), static_cast<size_t>(text.size()));
        if (written > 0)
            text.m_p1 += written;
        else if (written == 0)
            return ENOSPC;
        else if (const int error = errno; !MayRetry(fd, POLLOUT, error))
        {
            if (error == EFAULT)
                TouchAll(text);
            return error;
        }
    }
    return 0;
}

NamedInput::NamedInput(const std::string& path) : m_name(path == "-" ? "<stdin>" : path)
{
    if (path == "-")
        return;
    m_file = Descriptor(OpenAt(StartDirectory(), path.c_str(), O_RDONLY | O_NOCTTY));
    if (!m_file.IsOpen())
        throw MakeFileError("read", path, errno);
}

int NamedInput::Fd() const
{
    return m_file.IsOpen() ? m_file.Get() : STDIN_FILENO;
}

void WriteAll(int fd, SubString text, const std::string& path)
{
    if (const int error = WriteAll(fd, text))
        throw MakeFileError("write", path, error);
}

const char* NameOfStream(int fd)
{
    return fd == STDOUT_FILENO ? "standard output" : "standard error";
}

bool HoldSameBytes(int a, int b)
{
    struct stat statusOfA;
    struct stat statusOfB;
    if (fstat(a, &statusOfA) != 0 || fstat(b, &statusOfB) != 0 || !S_ISREG(statusOfA.st_mode) ||
        !S_ISREG(statusOfB.st_mode) || statusOfA.st_size != statusOfB.st_size)
        return false;
    constexpr ssize_t chunk = ssize_t{64} * 1024;
    std::string bytesOfA(chunk, '\0');
    std::string bytesOfB(chunk, '\0');
    for (ssize_t offset = 0; offset < statusOfA.st_size; offset += chunk)
    {
        const ssize_t size = std::min<ssize_t>(chunk, statusOfA.st_size - offset);
        if (!ReadAt(a, bytesOfA, size, offset) || !ReadAt(b, bytesOfB, size, offset) ||
            bytesOfA.compare(0, static_cast<size_t>(size), bytesOfB, 0,
                             static_cast<size_t>(size)) != 0)
            return false;
    }
    return true;
}

std::string RealPath(int fd, const std::string& path)
{
    std::string normalised = JoinPath("", path);
    std::string name = NameOfOpenFile(fd);
    const std::string start = NameOfOpenFile(StartDirectory());
    const bool isAbsolute = path.starts_with('/');
    const bool isKnown = name.starts_with('/') && start.starts_with('/');
    if (!isKnown || name == (isAbsolute ? normalised : JoinPath(start, path)))
        return normalised;
    if (isAbsolute)
        return name;
    return RelativePath(start, name);
}

std::optional<struct stat> StatusOf(const std::string& path)
{
    struct stat status;
    const bool exists = fstatat(StartDirectory(), path.c_str(), &status, 0) == 0;
    return exists ? std::optional(status) : std::nullopt;
}

bool HasSameText(const struct stat& before, const struct stat& now)
{
    return before.st_size == now.st_size && before.st_mtim.tv_sec == now.st_mtim.tv_sec &&
           before.st_mtim.tv_nsec == now.st_mtim.tv_nsec;
}

bool IsRegularFile(const std::string& path)
{
    if (path.find('\0') != std::string::npos)
        return false;
    const auto status = StatusOf(path);
    return status && S_ISREG(status->st_mode);
}

std::string DirectoryOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return std::string();
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string AbsolutePath(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? path : JoinPath("", absolute.string());
}

std::optional<FileIdentity> RegularFileAt(int fd)
{
    struct stat status;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return FileIdentity(status);
}

bool IsSameFile(const std::string& a, const std::string& b)
{
    const auto first = StatusOf(a);
    const auto second = StatusOf(b);
    return first && second && FileIdentity(*first) == FileIdentity(*second);
}

std::string JoinPath(const std::string& directory, const std::string& name)
{
    const std::filesystem::path joined(directory.empty() ? name : directory + "/" + name);
    std::string normal = joined.lexically_normal().string();
    if (normal.size() > 1 && normal.ends_with('/'))
        normal.pop_back();
    return normal;
}

std::string JoinImportPath(const std::string& directory, const std::string& name)
{
    xstring joined(ViewOf(directory.empty() ? name : directory + "/" + name));
    NormalisePath(joined);
    return ToStdString(joined);
}

std::string ResolvedPath(const std::string& path)
{
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : path;
}

std::string RelativePath(const std::string& from, const std::string& to)
{
    const std::string target = JoinPath("", to);
    const std::string way =
        std::filesystem::path(target).lexically_relative(JoinPath("", from)).string();
    return way.empty() ? target : way;
}

} // namespace telv::tool
