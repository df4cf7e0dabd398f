// SPDX-License-Identifier: MIT
// Errors as the user sees them: the line that editors and build servers parse, the source line with
// a caret, and the imports through which the file was reached.
#pragma once

#include "Sources.h"
#include "options/Options.h"
#include "report/Excerpt.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/LSToken.h"

namespace telv::tool
{

/// Writes errors to standard error.
class Diagnostics
{
public:
    /// `sources` must outlive this.
    Diagnostics(const Sources& sources, Colour colour);

    /// Reports `error`, which stands at `error.m_pos`; a position outside the sources counts as
    /// the beginning of the first one.
    void Report(const LexScannerException& error, const ExpansionRun* run = nullptr) const;

    /// The same for an error in a file of a project, which names all imports that led to the file.
    void ReportInProject(const LexScannerException& error, const ExpansionRun& run) const;

    /// Reports a warning; one without a place in a source counts as at the beginning of the first.
    void Warn(const ExpansionWarning& warning) const;

private:
    /// A place that an error is reported at.
    struct Place
    {
        const Source* m_source; ///< Null when there are no sources.
        const char* m_pos;
    };

    Place PlaceOf(const char* pos) const;
    void Write(const LexScannerException& error, const Place& place,
               const std::string& notes) const;
    std::string MakeFirstLines(const LexScannerException& error, const Source& source,
                               const char* pos) const;
    std::string MakeImportLines(const Source& source) const;
    std::string MakeCauseLines(const ExpansionRun& run, const char* pos) const;
    std::string MakeNote(const char* what, const char* pos) const;
    std::string MakeNotes(const ExpansionRun& run, const LexScannerException& error,
                          const char* pos) const;
    std::string MakePlace(const char* pos) const;
    std::string MakeCallLines(const std::vector<CallPlace>& calls, ssize_t more,
                              const std::vector<const char*>& imports) const;
    std::string Paint(const char* sequence) const;
    std::string Show(SubString text) const;

    const Sources& m_sources;
    ExcerptStyle m_style;
};

/// Whether it is a terminal that understands more than text: colours, and lines that are written
/// again.
bool IsCapableTerminal(int descriptor);

/// Whether text for `descriptor` is coloured.
bool WantsColour(Colour colour, int descriptor);

/// Writes "tlexpand: MESSAGE" to standard error.
void ReportToolError(const std::string& message);

} // namespace telv::tool
