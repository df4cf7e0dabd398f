// SPDX-License-Identifier: MIT
// `#line` directives: a compiler that reads the output reports the lines of the sources.
#pragma once

#include "output/WrittenPieces.h"

namespace telv::tool
{

/// The edits of `output` and the directives that it needs, in the form `format` (see
/// `s_lineFormat`): one at the beginning of each line whose origin is not the line that a compiler
/// would count to. What a line of output belongs to is the source line of its beginning or, where
/// that is an argument or a call that has been replaced, the one that gave most of it; a blank line
/// needs nothing.
///
/// A directive can stand neither inside a block comment or a raw string of C nor behind a
/// backslash at the end of a line; what needs one there gets it at the next line that can have it.
std::vector<TextEdit> AddLineDirectives(const WrittenOutput& output, const std::string& format);

} // namespace telv::tool
