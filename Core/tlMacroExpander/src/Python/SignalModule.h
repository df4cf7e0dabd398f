// SPDX-License-Identifier: MIT
// Python's module `signal`, so far as it concerns the process: see PythonSignals.h.
#pragma once

#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/PythonSignals.h"

namespace telv
{

/// Imports the module, and has its functions tell when they change a disposition. To be called once
/// for each start of the interpreter.
void WatchSignalModule();

/// When the signals have to be looked at, before code that is about to run.
PythonSignals::EWhen WhenSignalsChange();

} // namespace telv

#endif
