// SPDX-License-Identifier: MIT
// A source that can't be read has no text on the page; one that does not fit is an error.
#include "ExplainCommand.h"
#include "explain/PageWriter.h"
#include "map/MappedFiles.h"
#include "output/OutputSet.h"

namespace telv::tool
{

namespace
{

Page MakePage(MappedFiles& files)
{
    Page page{{files.OutputPath(), files.Output().m_text}, {}, files.Map()};
    for (size_t i = 0; i < files.Map().m_sources.size(); ++i)
    {
        const MappedText* const text = files.SourceText(i);
        page.m_sources.push_back(
            {files.SourcePath(i), text != nullptr ? SubString(text->m_text) : SubString("")});
    }
    return page;
}

/// A page must not take the place of what it shows.
void RefuseInputs(const OutputSet& outputs, const MappedFiles& files)
{
    outputs.RefuseInput(files.MapPath());
    outputs.RefuseInput(files.OutputPath());
    for (size_t i = 0; i < files.Map().m_sources.size(); ++i)
        if (IsFileName(files.Map().m_sources[i]))
            outputs.RefuseInput(files.SourcePath(i));
}

} // namespace

int RunExplainMapCommand(const ExpandOptions& options)
{
    OutputSet outputs;
    OutputFile* const file = outputs.Add(options.m_output);
    MappedFiles files(*options.m_fromMap, options.m_file);
    if (files.OutputPath().empty())
        throw UsageError("'" + *options.m_fromMap +
                         "' does not name its output: name it behind it");
    RefuseInputs(outputs, files);
    const Page page = MakePage(files);
    outputs.SetContent(file, [&](ByteSink& sink) { WritePage(sink, page); });
    outputs.Commit();
    return 0;
}

} // namespace telv::tool
