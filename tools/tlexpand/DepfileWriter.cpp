// What both programs take back: a backslash before blank, '#' and ':', a doubled '$'. Backslashes
// that stand before a blank are doubled; elsewhere they mean themselves.
#include "DepfileWriter.h"
#include "Files.h"
#include <cstring>

namespace telv::tool
{

namespace
{

/// What one of the programs would take for something else, however it is written.
constexpr const char* s_unwritable = "\n\t;|=%";

std::string EscapeName(const std::string& name)
{
    std::string escaped;
    size_t backslashes = 0;
    for (const char c : name)
    {
        if (std::strchr(s_unwritable, c) != nullptr)
            throw FileError("can't write the name '" + name + "' to a dependency file");
        if (c == ' ' || c == '\t')
            escaped += std::string(backslashes + 1, '\\');
        else if (c == '#' || c == ':')
            escaped += '\\';
        else if (c == '$')
            escaped += '$';
        escaped += c;
        backslashes = c == '\\' ? backslashes + 1 : 0;
    }
    return escaped;
}

} // namespace

std::string MakeDepfile(const std::string& output, const std::string& main,
                        const std::vector<std::string>& imports)
{
    std::string text = EscapeName(output) + ":";
    if (!main.empty())
        text.append(" ").append(EscapeName(main));
    for (const std::string& import : imports)
        text.append(" \\\n  ").append(EscapeName(import));
    text += "\n";
    for (const std::string& import : imports)
        text.append("\n").append(EscapeName(import)).append(":\n");
    return text;
}

} // namespace telv::tool
