// SPDX-License-Identifier: MIT
// The binary interface of the scanner: numbers of the kinds of token, fields in their order, sizes,
// bases, virtual slots.
#include "ScannerSupport.h"
#include "tlMacroExpander/src/LSSourceFile.h"
#include "tlMacroExpander/src/ParserBase.h"
#include <cstddef>
#include <gtest/gtest.h>
#include <type_traits>

namespace telv::scanner
{

static_assert(TOKEN_UNDEF == -1);
static_assert(TOKEN_END == 10000);
static_assert(TOKEN_COMMENT == 10001);
static_assert(TOKEN_PREPROC_COMMENT == 10002);
static_assert(TOKEN_INTEGER == 10003);
static_assert(TOKEN_HEX_INTEGER == 10004);
static_assert(TOKEN_FLOAT == 10005);
static_assert(TOKEN_SINGLE_QUOTED_STRING == 10006);
static_assert(TOKEN_DOUBLE_QUOTED_STRING == 10007);
static_assert(TOKEN_IDENTIFIER == 10008);
static_assert(TOKEN_LESS == 10009);
static_assert(TOKEN_GREATER == 10010);
static_assert(TOKEN_AMPERSAND == 10011);
static_assert(TOKEN_VLINE == 10012);
static_assert(TOKEN_CARET == 10013);
static_assert(TOKEN_LESS_EQUAL == 10014);
static_assert(TOKEN_GREATER_EQUAL == 10015);
static_assert(TOKEN_AMPERSAND_EQUAL == 10016);
static_assert(TOKEN_VLINE_EQUAL == 10017);
static_assert(TOKEN_CARET_EQUAL == 10018);
static_assert(TOKEN_DBL_LESS == 10019);
static_assert(TOKEN_DBL_GREATER == 10020);
static_assert(TOKEN_DBL_AMPERSAND == 10021);
static_assert(TOKEN_DBL_VLINE == 10022);
static_assert(TOKEN_DBL_CARET == 10023);
static_assert(TOKEN_DBL_LESS_EQUAL == 10024);
static_assert(TOKEN_DBL_GREATER_EQUAL == 10025);
static_assert(TOKEN_DBL_AMPERSAND_EQUAL == 10026);
static_assert(TOKEN_DBL_VLINE_EQUAL == 10027);
static_assert(TOKEN_DBL_CARET_EQUAL == 10028);
static_assert(TOKEN_PLUS == 10029);
static_assert(TOKEN_MINUS == 10030);
static_assert(TOKEN_ASTERISK == 10031);
static_assert(TOKEN_FORWARD_SLASH == 10032);
static_assert(TOKEN_PERCENT == 10033);
static_assert(TOKEN_EXCLAM == 10034);
static_assert(TOKEN_EQUAL == 10035);
static_assert(TOKEN_QUESTION == 10036);
static_assert(TOKEN_DBL_PLUS == 10037);
static_assert(TOKEN_DBL_MINUS == 10038);
static_assert(TOKEN_PLUS_EQUAL == 10039);
static_assert(TOKEN_MINUS_EQUAL == 10040);
static_assert(TOKEN_ASTERISK_EQUAL == 10041);
static_assert(TOKEN_SLASH_EQUAL == 10042);
static_assert(TOKEN_PERCENT_EQUAL == 10043);
static_assert(TOKEN_EXCLAM_EQUAL == 10044);
static_assert(TOKEN_DBL_EQUAL == 10045);
static_assert(TOKEN_QUESTION_EQUAL == 10046);
static_assert(TOKEN_MINUS_GREATER == 10047);
static_assert(TOKEN_COLON == 10048);
static_assert(TOKEN_COLON_COLON == 10049);
static_assert(TOKEN_DOLLAR == 10050);
static_assert(TOKEN_DOLLAR_DOLLAR == 10051);
static_assert(TOKEN_DOT == 10052);
static_assert(TOKEN_COMMA == 10053);
static_assert(TOKEN_SEMICOLON == 10054);
static_assert(TOKEN_LEFT_PAREN == 10055);
static_assert(TOKEN_RIGHT_PAREN == 10056);
static_assert(TOKEN_LEFT_CURLY == 10057);
static_assert(TOKEN_RIGHT_CURLY == 10058);
static_assert(TOKEN_LEFT_SQUARE == 10059);
static_assert(TOKEN_RIGHT_SQUARE == 10060);
static_assert(TOKEN_TILDE == 10061);
static_assert(TOKEN_AT == 10062);
static_assert(TOKEN_BACK_SLASH == 10063);
static_assert(TOKEN_BACK_QUOTE == 10064);
static_assert(TOKEN_HASH == 10065);
static_assert(sizeof(EToken) == 4);
static_assert(!std::is_convertible_v<int, EToken> && std::is_convertible_v<EToken, int>);

static_assert(sizeof(LSToken) == 24);
static_assert(offsetof(LSToken, m_type) == 0);
static_assert(offsetof(LSToken, m_str) == 8);
static_assert(std::is_base_of_v<safe_bool<LSToken>, LSToken>);
static_assert(std::is_trivially_copyable_v<LSToken>);
static_assert(!std::is_convertible_v<LSToken, bool>);

static_assert(sizeof(LSSourceFile) == 48);
static_assert(offsetof(LSSourceFile, m_name) == 0);
static_assert(offsetof(LSSourceFile, m_buffer) == 24);

static_assert(sizeof(ParserBase) == 88);
static_assert(offsetof(ParserBase, m_stringForToken) == 0);
static_assert(offsetof(ParserBase, m_token) == 24);
static_assert(offsetof(ParserBase, m_prevToken) == 48);
static_assert(offsetof(ParserBase, m_str) == 72);
static_assert(!std::is_polymorphic_v<ParserBase>);
static_assert(std::is_copy_constructible_v<ParserBase>);

static_assert(sizeof(LexScannerException) == 72);
static_assert(std::is_base_of_v<IException, LexScannerException>);
static_assert(!std::is_base_of_v<std::exception, LexScannerException>);
static_assert(!std::has_virtual_destructor_v<LexScannerException>);
static_assert(std::is_copy_constructible_v<LexScannerException>);
static_assert(sizeof(ExpansionLimitException) == 80);
static_assert(std::is_base_of_v<LexScannerException, ExpansionLimitException>);
static_assert(!std::has_virtual_destructor_v<ExpansionLimitException>);

namespace
{

ssize_t OffsetIn(const LexScannerException& e, const void* field)
{
    return static_cast<const char*>(field) - reinterpret_cast<const char*>(&e);
}

} // namespace

TEST(ScannerLayout, FieldsOfTheException)
{
    const LexScannerException e("m", "x");
    EXPECT_EQ(OffsetIn(e, &e.m_description), 8);
    EXPECT_EQ(OffsetIn(e, &e.m_path), 32);
    EXPECT_EQ(OffsetIn(e, &e.m_lineNumber), 56);
    EXPECT_EQ(OffsetIn(e, &e.m_pos), 64);
    const ExpansionLimitException limit("m", "x");
    EXPECT_EQ(OffsetIn(limit, &limit.m_contextLines), 72);
}

TEST(ScannerLayout, BaseStandsAtTheBeginning)
{
    const LexScannerException e("m", "x");
    EXPECT_EQ(OffsetIn(e, static_cast<const IException*>(&e)), 0);
}

} // namespace telv::scanner
