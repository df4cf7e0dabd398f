// SPDX-License-Identifier: MIT
// Replaces calls of the two macros of the work "calls", whose bodies it knows, arguments that are
// calls themselves included.
#include "Floor.h"
#include <string>

using namespace floors;

namespace
{

using View = std::string_view;

/// [a b c c b a]
void PutInner(std::string& out, View a, View b, View c)
{
    for (const View part : {View("["), a, View(" "), b, View(" "), c, View(" "), c, View(" "), b,
                            View(" "), a, View("]")})
        out += part;
}

std::string PutCall(View& text);

/// An argument up to the comma or parenthesis behind it, which is passed over.
std::string PutArgument(View& text)
{
    std::string result;
    while (text.front() == ' ')
        text.remove_prefix(1);
    if (text.substr(0, 6) == "inner(")
        result = PutCall(text);
    const size_t end = text.find_first_of(",)");
    result += text.substr(0, end);
    text.remove_prefix(end + 1);
    return result;
}

/// The call that `text` begins with.
std::string PutCall(View& text)
{
    const bool isInner = text.front() == 'i';
    Cut(text, "(");
    const std::string a = PutArgument(text);
    const std::string b = PutArgument(text);
    const std::string c = PutArgument(text);
    std::string result;
    PutInner(result, a, b, c);
    if (!isInner)
    {
        result += " + ";
        PutInner(result, c, b, a);
    }
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    View text = MapFile(arguments.m_input);
    Output output(arguments.m_output);
    Cut(text, "\n");
    Cut(text, "\n");
    while (!text.empty())
    {
        const size_t call = text.find("= ") + 2;
        output.Put(text.substr(0, call));
        text.remove_prefix(call);
        output.Put(PutCall(text));
        output.Put(Cut(text, "\n"));
        output.Put('\n');
    }
}
