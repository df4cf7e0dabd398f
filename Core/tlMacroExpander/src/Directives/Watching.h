// SPDX-License-Identifier: MIT
// What is looked at for warnings while a text is read token by token.
#pragma once

#include "tlMacroExpander/src/MacroExpander.h"

namespace telv
{

/// Looks at a token that has been read and is about to be processed.
void WatchToken(const MacroExpander& expander, const LSToken& token);

/// Looks at the text of an expansion that begins: whether tabs of its lines become spaces. The
/// indentation of each line of the source goes, and spaces take its place: before the first line
/// only if the output is at the start of one.
///
/// To be kept while the text is expanded: blocks in it are not searched again.
class IndentationWatch
{
public:
    explicit IndentationWatch(const MacroExpander& expander);
    ~IndentationWatch() { m_tabFree = m_outer; }
    IndentationWatch(const IndentationWatch&) = delete;
    IndentationWatch& operator=(const IndentationWatch&) = delete;

private:
    const char* FindTabOfBlock(const MacroExpander& expander);
    const char* FindTabOfLines(SubString text);

    SubString& m_tabFree; ///< The run's.
    SubString m_outer;    ///< What it was: a part of a text that is being expanded.
};

/// `@word` means nothing.
void WarnOfUnknownDirective(const MacroExpander& expander, SubString word);

/// `@[...]` came to `text` the first time.
void WatchComputedName(const MacroExpander& expander, SubString text);

/// A macro or a variable was defined by the word `name`.
void WatchDefinition(SubString name, SubString body, bool isMacro);

} // namespace telv
