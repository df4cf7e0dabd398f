// Expands a text with nothing but the installed headers and libraries; the exit status says whether
// the result is right.
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlUtils/xstring.h"

int main()
{
    const telv::xstring source("@def greet(who) = {Hello who!}\ngreet(world)\n");
    telv::FileScopeVarFrame frame;
    telv::xstring text;
    telv::MacroExpand(nullptr, &frame, source, 0, 0, text);
    return telv::strcmp(text, "Hello world!\n") == 0 ? 0 : 1;
}
