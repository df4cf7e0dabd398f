// SPDX-License-Identifier: MIT
// The binary interface of literals and the expression parser. Everything here is decided when it
// is compiled, but for the slots of virtual functions.
#include "support/LiteralText.h"
#include "tlMacroExpander/src/ExpressionParser.h"
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <type_traits>

using namespace telv;

static_assert(LITERAL_UNDEF == 0 && LITERAL_VOID == 1 && LITERAL_BOOL == 2 && LITERAL_INT64 == 3 &&
              LITERAL_FLOAT64 == 4 && LITERAL_CHAR == 5 && LITERAL_STRING == 6);
static_assert(sizeof(ELiteral) == 4);

static_assert(sizeof(LSLiteral) == 40 && alignof(LSLiteral) == 8);
static_assert(offsetof(LSLiteral, m_type) == 0);
static_assert(offsetof(LSLiteral, m_bool) == 8);
static_assert(offsetof(LSLiteral, m_int64) == 8);
static_assert(offsetof(LSLiteral, m_float64) == 8);
static_assert(offsetof(LSLiteral, m_char) == 8);
static_assert(offsetof(LSLiteral, m_string) == 16);
static_assert(!std::is_polymorphic_v<LSLiteral>);
static_assert(std::is_nothrow_move_constructible_v<LSLiteral>);
static_assert(std::is_nothrow_move_assignable_v<LSLiteral>);
static_assert(std::is_constructible_v<LSLiteral, long> &&
              !std::is_constructible_v<LSLiteral, const char*>);

static_assert(std::is_same_v<decltype(LSLiteral::m_int64), long>);
static_assert(std::is_same_v<decltype(LSLiteral::m_char), char>);
static_assert(std::is_same_v<decltype(LSLiteral::m_string), xstring>);

// A pointer to the virtual functions, then the message.
static_assert(std::is_base_of_v<IException, LiteralException>);
static_assert(sizeof(LiteralException) == 8 + sizeof(xstring));
static_assert(!std::has_virtual_destructor_v<LiteralException>);

static_assert(std::is_base_of_v<ParserBase, ExpressionParser>);
static_assert(sizeof(ExpressionParser) == sizeof(ParserBase));
static_assert(!std::is_polymorphic_v<ExpressionParser>);

static_assert(std::is_same_v<decltype(!LSLiteral()), bool>);
static_assert(std::is_same_v<decltype(LSLiteral() == LSLiteral()), bool>);
static_assert(std::is_same_v<decltype(LSLiteral() && LSLiteral()), LSLiteral>);
static_assert(std::is_same_v<decltype(LSLiteral() || LSLiteral()), LSLiteral>);

TEST(LiteralLayout, WriteIsTheFirstVirtualFunction)
{
    const LiteralException e(xstring("message"));
    using Write = void (*)(const LiteralException*, xostream&);
    const Write* slots = nullptr;
    std::memcpy(&slots, static_cast<const void*>(&e), sizeof(slots));
    StringStream os(4096);
    slots[0](&e, os);
    EXPECT_EQ(StdString(os.GetString()), "message");
}
