// Saves and restores the dispositions of signals around calls of Python.
#include "tlMacroExpander/src/Python/PythonSignals.h"

namespace telv
{

PythonSignals::PythonSignals()
{
    for (std::size_t i = 0; i < s_signals.size(); ++i)
        sigaction(s_signals[i], nullptr, &m_saved[i]);
}

PythonSignals::~PythonSignals()
{
    for (std::size_t i = 0; i < s_signals.size(); ++i)
        sigaction(s_signals[i], &m_saved[i], nullptr);
}

} // namespace telv
