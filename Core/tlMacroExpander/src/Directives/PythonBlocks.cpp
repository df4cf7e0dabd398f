// @runpython: a block of Python statements, expanded before it runs.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/UsePython.h"

namespace telv
{

namespace
{

/// What tracebacks call the file that holds `pos`.
xstring SourceName(const char* pos)
{
    const RunState* const run = RunState::Current();
    const RunState::KnownText* const text =
        run == nullptr ? nullptr : run->FindText(run->ResolvePosition(pos));
    return text == nullptr ? xstring("<runpython>") : xstring(text->m_name);
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
    ssize_t indent = 0;
    const LevelText block = CutBlock(indent);
    xstring code;
    try
    {
        ExpandToString(block, indent, code);
        if (!code.empty())
        {
            LoadPython(word);
            RunPython(SourceName(errorPos), AlignedCode(code), errorPos);
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
