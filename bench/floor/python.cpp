// SPDX-License-Identifier: MIT
// The values of n * n % 97.
#include "Floor.h"

using namespace floors;

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    const int count = NumberBehind(MapFile(arguments.m_input), "@while(i < ");
    Output output(arguments.m_output);
    for (long long i = 0; i < count; ++i)
    {
        output.PutNumber(i * i % 97);
        output.Put('\n');
    }
}
