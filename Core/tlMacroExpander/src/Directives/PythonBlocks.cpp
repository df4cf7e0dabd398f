// SPDX-License-Identifier: MIT
// @runpython: a block of Python statements, expanded before it runs.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/UsePythonInside.h"

namespace telv
{

namespace
{

/// What tracebacks call a block, and the lines that stand before it there.
struct BlockPlace
{
    xstring m_name;
    ssize_t m_linesBefore = 0;
};

BlockPlace PlaceOf(SubString block)
{
    const RunState* const run = RunState::Current();
    SubString origin;
    if (run != nullptr && run->FindOrigin(block.begin(), origin))
        return {"<expanded text>"};
    const RunState::KnownText* const text = run == nullptr ? nullptr : run->FindText(block.begin());
    if (text == nullptr)
        return {"<runpython>"};
    return {xstring(text->m_name), GetLineNumber(text->m_text, block.begin()) - 1};
}

/// The code with its lines moved to column 0, as Python wants them.
xstring AlignedCode(SubString code)
{
    StringStream os(4096);
    WriteSubStringWithAdjustedIndent(os, code, 0);
    os << '\n';
    return os.GetString();
}

} // namespace

void MacroExpander::ProcessRunPythonDirective()
{
    const char* const errorPos = m_str.begin();
    const char* const word = errorPos - SubString("runpython").size();
    CheckPythonAllowed(word);
    const TextBlock block = CutBlock();
    xstring code;
    try
    {
        ExpandToString(block.m_text, block.m_indent, code);
        if (!code.empty())
        {
            LoadPython(word);
            const BlockPlace place = PlaceOf(block.m_text.m_text);
            RunPythonBehind(place.m_name, place.m_linesBefore, AlignedCode(code), errorPos);
        }
    }
    catch (LexScannerException& e)
    {
        AddErrorContext(e, {"\n    in @runpython()\n", code});
        throw;
    }
    ScanOverWhiteSpaceAfterDirective();
}

} // namespace telv
