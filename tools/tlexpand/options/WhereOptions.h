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
};

struct WhereOptions
{
    std::string m_map;
    std::optional<FilePlace> m_place;  ///< In the output. Either this
    std::optional<FilePlace> m_source; ///< or a line of a source.
    std::string m_output;              ///< Where the output is; empty: where the map says.
    Colour m_colour = Colour::Auto;
    bool m_help = false;
    bool m_version = false;
};

/// Reads the arguments; `argv[0]` is the command's name.
///
/// @throws UsageError
WhereOptions ParseWhereOptions(int argc, char** argv);

extern const char* const s_whereHelp;

} // namespace telv::tool
