// SPDX-License-Identifier: MIT
// Things made in a pool or as usual give back what they took, whatever becomes of them.
#include "tlMacroExpander/src/Values/Recyclable.h"
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

namespace telv::test
{
namespace
{

class Thing final : public Recyclable<Thing>
{
public:
    explicit Thing(bool fails = false)
    {
        if (fails)
            throw std::runtime_error("no thing");
    }

    char m_text[40] = {};
};

/// Not inlined: GCC 12 would not see that a thing of a pool is not given to the allocator.
[[gnu::noinline]] std::unique_ptr<Thing> MakeIn(BlockPool& pool)
{
    return std::unique_ptr<Thing>(new (pool) Thing);
}

TEST(RecyclableTest, ADeletedThingGivesItsMemoryBack)
{
    const ssize_t before = ThreadMemory().m_bytes;
    {
        BlockPool pool;
        const std::unique_ptr<Thing> pooled = MakeIn(pool);
        const auto usual = std::make_unique<Thing>();
        EXPECT_GT(ThreadMemory().m_bytes, before);
    }
    EXPECT_EQ(ThreadMemory().m_bytes, before);
}

TEST(RecyclableTest, AThingThatCannotBeMadeGivesItsMemoryBack)
{
    const ssize_t before = ThreadMemory().m_bytes;
    {
        BlockPool pool;
        EXPECT_THROW(static_cast<void>(new (pool) Thing(true)), std::runtime_error);
        EXPECT_THROW(static_cast<void>(new Thing(true)), std::runtime_error);
        const std::unique_ptr<Thing> next = MakeIn(pool);
        EXPECT_EQ(next->m_text[0], '\0');
    }
    EXPECT_EQ(ThreadMemory().m_bytes, before);
}

} // namespace
} // namespace telv::test
