// SPDX-License-Identifier: MIT
// Nothing may be left behind when the run ends early: temporary files are known here by name, so
// that a signal handler can remove them.
//
// The handler does its work on the thread that does the run's (see LargeStack.h), which alone
// makes, renames and removes temporary files; so it never meets one half registered. What another
// thread receives is handed on.
#pragma once

#include "Files.h"
#include <csignal>
#include <functional>
#include <string>
#include <sys/types.h>

namespace telv::tool
{

/// A file beside its future place. When this object goes, so does what then has the temporary name:
/// the file itself, or the earlier file that it was exchanged with.
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
    /// Closes the file, which is complete.
    void Finish();
    /// Whether the finished file holds the same bytes as the regular file `name` in its directory.
    bool HasBytesOf(const std::string& name) const;
    /// Moves the file to `name` in its directory, over what is there.
    void RenameTo(const std::string& name);
    /// The same, but what is there takes the temporary name, so that `MoveBack` can undo it. Where
    /// the file system can't exchange two files it does what RenameTo does.
    void ExchangeWith(const std::string& name);
    /// Undoes an ExchangeWith, if it was made and can be undone.
    void MoveBack(const std::string& name);

private:
    /// What has the temporary name.
    enum class EState
    {
        Own,     ///< This file.
        Earlier, ///< The file whose place it has taken.
        Nothing, ///< It has moved to where nothing was.
        Gone     ///< It has moved over an earlier file.
    };

    int Rename(const std::string& name, unsigned flags) const;
    void CheckPlace(const std::string& name) const;
    void CheckTaken(const std::string& name);

    std::string m_path;
    size_t m_slot; ///< Of the table that the signal handler reads.
    Descriptor m_fd;
    EState m_state = EState::Own;
};

/// Installs handlers for all signals that end a program and can be caught: they remove the
/// temporary files of this process and let the signal have its effect (the first process of a
/// container, on which it would have none, ends with status 128 + N). SIGPIPE and SIGXFSZ have no
/// effect from now on, so that the write that meets them fails. Signals that are ignored or handled
/// already stay so; programs that this process starts find all others at their defaults.
void InstallSignalHandlers();

/// From now on, a signal that is sent to this process and ends it is sent to the process `child` as
/// well, which was started by it and not waited for; 0 for none. Those of a terminal it gets
/// anyway.
void PassSignalsTo(pid_t child);

/// Keeps those signals away, faults of the code apart, for the length of a scope, or of a thread.
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

/// Makes this thread the one that signals are handled on, and lets them through to it.
void HandleSignalsHere();

/// Whom the end of a run concerns.
enum class EEnd : unsigned char
{
    File,   ///< The file at hand.
    Streams ///< Every file of the batch: a standard stream takes no more.
};

/// Asked by EndRun before the message is written, which is left out when the answer is false.
void SetEndHook(std::function<bool(EEnd)> hook);

/// Ends the process at once, with status 2, after removing the temporary files and writing
/// "tlexpand: MESSAGE"; without either in a process that was forked off. For places that no
/// exception may leave.
[[noreturn]] void EndRun(const std::string& message, EEnd end = EEnd::File);

/// Has the process end in the same way, with "Out of memory", when an error can't be reported
/// because there is no memory for an exception, or because memory ran out where no exception may
/// leave.
void EndRunWithoutMemory();

/// Lets `EndForkedProcess` know without a system call; to be called before the first code that can
/// fork, once in a process.
void WatchForForks();

/// Ends a process that was forked off the one that started the run, at once and without a word,
/// with status 0 when its Python code `succeeded`, else 1. Does nothing in the process that started
/// it.
void EndForkedProcess(bool succeeded);

} // namespace telv::tool
