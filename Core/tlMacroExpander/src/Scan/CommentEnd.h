// SPDX-License-Identifier: MIT
// Remembers that no comment ends in the rest of a text: where an unclosed comment is no error, its
// end is looked for once, not again at each sign that might begin one. Kept by the expansion in
// progress, so defined in Run/ExpansionLevel.cpp.
#pragma once

#include "tlUtils/BasicSubString.h"

namespace telv
{

/// Whether it is known that the text holds no end of a comment.
bool IsWithoutCommentEnd(SubString text);

/// To be called when `text` holds none.
void NoteWithoutCommentEnd(SubString text);

} // namespace telv
