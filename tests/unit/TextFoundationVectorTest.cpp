// SPDX-License-Identifier: MIT
// Bytes, arrays on them, and strings.
#include "TextFoundationSupport.h"
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <new>

namespace telv::foundation
{

TEST(TextFoundationVectorOfByte, StartsWithoutAnAllocation)
{
    const VectorOfByte bytes;
    EXPECT_EQ(bytes.m_buffer, nullptr);
    EXPECT_EQ(bytes.size_, 0);
    EXPECT_EQ(bytes.m_capacity, 0);
}

TEST(TextFoundationVectorOfByte, InsertOpensBytesAtThePosition)
{
    VectorOfByte bytes;
    std::memcpy(bytes.insertbytes(0, 4), "adef", 4);
    std::memcpy(bytes.insertbytes(1, 2), "bc", 2);
    EXPECT_EQ(bytes.size_, 6);
    EXPECT_EQ(std::memcmp(bytes.m_buffer, "abcdef", 6), 0);
    EXPECT_EQ(bytes.insertbytes(6, 0), bytes.m_buffer + 6);
    EXPECT_EQ(bytes.size_, 6);
}

TEST(TextFoundationVectorOfByte, ReserveNeverChangesTheSize)
{
    const VectorOfByte bytes;
    bytes.reserve(100);
    EXPECT_EQ(bytes.size_, 0);
    EXPECT_GE(bytes.m_capacity, 100);
    const unsigned char* const before = bytes.m_buffer;
    bytes.reserve(50);
    EXPECT_EQ(bytes.m_buffer, before);
}

TEST(TextFoundationVectorOfByte, ClearAndSwap)
{
    VectorOfByte one;
    VectorOfByte two;
    std::memcpy(one.insertbytes(0, 3), "one", 3);
    one.swap(two);
    EXPECT_EQ(one.size_, 0);
    EXPECT_EQ(two.size_, 3);
    EXPECT_EQ(std::memcmp(two.m_buffer, "one", 3), 0);
    two.clear();
    EXPECT_EQ(two.size_, 0);
    EXPECT_GE(two.m_capacity, 3);
}

TEST(TextFoundationVectorOfByte, ImpossibleSizesAreRefused)
{
    VectorOfByte bytes;
    bytes.insertbytes(0, 1);
    EXPECT_THROW(bytes.insertbytes(0, std::numeric_limits<ssize_t>::max()), std::bad_alloc);
    EXPECT_EQ(FailedAssertion([&] { bytes.insertbytes(0, -1); }),
              AssertionIn("xvector", "size >= 0"));
    EXPECT_EQ(FailedAssertion([&] { bytes.insertbytes(2, 1); }),
              AssertionIn("xvector", "0 <= pos && pos <= size_"));
    EXPECT_EQ(bytes.size_, 1);
}

TEST(TextFoundationVector, AppendsARange)
{
    const char text[] = "abc";
    xvector<char> v;
    v.push_back(text, text + 3);
    v.push_back(text, text + 1);
    EXPECT_EQ(std::string(v.begin(), v.end()), "abca");
    v.push_back(nullptr, nullptr);
    EXPECT_EQ(v.size(), 4);
}

TEST(TextFoundationVector, BadRangeIsAnAssertion)
{
    const char text[] = "abc";
    const std::string expected = AssertionIn(
        "xvector", "src1 == src2 || (src1 < src2 && src1 != nullptr && dst != nullptr)");
    const char* volatile null = nullptr; // not to be seen through by the compiler's warnings
    xvector<char> v;
    EXPECT_EQ(FailedAssertion([&] { v.push_back(text + 1, text); }), expected);
    EXPECT_EQ(FailedAssertion([&] { v.push_back(null, text); }), expected);
    EXPECT_TRUE(v.empty());
}

TEST(TextFoundationVector, CopiesAreIndependent)
{
    xvector<char> v;
    v.push_back('a');
    xvector<char> copy(v);
    copy[0] = 'b';
    EXPECT_EQ(v[0], 'a');
    v = copy;
    EXPECT_EQ(v[0], 'b');
    const xvector<char> empty;
    v = empty;
    EXPECT_TRUE(v.empty());
}

TEST(TextFoundationVector, TakesItsOwnElements)
{
    xvector<int> v;
    v.push_back(7);
    for (int i = 0; i < 100; ++i)
        v.push_back(v.front());
    EXPECT_EQ(v.size(), 101);
    EXPECT_EQ(v.back(), 7);

    xvector<xstring> strings;
    strings.push_back("text");
    for (int i = 0; i < 100; ++i)
        strings.push_back(strings.front());
    EXPECT_EQ(Str(strings.back()), "text");
}

TEST(TextFoundationVector, HoldsStringsAndViews)
{
    xvector<xstring> strings;
    for (int i = 0; i < 50; ++i)
        strings.push_back(ToString(i));
    const xvector<xstring> copy(strings);
    strings.pop_back();
    strings.resize(10);
    EXPECT_EQ(strings.size(), 10);
    EXPECT_EQ(Str(strings.back()), "9");
    EXPECT_EQ(Str(copy[49]), "49");
    strings.push_back(copy.begin() + 40, copy.end());
    EXPECT_EQ(strings.size(), 20);
    EXPECT_EQ(Str(strings[19]), "49");
    strings.clear();
    EXPECT_TRUE(strings.empty());

    xvector<SubString> views;
    views.push_back(copy[3]);
    EXPECT_EQ(Str(views[0]), "3");
}

TEST(TextFoundationVector, ResizeFillsWithZero)
{
    xvector<long> v;
    v.push_back(1);
    v.resize(4);
    EXPECT_EQ(v.size(), 4);
    EXPECT_EQ(v[0], 1);
    EXPECT_EQ(v[3], 0);
    v.resize(0);
    EXPECT_TRUE(v.empty());
    xvector<xstring> strings;
    strings.resize(3);
    EXPECT_EQ(Str(strings[2]), "");
}

TEST(TextFoundationVector, DataIsTheFirstElement)
{
    xvector<int> v;
    v.push_back(1);
    v.data()[0] = 2;
    const xvector<int>& same = v;
    EXPECT_EQ(same.data(), v.begin());
    EXPECT_EQ(same.data()[0], 2);
}

TEST(TextFoundationVector, SizesThatNothingCanHaveAreRefused)
{
    xvector<long> v;
    v.push_back(1);
    EXPECT_THROW(v.resize(std::numeric_limits<ssize_t>::max()), std::bad_alloc);
    EXPECT_EQ(v.size(), 1);
    EXPECT_EQ(v[0], 1);
}

TEST(TextFoundationVector, ReserveKeepsTheElements)
{
    xvector<xstring> v;
    v.push_back("kept");
    v.reserve(100);
    EXPECT_GE(v.capacity(), 100);
    EXPECT_EQ(v.size(), 1);
    EXPECT_EQ(Str(v[0]), "kept");
    EXPECT_THROW(v.reserve(std::numeric_limits<ssize_t>::max()), std::bad_alloc);
}

TEST(TextFoundationVector, ElementsOutsideAreAssertions)
{
    xvector<int> v;
    const std::string index = AssertionIn("xvector", "0 <= index && index < size()");
    EXPECT_EQ(FailedAssertion([&] { static_cast<void>(v[0]); }), index);
    EXPECT_EQ(FailedAssertion([&] { static_cast<void>(v.back()); }), index);
    EXPECT_EQ(FailedAssertion([&] { v.pop_back(); }), AssertionIn("xvector", "!empty()"));
    EXPECT_EQ(FailedAssertion([&] { v.resize(-1); }), AssertionIn("xvector", "n >= 0"));
}

TEST(TextFoundationVector, MoveAndSwapTakeTheBuffer)
{
    xvector<int> v;
    v.push_back(5);
    const int* const element = v.begin();
    xvector<int> taken(std::move(v));
    EXPECT_EQ(taken.begin(), element);
    xvector<int> other;
    other.swap(taken);
    EXPECT_EQ(other.begin(), element);
    EXPECT_TRUE(taken.empty());
}

} // namespace telv::foundation
