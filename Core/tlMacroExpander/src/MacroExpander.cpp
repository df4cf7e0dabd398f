// SPDX-License-Identifier: MIT
// What a token does, and the write position.
//
// Most of a text is tokens that mean nothing here. Each is written, with the blanks before it, as a
// piece of its own; only what a directive or a variable consumes is treated otherwise.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Directives/DirectiveTable.h"
#include "tlMacroExpander/src/Directives/NestedText.h"
#include "tlMacroExpander/src/Directives/Watching.h"
#include "tlMacroExpander/src/Output/UnrecordedOutput.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/MemoryLimit.h"
#include "tlMacroExpander/src/Run/ObservedSpan.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"
#include "tlMacroExpander/src/Values/Words.h"
#include "tlUtils/TabWidth.h"
#include <optional>

namespace telv
{

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

[[gnu::always_inline]] inline void MacroExpander::ExpandIn(ExpansionRun& run, const LevelText& text,
                                                           EPieces pieces)
{
    ExpansionLevel level(RunState::Of(run), run.m_limits, text, m_startDirectivePos, pieces);
    try
    {
        if (text.m_isOfApplication)
            ExpandForApplication(level);
        else
            ExpandTokens(level); // catching every error at every level would make deep ones slow
    }
    catch (const MemoryLimitReached&)
    {
        ThrowOutOfMemory(run, level.Position());
    }
    level.Finish();
}

[[gnu::always_inline]] inline void MacroExpander::ExpandText(const LevelText& text, EPieces pieces)
{
    if (m_str.empty())
        return;
    if (ExpansionRun* const run = RunState::CurrentRun())
        ExpandIn(*run, text, pieces);
    else
        ExpandWithOwnRun(text, pieces);
}

void MacroExpander::Expand()
{
    const ExpansionRun* const run = RunState::CurrentRun();
    ExpandText(LevelText{m_str, nullptr, /*m_isOfApplication=*/true},
               WantedPieces(run == nullptr || run->m_recordPieces));
}

void MacroExpander::ExpandNested(const LevelText& text, bool isRecorded)
{
    ExpandText(text, WantedPieces(isRecorded));
}

[[gnu::noinline]] void MacroExpander::ExpandWithOwnRun(const LevelText& text, EPieces pieces)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    ExpandIn(run, text, pieces);
}

void MacroExpander::ExpandWithinMemory(ExpansionLevel& level)
{
    const ExpansionRun& run = *RunState::CurrentRun();
    const MemoryLimitScope limit(run);
    try
    {
        if (limit.IsPassed())
            throw MemoryLimitReached();
        ExpandTokens(level);
    }
    catch (const MemoryLimitReached&)
    {
        ThrowOutOfMemory(run, level.Position());
    }
}

[[gnu::noinline]] void MacroExpander::ExpandForApplication(ExpansionLevel& level)
{
    level.State().ForgetErrors();
    try
    {
        ExpandWithinMemory(level);
    }
    catch (LexScannerException& e)
    {
        ExpansionLevel::MoveOutOfDeadTexts(e);
        throw;
    }
}

/// Where nothing is recorded, only the bytes of the output matter, and what means nothing can be
/// passed over and written in long stretches.
void MacroExpander::ExpandTokens(ExpansionLevel& level)
{
    if (level.Scanned() != nullptr && !level.IsRecorded() && level.AllowsFastPaths() &&
        level.Scanned()->SuitsRun())
        ExpandScanned(level);
    else
        ExpandUnscanned(level);
}

