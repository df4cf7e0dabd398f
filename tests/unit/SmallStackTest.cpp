// SPDX-License-Identifier: MIT
// Expansions on threads with the smallest stacks: what is too deep for one is an error with a
// place, wherever it is noticed.
#include "support/LimitedRun.h"
#include "tlMacroExpander/tlMacroExpander.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits.h>
#include <pthread.h>
#include <string>
#include <unistd.h>

namespace telv::test
{
namespace
{

void* Call(void* operation)
{
    (*static_cast<std::function<void()>*>(operation))();
    return nullptr;
}

void RunOnStack(size_t size, std::function<void()> operation)
{
    pthread_attr_t attributes;
    pthread_t thread;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
    ASSERT_EQ(pthread_create(&thread, &attributes, Call, &operation), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

/// The expansion, or the description of the error.
std::string Expanded(const std::string& source)
{
    FileScopeVarFrame frame;
    xstring text;
    try
    {
        MacroExpand(nullptr, &frame, SubString(source.data(), source.data() + source.size()), 0, 0,
                    text);
    }
    catch (const LexScannerException& e)
    {
        text = e.m_description;
    }
    return std::string(text.begin(), text.end());
}

std::string Repeat(const std::string& text, size_t count)
{
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

bool IsTextOrTooDeep(const std::string& result, const std::string& text)
{
    return result == text || result.rfind("Expansion nested too deeply", 0) == 0;
}

TEST(SmallStackTest, DepthIsAnErrorWithAPlace)
{
    const size_t least = static_cast<size_t>(PTHREAD_STACK_MIN);
    const size_t scale = s_underAddressSanitizer ? 16 : 1; // Its frames are larger.
    for (size_t size = least; size <= 48 * size_t{1024}; size += 4096)
        for (size_t depth = 1; depth <= 80; ++depth)
        {
            const std::string brackets =
                "@(" + Repeat("(", depth) + "1.5" + Repeat(")", depth) + ")";
            const std::string blocks =
                Repeat("@if(true){", depth) + "@(cos(0.0))" + Repeat("}", depth);
            std::string first;
            std::string second;
            RunOnStack(size * scale,
                       [&]
                       {
                           first = Expanded(brackets);
                           second = Expanded(blocks);
                       });
            EXPECT_TRUE(IsTextOrTooDeep(first, "1.5")) << size << ' ' << depth << ' ' << first;
            EXPECT_TRUE(IsTextOrTooDeep(second, "1")) << size << ' ' << depth << ' ' << second;
        }
}

} // namespace
} // namespace telv::test
