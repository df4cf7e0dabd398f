// SPDX-License-Identifier: MIT
// The trace of a run: a line for each call, value, round, definition and import, indented by how
// deep it lies in others, with its place.
//
//     import lib.tl at main.tl(1)
//       define pair(a,b) = a-b at lib.tl(1)
//     call pair(a=x, b=y) at main.tl(2)
//       call a = x at lib.tl(1)
#pragma once

#include "Sources.h"
#include "map/LineTable.h"
#include "output/OutputFile.h"
#include "tlMacroExpander/ExpansionObserver.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <map>
#include <string>

namespace telv::tool
{

/// Observes a run and writes what it is told. A file gets its lines as they come.
class TraceWriter final : public ExpansionObserver
{
public:
    /// Everything is borrowed. `file` null: the trace goes to standard output.
    TraceWriter(const Sources& sources, const ExpansionRun& run, OutputFile* file)
        : m_sources(sources), m_run(run), m_file(file)
    {
    }
    TraceWriter(const TraceWriter&) = delete;
    TraceWriter& operator=(const TraceWriter&) = delete;

    void InvocationBegins(const ObservedInvocation& invocation) override;
    void InvocationEnds() noexcept override { --m_depth; }
    void RoundBegins(const ObservedRound& round) override;
    void RoundEnds() noexcept override { --m_depth; }
    void ImportBegins(const ObservedImport& import) override;
    void ImportEnds() noexcept override { --m_depth; }
    void Defined(const ObservedDefinition& definition) override;

    /// An option has defined something; `value` stands in a source, or on the command line alone.
    void DefinedByOption(const std::string& what, SubString value);

    /// The lines that have not been written yet.
    void WriteRest(ByteSink& sink) const { sink.Write(m_pending); }
    /// The run has failed: what is written directly gets its last lines all the same.
    void WriteAfterFailure();

private:
    void WriteLine(const std::string& what, SubString place);
    void WriteText(const std::string& line);
    void Send();
    std::string PlaceText(const char* pos);
    ssize_t LineIn(const Source& source, const char* pos);

    const Sources& m_sources;
    const ExpansionRun& m_run;
    OutputFile* m_file;
    size_t m_depth = 0;
    std::string m_pending;
    std::map<const Source*, LineTable> m_lines;
};

} // namespace telv::tool
