// SPDX-License-Identifier: MIT
// The command line of `tlexpand remap`.
#pragma once

#include "options/Options.h"

namespace telv::tool
{

/// A map and where its output is; an empty name: where the map says.
struct MapFile
{
    std::string m_path;
    std::string m_output;
};

struct RemapOptions
{
    std::vector<MapFile> m_maps;
    std::string m_nextOutput;   ///< Of the map that has yet to be named.
    char** m_command = nullptr; ///< The command and its arguments, of `argv`; or null.
    bool m_help = false;
    bool m_version = false;
};

/// Reads the arguments; `argv[0]` is the command's name. What is behind "--" is a command.
///
/// @throws UsageError
RemapOptions ParseRemapOptions(int argc, char** argv);

/// The text of `--help`.
std::string RemapHelp();

} // namespace telv::tool
