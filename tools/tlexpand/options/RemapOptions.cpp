// SPDX-License-Identifier: MIT
// getopt_long, as for an expansion; "--" is looked for first, since a command has options of its
// own.
#include "options/RemapOptions.h"
#include "options/OptionValues.h"
#include "options/OptionWalk.h"
#include <cstring>

namespace telv::tool
{

namespace
{

// clang-format off
constexpr option s_table[] = {
    {"output",  required_argument, nullptr, 'o'},
    {"version", no_argument,       nullptr, 'V'},
    {"help",    no_argument,       nullptr, 'h'},
    {nullptr, 0, nullptr, 0}};
// clang-format on

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
    std::string output;
    const int command = FindCommand(argc, argv);
    ForEachOption(command, argv, "-:o:Vh", s_table,
                  [&](int code, const char* value)
                  {
                      if (code == 'h')
                          options.m_help = true;
                      else if (code == 'V')
                          options.m_version = true;
                      else if (code == 'o')
                          output = ParseFileName("-o", value);
                      else
                      {
                          options.m_maps.push_back({ParseFileName("MAP", value), output});
                          output.clear();
                      }
                  });
    if (options.m_help || options.m_version)
        return options;
    if (options.m_maps.empty())
        throw UsageError("the map is missing");
    if (!output.empty())
        throw UsageError("-o stands before the map of its file");
    if (command + 1 == argc)
        throw UsageError("the command behind '--' is missing");
    if (command < argc)
        options.m_command = argv + command + 1;
    return options;
}

const char* const s_remapHelp =
    R"(Usage: tlexpand remap [OPTIONS] MAP... [-- COMMAND [ARGUMENT...]]

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

} // namespace telv::tool
