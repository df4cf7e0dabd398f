// SPDX-License-Identifier: MIT
// Writes a line for each element of the list.
#include "Floor.h"

using namespace floors;

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    const std::string_view text = MapFile(arguments.m_input);
    Output output(arguments.m_output);
    const std::string_view list = Behind(text, "[");
    const char* p = list.data();
    while (true)
    {
        const char* const element = p;
        while (*p != ',' && *p != ']')
            ++p;
        output.Put("case ");
        output.Put({element, static_cast<size_t>(p - element)});
        output.Put(": return 1;\n");
        if (*p == ']')
            break;
        p += 2;
    }
}
