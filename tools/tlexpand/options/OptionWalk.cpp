// SPDX-License-Identifier: MIT
// getopt_long, told by the letters "-" and ":" to return operands in their place, so that options
// may stand after them and the environment has no say in it, and to be silent.
#include "options/OptionWalk.h"
#include "options/Options.h"

namespace telv::tool
{

namespace
{

constexpr int s_firstLongCode = 256;

[[noreturn]] void ThrowBadOption(int code, char** argv)
{
    const std::string written = optopt != 0 && optopt < s_firstLongCode
                                    ? std::string("-") + static_cast<char>(optopt)
                                    : std::string(argv[optind - 1]);
    if (code == ':')
        throw UsageError("option '" + written + "' needs a value");
    const std::string name = written.substr(0, written.find('='));
    throw UsageError("unknown option or needless value: '" + name + "'");
}

} // namespace

int ForEachOptionBeforeCommand(int argc, char** argv, const char* letters, const option* table,
                               const std::function<void(int code, const char* value)>& take)
{
    opterr = 0;
    optind = 0; // Starts anew, and reads the letters anew.
    int code = 0;
    while ((code = getopt_long(argc, argv, letters, table, nullptr)) != -1)
    {
        if (code == '?' || code == ':')
            ThrowBadOption(code, argv);
        take(code, optarg);
    }
    return optind;
}

void ForEachOption(int argc, char** argv, const char* letters, const option* table,
                   const std::function<void(int code, const char* value)>& take)
{
    for (int i = ForEachOptionBeforeCommand(argc, argv, letters, table, take); i < argc; ++i)
        take(s_operandCode, argv[i]);
}

} // namespace telv::tool
