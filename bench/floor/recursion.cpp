// SPDX-License-Identifier: MIT
// Counts down as often as the input asks for.
#include "Floor.h"

using namespace floors;

namespace
{

void CountDown(Output& output, int n)
{
    if (n <= 0)
        return;
    output.PutNumber(n);
    output.Put(' ');
    CountDown(output, n - 1);
}

} // namespace

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    std::string_view text = MapFile(arguments.m_input);
    Output output(arguments.m_output);
    Cut(text, "\n");
    while (!text.empty())
    {
        const int depth = NumberBehind(text, "f(");
        output.Put(Cut(text, "f("));
        CountDown(output, depth);
        Cut(text, ")");
        output.Put(Cut(text, "\n"));
        output.Put('\n');
    }
}
