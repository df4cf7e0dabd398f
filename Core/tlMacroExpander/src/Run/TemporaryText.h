// SPDX-License-Identifier: MIT
// Text that exists only while expanding and is itself expanded: the first result of `@[...]`, the
// text of a call through a function argument, the list of `@for`.
//
// Definitions made in such a text view it and may outlive the directive that made it. They share
// its ownership (OwningVariables.h). What is needed to say where a position in such a text came
// from is kept apart, in a TextOrigin, which may outlive the characters.
#pragma once

#include "tlMacroExpander/src/Run/TextMemory.h"
#include "tlUtils/HeldContainers.h"
#include <exception>
#include <memory>

namespace telv
{

class OutputPieces;

/// Where a text came from. Forms a chain outwards through the texts that the directives stood in.
class TextOrigin
{
public:
    ~TextOrigin();

    /// The directive or macro name, in text that the application gave, at the end of the chain.
    SubString Outermost() const;
    /// The start of the directive or macro name in the nearest text that is still alive.
    const char* NearestAlive() const;

    /// Where the characters stand in a text that the application gave, if they were copied from
    /// there, without a break, and that was noted; else null.
    const char* FindCopied(SubString text) const;

    /// Characters that were copied: from `m_offset` of the text on, as many as `m_given` has.
    struct Copied
    {
        ssize_t m_offset;
        SubString m_given;
    };

    const char* m_begin = nullptr;
    const char* m_end = nullptr;
    HeldVector<Copied> m_copied; ///< Increasing; empty where nobody asks.
    SubString m_origin; ///< What made the text: in `m_outer`'s text, or in one that was given.
    std::shared_ptr<TextOrigin> m_outer;
    bool m_alive = true;
};

/// The texts of a run that are alive, by where they begin.
using LiveTexts = HeldMap<const char*, TextOrigin*>;

/// The characters, counted by those who view them.
class TemporaryText : public std::enable_shared_from_this<TemporaryText>
{
public:
    /// Takes over the characters of `text`. `origin`: the directive or macro name that made them,
    /// in the text that is being expanded in the current run.
    /// `pieces`: how the text came about, if that is known.
    TemporaryText(xstring& text, SubString origin, const OutputPieces* pieces = nullptr);
    ~TemporaryText();
    TemporaryText(const TemporaryText&) = delete;
    TemporaryText& operator=(const TemporaryText&) = delete;

    SubString Text() const { return m_text.View(); }
    /// Whether it was made in the current run, and is not empty.
    bool IsOfCurrentRun() const;
    const TextOrigin& Origin() const { return *m_origin; }

    bool m_isViewedByMap = false; ///< The run keeps it, for a piece of the mapped output.

private:
    TextMemory m_text;
    std::shared_ptr<TextOrigin> m_origin;
    std::shared_ptr<LiveTexts> m_liveTexts;        ///< Of the run in which the text was made.
    int m_exceptions = std::uncaught_exceptions(); ///< In flight when the text was made.
};

} // namespace telv
