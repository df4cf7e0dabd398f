// SPDX-License-Identifier: MIT
// The text lies in a block of exactly its size, so that the address sanitizer sees a read past its
// end, and the frame dies before it.
#include "support/LibraryRun.h"

#include "support/VisibleDiff.h"
#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/ExpansionObserver.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlUtils/StringExt.h"
#include "tlUtils/xstring.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace telv::test
{
namespace
{

/// Allows `@$` and finds no file.
class NoFiles final : public ImportHandler
{
public:
    bool HandleImport(VarFrame*, const xstring&, const char*) override { return false; }
};

std::string ToStd(SubString s)
{
    return std::string(s.begin(), s.end());
}

void TakeError(const LexScannerException& e, SubString text, LibraryRun& run)
{
    const std::less_equal<const char*> notAfter;
    const ExpansionRun* const installed = ExpansionRun::Current();
    const char* const pos = installed == nullptr ? e.m_pos : installed->ResolvePosition(e.m_pos);
    run.message = ToStd(e.m_description);
    run.positionOutside = !notAfter(text.begin(), pos) || !notAfter(pos, text.end());
    if (!run.positionOutside)
        run.line = GetLineNumber(text, pos);
}

void Expand(SubString text, LibraryRun& run)
{
    NoFiles handler;
    FileScopeVarFrame frame;
    xstring output;
    OutputPieces pieces;
    MacroExpand(&handler, &frame, text, 0, 0, output, pieces);
    run.expansion = ToStd(output);
}

/// Checks that what begins ends, in reverse order, and that the pieces tile the output.
class ObservedRun final : public ExpansionObserver
{
public:
    void ExpansionBegins(const ObservedExpansion& expansion) override
    {
        if (m_output == nullptr)
            m_output = &expansion.m_output;
        Begin('E');
    }
    void ExpansionEnds() noexcept override { End('E'); }
    void InvocationBegins(const ObservedInvocation&) override { Begin('I'); }
    void InvocationEnds() noexcept override { End('I'); }
    void RoundBegins(const ObservedRound&) override { Begin('R'); }
    void RoundEnds() noexcept override { End('R'); }
    void DirectiveBegins(const ObservedDirective&) override { Begin('D'); }
    void DirectiveEnds() noexcept override { End('D'); }
    void ImportBegins(const ObservedImport&) override { Begin('P'); }
    void ImportEnds() noexcept override { End('P'); }
    void PieceWritten(const ObservedPiece& piece) override
    {
        if (&piece.m_output != m_output)
            return;
        if (piece.m_offset != m_size)
            m_wrong = "a piece does not begin where the one before it ends";
        m_size += piece.m_piece.size();
    }

    /// What is wrong with the events; empty when nothing is.
    std::string Check(const LibraryRun& run) const
    {
        if (m_wrong.empty() && !m_begun.empty())
            return "something has not ended";
        const auto size = static_cast<ssize_t>(run.expansion.size());
        if (m_wrong.empty() && !run.message && m_size != size)
            return "the pieces are not the whole output";
        return m_wrong;
    }

private:
    void Begin(char what) { m_begun.push_back(what); }
    void End(char what) noexcept
    {
        if (m_begun.empty() || m_begun.back() != what)
            m_wrong = "another thing ends than began";
        else
            m_begun.pop_back();
    }

    const ExpandedOutput* m_output = nullptr; ///< That of the first expansion.
    ssize_t m_size = 0;
    std::string m_begun; ///< A letter for each, innermost last.
    std::string m_wrong;
};

/// The diagnostic's start that the run stands for, up to the excerpt; "*" for an unknown line.
std::string DiagnosticStart(const LibraryRun& run, const std::string& name)
{
    const std::string line = run.line < 0 ? "*" : std::to_string(run.line);
    return name + "(" + line + ") : error : " + *run.message + "\n";
}

/// The same part of the expected diagnostic: everything before the excerpt of its line.
std::string ExpectedStart(const std::string& err, const LibraryRun& run)
{
    const size_t open = err.find('(');
    const size_t close = err.find(") : error : ");
    if (open == std::string::npos || close == std::string::npos || close < open)
        return err;
    const std::string line = err.substr(open + 1, close - open - 1);
    const size_t excerpt = err.find("\n " + line + " | ");
    std::string start = err.substr(0, excerpt == std::string::npos ? excerpt : excerpt + 1);
    if (run.line < 0)
        start.replace(open + 1, line.size(), "*");
    return start;
}

} // namespace

std::string ObservationErrors(const std::string& source)
{
    ObservedRun observer;
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    const LibraryRun expected = RunLibrary(source);
    run.SetObserver(&observer);
    const LibraryRun observed = RunLibrary(source);
    if (observed.expansion != expected.expansion || observed.message != expected.message ||
        observed.line != expected.line)
        return "it comes out differently when it is observed: " +
               (observed.message ? *observed.message + " in line " + std::to_string(observed.line)
                                 : observed.expansion);
    return observer.Check(observed);
}

LibraryRun RunLibrary(const std::string& source)
{
    const std::unique_ptr<char[]> block(new char[source.size()]);
    std::copy(source.begin(), source.end(), block.get());
    const SubString text(block.get(), block.get() + source.size());
    LibraryRun run;
    try
    {
        Expand(text, run);
    }
    catch (const LexScannerException& e)
    {
        TakeError(e, text, run);
    }
    catch (const std::exception& e)
    {
        run.message = e.what();
    }
    return run;
}

LibraryRun RunLibraryWithWarnings(const std::string& source)
{
    ExpansionRun run;
    run.m_warnings = WARN_ALL;
    run.m_warningSink = [](const ExpansionWarning& warning) { EXPECT_NE(warning.m_text, ""); };
    const ExpansionRunScope scope(run);
    return RunLibrary(source);
}

std::string CompareLibraryRun(const LibraryRun& run, const TestCase& testCase,
                              const Expectation& expectation)
{
    const std::string expected =
        expectation.out ? *expectation.out : ExpectedStart(*expectation.err, run);
    if (!run.message)
    {
        if (expectation.err)
            return "expected an error, got the expansion:\n" + Visible(run.expansion, "+ ");
        const std::string diff = VisibleDiff(expected, run.expansion);
        return diff.empty() ? "" : "expansion (- expected, + actual):\n" + diff;
    }
    const std::string actual = DiagnosticStart(run, testCase.name);
    if (expectation.out)
        return "expected an expansion, got the error:\n" + Visible(actual, "+ ");
    if (run.positionOutside)
        return "the error's position is outside the text:\n" + Visible(actual, "+ ");
    const std::string diff = VisibleDiff(expected, actual);
    return diff.empty() ? "" : "error (- expected, + actual):\n" + diff;
}

} // namespace telv::test
