// SPDX-License-Identifier: MIT
// Reads no more than the directive and its string: in a comment it looks like one, too.
#include "input/NamedImports.h"
#include "Files.h"
#include <string_view>

namespace telv::tool
{

NamedImports FindNamedImports(SubString text)
{
    static constexpr std::string_view import = "@import";
    static constexpr std::string_view path = "path";
    static constexpr std::string_view blanks = " \t\r\n";
    NamedImports found;
    const std::string_view all(text.begin(), static_cast<size_t>(text.size()));
    for (size_t i = all.find(import); i != all.npos; i = all.find(import, i))
    {
        i += import.size();
        const bool isDirectory = all.substr(i).starts_with(path);
        if (isDirectory)
            i += path.size();
        const size_t quote = all.find_first_not_of(blanks, i);
        if (quote == all.npos || all[quote] != '"')
            continue;
        const size_t end = all.find_first_of("\"\n", quote + 1);
        if (end == all.npos || all[end] != '"')
            continue;
        (isDirectory ? found.m_directories : found.m_files)
            .emplace_back(all.substr(quote + 1, end - quote - 1));
        i = end;
    }
    return found;
}

} // namespace telv::tool
