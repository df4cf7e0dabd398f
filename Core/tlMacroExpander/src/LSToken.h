// SPDX-License-Identifier: MIT
// Tokens of the macro language and the scanner that cuts them from a text. Callers who only want
// text expanded start with MacroExpand.h instead.
//
// One grammar serves directives, expressions, parameter lists and project files. A token is a kind
// and a view of the characters it was read from; nothing is copied. What is wrong in a text is
// thrown as a LexScannerException, which holds the place in the text.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/StringExt.h"

namespace telv
{

/// The kinds of token. The numbers are part of the interface.
enum EToken
{
    TOKEN_UNDEF = -1, ///< No token yet; or a character that is text in a lenient run.
    TOKEN_END = 10000,
    TOKEN_COMMENT = 10001,              ///< `//` or `/* */`
    TOKEN_PREPROC_COMMENT = 10002,      ///< `@` directly followed by a comment
    TOKEN_INTEGER = 10003,              ///< decimal
    TOKEN_HEX_INTEGER = 10004,          ///< `0x` and digits
    TOKEN_FLOAT = 10005,                ///< with a fraction or an exponent
    TOKEN_SINGLE_QUOTED_STRING = 10006, ///< with its quotes and its prefix `r` or `R`
    TOKEN_DOUBLE_QUOTED_STRING = 10007, ///< with its quotes and its prefix `r` or `R`
    TOKEN_IDENTIFIER = 10008,
    TOKEN_LESS = 10009,                ///< `<`
    TOKEN_GREATER = 10010,             ///< `>`
    TOKEN_AMPERSAND = 10011,           ///< `&`
    TOKEN_VLINE = 10012,               ///< `|`
    TOKEN_CARET = 10013,               ///< `^`
    TOKEN_LESS_EQUAL = 10014,          ///< `<=`
    TOKEN_GREATER_EQUAL = 10015,       ///< `>=`
    TOKEN_AMPERSAND_EQUAL = 10016,     ///< `&=`
    TOKEN_VLINE_EQUAL = 10017,         ///< `|=`
    TOKEN_CARET_EQUAL = 10018,         ///< `^=`
    TOKEN_DBL_LESS = 10019,            ///< `<<`, and `--`
    TOKEN_DBL_GREATER = 10020,         ///< `>>`
    TOKEN_DBL_AMPERSAND = 10021,       ///< `&&`
    TOKEN_DBL_VLINE = 10022,           ///< `||`
    TOKEN_DBL_CARET = 10023,           ///< `^^`
    TOKEN_DBL_LESS_EQUAL = 10024,      ///< `<<=`
    TOKEN_DBL_GREATER_EQUAL = 10025,   ///< `>>=`
    TOKEN_DBL_AMPERSAND_EQUAL = 10026, ///< `&&=`
    TOKEN_DBL_VLINE_EQUAL = 10027,     ///< `||=`
    TOKEN_DBL_CARET_EQUAL = 10028,     ///< `^^=`
    TOKEN_PLUS = 10029,                ///< `+`
    TOKEN_MINUS = 10030,               ///< `-`
    TOKEN_ASTERISK = 10031,            ///< `*`
    TOKEN_FORWARD_SLASH = 10032,       ///< `/`
    TOKEN_PERCENT = 10033,             ///< `%`
    TOKEN_EXCLAM = 10034,              ///< `!`
    TOKEN_EQUAL = 10035,               ///< `=`
    TOKEN_QUESTION = 10036,            ///< `?`
    TOKEN_DBL_PLUS = 10037,            ///< `++`
    TOKEN_DBL_MINUS = 10038,           ///< never produced: `--` is a TOKEN_DBL_LESS
    TOKEN_PLUS_EQUAL = 10039,          ///< `+=`
    TOKEN_MINUS_EQUAL = 10040,         ///< `-=`
    TOKEN_ASTERISK_EQUAL = 10041,      ///< `*=`
    TOKEN_SLASH_EQUAL = 10042,         ///< `/=`
    TOKEN_PERCENT_EQUAL = 10043,       ///< `%=`
    TOKEN_EXCLAM_EQUAL = 10044,        ///< `!=`
    TOKEN_DBL_EQUAL = 10045,           ///< `==`
    TOKEN_QUESTION_EQUAL = 10046,      ///< `?=`
    TOKEN_MINUS_GREATER = 10047,       ///< `->`
    TOKEN_COLON = 10048,               ///< `:`
    TOKEN_COLON_COLON = 10049,         ///< `::`
    TOKEN_DOLLAR = 10050,              ///< `$`
    TOKEN_DOLLAR_DOLLAR = 10051,       ///< `$$`
    TOKEN_DOT = 10052,                 ///< `.`
    TOKEN_COMMA = 10053,               ///< `,`
    TOKEN_SEMICOLON = 10054,           ///< `;`
    TOKEN_LEFT_PAREN = 10055,          ///< `(`
    TOKEN_RIGHT_PAREN = 10056,         ///< `)`
    TOKEN_LEFT_CURLY = 10057,          ///< `{`
    TOKEN_RIGHT_CURLY = 10058,         ///< `}`
    TOKEN_LEFT_SQUARE = 10059,         ///< `[`
    TOKEN_RIGHT_SQUARE = 10060,        ///< `]`
    TOKEN_TILDE = 10061,               ///< `~`
    TOKEN_AT = 10062,                  ///< `@`
    TOKEN_BACK_SLASH = 10063,
    TOKEN_BACK_QUOTE = 10064,
    TOKEN_HASH = 10065 ///< `#`
};

/// A token: its kind and where it stands. Valid while the text that it was read from lives. Tests
/// true when it has characters, so not at the end of the text.
///
/// The getters trust the scanner: a token that they do not accept is an assertion failure.
class TLEXPANDER_API LSToken : public safe_bool<LSToken>
{
public:
    EToken m_type;
    SubString m_str; ///< Quotes, prefix and comment marks included; empty at the end of the text.

