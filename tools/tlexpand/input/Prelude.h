// SPDX-License-Identifier: MIT
// The definitions of the command line, which every file sees.
//
// What a text of `-E` defines must neither collide with what files define nor be copied when it can
// be assigned to. So a file's frame imports the prelude's frame, which shares its typed variables,
// and is given the macros and dollar macros, which never change, as its own (GivenNames.h): its own
// definitions hide what its imports define, without ambiguity, and it may redefine them for itself.
//
// All texts share one frame, except that one which may import begins another, in the same relation
// to the one before as a file's: the files that it imports see what was finished before it, and
// frames must not import each other in a circle. The last frame counts.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Frames/GivenNames.h"
#include <deque>

namespace telv::tool
{

class Prelude
{
public:
    /// Adds a dollar macro.
    void Define(const xstring& name, const xstring& value);

    /// Adds a macro without arguments; views its name and body, which must outlive this object.
    void DefineMacro(SubString name, SubString body);

    /// The frame for another text. It sees what was defined before; what it defines is seen from
    /// the next `MakeVisibleIn` after `FinishText` on. Lives as long as this object.
    ///
    /// @param mayImport  The text may import files, which see what was defined before it alone.
    FileScopeVarFrame& StartText(bool mayImport);
    void FinishText() { m_last = &m_frames.back(); }

    /// Makes all that was defined up to now visible in the frame of a file, which must be new,
    /// and not be used after this object.
    void MakeVisibleIn(FileScopeVarFrame& frame);

private:
    FileScopeVarFrame& LastFrame();

    GivenNames m_names;
    std::deque<FileScopeVarFrame> m_frames;
    FileScopeVarFrame* m_last = nullptr;        ///< Of the finished texts; null before the first.
    const FileScopeVarFrame* m_given = nullptr; ///< The last that files have been given.
};

} // namespace telv::tool
