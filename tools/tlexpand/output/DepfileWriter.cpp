// SPDX-License-Identifier: MIT
// What both programs take back: a backslash before blank, '#' and ':', a doubled '$'. Backslashes
// that stand before a blank are doubled; elsewhere they mean themselves. A name that make would
// take for another one, however it is spelt, is refused: a wrong dependency would be found out
// late.
#include "output/DepfileWriter.h"
#include "Files.h"
#include <cstring>
#include <set>
#include <string_view>
#include <utility>

namespace telv::tool
{

namespace
{

/// To make these end the names, or stand for the names of other files as well.
constexpr const char* s_unwritable = "*;?|";
/// At the end of a name these would belong to what follows, or make an archive's member of it.
constexpr const char* s_unwritableLast = " \\:)&";
/// To make a target with one of these is a pattern, or the rule an assignment.
constexpr const char* s_noTarget = "%=";

bool IsOneOf(char c, const char* characters)
{
    return c != '\0' && std::strchr(characters, c) != nullptr;
}

bool IsControl(char c)
{
    const auto code = static_cast<unsigned char>(c);
    return code < 0x20 || code == 0x7f;
}

[[noreturn]] void Refuse(const std::string& name, const std::string& reason)
{
    throw FileError("can't write the name '" + name + "' to a dependency file: " + reason);
}

void CheckName(const std::string& name, const char* alsoUnwritable)
{
    char previous = '\0';
    for (const char c : name)
    {
        if (IsControl(c))
            Refuse(name, "it holds a control character");
        if (IsOneOf(c, s_unwritable) || IsOneOf(c, alsoUnwritable))
            Refuse(name, std::string("it holds '") + c + "'");
        if (previous == '\\' && IsOneOf(c, "#:$"))
            Refuse(name, std::string("it holds '\\") + c + "'");
        previous = c;
    }
    if (name.starts_with('~'))
        Refuse(name, "its first character is '~'");
    if (IsOneOf(previous, s_unwritableLast))
        Refuse(name, std::string("its last character is '") + previous + "'");
}

/// @param alsoUnwritable  What can't stand in this place, besides what can stand nowhere.
std::string EscapeName(const std::string& name, const char* alsoUnwritable)
{
    CheckName(name, alsoUnwritable);
    // Both drop "./"; without it make would see an assignment.
    std::string escaped = name.starts_with('=') ? "./" : "";
    size_t backslashes = 0;
    for (const char c : name)
    {
        if (c == ' ')
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

bool CanBeTarget(const std::string& name)
{
    return name.find_first_of(s_noTarget) == std::string::npos;
}

} // namespace

std::string MakeDepfile(const std::string& output, const std::string& main,
                        const std::vector<std::string>& imports)
{
    std::string text = EscapeName(output, s_noTarget) + ":";
    // The first word behind the colon can be the name of a variable that is assigned to.
    const char* unwritable = "=";
    if (!main.empty())
        text.append(" ").append(EscapeName(main, std::exchange(unwritable, "")));
    std::string rules;
    std::set<std::string_view> known = {main};
    for (const std::string& import : imports)
    {
        if (!known.insert(import).second)
            continue;
        text.append(" \\\n  ").append(EscapeName(import, std::exchange(unwritable, "")));
        if (CanBeTarget(import))
            rules.append("\n").append(EscapeName(import, "")).append(":\n");
    }
    return text + "\n" + rules;
}

} // namespace telv::tool