    /// No token yet: TOKEN_UNDEF and an empty view.
    LSToken() : m_type(TOKEN_UNDEF) {}
    LSToken(EToken type, SubString str) : m_type(type), m_str(str) {}

    bool boolean_test() const { return !m_str.empty(); }

    /// `out` receives the text between the quotes of a quoted string; the escapes of a string that
    /// is not raw are decoded. The two-digit form `\x41` is not known here: it is an assertion
    /// failure.
    void GetLiteralString(xstring& out) const;

    /// The character of a single-quoted literal whose `m_str` the caller has narrowed to the
    /// opening quote. What follows is read from the text behind the view, which must hold it up to
    /// the closing quote. A token as the scanner makes it is an assertion failure.
    char GetLiteralCharacter() const;

    /// The value of a TOKEN_INTEGER, wrapping around at the width of the result.
    int32 GetLiteralInt32() const;
    int64 GetLiteralInt64() const;

    /// The value of a text of the form 0x12; digits beyond the width push the high ones out. The
    /// kind is not looked at.
    int32 GetLiteralHexInt32() const;
    int64 GetLiteralHexInt64() const;

    /// The value of a TOKEN_INTEGER or TOKEN_FLOAT, as `strtod` reads it in the C locale.
    double GetLiteralDouble() const;
};

// Made, caught and destroyed by their own type: the table of virtual operations, a part of the
// binary interface, has no destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// What is wrong in a text, and where. Caught by reference; handlers on the way out append context
/// lines to `m_description` and throw on.
///
/// It is no std::exception, although it has a `what`: catch it by its name or as IException.
class TLEXPANDER_API LexScannerException : public IException
{
public:
    xstring m_description; ///< The message; further lines begin with a line feed.
    xstring m_path;        ///< The source file; empty until somebody who knows it fills it in.
    ssize_t m_lineNumber;  ///< Counted from 1; -1 while unknown.
    const char* m_pos;     ///< Into the text being scanned, or its end; may be null.

