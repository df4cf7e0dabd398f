// SPDX-License-Identifier: MIT
// Texts that are meant as strings: written without quotes, or put into an expression without @str.
#pragma once

#include "tlMacroExpander/src/LSToken.h"
#include <vector>

namespace telv
{

class VarFrame;

/// What a directive wants of its expression.
enum class Wanted
{
    Any,
    Bool,
    Number,
    Char,
    String
};

/// Notes that a name in `source`, the tokens of an expression, wants `@str`, when the expression
/// can be read with it; `word` is the identifier that can't be read now, or empty. Whether it did.
bool HintAtMissingStr(VarFrame& frame, const std::vector<LSToken>& source, SubString word,
                      Wanted wanted);

/// `source` without the blanks around it, when it is rather a text than an expression and can stand
/// between quotes as it is; false for any other, with `text` unchanged.
bool GetQuotable(VarFrame& frame, SubString source, SubString& text);

} // namespace telv
