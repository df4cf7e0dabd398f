// SPDX-License-Identifier: MIT
// Rewrites lines of text, one at a time.
#pragma once

#include "remap/MappedOutputs.h"
#include "remap/PlaceScan.h"
#include <map>
#include <string>

namespace telv::tool
{

class LineRemapper
{
public:
    /// `outputs` must outlive this.
    explicit LineRemapper(MappedOutputs& outputs) : m_outputs(outputs) {}

    /// What is written for a line (with its end): the line with its places rewritten, and notes.
    /// Those of a Python traceback, whose outermost line comes first, stand before it. All others
    /// come behind the excerpt that follows the line, so they may be part of a later answer.
    std::string Remap(const std::string& line);
    /// Notes that still wait.
    std::string Finish();

private:
    /// What a line of messages has to do with the excerpt of the last one.
    enum class EExcerpt
    {
        Quote, ///< It quotes the output, and stays as it is.
        Mark,  ///< It stands below such a line.
        None
    };

    std::string RemapPlaces(const std::string& line, const std::string& plain, size_t from);
    EExcerpt ReadExcerpt(const std::string& plain);
    void AddNotes(const std::string& line, const PlaceInLine& place, const MessageOrigin& origin);

    MappedOutputs& m_outputs;
    std::string m_before;                  ///< Notes of the line at hand that stand before it.
    std::string m_notes;                   ///< Notes that wait for the end of the excerpt,
    const std::string* m_quoted = nullptr; ///< which can begin with this one of `m_lines`.
    /// Lines of the outputs that messages pointed into, without blanks, by where they begin.
    std::map<const char*, std::string> m_lines;
    std::string m_marks; ///< The line of the excerpt with the caret, if it was the last one.
};

} // namespace telv::tool
