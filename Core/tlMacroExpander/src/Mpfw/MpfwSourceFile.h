// SPDX-License-Identifier: MIT
// The files that a project was read from, each with its expansion and the map between the two, and
// the way from an error's position back to file and line. MpfwParser.h reads them.
#pragma once

#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/src/LSToken.h"

namespace telv
{

/// A growable array of pointers that owns what they point to.
template <class T>
class TLEXPANDER_API AutoCollectionOfPtr
{
public:
    xvector<T*> m_items;

    AutoCollectionOfPtr() = default;
    ~AutoCollectionOfPtr()
    {
        for (T* item : m_items)
            delete item;
    }
    AutoCollectionOfPtr(const AutoCollectionOfPtr&) = delete;
    AutoCollectionOfPtr& operator=(const AutoCollectionOfPtr&) = delete;

    ssize_t size() const { return m_items.size(); }
    bool empty() const { return m_items.empty(); }
    /// The item stays the collection's.
    T* operator[](ssize_t index) const { return m_items[index]; }
    T* const* begin() const { return m_items.begin(); }
    T* const* end() const { return m_items.end(); }
    /// Takes ownership of `item`.
    void push_back(T* item) { m_items.push_back(item); }
};

/// One project file. A parser may keep more in a class derived from it.
class TLEXPANDER_API MpfwSourceFile
{
public:
    xstring m_localPath;   ///< As it was opened.
    xstring m_buffer;      ///< The text as it was read; it doesn't change while frames view it.
    xstring m_expanded;    ///< The text after expansion; empty until then, and after an error.
    OutputPieces m_pieces; ///< The map from `m_expanded` to `m_buffer`.

    MpfwSourceFile() = default;
    virtual ~MpfwSourceFile();
    MpfwSourceFile(const MpfwSourceFile&) = delete;
    MpfwSourceFile& operator=(const MpfwSourceFile&) = delete;

    /// Says where `pos` stands when it lies in `m_buffer`, its end included: true, and `filename`
    /// and `lineNumber` (counted from 1) are set. Otherwise false, and they are left alone. Linear.
    bool GetFilenameAndLineNumber(const char* pos, xstring& filename, ssize_t& lineNumber) const;
};

/// Owns the files of a project, in the order of reading.
class TLEXPANDER_API MpfwSourceFileList : public AutoCollectionOfPtr<MpfwSourceFile>
{
public:
    /// Takes ownership of `srcFile`, which must not be null.
    void AddSrcFile(MpfwSourceFile* srcFile);
    /// The first file of this path, letter case apart, or null. Linear.
    MpfwSourceFile* FindSourceFile(const xstring& path) const;
    /// The index of the first file whose `m_buffer` holds `pos`, its end included, or -1.
    ssize_t GetSrcFileIndexContainingPosition(const char* pos) const;
    /// As `MpfwSourceFile::GetFilenameAndLineNumber`, for the first file that holds `pos`; false
    /// for null.
    bool GetFilenameAndLineNumber(const char* pos, xstring& filename, ssize_t& lineNumber) const;
    /// Writes a line feed, "PATH(LINE) : " when the position lies in a file, and the description.
    void WriteLexScannerError(xostream& os, const LexScannerException& e) const;
};

static_assert(sizeof(MpfwSourceFile) == 104, "no other fields");
static_assert(sizeof(MpfwSourceFileList) == 24, "no other fields");

} // namespace telv
