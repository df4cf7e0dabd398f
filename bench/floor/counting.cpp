// SPDX-License-Identifier: MIT
// Counts; every third number is written divided by three.
#include "Floor.h"

using namespace floors;

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    const int count = NumberBehind(MapFile(arguments.m_input), "@while(i < ");
    Output output(arguments.m_output);
    for (int i = 0; i < count; ++i)
    {
        if (i % 3 == 0)
        {
            output.Put("third ");
            output.PutNumber(i / 3);
        }
        else
        {
            output.PutNumber(i);
        }
        output.Put('\n');
    }
}
