// SPDX-License-Identifier: MIT
// A text that is expanded several times while its owner lives: the block of a loop.
//
// It is scanned before the second time, unless what surrounds it has been; a loop of one round
// would not gain from it.
#pragma once

#include "tlMacroExpander/src/Expressions/ExpressionProgram.h"
#include "tlMacroExpander/src/Run/LevelText.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"
#include <optional>

namespace telv
{

/// Views the text.
class RepeatedText
{
public:
    explicit RepeatedText(const LevelText& text, bool isExpression = false)
        : m_text(text), m_isExpression(isExpression)
    {
    }

    /// The text for the next expansion.
    const LevelText& Next()
    {
        if (m_text.m_scanned == nullptr && ++m_times == 2)
        {
            m_scanned = ScannedText::Make(m_text.m_text);
            m_text.m_scanned = m_scanned.Get();
            m_text.m_first = 0;
            if (m_isExpression && m_scanned)
                m_text.m_program = &m_program.emplace(m_text.m_text, *m_scanned);
        }
        return m_text;
    }

private:
    LevelText m_text;
    CountedRef<ScannedText> m_scanned;
    std::optional<ExpressionProgram> m_program;
    int m_times = 0;
    bool m_isExpression;
};

} // namespace telv
