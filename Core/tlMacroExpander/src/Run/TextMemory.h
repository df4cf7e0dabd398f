// SPDX-License-Identifier: MIT
// Where the characters of a temporary text are kept.
//
// Built with TELV_GUARD_TEXTS, each text ends at the end of its own pages, before one that cannot
// be read, and stays mapped but unreadable for a while after its death: a view that outlived it, or
// that runs past its end, is then found without luck.
#pragma once

#include "tlUtils/xstring.h"

namespace telv
{

#ifdef TELV_GUARD_TEXTS

/// Owns a copy of the characters of a text; where too many are guarded, the text itself.
class TextMemory
{
public:
    explicit TextMemory(xstring& text);
    ~TextMemory();
    TextMemory(const TextMemory&) = delete;
    TextMemory& operator=(const TextMemory&) = delete;

    SubString View() const { return m_text; }

private:
    char* m_pages = nullptr;
    size_t m_size = 0;   ///< Of the pages, the unreadable one at the end included.
    xstring m_unguarded; ///< Where too many are guarded.
    SubString m_text;
};

#else

/// Owns the characters of a text, taken over without a copy.
class TextMemory
{
public:
    explicit TextMemory(xstring& text) { m_text.swap(text); }

    SubString View() const { return m_text; }

private:
    xstring m_text;
};

#endif

} // namespace telv
