// SPDX-License-Identifier: MIT
// The command line of `tlexpand where`.
#pragma once

#include "options/Options.h"

namespace telv::tool
{

/// A place in a file: "FILE:LINE" or "FILE:LINE:COLUMN".
struct FilePlace
{
    std::string m_file;
    ssize_t m_line = 0;
    std::optional<ssize_t> m_column;
    /// With a column: the file when what looks like its line belongs to its name, and what looks
    /// like the column is the line.
    std::string m_longerFile;

    /// The place in that file.
    FilePlace InLongerFile() const { return {m_longerFile, m_column.value_or(0), {}, {}}; }
};

struct WhereOptions
{
    std::string m_map;
    std::optional<FilePlace> m_place;  ///< In the output. Either this
    std::optional<FilePlace> m_source; ///< or a line of a source.
    /// Where the output is; empty: what `m_place` names, or where the map says.
    std::string m_output;
    Colour m_colour = Colour::Auto;
    bool m_help = false;
    bool m_version = false;
};

/// Reads the arguments; `argv[0]` is the command's name.
///
/// @throws UsageError
WhereOptions ParseWhereOptions(int argc, char** argv);

/// The text of `--help`.
std::string WhereHelp();

} // namespace telv::tool
