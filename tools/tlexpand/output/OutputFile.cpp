// SPDX-License-Identifier: MIT
// Links are followed by hand, so that the temporary file lies in the directory of the link's target
// and the rename replaces the target and not the link. A link that leads elsewhere than its text
// says (those below /proc do) is written to directly.
#include "output/OutputFile.h"
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace telv::tool
{

namespace
{

constexpr size_t s_bufferSize = size_t{256} * 1024;
constexpr int s_mostLinks = 40;

std::string ReadLink(int directory, const std::string& name, const std::string& path)
{
    std::string target(4096, '\0');
    const ssize_t length = readlinkat(directory, name.c_str(), target.data(), target.size());
    if (length < 0)
        throw MakeFileError("write", path, errno);
    target.resize(static_cast<size_t>(length));
    return target;
}

Descriptor OpenDirectory(int base, const std::string& name, const std::string& path)
{
    const int fd = OpenAt(base, name.empty() ? "." : name.c_str(), O_PATH | O_DIRECTORY);
    if (fd < 0)
        throw MakeFileError("write", path, errno);
    return Descriptor(fd);
}

std::string NameIn(const std::string& path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

void WriteContent(int fd, const std::string& path, const Content& content)
{
    ByteSink sink(fd, path);
    content(sink);
    sink.Flush();
}

} // namespace

void ByteSink::Write(SubString text)
{
    if (text.size() >= static_cast<ssize_t>(s_bufferSize))
    {
        Flush();
        return WriteAll(m_fd, text, m_path);
    }
    m_pending.append(text.begin(), static_cast<size_t>(text.size()));
    if (m_pending.size() >= s_bufferSize)
        Flush();
}

void ByteSink::Flush()
{
    WriteAll(m_fd, ViewOf(m_pending), m_path);
    m_pending.clear();
}

OutputFile::OutputFile(const std::string& path) : m_path(path)
{
    const auto status = StatusOf(path);
    if (status && S_ISDIR(status->st_mode))
        throw MakeFileError("write", path, EISDIR);
    m_direct = status && !S_ISREG(status->st_mode);
    if (m_direct)
        return;
    if (status)
        m_identity = FileIdentity(*status);
    Resolve();
}

void OutputFile::Resolve()
{
    std::string rest = m_path;
    int base = StartDirectory();
    struct stat status;
    for (int links = 0; links <= s_mostLinks; ++links)
    {
        m_directory = OpenDirectory(base, DirectoryOf(rest), m_path);
        base = m_directory.Get();
        m_name = NameIn(rest);
        if (m_name.empty())
            throw MakeFileError("write", m_path, EISDIR);
        if (fstatat(base, m_name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        {
            if (errno != ENOENT)
                throw MakeFileError("write", m_path, errno);
            m_direct = m_identity.has_value();
            break;
        }
        if (!S_ISLNK(status.st_mode))
        {
            m_direct = FileIdentity(status) != m_identity;
            break;
        }
        if (links == s_mostLinks)
            throw MakeFileError("write", m_path, ELOOP);
        rest = ReadLink(base, m_name, m_path);
    }
    if (fstat(base, &status) == 0)
        m_directoryIdentity = FileIdentity(status);
}

bool OutputFile::IsSameFile(const OutputFile& other) const
{
    if (m_direct || other.m_direct)
        return false;
    const bool samePlace =
        m_directoryIdentity == other.m_directoryIdentity && m_name == other.m_name;
    return samePlace || (m_identity && m_identity == other.m_identity);
}

bool OutputFile::IsFile(const FileIdentity& identity) const
{
    return !m_direct && m_identity == identity;
}

TemporaryFile& OutputFile::Temporary()
{
    if (m_temporary == nullptr)
        m_temporary = std::make_unique<TemporaryFile>(m_directory.Get(), m_path);
    return *m_temporary;
}

void OutputFile::Append(SubString text)
{
    if (m_direct)
        OpenDirectly();
    const int fd = m_direct ? m_directFile.Get() : Temporary().Fd();
    WriteAll(fd, text, m_path);
}

void OutputFile::Write(const Content& content)
{
    if (m_direct)
    {
        OpenDirectly();
        WriteContent(m_directFile.Get(), m_path, content);
        m_directFile.Finish(m_path);
        return;
    }
    WriteContent(Temporary().Fd(), m_path, content);
    m_temporary->Finish();
}

void OutputFile::OpenDirectly()
{
    if (!m_directFile.IsOpen())
        m_directFile =
            Descriptor(OpenAt(StartDirectory(), m_path.c_str(), O_WRONLY | O_TRUNC | O_NOCTTY));
    if (!m_directFile.IsOpen())
        throw MakeFileError("write", m_path, errno);
}

void OutputFile::LeaveIfUnchanged()
{
    if (m_temporary != nullptr && m_identity && m_temporary->HasBytesOf(m_name))
        m_temporary.reset();
}

void OutputFile::Rename()
{
    if (m_temporary != nullptr)
        m_temporary->RenameTo(m_name);
    Settle();
}

void OutputFile::Exchange()
{
    if (m_temporary != nullptr)
        m_temporary->ExchangeWith(m_name);
}

void OutputFile::UndoExchange()
{
    if (m_temporary != nullptr)
        m_temporary->MoveBack(m_name);
}

void WriteStandardOutput(const Content& content)
{
    const char* const name = NameOfStream(STDOUT_FILENO);
    WriteContent(STDOUT_FILENO, name, content);
    Descriptor(STDOUT_FILENO).Finish(name);
}

} // namespace telv::tool
