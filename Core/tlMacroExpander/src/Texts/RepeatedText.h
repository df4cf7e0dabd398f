// A text that is expanded several times while its owner lives: the block of a loop.
//
// It is scanned before the second time, unless what surrounds it has been; a loop of one round would
// not gain from it.
#pragma once

#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"

namespace telv
{

/// Views the text.
class RepeatedText
{
public:
    explicit RepeatedText(const LevelText& text) : m_text(text) {}

    /// The text for the next expansion.
    const LevelText& Next()
    {
        if (m_text.m_scanned == nullptr && ++m_times == 2)
        {
            m_scanned = ScannedText::Make(m_text.m_text);
            m_text.m_scanned = m_scanned.Get();
            m_text.m_first = 0;
        }
        return m_text;
    }

private:
    LevelText m_text;
    CountedRef<ScannedText> m_scanned;
    int m_times = 0;
};

} // namespace telv
