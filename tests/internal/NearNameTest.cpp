// SPDX-License-Identifier: MIT
// Names that are near a word: the distance against its plain definition, the index against a look
// at every name, and how much the index looks at.
#include "tlMacroExpander/src/Hints/NearName.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Hints/NearIndex.h"
#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace telv
{

namespace
{

SubString View(const std::string& s)
{
    return SubString(s.data(), s.data() + s.size());
}

std::string Text(SubString s)
{
    return s.empty() ? std::string() : std::string(s.begin(), s.end());
}

/// The definition, with a whole table.
int PlainDistance(const std::string& a, const std::string& b)
{
    std::vector<std::vector<int>> d(a.size() + 1, std::vector<int>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i)
        for (size_t j = 0; j <= b.size(); ++j)
        {
            if (i == 0 || j == 0)
            {
                d[i][j] = static_cast<int>(i + j);
                continue;
            }
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1,
                                d[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
        }
    return d[a.size()][b.size()];
}

std::string RandomName(std::mt19937& random, size_t longest)
{
    std::string name(1 + random() % longest, 'a');
    for (char& c : name)
        c = "abA"[random() % 3];
    return name;
}

TEST(NearName, DistanceIsThatOfTheDefinition)
{
    std::mt19937 random(1);
    for (int i = 0; i < 4000; ++i)
    {
        const std::string a = RandomName(random, 9);
        const std::string b = RandomName(random, 9);
        for (int most = 0; most <= s_mostDifferences; ++most)
            ASSERT_EQ(EditDistance(View(a), View(b), most), std::min(PlainDistance(a, b), most + 1))
                << a << ' ' << b << ' ' << most;
    }
}

/// A table of all their beginnings would have ten thousand times as many places.
TEST(NearName, LongNamesTakeNoMoreThanTheirLength)
{
    const std::string same(100'000, 'b');
    ssize_t places = 0;
    const auto distance = [&](const std::string& a, const std::string& b)
    {
        places = 0;
        return EditDistance(View(a), View(b), s_mostDifferences, places);
    };
    const ssize_t most = (2 * s_mostDifferences + 1) * (std::ssize(same) + 4);
    EXPECT_EQ(distance("a" + same, "x" + same), 1);
    EXPECT_LE(places, most);
    EXPECT_EQ(distance("ab" + same + "c", "ba" + same + "cd"), 2);
    EXPECT_LE(places, most);
    EXPECT_EQ(distance("abcd" + same, "efgh" + same), 4);
    EXPECT_LE(places, 100);
}

/// Frames of three files, the first of which imports the others, and of two invocations in it.
class NearIndexTest : public testing::Test
{
protected:
    NearIndexTest()
    {
        m_file.AddImport(&m_one);
        m_file.AddImport(&m_two);
    }

    void Define(VarFrame& frame, const std::string& name)
    {
        m_names.push_back(name);
        frame.m_localVariables.Add(new LSVar(View(m_names.back()), ""));
    }

    static std::string First(std::vector<std::string> near)
    {
        std::ranges::sort(near);
        return near.empty() ? std::string() : near.front();
    }

    FileScopeVarFrame m_one;
    FileScopeVarFrame m_two;
    FileScopeVarFrame m_file;
    VarFrame m_outer{&m_file};
    VarFrame m_inner{&m_outer};
    std::deque<std::string> m_names; ///< Of variables, which view them.
};

bool IsNear(const std::string& word, const std::string& name)
{
    const auto small = [](std::string s)
    {
        std::ranges::transform(s, s.begin(), LowerCase);
        return s;
    };
    return word != name && (PlainDistance(word, name) == 1 || small(word) == small(name));
}

TEST_F(NearIndexTest, FindsWhatALookAtEveryNameFinds)
{
    std::mt19937 random(2);
    VarFrame* const frames[] = {&m_one, &m_two, &m_file, &m_outer, &m_inner};
    NearIndex index;
    size_t found = 0;
    for (int i = 0; i < 300; ++i)
    {
        Define(*frames[random() % std::size(frames)], RandomName(random, 12));
        for (int j = 0; j < 20; ++j)
        {
            const std::string word = RandomName(random, 12);
            std::vector<std::string> near;
            for (const std::string& name : m_names)
                if (name.size() > 1 && IsNear(word, name))
                    near.push_back(name);
            ASSERT_EQ(Text(index.Find(m_inner, View(word))), First(near)) << word;
            found += near.empty() ? 0 : 1;
        }
    }
    EXPECT_GT(found, 500u);
}

TEST_F(NearIndexTest, LongNamesAreFoundToo)
{
    NearIndex index;
    char letter = 'h';
    for (const size_t length : {61u, 62u, 63u, 64u, 65u, 200u})
    {
        const std::string name(length, letter++);
        Define(m_one, name + "ab");
        for (const char* const end : {"b", "a", "xb", "ax", "ba", "axb", "xab", "abx", "AB"})
            EXPECT_EQ(Text(index.Find(m_inner, View(name + end))), name + "ab") << name << end;
        EXPECT_EQ(Text(index.Find(m_inner, View(name + "cd"))), "");
    }
}

TEST_F(NearIndexTest, OnlyVisibleNamesCount)
{
    NearIndex index;
    {
        VarFrame ended(&m_inner);
        Define(ended, "number");
        Define(m_one, "numbers");
        EXPECT_EQ(Text(index.Find(ended, View("numbr"))), "number");
        EXPECT_EQ(Text(index.Find(m_inner, View("numbr"))), "");
        EXPECT_EQ(Text(index.Find(m_inner, View("number"))), "numbers");
    }
    EXPECT_EQ(Text(index.Find(m_inner, View("numbr"))), "");
    EXPECT_EQ(Text(index.Find(m_two, View("number"))), "");
}

TEST_F(NearIndexTest, ManyWordsBesideManyNamesLookAtFew)
{
    NearIndex index;
    constexpr int count = 20000;
    for (int i = 0; i < count; ++i)
        Define(i % 2 == 0 ? m_file : m_one, "some" + std::to_string(i * 7919 % 1000003) + "name");
    for (int i = 0; i < count; ++i)
        index.Find(m_file, View("other" + std::to_string(i) + "word"));
    EXPECT_LT(index.Looks(), count);
    EXPECT_TRUE(index.MayLook());
}

/// All names are near all words: what the run spends is bounded.
TEST_F(NearIndexTest, WhatIsSpentIsBounded)
{
    NearIndex index;
    constexpr size_t letters = 10;
    for (unsigned bits = 1; bits < 1U << letters; ++bits)
    {
        std::string name(letters, 'n');
        for (size_t i = 0; i < letters; ++i)
            name[i] = (bits >> i & 1U) != 0 ? 'N' : 'n';
        Define(m_file, name);
    }
    const std::string word(letters, 'n');
    int words = 0;
    for (; index.MayLook() && words < 1'000'000; ++words)
        index.Find(m_file, View(word));
    EXPECT_LT(words, 1'000'000);
    EXPECT_EQ(Text(index.Find(m_file, View(word))), "");
}

/// The order of imports is that of addresses, which is another one in each run.
TEST_F(NearIndexTest, OfImportsTheFirstNameCounts)
{
    for (const bool swap : {false, true})
    {
        FileScopeVarFrame one;
        FileScopeVarFrame two;
        FileScopeVarFrame file;
        file.AddImport(&one);
        file.AddImport(&two);
        Define(swap ? two : one, "wordB");
        Define(swap ? one : two, "wordA");
        NearName near(SubString("wordX"));
        near.OfferVisible(file);
        EXPECT_EQ(Text(near.Best()), "wordA");
    }
}

} // namespace

} // namespace telv
