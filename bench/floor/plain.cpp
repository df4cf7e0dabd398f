// SPDX-License-Identifier: MIT
// Copies a text while it looks at every byte for the places where something could begin: a word, a
// quote, a comment or an '@'. No word is defined, so none is looked up.
#include "Floor.h"

using namespace floors;

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    const std::string_view text = MapFile(arguments.m_input);
    Output output(arguments.m_output);
    const char* const end = text.data() + text.size();
    const char* pending = text.data();
    for (const char* p = pending; p != end;)
    {
        if (IsOfWord(*p))
        {
            p = EndOfWord(p, end);
            continue;
        }
        if (*p == '@')
            Fail("no directives here");
        if (*p == '\n')
        {
            output.Put({pending, static_cast<size_t>(p - pending)});
            pending = p;
        }
        ++p;
    }
    output.Put({pending, static_cast<size_t>(end - pending)});
}
