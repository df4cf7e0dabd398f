// SPDX-License-Identifier: MIT
// Places in a line of text: FILE:LINE, FILE:LINE:COLUMN, FILE(LINE), FILE(LINE,COLUMN) and Python's
// File "FILE", line LINE.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace telv::tool
{

enum class EPlaceForm
{
    Colons,
    Brackets,
    Python
};

/// A place in a line. The name is [m_begin, m_nameEnd), the whole place ends before m_end.
struct PlaceInLine
{
    EPlaceForm m_form = EPlaceForm::Colons;
    size_t m_begin = 0;
    size_t m_nameEnd = 0;
    size_t m_end = 0;
    ssize_t m_line = 0;
    std::optional<ssize_t> m_column;
};

/// Tells the files that are looked for from others.
struct KnownFiles
{
    const std::vector<std::string>& m_lastParts; ///< Of their paths.
    std::function<bool(const std::string& path)> m_isKnown;
};

/// Whether the path at `pos` of a line is that of a URI, behind "file://".
bool IsInUri(const std::string& line, size_t pos);

/// The first place at or after `from` whose file is known. A path can hold blanks: of several
/// beginnings, the one that makes it longest counts.
std::optional<PlaceInLine> FindPlace(const std::string& line, size_t from, const KnownFiles& files);

/// The place in its form, with another file, line and column.
std::string WritePlace(EPlaceForm form, const std::string& path, ssize_t line,
                       std::optional<ssize_t> column);

} // namespace telv::tool
