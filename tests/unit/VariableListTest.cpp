// SPDX-License-Identifier: MIT
// Lists of variables: ownership, hiding, order, counting.
#include "FrameSupport.h"
#include <algorithm>
#include <array>
#include <memory>

namespace telv::expander
{

TEST(VariableList, AddAndFind)
{
    LSVariableList list;
    EXPECT_EQ(list.m_first, nullptr);
    EXPECT_EQ(list.Find("a"), nullptr);
    LSVariable* const a = new LSVar("a", "1");
    LSVariable* const b = new LSVar("b", "2");
    list.Add(a);
    list.Add(b);
    EXPECT_EQ(list.Find("a"), a);
    EXPECT_EQ(list.Find("b"), b);
    EXPECT_EQ(list.Find("c"), nullptr);
    EXPECT_EQ(list.m_first, b);
    EXPECT_EQ(b->m_next, a);
    EXPECT_EQ(a->m_next, nullptr);
    EXPECT_EQ(list.m_map.size(), 2);
}

TEST(VariableList, LaterVariableOfANameIsVisibleAndTheEarlierStaysAlive)
{
    int destroyed = 0;
    {
        LSVariableList list;
        LSVariable* const older = new Counted("x", destroyed);
        LSVariable* const newer = new Counted("x", destroyed);
        list.Add(older);
        list.Add(newer);
        EXPECT_EQ(list.Find("x"), newer);
        EXPECT_EQ(newer->m_next, older);
        EXPECT_EQ(list.m_map.size(), 1);
        EXPECT_EQ(destroyed, 0);
        EXPECT_EQ(Str(older->m_name), "x");
    }
    EXPECT_EQ(destroyed, 2);
}

TEST(VariableList, MapIsOrderedByName)
{
    LSVariableList list;
    for (const char* name : {"m", "_", "Z", "a", "ab", "a1", "\xc3\xa9"})
        list.Add(new LSVar(name, ""));
    std::string names;
    for (auto it = list.m_map.begin(); it != list.m_map.end(); ++it)
        names += Str(it->first) + " ";
    EXPECT_EQ(names, "Z _ a a1 ab m \xc3\xa9 ");
    ASSERT_NE(list.m_map.find("ab"), list.m_map.end());
    EXPECT_EQ(list.m_map.find("ab")->second, list.Find("ab"));
    EXPECT_EQ(list.m_map.find("none"), list.m_map.end());
}

TEST(VariableList, ManyVariables)
{
    LSVariableList list;
    for (int i = 0; i < 3000; ++i)
        list.Add(new LSVar(ToString(i % 1000), ToString(i)));
    EXPECT_EQ(list.m_map.size(), 1000);
    for (int i = 0; i < 1000; ++i)
    {
        const LSVariable* const v = list.Find(ToString(i));
        ASSERT_NE(v, nullptr);
        EXPECT_EQ(Written([&](xostream& os) { v->WriteValue(os); }), std::to_string(2000 + i));
    }
}

TEST(VariableList, Assertions)
{
    LSVariableList list;
    const auto unnamed = std::make_unique<LSVar>("", "1");
    EXPECT_EQ(FailedAssertion([&] { list.Add(nullptr); }), AssertionIn("LSVariable", "v"));
    EXPECT_EQ(FailedAssertion([&] { list.Add(unnamed.get()); }),
              AssertionIn("LSVariable", "!v->m_name.empty()"));
    EXPECT_EQ(FailedAssertion([&] { list.Find(SubString()); }),
              AssertionIn("LSVariable", "!name.empty()"));
}

TEST(VariableList, Dump)
{
    LSVariableList list;
    EXPECT_EQ(Written([&](xostream& os) { list.WriteToStream(os); }), "{\n}\n");
    list.Add(new LSVar("a", "1"));
    auto* const f = new LSMacroVariable(LSV_MACRO, "f", nullptr, false, false, false);
    f->m_argNames.push_back(LSFormalArg{"x", LSV_INT, false});
    f->SetSubstitutionString("<x>", false, 0);
    list.Add(f);
    list.Add(new LSVar("a", "2"));
    EXPECT_EQ(Written([&](xostream& os) { list.WriteToStream(os); }),
              "{\n    a = 2\n    f(x) = <x>\n    a = 1\n}\n");
}

TEST(VariableList, LookUpsAreCountedOnceStarted)
{
    LSVariableList list;
    list.Add(new LSVar("a", "1"));
    const long before = s_count;
    EXPECT_FALSE(s_started);
    list.Find("a");
    EXPECT_EQ(s_count, before);
    {
        const Counting counting;
        EXPECT_TRUE(s_started);
        list.Find("a");
        list.Find("none");
        EXPECT_EQ(counting.Count(), 2);
    }
    list.Find("a");
    EXPECT_EQ(s_count, before + 2);
}

} // namespace telv::expander
