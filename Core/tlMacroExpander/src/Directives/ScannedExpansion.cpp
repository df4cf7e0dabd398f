// SPDX-License-Identifier: MIT
// Expanding a text of which it is known where the tokens stand that can matter.
//
// The effect is that of reading it token by token. Nothing is recorded here, so what means nothing
// stays pending until something is written before it or a directive needs to find it written.
#include "tlMacroExpander/src/Frames/FrameTree.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Output/UnrecordedOutput.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/PlainStretch.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"
#include "tlMacroExpander/src/Values/OwningVariables.h"
#include "tlMacroExpander/src/Values/Words.h"
#include "tlUtils/TabWidth.h"

namespace telv
{

namespace
{

/// Whether no item of the text can matter in a frame of `names`, line feeds apart.
bool IsInert(ScannedText& scanned, uint32 first, const char* end, NameTable& names)
{
    scanned.ResolveNames(names);
    const ptrdiff_t size = end - scanned.Begin();
    for (const ScanItem* item = scanned.Items() + first; item->m_begin < size; ++item)
    {
        const bool isInert = item->m_kind == ITEM_LINE_FEED ||
                             (item->m_kind == ITEM_NAME && !names.MayBeBound(*item->m_name));
        if (!isInert)
            return false;
    }
    return true;
}

} // namespace

void MacroExpander::ExpandScanned(ExpansionLevel& level) // NOLINT(readability-function-size)
{
    ScannedText& scanned = *level.Scanned();
    NameTable& names = FrameTree::Names(*m_vf);
    scanned.ResolveNames(names);
    const char* const base = scanned.Begin();
    uint32 index = level.FirstItem();
    uint32 resumed = static_cast<uint32>(m_str.begin() - base);
    for (;;)
    {
        ScanItem& item = scanned.Items()[index];
        const char* const begin = base + item.m_begin;
        if (begin >= m_str.end())
            break;
        if (item.m_kind == ITEM_NAME)
        {
            LSVariable* var = nullptr;
            if (names.MayBeBound(*item.m_name))
            {
                m_startDirectivePos = begin;
                m_endDirectivePos = m_str.m_p1 = base + item.m_end;
                var = names.Find(m_vf, *item.m_name, m_str.begin());
            }
            if (var == nullptr)
            {
                ++index;
                continue;
            }
            Flush(begin);
            if (WriteFollowed(level, *var))
            {
                resumed = item.m_end;
                ++index;
                continue;
            }
            level.Enter(&item);
            InvokeVariable(var);
        }
        else if (item.m_kind == ITEM_LINE_FEED)
        {
            ++index;
            if (m_srcIndent > 0 && item.m_breaker <= resumed)
                EndLine(begin + 1);
            continue;
        }
        else if (item.m_kind == ITEM_END)
        {
            m_str.m_p1 = begin;
            level.Enter(nullptr);
            return ExpandUnscanned(level);
        }
        else if (!FollowPlan(level, item, base + resumed))
            ExpandItem(level, item, base + resumed);
        scanned.ResolveNames(names); // it may have been expanded in another tree of frames
        if (!MoveToNextItem(scanned, index, resumed))
        {
            level.Enter(nullptr);
            return ExpandUnscanned(level);
        }
    }
    m_str.m_p1 = m_str.m_p2;
    AdvanceWritePos(m_str.begin(), /*write=*/true);
}

/// Writes what the name that has been read comes to, if that can be said at once; false, with
/// nothing done, if not. Where nothing is recorded or limited.
bool MacroExpander::WriteFollowed(ExpansionLevel& level, const LSVariable& var)
{
    SubString found;
    if (!FollowVariable(level, var, *m_vf, found))
        return false;
    m_writePos = m_str.begin();
    WriteUnrecorded(m_output, found, AsOwningMacro(var) != nullptr ? GetOutputPos() : m_dstIndent);
    return true;
}

/// Writes what is pending before `pos`; where nothing is recorded or limited.
void MacroExpander::Flush(const char* pos)
{
    if (m_writePos != pos)
        WriteUnrecorded(m_output, SubString(m_writePos, pos), m_dstIndent);
    m_writePos = pos;
}

/// A line feed before `start`: what is pending is written, and the indentation behind it discarded.
void MacroExpander::EndLine(const char* start)
{
    Flush(start);
    SubString rest(start, m_str.end());
    ScanIndentation(rest, m_srcIndent, s_tabWidth);
    AdvanceWritePos(rest.begin(), /*write=*/false);
}

/// Does what a directive, a comment or a string asks for. `resumed`: where the text was taken up
/// after the item before.
void MacroExpander::ExpandItem(ExpansionLevel& level, ScanItem& item, const char* resumed)
{
    const char* const base = level.Scanned()->Begin();
    m_startDirectivePos = base + item.m_begin;
    m_endDirectivePos = m_str.m_p1 = base + item.m_end;
    level.Enter(&item);
    if (item.m_kind == ITEM_STRING)
        return ProcessQuotedString(LSToken(TOKEN_DOUBLE_QUOTED_STRING, DirectiveRange()));
    const char* const pending = StartOfBlanks(resumed, m_startDirectivePos);
    if (pending > m_writePos)
        AdvanceWritePos(pending, /*write=*/true);
    if (item.m_kind == ITEM_COMMENT)
        ScanOverWhiteSpaceAfterDirective();
    else
        ProcessDirective();
}

/// Does what a directive asks for, if that has been read before; false, with nothing done, if not.
bool MacroExpander::FollowPlan(ExpansionLevel& level, ScanItem& item, const char* resumed)
{
    if (item.m_kind != ITEM_DIRECTIVE)
        return false;
    ScannedText& scanned = *level.Scanned();
    const char* const base = scanned.Begin();
    const Plan* const plan = PlanOf(scanned, item, SubString(base + item.m_end, m_str.end()));
    if (plan == nullptr || plan->m_limit != m_str.end())
        return false;
    m_startDirectivePos = base + item.m_begin;
    m_endDirectivePos = base + item.m_end;
    const char* const pending =
        plan->m_keepsBlanks ? m_startDirectivePos : StartOfBlanks(resumed, m_startDirectivePos);
    if (pending > m_writePos)
        Flush(pending);
    level.Enter(nullptr);
    m_str.m_p1 = plan->m_behind;
    plan->m_action(*this);
    return true;
}

/// Finds the item where the text goes on behind the one at `index`; false when that is not known.
bool MacroExpander::MoveToNextItem(ScannedText& scanned, uint32& index, uint32& resumed)
{
    resumed = static_cast<uint32>(m_str.begin() - scanned.Begin());
    ScanItem& item = scanned.Items()[index];
    if (item.m_resumed != resumed)
    {
        item.m_resumedIndex = scanned.IndexAt(m_str.begin(), index);
        item.m_resumed = resumed;
    }
    index = item.m_resumedIndex;
    return index != ScannedText::s_unknown;
}

/// Writes a text in which nothing can matter, as expanding it in a child of `frame` would; false,
/// with nothing done, when something might.
bool MacroExpander::WriteInertText(const LevelText& text, VarFrame& frame, ssize_t srcIndent)
{
    constexpr ssize_t few = 64;
    ExpansionLevel* const level = OwnLevel();
    const SubString s = text.m_text;
    if (level == nullptr || level->IsRecorded() || !level->AllowsFastPaths() || srcIndent != 0 ||
        !level->HasStepLeft() || frame.m_fileScopeFrame == nullptr)
        return false;
    if (s.empty())
        return true;
    NameTable& names = FrameTree::Names(frame);
    if (text.m_scanned != nullptr && text.m_scanned->SuitsRun())
    {
        if (!IsInert(*text.m_scanned, text.m_first, s.end(), names))
            return false;
    }
    else
    {
        LSVariable* var = nullptr;
        const auto mayMatter = [&](SubString name) { return MayMatter(names, frame, name, var); };
        if (s.size() > few || SkipPlainStretch(s, names.BindsAny(), mayMatter) != s.end())
            return false;
    }
    level->CountStep(s.begin());
    WriteUnrecorded(m_output, s, GetOutputPos());
    return true;
}

} // namespace telv
