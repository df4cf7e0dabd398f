// SPDX-License-Identifier: MIT
// The entry points of the expansion, and the interface through which it reaches other files.
//
// What a caller should know, and docs/library.md shows with whole programs:
//
// - Whoever expands text of others catches `const IException&` and `const std::exception&`: a wrong
//   text is a LexScannerException, which is no std::exception, and some wrong texts meet an
//   assumption of the library, a TelvAssertionError.
// - A text may run Python unless a run (ExpansionRun.h) forbids it, and has no limits without one.
// - `@print` and `@println` write to `xcout`, the process's standard output until it is pointed
//   elsewhere.
// - Threads that have their own run, frames, handler and output may expand at the same time, the
//   same text too; none of these may be shared. `xcout` has no lock.
// - `m_pos` of an error is an address in a text. Whoever keeps the texts finds the file by range,
//   `GetLineNumber` tells the line; `ExpansionRun::FindSource` looks through the files made known.
#pragma once

#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/LSToken.h" // what is thrown
#include <type_traits>

namespace telv
{

/// Answers `@import` and `@importpath`; implemented by the application. The expander itself never
/// opens a file. Handlers are borrowed, never deleted through this interface.
///
/// To import a file is to read it once, to expand it once in a FileScopeVarFrame of its own, and to
/// call `vf->m_fileScopeFrame->AddImport(&thatFrame)` each time. Text and frame stay until the
/// frames of the importers have ended: imported frames end last. Both operations get the name as it
/// was written or evaluated; dollar macros in it are the handler's to replace. The text
/// `@import "NAME"` stays in the expansion, for the application to use or to remove. A handler may
/// throw a LexScannerException at `pos`.
class TLEXPANDER_API ImportHandler
{
public:
    /// Registers a directory for later imports.
    ///
    /// @param pos  The token that named the path; the position of an error that the handler throws.
    /// @return false when import paths are not supported, as here.
    virtual bool HandleImportPath(const xstring& path, const char* pos);

    /// Makes the definitions of the file named by `path` visible in `vf`.
    ///
    /// @return false when the file cannot be imported.
    virtual bool HandleImport(VarFrame* vf, const xstring& path, const char* pos) = 0;

protected:
    ~ImportHandler() = default;
};

/// Expands the macro text `str` and appends the result to `output`.
///
/// Several threads may expand at the same time, each with frames, outputs and a run of its own. All
/// Python code of the process shares one interpreter: it runs one thread at a time, the others
/// wait. What texts print goes to `ExpansionRun::m_printStream`, else to `xcout`, which threads
/// share.
///
/// Text that is neither a directive nor the name of a variable visible in `vf` is copied as it
/// stands (dollar macros inside double quotes are replaced); its indentation moves from `srcIndent`
/// to `dstIndent` columns. Definitions made at the outer level of `str` stay in `vf`.
///
/// @param ih         Answers `@import` and `@importpath`; borrowed. With null, both are errors and
///                   `@$` is ordinary text.
/// @param vf         Where names are found and definitions are added. Never null.
/// @param str        Any bytes. Definitions added to `vf` view into it: it must outlive `vf`.
/// @param srcIndent  Columns of indentation removed after each line feed; at least 0; a tab is 4.
/// @param dstIndent  Columns written before the first character of each output line; at least 0.
/// @param output     Keeps what was written before an error.
/// @throws LexScannerException  The text is wrong. `m_pos` is the place: in `str`, in a text that a
///     handler imported, or in a text that a variable of `vf` keeps alive.
/// @throws ExpansionLimitException  A LexScannerException: the stack, or a limit of the run, is
///     used up. The stack is watched without a run, too.
/// @throws TelvAssertionError   `vf` is null or an indentation is negative. So do some texts:
///     `@("\x41")` and `@import "x\x41"` (an escape that values don't know), `@(__LINE__)`.
/// @throws std::bad_alloc       Memory is used up.
TLEXPANDER_API void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                                ssize_t dstIndent, ExpandedOutput& output);

/// The same into a string, replacing what was there. `output` is unchanged after an error.
///
/// @code
/// const xstring source("@def greet(who) = {Hello who!}\ngreet(world)\n"); // outlives frame
/// FileScopeVarFrame frame;
/// xstring text;
/// MacroExpand(nullptr, &frame, source, 0, 0, text); // text: "Hello world!\n"
/// @endcode
TLEXPANDER_API void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                                ssize_t dstIndent, xstring& output);

/// The same with the map of the output, which replaces what was in `pieces`.
TLEXPANDER_API void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                                ssize_t dstIndent, xstring& output, OutputPieces& pieces);

/// A text that ends with the call: what it defines would view nothing. Keep it in a variable that
/// outlives the frame. (A literal in quotes lives as long as the program.)
template <class Text, class Output,
          class = std::enable_if_t<std::is_same_v<std::remove_const_t<Text>, xstring>>>
void MacroExpand(ImportHandler* ih, VarFrame* vf, Text&& str, ssize_t srcIndent, ssize_t dstIndent,
                 Output& output) = delete;
template <class Text, class = std::enable_if_t<std::is_same_v<std::remove_const_t<Text>, xstring>>>
void MacroExpand(ImportHandler* ih, VarFrame* vf, Text&& str, ssize_t srcIndent, ssize_t dstIndent,
                 xstring& output, OutputPieces& pieces) = delete;

} // namespace telv
