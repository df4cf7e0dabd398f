// SPDX-License-Identifier: MIT
// One output of a run. Text for a regular file goes to a temporary file beside it, which is renamed
// over it at the end; anything else (a pipe, a device, standard output) is written directly.
#pragma once

#include "Cleanup.h"
#include "Files.h"
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace telv::tool
{

/// Collects bytes for a descriptor.
class ByteSink
{
public:
    ByteSink(int fd, const std::string& path) : m_fd(fd), m_path(path) {}
    ByteSink(const ByteSink&) = delete;
    ByteSink& operator=(const ByteSink&) = delete;

    /// @throws FileError  Here or in `Flush`.
    void Write(SubString text);
    void Write(const std::string& text) { Write(ViewOf(text)); }
    void Write(const char* text) { Write(SubString(text)); }
    void Flush();

private:
    int m_fd;
    std::string m_path;
    std::string m_pending;
};

/// Writes the whole text of an output to a sink.
using Content = std::function<void(ByteSink&)>;

class OutputFile
{
public:
    /// Finds out what `path` is, following symbolic links; nothing is made or opened for writing.
    ///
    /// @throws FileError  It is a directory, or lies in none.
    explicit OutputFile(const std::string& path);

    const std::string& Path() const { return m_path; }
    /// Whether both are the same regular file, existing or to be made.
    bool IsSameFile(const OutputFile& other) const;
    /// Whether it is now the regular file `identity`.
    bool IsFile(const FileIdentity& identity) const;
    /// Written at once, not renamed at the end.
    bool IsDirect() const { return m_direct; }

    /// Writes a part of the text in advance.
    void Append(SubString text);
    /// Writes the text, or what has not been appended of it: to a temporary file, or directly.
    void Write(const Content& content);
    /// Drops the temporary file when its place has the same bytes: nothing takes that place then.
    void LeaveIfUnchanged();
    /// Puts the temporary file, if there is one, into its place.
    void Rename();
    /// The same so that it can be undone until `Settle`; the earlier file waits under the
    /// temporary name.
    void Exchange();
    void UndoExchange();
    /// The earlier file goes.
    void Settle() { m_temporary.reset(); }

private:
    void Resolve();
    TemporaryFile& Temporary();
    void OpenDirectly();

    std::string m_path;
    Descriptor m_directory;
    std::string m_name; ///< In `m_directory`.
    bool m_direct = false;
    Descriptor m_directFile; ///< Open from the first write on.
    std::optional<FileIdentity> m_directoryIdentity;
    std::optional<FileIdentity> m_identity; ///< Of the file that exists.
    std::unique_ptr<TemporaryFile> m_temporary;
};

/// Writes to standard output, which is then closed; errors of closing count.
void WriteStandardOutput(const Content& content);

} // namespace telv::tool
