// Texts that are one word: arguments, elements of lists and short macros mostly are, and what they
// come to can be said without expanding them.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Run/LevelText.h"

namespace telv
{

class ExpansionLevel;

/// What `text`, expanded in a child of `frame`, comes to: the word itself when it stands for nothing,
/// the value of a variable, or what a macro comes to whose text is a word in its turn. Counts what
/// expanding counts. False, with nothing done, when it is anything else, or the plain way is to be
/// taken. `found` views the text or a variable.
bool FindWord(ExpansionLevel& level, const LevelText& text, VarFrame& frame, SubString& found);

} // namespace telv
