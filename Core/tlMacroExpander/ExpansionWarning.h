// SPDX-License-Identifier: MIT
// What a run can warn of: text that is right, but probably not what was meant.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/StringExt.h"
#include <vector>

namespace telv
{

/// Kinds of warnings; `ExpansionRun::m_warnings` is a set of them.
enum EWarning : unsigned
{
    WARN_NONE = 0,
    WARN_DROPPED_TEXT = 1,      ///< A bracket that is not alone on its line takes a character away.
    WARN_UNKNOWN_DIRECTIVE = 2, ///< `@word` where the word is no directive.
    WARN_UNKNOWN_NAME = 4,      ///< A name that was probably meant to be another.
    WARN_HIDDEN_NAME = 8,       ///< A name in a comment or between apostrophes.
    WARN_UNUSED = 16,           ///< A definition that nothing uses; see ExpansionRun::FindUnused.
    WARN_TABS = 32,             ///< A line indented by tabs is written with spaces.
    WARN_ALL = 63
};

/// A place on the way to where an error or a warning stands.
struct TLEXPANDER_API CallPlace
{
    enum EKind
    {
        CALL_MACRO, ///< A macro, or an argument that stands for text, was invoked here.
        CALL_LOOP   ///< The loop that stands here was in its `m_round`-th round.
    };

    EKind m_kind;
    xstring m_name;    ///< Of the macro; empty for a loop.
    const char* m_pos; ///< In a text that the application gave.
    ssize_t m_round;   ///< Counted from 1; 0 for a macro.
};

/// One warning. Each place gets one of a kind.
struct TLEXPANDER_API ExpansionWarning
{
    EWarning m_kind;
    xstring m_text;                          ///< One line.
    const char* m_pos;                       ///< In a text that the application gave.
    std::vector<CallPlace> m_callPlaces;     ///< See ExpansionRun::CallPlaces.
    ssize_t m_moreCallPlaces = 0;            ///< How many there are besides.
    std::vector<const char*> m_importPlaces; ///< See ExpansionRun::ImportPlaces.
};

} // namespace telv
