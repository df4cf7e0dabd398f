// SPDX-License-Identifier: MIT
// Tokens: what is one, where it ends, and every lexical error with its place.
#include "ScannerSupport.h"
#include "tlMacroExpander/src/LSSourceFile.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <gtest/gtest.h>

namespace telv::scanner
{

namespace
{

std::string ScanError(const std::string& text)
{
    return ErrorIn(View(text), [&] { TokensOf(text); });
}

} // namespace

TEST(Scanner, TokensByText)
{
    const struct
    {
        const char* m_text;
        const char* m_tokens;
    } rows[] = {
        {"", ""},
        {" \t\r\n\v\f", ""},
        {"a", "name<a>"},
        {" _a1 b ", "name<_a1> name<b>"},
        {"\xc3\xa4x", "name<\xc3\xa4x>"},
        {"r R rr", "name<r> name<R> name<rr>"},
        {"12ab", "int<12> name<ab>"},
        {"007", "int<007>"},
        {"0", "int<0>"},
        {"0x1F", "hex<0x1F>"},
        {"0Xabg", "hex<0Xab> name<g>"},
        {"0x1.5", "hex<0x1> 10052<.> int<5>"},
        {"0x1e+1", "hex<0x1e> 10029<+> int<1>"},
        {"01x2", "int<01> name<x2>"},
        {"1.5", "float<1.5>"},
        {"1e5", "float<1e5>"},
        {"1.5E-3x", "float<1.5E-3> name<x>"},
        {"2e+7", "float<2e+7>"},
        {"1.5.2", "float<1.5> 10052<.> int<2>"},
        {".5", "10052<.> int<5>"},
        {"''", "single<''>"},
        {"\"\"", "double<\"\">"},
        {"'a\"b'", "single<'a\"b'>"},
        {"\"a'b\"", "double<\"a'b\">"},
        {"\"a\\\"b\"c", "double<\"a\\\"b\"> name<c>"},
        {"'\\x41\\n'", "single<'\\x41\\n'>"},
        {"r\"a\\b\"", "double<r\"a\\b\">"},
        {"R'\\q\\'", "single<R'\\q\\'>"},
        {"r\"\\\"x", "double<r\"\\\"> name<x>"},
        {"bar\"x\"", "name<bar> double<\"x\">"},
        {"r \"x\"", "name<r> double<\"x\">"},
        {"\"a\"\"b\"", "double<\"a\"> double<\"b\">"},
        {"a // b\nc", "name<a> name<c>"},
        {"a /* b\n */ c", "name<a> name<c>"},
        {"/* a /* b */ c", "name<c>"},
        {"/**/ a /***/", "name<a>"},
        {"/*/ */a", "name<a>"},
        {"// only", ""},
        {"@// note\nx", "preproc<@// note> name<x>"},
        {"@/* n */x", "preproc<@/* n */> name<x>"},
        {"@ // n", "10062<@>"},
        {"@/x", "10062<@> 10032</> name<x>"},
        {"@/", "10062<@> 10032</>"},
        {"@", "10062<@>"},
        {"a--b", "name<a> 10019<--> name<b>"},
        {"a->b", "name<a> 10047<->> name<b>"},
        {"**=", "10031<*> 10041<*=>"},
        {":::", "10049<::> 10048<:>"},
        {"::=", "10049<::> 10035<=>"},
        {":=", "10048<:> 10035<=>"},
        {"$$$", "10051<$$> 10050<$>"},
        {"===", "10045<==> 10035<=>"},
        {"<<<=", "10019<<<> 10014<<=>"},
        {"+==", "10039<+=> 10035<=>"},
        {"---", "10019<--> 10030<->"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TokensOf(row.m_text), row.m_tokens) << row.m_text;
}

TEST(Scanner, EachOperatorIsOneToken)
{
    const struct
    {
        const char* m_text;
        EToken m_kind;
    } rows[] = {
        {"<", TOKEN_LESS},
        {">", TOKEN_GREATER},
        {"&", TOKEN_AMPERSAND},
        {"|", TOKEN_VLINE},
        {"^", TOKEN_CARET},
        {"<=", TOKEN_LESS_EQUAL},
        {">=", TOKEN_GREATER_EQUAL},
        {"&=", TOKEN_AMPERSAND_EQUAL},
        {"|=", TOKEN_VLINE_EQUAL},
        {"^=", TOKEN_CARET_EQUAL},
        {"<<", TOKEN_DBL_LESS},
        {"--", TOKEN_DBL_LESS},
        {">>", TOKEN_DBL_GREATER},
        {"&&", TOKEN_DBL_AMPERSAND},
        {"||", TOKEN_DBL_VLINE},
        {"^^", TOKEN_DBL_CARET},
        {"<<=", TOKEN_DBL_LESS_EQUAL},
        {">>=", TOKEN_DBL_GREATER_EQUAL},
        {"&&=", TOKEN_DBL_AMPERSAND_EQUAL},
        {"||=", TOKEN_DBL_VLINE_EQUAL},
        {"^^=", TOKEN_DBL_CARET_EQUAL},
        {"+", TOKEN_PLUS},
        {"-", TOKEN_MINUS},
        {"*", TOKEN_ASTERISK},
        {"/", TOKEN_FORWARD_SLASH},
        {"%", TOKEN_PERCENT},
        {"!", TOKEN_EXCLAM},
        {"=", TOKEN_EQUAL},
        {"?", TOKEN_QUESTION},
        {"++", TOKEN_DBL_PLUS},
        {"+=", TOKEN_PLUS_EQUAL},
        {"-=", TOKEN_MINUS_EQUAL},
        {"*=", TOKEN_ASTERISK_EQUAL},
        {"/=", TOKEN_SLASH_EQUAL},
        {"%=", TOKEN_PERCENT_EQUAL},
        {"!=", TOKEN_EXCLAM_EQUAL},
        {"==", TOKEN_DBL_EQUAL},
        {"?=", TOKEN_QUESTION_EQUAL},
        {"->", TOKEN_MINUS_GREATER},
        {":", TOKEN_COLON},
        {"::", TOKEN_COLON_COLON},
        {"$", TOKEN_DOLLAR},
        {"$$", TOKEN_DOLLAR_DOLLAR},
        {".", TOKEN_DOT},
        {",", TOKEN_COMMA},
        {";", TOKEN_SEMICOLON},
        {"(", TOKEN_LEFT_PAREN},
        {")", TOKEN_RIGHT_PAREN},
        {"{", TOKEN_LEFT_CURLY},
        {"}", TOKEN_RIGHT_CURLY},
        {"[", TOKEN_LEFT_SQUARE},
        {"]", TOKEN_RIGHT_SQUARE},
        {"~", TOKEN_TILDE},
        {"@", TOKEN_AT},
        {"\\", TOKEN_BACK_SLASH},
        {"`", TOKEN_BACK_QUOTE},
        {"#", TOKEN_HASH},
    };
    for (const auto& row : rows)
    {
        for (const char* behind : {"", " ", "a", ";", "\n"})
        {
            const std::string text = std::string(row.m_text) + behind;
            const LSToken token = FirstToken(text);
            EXPECT_EQ(token.m_type, row.m_kind) << text;
            EXPECT_EQ(Str(token.m_str), row.m_text) << text;
        }
    }
}

TEST(Scanner, ErrorsAndTheirPlaces)
{
    const struct
    {
        std::string m_text;
        std::string m_error;
    } rows[] = {
        {"1.", "Expected digit (not EOS) after decimal point (ie after reading '1.') @2"},
        {"a 12.x", "Expected digit (not 'x') after decimal point (ie after reading '12.') @5"},
        {"1e", "Expected digit(s) (not EOS) for exponent after reading 1e @2"},
        {"1e+", "Expected digit(s) (not EOS) for exponent after reading 1e+ @3"},
        {"1.5E-x", "Expected digit(s) (not 'x') for exponent after reading 1.5E- @5"},
        {"0x", "Expected hex digit (not EOS) after 0x @2"},
        {"0Xg", "Expected hex digit (not 'g') after 0x @2"},
        {"'", "Met EOS within single quoted string @1"},
        {"r\"", "Met EOS within double quoted string @2"},
        {"\"ab", "Met EOS within double quoted string after reading \"ab @3"},
        {"r'ab", "Met EOS within single quoted string after reading r'ab @4"},
        {"x 'ab\nc'", "Met line feed within single quoted string after reading 'ab @5"},
        {"\"\n\"", "Met line feed within double quoted string after reading \" @1"},
        {"R\"a\n", "Met line feed within double quoted string after reading R\"a @3"},
        {"\"\\q\"", "Invalid escape character 'q' following backslash @2"},
        {"\"\\\n\"", "Invalid escape character '\\n' following backslash @2"},
        {"\"\\", "Expected escape character following backslash when reached EOS @2"},
        {"'\\x", "Expected hex character when reached EOS @3"},
        {"'\\x4", "Expected hex character when reached EOS @4"},
        {"'\\x4g'", "Expected hex character when read 'g' @4"},
        {"'\\xg'", "Expected hex character when read 'g' @3"},
        {"'\\x4'", "Expected hex character when read '\\'' @4"},
        {"a /* b", "Met EOS in middle of /* ... */ comment @6"},
        {"/*/", "Met EOS in middle of /* ... */ comment @3"},
        {"/* *", "Met EOS in middle of /* ... */ comment @4"},
        {"@/*x", "Met EOS in middle of /* ... */ comment @4"},
        {"x ++= 1", "Invalid token ++= @5"},
        {"a \x01", "Bad token \x01 @2"},
        {"\x7f", "Bad token \x7f @0"},
        {std::string("a\0", 2), std::string("Bad token \0 @1", 14)},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ScanError(row.m_text), row.m_error) << row.m_text;
}

TEST(Scanner, EveryByteBeginsWhatTheTextFoundationSays)
{
    for (int c = 0; c < 256; ++c)
    {
        const std::string text(1, static_cast<char>(c));
        SubString blank = View(text);
        ScanWhiteSpace(blank);
        EXPECT_EQ(ClassOf(text[0]) == CHAR_BLANK, blank.empty()) << c;
        SubString name = View(text);
        const bool begins = ScanIdentifier(name);
        EXPECT_EQ(ClassOf(text[0]) == CHAR_NAME || ClassOf(text[0]) == CHAR_RAW_PREFIX, begins)
            << c;
        const std::string two = "a" + text;
        name = View(two);
        ScanIdentifier(name);
        EXPECT_EQ(IsNameCharacter(text[0]), name.empty()) << c;
    }
}

TEST(Scanner, NamesOfAllLengthsEndAtEveryOtherByte)
{
    for (int c = 0; c < 256; ++c)
    {
        const char byte = static_cast<char>(c);
        for (size_t length = 1; length < 40; ++length)
        {
            const std::string text = std::string(length, 'x') + byte + std::string(length, 'Z');
            SubString s = View(text);
            LsScanToken(s, /*returnComments=*/false);
            const size_t expected = IsNameCharacter(byte) ? text.size() : length;
            ASSERT_EQ(text.size() - static_cast<size_t>(s.size()), expected) << c << " " << length;
        }
    }
}

TEST(Scanner, EveryPrintableCharacterBeginsSomething)
{
    for (int c = 0x20; c < 0x7f; ++c)
        EXPECT_NE(ClassOf(static_cast<char>(c)), CHAR_BAD) << c;
}

TEST(Scanner, EndIsTheEmptyViewAtTheEnd)
{
    const std::string text = "a  ";
    SubString s = View(text);
    LsScanToken(s, /*returnComments=*/false);
    for (int repeat = 0; repeat < 2; ++repeat)
    {
        const LSToken end = LsScanToken(s, /*returnComments=*/false);
        EXPECT_EQ(end.m_type, TOKEN_END);
        EXPECT_EQ(end.m_str.begin(), View(text).end());
        EXPECT_EQ(end.m_str.end(), View(text).end());
        EXPECT_FALSE(end);
    }
    SubString null;
    EXPECT_EQ(LsScanToken(null, /*returnComments=*/false).m_type, TOKEN_END);
}

TEST(Scanner, CommentsAreReturnedOnRequest)
{
    EXPECT_EQ(TokensOf("a // b\nc /* d */", /*returnComments=*/true),
              "name<a> comment<// b> name<c> comment</* d */>");
    EXPECT_EQ(TokensOf("a // b\r\nc", /*returnComments=*/true), "name<a> comment<// b\r> name<c>");
    EXPECT_EQ(TokensOf("@// b", /*returnComments=*/true), "preproc<@// b>");
}

TEST(Scanner, TokenIsTrueWhenItHasCharacters)
{
    EXPECT_TRUE(FirstToken("x"));
    EXPECT_FALSE(LSToken());
    EXPECT_EQ(LSToken().m_type, TOKEN_UNDEF);
}

TEST(Scanner, ViewIsAdvancedToTheErrorsPlace)
{
    const std::string text = "12.x";
    SubString s = View(text);
    EXPECT_THROW(LsScanToken(s, /*returnComments=*/false), LexScannerException);
    EXPECT_EQ(Str(s), "x");
}

TEST(Scanner, HelperReadsAtThePositionAndNeedsText)
{
    SubString s("ab c");
    EXPECT_EQ(LsScanTokenHelper(s), TOKEN_IDENTIFIER);
    EXPECT_EQ(Str(s), " c");
    const SubString rest = s;
    EXPECT_EQ(ErrorIn(rest, [&] { LsScanTokenHelper(s); }), "Bad token   @0");
    SubString comment("// x");
    EXPECT_EQ(LsScanTokenHelper(comment), TOKEN_COMMENT);
    SubString end("");
    EXPECT_EQ(FailedAssertion([&] { LsScanTokenHelper(end); }),
              "Assertion failed: m_p1 < m_p2 at Core/tlUtils/BasicSubString");
}

TEST(Scanner, PiecesLeaveAloneWhatIsNotTheirs)
{
    for (const char* text : {"", "a", " 1", "+"})
    {
        SubString s(text);
        EXPECT_EQ(LsScanNumber(s), -1);
        EXPECT_FALSE(LsScanComment(s));
        EXPECT_FALSE(LsScanLiteralString(s, '"', "string"));
        EXPECT_FALSE(LsScanLiteralCharacter(s));
        EXPECT_FALSE(LsScanEscapeCharacter(s));
        EXPECT_EQ(Str(s), text);
    }
    for (const char* text : {"r", "rx", "r'", "R"})
    {
        SubString s(text);
        EXPECT_FALSE(LsScanLiteralString(s, '"', "string"));
        EXPECT_EQ(Str(s), text);
    }
    SubString slash("/");
    EXPECT_FALSE(LsScanComment(slash));
    EXPECT_EQ(Str(slash), "/");
}

TEST(Scanner, PiecesAdvanceOverTheirConstruct)
{
    SubString number("12.5rest");
    EXPECT_EQ(LsScanNumber(number), TOKEN_FLOAT);
    EXPECT_EQ(Str(number), "rest");
    SubString comment("//x\ny");
    EXPECT_TRUE(LsScanComment(comment));
    EXPECT_EQ(Str(comment), "\ny");
    SubString string("%a%b");
    EXPECT_TRUE(LsScanLiteralString(string, '%', "percent string"));
    EXPECT_EQ(Str(string), "b");
    SubString escape("\\x41b");
    EXPECT_TRUE(LsScanEscapeCharacter(escape));
    EXPECT_EQ(Str(escape), "b");
}

TEST(Scanner, DescriptionNamesTheString)
{
    const SubString text("%a");
    SubString s(text);
    EXPECT_EQ(ErrorIn(text, [&] { LsScanLiteralString(s, '%', "percent string"); }),
              "Met EOS within percent string after reading %a @2");
}

TEST(Scanner, LiteralCharacter)
{
    for (const char* text : {"'a'!", "'\\n'!", "'\\x41'!", "'\"'!", "'\\''!"})
    {
        SubString s(text);
        EXPECT_TRUE(LsScanLiteralCharacter(s)) << text;
        EXPECT_EQ(Str(s), "!") << text;
    }
    const std::string enclosed =
        " while trying to read literal character enclosed in single quotes";
    const struct
    {
        const char* m_text;
        std::string m_error;
    } rows[] = {
        {"'", "Read EOS" + enclosed + " @1"},
        {"''", "Read '\\''" + enclosed + " @1"},
        {"'\n'", "Read '\\n'" + enclosed + " @1"},
        {"'\r'", "Read '\\r'" + enclosed + " @1"},
        {"'\t'", "Read '\\t'" + enclosed + " @1"},
        {"'ab'", "Expected second single quote (not 'b') for literal character @2"},
        {"'a", "Expected second single quote (not EOS) for literal character @2"},
        {"'\\q'", "Invalid escape character 'q' following backslash @2"},
    };
    for (const auto& row : rows)
    {
        SubString s(row.m_text);
        EXPECT_EQ(ErrorIn(s, [s]() mutable { LsScanLiteralCharacter(s); }), row.m_error);
    }
}

TEST(Scanner, TokenIsWrittenAsItsCharacters)
{
    EXPECT_EQ(Written([](xostream& os) { os << FirstToken("'ab' c"); }), "'ab'");
    EXPECT_EQ(Written([](xostream& os) { os << FirstToken(""); }), "EOS");
    EXPECT_EQ(Written([](xostream& os) { os << LSToken(); }), "EOS");
}

TEST(Scanner, ExceptionKnowsMessageAndPosition)
{
    const SubString text("abc");
    const LexScannerException atView("m", text);
    const LexScannerException atPointer("m", text.begin() + 1);
    const LexScannerException atToken("m", LSToken(TOKEN_END, SubString(text.end(), text.end())));
    EXPECT_EQ(atView.m_pos, text.begin());
    EXPECT_EQ(atPointer.m_pos, text.begin() + 1);
    EXPECT_EQ(atToken.m_pos, text.end());
    for (const LexScannerException* e : {&atView, &atPointer, &atToken})
    {
        EXPECT_EQ(Str(e->m_description), "m");
        EXPECT_TRUE(e->m_path.empty());
        EXPECT_EQ(e->m_lineNumber, -1);
        EXPECT_STREQ(e->what(), "m");
    }
}

TEST(Scanner, ExceptionIsWrittenLikeACompilersMessage)
{
    const struct
    {
        const char* m_path;
        ssize_t m_line;
        const char* m_text;
    } rows[] = {
        {"", -1, "error : m"},
        {"", 3, "Line 3: error : m"},
        {"a/b.tl", 12, "a/b.tl(12) : error : m"},
        {"a/b.tl", 0, "a/b.tl(0) : error : m"},
        {"a/b.tl", -1, "a/b.tl : error : m"},
    };
    for (const auto& row : rows)
    {
        LexScannerException e("m", SubString());
        e.m_path = xstring(row.m_path);
        e.m_lineNumber = row.m_line;
        const IException& base = e;
        EXPECT_EQ(Written([&](xostream& os) { base.Write(os); }), row.m_text);
    }
}

TEST(Scanner, LimitExceptionIsALexicalOne)
{
    const char* const text = "x";
    try
    {
        throw ExpansionLimitException("too deep", text);
    }
    catch (const LexScannerException& e)
    {
        EXPECT_STREQ(e.what(), "too deep");
        EXPECT_EQ(e.m_pos, text);
    }
    EXPECT_EQ(ExpansionLimitException("m", text).m_contextLines, 0);
}

TEST(Scanner, SourceFileFindsItsPositions)
{
    LSSourceFile file;
    file.m_name = xstring("dir/f.tl");
    file.m_buffer = xstring("a\nb\n");
    xstring path("before");
    ssize_t line = 77;
    EXPECT_TRUE(file.GetFilenameAndLineNumber(file.m_buffer.begin() + 2, path, line));
    EXPECT_EQ(Str(path), "dir/f.tl");
    EXPECT_EQ(line, 2);
    EXPECT_TRUE(file.GetFilenameAndLineNumber(file.m_buffer.end(), path, line));
    EXPECT_EQ(line, 3);
}

TEST(Scanner, SourceFileRefusesOtherPositions)
{
    LSSourceFile file;
    file.m_name = xstring("f.tl");
    file.m_buffer = xstring("a");
    xstring path("before");
    ssize_t line = 77;
    EXPECT_FALSE(file.GetFilenameAndLineNumber("elsewhere", path, line));
    EXPECT_EQ(Str(path), "before");
    EXPECT_EQ(line, 77);
}

} // namespace telv::scanner
