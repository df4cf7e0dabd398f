// SPDX-License-Identifier: MIT
// Reading and mapping. A signal tells that a mapped file has become shorter; its handler knows the
// mapped texts by a table of addresses, and for the rest does what the signal did before.
#include "input/InputText.h"
#include "Cleanup.h"
#include "tlUtils/HeldMemory.h"
#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace telv::tool
{

namespace
{

constexpr const char* s_shortened = "it became shorter while it was read";
constexpr const char* s_changed = "it changed while it was read";

/// From here on a mapping is cheaper than a copy.
constexpr off_t s_largeFile = off_t{1024} * 1024;

struct Mapping
{
    SubString m_text;
    std::string m_path;
};

/// What is mapped. Changed only while nobody reads a mapped text, so that the handler, which comes
/// at an instruction that does, finds it whole.
std::vector<Mapping>& Mappings()
{
    static std::vector<Mapping> s_mappings;
    return s_mappings;
}

/// What handled the signal before.
struct sigaction s_earlier;

void OnBusError(int signal, siginfo_t* info, void* context)
{
    const auto* const address = static_cast<const char*>(info->si_addr);
    const auto page = static_cast<ssize_t>(getpagesize());
    if (info->si_code > 0) // Else somebody sent it, and it has no address.
        for (const Mapping& mapping : Mappings())
            if (mapping.m_text.begin() <= address && address < mapping.m_text.end() + page)
                EndRun("can't read '" + mapping.m_path + "': " + s_shortened);
    if ((s_earlier.sa_flags & SA_SIGINFO) != 0)
        return s_earlier.sa_sigaction(signal, info, context);
    std::signal(signal, SIG_DFL);
    raise(signal); // It comes when this handler returns.
}

void HandleBusErrors()
{
    struct sigaction earlier = {};
    sigaction(SIGBUS, nullptr, &earlier);
    if ((earlier.sa_flags & SA_SIGINFO) != 0 && earlier.sa_sigaction == OnBusError)
        return;
    s_earlier = earlier;
    struct sigaction action = {};
    action.sa_sigaction = OnBusError;
    action.sa_flags = SA_SIGINFO | SA_RESTART | SA_ONSTACK;
    action.sa_mask = earlier.sa_mask;
    sigaction(SIGBUS, &action, nullptr);
}

/// For a file that gave another number of bytes than it had: there are such whose size means
/// nothing, and one may have been read in part before.
void CheckUnchanged(int fd, const std::string& path, const struct stat& before)
{
    struct stat now;
    if (fstat(fd, &now) != 0)
        throw MakeFileError("read", path, errno);
    if (!HasSameText(before, now))
        throw FileError("can't read '" + path + "': " + s_changed);
}

} // namespace

InputText::InputText(xstring text)
{
    m_read.swap(text);
    m_read.c_str(); // gives an empty text an address of its own
    m_text = m_read;
}

InputText::~InputText()
{
    if (!m_mapped)
        return;
    std::erase_if(Mappings(), [this](const Mapping& mapping)
                  { return mapping.m_text.begin() == m_text.begin(); });
    munmap(const_cast<char*>(m_text.begin()), static_cast<size_t>(m_text.size()));
    ReleaseMemory(m_text.size());
}

InputText::InputText(InputText&& other) noexcept
{
    *this = std::move(other);
}

InputText& InputText::operator=(InputText&& other) noexcept
{
    std::swap(m_text, other.m_text);
    m_read.swap(other.m_read);
    std::swap(m_mapped, other.m_mapped);
    std::swap(m_file, other.m_file);
    return *this;
}

InputText InputText::Read(int fd, const std::string& path)
{
    struct stat status;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return InputText(ReadAll(fd, path, 0));
    return Read(fd, path, status);
}

InputText InputText::Read(int fd, const std::string& path, const struct stat& status)
{
    InputText input;
    if (input.Map(fd, path, status))
        return input;
    input = InputText(ReadAll(fd, path, static_cast<ssize_t>(status.st_size)));
    if (input.Text().size() != status.st_size)
        CheckUnchanged(fd, path, status);
    return input;
}

/// False when the file is better read. What was read of it already is not part of the text, so only
/// one that stands at its begin is mapped.
bool InputText::Map(int fd, const std::string& path, const struct stat& status)
{
    if (status.st_size < s_largeFile || lseek(fd, 0, SEEK_CUR) != 0)
        return false;
    Descriptor file(fcntl(fd, F_DUPFD_CLOEXEC, 0));
    if (!file.IsOpen())
        return false;
    const auto size = static_cast<size_t>(status.st_size);
    HoldMemory(status.st_size);
    void* const text = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    if (text == MAP_FAILED)
    {
        ReleaseMemory(status.st_size);
        return false;
    }
    m_text = SubString(static_cast<const char*>(text), static_cast<const char*>(text) + size);
    m_mapped = status;
    m_file = std::move(file);
    lseek(fd, 0, SEEK_END); // as if it had been read
    if (Mappings().empty())
        HandleBusErrors();
    Mappings().push_back({m_text, path});
    return true;
}

const char* InputText::FindChange() const
{
    struct stat now;
    if (!m_mapped || fstat(m_file.Get(), &now) != 0 || HasSameText(*m_mapped, now))
        return nullptr;
    return now.st_size < m_mapped->st_size ? s_shortened : s_changed;
}

} // namespace telv::tool
