// SPDX-License-Identifier: MIT
// Passing over quiet text: 32 characters at a time gives what one at a time gives.
#include "tlMacroExpander/src/Scan/QuietText.h"
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace telv
{

namespace
{

ssize_t Quiet(const std::string& text, size_t from = 0)
{
    const char* const end = text.data() + text.size();
    const char* const begin = text.data() + from;
    EXPECT_EQ(SkipQuietText(begin, end), SkipQuietTextPortably(begin, end)) << text;
    return SkipQuietText(begin, end) - begin;
}

TEST(QuietText, EndsBeforeWhatNeedsALook)
{
    const std::string quiet = "int main(void) { return x->y; }\t\r\n";
    for (const char loud : {'0', '9', '"', '\'', '/', '+', '@', '\0', '\x01', '\x7f'})
        for (const size_t before : {0u, 1u, 31u, 32u, 33u, 70u})
        {
            std::string text;
            while (text.size() < before)
                text += quiet;
            text.resize(before);
            EXPECT_EQ(Quiet(text + loud + quiet + quiet), static_cast<ssize_t>(before)) << loud;
        }
}

TEST(QuietText, EachCharacterAloneIsTheSameBothWays)
{
    for (int c = 0; c < 256; ++c)
        for (const size_t place : {0u, 5u, 31u, 32u, 63u})
        {
            std::string text(80, 'a');
            text[place] = static_cast<char>(c);
            Quiet(text);
        }
}

TEST(QuietText, RandomTextsAreTheSameBothWays)
{
    std::mt19937 random(7);
    for (int i = 0; i < 2000; ++i)
    {
        std::string text(random() % 200, ' ');
        for (char& c : text)
            c = random() % 40 == 0 ? static_cast<char>(random() % 256) : "ab _(;\n"[random() % 7];
        for (size_t from = 0; from <= text.size(); from += 1 + random() % 9)
            Quiet(text, from);
    }
}

} // namespace

} // namespace telv