void MacroExpander::ProcessToken(const LSToken& token)
{
    switch (token.m_type)
    {
    case TOKEN_IDENTIFIER:
        if (LSVariable* var = FindVariable(token.m_str))
        {
            AdvanceWritePos(token.m_str.begin(), /*write=*/true);
            InvokeVariable(var);
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
    AdvanceWritePos(token.m_str.begin(), /*write=*/true);
    WriteCalculatedSubString(text);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
}

void MacroExpander::ProcessDirective()
{
    const LSToken token = NextToken();
    const Directive* const directive = FindDirective(token);
    if (directive != nullptr)
    {
        if (directive->m_flush)
            AdvanceWritePos(m_startDirectivePos, /*write=*/true);
        directive->m_process(*this, token);
    }
    else if (token.m_type == TOKEN_IDENTIFIER)
        ProcessUnknownDirective(token);
    else if (token.m_type == TOKEN_AT)
        ProcessPastedTokens();
}

/// A string variable may bear the name of a directive, with its `@`. Not inlined: its strings would
/// take stack from all directives that nest.
[[gnu::noinline]] void MacroExpander::ProcessUnknownDirective(const LSToken& name)
{
    xstring variableName("@");
    variableName += name.m_str;
    const LSVariable* const var = m_vf->Find2(variableName);
    if (var == nullptr)
    {
        if (Warns(WARN_UNKNOWN_DIRECTIVE))
            WarnOfUnknownDirective(*this, name.m_str);
        return;
    }
    AdvanceWritePos(m_startDirectivePos, /*write=*/true);
    TELV_ASSERT(var->GetType() == LSV_STRING);
    std::optional<ObservedSpan> span;
    if (ExpansionObserver* const observer = RunState::CurrentObserver())
    {
        const SubString whole(m_startDirectivePos, name.m_str.end());
        observer->InvocationBegins({*var, whole, whole, {}});
        span.emplace(*observer, &ExpansionObserver::InvocationEnds);
    }
    WriteCalculatedSubString(static_cast<const LSValueVariable*>(var)->m_value);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
}

/// `@@` stands for nothing: it separates or joins what is around it.
void MacroExpander::ProcessPastedTokens()
{
    AdvanceWritePos(m_startDirectivePos, /*write=*/true);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
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

ExpansionLevel* MacroExpander::OwnLevel() const
{
    ExpansionLevel* const level = ExpansionLevel::Current();
    return level != nullptr && level->IsOf(m_startDirectivePos) ? level : nullptr;
}

void MacroExpander::CountStep() const
{
    if (ExpansionLevel* const level = ExpansionLevel::Current())
        level->CountStep(m_startDirectivePos);
}

void MacroExpander::WriteSubStringFromSourceFile(SubString s)
{
    ExpansionLevel* const level = OwnLevel();
    if (level != nullptr && !level->IsRecorded())
        WriteUnrecorded(m_output, s, m_dstIndent);
    else if (level != nullptr && level->IsObserved()) [[unlikely]]
        WriteObserved(*level, s, nullptr);
    else
        m_output.WriteSubStringFromSourceFile(s, m_dstIndent);
    CheckOutput(level);
}

void MacroExpander::WriteCalculatedSubString(SubString s)
{
    WriteCalculatedSubString(s, DirectiveRange());
}

void MacroExpander::WriteCalculatedSubString(SubString s, SubString src)
{
    ExpansionLevel* const level = OwnLevel();
    if (level != nullptr && !level->IsRecorded())
        WriteUnrecorded(m_output, s, m_dstIndent);
    else if (level != nullptr && level->IsObserved()) [[unlikely]]
        WriteObserved(*level, s, &src);
    else
        m_output.WriteCalculatedSubString(s, src, m_dstIndent);
    CheckOutput(level);
}

/// Every piece that is written passes here: what it views is noted where that matters.
void MacroExpander::CheckOutput(ExpansionLevel* level) const
{
    if (level == nullptr)
        return;
    if (m_output.m_size > level->Limits().m_maxOutput) [[unlikely]]
        ExpansionLevel::ThrowOutputTooLarge(level->Position());
    if (level->KeepsPieces() && RunState::CurrentRun()->m_mappedOutput != nullptr)
        level->NotePiece();
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
    AdvanceWritePos(m_str.begin(), /*write=*/false);
}

void MacroExpander::ExpandHere(VarFrame& frame, const LevelText& text, ssize_t srcIndent,
                               ssize_t dstIndent)
{
    const ExpansionLevel* const level = OwnLevel();
    MacroExpander expander(nullptr, &frame, text.m_text, srcIndent, dstIndent, m_output);
    expander.ExpandText(text,
                        level == nullptr ? WantedPieces(/*isRecorded=*/true) : level->Pieces());
}

void MacroExpander::ExpandBlock(const LevelText& block, ssize_t indent, ssize_t dstIndent)
{
    VarFrame frame(m_vf);
    ExpandHere(frame, block, indent, dstIndent);
}

void MacroExpander::ExpandToString(const LevelText& text, ssize_t srcIndent, xstring& output) const
{
    ExpansionLevel* const level = OwnLevel();
    SubString word;
    if (level != nullptr && !level->IsObserved() && FindWord(*level, text, *m_vf, word))
    {
        xstring(word).swap(output);
        return;
    }
    VarFrame frame(m_vf);
    ExpandIntoString(frame, text, srcIndent, output);
}

/// Whether it is asked where the characters of texts that are made come from: for the map.
bool MacroExpander::NotesCopies() const
{
    const ExpansionLevel* const level = OwnLevel();
    return level != nullptr && level->KeepsPieces() &&
           RunState::CurrentRun()->m_mappedOutput != nullptr;
}

/// The text that the current directive makes of `section`.
std::shared_ptr<TemporaryText> MacroExpander::MakeText(const LevelText& section)
{
    if (NotesCopies())
        return MakeNotedText(section);
    xstring text;
    ExpandToString(section, 0, text);
    return MakeHeldShared<TemporaryText>(text, DirectiveRange());
}

/// The same, when it matters where its characters come from.
[[gnu::noinline]] std::shared_ptr<TemporaryText>
MacroExpander::MakeNotedText(const LevelText& section)
{
    xstring text;
    OutputPieces pieces;
    VarFrame frame(m_vf);
    ExpandIntoString(frame, section, 0, text, &pieces);
    return MakeHeldShared<TemporaryText>(text, DirectiveRange(), &pieces);
}

} // namespace telv
