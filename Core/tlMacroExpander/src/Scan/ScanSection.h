// SPDX-License-Identifier: MIT
// Cuts bracketed sections, arguments and blocks out of a text, with the token scanner, so that
// brackets and commas in strings and comments never count.
//
// All functions advance the view over what they read and return views of the same text, which stay
// valid as long as it lives. A view that they return never ends before it starts. Time is linear in
// what is read, or less where nested sections are known from an earlier scan of the same expansion.
// What is wrong in the text is thrown as a LexScannerException; lexical errors pass through.
#pragma once

#include "tlMacroExpander/src/LSToken.h"

namespace telv
{

/// Reads one token, which must be of the kind `expected`.
///
/// @throws LexScannerException  It is not: `message`, at the token.
TLEXPANDER_API void ReadGivenToken(SubString& s, EToken expected, const char* message);

/// Moves the end of `s` back over spaces and tabs and returns their width; a tab counts 4.
TLEXPANDER_API ssize_t ScanBackwardsThroughSpacesAndTabs(SubString& s);

/// Reads one argument of a list that ends with a token of kind `close`, and the token behind it,
/// which is returned: a TOKEN_COMMA or the closing one.
///
/// `arg` becomes the argument without the white space around it; it may be empty. Commas within
/// (), {} and [] do not end it. An argument in back quotes is taken as it stands, without them; the
/// token behind those may be of any kind, and is for the caller to check.
///
/// @throws LexScannerException  The text ends first: "Met EOS while reading argument " and what was
///     read, at the argument's start.
TLEXPANDER_API LSToken ScanArgument(SubString& s, SubString& arg, EToken close);

/// Returns the text between a bracket and the one that closes it, without the white space around
/// it. A comment before the closing bracket is not part of it. Continues behind that bracket.
///
/// @param readOpen  Read the opening bracket too; without it, the caller has done so.
/// @throws LexScannerException  The next token is not `open`: "( expected when read " and the
///     token. The text ends first: "Met EOS while reading bracketted section", at the end.
TLEXPANDER_API SubString ScanBrackettedSection(SubString& s, bool readOpen, EToken open,
                                               EToken close);

/// Returns a block of text that is either bracketed or the rest of the line.
///
/// - A bracket on the same line: everything up to the one that closes it, except a line end right
///   behind the opening bracket.
/// - Something else on the same line: the rest of the line, without its end, unless `requireOpen`.
/// - A bracket on a following line: the lines between it and the closing bracket, which stands on a
///   line of its own, without the last line end. The indentation of the first of these lines is
///   passed over and counted. Text on the line of the closing bracket loses its last character.
///
/// @param indent     Receives the columns of that indentation, a tab counting 4; 0 for other forms.
/// @param openText   The brackets in error messages.
/// @throws LexScannerException  "Expected { when read " and the token, at the token; the text ends
///     in the block: "Met EOS before closing }" or "Met EOS while reading bracketted string", at
///     the opening bracket.
TLEXPANDER_API SubString ScanStringBlock(SubString& s, ssize_t& indent, EToken open, EToken close,
                                         const char* openText, const char* closeText,
                                         bool requireOpen);

/// ScanStringBlock with curly brackets, which may be missing.
TLEXPANDER_API SubString ScanSubstString(SubString& s, ssize_t& indent);

/// ScanStringBlock with round brackets, which may not be missing.
TLEXPANDER_API SubString ScanRndBrackettedString(SubString& s, ssize_t& indent);

/// True when both texts hold the same tokens; white space and comments do not matter.
TLEXPANDER_API bool SubStringsAreTokenEquivalent(SubString a, SubString b);

} // namespace telv
