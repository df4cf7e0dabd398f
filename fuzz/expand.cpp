// SPDX-License-Identifier: MIT
// Whole expansions. Sections of the input that a record separator (0x1e) parts are files: the first
// is expanded, the others can be imported as "1", "2" and so on.
//
// The text is expanded three times: with its map kept, into a string with pieces, into a string
// alone. All must agree. Pieces tile the output, copied pieces equal what they were copied from,
// calculated ones name a directive, and positions of errors lie in a file.
#include "Checks.h"
#include "Mutator.h"
#include "Nowhere.h"
#include "output/MapCheck.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/MacroExpand.h"
#include <algorithm>
#include <map>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace telv::fuzz
{

const Start s_start = Start::Program;

namespace
{

constexpr char s_separator = '\x1e';

using Files = std::vector<std::unique_ptr<ExactText>>;

Files SplitFiles(const std::string& input)
{
    Files files;
    size_t begin = 0;
    for (;;)
    {
        const size_t end = std::min(input.find(s_separator, begin), input.size());
        files.push_back(std::make_unique<ExactText>(input.data() + begin, end - begin));
        if (end == input.size())
            return files;
        begin = end + 1;
    }
}

/// Imports the sections of the input, each once. Frames that are imported die last.
class SectionImports final : public ImportHandler
{
public:
    explicit SectionImports(const Files& files) : m_files(files) {}
    ~SectionImports()
    {
        while (!m_done.empty())
            m_done.pop_back();
    }

    bool HandleImportPath(const xstring& path, const char*) override { return !path.empty(); }
    bool HandleImport(VarFrame* vf, const xstring& path, const char* pos) override;

private:
    const Files& m_files;
    std::map<size_t, FileScopeVarFrame*> m_frames;          ///< Null while a file is being read.
    std::vector<std::unique_ptr<FileScopeVarFrame>> m_done; ///< In order of completion.
};

bool SectionImports::HandleImport(VarFrame* vf, const xstring& path, const char* pos)
{
    const size_t index = path.size() == 1 ? static_cast<size_t>(path[0] - '0') : 0;
    if (index == 0 || index >= m_files.size() || vf->m_fileScopeFrame == nullptr)
        return false;
    if (m_frames.contains(index) && m_frames[index] == nullptr)
        throw LexScannerException("Import cycle", pos);
    if (!m_frames.contains(index))
    {
        m_frames[index] = nullptr;
        auto frame = std::make_unique<FileScopeVarFrame>();
        FileScopeVarFrame* const file = frame.get();
        struct Keep
        {
            ~Keep() { m_done.push_back(std::move(m_frame)); }
            std::vector<std::unique_ptr<FileScopeVarFrame>>& m_done;
            std::unique_ptr<FileScopeVarFrame> m_frame;
        } keep{m_done, std::move(frame)};
        xstring dropped;
        MacroExpand(this, file, m_files[index]->View(), 0, 0, dropped);
        m_frames[index] = file;
    }
    vf->m_fileScopeFrame->AddImport(m_frames[index]);
    return true;
}

/// Offsets of a piece as text. What views text that was made while expanding is told by its size.
std::string ShowPieces(const OutputPieces& pieces, const Files& files)
{
    std::string shown;
    for (const OutputPiece& piece : pieces.m_pieces)
    {
        shown += std::to_string(piece.out) + ":";
        for (size_t i = 0; i < files.size(); ++i)
            if (piece.in.m_p1 != nullptr && files[i]->Holds(piece.in))
                shown +=
                    std::to_string(i) + "@" + std::to_string(files[i]->OffsetOf(piece.in.m_p1));
        shown += "+" + std::to_string(piece.in.size()) + "\n";
    }
    return shown;
}

bool LiesInFile(const Files& files, SubString view)
{
    return std::any_of(files.begin(), files.end(),
                       [&](const auto& file) { return file->Holds(view); });
}

/// A piece of the mapped output: readable wherever it lies.
void CheckPiece(const OutputPiece& piece, SubString out, const Files& files,
                const ExpansionRun& run)
{
    FUZZ_REQUIRE(piece.out >= 0);
    if (piece.in.m_p1 == nullptr)
    {
        FUZZ_REQUIRE(piece.out > 0 && piece.in.m_p2 == nullptr);
        for (const char c : ToStd(out))
            FUZZ_REQUIRE(c == ' ');
        return;
    }
    FUZZ_REQUIRE(!piece.in.empty() && piece.in.m_p1 < piece.in.m_p2);
    SubString origin(piece.in);
    if (!LiesInFile(files, piece.in))
    {
        FUZZ_REQUIRE(run.FindOrigin(piece.in.m_p1, origin));
        FUZZ_REQUIRE(!origin.empty() && LiesInFile(files, origin));
    }
    if (piece.out == 0)
        FUZZ_REQUIRE(piece.in == out);
}

void CheckMap(const OutputPieces& pieces, SubString output, const Files& files,
              const ExpansionRun& run)
{
    FUZZ_REQUIRE(pieces.size() == output.size());
    OutputPiecesMonotonePosMapper mapper(pieces);
    ssize_t begin = 0;
    for (const OutputPiece& piece : pieces.m_pieces)
    {
        const ssize_t size = piece.size();
        FUZZ_REQUIRE(size > 0 && begin + size <= output.size());
        CheckPiece(piece, SubString(output.m_p1 + begin, output.m_p1 + begin + size), files, run);
        const ssize_t last = begin + size - 1;
        const char* const mapped = piece.out == 0 ? piece.in.m_p2 - 1 : piece.in.m_p1;
        FUZZ_REQUIRE(mapper.MapOutputPositionToAddress(last) == mapped);
        if (pieces.m_pieces.size() < 200)
            FUZZ_REQUIRE(pieces.MapOutputPositionToAddress(last) == mapped);
        begin += size;
    }
    FUZZ_REQUIRE(begin == output.size());
}

/// The laws that `tlexpand --verify-map` checks.
void CheckLaws(const OutputPieces& pieces, SubString output, const Files& files,
               const ExpansionRun& run)
{
    tool::Sources sources;
    for (const auto& file : files)
        sources.Add("file", file->View(), nullptr);
    const std::vector<tool::TextEdit> noEdits;
    const tool::OutputChains noChains;
    FUZZ_REQUIRE(tool::FindMapError({sources, run, output, pieces, noEdits, noChains}).empty());
}

/// How an expansion ended; for a value, the text and the pieces.
struct Result
{
    Outcome m_outcome;
    size_t m_file = 0; ///< That holds the position of an error.
    std::string m_pieces;

    bool operator==(const Result&) const = default;
};

void SetLimits(ExpansionRun& run)
{
    run.m_pythonAllowed = false;
    run.m_limits.m_maxDepth = 40;
    run.m_limits.m_maxSteps = 500;
    run.m_limits.m_maxOutput = 20'000;
}

void CheckAssertion(const Outcome& outcome)
{
    const bool isKnown = IsAssertion(outcome, "MapEscapeCharacter(*s, c)") ||
                         IsAssertion(outcome, "GetFilenameAndLineNumberAtCurrentPosition(filename, "
                                              "lineNumber)");
    FUZZ_REQUIRE(outcome.m_kind != Outcome::Assertion || isKnown);
}

/// Expands with `expand`, which returns the text, in a run and frames of its own.
template <class Expand>
Result Run(const Files& files, Expand expand)
{
    ExpansionRun run;
    SetLimits(run);
    const ExpansionRunScope scope(run);
    SectionImports imports(files);
    FileScopeVarFrame frame;
    Result result;
    try
    {
        result.m_outcome = {Outcome::Value, expand(run, imports, frame, result.m_pieces), -2};
    }
    catch (LexScannerException& e)
    {
        // A text that was made while expanding may still be alive, kept for the map or by a macro.
        e.m_pos = run.ResolvePosition(e.m_pos);
        while (result.m_file + 1 < files.size() && !files[result.m_file]->Holds(e.m_pos))
            ++result.m_file;
        result.m_outcome = MakeOutcome(e, *files[result.m_file]);
    }
    catch (const TelvAssertionError& e)
    {
        result.m_outcome = {Outcome::Assertion, e.what(), -2};
        const char* const pos = run.FailurePosition();
        FUZZ_REQUIRE(pos != nullptr && LiesInFile(files, SubString(pos, pos)));
    }
    CheckAssertion(result.m_outcome);
    return result;
}

void Check(const Files& files, ssize_t srcIndent, ssize_t dstIndent)
{
    const SubString text = files[0]->View();
    const Result mapped =
        Run(files,
            [&](ExpansionRun& run, ImportHandler& imports, VarFrame& frame, std::string& pieces)
            {
                StringStream os(4096);
                ExpandedOutput output(&os);
                run.m_mappedOutput = &output;
                MacroExpand(&imports, &frame, text, srcIndent, dstIndent, output);
                const xstring written = os.GetString();
                FUZZ_REQUIRE(output.m_size == written.size() && output.size() == written.size());
                CheckMap(output.m_pieces, written, files, run);
                CheckLaws(output.m_pieces, written, files, run);
                pieces = ShowPieces(output.m_pieces, files);
                return ToStd(written);
            });
    const Result withPieces =
        Run(files,
            [&](ExpansionRun&, ImportHandler& imports, VarFrame& frame, std::string& shown)
            {
                xstring output("dropped");
                OutputPieces pieces;
                MacroExpand(&imports, &frame, text, srcIndent, dstIndent, output, pieces);
                shown = ShowPieces(pieces, files);
                return ToStd(output);
            });
    const Result plain =
        Run(files,
            [&](ExpansionRun&, ImportHandler& imports, VarFrame& frame, std::string&)
            {
                xstring output("dropped");
                MacroExpand(&imports, &frame, text, srcIndent, dstIndent, output);
                return ToStd(output);
            });
    FUZZ_REQUIRE(withPieces == mapped);
    FUZZ_REQUIRE(plain.m_outcome == mapped.m_outcome && plain.m_file == mapped.m_file);
}

} // namespace
} // namespace telv::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static telv::fuzz::Nowhere s_nowhere;
    telv::xcout.m_os = &s_nowhere;
    const telv::fuzz::Files files = telv::fuzz::SplitFiles(std::string(data, data + size));
    // The indentations vary with the input without being part of it.
    telv::fuzz::Check(files, size % 3 == 1 ? 4 : 0, size % 5 == 1 ? 3 : 0);
    return 0;
}
