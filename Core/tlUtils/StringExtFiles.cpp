// SPDX-License-Identifier: MIT
// Reading whole files. The size that the system tells is a hint only: pipes and the files of
// virtual file systems have none, so reading ends where the text ends.
#include "tlUtils/StringExt.h"
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace telv
{

namespace
{

/// A file opened for reading, closed at the end of the scope.
class InputFile
{
public:
    explicit InputFile(const char* path)
    {
        do
            m_descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
        while (m_descriptor < 0 && errno == EINTR);
    }
    ~InputFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    int m_descriptor; ///< Negative when the file could not be opened.
};

/// The size of the file, 0 when it has none that counts, -1 when it can't be read as text.
ssize_t ExpectedSize(int descriptor)
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode))
        return -1;
    return S_ISREG(status.st_mode) ? status.st_size : 0;
}

/// Appends up to `room` bytes to `text`. Their number, 0 at the end of the file, or -1.
ssize_t ReadSome(int descriptor, xstring& text, ssize_t room)
{
    const ssize_t before = text.size();
    unsigned char* const bytes = text.m_buffer.insertbytes(before, room);
    ssize_t n;
    do
        n = ::read(descriptor, bytes, static_cast<size_t>(room));
    while (n < 0 && errno == EINTR);
    text.m_buffer.size_ = before + std::max<ssize_t>(n, 0);
    return n;
}

bool ReadToEnd(int descriptor, xstring& text)
{
    constexpr ssize_t leastRoom = 4096;
    constexpr ssize_t mostRoom = ssize_t(1) << 30; // the system reads no more at once
    ssize_t n;
    do
    {
        const ssize_t room = std::max(text.capacity() - text.size(), leastRoom);
        n = ReadSome(descriptor, text, std::min(room, mostRoom));
    } while (n > 0);
    return n == 0;
}

void DropCarriageReturnsOfLineEnds(xstring& text)
{
    StringFindAndReplace(text, "\r\n", "\n");
}

} // namespace

bool ReadStringFromFile(xstring& out, const xstring& path, bool binary)
{
    if (!path.empty() && std::memchr(path.begin(), 0, static_cast<size_t>(path.size())) != nullptr)
        return false;
    const InputFile file(path.c_str());
    if (file.m_descriptor < 0)
        return false;
    const ssize_t expected = ExpectedSize(file.m_descriptor);
    if (expected < 0)
        return false;
    xstring text;
    text.reserve(expected + 4096); // with room to meet the end in the last call
    if (!ReadToEnd(file.m_descriptor, text))
        return false;
    if (!binary)
        DropCarriageReturnsOfLineEnds(text);
    out.swap(text);
    return true;
}

} // namespace telv
