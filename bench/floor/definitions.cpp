// SPDX-License-Identifier: MIT
// Reads the definitions at the beginning and replaces their names in the rest. The floor of the
// works "macros", "definitions" and "start".
#include "WordTable.h"
#include <algorithm>

using namespace floors;

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    std::string_view text = MapFile(arguments.m_input);
    Output output(arguments.m_output);
    size_t names = 0;
    for (std::string_view rest = text; rest.substr(0, 5) == "@def "; ++names)
        Cut(rest, "\n");
    WordTable table(names);
    ReadDefinitions(text, table);
    Replace(text, table, output);
}
