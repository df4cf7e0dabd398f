// SPDX-License-Identifier: MIT
// A source file in memory: the buffer that views and error positions point into.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/xstring.h"

namespace telv
{

/// A file's name and text. It must outlive every view into it; changing `m_buffer` ends them.
class TLEXPANDER_API LSSourceFile
{
public:
    xstring m_name; ///< The path as it was given.
    xstring m_buffer;

    /// Says where `pos` stands when it lies in this file, its end included: true, and `path` and
    /// `line` (counted from 1) are set. Otherwise false, and they are left alone. Linear.
    bool GetFilenameAndLineNumber(const char* pos, xstring& path, ssize_t& line) const;
};

static_assert(sizeof(LSSourceFile) == 48, "no other fields");

} // namespace telv
