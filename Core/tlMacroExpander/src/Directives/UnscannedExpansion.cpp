// SPDX-License-Identifier: MIT
// Expanding a text of which nothing is known: token by token, or, where only the bytes of the
// output matter, over stretches in which no token can mean anything.
#include "tlMacroExpander/src/Directives/Watching.h"
#include "tlMacroExpander/src/Frames/FrameTree.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/PlainStretch.h"
#include "tlUtils/TabWidth.h"
#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>

namespace telv
{

namespace
{

bool IsLineStart(char c)
{
    return c == ' ' || c == '\t' || c == '\n';
}

/// Behind the line comment that the blanks from `blanks` to `end` begin in, or `blanks` when they
/// begin behind a token that is none. `resumed`: where the tokens before them begin.
///
/// It makes a difference only before a carriage return or the like, which a comment takes up and
/// which otherwise hides the line feed behind it.
const char* BehindLineComment(const char* resumed, const char* blanks, const char* end)
{
    if (std::find_if_not(blanks, end, IsLineStart) >= std::find(blanks, end, '\n'))
        return blanks;
    const std::reverse_iterator before(blanks);
    const char* const line = std::find(before, std::reverse_iterator(resumed), '\n').base();
    if (std::string_view(line, static_cast<size_t>(blanks - line)).find("//") ==
        std::string_view::npos)
        return blanks;
    SubString rest(resumed, end);
    while (rest.begin() < blanks)
        LsScanToken(rest, /*returnComments=*/true);
    return rest.begin();
}

} // namespace

void MacroExpander::ExpandUnscanned(ExpansionLevel& level)
{
    if (FastPaths::IsOn(FastPaths::PLAIN_STRETCHES) && !level.IsRecorded() && m_srcIndent == 0 &&
        level.AllowsFastPaths())
        ExpandInStretches(level);
    else if (level.IsObserved())
        ExpandObserved(level);
    else
        ExpandTokenByToken</*isObserved=*/false>();
}

template <bool isObserved>
void MacroExpander::ExpandTokenByToken()
{
    const bool isWatched = Warns(s_watchingWarnings);
    std::optional<IndentationWatch> indentation;
    if (isWatched)
        indentation.emplace(*this);
    for (;;)
    {
        PassOverLineStarts();
        const LSToken token = LsScanToken(m_str, /*returnComments=*/true);
        if (token.m_type == TOKEN_END)
            break;
        m_startDirectivePos = token.m_str.begin();
        m_endDirectivePos = token.m_str.end();
        if (isWatched)
            WatchToken(*this, token);
        if constexpr (isObserved)
            ProcessObservedToken(token);
        else
            ProcessToken(token);
        AdvanceWritePos(m_str.begin(), /*write=*/true);
    }
    AdvanceWritePos(m_str.begin(), /*write=*/true);
}

template void MacroExpander::ExpandTokenByToken</*isObserved=*/true>();

/// Looks only at tokens that may mean something. The others stay pending, so what a directive
/// would find written has to be written before it.
void MacroExpander::ExpandInStretches(ExpansionLevel& level)
{
    NameTable& names = FrameTree::Names(*m_vf);
    ssize_t unseen = std::numeric_limits<ssize_t>::max();
    LSVariable* var = nullptr; // of the name at which a stretch ended
    const auto mayMatter = [&](SubString name) { return MayMatter(names, *m_vf, name, var); };
    for (;;)
    {
        const char* const resumed = m_str.begin();
        var = nullptr;
        names.LookAhead(m_str, unseen);
        m_str.m_p1 = SkipPlainStretch(m_str, names.BindsAny(), mayMatter);
        if (m_str.empty())
            break;
        if (var != nullptr)
        {
            m_startDirectivePos = m_str.begin();
            m_endDirectivePos = m_str.m_p1 = SkipNameCharacters(m_str.begin(), m_str.end());
            Flush(m_startDirectivePos);
            if (!WriteFollowed(level, *var))
                InvokeVariable(var);
            continue;
        }
        const LSToken token = LsScanToken(m_str, /*returnComments=*/true);
        m_startDirectivePos = token.m_str.begin();
        m_endDirectivePos = token.m_str.end();
        if (token.m_type == TOKEN_AT || token.m_type == TOKEN_PREPROC_COMMENT)
            Flush(StartOfBlanks(resumed, token.m_str.begin()));
        ProcessToken(token);
    }
    AdvanceWritePos(m_str.begin(), /*write=*/true);
}

/// Whether a name may stand for something here: for `var`, which is null where that is an error.
bool MacroExpander::MayMatter(NameTable& names, VarFrame& frame, SubString name, LSVariable*& var)
{
    if (!names.MayBeBound(name))
        return false;
    try
    {
        var = names.Find(&frame, name, HashName(name), name.end());
        return var != nullptr;
    }
    catch (const LexScannerException&)
    {
        return true; // ambiguous: an error at its place
    }
}

/// The start of what is pending before `token`, had each token before it been written when it was
/// read: behind the last of these, or behind a line feed. `resumed`: where they begin.
const char* MacroExpander::StartOfBlanks(const char* resumed, const char* token) const
{
    const char* start = token;
    while (start != resumed && ClassOf(start[-1]) == CHAR_BLANK)
        --start;
    start = BehindLineComment(resumed, start, token);
    for (const char* p = start; p != token && IsLineStart(*p); ++p)
        if (*p == '\n')
            start = p + 1;
    return start;
}

/// Passes over blanks and line feeds. Text up to a line feed is written; the indentation after it
/// is discarded as far as it belongs to the source.
void MacroExpander::PassOverLineStarts()
{
    while (m_str)
    {
        const char c = *m_str.m_p1;
        if (!IsLineStart(c))
            return;
        ++m_str.m_p1;
        if (c != '\n')
            continue;
        AdvanceWritePos(m_str.begin(), /*write=*/true);
        ScanIndentation(m_str, m_srcIndent, s_tabWidth);
        AdvanceWritePos(m_str.begin(), /*write=*/false);
    }
}

} // namespace telv
