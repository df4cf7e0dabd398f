// SPDX-License-Identifier: MIT
// Files are opened through the directory of the start, read whole and closed before they are
// expanded, so that a long chain of imports needs one descriptor at a time.
#include "input/FileImportHandler.h"
#include "Utf8.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/MemoryLimit.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

namespace telv::tool
{

namespace
{

/// Of a name while it is looked for; none but one that is of no use is long.
constexpr ssize_t s_mostCopies = 6;

/// The name as the system takes it, not normalised.
std::string InDirectory(const std::string& directory, const std::string& name)
{
    return directory.empty() ? name : directory + "/" + name;
}

bool LeadsTo(const std::string& path, const FileIdentity& identity)
{
    const auto status = StatusOf(path);
    return status && FileIdentity(*status) == identity;
}

/// Takes the expansion of imported files, which nobody reads.
class DiscardingStream final : public IndentingStream
{
public:
    void Flush() override {}

private:
    void Write(const char*, ssize_t) override {}
    char LastCharacter() const override { return '\n'; }
};

void ExpandForDefinitions(ImportHandler& handler, FileScopeVarFrame& frame, SubString text)
{
    DiscardingStream discarding;
    xostream os(&discarding);
    ExpandedOutput output(&os);
    MacroExpand(&handler, &frame, text, 0, 0, output);
}

} // namespace

/// Marks a text as being expanded for the length of a scope.
class FileImportHandler::ActiveScope
{
public:
    ActiveScope(FileImportHandler& handler, const Input& input, FileScopeVarFrame& frame)
        : m_active(handler.m_active)
    {
        m_active.push_back({&input, &frame});
    }
    ~ActiveScope() { m_active.pop_back(); }
    ActiveScope(const ActiveScope&) = delete;
    ActiveScope& operator=(const ActiveScope&) = delete;

private:
    std::vector<Active>& m_active;
};

FileImportHandler::FileImportHandler(Sources& sources, ExpansionRun& run,
                                     const std::vector<std::string>& importPaths,
                                     ImportTexts& texts)
    : m_sources(sources), m_run(run), m_importPaths(importPaths), m_texts(texts)
{
}

FileImportHandler::~FileImportHandler()
{
    // Importers go before what they import.
    m_mainFrame.reset();
    for (auto input = m_expanded.rbegin(); input != m_expanded.rend(); ++input)
        (*input)->m_frame.reset();
}

FileImportHandler::Input& FileImportHandler::AddInput(const std::string& name,
                                                      std::shared_ptr<const InputText> text,
                                                      const char* importPos)
{
    Input& input = *m_inputs.emplace_back(std::make_unique<Input>());
    input.m_name = name;
    input.m_path = name;
    input.m_text = std::move(text);
    m_sources.Add(name, input.m_text->Text(), importPos);
    RunState::Of(m_run).AddText({ViewOf(input.m_name), input.m_text->Text(), nullptr});
    return input;
}

/// A file is only looked at for its size when it is expanded, so that the error has a place; what
/// is no file may have no end.
std::shared_ptr<const InputText> FileImportHandler::ReadMainText(const NamedInput& file,
                                                                 bool isRegular) const
try
{
    std::optional<MemoryLimitScope> limit;
    if (!isRegular)
        limit.emplace(m_run);
    return std::make_shared<const InputText>(InputText::Read(file.Fd(), file.Name()));
}
catch (const MemoryLimitReached&)
{
    throw MakeFileError("read", file.Name(), ENOMEM);
}

void FileImportHandler::ReadMain(const std::string& path)
{
    const NamedInput file(path);
    struct stat status;
    std::optional<FileStamp> stamp;
    if (fstat(file.Fd(), &status) == 0 && S_ISREG(status.st_mode))
        stamp = FileStamp(status);
    Input& input = AddInput(file.Name(), ReadMainText(file, stamp.has_value()), nullptr);
    if (stamp)
        Know(input, *stamp);
}

void FileImportHandler::Define(const std::string& name, const std::string& value)
{
    m_prelude.Define(xstring(ViewOf(name)), xstring(ViewOf(value)));
}

SubString FileImportHandler::DefineList(const std::string& name, const RowListOption& rows)
{
    Input& input = *m_inputs.emplace_back(std::make_unique<Input>());
    input.m_rows = std::make_unique<RowList>();
    input.m_listName = name;
    RowList& list = *input.m_rows;
    try
    {
        ReadRowList(rows, list);
    }
    catch (const RowError& e)
    {
        list.m_fileText.c_str(); // As for AddInput.
        m_sources.Add(rows.m_file, list.m_fileText, nullptr);
        throw DataError(e.what(), list.m_fileText.begin() + e.m_offset);
    }
    m_sources.Add(rows.m_file, list.m_text, nullptr).SetMadeFrom({list.m_fileText, &list.m_places});
    input.m_identity = list.m_identity;
    if (m_checkFile && list.m_identity)
        m_checkFile(*list.m_identity);
    input.m_path = rows.m_file;
    input.m_paths.push_back(rows.m_file);
    m_prelude.DefineMacro(ViewOf(input.m_listName), list.m_text);
    return list.m_text;
}

void FileImportHandler::Evaluate(const std::string& text)
{
    ++m_countOfTexts;
    std::string name = "<command line";
    if (m_countOfTexts > 1)
        name.append(" ").append(std::to_string(m_countOfTexts));
    const Input& input = AddInput(
        name.append(">"), std::make_shared<const InputText>(xstring(ViewOf(text))), nullptr);
    // The directives are the words `import` and `importpath` at the outer level of the text.
    FileScopeVarFrame& frame =
        m_prelude.StartText(/*mayImport=*/text.find("import") != std::string::npos);
    const ActiveScope scope(*this, input, frame);
    ExpandForDefinitions(*this, frame, input.m_text->Text());
    m_prelude.FinishText();
}

void FileImportHandler::ExpandMain(ssize_t srcIndent, ssize_t dstIndent, ExpandedOutput& output,
                                   TextStream* text)
{
    const Input& input = *m_inputs.front();
    m_mainFrame = std::make_unique<FileScopeVarFrame>();
    m_prelude.MakeVisibleIn(*m_mainFrame);
    m_mainText = text;
    m_mainIndent = dstIndent;
    const ActiveScope scope(*this, input, *m_mainFrame);
    const SubString whole = input.m_text->Text();
    const SubString source = WithoutByteOrderMark(whole);
    if (source.begin() != whole.begin())
    {
        output.WriteSubStringFromSourceFile(SubString(whole.begin(), source.begin()), /*indent=*/0);
        output.m_columnPos = -1; // The first line begins behind it.
        if (text != nullptr)
            text->StartText();
    }
    MacroExpand(this, m_mainFrame.get(), source, srcIndent, dstIndent, output);
    m_mainText = nullptr;
}

/// Counts a string that is kept.
void FileImportHandler::HoldToEnd(const std::string& kept) const
{
    RunState::Of(m_run).HoldToEnd(static_cast<ssize_t>(sizeof(std::string) + kept.size()));
}

std::string FileImportHandler::ExpandName(const xstring& name, const char* pos) const
{
    xstring expanded(name);
    try
    {
        m_active.back().m_frame->ApplyDollarMacros(expanded);
    }
    catch (LexScannerException& e)
    {
        e.m_pos = pos;
        throw;
    }
    const MemoryHold copies(expanded.size() * s_mostCopies);
    return ToStdString(expanded);
}

/// Links and backslashes mean what they mean to the system, unless that leads nowhere.
static std::optional<std::string> FindIn(const std::string& directory, const std::string& name)
{
    for (std::string (*const join)(const std::string&, const std::string&) :
         {InDirectory, JoinImportPath})
        if (std::string path = join(directory, name); IsRegularFile(path))
            return path;
    return std::nullopt;
}

/// What an import costs with each that came before: counted as steps of the run.
static void CountSteps(ssize_t n, const char* pos)
{
    if (ExpansionLevel* const level = ExpansionLevel::Current())
        for (ssize_t i = 0; i < n; ++i)
            level->CountStep(pos);
}

std::optional<std::string> FileImportHandler::FindPath(const std::string& name,
                                                       const char* pos) const
{
    if (name.starts_with('/'))
        return IsRegularFile(name) ? std::optional(name) : std::nullopt;
    std::optional<std::string> path = FindIn(CurrentDirectory(), name);
    for (const auto* const directories : {&m_registeredPaths, &m_importPaths})
        for (size_t i = 0; !path && i < directories->size(); ++i)
        {
            CountSteps(1, pos);
            path = FindIn((*directories)[i], name);
        }
    return path;
}

void FileImportHandler::Know(Input& input, const FileStamp& stamp)
{
    if (m_checkFile)
        m_checkFile(stamp.Identity());
    input.m_stamp = stamp;
    input.m_identity = stamp.Identity();
    m_byIdentity[stamp.Identity()] = &input;
}

bool FileImportHandler::IsActive(const Input& input) const
{
    return std::ranges::find(m_active, &input, &Active::m_input) != m_active.end();
}

/// The input that was read from the open file, or null: a file of the same number may be another
/// one, or have another text by now.
FileImportHandler::Input* FileImportHandler::FindKnown(const std::string& path, int fd,
                                                       const struct stat& status)
{
    const auto known = m_byIdentity.find(FileIdentity(status));
    if (known == m_byIdentity.end())
        return nullptr;
    Input& input = *known->second;
    if (input.m_stamp->IsSettled(status))
        return &input;
    // Its status has changed (it got another link, say), or the times can't tell.
    if (path != input.m_path && !LeadsTo(input.m_path, FileIdentity(status)))
        return nullptr;
    if (IsActive(input))
        return &input; // A cycle, whatever its text is by now.
    if (!input.m_stamp->HasSameText(status))
        return nullptr;
    const xstring text = ReadAll(fd, path);
    if (lseek(fd, 0, SEEK_SET) != 0)
        return nullptr;
    return SubString(text) == input.m_text->Text() ? &input : nullptr;
}

/// The text of an open file, read unless an earlier run has read it.
std::shared_ptr<const InputText> FileImportHandler::ReadImport(const std::string& path, int fd,
                                                               const struct stat& status)
{
    if (auto known = m_texts.Find(status))
        return known;
    const FileStamp stamp(status);
    auto text = std::make_shared<const InputText>(InputText::Read(fd, path, status));
    m_texts.Keep(stamp, text);
    return text;
}

/// The file at `path`, read unless it was read before; null when it can't be read.
FileImportHandler::Input* FileImportHandler::Open(const std::string& path, const char* importPos)
try
{
    constexpr int flags = O_RDONLY | O_NOCTTY | O_NONBLOCK;
    const Descriptor fd(OpenAt(StartDirectory(), path.c_str(), flags));
    struct stat status;
    if (!fd.IsOpen() || fstat(fd.Get(), &status) != 0 || !S_ISREG(status.st_mode))
        return nullptr;
    if (Input* const known = FindKnown(path, fd.Get(), status))
    {
        NotePath(*known, fd.Get(), path);
        return known;
    }
    const FileStamp stamp(status);
    const std::string name = path.starts_with('/') ? path : JoinImportPath("", path);
    Input& input = AddInput(name, ReadImport(path, fd.Get(), status), importPos);
    input.m_path = path;
    Know(input, stamp);
    NotePath(input, fd.Get(), path);
    return &input;
}
catch (const FileError&)
{
    return nullptr;
}

void FileImportHandler::CheckCycle(const Input& input, const char* pos) const
{
    const auto first = std::ranges::find(m_active, &input, &Active::m_input);
    if (first == m_active.end())
        return;
    xstring description("Import cycle: ");
    for (auto active = first; active != m_active.end(); ++active)
    {
        description += ViewOf(active->m_input->m_name);
        description += " -> ";
    }
    description += ViewOf(input.m_name);
    throw LexScannerException(description, pos);
}

void FileImportHandler::ExpandImport(Input& input)
{
    input.m_frame = std::make_unique<FileScopeVarFrame>();
    m_prelude.MakeVisibleIn(*input.m_frame);
    const ActiveScope scope(*this, input, *input.m_frame);
    ExpandForDefinitions(*this, *input.m_frame, WithoutByteOrderMark(input.m_text->Text()));
    m_expanded.push_back(&input);
}

bool FileImportHandler::HandleImportPath(const xstring& path, const char* pos)
{
    const std::string name = ExpandName(path, pos);
    std::string directory = name.starts_with('/') ? name : InDirectory(CurrentDirectory(), name);
    HoldToEnd(directory);
    m_registeredPaths.push_back(std::move(directory));
    if (RemovesText())
        m_mainText->RemoveBlankLine();
    return true;
}

/// Has the text of the import that runs now removed. One named by a string is copied when this has
/// returned; one named by an expression has just been written with its value, lines indented. False
/// when the name is too long.
bool FileImportHandler::RemoveImport(const xstring& path, const char* pos)
{
    SubString rest(pos, m_active.back().m_input->m_text->Text().end());
    const LSToken token = LsScanToken(rest, /*returnComments=*/false);
    if (token.m_type != TOKEN_LEFT_PAREN)
    {
        m_mainText->RemoveSource(m_run.CurrentPosition(), token.m_str.end());
        return true;
    }
    const ssize_t lineFeeds = std::count(path.begin(), path.end(), '\n');
    const ssize_t length = SubString("@import \"\"").size() + path.size();
    ssize_t indentation = 0;
    return !__builtin_mul_overflow(lineFeeds, m_mainIndent, &indentation) &&
           indentation <= std::numeric_limits<ssize_t>::max() - length &&
           m_mainText->RemoveLast(length + indentation);
}

bool FileImportHandler::HandleImport(VarFrame* vf, const xstring& path, const char* pos)
{
    const auto found = FindPath(ExpandName(path, pos), pos);
    Input* const input = found ? Open(*found, pos) : nullptr;
    if (input == nullptr)
        return false;
    CheckCycle(*input, pos);
    if (RemovesText())
    {
        RunState::Of(m_run).HoldToEnd(2 * sizeof(OutputRange)); // what the text stream keeps
        if (!RemoveImport(path, pos))
            return false;
    }
    if (input->m_frame == nullptr)
        ExpandImport(*input);
    CountSteps(input->m_frame->m_setOfFrames.size(), pos);
    vf->m_fileScopeFrame->AddImport(input->m_frame.get());
    if ((m_run.m_warnings & WARN_UNUSED) != 0 &&
        m_active.front().m_input == m_inputs.front().get() && m_active.size() == 1)
        m_mainImports.push_back({input, pos});
    return true;
}

/// Those of the files that the main file imports of which nothing is used. An import brings its own
/// text and those of its imports.
std::set<const FileImportHandler::Input*> FileImportHandler::FindUnusedImports() const
{
    std::vector<SubString> texts;
    std::vector<bool> haveDollarMacros;
    std::map<const VarFrame*, size_t> byFrame;
    for (const auto& input : m_inputs)
    {
        if (input->m_text == nullptr)
            continue; // rows of data
        if (input->m_frame != nullptr)
            byFrame[input->m_frame.get()] = texts.size();
        const SubString text = texts.emplace_back(input->m_text->Text());
        const std::string_view whole(text.begin(), static_cast<size_t>(text.size()));
        haveDollarMacros.push_back(whole.find("@$") != std::string_view::npos);
    }
    std::set<const Input*> unused;
    for (const MainImport& import : m_mainImports)
        unused.insert(import.m_input);
    const std::vector<const Input*> imports(unused.begin(), unused.end());
    const auto textsOf = [&](size_t import, std::vector<size_t>& group)
    {
        const VarFrame* const frame = imports[import]->m_frame.get();
        group.push_back(byFrame.at(frame));
        frame->m_setOfFrames.ForEach(
            [&](const VarFrame* imported)
            {
                if (const auto found = byFrame.find(imported); found != byFrame.end())
                    group.push_back(found->second);
            });
        if (std::ranges::any_of(group, [&](size_t text) { return haveDollarMacros[text]; }))
            group.clear(); // it may be read for these
    };
    const std::vector<bool> areInVain = m_run.DefineInVain(texts, imports.size(), textsOf);
    for (size_t i = 0; i < imports.size(); ++i)
        if (!areInVain[i])
            unused.erase(imports[i]);
    return unused;
}

std::vector<ExpansionWarning> FileImportHandler::FindUnused() const
{
    const SubString main = m_inputs.front()->m_text->Text();
    std::vector<SubString> all;
    for (const auto& input : m_inputs)
        if (input->m_text != nullptr) // rows of data have none
            all.push_back(input->m_text->Text());
    std::vector<ExpansionWarning> unused = m_run.FindUnused(main, all);
    const std::set<const Input*> unusedImports = FindUnusedImports();
    for (const MainImport& import : m_mainImports)
    {
        if (!unusedImports.contains(import.m_input))
            continue;
        ExpansionWarning& warning = unused.emplace_back();
        warning.m_kind = WARN_UNUSED;
        warning.m_pos = import.m_pos;
        warning.m_text = "nothing of the imported file '";
        warning.m_text += ViewOf(import.m_input->m_name);
        warning.m_text += "' is used";
    }
    std::ranges::sort(unused, {}, &ExpansionWarning::m_pos);
    return unused;
}

void FileImportHandler::CheckUnchanged() const
{
    for (const auto& input : m_inputs)
        if (input->m_text != nullptr)
            if (const char* const change = input->m_text->FindChange())
                throw FileError("can't read '" + input->m_name + "': " + change);
}

/// Remembers the name by which a file was reached, normalised unless that leads elsewhere, and that
/// of the file behind symbolic links.
void FileImportHandler::NotePath(Input& input, int fd, const std::string& path)
{
    if (!m_notesPaths)
        return;
    const auto [noted, isNew] = m_notedPaths.insert(path);
    if (!isNew)
        return;
    // Here, among the paths of the input, and when these are written.
    for (int i = 0; i < 3; ++i)
        HoldToEnd(*noted);
    const auto leadsToIt = [&](const std::string& name)
    { return LeadsTo(name, *input.m_identity); };
    const std::string normalised = path.starts_with('/') ? path : JoinImportPath("", path);
    input.m_paths.push_back(leadsToIt(normalised) ? normalised : path);
    if (const std::string real = RealPath(fd, path); leadsToIt(real))
        input.m_paths.push_back(real);
}

std::vector<std::string> FileImportHandler::ImportedPaths() const
{
    std::vector<std::string> paths;
    for (size_t i = 1; i < m_inputs.size(); ++i)
        if (m_inputs[i]->m_identity)
            paths.insert(paths.end(), m_inputs[i]->m_paths.begin(), m_inputs[i]->m_paths.end());
    return paths;
}

std::vector<std::string> FileImportHandler::OpenedImports() const
{
    std::vector<std::string> paths;
    for (size_t i = 1; i < m_inputs.size(); ++i)
        if (m_inputs[i]->m_identity)
            paths.push_back(m_inputs[i]->m_path);
    return paths;
}

std::vector<FileIdentity>
FileImportHandler::ImportedIdentities(const std::function<bool(const FileIdentity&)>& matters) const
{
    std::vector<FileIdentity> identities;
    for (size_t i = 1; i < m_inputs.size(); ++i)
    {
        const std::optional<FileIdentity>& identity = m_inputs[i]->m_identity;
        if (identity && matters(*identity) && LeadsTo(m_inputs[i]->m_path, *identity))
            identities.push_back(*identity);
    }
    return identities;
}

} // namespace telv::tool
