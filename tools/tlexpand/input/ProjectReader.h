// SPDX-License-Identifier: MIT
// Reads the statements of a project: dollar macros, imports, and the settings that the command line
// names, in any order.
#pragma once

#include "Sources.h"
#include "options/Options.h"
#include "tlMacroExpander/src/Mpfw/MpfwParser.h"
#include <functional>
#include <utility>

namespace telv::tool
{

/// A project file and what the tool needs to know of it.
class ProjectFile final : public MpfwSourceFile
{
public:
    explicit ProjectFile(const char* importPos) : m_importPos(importPos) {}

    const char* m_importPos;  ///< The directive that imported it first; null for the main file.
    bool m_processed = false; ///< Its statements have been read.
};

class ProjectReader final : public MpfwParser
{
public:
    using NamedValues = std::vector<std::pair<std::string, std::string>>;
    using ErrorSink = std::function<void(const LexScannerException&)>;

    /// @param report  Gets the errors in statements, located in the file as it was read; the
    ///                reading goes on with the next file. Gets imports that fail, too, behind
    ///                which it goes on.
    ProjectReader(MpfwFrame& frame, const ProjectOptions& options, ErrorSink report);

    /// Reads a project from its main file on, whose text is taken. `path` is where it lies, or
    /// stands for it when it is in no file.
    ///
    /// @throws LexScannerException  Something ran out.
    void Read(const xstring& path, xstring& text);
    /// Reads the statements of files to which no statement has led: those that a file imported
    /// before its expansion failed.
    void ReadLeft();

    /// Definitions in the order of reading.
    const NamedValues& Macros() const { return m_macros; }
    /// Settings in the order in which they first appeared, each with its last value.
    const NamedValues& Settings() const { return m_values; }

    bool HandleImport(VarFrame* vf, const xstring& path, const char* pos) override;
    MpfwSourceFile* CreateMpfwSourceFile() override;
    /// Looks into the directories of the command line, too.
    bool ResolveImportPath(const xstring& name, xstring& path) override;
    /// Reads the statements of a file once.
    void ProcessImportedFile(MpfwSourceFile* srcFile) override;

private:
    bool ReadImport();
    bool FindImport(const xstring& name, xstring& path);
    void ReadStatements(ProjectFile& file);
    void ReadDollarStatement();
    void SetValue(const std::string& name, const xstring& value);
    const char* PlaceInBuffer(const char* pos) const;

    const ProjectOptions& m_options;
    ErrorSink m_report;
    NamedValues m_macros;
    NamedValues m_values;
    std::vector<const char*> m_importPositions; ///< Of the imports in progress, innermost last.
    std::vector<const char*> m_failedImports;   ///< Places of the directives whose import failed.
};

} // namespace telv::tool
