// SPDX-License-Identifier: MIT
// Texts that are one word: arguments, elements of lists and short macros mostly are, and what they
// come to can be said without expanding them.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Run/LevelText.h"
#include "tlMacroExpander/src/Scan/CharClass.h"

namespace telv
{

class ExpansionLevel;
class OwningMacroVariable;
struct AliasEnd;

/// False where looking at the ends of the text tells that it is no word to be followed.
inline bool MayBeWord(SubString text)
{
    constexpr ssize_t longest = 64;
    return !text.empty() && text.size() <= longest && ClassOf(*text.m_p1) <= CHAR_RAW_PREFIX &&
           ClassOf(text.m_p2[-1]) <= CHAR_DIGIT;
}

/// What `var`, named in `frame`, comes to when it is used: its value, or what a macro comes to
/// whose text is one word, expanded in a child of `frame`: the word itself when it stands for
/// nothing, or what the variable of that name comes to. Counts what using it counts. False, with
/// nothing done, when it is anything else, or the plain way is to be taken. `found` views a text or
/// a variable.
bool FollowVariable(ExpansionLevel& level, const LSVariable& var, VarFrame& frame,
                    SubString& found);

/// The same for a text that is expanded in a child of `frame`.
bool FindWord(ExpansionLevel& level, const LevelText& text, VarFrame& frame, SubString& found);

/// Where `macro` leads, which is then known; null when it leads nowhere, or a name on the way is
/// ambiguous. Linear in the number of names up to where it is known.
const AliasEnd* FindAliasEnd(const OwningMacroVariable& macro);

/// The macro that the text of `macro` names, if what `FindAliasEnd` tells of leads over it; or
/// null.
OwningMacroVariable* NextAlias(const OwningMacroVariable& macro);

} // namespace telv
