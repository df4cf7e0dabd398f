// SPDX-License-Identifier: MIT
// getopt_long, told by the letters "-" and ":" to return operands in their place, so that options
// may stand after them and the environment has no say in it, and to be silent.
#include "options/OptionTable.h"
#include "options/Options.h"
#include <algorithm>

namespace telv::tool
{

namespace
{

constexpr int s_operandCode = 1;
/// Of an option without a letter: this and its index.
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

void OptionTable::AddOption(const char* name, char letter, bool hasValue)
{
    const int code = letter != 0 ? letter : s_firstLongCode + static_cast<int>(m_options.size());
    m_options.push_back({name, hasValue ? required_argument : no_argument, nullptr, code});
    if (letter != 0)
        m_letters += letter;
    if (letter != 0 && hasValue)
        m_letters += ':';
}

void OptionTable::ForEach(int argc, char** argv, const std::function<void(int, const char*)>& take)
{
    m_options.push_back({}); // ends the list
    opterr = 0;
    optind = 0; // Starts anew, and reads the letters anew.
    int code = 0;
    while ((code = getopt_long(argc, argv, m_letters.c_str(), m_options.data(), nullptr)) != -1)
    {
        if (code == '?' || code == ':')
            ThrowBadOption(code, argv);
        const auto row = std::ranges::find(m_options, code, &option::val);
        take(code == s_operandCode ? -1 : static_cast<int>(row - m_options.begin()), optarg);
    }
    for (int i = optind; i < argc; ++i)
        take(-1, argv[i]);
}

} // namespace telv::tool
