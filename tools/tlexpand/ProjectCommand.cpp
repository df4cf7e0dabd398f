// SPDX-License-Identifier: MIT
// Reads the project and prints what was read.
#include "ProjectCommand.h"
#include "Files.h"
#include "input/ProjectReader.h"
#include "output/JsonText.h"
#include "output/OutputFile.h"
#include "report/GuardedRun.h"
#include "tlMacroExpander/src/Run/MemoryLimit.h"
#include <unistd.h>

namespace telv::tool
{

namespace
{

template <class Items, class Write>
std::string JsonList(const Items& items, char open, char close, Write write)
{
    std::string json(1, open);
    for (const auto& item : items)
        json.append(json.size() == 1 ? "" : ",").append(write(item));
    json += close;
    return json;
}

std::string JsonText(const std::string& s)
{
    return JsonString(ViewOf(s));
}

/// One reading of a project.
class ProjectCommand
{
public:
    explicit ProjectCommand(const ProjectOptions& options)
        : m_options(options), m_printed(STDERR_FILENO), m_diagnostics(m_sources, options.m_colour),
          m_frame(m_files),
          m_reader(m_frame, options, [this](const LexScannerException& e) { Report(e); })
    {
        m_run.m_limits = options.m_limits;
        m_run.m_pythonAllowed = options.m_python;
        m_run.m_pythonPath = options.m_pythonPath;
        m_run.m_fileErrorSink = [this](const LexScannerException& e) { Report(e); };
    }

    int Run();

private:
    void ReadMainFile();
    void ReadProject();
    void LearnSources();
    void Report(const LexScannerException& e);
    std::string MakeJson() const;

    const ProjectOptions& m_options;
    PrintedText m_printed;
    Sources m_sources;
    Diagnostics m_diagnostics;
    ExpansionRun m_run;
    MpfwSourceFileList m_files;
    MpfwFrame m_frame;
    ProjectReader m_reader;
    std::string m_mainName;
    xstring m_mainText; ///< Until the reader takes it.
    bool m_failed = false;
};

int ProjectCommand::Run()
{
    const ExpansionRunScope scope(m_run);
    ReadMainFile();
    const auto work = [this] { ReadProject(); };
    if (!RunGuarded(work, m_run, m_sources, m_diagnostics, m_printed) || m_failed)
        return 1;
    WriteStandardOutput([this](ByteSink& sink) { sink.Write(MakeJson()); });
    return 0;
}

/// Opened and read once, so that it may be a pipe. One that can't be read is no error in a text.
void ProjectCommand::ReadMainFile()
{
    const NamedInput file(m_options.m_file);
    m_mainName = file.Name();
    m_mainText = ReadAll(file.Fd(), m_mainName);
}

void ProjectCommand::ReadProject()
try
{
    const MemoryLimitScope limit(m_run);
    m_reader.Read(xstring(ViewOf(m_mainName)), m_mainText);
    if (m_failed)
        m_reader.ReadLeft();
}
catch (...)
{
    LearnSources();
    throw;
}

/// Makes the files that were read since the last time known for diagnostics.
void ProjectCommand::LearnSources()
{
    while (m_sources.Count() < static_cast<size_t>(m_files.size()))
    {
        const auto index = static_cast<ssize_t>(m_sources.Count());
        const auto& file = static_cast<const ProjectFile&>(*m_files[index]);
        m_sources.Add(ToStdString(file.m_localPath), file.m_buffer, file.m_importPos);
    }
}

void ProjectCommand::Report(const LexScannerException& e)
{
    m_failed = true;
    LearnSources();
    m_printed.Flush();
    m_diagnostics.ReportInProject(e, m_run);
}

std::string ProjectCommand::MakeJson() const
{
    const auto named = [](const auto& macro)
    {
        return std::string("{\"name\":")
            .append(JsonText(macro.first))
            .append(",\"value\":")
            .append(JsonText(macro.second))
            .append("}");
    };
    const auto member = [](const auto& setting)
    { return JsonText(setting.first).append(":").append(JsonText(setting.second)); };
    const auto path = [](const xstring& directory) { return JsonString(directory); };
    const auto file = [](const MpfwSourceFile* f) { return JsonString(f->m_localPath); };
    return std::string("{\"version\":1,\"files\":")
        .append(JsonList(m_files, '[', ']', file))
        .append(",\"macros\":")
        .append(JsonList(m_reader.Macros(), '[', ']', named))
        .append(",\n \"importPaths\":")
        .append(JsonList(m_frame.m_importPaths, '[', ']', path))
        .append(",\"settings\":")
        .append(JsonList(m_reader.Settings(), '{', '}', member))
        .append("}\n");
}

} // namespace

int RunProjectCommand(const ProjectOptions& options)
{
    return ProjectCommand(options).Run();
}

} // namespace telv::tool
