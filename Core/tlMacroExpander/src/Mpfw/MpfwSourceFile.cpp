// SPDX-License-Identifier: MIT
// Positions are looked for by address in each file in turn: a project has few.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/Mpfw/MpfwSourceFile"

#include "tlMacroExpander/src/Mpfw/MpfwSourceFile.h"

namespace telv
{

MpfwSourceFile::~MpfwSourceFile() = default;

bool MpfwSourceFile::GetFilenameAndLineNumber(const char* pos, xstring& filename,
                                              ssize_t& lineNumber) const
{
    const ssize_t line = GetLineNumber(m_buffer, pos);
    if (line == -1)
        return false;
    filename = m_localPath;
    lineNumber = line;
    return true;
}

void MpfwSourceFileList::AddSrcFile(MpfwSourceFile* srcFile)
{
    TELV_ASSERT(srcFile);
    push_back(srcFile);
}

MpfwSourceFile* MpfwSourceFileList::FindSourceFile(const xstring& path) const
{
    for (MpfwSourceFile* srcFile : *this)
        if (CaseInsensitiveCompare(srcFile->m_localPath, path))
            return srcFile;
    return nullptr;
}

ssize_t MpfwSourceFileList::GetSrcFileIndexContainingPosition(const char* pos) const
{
    if (pos == nullptr)
        return -1;
    for (ssize_t i = 0; i < size(); ++i)
        if (IsWithin(SubString(pos, pos), (*this)[i]->m_buffer))
            return i;
    return -1;
}

bool MpfwSourceFileList::GetFilenameAndLineNumber(const char* pos, xstring& filename,
                                                  ssize_t& lineNumber) const
{
    const ssize_t index = GetSrcFileIndexContainingPosition(pos);
    return index != -1 && (*this)[index]->GetFilenameAndLineNumber(pos, filename, lineNumber);
}

void MpfwSourceFileList::WriteLexScannerError(xostream& os, const LexScannerException& e) const
{
    os << '\n';
    xstring filename;
    ssize_t lineNumber = -1;
    if (GetFilenameAndLineNumber(e.m_pos, filename, lineNumber))
        os << filename << '(' << lineNumber << ") : ";
    os << e.m_description;
}

} // namespace telv
