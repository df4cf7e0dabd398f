// Keeps Python from taking over the signals of the process.
//
// Starting Python leaves them alone, but importing its module `signal` (many modules do) takes
// SIGINT, a script can take any, and ending Python resets SIGINT. A handler of Python's would only
// note the signal and wait for Python code to run: after the bridge has returned, that is never.
#pragma once

#include <array>
#include <csignal>

namespace telv
{

/// Puts back, at the end of the scope, the dispositions of the signals that end a process.
class PythonSignals
{
public:
    PythonSignals();
    ~PythonSignals();
    PythonSignals(const PythonSignals&) = delete;
    PythonSignals& operator=(const PythonSignals&) = delete;

private:
    // Not those of faults: an application's tools handle them.
    static constexpr std::array s_signals = {SIGHUP,  SIGINT,    SIGQUIT, SIGUSR1, SIGUSR2,
                                             SIGPIPE, SIGALRM,   SIGTERM, SIGXCPU, SIGXFSZ,
                                             SIGPROF, SIGVTALRM, SIGPOLL, SIGPWR,  SIGSTKFLT};

    std::array<struct sigaction, s_signals.size()> m_saved;
};

} // namespace telv
