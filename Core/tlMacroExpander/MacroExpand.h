// The entry points of the expansion, and the interface through which it reaches other files.
#pragma once

#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/LSToken.h" // what is thrown

namespace telv
{

/// Answers `@import` and `@importpath`; implemented by the application. The expander itself never
/// opens a file. Handlers are borrowed, never deleted through this interface.
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
/// Python code of the process shares one interpreter: it runs one thread at a time, the others wait.
/// What texts print goes to `ExpansionRun::m_printStream`, else to `xcout`, which threads share.
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
/// @throws TelvAssertionError   `vf` is null or an indentation is negative.
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

} // namespace telv
