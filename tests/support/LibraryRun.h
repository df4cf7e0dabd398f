// SPDX-License-Identifier: MIT
// Runs a case with the library alone, in this process.
#pragma once

#include "support/TestCase.h"

#include <optional>
#include <string>

namespace telv::test
{

/// What the library did with a text.
struct LibraryRun
{
    std::string expansion;              ///< The expanded text, when it succeeded.
    std::optional<std::string> message; ///< The description of the error, when it failed.
    long line = -1;                     ///< The error's line; -1 when it has no position.
    bool positionOutside = false;       ///< The error's position is not inside the text.
};

/// Expands `source` in a file-scope frame of its own, with an import handler that finds nothing.
LibraryRun RunLibrary(const std::string& source);

/// Expands `source` with an observer and without one: what differs, or is wrong with the events.
/// Empty when nothing is.
std::string ObservationErrors(const std::string& source);

/// The same in a run that warns of everything, which must make no difference.
LibraryRun RunLibraryWithWarnings(const std::string& source);

/// Everything in which the run differs from the expectation, for people; empty when nothing does.
/// Of a diagnostic, line and message are compared; the excerpt is the tool's.
std::string CompareLibraryRun(const LibraryRun& run, const TestCase& testCase,
                              const Expectation& expectation);

} // namespace telv::test
