// Nothing may be left behind when the run ends early: temporary files are known here by name, so
// that a signal handler can remove them.
//
// The handler runs on the thread that does the work (see LargeStack.h), which alone makes, renames
// and removes temporary files; so it never meets one half registered.
#pragma once

#include "Files.h"
#include <csignal>
#include <string>

namespace telv::tool
{

/// A file beside its future place. It goes when this object goes, unless it was renamed.
class TemporaryFile
{
public:
    /// Makes a file with an unforeseeable name, for writing, with the permissions that a new file
    /// would have.
    ///
    /// @param directory  Must stay open as long as this object.
    /// @param path       Names the file that it is to become, in errors.
    TemporaryFile(int directory, const std::string& path);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int Fd() const { return m_fd.Get(); }
    /// Brings the text to the disk and closes the file.
    void Finish();
    /// Moves the file to `name` in its directory, over what is there.
    void RenameTo(const std::string& name);

private:
    std::string m_path;
    size_t m_slot; ///< Of the table that the signal handler reads.
    Descriptor m_fd;
};

/// Installs handlers for the signals that end a program: they remove the temporary files of this
/// process and let the signal have its effect. Signals that are ignored stay so. SIGPIPE and
/// SIGXFSZ are ignored from now on, so that the write that meets them fails.
void InstallSignalHandlers();

/// Keeps those signals away for the length of a scope, or of a thread.
class SignalBlocker
{
public:
    SignalBlocker();
    ~SignalBlocker();
    SignalBlocker(const SignalBlocker&) = delete;
    SignalBlocker& operator=(const SignalBlocker&) = delete;

private:
    sigset_t m_before;
};

/// Lets them through to this thread.
void UnblockSignals();

/// Ends the process at once, with status 2, after removing the temporary files and writing
/// "tlexpand: MESSAGE". For places that no exception may leave.
[[noreturn]] void EndRun(const std::string& message);

/// False in a process that Python code forked off this one: it must not finish the run.
bool IsOriginalProcess();

} // namespace telv::tool
