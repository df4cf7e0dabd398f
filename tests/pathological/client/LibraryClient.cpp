// SPDX-License-Identifier: MIT
// An application without care of its own: expands standard input with the library, on the main
// thread, whatever its stack is. Exit status 1 and the description for an error in the text.
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"

#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>

int main()
{
    using namespace telv;
    const std::string source{std::istreambuf_iterator<char>(std::cin), {}};
    const SubString text(source.data(), source.data() + source.size());
    try
    {
        FileScopeVarFrame frame;
        xstring output;
        MacroExpand(nullptr, &frame, text, 0, 0, output);
        std::fwrite(output.begin(), 1, static_cast<size_t>(output.size()), stdout);
        return 0;
    }
    catch (const LexScannerException& e)
    {
        const bool isInside = text.begin() <= e.m_pos && e.m_pos <= text.end();
        std::fprintf(stderr, "%s at %ld", e.what(), isInside ? e.m_pos - text.begin() : -1L);
        return 1;
    }
}
