// SPDX-License-Identifier: MIT
// A plug-in as an application would load it: it has its own idea of every inline function and is
// linked with the library only. BoundaryTest.cpp loads it.
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"

using namespace telv;

namespace
{

/// Throws from inside an expansion of the library.
class ThrowingHandler : public ImportHandler
{
public:
    bool HandleImport(VarFrame*, const xstring& path, const char* pos) override
    {
        throw LexScannerException(xstring("no ") + path, pos);
    }
};

} // namespace

extern "C"
{

    [[gnu::visibility("default")]] LSVariable* MakeVariable()
    {
        return new LSVar("name", "value");
    }

    [[gnu::visibility("default")]] void DeleteVariable(LSVariable* variable)
    {
        delete variable;
    }

    [[gnu::visibility("default")]] void AppendText(xstring& text)
    {
        for (int i = 0; i < 1000; ++i)
            text += " and more";
    }

    [[gnu::visibility("default")]] void ThrowThroughTheLibrary()
    {
        ThrowingHandler handler;
        FileScopeVarFrame frame;
        const xstring source("@import \"file\"\n");
        xstring text;
        MacroExpand(&handler, &frame, source, 0, 0, text);
    }

    /// 1 for an error of the text, 2 for another of the library's, 0 for none.
    [[gnu::visibility("default")]] int KindOfError(const char* source)
    try
    {
        FileScopeVarFrame frame;
        xstring text;
        MacroExpand(nullptr, &frame, source, 0, 0, text);
        return 0;
    }
    catch (const LexScannerException&)
    {
        return 1;
    }
    catch (const IException&)
    {
        return 2;
    }
}
