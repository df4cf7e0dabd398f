// SPDX-License-Identifier: MIT
// The hint of a run, and the places besides the error's: noted while the error passes, read when it
// is reported.
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/Hints/HintSupport.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/OpenedAt.h"
#include <algorithm>
#include <string_view>

namespace telv
{

bool IsHintWanted()
{
    const RunState* const state = RunState::Current();
    return state != nullptr && !state->m_errorsAreSwallowed && state->m_hint.empty();
}

/// The tokens of a text; none when it can't be read.
std::vector<LSToken> TokensOf(SubString text)
{
    std::vector<LSToken> tokens;
    try
    {
        for (LSToken token = LsScanToken(text, /*returnComments=*/false); token.m_type != TOKEN_END;
             token = LsScanToken(text, /*returnComments=*/false))
            tokens.push_back(token);
    }
    catch (const LexScannerException&)
    {
        return {};
    }
    return tokens;
}

void NoteHint(std::initializer_list<SubString> parts)
{
    if (!IsHintWanted())
        return;
    for (const SubString& part : parts)
        RunState::Current()->m_hint += part;
}

namespace
{

bool Has(SubString text, std::string_view part)
{
    return std::string_view(text.begin(), static_cast<size_t>(text.size())).find(part) !=
           std::string_view::npos;
}

/// The hint for what is never closed: the other half stands in a comment.
xstring HintAtUnclosed(const RunState& state, SubString description, const char* opened)
{
    const RunState::KnownText* const text = state.FindText(opened);
    if (text == nullptr)
        return xstring();
    const char* const bracket = FindBracketInComment(
        SubString(opened, text->m_text.end()), Has(description, "Met EOS while reading argument"));
    if (bracket == nullptr)
        return xstring();
    xstring hint("the '");
    hint += *bracket;
    hint += "' in line ";
    hint += ToString(1 + std::count(text->m_text.begin(), bracket, '\n'));
    hint += " stands in the comment that // begins";
    return hint;
}

} // namespace

xstring ExpansionRun::Hint(const LexScannerException& error) const
{
    const SubString description(error.m_description);
    const bool metEnd = Has(description, "Met EOS");
    const bool wantedMore =
        Has(description, "when read EOS") && !Has(description, " in expression");
    if (!m_state->m_hint.empty() || !(metEnd || wantedMore))
        return m_state->m_hint;
    if (m_state->m_isTextLost)
        return "the bracket that ends a block of lines must stand on a line of its own: the "
               "character before it is lost";
    const char* const pos = m_state->ResolvePosition(error.m_pos);
    const char* const opened = OpenedAt(pos);
    return metEnd ? HintAtUnclosed(*m_state, description, opened == nullptr ? pos : opened)
                  : xstring();
}

/// What is noted here may be old: it belongs to the error at `errorPos` alone.
void NoteOpened(const char* opened, const char* errorPos)
{
    RunState* const state = RunState::Current();
    if (state == nullptr || state->m_errorsAreSwallowed)
        return;
    state->m_openedAt = state->ResolvePosition(opened);
    state->m_neverClosed = state->ResolvePosition(errorPos);
}

void NoteOpenedAround(const char* opened, const char* errorPos, const char* end)
{
    const RunState* const state = RunState::Current();
    if (errorPos == end && opened != end && state != nullptr &&
        state->ResolvePosition(errorPos) != state->m_neverClosed)
        NoteOpened(opened, errorPos);
}

void NoteDefinition(const char* name)
{
    RunState* const state = RunState::Current();
    if (state != nullptr && !state->m_errorsAreSwallowed)
        state->m_definedAt = state->ResolvePosition(name);
}

/// In a lenient run no error of a token leaves the scanner, and there may be one for each byte.
void NoteOpenedToken(const char* opened, const char* errorPos)
{
    if (!RunState::IsLenient())
        NoteOpened(opened, errorPos);
}

} // namespace telv
