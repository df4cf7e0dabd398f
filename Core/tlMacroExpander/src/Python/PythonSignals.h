// SPDX-License-Identifier: MIT
// Keeps Python from taking over the signals of the process.
//
// Starting Python leaves them alone, but importing its module `signal` (many modules do) takes
// SIGINT, a script can take any, and ending Python resets SIGINT. A handler of Python's would only
// note the signal and wait for Python code to run: after the bridge has returned, that is never.
//
// Looking at all of them costs more than a small expression. So the module is imported when Python
// starts, and its functions tell when they are called; other modules that are no Python code are
// not trusted.
#pragma once

#include <array>
#include <csignal>

namespace telv
{

/// Puts back, at the end of the scope, the dispositions of the signals that end a process. Scopes
/// inside one another are one. The lock of Python must be held.
class PythonSignals
{
public:
    /// When they are looked at.
    enum EWhen
    {
        AT_ONCE,
        BEFORE_A_CHANGE ///< When `NoteChange` is called, if ever.
    };

    explicit PythonSignals(EWhen when = AT_ONCE);
    ~PythonSignals();
    PythonSignals(const PythonSignals&) = delete;
    PythonSignals& operator=(const PythonSignals&) = delete;

    /// Python code is about to change one.
    static void NoteChange();

private:
    // Not those of faults: an application's tools handle them.
    static constexpr std::array s_signals = {SIGHUP,  SIGINT,    SIGQUIT, SIGUSR1, SIGUSR2,
                                             SIGPIPE, SIGALRM,   SIGTERM, SIGXCPU, SIGXFSZ,
                                             SIGPROF, SIGVTALRM, SIGPOLL, SIGPWR,  SIGSTKFLT};

    void Save();

    static PythonSignals* s_outermost;

    bool m_isSaved = false;
    std::array<struct sigaction, s_signals.size()> m_saved;
};

} // namespace telv
