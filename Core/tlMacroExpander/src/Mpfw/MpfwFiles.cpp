// SPDX-License-Identifier: MIT
// Reading and expanding the files of a project.
//
// Files that are being expanded are nested, and a file enters the list when its turn begins; so the
// files in progress, in the order of the list, are the chain of imports. A file in progress is
// marked in its map, which is replaced at the end: by a single empty piece, which no finished map
// holds. The class has no room for a field of its own (applications derive from it), and a list in
// the parser would have to be found by the files that an application makes and adds itself.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/Mpfw/MpfwParser"

#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Mpfw/MpfwParser.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include <algorithm>
#include <memory>
#include <sys/stat.h>

namespace telv
{

namespace
{

bool IsInProgress(const MpfwSourceFile& srcFile)
{
    const xvector<OutputPiece>& pieces = srcFile.m_pieces.m_pieces;
    return pieces.size() == 1 && pieces.front().out == 0 && pieces.front().in.empty();
}

/// Marks a file as being expanded until its map is there or the scope ends.
class ProgressMark
{
public:
    explicit ProgressMark(MpfwSourceFile& srcFile) : m_srcFile(srcFile)
    {
        m_srcFile.m_pieces.m_pieces.clear();
        m_srcFile.m_pieces.m_pieces.push_back(OutputPiece{SubString(), 0});
    }
    ~ProgressMark()
    {
        if (IsInProgress(m_srcFile))
            m_srcFile.m_pieces.m_pieces.clear();
    }
    ProgressMark(const ProgressMark&) = delete;
    ProgressMark& operator=(const ProgressMark&) = delete;

private:
    MpfwSourceFile& m_srcFile;
};

xstring Normalised(const xstring& path)
{
    xstring normalised(path);
    NormalisePath(normalised);
    return normalised;
}

bool IsRegularFile(const xstring& path)
{
    struct stat status;
    return std::memchr(path.c_str(), '\0', static_cast<size_t>(path.size())) == nullptr &&
           stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

/// The directory part of a path with its slash; empty when there is none.
SubString DirectoryOf(SubString path)
{
    while (!path.empty() && path.end()[-1] != '/')
        --path.m_p2;
    return path;
}

/// What follows the last slash or backslash.
SubString LastComponent(SubString path)
{
    const char* start = path.end();
    while (start != path.begin() && start[-1] != '/' && start[-1] != '\\')
        --start;
    return SubString(start, path.end());
}

bool FindIn(SubString directory, const xstring& name, xstring& path)
{
    xstring joined(directory);
    if (!directory.empty())
        joined += '/';
    joined += name;
    NormalisePath(joined);
    if (!IsRegularFile(joined))
        return false;
    path.swap(joined);
    return true;
}

} // namespace

MpfwSourceFile* MpfwParser::CreateMpfwSourceFile()
{
    return std::make_unique<MpfwSourceFile>().release();
}

const MpfwSourceFile* MpfwParser::ImportingFile() const
{
    const MpfwSourceFile* importing = nullptr;
    for (const MpfwSourceFile* srcFile : m_frame.m_srcFileList)
        if (IsInProgress(*srcFile))
            importing = srcFile;
    if (importing != nullptr || m_token.m_str.begin() == nullptr)
        return importing;
    const SubString place(m_token.m_str.begin(), m_token.m_str.begin());
    for (const MpfwSourceFile* srcFile : m_frame.m_srcFileList)
        if (IsWithin(place, srcFile->m_expanded))
            return srcFile;
    return nullptr;
}

bool MpfwParser::ResolveImportPath(const xstring& name, xstring& path)
{
    if (!name.empty() && name.front() == '/')
    {
        path = name;
        return IsRegularFile(name);
    }
    const MpfwSourceFile* const importing = ImportingFile();
    if (FindIn(importing == nullptr ? SubString() : DirectoryOf(importing->m_localPath), name,
               path))
        return true;
    for (const xstring& directory : m_frame.m_importPaths)
        if (FindIn(directory, name, path))
            return true;
    return false;
}

bool MpfwParser::HandleImportPath(const xstring& path, const char* pos)
{
    xstring directory(path);
    ApplyMacrosAt(directory, pos);
    NormalisePath(directory);
    m_frame.m_importPaths.push_back(directory);
    return true;
}

bool MpfwParser::HandleImport(VarFrame* vf, const xstring& path, const char* pos)
{
    TELV_ASSERT(vf == &m_frame.m_vf);
    xstring name(path);
    ApplyMacrosAt(name, pos);
    xstring resolved;
    if (!ResolveImportPath(name, resolved))
        ThrowAt(pos, {"Couldn't open file ", name});
    return AddFileAt(resolved, pos) != nullptr;
}

MpfwSourceFile* MpfwParser::FindExactly(const xstring& path) const
{
    const xstring normalised = Normalised(path);
    const SubString name = LastComponent(normalised);
    for (MpfwSourceFile* srcFile : m_frame.m_srcFileList)
    {
        // Nearly all files have another name, which is seen without normalising their paths.
        const SubString knownName = LastComponent(srcFile->m_localPath);
        const bool mayBe = knownName == name || knownName.empty() || *knownName == '.';
        if (mayBe && Normalised(srcFile->m_localPath) == normalised)
            return srcFile;
    }
    return nullptr;
}

MpfwSourceFile* MpfwParser::AddFile(const xstring& path)
{
    return AddFileAt(path, m_token.m_str.begin());
}

MpfwSourceFile* MpfwParser::AddFileAt(const xstring& path, const char* pos)
{
    if (MpfwSourceFile* const known = FindExactly(path))
    {
        if (IsInProgress(*known))
            ThrowCycle(*known, pos);
        return known;
    }
    xstring buffer;
    if (!ReadStringFromFile(buffer, path, /*binary=*/true))
        ThrowAt(pos, {"Couldn't open file ", path});
    return AddText(path, buffer);
}

MpfwSourceFile* MpfwParser::AddText(const xstring& path, xstring& text)
{
    std::unique_ptr<MpfwSourceFile> made(CreateMpfwSourceFile());
    made->m_localPath = path;
    made->m_buffer.swap(text);
    made->m_buffer.c_str(); // Gives an empty text an address of its own.
    m_frame.m_srcFileList.AddSrcFile(made.get());
    MpfwSourceFile* const srcFile = made.release();
    Expand(*srcFile);
    return srcFile;
}

void MpfwParser::Expand(MpfwSourceFile& srcFile)
{
    const ProgressMark mark(srcFile);
    SubString text = srcFile.m_buffer;
    if (SubString(text.begin(), text.begin() + std::min<ssize_t>(text.size(), 3)) == "\xef\xbb\xbf")
        text.m_p1 += 3; // A byte order mark is part of no statement.
    try
    {
        MacroExpand(this, &m_frame.m_vf, text, 0, 0, srcFile.m_expanded, srcFile.m_pieces);
    }
    catch (const ExpansionLimitException&)
    {
        throw;
    }
    catch (const LexScannerException& e)
    {
        ReportError(e);
        ExpansionLevel::ForgetErrors(); // What is noted about this one is not of the next.
    }
}

void MpfwParser::ReportError(const LexScannerException& e) const
{
    const ExpansionRun* const run = ExpansionRun::Current();
    if (run != nullptr && run->m_fileErrorSink)
    {
        run->m_fileErrorSink(e);
        return;
    }
    TracerX trace;
    m_frame.m_srcFileList.WriteLexScannerError(trace, e);
}

void MpfwParser::ThrowCycle(const MpfwSourceFile& again, const char* pos) const
{
    xstring description("Import cycle: ");
    bool isInCycle = false;
    for (const MpfwSourceFile* srcFile : m_frame.m_srcFileList)
    {
        isInCycle = isInCycle || srcFile == &again;
        if (!isInCycle || !IsInProgress(*srcFile))
            continue;
        description += srcFile->m_localPath;
        description += " -> ";
    }
    description += again.m_localPath;
    throw LexScannerException(description, pos);
}

} // namespace telv
