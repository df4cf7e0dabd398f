// SPDX-License-Identifier: MIT
// The hint and the opening place of a run: noted while the error passes, read when it is reported.
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/Hints/HintSupport.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/OpenedAt.h"
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

xstring ExpansionRun::Hint(const LexScannerException& error) const
{
    const std::string_view description(error.m_description.begin(),
                                       static_cast<size_t>(error.m_description.size()));
    if (m_state->m_hint.empty() && m_state->m_isTextLost &&
        description.find("Met EOS") != std::string_view::npos)
        return "the bracket that ends a block of lines must stand on a line of its own: the "
               "character before it is lost";
    return m_state->m_hint;
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

/// In a lenient run no error of a token leaves the scanner, and there may be one for each byte.
void NoteOpenedToken(const char* opened, const char* errorPos)
{
    if (!RunState::IsLenient())
        NoteOpened(opened, errorPos);
}

} // namespace telv
