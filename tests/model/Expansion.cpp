// SPDX-License-Identifier: MIT
// Runs with limits on steps and depth, not on the output: that one turns the fast ways off.
#include "Expansion.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include <map>

namespace telv::test
{

namespace
{

SubString ViewOf(const std::string& text)
{
    return SubString(text.data(), text.data() + text.size());
}

std::string ToStd(SubString text)
{
    return text.empty() ? std::string() : std::string(text.begin(), text.end());
}

/// Takes a way for the length of a scope.
class WayScope
{
public:
    explicit WayScope(const Way& way)
    {
        FastPaths::Take(way.fastPaths);
        s_started = way.walksFrames;
    }
    ~WayScope()
    {
        FastPaths::Take(FastPaths::s_all);
        s_started = false;
    }
    WayScope(const WayScope&) = delete;
    WayScope& operator=(const WayScope&) = delete;
};

/// Files by number, each read once; they stay until the end of the run.
class Imports final : public ImportHandler
{
public:
    Imports(const Program& program, Observer* observer) : m_program(program), m_observer(observer)
    {
    }
    ~Imports()
    {
        while (!m_frames.empty())
            m_frames.pop_back();
    }

    bool HandleImportPath(const xstring&, const char*) override { return true; }
    bool HandleImport(VarFrame* vf, const xstring& path, const char* pos) override
    {
        if (m_observer != nullptr)
            m_observer->SeeFrame(*vf);
        const size_t index = path.size() == 1 ? static_cast<size_t>(path[0] - '0') : 0;
        if (index == 0 || index >= m_program.files.size() || vf->m_fileScopeFrame == nullptr)
            return false;
        const auto [known, isNew] = m_byIndex.try_emplace(index, nullptr);
        if (isNew)
            known->second = Read(m_program.files[index]);
        if (known->second == nullptr)
            throw LexScannerException("Import cycle", pos);
        vf->m_fileScopeFrame->AddImport(known->second);
        if (m_observer != nullptr)
            m_observer->SeeFrame(*vf);
        return true;
    }

private:
    FileScopeVarFrame* Read(const std::string& text)
    {
        // A file that fails stays too: it may have been imported in parts.
        FileScopeVarFrame& frame = *m_frames.emplace_back(std::make_unique<FileScopeVarFrame>());
        xstring dropped;
        MacroExpand(this, &frame, ViewOf(text), 0, 0, dropped);
        return &frame;
    }

    const Program& m_program;
    Observer* m_observer;
    std::map<size_t, FileScopeVarFrame*> m_byIndex; ///< Null while a file is being read.
    std::vector<std::unique_ptr<FileScopeVarFrame>> m_frames;
};

void SetLimits(ExpansionRun& run)
{
    run.m_pythonAllowed = false;
    run.m_limits.m_maxDepth = 60;
    run.m_limits.m_maxSteps = 3'000;
    run.m_limits.m_maxMemory = ssize_t(32) << 20;
}

/// An error: where it stands is told by file and offset.
Outcome MakeOutcome(const LexScannerException& e, const ExpansionRun& run, const Program& program)
{
    const std::string message = ToStd(e.m_description);
    if (message.rfind("Out of memory", 0) == 0)
        return {Outcome::OUT_OF_MEMORY, message, 0, -1, {}};
    Outcome outcome{Outcome::ERROR, message, 0, -1, {}};
    const char* const pos = run.ResolvePosition(e.m_pos);
    for (size_t i = 0; i < program.files.size() && outcome.offset < 0; ++i)
    {
        const SubString text = ViewOf(program.files[i]);
        if (pos == nullptr || pos < text.begin() || pos > text.end())
            continue;
        outcome.file = i;
        outcome.offset = pos - text.begin();
    }
    return outcome;
}

std::string ExpandText(const Program& program, const Way& way, Imports& imports,
                       FileScopeVarFrame& frame, Observer* observer)
{
    const SubString text = ViewOf(program.files[0]);
    xstring output;
    if (!way.isRecorded)
    {
        MacroExpand(&imports, &frame, text, 0, 0, output);
        return ToStd(output);
    }
    OutputPieces pieces;
    MacroExpand(&imports, &frame, text, 0, 0, output, pieces);
    if (observer != nullptr)
    {
        std::vector<SubString> files;
        for (const std::string& file : program.files)
            files.push_back(ViewOf(file));
        observer->SeePieces(pieces, output, files);
    }
    return ToStd(output);
}

} // namespace

Observer::~Observer() = default;

std::string Show(const Outcome& outcome)
{
    static constexpr const char* kinds[] = {"expanded", "error", "assertion", "out of memory"};
    return std::string(kinds[outcome.kind]) + " at " + std::to_string(outcome.file) + ":" +
           std::to_string(outcome.offset) + ": " + outcome.text + "\nprinted: " + outcome.printed;
}

Outcome Expand(const Program& program, const Way& way, Observer* observer)
{
    const WayScope scope(way);
    StringStream printed(4096);
    ExpansionRun run;
    SetLimits(run);
    run.m_printStream = &printed;
    const ExpansionRunScope runScope(run);
    Imports imports(program, observer);
    FileScopeVarFrame frame;
    Outcome outcome;
    try
    {
        outcome.text = ExpandText(program, way, imports, frame, observer);
    }
    catch (const LexScannerException& e)
    {
        outcome = MakeOutcome(e, run, program);
    }
    catch (const TelvAssertionError& e)
    {
        outcome = {Outcome::ASSERTION, e.what(), 0, -1, {}};
    }
    outcome.printed = ToStd(printed.GetString());
    return outcome;
}

} // namespace telv::test
