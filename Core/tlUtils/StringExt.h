// SPDX-License-Identifier: MIT
// The text helpers. This header brings the whole text foundation with it.
#pragma once

#include "tlUtils/BasicSubString.h"
#include "tlUtils/IException.h"
#include "tlUtils/StringStream.h"
#include "tlUtils/StringX.h"
#include "tlUtils/TelvAssert.h"
#include "tlUtils/TracerX.h"
#include "tlUtils/xostream.h"
#include "tlUtils/xstring.h"
#include "tlUtils/xvector.h"

namespace telv
{

// Scanning. To advance means to move the view's `m_p1` over what was recognised.

/// Advances over space, tab, line feed, carriage return, vertical tab and form feed.
TLUTILS_API void ScanWhiteSpace(SubString& s);

/// Advances over an identifier and returns true, or returns false and leaves `s` alone. The first
/// character is a letter, `_` or a byte above 0x7f; digits may follow. `r` or `R` directly before
/// a quote is no identifier.
TLUTILS_API bool ScanIdentifier(SubString& s);

/// Advances over decimal digits, possibly none.
TLUTILS_API void ScanDigits(SubString& s);

/// Advances over leading spaces and tabs while all their columns fit into `indent`; a tab counts
/// `tabWidth`. Stops at the first character that does not fit or is neither.
TLUTILS_API void ScanIndentation(SubString& s, long indent, long tabWidth);

// Characters.

/// Sets `out` to what the escape letter `c` stands for (a b f n r t v 0 \ ' " ?). Any other letter
/// is refused: false, and `out` is `c`.
TLUTILS_API bool MapEscapeCharacter(char c, char& out);
TLUTILS_API bool IsHexDigit(char c);
/// The value 0..15 of a hexadecimal digit, -1 for anything else.
TLUTILS_API int MapHexDigit(char c);
/// The value 0..9 of a decimal digit, -1 for anything else.
TLUTILS_API int MapDecimalDigit(char c);

/// Writes the first character of a view as an error message shows it: 'x', '\n', '\x00', a whole
/// UTF-8 sequence, or EOS (without quotes) at the end of the text.
class TLUTILS_API HumanReadableCharInSubString
{
public:
    explicit HumanReadableCharInSubString(SubString s) : m_s(s) {}

    SubString m_s; ///< A view of the text; used at once.
};
TLUTILS_API xostream& operator<<(xostream& os, const HumanReadableCharInSubString& c);

// Numbers as text.

TLUTILS_API xstring ToString(int value);
TLUTILS_API xstring ToString(long value);
/// The shortest digits that read back to `value`: plain for exponents -4 … 15, else scientific
/// with a sign and at least two exponent digits; "inf", "-inf", "nan".
TLUTILS_API xstring ToString(double value);

/// Value of a text of decimal digits, wrapping around; a non-digit or an empty text is an
/// assertion failure ("d != -1", "n > 0").
TLUTILS_API int32 DecimalToInt32(SubString digits);
TLUTILS_API int64 DecimalToInt64(SubString digits);
/// Value of "0x" or "0X" and hexadecimal digits; digits beyond the width shift the high ones out.
TLUTILS_API int32 HexToInt32(SubString str);
TLUTILS_API int64 HexToInt64(SubString str);
/// Value of the digits, point and exponent that `text` begins with, as `strtod` gives it where the
/// point is a point: the nearest double, infinite when it is too large, 0 when it is too small or
/// when there is no number.
TLUTILS_API double DecimalToDouble(SubString text);

// Comparing and searching.

/// The line of `pos` in `buffer`, counted from 1 by line feeds; the end of the buffer is inside
/// it. -1 when `pos` lies outside. Linear.
TLUTILS_API ssize_t GetLineNumber(SubString buffer, const char* pos);
/// True when equal but for the case of ASCII letters.
TLUTILS_API bool CaseInsensitiveCompare(SubString a, SubString b);
/// Negative, zero or positive; by unsigned bytes, a proper prefix first.
TLUTILS_API int strcmp(SubString a, SubString b);
TLUTILS_API int strcmp(SubString a, const char* b);
/// Replaces every occurrence of `find`, left to right, without searching replacements again. An
/// empty `find` changes nothing. Linear.
TLUTILS_API void StringFindAndReplace(xstring& s, const xstring& find, const xstring& replace);

// Paths and files.

/// `out` receives the path of `to` relative to the directory `from`, or `to` when there is none.
TLUTILS_API void CalcRelativePath(SubString from, SubString to, xstring& out);
/// Backslashes become slashes; repeated slashes, `.` and `x/..` go, as does a trailing slash.
TLUTILS_API void NormalisePath(xstring& path);
/// Reads a whole file into `out`. False when it is a directory or cannot be read, or its name
/// holds a NUL; `out` is then unchanged. With `binary` false, CR LF is read as a line feed.
TLUTILS_API bool ReadStringFromFile(xstring& out, const xstring& path, bool binary);

// Literals and blocks of text.

/// `out` receives `s` in double quotes with C escapes.
TLUTILS_API void MakeDoubleQuotedString(SubString s, xstring& out);
/// `out` receives `c` in single quotes, escaped where needed.
TLUTILS_API void MakeSingleQuotedLiteralChar(char c, xstring& out);
/// Writes `c` as it stands inside a double-quoted C literal.
TLUTILS_API void WriteCharForCStyleLiteralConstants(xostream& os, char c);
/// Writes the lines of `s` with their common indentation replaced by `indent` columns; blank lines
/// become empty, a tab counts 4.
TLUTILS_API void WriteSubStringWithAdjustedIndent(xostream& os, SubString s, long indent);

} // namespace telv
