// SPDX-License-Identifier: MIT
// The sum of an output against published values and against the definition, bit by bit.
#include "map/Checksum.h"
#include "support/PlainCrc32.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace telv::test
{
namespace
{

using tool::AddToCrc32;

SubString View(const std::string& text)
{
    return {text.data(), text.data() + text.size()};
}

TEST(ChecksumTest, HasThePublishedValues)
{
    EXPECT_EQ(AddToCrc32(0, SubString("")), 0u);
    EXPECT_EQ(AddToCrc32(0, SubString("123456789")), 0xCBF43926u);
    EXPECT_EQ(AddToCrc32(0, SubString("The quick brown fox jumps over the lazy dog")), 0x414FA339u);
}

TEST(ChecksumTest, IsTheSameForEverySplit)
{
    std::mt19937 random(1);
    std::string text;
    for (int i = 0; i < 100; ++i)
        text += static_cast<char>(random());
    for (size_t size = 0; size <= text.size(); ++size)
        for (size_t split = 0; split <= size; ++split)
        {
            const std::string head = text.substr(0, split);
            const std::string tail = text.substr(split, size - split);
            ASSERT_EQ(AddToCrc32(AddToCrc32(0, View(head)), View(tail)), PlainCrc32(head + tail))
                << size << " split at " << split;
        }
}

} // namespace
} // namespace telv::test
