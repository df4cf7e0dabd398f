// SPDX-License-Identifier: MIT
// Following words: from a text to the variable that it names, from a macro to its text.
#include "tlMacroExpander/src/Values/Words.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Values/OwningVariables.h"

namespace telv
{

namespace
{

constexpr ssize_t s_mostMacros = 8; ///< That are followed one by one.

bool IsWord(SubString text)
{
    return MayBeWord(text) && SkipNameCharacters(text.m_p1, text.m_p2) == text.m_p2;
}

/// The variable that the word means, or null. False when the text is no word. `scanned`: what is
/// known of it from the item `first` on, or null.
bool FindVariable(SubString word, ScannedText* scanned, uint32 first, VarFrame& frame,
                  LSVariable*& var)
{
    NameTable& names = FrameTree::Names(frame);
    if (scanned != nullptr && scanned->IsWord(first, word))
    {
        scanned->ResolveNames(names);
        NameEntry& entry = *scanned->Items()[first].m_name;
        var = names.MayBeBound(entry) ? names.Find(&frame, entry, word.end()) : nullptr;
        return true;
    }
    if (!IsWord(word))
        return false;
    var = names.MayBeBound(word) ? names.Find(&frame, word, HashName(word), word.end()) : nullptr;
    return true;
}

bool IsPlainText(const OwningMacroVariable& macro)
{
    return !macro.m_isPython && !macro.m_isFnArg && macro.m_returnType == LSV_MACRO &&
           macro.GetNumArgs() == 0;
}

/// Whether the names in the text of the macro are found in a frame of its own.
bool IsBoundText(const OwningMacroVariable& macro)
{
    return macro.m_context != nullptr && IsPlainText(macro);
}

bool FollowFar(ExpansionLevel& level, const LSVariable& first, ssize_t depth, ssize_t steps,
               SubString& found);

/// Goes from `var`, or from `word` when that is null, to what is not a word. `depth` expansions
/// have been entered so far, and `steps` counted.
inline bool Follow(ExpansionLevel& level, const LSVariable* var, SubString word, VarFrame* context,
                   ssize_t depth, ssize_t steps, SubString& found)
{
    const LSVariable* const first = var;
    const ssize_t farthest = depth + s_mostMacros;
    for (; var != nullptr; ++depth)
    {
        ++steps;
        const OwningMacroVariable* const macro = AsOwningMacro(*var);
        if (macro == nullptr)
        {
            const auto* const value = var->GetType() == LSV_MACRO ? nullptr : AsValue(*var);
            if (value == nullptr || !level.CountNested(depth, steps))
                return false;
            found = value->m_value;
            return true;
        }
        if (macro->m_context != nullptr)
            context = macro->m_context;
        if (!IsPlainText(*macro) || context->m_fileScopeFrame == nullptr)
            return false;
        if (depth == farthest) [[unlikely]]
            return FollowFar(level, *first, depth - s_mostMacros, steps - 2 * s_mostMacros - 1,
                             found);
        word = macro->GetSubstitutionString();
        ++steps;
        LSVariable* next = nullptr;
        if (!FindVariable(word, macro->m_scanned.Get(), macro->m_first, *context, next))
            return false;
        var = next;
    }
    found = word;
    return level.CountNested(depth, steps);
}

/// The same where that is too far to go from one to the next each time.
[[gnu::noinline]] bool FollowFar(ExpansionLevel& level, const LSVariable& first, ssize_t depth,
                                 ssize_t steps, SubString& found)
{
    const AliasEnd* const end = FindAliasEnd(static_cast<const OwningMacroVariable&>(first));
    return end != nullptr && Follow(level, end->m_macro, SubString(), nullptr, depth + end->m_links,
                                    steps + 2 * end->m_links, found);
}

} // namespace

bool FollowVariable(ExpansionLevel& level, const LSVariable& var, VarFrame& frame, SubString& found)
{
    if (!FastPaths::IsOn(FastPaths::WORDS))
        return false;
    try
    {
        return Follow(level, &var, SubString(), &frame, 0, 0, found);
    }
    catch (const LexScannerException&)
    {
        return false; // expanding finds the error
    }
}

OwningMacroVariable* NextAlias(const OwningMacroVariable& macro)
{
    VarFrame& context = *macro.m_context;
    LSVariable* var = nullptr;
    if (!FindVariable(macro.GetSubstitutionString(), macro.m_scanned.Get(), macro.m_first, context,
                      var) ||
        var == nullptr || AsOwningMacro(*var) == nullptr)
        return nullptr;
    // A change in another tree would not be noticed; an older frame each time leads to an end.
    auto& next = static_cast<OwningMacroVariable&>(*var);
    const bool isOlder = IsBoundText(next) &&
                         &FrameTree::Names(*next.m_context) == &FrameTree::Names(context) &&
                         FrameTree::Number(next.m_context) < FrameTree::Number(&context);
    return isOlder ? &next : nullptr;
}

const AliasEnd* FindAliasEnd(const OwningMacroVariable& macro)
try
{
    if (const AliasEnd* const known = macro.KnownAliasEnd())
        return known;
    if (!FastPaths::IsOn(FastPaths::WORDS) || !IsBoundText(macro))
        return nullptr;
    OwningMacroVariable* last = nullptr;
    ssize_t links = 0;
    for (OwningMacroVariable* next = NextAlias(macro); next != nullptr; next = NextAlias(*last))
    {
        const AliasEnd* const known = next->KnownAliasEnd();
        last = known == nullptr ? next : known->m_macro;
        links += known == nullptr ? 1 : 1 + known->m_links;
    }
    if (links == 0)
        return nullptr;
    AliasEnd& end = macro.Extras().m_aliasEnd;
    end = {last, links, FrameTree::Names(*macro.m_context).Changes()};
    return &end;
}
catch (const LexScannerException&)
{
    return nullptr; // expanding finds the error
}

bool FindWord(ExpansionLevel& level, const LevelText& text, VarFrame& frame, SubString& found)
{
    if (!FastPaths::IsOn(FastPaths::WORDS) || !level.AllowsFastPaths() ||
        frame.m_fileScopeFrame == nullptr)
        return false;
    try
    {
        LSVariable* var = nullptr;
        return FindVariable(text.m_text, text.m_scanned, text.m_first, frame, var) &&
               Follow(level, var, text.m_text, &frame, 1, 1, found);
    }
    catch (const LexScannerException&)
    {
        return false;
    }
}

} // namespace telv
