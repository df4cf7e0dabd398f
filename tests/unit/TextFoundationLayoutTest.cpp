// SPDX-License-Identifier: MIT
// The binary interface of the text foundation: fields in their order, sizes, bases, virtual slots.
#include "TextFoundationSupport.h"
#include <bit>
#include <cstddef>
#include <gtest/gtest.h>
#include <type_traits>

namespace telv::foundation
{

static_assert(sizeof(SubString) == 16);
static_assert(offsetof(SubString, m_p1) == 0);
static_assert(offsetof(SubString, m_p2) == 8);
static_assert(std::is_same_v<decltype(SubString::m_p1), const char*>);
static_assert(std::is_same_v<decltype(SubString::m_p2), const char*>);
static_assert(std::is_same_v<SubString, BasicSubString<char>>);
static_assert(std::is_base_of_v<safe_bool<BasicSubString<char>>, SubString>);
static_assert(std::is_trivially_copyable_v<SubString>);
static_assert(!std::is_convertible_v<SubString, bool>);

static_assert(sizeof(VectorOfByte) == 24);
static_assert(offsetof(VectorOfByte, m_buffer) == 0);
static_assert(offsetof(VectorOfByte, size_) == 8);
static_assert(offsetof(VectorOfByte, m_capacity) == 16);
static_assert(std::is_same_v<decltype(VectorOfByte::size_), ssize_t>);
static_assert(std::is_same_v<decltype(VectorOfByte::m_capacity), ssize_t>);

static_assert(sizeof(xvector<char>) == 24);
static_assert(offsetof(xvector<char>, m_buffer) == 0);
static_assert(std::is_same_v<decltype(xvector<char>::m_buffer), VectorOfByte>);

static_assert(sizeof(xstring) == 24);
static_assert(std::is_same_v<xstring, basic_xstring<char>>);
static_assert(std::is_base_of_v<xvector<char>, xstring>);
static_assert(std::is_convertible_v<xstring, SubString>);

static_assert(sizeof(xostream) == 8);
static_assert(offsetof(xostream, m_os) == 0);
static_assert(!std::is_polymorphic_v<xostream>);

static_assert(sizeof(PagedBuffer) == 48);
static_assert(offsetof(PagedBuffer, m_pageSize) == 0);
static_assert(offsetof(PagedBuffer, m_pages) == 8);
static_assert(offsetof(PagedBuffer, m_totalSize) == 32);
static_assert(offsetof(PagedBuffer, m_writePos) == 40);

static_assert(std::is_base_of_v<xostream, StringStream>);
static_assert(std::is_same_v<decltype(StringStream::m_pb), PagedBuffer>);
static_assert(std::is_base_of_v<StringStream, TracerX>);
static_assert(sizeof(TracerX) == sizeof(StringStream));

static_assert(sizeof(Indenter) == 16);
static_assert(std::is_same_v<decltype(Indenter::m_indent), ssize_t>);

static_assert(sizeof(StringX) == 24);
static_assert(offsetof(StringX, m_subString) == 0);
static_assert(offsetof(StringX, m_capacity) == 16);

static_assert(sizeof(HumanReadableCharInSubString) == 16);
static_assert(offsetof(HumanReadableCharInSubString, m_s) == 0);

static_assert(sizeof(IException) == 8);
static_assert(!std::has_virtual_destructor_v<IException>);
static_assert(std::is_base_of_v<IException, TelvAssertionError>);
static_assert(std::is_base_of_v<std::logic_error, TelvAssertionError>);

static_assert(sizeof(int32) == 4 && sizeof(int64) == 8 && sizeof(ssize_t) == 8);

ssize_t OffsetIn(const void* object, const void* field)
{
    return static_cast<const char*>(field) - static_cast<const char*>(object);
}

TEST(TextFoundationLayout, StringStreamIsStreamThenBufferThenAdapter)
{
    const StringStream stream(4096);
    EXPECT_EQ(OffsetIn(&stream, static_cast<const xostream*>(&stream)), 0);
    EXPECT_EQ(OffsetIn(&stream, &stream.m_pb), 8);
    EXPECT_EQ(OffsetIn(&stream, &stream.m_outs), 56);
}

TEST(TextFoundationLayout, IndenterIsStreamThenColumns)
{
    StringStream stream(4096);
    const Indenter indenter(stream, 4);
    EXPECT_EQ(OffsetIn(&indenter, &indenter.m_indent), 8);
}

TEST(TextFoundationLayout, WriteIsTheFirstVirtualOperation)
{
    struct MemberPointer
    {
        ptrdiff_t m_slotPlusOne;
        ptrdiff_t m_adjustment;
    };
    const auto write = std::bit_cast<MemberPointer>(&IException::Write);
    EXPECT_EQ(write.m_slotPlusOne, 1);
    EXPECT_EQ(write.m_adjustment, 0);
}

} // namespace telv::foundation
