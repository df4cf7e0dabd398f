// SPDX-License-Identifier: MIT
// Saves and restores the dispositions of signals around calls of Python.
#include "tlMacroExpander/src/Python/PythonSignals.h"

namespace telv
{

PythonSignals* PythonSignals::s_outermost = nullptr;

PythonSignals::PythonSignals(EWhen when)
{
    if (s_outermost == nullptr)
        s_outermost = this;
    if (when == AT_ONCE)
        s_outermost->Save();
}

PythonSignals::~PythonSignals()
{
    if (s_outermost != this)
        return;
    s_outermost = nullptr;
    if (!m_isSaved)
        return;
    for (std::size_t i = 0; i < s_signals.size(); ++i)
        sigaction(s_signals[i], &m_saved[i], nullptr);
}

void PythonSignals::NoteChange()
{
    if (s_outermost != nullptr)
        s_outermost->Save();
}

void PythonSignals::Save()
{
    if (m_isSaved)
        return;
    m_isSaved = true;
    for (std::size_t i = 0; i < s_signals.size(); ++i)
        sigaction(s_signals[i], nullptr, &m_saved[i]);
}

} // namespace telv
