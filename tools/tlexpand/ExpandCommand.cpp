// SPDX-License-Identifier: MIT
// Read, expand, write: the outputs are looked at first, so that a wrong name costs no expansion.
// The text goes to its temporary file as it comes; everything else is written, and all files take
// their places, when everything has succeeded.
#include "ExpandCommand.h"
#include "explain/PageWriter.h"
#include "input/FileImportHandler.h"
#include "output/DepfileWriter.h"
#include "output/LineDirectives.h"
#include "output/MapCheck.h"
#include "output/MapPlaces.h"
#include "output/MapWriter.h"
#include "output/OutputSet.h"
#include "output/PieceChains.h"
#include "output/SourceMapWriter.h"
#include "output/TextStream.h"
#include "output/UnifiedDiff.h"
#include "report/GuardedRun.h"
#include "report/TraceWriter.h"
#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <system_error>
#include <unistd.h>

namespace telv::tool
{

namespace
{

/// The output that the expansion is compared with; not open when there is none.
Descriptor OpenCompared(const std::string& path)
{
    // Opening a pipe would wait for somebody who writes to it.
    Descriptor file(OpenAt(StartDirectory(), path.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK));
    const int error = file.IsOpen() ? 0 : errno;
    const auto status = StatusOf(path);
    if (path.ends_with('/') || (status && S_ISDIR(status->st_mode)))
        throw MakeFileError("read", path, EISDIR);
    if (error != 0 && error != ENOENT)
        throw MakeFileError("read", path, error);
    if (file.IsOpen() && !RegularFileAt(file.Get()))
        throw FileError("can't compare '" + path + "' with the expansion: it is no regular file");
    return file;
}

/// The outputs that the options name; null for one that is not wanted or is standard output, or is
/// compared only and not there.
struct WantedOutputs
{
    OutputSet m_set;
    OutputFile* m_text = nullptr;
    OutputFile* m_map = nullptr;
    OutputFile* m_sourceMap = nullptr;
    OutputFile* m_depfile = nullptr;
    OutputFile* m_trace = nullptr;

    explicit WantedOutputs(const ExpandOptions& options)
        : m_text(options.m_check && !OpenCompared(options.m_output).IsOpen()
                     ? nullptr
                     : Add(options.m_output)),
          m_map(Add(options.m_map)), m_sourceMap(Add(options.m_sourceMap)),
          m_depfile(Add(options.m_depfile)), m_trace(Add(options.m_trace))
    {
        if (options.m_keepUnchanged)
            m_set.KeepUnchanged();
        m_set.RefuseStandardStreams();
        for (const std::string& path : options.m_dependencies)
            m_set.RefuseDependency(path);
    }

private:
    OutputFile* Add(const std::optional<std::string>& path)
    {
        return path ? m_set.Add(*path) : nullptr;
    }
};

/// One expansion from the options to the outputs.
class ExpandCommand
{
public:
    ExpandCommand(const ExpandOptions& options, ImportTexts& texts, ImportCheck checkImports = {})
        : m_options(options), m_checkImports(std::move(checkImports)), m_outputs(options),
          m_mapStyle(MakeMapStyle(options)), m_sourceMapStyle(MakeSourceMapStyle(options)),
          m_printed(options.UsesStandardOutput() ? STDERR_FILENO : STDOUT_FILENO),
          m_diagnostics(m_sources, options.m_colour),
          m_handler(m_sources, m_run, options.m_importPaths, texts),
          m_text(options.IsTextPassedOn() ? m_outputs.m_text : nullptr,
                 options.NeedsPieces() ? &m_whole : nullptr),
          m_trace(m_sources, m_run, m_outputs.m_trace)
    {
        m_run.m_recordPieces = options.NeedsPieces();
        m_run.m_limits = options.m_limits;
        m_run.m_pythonAllowed = options.m_python;
        m_run.m_lenient = options.m_lenient;
        m_run.m_pythonPath = options.m_pythonPath;
        m_run.m_warnings = options.m_warnings;
        m_run.m_warningSink = [this](const ExpansionWarning& warning) { Warn(warning); };
    }

