// SPDX-License-Identifier: MIT
// Reads the imported files' definitions and replaces their names in the rest of the main file.
#include "WordTable.h"
#include <string>

using namespace floors;

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    std::string_view text = MapFile(arguments.m_input);
    Output output(arguments.m_output);
    constexpr std::string_view begin = "@import \"";
    std::vector<std::string_view> files;
    while (text.substr(0, begin.size()) == begin)
    {
        text.remove_prefix(begin.size());
        const std::string path(Cut(text, "\"\n"));
        files.push_back(MapFile(path.c_str()));
    }
    WordTable table(files.size() * 10);
    for (std::string_view file : files)
        ReadDefinitions(file, table);
    Replace(text, table, output);
}
