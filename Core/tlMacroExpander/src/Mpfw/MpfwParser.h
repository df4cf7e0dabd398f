// SPDX-License-Identifier: MIT
// Reads project description files: settings, dollar macros and imports.
//
// A project file is macro text. `AddFile` reads and expands a file, and through `@import` the files
// that it names; all of them are kept with their expansions. The statements are then parsed from
// the expanded text, where imports still stand:
//
//     @import "common.mpfw"          ParseImportDirective
//     $ROOT = "/usr"                 ParseMacroDef
//     $LIB = path "$(ROOT)/./lib"    ParseMacroDef; the value is normalised
//     $output = "build/app"          ParseStringSetting, ParsePathSetting
//
// An application derives a parser that knows its settings, and gives it the text:
//
//     MpfwSourceFileList files;
//     MpfwFrame frame(files);
//     MyParser parser(frame);
//     MpfwSourceFile* file = parser.AddFile("app.mpfw");
//     parser.Init(file->m_expanded);
//
// Positions of errors in statements lie in `m_expanded`; `m_pieces` moves them to `m_buffer`.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/src/ExpressionParser.h"
#include "tlMacroExpander/src/Mpfw/MpfwSourceFile.h"

namespace telv
{

/// What the parsers of one project share.
class TLEXPANDER_API MpfwFrame
{
public:
    MpfwSourceFileList& m_srcFileList; ///< Receives every file; outlives this.
    FileScopeVarFrame m_vf;            ///< In which all files are expanded.
    xvector<xstring> m_importPaths;    ///< Registered by `@importpath`, in order.

    explicit MpfwFrame(MpfwSourceFileList& srcFileList);
};

// Made and destroyed by its own type: the table of virtual operations, a part of the binary
// interface, has no destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Parses the statements of a project. Errors of the text are LexScannerExceptions at the current
/// token unless said otherwise.
class TLEXPANDER_API MpfwParser : public ExpressionParser, public ImportHandler
{
public:
    MpfwFrame& m_frame;

    /// `frame` must outlive the parser.
    explicit MpfwParser(MpfwFrame& frame);

    /// Appends the path, with dollar macros replaced and normalised, to the frame's import paths.
    bool HandleImportPath(const xstring& path, const char* pos) override;

    /// Reads the file that `path` names, unless it was read before.
    ///
    /// @param vf  Must be the project's frame.
    /// @throws LexScannerException  "Couldn't open file NAME", or "Import cycle: A -> B -> A", at
    ///     `pos`.
    bool HandleImport(VarFrame* vf, const xstring& path, const char* pos) override;

    /// Makes the object for a new file; the list of files will own it. Never null.
    virtual MpfwSourceFile* CreateMpfwSourceFile();

    /// Turns the name of an import statement into the path to open; false when there is no such
    /// file. Called at top-level statements too, where the file must be in the list on return.
    ///
    /// This one looks in the directory of the importing file, then in the frame's import paths, and
    /// reads nothing. Importing is the file being expanded, or the one whose statement is current.
    virtual bool ResolveImportPath(const xstring& name, xstring& path);

    /// Called for each import statement with its file. This one parses the file's own statements,
    /// imports and dollar macros, with this parser, and calls itself for what they import. Each
    /// file is parsed once in such a tree of calls, and again when a later statement of the text
    /// that the application gave imports it; a file that many others import costs no more than one.
    /// One with an error counts as parsed.
    ///
    /// @throws LexScannerException  There is another statement: "Syntax error: " and the token.
    virtual void ProcessImportedFile(MpfwSourceFile* srcFile);

    /// Reads `$name = "value"`; the string remains the current token.
    void ParseStringSettingHelper(const xstring& name, xstring& value);
    /// Reads `$name = "value"` and reads past it.
    void ParseStringSetting(const xstring& name, xstring& value);
    /// The same for a path: empty, or with forward slashes and without one at its end.
    void ParsePathSetting(const xstring& name, xstring& value);

    /// Reads a row of dollar macro definitions, possibly none, into the frame. `name` and `value`
    /// receive the last one.
    void ParseMacroDef(xstring& name, xstring& value);
    void ParseMacroDef();
    /// Reads one definition; the current token must be its `$`.
    void ParseOneMacroDef(xstring& name, xstring& value);

    /// Reads a quoted string, or a string expression in parentheses, replaces its dollar macros and
    /// reads past it.
    void ReadString(xstring& value);
    /// The quoted string that is the current token, with dollar macros replaced; not read past.
    xstring ParseQuotedString();
    /// The same; a backslash in it is an error.
    xstring ParseFileOrDirName();

    /// Replaces the dollar macros of the frame.
    void ApplyMacros(xstring& s) const;

    /// Reads, records and expands a file; a file of this path that is in the list already is
    /// returned as it is.
    ///
    /// Errors of the expansion are written to the current run's sink, or to the trace stream, and
    /// the file is returned all the same.
    ///
    /// @throws LexScannerException  "Couldn't open file PATH"; the file is being read: an import
    ///     cycle.
    /// @throws ExpansionLimitException  Something ran out while expanding.
    MpfwSourceFile* AddFile(const xstring& path);

    /// Records and expands a text that no file holds, as AddFile does with one that it has read.
    ///
    /// @param path  Stands for it in the list; names in it are relative to its directory.
    /// @param text  Left empty.
    MpfwSourceFile* AddText(const xstring& path, xstring& text);

    /// Reads an `@import "file"` statement and has its file processed; false when the current token
    /// is no `@`.
    bool ParseImportDirective();

private:
    class ParserState;
    class ImportTree;

    MpfwSourceFile* AddFileAt(const xstring& path, const char* pos);
    MpfwSourceFile* FindExactly(const xstring& path) const;
    void ApplyMacrosAt(xstring& s, const char* pos) const;
    const MpfwSourceFile* ImportingFile() const;
    void Expand(MpfwSourceFile& srcFile);
    void ReportError(const LexScannerException& e) const;
    [[noreturn]] void ThrowCycle(const MpfwSourceFile& again, const char* pos) const;
};

#pragma GCC diagnostic pop

static_assert(sizeof(MpfwFrame) == 272, "no other fields");
static_assert(sizeof(MpfwParser) == 104, "no other fields");

} // namespace telv