    int Run();

private:
    void ExpandUnchanged();
    void ExpandObserved();
    void Expand();
    void Define(const Definition& definition);
    void Warn(const ExpansionWarning& warning);
    static std::vector<std::pair<const char*, std::optional<FileIdentity>>> StandardFiles();
    void RefuseInputs() const;
    WrittenOutput Written() const;
    void AddDirectives();
    bool MapIsSound() const;
    int CompareWithOutput() const;
    template <class Visitor>
    void ForEachPart(Visitor visit) const;
    void WriteText(ByteSink& sink) const;
    void WriteExplanation(ByteSink& sink) const;
    void SetContents();
    std::vector<std::string> Dependencies() const;

    const ExpandOptions& m_options;
    ImportCheck m_checkImports;
    WantedOutputs m_outputs;
    // Made before Python code can change the working directory.
    MapStyle m_mapStyle;
    SourceMapStyle m_sourceMapStyle;
    PrintedText m_printed;
    Sources m_sources;
    Diagnostics m_diagnostics;
    ExpansionRun m_run;
    FileImportHandler m_handler;
    xstring m_whole; ///< The expansion; kept when pieces are needed.
    TextStream m_text;
    OutputPieces m_pieces;
    std::vector<TextEdit> m_edits;           ///< How what is written differs from `m_whole`.
    std::optional<ChainRecorder> m_recorder; ///< Made when chains are wanted.
    OutputChains m_chains;
    TraceWriter m_trace;
    ExpansionObserverGroup m_observers;
    size_t m_warningCount = 0;
};

int ExpandCommand::Run()
try
{
    const ExpansionRunScope scope(m_run);
    if (m_options.m_depfile)
        m_handler.NotePaths();
    m_handler.CheckFiles(
        [streams = StandardFiles()](const FileIdentity& identity)
        {
            for (const auto& [name, file] : streams)
                if (file == identity)
                    throw UsageError(std::string(name) + " is a file that is read");
        });
    m_handler.ReadMain(m_options.m_file);
    if (!RunGuarded([this] { ExpandUnchanged(); }, m_run, m_sources, m_diagnostics, m_printed))
        return 1;
    if (m_options.m_warningsAreErrors && m_warningCount > 0)
    {
        ReportToolError(std::to_string(m_warningCount) +
                        (m_warningCount == 1 ? " warning is an error" : " warnings are errors") +
                        " because of --werror");
        return 1;
    }
    m_handler.CheckUnchanged();
    RefuseInputs();
    AddDirectives();
    if (!MapIsSound())
        return 1;
    if (m_options.m_check)
        return CompareWithOutput();
    SetContents();
    m_outputs.m_set.Commit();
    return 0;
}
catch (const DataError& e)
{
    m_printed.Flush();
    m_diagnostics.Report(LexScannerException(e.what(), e.m_pos));
    return 2;
}

/// What is wrong with a text that was changed meanwhile may be its change.
void ExpandCommand::ExpandUnchanged()
{
    try
    {
        ExpandObserved();
    }
    catch (const LexScannerException&)
    {
        m_handler.CheckUnchanged();
        throw;
    }
}

/// Says what happened up to an error, too, where the trace is written directly.
void ExpandCommand::ExpandObserved()
{
    if (!m_options.m_trace)
        return Expand();
    m_observers.Add(m_trace);
    try
    {
        Expand();
    }
    catch (...)
    {
        m_trace.WriteAfterFailure();
        throw;
    }
}

void ExpandCommand::Expand()
{
    xostream os(&m_text);
    ExpandedOutput output(&os);
    if (m_options.NeedsChains())
        m_observers.Add(m_recorder.emplace(&output));
    if (!m_observers.IsEmpty())
        m_run.SetObserver(&m_observers);
    std::ranges::for_each(m_options.m_definitions,
                          [this](const Definition& definition) { Define(definition); });
    if (m_options.NeedsPieces())
        m_run.m_mappedOutput = &output;
    m_handler.ExpandMain(m_options.m_srcIndent, m_options.m_dstIndent, output,
                         m_options.m_keepImports ? nullptr : &m_text);
    if ((m_options.m_warnings & WARN_UNUSED) != 0)
        std::ranges::for_each(m_handler.FindUnused(), m_run.m_warningSink);
    m_text.Finish();
    m_pieces.m_pieces.swap(output.m_pieces.m_pieces);
    m_run.m_mappedOutput = nullptr;
    m_edits = MakeRemovals(m_text.Removed());
    if (m_recorder)
        m_chains = MakeOutputChains(*m_recorder, m_sources);
}

void ExpandCommand::Define(const Definition& definition)
{
    std::string name = definition.m_name;
    SubString value = ViewOf(definition.m_value);
    switch (definition.m_kind)
    {
    case Definition::EKind::DollarMacro:
        m_handler.Define(definition.m_name, definition.m_value);
        name.insert(0, 1, '$');
        break;
    case Definition::EKind::Text:
        return m_handler.Evaluate(definition.m_value); // which tells by itself
    case Definition::EKind::List:
        value = m_handler.DefineList(definition.m_name, definition.m_rows);
        break;
    }
    if (m_options.m_trace)
        m_trace.DefinedByOption(name, value);
}

WrittenOutput ExpandCommand::Written() const
{
    return {m_sources, m_run, m_whole, m_pieces, m_edits, m_chains};
}

void ExpandCommand::AddDirectives()
{
    if (m_options.m_lineFormat)
        m_edits = AddLineDirectives(Written(), *m_options.m_lineFormat);
}

/// A map that breaks its laws is a broken assumption of this program.
bool ExpandCommand::MapIsSound() const
{
    const std::string error = m_options.m_verifyMap ? FindMapError(Written()) : "";
    if (!error.empty())
        ReportToolError("the map is wrong: " + error);
    return error.empty();
}

void ExpandCommand::Warn(const ExpansionWarning& warning)
{
    ++m_warningCount;
    m_printed.Flush();
    m_diagnostics.Warn(warning);
}

/// Standard output and standard error, which printed text, the expansion and messages go to, where
/// they are regular files.
std::vector<std::pair<const char*, std::optional<FileIdentity>>> ExpandCommand::StandardFiles()
{
    std::vector<std::pair<const char*, std::optional<FileIdentity>>> files;
    for (const int fd : {STDOUT_FILENO, STDERR_FILENO})
        if (const auto identity = RegularFileAt(fd))
            files.emplace_back(NameOfStream(fd), identity);
    return files;
}

void ExpandCommand::RefuseInputs() const
{
    // A text may take the place of its source, a page that shows it not.
    const OutputFile* const mayReplaceMain = m_options.m_isExplained ? nullptr : m_outputs.m_text;
    if (const auto identity = m_handler.MainIdentity())
        m_outputs.m_set.RefuseInput(*identity, mayReplaceMain);
    const auto isWritten = [&](const FileIdentity& identity)
    { return m_outputs.m_set.Holds(identity); };
    for (const FileIdentity& identity : m_handler.ImportedIdentities(isWritten))
        m_outputs.m_set.RefuseInput(identity, nullptr);
    if (m_checkImports)
        m_checkImports(m_handler.OpenedImports());
}

/// Calls `visit` with what is not in the file yet, in order; of a file that is not written, that is
/// all.
template <class Visitor>
void ExpandCommand::ForEachPart(Visitor visit) const
{
    if (m_options.m_lineFormat)
        ForEachStretch(m_whole, m_edits, visit);
    else
        visit(m_text.Rest());
}

void ExpandCommand::WriteText(ByteSink& sink) const
{
    ForEachPart([&](SubString part) { sink.Write(part); });
}

/// The name of the file that is written where `path` is a symbolic link: `patch` follows none.
std::string BehindLinks(std::filesystem::path path)
{
    std::error_code error;
    for (int most = 40; most > 0 && std::filesystem::is_symlink(path, error); --most)
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    return path.string();
}

/// 0 when the output is what the run would write, else 1 after the difference has been printed.
int ExpandCommand::CompareWithOutput() const
{
    xstring text;
    ForEachPart([&](SubString part) { text += part; });
    const std::string& path = m_options.m_output;
    xstring there;
    const Descriptor file = OpenCompared(path);
    const bool isThere = file.IsOpen();
    if (isThere)
        there = ReadAll(file.Get(), path);
    if (isThere && there == text)
        return 0;
    if (!isThere && text.empty()) // No difference of lines says so.
    {
        ReportToolError("'" + path + "' is not there; its text would be empty");
        return 1;
    }
    const std::string name = BehindLinks(path);
    std::string difference =
        MakeUnifiedDiff(isThere ? name : "/dev/null", there, name, "(expanded)", text);
    if (isatty(STDOUT_FILENO) == 1) // else it stays one that can be applied
        difference = EscapeForTerminal(ViewOf(difference));
    WriteStandardOutput([&](ByteSink& sink) { sink.Write(difference); });
    return 1;
}

/// The page shows what would have been written.
void ExpandCommand::WriteExplanation(ByteSink& sink) const
{
    std::string text;
    ForEachStretch(m_whole, m_edits, [&](SubString stretch) { text += ToStdString(stretch); });
    const OutputMap map = MakeOutputMap(Written(), m_mapStyle);
    Page page{{"output", ViewOf(text)}, {}, map};
    for (size_t i = 0; i < m_sources.Count(); ++i)
        page.m_sources.push_back({m_sources[i].Name(), m_sources[i].File()});
    WritePage(sink, page);
}

void ExpandCommand::SetContents()
{
    OutputSet& set = m_outputs.m_set;
    set.SetContent(m_outputs.m_text, [this](ByteSink& sink)
                   { m_options.m_isExplained ? WriteExplanation(sink) : WriteText(sink); });
    if (m_options.m_map)
        set.SetContent(m_outputs.m_map,
                       [this](ByteSink& sink) { WriteMap(sink, Written(), m_mapStyle); });
    if (m_options.m_sourceMap)
        set.SetContent(m_outputs.m_sourceMap, [this](ByteSink& sink)
                       { WriteSourceMap(sink, Written(), m_sourceMapStyle); });
    if (m_options.m_trace)
        set.SetContent(m_outputs.m_trace, [this](ByteSink& sink) { m_trace.WriteRest(sink); });
    if (m_options.m_depfile)
        set.SetContent(m_outputs.m_depfile,
                       [this](ByteSink& sink)
                       {
                           const bool isFile = m_options.m_file != s_standardStream;
                           sink.Write(
                               MakeDepfile(m_options.m_depfileTarget.value_or(m_options.m_output),
                                           isFile ? m_options.m_file : "", Dependencies()));
                       });
}

/// Besides the main file.
std::vector<std::string> ExpandCommand::Dependencies() const
{
    std::vector<std::string> paths = m_handler.ImportedPaths();
    paths.insert(paths.end(), m_options.m_dependencies.begin(), m_options.m_dependencies.end());
    return paths;
}

/// The only run of a process.
struct LastRun
{
    explicit LastRun(const ExpandOptions& options) : m_command(options, m_texts) {}

    ImportTexts m_texts;
    ExpandCommand m_command;
};

} // namespace

int RunExpandCommand(const ExpandOptions& options)
{
    auto run = std::make_unique<LastRun>(options);
    const int status = run->m_command.Run();
    // The system takes all memory back at once. Nothing may use the run any more; a search for lost
    // memory finds it here.
    [[maybe_unused]] static LastRun* volatile s_abandoned = nullptr;
    if (status == 0)
        s_abandoned = run.release();
    return status;
}

int RunExpandCommand(const ExpandOptions& options, ImportTexts& texts,
                     const ImportCheck& checkImports)
{
    return ExpandCommand(options, texts, checkImports).Run();
}

} // namespace telv::tool