    /// The position is the start of `s`.
    LexScannerException(const xstring& description, SubString s);
    LexScannerException(const xstring& description, const char* pos);
    /// The position is the start of the token.
    LexScannerException(const xstring& description, LSToken t);

    /// Writes "PATH(LINE) : error : MESSAGE", without the parts that are unknown.
    void Write(xostream& os) const override;

    /// The message with a NUL behind it; valid until the exception is changed or ends.
    virtual const char* what() const;
};

/// Thrown when something runs out: stack, steps, output or the patience with dollar macros that
/// contain each other; stack and dollar macros without an ExpansionRun too. No construct of the
/// language may swallow it.
class TLEXPANDER_API ExpansionLimitException : public LexScannerException
{
public:
    int m_contextLines = 0; ///< Context lines that handlers have added.

    ExpansionLimitException(const xstring& description, const char* pos);
};

#pragma GCC diagnostic pop

// Scanning. All functions advance the view over what they read. After an exception the view stands
// where the scan had got to. Time is linear in what is read.

/// Reads one token after white space. Comments are skipped unless `returnComments`; a
/// TOKEN_PREPROC_COMMENT is always returned. At the end: TOKEN_END with the empty view there.
///
/// @throws LexScannerException  The text at the position is no token.
TLEXPANDER_API LSToken LsScanToken(SubString& s, bool returnComments);

/// Reads one token, or comment, that begins at the first character and returns its kind. An empty
/// view is an assertion failure.
///
/// @throws LexScannerException  As LsScanToken.
TLEXPANDER_API EToken LsScanTokenHelper(SubString& s);

/// Reads `// ...` up to the line feed or the end, or `/* ... */`. False when neither begins here.
///
/// @throws LexScannerException  The block comment has no end; the position is that of the text.
TLEXPANDER_API bool LsScanComment(SubString& s);

/// Reads a number and returns its kind, or -1 (TOKEN_UNDEF) when no digit begins the text.
///
/// @throws LexScannerException  A digit is missing after 0x, the point or the exponent mark.
TLEXPANDER_API EToken LsScanNumber(SubString& s);

/// Reads a string in the quotes `quote`, raw when `r` or `R` stands directly before it. False when
/// none begins here. A string cannot hold a line feed.
///
/// @param description  What error messages call it, such as "double quoted string".
/// @throws LexScannerException  The string does not end on its line or holds an invalid escape.
TLEXPANDER_API bool LsScanLiteralString(SubString& s, char quote, const char* description);

/// Reads one character, or one escape, in single quotes. False when no quote begins the text.
///
/// @throws LexScannerException  There is no such character, or no closing quote after it.
TLEXPANDER_API bool LsScanLiteralCharacter(SubString& s);

/// Reads a backslash and its escape letter, or `\x` and two hexadecimal digits. False when no
/// backslash begins the text.
///
/// @throws LexScannerException  What follows the backslash is no escape.
TLEXPANDER_API bool LsScanEscapeCharacter(SubString& s);

/// Writes the characters of the token, or EOS when it has none.
TLEXPANDER_API xostream& operator<<(xostream& os, const LSToken& t);

/// Decodes a quoted string that was made at run time: writes what stands between the quote that
/// begins `s` and the next one like it. Text behind that is ignored; no raw prefix is known.
///
/// @throws LexScannerException  `s` is no quoted string, it ends too early, or an escape is wrong.
///     What was decoded before stays written.
TLEXPANDER_API void UnstringifyQuotedString(SubString s, xostream& os);

static_assert(sizeof(LSToken) == 24, "no other fields");
static_assert(sizeof(LexScannerException) == 72, "no other fields");

} // namespace telv
