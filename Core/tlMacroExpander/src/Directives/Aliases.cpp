// SPDX-License-Identifier: MIT
// Macros whose text is the name of another macro: arguments that invocation after invocation passes
// on. What stands at the end is expanded at once; the macros between cost neither a frame nor a
// level. Words.h finds the end.
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Values/OwningVariables.h"
#include "tlMacroExpander/src/Values/Words.h"
#include <functional>
#include <utility>
#include <vector>

namespace telv
{

/// Expands what a macro comes to by way of other macros' names alone, however many; false, with
/// nothing done, when that is not known. An error tells of each of them.
[[gnu::noinline]] bool MacroExpander::InvokeAlias(const LSMacroVariable& macroVar)
{
    const OwningMacroVariable* const alias = AsOwningMacro(macroVar);
    ExpansionLevel* const level = OwnLevel();
    if (alias == nullptr || level == nullptr || level->IsObserved() || !level->AllowsPassingOver())
        return false;
    const AliasEnd* const known = FindAliasEnd(*alias);
    if (known == nullptr || !level->CountNested(known->m_links, 2 * known->m_links))
        return false;
    LSMacroVariable& end = *known->m_macro;
    const ExpansionLevel::Deeper deeper(*level, known->m_links);
    try
    {
        const LevelText body = BodyOf(end);
        if (!WriteInertText(body, *end.m_context, end.m_indentation))
        {
            VarFrame frame(end.m_context);
            ExpandBody(end, body, frame);
        }
    }
    catch (LexScannerException& e)
    {
        NoteAliases(*alias, end,
                    [&](const LSMacroVariable& macro) { AddInvocationContext(e, macro, nullptr); });
        throw;
    }
    catch (...)
    {
        NoteAliases(*alias, end, [&](const LSMacroVariable& macro) { NoteCall(macro); });
        throw;
    }
    return true;
}

/// An error passes the invocations of `end`, which `alias` leads to, and of the macros between:
/// notes each, the innermost first.
void MacroExpander::NoteAliases(const OwningMacroVariable& alias, const LSMacroVariable& end,
                                const std::function<void(const LSMacroVariable&)>& note)
{
    std::vector<const OwningMacroVariable*> aliases;
    for (const OwningMacroVariable* macro = &alias; macro != nullptr && macro != &end;
         macro = NextAlias(*macro))
        aliases.push_back(macro);
    const char* const start = std::exchange(m_startDirectivePos, nullptr);
    const LSMacroVariable* named = &end;
    for (auto macro = aliases.rbegin(); macro != aliases.rend(); ++macro)
    {
        const SubString text = (*macro)->GetSubstitutionString();
        m_startDirectivePos = text.begin();
        note(*named);
        ExpansionLevel::NoteLostText(text);
        named = *macro;
    }
    m_startDirectivePos = start;
    note(*named);
}

} // namespace telv
