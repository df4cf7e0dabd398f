// SPDX-License-Identifier: MIT
// Matching brackets: scans with a cache give what scans without one give, and do not read twice.
#include "tlMacroExpander/src/Scan/BracketCache.h"
#include "ScannerSupport.h"
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace telv::scanner
{

namespace
{

using Random = std::minstd_rand;

struct BracketKind
{
    char m_character;
    EToken m_open;
    EToken m_close;
};

constexpr BracketKind s_kinds[] = {
    {'(', TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN},
    {'{', TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY},
    {'[', TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE},
};

/// A text of brackets, not always balanced, of strings and comments with brackets in them, and,
/// when `withErrors`, of what is no token.
std::string RandomText(Random& random, bool withErrors)
{
    static const char* const pieces[] = {
        "(",      ")",        "{",          "}",      "[",       "]",    "{",     "}",
        "(",      ")",        "{",          "}",      "name",    "a-1 ", ", ",    "1.5 ",
        "\")}\"", "'({' ",    "// ( } ]\n", "/*)*/",  "@// {\n", "@",    "\n   ", "r\"\\\"",
        " = ",    "@scope{ ", "}\r\n",      "f(x, y", "word ",   "a+b",  "0x1f ", "`"};
    static const char* const wrong[] = {"'", "\"a\\q\"", "1.x", "++=", "\x01", "/*"};
    std::string text;
    const unsigned count = 50 + static_cast<unsigned>(random()) % 800;
    for (unsigned i = 0; i < count; ++i)
    {
        if (withErrors && random() % 200 == 0)
            text += wrong[random() % std::size(wrong)];
        else
            text += pieces[random() % std::size(pieces)];
    }
    return text;
}

/// Everything that a scan tells: its result, where the view stands, the error.
std::string Outcome(SubString text, SubString s, const BracketKind& kind, BracketCache* cache)
{
    MatchingBracket found{nullptr, nullptr, nullptr};
    bool closed = false;
    const auto at = [&](const char* p) { return " " + std::to_string(p - text.begin()); };
    const std::string error = ErrorIn(
        text, [&] { closed = SkipToMatchingBracket(s, kind.m_open, kind.m_close, found, cache); });
    std::string outcome = error + at(s.begin());
    if (closed)
        outcome += at(found.m_close) + at(found.m_end) + at(found.m_lastEnd);
    return outcome;
}

/// The outermost of `depth` nested brackets is the first character.
std::string Nest(ssize_t depth)
{
    const size_t n = static_cast<size_t>(depth);
    return std::string(n, '{') + std::string(n, '}');
}

void CompareWithAndWithoutCache(const std::string& text, Random& random)
{
    BracketCache cache(View(text));
    for (int query = 0; query < 100; ++query)
    {
        const BracketKind& kind = s_kinds[random() % std::size(s_kinds)];
        const size_t start = text.find(kind.m_character, random() % text.size());
        if (start == std::string::npos)
            continue;
        SubString s(text.data() + start + 1, text.data() + text.size());
        if (random() % 3 == 0)
            s.m_p2 -= static_cast<ssize_t>(random()) % (s.size() + 1);
        ASSERT_EQ(Outcome(View(text), s, kind, &cache), Outcome(View(text), s, kind, nullptr))
            << text << "\nfrom " << start << " to " << s.m_p2 - text.data();
    }
}

} // namespace

TEST(BracketCache, RandomTextsGiveTheSame)
{
    Random random(1);
    for (int round = 0; round < 300; ++round)
        CompareWithAndWithoutCache(RandomText(random, /*withErrors=*/false), random);
}

TEST(BracketCache, RandomTextsWithErrorsGiveTheSame)
{
    Random random(2);
    for (int round = 0; round < 300; ++round)
        CompareWithAndWithoutCache(RandomText(random, /*withErrors=*/true), random);
}

TEST(BracketCache, FindsCloseEndAndLastToken)
{
    const SubString text("a {b} /* } */ c // }\n }x");
    SubString s(text);
    MatchingBracket found;
    ASSERT_TRUE(SkipToMatchingBracket(s, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, found, nullptr));
    EXPECT_EQ(found.m_close, text.begin() + 22);
    EXPECT_EQ(found.m_end, text.begin() + 23);
    EXPECT_EQ(found.m_lastEnd, text.begin() + 15);
    EXPECT_EQ(Str(s), "x");
}

TEST(BracketCache, WithoutTokensTheLastEndIsTheStart)
{
    SubString s("  }");
    const char* const start = s.begin();
    MatchingBracket found;
    ASSERT_TRUE(SkipToMatchingBracket(s, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, found, nullptr));
    EXPECT_EQ(found.m_lastEnd, start);
}

TEST(BracketCache, NotClosedStopsAtTheEnd)
{
    SubString s("a {b} ");
    MatchingBracket found;
    EXPECT_FALSE(SkipToMatchingBracket(s, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, found, nullptr));
    EXPECT_TRUE(s.empty());
}

TEST(BracketCache, ShortPairsAreNotRecorded)
{
    const std::string text = "{{a}{b}{{c}}}";
    BracketCache cache(View(text));
    Outcome(View(text), SubString(text.data() + 1, text.data() + text.size()), s_kinds[1], &cache);
    EXPECT_EQ(cache.size(), 0);
}

TEST(BracketCache, NestedPairsAreRecordedOnce)
{
    const std::string text = "{{" + std::string(1000, 'a') + "}}";
    BracketCache cache(View(text));
    const SubString outer(text.data() + 1, text.data() + text.size());
    const SubString inner(text.data() + 2, text.data() + text.size());
    Outcome(View(text), outer, s_kinds[1], &cache);
    EXPECT_EQ(cache.size(), 1);
    Outcome(View(text), outer, s_kinds[1], &cache);
    EXPECT_EQ(cache.size(), 1);
    MatchingBracket found;
    EXPECT_TRUE(cache.Find(inner, TOKEN_RIGHT_CURLY, found));
    EXPECT_EQ(found.m_close, text.data() + 1002);
    EXPECT_FALSE(cache.Find(inner, TOKEN_RIGHT_PAREN, found));
    EXPECT_FALSE(cache.Find(SubString(inner.begin(), found.m_close), TOKEN_RIGHT_CURLY, found));
}

TEST(BracketCache, OtherTextsAreLeftAlone)
{
    const std::string text = Nest(1000);
    const std::string other = Nest(1000);
    BracketCache cache(View(other));
    Outcome(View(text), SubString(text.data() + 1, text.data() + text.size()), s_kinds[1], &cache);
    EXPECT_EQ(cache.size(), 0);
}

TEST(BracketCache, OtherKindsAreNotRecorded)
{
    std::string text;
    for (int i = 0; i < 500; ++i)
        text += "< ";
    for (int i = 0; i < 500; ++i)
        text += "> ";
    BracketCache cache(View(text));
    SubString s(text.data() + 1, text.data() + text.size());
    MatchingBracket found;
    EXPECT_TRUE(SkipToMatchingBracket(s, TOKEN_LESS, TOKEN_GREATER, found, &cache));
    EXPECT_EQ(cache.size(), 0);
}

TEST(BracketCache, EveryLevelOfADeepNestIsFound)
{
    constexpr ssize_t depth = 100'000;
    const std::string text = Nest(depth);
    const char* const end = text.data() + text.size();
    BracketCache cache(View(text));
    for (ssize_t level = 0; level < depth; ++level)
    {
        SubString s(text.data() + level + 1, end);
        MatchingBracket found;
        ASSERT_TRUE(SkipToMatchingBracket(s, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, found, &cache));
        ASSERT_EQ(found.m_close, end - level - 1);
        ASSERT_EQ(s.begin(), end - level);
    }
}

TEST(BracketCache, LevelsDeeperThanRecordedAreFound)
{
    constexpr ssize_t depth = 300'000;
    const std::string text = Nest(depth);
    const char* const end = text.data() + text.size();
    BracketCache cache(View(text));
    for (ssize_t level = 0; level < depth; level += 777)
    {
        SubString s(text.data() + level + 1, end);
        MatchingBracket found;
        ASSERT_TRUE(SkipToMatchingBracket(s, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, found, &cache));
        ASSERT_EQ(found.m_close, end - level - 1);
    }
}

TEST(BracketCache, WhatAFullTableDoesNotHoldIsFound)
{
    // More pairs than any table holds, in nests that one scan records whole.
    constexpr ssize_t depth = 120'000;
    constexpr ssize_t nests = 30;
    std::string text = "{";
    for (ssize_t i = 0; i < nests; ++i)
        text += Nest(depth);
    text += "}";
    BracketCache cache(View(text));
    SubString all(text.data() + 1, text.data() + text.size());
    MatchingBracket found;
    ASSERT_TRUE(SkipToMatchingBracket(all, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, found, &cache));
    EXPECT_EQ(found.m_end, text.data() + text.size());
    EXPECT_LT(cache.size(), depth * (nests - 1));
    const ssize_t full = cache.size();
    for (ssize_t i = 0; i < nests; ++i)
    {
        const char* const nest = text.data() + 1 + i * 2 * depth;
        SubString s(nest + 1, text.data() + text.size());
        ASSERT_TRUE(SkipToMatchingBracket(s, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, found, &cache));
        EXPECT_EQ(found.m_close, nest + 2 * depth - 1);
    }
    EXPECT_EQ(cache.size(), full);
}

TEST(BracketCache, ErrorInsideIsFoundEveryTime)
{
    const std::string text = "{{" + std::string(500, 'a') + " 1.x }}";
    BracketCache cache(View(text));
    const SubString outer(text.data() + 1, text.data() + text.size());
    const std::string expected = Outcome(View(text), outer, s_kinds[1], nullptr);
    for (int repeat = 0; repeat < 3; ++repeat)
        EXPECT_EQ(Outcome(View(text), outer, s_kinds[1], &cache), expected);
    EXPECT_EQ(cache.size(), 0);
}

TEST(BracketCache, WhereNoCommentEndsIsKnownOfPartsThatOverlap)
{
    const std::string text(100, 'x');
    const auto part = [&](ssize_t from, ssize_t to)
    { return SubString(text.data() + from, text.data() + to); };
    BracketCache cache(part(0, 90));
    EXPECT_FALSE(cache.IsWithoutCommentEnd(part(0, 0)));
    cache.NoteWithoutCommentEnd(part(10, 20));
    EXPECT_TRUE(cache.IsWithoutCommentEnd(part(12, 20)));
    EXPECT_FALSE(cache.IsWithoutCommentEnd(part(9, 20)));
    cache.NoteWithoutCommentEnd(part(19, 30));
    EXPECT_TRUE(cache.IsWithoutCommentEnd(part(10, 30)));
    cache.NoteWithoutCommentEnd(part(30, 60)); // a comment may end across 30
    EXPECT_TRUE(cache.IsWithoutCommentEnd(part(30, 60)));
    EXPECT_FALSE(cache.IsWithoutCommentEnd(part(29, 31)));
    cache.NoteWithoutCommentEnd(part(70, 80));
    EXPECT_FALSE(cache.IsWithoutCommentEnd(part(70, 80)));
    cache.NoteWithoutCommentEnd(part(20, 100)); // goes beyond the cache's text
    EXPECT_TRUE(cache.IsWithoutCommentEnd(part(30, 60)));
    EXPECT_FALSE(cache.IsWithoutCommentEnd(part(30, 70)));
}

} // namespace telv::scanner
