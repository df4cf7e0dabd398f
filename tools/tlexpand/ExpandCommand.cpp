// Read, expand, write: the outputs are looked at first, so that a wrong name costs no expansion,
// and written last, when everything has succeeded.
#include "ExpandCommand.h"
#include "input/FileImportHandler.h"
#include "output/DepfileWriter.h"
#include "output/MapWriter.h"
#include "output/OutputSet.h"
#include "output/UnifiedDiff.h"
#include <fcntl.h>
#include "report/GuardedRun.h"
#include <unistd.h>

namespace telv::tool
{

namespace
{

/// The outputs that the options name; null for one that is not wanted or is standard output.
struct WantedOutputs
{
    OutputSet m_set;
    OutputFile* m_text = nullptr;
    OutputFile* m_map = nullptr;
    OutputFile* m_depfile = nullptr;

    explicit WantedOutputs(const ExpandOptions& options)
        : m_text(Add(options.m_output)), m_map(Add(options.m_map)),
          m_depfile(Add(options.m_depfile))
    {
    }

private:
    OutputFile* Add(const std::optional<std::string>& path)
    {
        return path && *path != s_standardStream ? &m_set.Add(*path) : nullptr;
    }
};

/// One expansion from the options to the outputs.
class ExpandCommand
{
public:
    explicit ExpandCommand(const ExpandOptions& options)
        : m_options(options), m_outputs(options),
          m_printed(options.UsesStandardOutput() ? STDERR_FILENO : STDOUT_FILENO),
          m_diagnostics(m_sources, options.m_colour),
          m_handler(m_sources, m_run, options.m_importPaths)
    {
        m_run.m_limits = options.m_limits;
        m_run.m_pythonAllowed = options.m_python;
    }

    int Run();

private:
    void Expand();
    void RefuseInputs() const;
    int CompareWithOutput() const;
    template <class Visitor>
    void ForEachPart(Visitor visit) const;
    void WriteText(ByteSink& sink) const;
    void SetContent(OutputFile* output, Content content);
    void SetContents();
    std::vector<std::string> Dependencies() const;

    const ExpandOptions& m_options;
    WantedOutputs m_outputs;
    PrintedText m_printed;
    Sources m_sources;
    Diagnostics m_diagnostics;
    ExpansionRun m_run;
    FileImportHandler m_handler;
    xstring m_text;
    OutputPieces m_pieces;
    std::vector<OutputRange> m_removed; ///< Parts of `m_text` that are not written.
};

int ExpandCommand::Run()
{
    const ExpansionRunScope scope(m_run);
    m_handler.ReadMain(m_options.m_file);
    const auto work = [this] { Expand(); };
    if (!RunGuarded(work, m_run, m_sources, m_diagnostics, m_printed))
        return 1;
    RefuseInputs();
    if (m_options.m_check)
        return CompareWithOutput();
    SetContents();
    m_outputs.m_set.Commit();
    return 0;
}

void ExpandCommand::Expand()
{
    for (const Definition& definition : m_options.m_definitions)
    {
        if (definition.m_isText)
            m_handler.Evaluate(definition.m_value);
        else
            m_handler.Define(definition.m_name, definition.m_value);
    }
    StringStream os(4096);
    ExpandedOutput output(&os);
    if (m_options.m_map)
        m_run.m_mappedOutput = &output;
    m_handler.ExpandMain(m_options.m_srcIndent, m_options.m_dstIndent, output);
    os.GetString(m_text, true);
    m_pieces.m_pieces.swap(output.m_pieces.m_pieces);
    m_run.m_mappedOutput = nullptr;
    if (!m_options.m_keepImports)
        m_removed = m_handler.Marks().FindText(m_pieces, m_text);
}

void ExpandCommand::RefuseInputs() const
{
    if (const auto identity = m_handler.MainIdentity())
        m_outputs.m_set.RefuseInput(*identity, m_outputs.m_text);
    const std::vector<FileIdentity> imports = m_handler.ImportedIdentities();
    for (const FileIdentity& identity : imports)
        m_outputs.m_set.RefuseInput(identity, nullptr);
    if (m_options.UsesStandardOutput())
        m_outputs.m_set.RefuseStandardOutput(imports);
}

/// Calls `visit` with the parts of the text that are written, in order.
template <class Visitor>
void ExpandCommand::ForEachPart(Visitor visit) const
{
    const char* p = m_text.begin();
    for (const OutputRange& range : m_removed)
    {
        visit(SubString(p, m_text.begin() + range.m_begin));
        p = m_text.begin() + range.m_end;
    }
    visit(SubString(p, m_text.end()));
}

void ExpandCommand::WriteText(ByteSink& sink) const
{
    ForEachPart([&](SubString part) { sink.Write(part); });
}

/// 0 when the output is what the run would write, else 1 after the difference has been printed.
int ExpandCommand::CompareWithOutput() const
{
    xstring text;
    ForEachPart([&](SubString part) { text += part; });
    const std::string& path = m_options.m_output;
    xstring there;
    const Descriptor file(OpenAt(StartDirectory(), path.c_str(), O_RDONLY));
    const bool isThere = file.IsOpen();
    if (isThere)
        there = ReadAll(file.Get(), path);
    else if (errno != ENOENT)
        throw MakeFileError("read", path, errno);
    if (isThere && there == text)
        return 0;
    const std::string difference =
        MakeUnifiedDiff(isThere ? path : "/dev/null", there, path + "\t(expanded)", text);
    WriteStandardOutput([&](ByteSink& sink) { sink.Write(difference); });
    return 1;
}

/// Null is standard output.
void ExpandCommand::SetContent(OutputFile* output, Content content)
{
    if (output != nullptr)
        m_outputs.m_set.SetContent(*output, std::move(content));
    else
        m_outputs.m_set.SetStandardOutput(std::move(content));
}

void ExpandCommand::SetContents()
{
    SetContent(m_outputs.m_text, [this](ByteSink& sink) { WriteText(sink); });
    if (m_options.m_map)
        SetContent(m_outputs.m_map,
                   [this](ByteSink& sink) {
                       WriteMap(sink, {m_sources, m_run, m_pieces, m_removed});
                   });
    if (m_options.m_depfile)
        SetContent(m_outputs.m_depfile,
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

} // namespace

int RunExpandCommand(const ExpandOptions& options)
{
    return ExpandCommand(options).Run();
}

} // namespace telv::tool
