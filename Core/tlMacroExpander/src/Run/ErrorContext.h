// SPDX-License-Identifier: MIT
// Throwing errors at tokens, and adding to errors on their way out.
//
// An error that something ran out keeps its place and its words and collects only so many lines.
// One that will be swallowed has no words.
#pragma once

#include "tlMacroExpander/src/LSToken.h"
#include <initializer_list>

namespace telv
{

/// The characters of a token as messages show them; views the token's text or a constant.
SubString TokenText(const LSToken& token);

/// Throws the concatenation of `before`, the token and `after`, at the token.
[[noreturn]] void ThrowAtToken(std::initializer_list<SubString> before, const LSToken& token,
                               SubString after = SubString());

/// Throws the concatenation of `parts` at `pos`.
[[noreturn]] void ThrowAt(const char* pos, std::initializer_list<SubString> parts);

/// Whether nobody will hear of `e`. Running out of something is never swallowed.
bool IsSwallowed(const LexScannerException& e);

/// Whether another line of context would be kept. Composing one that would not is wasted.
bool TakesContext(const LexScannerException& e);

/// Appends the concatenation of `parts` to the description of `e`.
void AddErrorContext(LexScannerException& e, std::initializer_list<SubString> parts);

/// The same for an error in text that was expanded to be parsed: the end of that text reads as
/// `bracket`, and the error is moved to `pos`. What directives parse and hint at differs, not this.
void AddExpressionErrorContext(LexScannerException& e, const char* bracket, const char* pos,
                               std::initializer_list<SubString> parts);

/// Moves the position of `e` to `origin` when it lies in `text`, which is about to die.
void MoveOutOfText(LexScannerException& e, SubString text, const char* origin);

} // namespace telv
