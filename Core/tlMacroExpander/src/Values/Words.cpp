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

/// The variable that the word means, or null. False when the text is no word.
bool FindVariable(const LevelText& text, VarFrame& frame, const LSVariable*& var)
{
    const SubString word = text.m_text;
    NameTable& names = FrameTree::Names(frame);
    if (text.m_scanned != nullptr && text.m_scanned->IsWord(text.m_first, word))
    {
        text.m_scanned->ResolveNames(names);
        NameEntry& entry = *text.m_scanned->Items()[text.m_first].m_name;
        var = names.MayBeBound(entry) ? names.Find(&frame, entry, word.end()) : nullptr;
        return true;
    }
    if (!IsWord(word))
        return false;
    var = names.Find(&frame, word, HashName(word), word.end());
    return true;
}

bool IsPlainText(const LSMacroVariable& macro)
{
    return !macro.m_isPython && !macro.m_isFnArg && macro.m_returnType == LSV_MACRO &&
           macro.GetNumArgs() == 0;
}

} // namespace

bool FindWord(ExpansionLevel& level, const LevelText& text, VarFrame& frame, SubString& found)
{
    if (!FastPaths::IsOn(FastPaths::WORDS) || !level.AllowsFastPaths())
        return false;
    LevelText body = text;
    VarFrame* context = &frame;
    for (int depth = 1; depth <= s_mostMacros && context->m_fileScopeFrame != nullptr; ++depth)
    {
        const LSVariable* var = nullptr;
        try
        {
            if (!FindVariable(body, *context, var))
                return false;
        }
        catch (const LexScannerException&)
        {
            return false; // expanding it finds the error
        }
        if (var == nullptr || var->GetType() != LSV_MACRO)
        {
            // Each expansion counts, and each use of a name.
            if (!level.CountNested(depth, var == nullptr ? 2 * depth - 1 : 2 * depth))
                return false;
            found = var == nullptr ? body.m_text
                                   : SubString(static_cast<const LSValueVariable*>(var)->m_value);
            return true;
        }
        const auto& macro = static_cast<const LSMacroVariable&>(*var);
        if (!IsPlainText(macro))
            return false;
        body = KnownBodyOf(macro);
        if (macro.m_context != nullptr)
            context = macro.m_context;
    }
    return false;
}

} // namespace telv
