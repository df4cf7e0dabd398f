// SPDX-License-Identifier: MIT
// The inputs of a run over many files, and where their outputs go.
#pragma once

#include "options/Options.h"
#include <string>
#include <vector>

namespace telv::tool
{

/// One file to expand.
struct BatchJob
{
    std::string m_input;
    std::string m_output;
    std::string m_place;  ///< Where it was named, for messages: "LIST(3): ", or nothing.
    bool m_outputIsNamed; ///< By the list; else it follows from the input.
};

/// The files of the command line and those of the `--batch` list, in that order, after looking
/// whether each can be read and has an output of its own. Nothing is made.
///
/// @throws FileError   The list or inputs can't be read; all of them are named.
/// @throws UsageError  Two inputs have one output, an output is another input, the list or an
/// import
///                     of another input, there is none, or a line of the list has more than an
///                     input and an output.
std::vector<BatchJob> MakeBatch(const ExpandOptions& options);

} // namespace telv::tool
