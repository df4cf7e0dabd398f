// SPDX-License-Identifier: MIT
// Writes a line for each number.
#include "Floor.h"

using namespace floors;

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    const int count = NumberBehind(MapFile(arguments.m_input), "@while(i < ");
    Output output(arguments.m_output);
    for (int i = 0; i < count; ++i)
    {
        output.Put("case ");
        output.PutNumber(i);
        output.Put(": return 1;\n");
    }
}
