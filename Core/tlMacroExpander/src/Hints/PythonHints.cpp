// SPDX-License-Identifier: MIT
// A Python macro that calls itself by the name of a method, which was not meant as a call.
#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Hints/HintSupport.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include <algorithm>

namespace telv
{

namespace
{

/// Whether `.name` stands in the text outside @quote.
bool HasMethod(SubString text, SubString name)
{
    const std::vector<LSToken> tokens = TokensOf(text);
    ssize_t depth = 0; // of the brackets of @quote
    for (size_t i = 1; i < tokens.size(); ++i)
    {
        const EToken kind = tokens[i].m_type;
        const bool isQuote = i >= 2 && kind == TOKEN_LEFT_PAREN &&
                             tokens[i - 1].m_str == SubString("quote") &&
                             tokens[i - 2].m_type == TOKEN_AT;
        if (isQuote || (depth > 0 && kind == TOKEN_LEFT_PAREN))
            ++depth;
        else if (depth > 0 && kind == TOKEN_RIGHT_PAREN)
            --depth;
        else if (depth == 0 && tokens[i - 1].m_type == TOKEN_DOT && tokens[i].m_str == name)
            return true;
    }
    return false;
}

} // namespace

void HintAtPythonMacro(const LSMacroVariable& macro, LexScannerException& error)
{
    if (!IsHintWanted() || dynamic_cast<const ExpansionLimitException*>(&error) == nullptr)
        return;
    const std::vector<CallPlace>& calls = RunState::Current()->m_callPlaces;
    const auto isOfMacro = [&](const CallPlace& call)
    { return call.m_kind == CallPlace::CALL_MACRO && call.m_name == macro.m_name; };
    const auto innermost = std::ranges::find_if(calls, isOfMacro);
    if (std::count_if(innermost, calls.end(), isOfMacro) < 2 ||
        !HasMethod(macro.GetSubstitutionString(), macro.m_name))
        return;
    NoteHint({"the method's name ", macro.m_name, " calls the macro itself: write @quote(.",
              macro.m_name, ") or give the macro another name"});
    error.m_pos = innermost->m_pos;
}

} // namespace telv
