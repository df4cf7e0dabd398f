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

constexpr ssize_t s_longest = 64;
constexpr int s_mostMacros = 8;

bool IsWord(SubString text)
{
    return !text.empty() && text.size() <= s_longest && ClassOf(*text.m_p1) <= CHAR_RAW_PREFIX &&
           SkipNameCharacters(text.m_p1, text.m_p2) == text.m_p2;
}

/// The variable that the word means, or null. False when the text is no word. `scanned`: what is
/// known of it from the item `first` on, or null.
bool FindVariable(SubString word, ScannedText* scanned, uint32 first, VarFrame& frame,
                  const LSVariable*& var)
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

/// Goes from `var`, or from `word` when that is null, to what is not a word. `depth` expansions
/// have been entered so far, and `steps` counted.
bool Follow(ExpansionLevel& level, const LSVariable* var, SubString word, VarFrame* context,
            ssize_t depth, ssize_t steps, SubString& found)
{
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
        if (!IsPlainText(*macro) || depth == s_mostMacros || context->m_fileScopeFrame == nullptr)
            return false;
        word = macro->GetSubstitutionString();
        ++steps;
        if (!FindVariable(word, macro->m_scanned.Get(), macro->m_first, *context, var))
            return false;
    }
    found = word;
    return level.CountNested(depth, steps);
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

bool FindWord(ExpansionLevel& level, const LevelText& text, VarFrame& frame, SubString& found)
{
    if (!FastPaths::IsOn(FastPaths::WORDS) || !level.AllowsFastPaths() ||
        frame.m_fileScopeFrame == nullptr)
        return false;
    try
    {
        const LSVariable* var = nullptr;
        return FindVariable(text.m_text, text.m_scanned, text.m_first, frame, var) &&
               Follow(level, var, text.m_text, &frame, 1, 1, found);
    }
    catch (const LexScannerException&)
    {
        return false;
    }
}

} // namespace telv
