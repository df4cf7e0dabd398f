// SPDX-License-Identifier: MIT
// What would probably mend an error, noted where it is known; and where what was never closed was
// opened, or what failed was defined or listed. All are read when the error is reported
// (ExpansionRun::Hint, and its neighbours).
//
// The first hint counts: it comes from the innermost place. An error that is swallowed takes its
// hints with it.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/LSToken.h"
#include <initializer_list>

namespace telv
{

class VarFrame;

/// Notes the concatenation of `parts`.
void NoteHint(std::initializer_list<SubString> parts);

/// `error` stands in the text `expanded`, which an expression was expanded to: names that are not
/// known, and strings that are not written as such.
void HintAtExpression(VarFrame& frame, SubString source, SubString expanded,
                      const LexScannerException& error);
/// The same where a condition was wanted.
void HintAtCondition(VarFrame& frame, SubString source, SubString expanded,
                     const LexScannerException& error);
/// The same where a string was wanted.
void HintAtString(VarFrame& frame, SubString source, SubString expanded,
                  const LexScannerException& error);

/// The same where the value of a variable of `type` was wanted.
void HintAtValue(VarFrame& frame, ELSVariable type, SubString source, SubString expanded,
                 const LexScannerException& error);

/// There is no variable of this name, behind which the directive goes on with `rest`.
void HintAtName(VarFrame& frame, SubString name, SubString rest);

/// `word` stands where a list begins; `source` is what follows the word `in` of the loop.
void HintAtList(VarFrame& frame, SubString source, SubString word);

/// The call of `macro` whose list of arguments is `list`, from its first character on, has too
/// many: one of them may have been meant to hold the comma.
void HintAtArguments(VarFrame& frame, const LSMacroVariable& macro, const char* list,
                     SubString rest);

/// The element with this index can't be read in `list`, to which the list was expanded that stands
/// at `source`, behind the word `in` of the loop: notes where it stands in what was given.
void NoteElement(VarFrame& frame, SubString source, SubString list, ssize_t index);

/// The element of a list has too few or too many values for `names`.
void HintAtElement(SubString element, ssize_t names);

/// The code of the macro that is defined at `name` failed, which the position of the error, that of
/// the call, does not tell.
void NoteDefinition(const char* name);

/// A Python macro was nested too deeply. Where it calls itself by the name of a method, the error
/// moves to that name.
void HintAtPythonMacro(const LSMacroVariable& macro, LexScannerException& error);

} // namespace telv
