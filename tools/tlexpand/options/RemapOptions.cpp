// SPDX-License-Identifier: MIT
// "--" is looked for first, since a command has options of its own.
#include "options/RemapOptions.h"
#include "options/OptionTable.h"
#include "options/OptionValues.h"
#include <cstring>
#include <utility>

namespace telv::tool
{

namespace
{

// clang-format off
constexpr OptionRow<RemapOptions> s_rows[] = {
    {"output",  'o', Value<&RemapOptions::m_nextOutput, ParseFileName>},
    {"version", 'V', Flag<&RemapOptions::m_version>},
    {"help",    'h', Flag<&RemapOptions::m_help>},
};
// clang-format on

void AddMap(RemapOptions& options, const char* map)
{
    options.m_maps.push_back(
        {ParseFileName("MAP", map), std::exchange(options.m_nextOutput, std::string())});
}

/// Index of "--", or `argc`. No option of the command takes it for its value.
int FindCommand(int argc, char** argv)
{
    int index = 1;
    while (index < argc && std::strcmp(argv[index], "--") != 0)
        ++index;
    return index;
}

} // namespace

RemapOptions ParseRemapOptions(int argc, char** argv)
{
    RemapOptions options;
    const int command = FindCommand(argc, argv);
    ReadArguments<RemapOptions>(command, argv, options, {s_rows}, AddMap);
    if (options.m_help || options.m_version)
        return options;
    if (options.m_maps.empty())
        throw UsageError("the map is missing");
    if (!options.m_nextOutput.empty())
        throw UsageError("-o stands before the map of its file");
    if (command + 1 == argc)
        throw UsageError("the command behind '--' is missing");
    if (command < argc)
        options.m_command = argv + command + 1;
    return options;
}

std::string RemapHelp()
{
    return R"(Usage: tlexpand remap [OPTIONS] MAP... [-- COMMAND [ARGUMENT...]]

Passes on what compilers and other programs say, with places in outputs of tlexpand turned
into places in their sources. MAP is what --map has written. The messages are read from
standard input, or COMMAND is run and those of its standard output and standard error
are passed on.

Options:
  -o, --output FILE        the output of the MAP that follows, if MAP does not name it
  -V, --version            print the version
  -h, --help               print this

Exit status: that of COMMAND (128 and the number of the signal that ended it; 127 when
it is not found). Without one: 0, or 2 when a map cannot be used for a message, which
passes unchanged.
)";
}

} // namespace telv::tool
