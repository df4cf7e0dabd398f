// The main loop and the write position.
//
// Most of a text is tokens that mean nothing here. Each is written, with the blanks before it, as a
// piece of its own; only what a directive or a variable consumes is treated otherwise.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Directives/DirectiveTable.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"

namespace telv
{

namespace
{

constexpr long s_tabWidth = 4;

} // namespace

MacroExpander::MacroExpander(ImportHandler* importHandler, VarFrame* vf, SubString str,
                             ssize_t srcIndent, ssize_t dstIndent, ExpandedOutput& output)
    : m_importHandler(importHandler), m_vf(vf), m_output(output), m_srcIndent(srcIndent),
      m_dstIndent(dstIndent), m_origStr(str), m_str(str), m_startDirectivePos(nullptr),
      m_endDirectivePos(nullptr), m_writePos(str.begin())
{
    TELV_ASSERT(vf);
    TELV_ASSERT(srcIndent >= 0);
    TELV_ASSERT(dstIndent >= 0);
}

void MacroExpander::Expand()
{
    if (!TryExpand())
        HeldError::Throw(CurrentRun());
}

bool MacroExpander::TryExpand()
{
    ExpansionRun* const run = ExpansionRun::Current();
    if (run == nullptr)
    {
        ExpandWithOwnRun();
        return true;
    }
    if (m_str.empty())
        return true;
    ExpansionLevel level(*run, *this);
    if (!level.IsCalledByApplication())
        return TryExpandText(*run); // catching at every level would make deep errors slow
    ExpandForApplication(*run);
    return true;
}

[[gnu::noinline]] void MacroExpander::ExpandForApplication(ExpansionRun& run)
{
    try
    {
        if (!TryExpandText(run))
            HeldError::Throw(run);
    }
    catch (LexScannerException& e)
    {
        ExpansionLevel::MoveOutOfDeadTexts(e);
        throw;
    }
}

[[gnu::noinline]] void MacroExpander::ExpandWithOwnRun()
{
    ExpansionRun run;
    ExpansionRunScope scope(run);
    Expand();
}

bool MacroExpander::TryExpandText(const ExpansionRun& run)
{
    for (;;)
    {
        PassOverLineStarts();
        const LSToken token = LsScanToken(m_str, true);
        if (token.m_type == TOKEN_END)
            break;
        m_startDirectivePos = token.m_str.begin();
        m_endDirectivePos = token.m_str.end();
        ProcessToken(token);
        if (HeldError::Get(run) != nullptr) [[unlikely]]
            return false;
        AdvanceWritePos(m_str.begin(), true);
    }
    AdvanceWritePos(m_str.begin(), true);
    return true;
}

/// Passes over blanks and line feeds. Text up to a line feed is written; the indentation after it
/// is discarded as far as it belongs to the source.
void MacroExpander::PassOverLineStarts()
{
    while (m_str)
    {
        const char c = *m_str.m_p1;
        if (c != ' ' && c != '\t' && c != '\n')
            return;
        ++m_str.m_p1;
        if (c != '\n')
            continue;
        AdvanceWritePos(m_str.begin(), true);
        ScanIndentation(m_str, m_srcIndent, s_tabWidth);
        AdvanceWritePos(m_str.begin(), false);
    }
}

void MacroExpander::ProcessToken(const LSToken& token)
{
    switch (token.m_type)
    {
    case TOKEN_IDENTIFIER:
        if (LSVariable* var = FindVariable(token.m_str))
        {
            AdvanceWritePos(token.m_str.begin(), true);
            TryInvokeVariable(var); // the main loop looks for the error
        }
        break;
    case TOKEN_DOUBLE_QUOTED_STRING:
        ProcessQuotedString(token);
        break;
    case TOKEN_PREPROC_COMMENT:
        ScanOverWhiteSpaceAfterDirective();
        break;
    case TOKEN_AT:
        ProcessDirective();
        break;
    default:
        break;
    }
}

/// Replaces the dollar macros in a string literal.
void MacroExpander::ProcessQuotedString(const LSToken& token)
{
    const FileScopeVarFrame* const file = m_vf->m_fileScopeFrame;
    if (file == nullptr || !MayHoldDollarMacro(token.m_str))
        return;
    xstring text(token.m_str);
    try
    {
        if (!file->ApplyDollarMacros(text))
            return;
    }
    catch (LexScannerException& e)
    {
        e.m_pos = token.m_str.begin();
        throw;
    }
    AdvanceWritePos(token.m_str.begin(), true);
    WriteCalculatedSubString(text);
    AdvanceWritePos(m_str.begin(), false);
}

void MacroExpander::ProcessDirective()
{
    const LSToken token = LsScanToken(m_str, false);
    const Directive* const directive = FindDirective(token);
    if (directive != nullptr)
    {
        if (directive->m_flush)
            AdvanceWritePos(m_startDirectivePos, true);
        directive->m_process(*this, token);
    }
    else if (token.m_type == TOKEN_IDENTIFIER)
        ProcessUnknownDirective(token);
    else if (token.m_type == TOKEN_AT)
        ProcessPastedTokens();
}

/// A string variable may bear the name of a directive, with its `@`.
void MacroExpander::ProcessUnknownDirective(const LSToken& name)
{
    xstring variableName("@");
    variableName += name.m_str;
    const LSVariable* const var = m_vf->Find2(variableName);
    if (var == nullptr)
        return;
    AdvanceWritePos(m_startDirectivePos, true);
    TELV_ASSERT(var->GetType() == LSV_STRING);
    WriteCalculatedSubString(static_cast<const LSValueVariable*>(var)->m_value);
    AdvanceWritePos(m_str.begin(), false);
}

/// `@@` stands for nothing: it separates or joins what is around it.
void MacroExpander::ProcessPastedTokens()
{
    AdvanceWritePos(m_startDirectivePos, true);
    AdvanceWritePos(m_str.begin(), false);
}

void MacroExpander::AddVariable(LSVariable* v)
{
    m_vf->m_localVariables.Add(v);
}

LSVariable* MacroExpander::FindVariable(SubString name)
{
    TELV_ASSERT(!name.empty());
    TELV_ASSERT(name.begin() <= name.end());
    return m_vf->Find(name, m_str.begin());
}

ssize_t MacroExpander::GetOutputPos() const
{
    return m_output.m_columnPos >= 0 ? m_output.m_columnPos : m_dstIndent;
}

void MacroExpander::AdvanceWritePos(const xchar* pos, bool write)
{
    if (write && m_writePos != pos)
        WriteSubStringFromSourceFile(SubString(m_writePos, pos));
    m_writePos = pos;
}

void MacroExpander::WriteSubStringFromSourceFile(SubString s)
{
    m_output.WriteSubStringFromSourceFile(s, m_dstIndent);
    CheckOutputSize();
}

void MacroExpander::WriteCalculatedSubString(SubString s)
{
    WriteCalculatedSubString(s, DirectiveRange());
}

void MacroExpander::WriteCalculatedSubString(SubString s, SubString src)
{
    m_output.WriteCalculatedSubString(s, src, m_dstIndent);
    CheckOutputSize();
}

/// Every piece that is written passes here: what it views is noted where that matters.
void MacroExpander::CheckOutputSize() const
{
    ExpansionRun* const run = ExpansionRun::Current();
    if (run == nullptr)
        return;
    if (m_output.m_size > run->m_limits.m_maxOutput) [[unlikely]]
        ExpansionLevel::ThrowOutputTooLarge(m_startDirectivePos == nullptr ? m_origStr.begin()
                                                                           : m_startDirectivePos);
    if (run->m_mappedOutput == &m_output) [[unlikely]]
        ExpansionLevel::NotePiece();
}

void MacroExpander::ScanOverWhiteSpaceAfterDirective()
{
    const char* lineFeed = nullptr;
    for (; m_str.m_p1 != m_str.m_p2; ++m_str.m_p1)
    {
        const char c = *m_str.m_p1;
        if (c == '\n')
            lineFeed = m_str.m_p1;
        else if (c != ' ' && c != '\t')
            break;
    }
    if (lineFeed != nullptr)
        m_str.m_p1 = lineFeed + 1;
    ScanIndentation(m_str, m_srcIndent, s_tabWidth);
    AdvanceWritePos(m_str.begin(), false);
}

void MacroExpander::ExpandLastBlock(SubString block, ssize_t indent, ssize_t dstIndent)
{
    VarFrame frame(m_vf);
    if (MacroExpander(nullptr, &frame, block, indent, dstIndent, m_output).TryExpand())
        return;
    ExpansionRun& run = CurrentRun();
    if (!ExpansionLevel::IsOf(run, *this))
        HeldError::Throw(run);
}

void MacroExpander::ExpandBlock(SubString block, ssize_t indent, ssize_t dstIndent)
{
    VarFrame frame(m_vf);
    MacroExpand(nullptr, &frame, block, indent, dstIndent, m_output);
}

void MacroExpander::ExpandToString(SubString text, ssize_t srcIndent, xstring& output)
{
    VarFrame frame(m_vf);
    MacroExpand(nullptr, &frame, text, srcIndent, 0, output);
}

} // namespace telv
