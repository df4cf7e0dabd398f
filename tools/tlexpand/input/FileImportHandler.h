// SPDX-License-Identifier: MIT
// Reads and expands the files of a run: the main file, and what it and its imports import.
//
// A file is read and expanded once, whatever name it is reached by (see FileStamp.h), in a
// frame of its own, which the frames of its importers import. Names are looked for in the directory
// of the importing file, then where `@importpath` said, then in the directories of the command
// line.
#pragma once

#include "Files.h"
#include "Sources.h"
#include "input/FileStamp.h"
#include "input/ImportTexts.h"
#include "input/InputText.h"
#include "input/Prelude.h"
#include "output/TextStream.h"
#include "rows/RowList.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/MacroExpand.h"
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace telv::tool
{

/// What is wrong with a file of data, and where; ends the run with status 2.
class DataError : public FileError
{
public:
    /// @param pos  In a source.
    DataError(const char* message, const char* pos) : FileError(message), m_pos(pos) {}

    const char* m_pos;
};

class FileImportHandler final : public ImportHandler
{
public:
    /// Everything is borrowed and must outlive this object. Files are made known to both.
    ///
    /// @param texts  Of imports that were read before; those that are read now are kept there too.
    FileImportHandler(Sources& sources, ExpansionRun& run,
                      const std::vector<std::string>& importPaths, ImportTexts& texts);
    ~FileImportHandler();

    /// Reads the main file; "-" is standard input. To be called first.
    ///
    /// @throws FileError
    void ReadMain(const std::string& path);

    /// Adds a dollar macro that every file sees.
    void Define(const std::string& name, const std::string& value);
    /// Adds a macro that every file sees: a list of rows of data, which count as an imported file.
    /// The text of the list, which lives as long as this object.
    ///
    /// @throws FileError  The file can't be read.
    /// @throws DataError  Its data can't be made a list.
    SubString DefineList(const std::string& name, const RowListOption& rows);
    /// Expands a text of the command line whose definitions every file sees.
    void Evaluate(const std::string& text);

    /// Expands the main file, behind a byte order mark that it may begin with.
    ///
    /// @param text  Where `output` writes to, to have the text of the imports removed; null: it
    ///              stays.
    void ExpandMain(ssize_t srcIndent, ssize_t dstIndent, ExpandedOutput& output, TextStream* text);

    /// @throws FileError  An input was written to while it was used.
    void CheckUnchanged() const;

    /// The definitions and imports of the main file that nothing uses, in their order. An import
    /// that defines nothing, or dollar macros, counts as used: it may be read for what it does. To
    /// be asked while WARN_UNUSED is in the run's warnings.
    std::vector<ExpansionWarning> FindUnused() const;

    /// Where the main file is; nothing for a pipe or a device.
    std::optional<FileIdentity> MainIdentity() const { return m_inputs.front()->m_identity; }
    /// Calls `check` with each regular file before its text is expanded or its rows are used; what
    /// it throws ends the run. To be called first.
    void CheckFiles(std::function<void(const FileIdentity&)> check)
    {
        m_checkFile = std::move(check);
    }
    /// Before anything is read: `ImportedPaths` will be asked.
    void NotePaths() { m_notesPaths = true; }
    /// Names that lead to the files that were imported, in the order of reading: each name by which
    /// a file was reached and, where symbolic links were passed, that of the file itself.
    std::vector<std::string> ImportedPaths() const;
    /// The files that were imported, and those of lists, as they were opened.
    std::vector<std::string> OpenedImports() const;
    /// Those of the imported files that are still there, of those that `matters` is true for.
    std::vector<FileIdentity>
    ImportedIdentities(const std::function<bool(const FileIdentity&)>& matters) const;

    bool HandleImportPath(const xstring& path, const char* pos) override;
    bool HandleImport(VarFrame* vf, const xstring& path, const char* pos) override;

private:
    /// A text that was read, and its frame.
    struct Input
    {
        std::shared_ptr<const InputText> m_text; ///< Null for a list.
        std::optional<FileIdentity> m_identity;  ///< Of a regular file.
        std::optional<FileStamp> m_stamp;        ///< The same, as it was read.
        std::string m_name;                      ///< As it is shown.
        std::string m_path; ///< As it was opened: its directory is that of its imports.
        std::vector<std::string>
            m_paths; ///< By which it was reached as an import; see ImportedPaths.
        std::unique_ptr<RowList> m_rows; ///< Of a list; it is named by `m_listName`.
        std::string m_listName;
        std::unique_ptr<FileScopeVarFrame> m_frame; ///< Null until it is expanded as an import.
    };

    /// An import directive of the main file.
    struct MainImport
    {
        const Input* m_input;
        const char* m_pos;
    };

    /// A text that is being expanded.
    struct Active
    {
        const Input* m_input;
        FileScopeVarFrame* m_frame;
    };

    class ActiveScope;

    std::shared_ptr<const InputText> ReadMainText(const NamedInput& file, bool isRegular) const;
    void HoldToEnd(const std::string& kept) const;
    Input& AddInput(const std::string& name, std::shared_ptr<const InputText> text,
                    const char* importPos);
    std::shared_ptr<const InputText> ReadImport(const std::string& path, int fd,
                                                const struct stat& status);
    std::string ExpandName(const xstring& name, const char* pos) const;
    std::optional<std::string> FindPath(const std::string& name, const char* pos) const;
    void Know(Input& input, const FileStamp& stamp);
    bool IsActive(const Input& input) const;
    Input* FindKnown(const std::string& path, int fd, const struct stat& status);
    Input* Open(const std::string& path, const char* importPos);
    std::set<const Input*> FindUnusedImports() const;
    /// Project files have the same in the library, over another chain (MpfwParser::ThrowCycle).
    void CheckCycle(const Input& input, const char* pos) const;
    void ExpandImport(Input& input);
    void NotePath(Input& input, int fd, const std::string& path);
    std::string CurrentDirectory() const { return DirectoryOf(m_active.back().m_input->m_path); }
    /// Whether the text of directives that run now is to be removed.
    bool RemovesText() const { return m_mainText != nullptr && m_active.size() == 1; }
    bool RemoveImport(const xstring& path, const char* pos);

    Sources& m_sources;
    ExpansionRun& m_run;
    const std::vector<std::string>& m_importPaths;
    ImportTexts& m_texts;
    std::vector<std::unique_ptr<Input>> m_inputs; ///< The main file first.
    Prelude m_prelude;                            ///< Views inputs.
    std::vector<Input*> m_expanded;               ///< Imports, in the order of being finished.
    std::map<FileIdentity, Input*> m_byIdentity;
    std::vector<std::string> m_registeredPaths; ///< By `@importpath`.
    std::vector<Active> m_active;               ///< Innermost last.
    std::vector<MainImport> m_mainImports;      ///< Noted where unused ones are warned of.
    std::unique_ptr<FileScopeVarFrame> m_mainFrame;
    TextStream* m_mainText = nullptr; ///< While the main file is expanded. Null: imports stay.
    ssize_t m_mainIndent = 0;         ///< The destination indentation.
    std::function<void(const FileIdentity&)> m_checkFile; ///< Null: none.
    bool m_notesPaths = false;
    std::set<std::string> m_notedPaths; ///< See NotePath.
    size_t m_countOfTexts = 0;          ///< Of the command line.
};

} // namespace telv::tool
