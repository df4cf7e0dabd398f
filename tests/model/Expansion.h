// SPDX-License-Identifier: MIT
// One expansion of a program in one of the ways that must agree.
#pragma once

#include "Programs.h"
#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include <functional>
#include <memory>
#include <string>

namespace telv::test
{

/// How an expansion is made.
struct Way
{
    std::string name;
    unsigned fastPaths = 0;   ///< Those that may be taken; see FastPaths.h.
    bool isRecorded = false;  ///< The pieces of the output are recorded.
    bool walksFrames = false; ///< Look-ups walk from frame to frame.
};

/// What came of it, in a form that does not depend on addresses.
struct Outcome
{
    enum Kind
    {
        EXPANDED,
        ERROR,
        ASSERTION,
        OUT_OF_MEMORY ///< Where memory ends is not the same for all ways.
    };

    Kind kind = EXPANDED;
    std::string text; ///< The output, or the message.
    size_t file = 0;  ///< That an error stands in.
    long offset = -1; ///< In that file; -1: nowhere.
    std::string printed;

    bool operator==(const Outcome& other) const = default;
};

std::string Show(const Outcome& outcome);

/// Looks at what an expansion uses while it runs, or at what it has made.
class Observer
{
public:
    virtual ~Observer();
    /// `frame` is about to import a file. Only the frames of files import.
    virtual void SeeFrame(VarFrame& /*frame*/) {}
    /// A recorded output, while the run is still there.
    virtual void SeePieces(const OutputPieces& /*pieces*/, SubString /*output*/,
                           const std::vector<SubString>& /*files*/)
    {
    }
};

/// Expands a program, under limits that random programs need.
Outcome Expand(const Program& program, const Way& way, Observer* observer = nullptr);

} // namespace telv::test
