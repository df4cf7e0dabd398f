// SPDX-License-Identifier: MIT
// The tool's way to the system's files: descriptors that close themselves, whole reads and whole
// writes, and the working directory of the start.
//
// Relative names are taken relative to the directory in which the tool was started, through a
// descriptor: embedded Python code may change the working directory of the process.
#pragma once

#include "tlUtils/StringExt.h"
#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/stat.h>

namespace telv::tool
{

/// A file that can't be read or written; the text says which and why. Ends the run with status 2.
class FileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What an `errno` means, in English whatever the locale is (Python code can set one).
std::string ErrorText(int error);

/// "can't read 'PATH': REASON" for the verb "read" and an `errno`.
FileError MakeFileError(const char* verb, const std::string& path, int error);

/// Owns a file descriptor.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1) noexcept : m_fd(fd) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : m_fd(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;

    int Get() const { return m_fd; }
    bool IsOpen() const { return m_fd >= 0; }
    /// Gives up ownership.
    int Release();
    /// Closes it now; 0, or the `errno` of a failure, which may be a write that failed late.
    int Close();
    /// The same for what was written; `path` names it in an error.
    ///
    /// @throws FileError
    void Finish(const std::string& path);

private:
    int m_fd;
};

/// The result of a system call that is made again while a signal interrupts it.
template <class Call>
auto Uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// `openat`, made again after an interruption; the descriptor is not inherited by child processes.
int OpenAt(int directory, const char* path, int flags);

/// The same file under whatever name: device and inode.
struct FileIdentity
{
    dev_t m_device = 0;
    ino_t m_inode = 0;

    explicit FileIdentity(const struct stat& status)
        : m_device(status.st_dev), m_inode(status.st_ino)
    {
    }
    auto operator<=>(const FileIdentity&) const = default; // NOLINT(modernize-use-nullptr)
};

/// What is open as `fd`; nothing when that is no regular file.
std::optional<FileIdentity> RegularFileAt(int fd);

/// Makes descriptors 0 to 2 exist, so that no file that is opened later becomes a standard stream
/// by accident. Reading a closed input and writing to a closed output fail; what goes to a closed
/// standard error vanishes.
void OpenMissingStandardDescriptors();

/// Opens the working directory of the start. Call it once, first; later calls return the same.
int StartDirectory();

/// All bytes of `fd`; `path` names it in an error.
xstring ReadAll(int fd, const std::string& path);
/// The same for a regular file of this size, which is no more than a good guess.
xstring ReadAll(int fd, const std::string& path, ssize_t size);

/// A file that the command line names, open to be read; "-" is standard input.
class NamedInput
{
public:
    /// @throws FileError
    explicit NamedInput(const std::string& path);

    int Fd() const;
    /// As it is shown.
    const std::string& Name() const { return m_name; }

private:
    std::string m_name;
    Descriptor m_file; ///< Not open for standard input, which stays.
};

/// Writes all of `text`; 0 or an `errno`. Continues after short writes and interruptions.
int WriteAll(int fd, SubString text);
/// The same; `path` names it in an error.
///
/// @throws FileError
void WriteAll(int fd, SubString text, const std::string& path);

/// What standard output or standard error is called in messages.
const char* NameOfStream(int fd);

/// The name without symbolic links of the open file that `path`, relative to the directory of the
/// start or absolute, led to, in the same manner; `path` itself, normalised, where the system does
/// not tell.
std::string RealPath(int fd, const std::string& path);

/// Whether two open files are regular and hold the same bytes; false when one can't be read.
bool HoldSameBytes(int a, int b);

/// What the system knows of the file that `path` leads to; nothing where there is none.
std::optional<struct stat> StatusOf(const std::string& path);

/// Whether a file has the size and the time of change that it had before: the same text, as far as
/// the system tells.
bool HasSameText(const struct stat& before, const struct stat& now);

/// Whether `path` leads to a regular file; false when it holds a NUL.
bool IsRegularFile(const std::string& path);

/// Whether both paths lead to the same file, which exists.
bool IsSameFile(const std::string& a, const std::string& b);

/// The part before the last slash ("" without one, "/" for a file in the root).
std::string DirectoryOf(const std::string& path);

/// `path` from the root on, as long as Python code has not changed the working directory.
std::string AbsolutePath(const std::string& path);

/// `name` in `directory`, normalised; without a leading "./".
std::string JoinPath(const std::string& directory, const std::string& name);
/// The same for what a text imports, in which backslashes are slashes.
std::string JoinImportPath(const std::string& directory, const std::string& name);

/// The path without symbolic links; `path` itself when it leads nowhere.
std::string ResolvedPath(const std::string& path);

/// From the directory `from` to `to`; `to` itself when there is no way between their names.
std::string RelativePath(const std::string& from, const std::string& to);

inline std::string ToStdString(SubString s)
{
    return s.empty() ? std::string() : std::string(s.begin(), static_cast<size_t>(s.size()));
}

inline SubString ViewOf(const std::string& s)
{
    return SubString(s.data(), s.data() + s.size());
}

} // namespace telv::tool
