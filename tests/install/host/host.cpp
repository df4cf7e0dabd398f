// SPDX-License-Identifier: MIT
// Expands a text with nothing but what the package gives; the exit status says whether the result
// is right. Also catches an error of the library by its type, which crosses from one file to
// another.
#include "table.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlUtils/xstring.h"
#include <cstdio>
#include <cstring>

namespace
{

bool ExpandsText()
{
    const telv::xstring source("@def greet(who) = {Hello who!}\ngreet(world)\n");
    telv::FileScopeVarFrame frame;
    telv::xstring text;
    telv::MacroExpand(nullptr, &frame, source, 0, 0, text);
    return telv::strcmp(text, "Hello world!\n") == 0;
}

bool ThrowsError()
try
{
    const telv::xstring source("@fail(stop)");
    telv::FileScopeVarFrame frame;
    telv::xstring text;
    telv::MacroExpand(nullptr, &frame, source, 0, 0, text);
    return false;
}
catch (const telv::LexScannerException& e)
{
    return e.m_pos != nullptr;
}

bool HasTable()
{
    return rowCount == 2 && std::strcmp(rows[0], "alpha") == 0 &&
           std::strcmp(words, "two words, and more") == 0;
}

} // namespace

int main()
{
    const bool isRight = ExpandsText() && ThrowsError() && HasTable();
    std::puts(isRight ? "host: right" : "host: wrong");
    return isRight ? 0 : 1;
}
