// SPDX-License-Identifier: MIT
// What an expansion is given besides frame and output.
#pragma once

#include "tlUtils/BasicSubString.h"

namespace telv
{

class ExpressionProgram;
class ScannedText;
class TemporaryText;

struct LevelText
{
    SubString m_text;
    /// Who keeps the text alive; null when the application does, or whoever owns the text of the
    /// expansion around it.
    TemporaryText* m_owner = nullptr;
    /// The application may have called: what leaves this level must not point into dead text.
    bool m_isOfApplication = false;
    /// What is known of the text, or null; lives as long as the expansion.
    ScannedText* m_scanned = nullptr;
    unsigned m_first = 0; ///< The first item of the text in it.
    /// The text compiled as an expression, or null; lives as long.
    ExpressionProgram* m_program = nullptr;
};

/// A block as it was cut out, with the columns of its indentation.
struct TextBlock
{
    LevelText m_text;
    ssize_t m_indent = 0;
};

} // namespace telv
