// SPDX-License-Identifier: MIT
// The one list of all directives.
#pragma once

#include "tlMacroExpander/src/MacroExpander.h"
#include <functional>

namespace telv
{

/// What follows an `@` and what is done then.
struct Directive
{
    const char* m_word;
    EToken m_type; ///< TOKEN_IDENTIFIER, or the kind of the bracket or mark that is the word.
    bool m_flush;  ///< Pending text is written first, so that blanks before the `@` are kept.
    /// Called with the token behind the `@`.
    void (*m_process)(MacroExpander& expander, const LSToken& word);
    /// Reads it for a plan, or null.
    PlannedAction (*m_plan)(PlanReader& reader) = nullptr;
};

/// The directive that `token` names, or null.
const Directive* FindDirective(const LSToken& token);

/// Calls `visit` with each word that is a directive behind an `@`.
void ForEachDirectiveWord(const std::function<void(SubString)>& visit);

/// Whether a string literal is worth a look for dollar macros.
bool MayHoldDollarMacro(SubString literal);

} // namespace telv
