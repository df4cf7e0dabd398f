// SPDX-License-Identifier: MIT
// What is looked at for warnings while a text is read token by token.
#pragma once

#include "tlMacroExpander/src/MacroExpander.h"

namespace telv
{

/// Looks at a token that has been read and is about to be processed.
void WatchToken(const MacroExpander& expander, const LSToken& token);

/// Looks at the text of an expansion that begins: whether tabs of its lines become spaces.
void WatchIndentation(const MacroExpander& expander);

/// `@word` means nothing.
void WarnOfUnknownDirective(const MacroExpander& expander, SubString word);

/// `@[...]` came to `text` the first time.
void WatchComputedName(const MacroExpander& expander, SubString text);

/// A macro or a variable was defined by the word `name`.
void WatchDefinition(SubString name, SubString body, bool isMacro);

} // namespace telv
