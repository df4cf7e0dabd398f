// SPDX-License-Identifier: MIT
// Imports between frames. The answers must not depend on where frames lie in memory, so import
// graphs are tried in every order of addresses.
#include "FrameSupport.h"
#include <algorithm>
#include <array>
#include <memory>

namespace telv::expander
{

TEST(VarFrame, ImportFrameTakesWhatIsImportedAtThatMoment)
{
    FileScopeVarFrame a;
    FileScopeVarFrame b;
    FileScopeVarFrame c;
    FileScopeVarFrame d;
    b.ImportFrame(&c);
    a.ImportFrame(&b);
    EXPECT_EQ(a.m_setOfFrames.size(), 2);
    EXPECT_NE(a.m_setOfFrames.find(&b), a.m_setOfFrames.end());
    EXPECT_NE(a.m_setOfFrames.find(&c), a.m_setOfFrames.end());
    EXPECT_EQ(a.m_setOfDirectFrames.size(), 1);
    EXPECT_EQ(*a.m_setOfDirectFrames.begin(), &b);
    EXPECT_TRUE(a.m_imports.empty());

    b.ImportFrame(&d);
    Define(d, "x", "d");
    EXPECT_EQ(a.m_setOfFrames.size(), 2);
    EXPECT_EQ(Find(a, "x"), "none");
    EXPECT_EQ(Find(b, "x"), "d");
    a.ImportFrame(&b); // is there already: what b imports by now is not looked at
    EXPECT_EQ(a.m_setOfFrames.size(), 2);
    EXPECT_EQ(a.m_setOfDirectFrames.size(), 1);
    EXPECT_EQ(Find(a, "x"), "none");
}

TEST(VarFrame, FrameKnownThroughAnotherBecomesADirectOne)
{
    FileScopeVarFrame a;
    FileScopeVarFrame b;
    FileScopeVarFrame c;
    b.ImportFrame(&c);
    a.ImportFrame(&b);
    a.ImportFrame(&c);
    EXPECT_EQ(a.m_setOfFrames.size(), 2);
    EXPECT_EQ(a.m_setOfDirectFrames.size(), 2);
    EXPECT_NE(a.m_setOfDirectFrames.find(&c), a.m_setOfDirectFrames.end());
}

TEST(VarFrame, AddImportKeepsOrderAndRepeats)
{
    FileScopeVarFrame a;
    FileScopeVarFrame b;
    FileScopeVarFrame c;
    a.AddImport(&c);
    a.AddImport(&b);
    a.AddImport(&c);
    ASSERT_EQ(a.m_imports.size(), 3);
    EXPECT_EQ(a.m_imports[0], &c);
    EXPECT_EQ(a.m_imports[1], &b);
    EXPECT_EQ(a.m_imports[2], &c);
    EXPECT_EQ(a.m_setOfFrames.size(), 2);
    EXPECT_EQ(a.m_setOfDirectFrames.size(), 2);
}

TEST(VarFrame, SetsAreOrderedByAddress)
{
    std::array<FileScopeVarFrame, 20> frames;
    FileScopeVarFrame importer;
    for (const int i : {7, 3, 19, 0, 11, 5, 12, 2, 18, 1})
        importer.ImportFrame(&frames[static_cast<size_t>(i)]);
    EXPECT_EQ(importer.m_setOfFrames.size(), 10);
    EXPECT_TRUE(std::is_sorted(importer.m_setOfFrames.begin(), importer.m_setOfFrames.end()));
    EXPECT_EQ(importer.m_setOfFrames.find(&frames[4]), importer.m_setOfFrames.end());
}

TEST(VarFrame, ImportOfACurrentFrameGoesBeforeTheParent)
{
    FileScopeVarFrame imported;
    Define(imported, "x", "imported");
    FileScopeVarFrame file;
    Define(file, "x", "file");
    VarFrame child(&file);
    EXPECT_EQ(Find(child, "x"), "file");
    child.ImportFrame(&imported);
    EXPECT_EQ(Find(child, "x"), "imported");
    VarFrame grandchild(&child);
    EXPECT_EQ(Find(grandchild, "x"), "imported");
    Define(child, "x", "child");
    EXPECT_EQ(Find(grandchild, "x"), "child");
    EXPECT_EQ(Find(file, "x"), "file");
}

TEST(VarFrame, ImportsEndWithTheFrameThatHasThem)
{
    FileScopeVarFrame imported;
    Define(imported, "i", "imported");
    FileScopeVarFrame file;
    {
        VarFrame child(&file);
        child.ImportFrame(&imported);
        EXPECT_EQ(Find(child, "i"), "imported");
    }
    VarFrame next(&file);
    EXPECT_EQ(Find(next, "i"), "none");
}

TEST(VarFrame, DefinitionsMadeInAnImportLaterAreSeen)
{
    FileScopeVarFrame imported;
    FileScopeVarFrame file;
    file.AddImport(&imported);
    EXPECT_EQ(Find(file, "x"), "none");
    Define(imported, "x", "1");
    EXPECT_EQ(Find(file, "x"), "1");
    Define(imported, "x", "2");
    EXPECT_EQ(Find(file, "x"), "2");
    EXPECT_EQ(FindLocal(file, "x"), "2");
}

TEST(VarFrame, ImportedChildFrameIsSearchedWithItsParents)
{
    FileScopeVarFrame other;
    VarFrame block(&other);
    Define(other, "x", "other");
    FileScopeVarFrame file;
    file.ImportFrame(&block);
    EXPECT_EQ(Find(file, "x"), "other");
    Define(block, "x", "block");
    EXPECT_EQ(Find(file, "x"), "block");
}

TEST(VarFrame, TwoHitsThatNoDirectImportHasAreAnAssertion)
{
    FileScopeVarFrame other1;
    FileScopeVarFrame other2;
    Define(other1, "x", "1");
    Define(other2, "x", "2");
    VarFrame block1(&other1);
    VarFrame block2(&other2);
    FileScopeVarFrame file;
    file.ImportFrame(&block1);
    file.ImportFrame(&block2);
    EXPECT_EQ(FailedAssertion([&] { file.Find("x", nullptr); }), AssertionIn("LSVariable", "v"));
    EXPECT_EQ(FailedAssertion([&] { file.FindLocal("x", nullptr); }),
              AssertionIn("LSVariable", "v"));
}

TEST(VarFrame, PositionOfTheErrorIsThatOfTheUse)
{
    FileScopeVarFrame b;
    FileScopeVarFrame c;
    Define(b, "x", "b");
    Define(c, "x", "c");
    FileScopeVarFrame a;
    a.AddImport(&b);
    a.AddImport(&c);
    VarFrame child(&a);
    const char* const pos = "the place where x is used";
    try
    {
        child.Find("x", pos);
        FAIL() << "no error";
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(Str(e.m_description), "Ambiguous macro name : x");
        EXPECT_EQ(e.m_pos, pos);
        EXPECT_EQ(e.m_lineNumber, -1);
        EXPECT_TRUE(e.m_path.empty());
    }
}

namespace
{

/// An import graph of files A to E: "AB" is an import of B by A; the definitions are the files that
/// define x. Everything is looked up from A.
struct Graph
{
    const char* m_name;
    std::vector<std::string> m_imports;
    std::string m_definitions;
    std::string m_found;       ///< By Find.
    std::string m_amongDirect; ///< By FindInDirectImports.
};

const char* const s_ambiguous = "error: Ambiguous macro name : x";

const Graph s_graphs[] = {
    {"nothing imported", {}, "", "none", "none"},
    {"own definition alone", {}, "A", "A", "none"},
    {"one import", {"AB"}, "B", "B", "B"},
    {"name not defined in any import", {"AB", "AC"}, "", "none", "none"},
    {"own definition hides an import", {"AB"}, "AB", "A", "B"},
    {"own definition hides two imports that disagree", {"AB", "AC"}, "ABC", "A", s_ambiguous},
    {"one of two imports defines", {"AB", "AC"}, "C", "C", "C"},
    {"two imports define", {"AB", "AC"}, "BC", s_ambiguous, s_ambiguous},
    {"import of an import", {"BC", "AB"}, "C", "C", "C"},
    {"importing file hides what it imports", {"BC", "AB"}, "BC", "B", "B"},
    {"one definition by two ways", {"BD", "CD", "AB", "AC"}, "D", "D", "D"},
    {"hidden on both ways", {"BD", "CD", "AB", "AC"}, "BCD", s_ambiguous, s_ambiguous},
    {"hidden on one way, reached by the other",
     {"BD", "CD", "AB", "AC"},
     "BD",
     s_ambiguous,
     s_ambiguous},
    {"hidden on the only way", {"CD", "BC", "AB"}, "CD", "C", "C"},
    {"two definitions behind one import", {"BD", "BE", "AB"}, "DE", s_ambiguous, s_ambiguous},
    {"an import resolves what it imports", {"BD", "BE", "AB"}, "BDE", "B", "B"},
    {"hidden import that is imported directly too",
     {"BD", "AB", "AD"},
     "BD",
     s_ambiguous,
     s_ambiguous},
    {"same definition directly and by a way", {"BD", "AB", "AD"}, "D", "D", "D"},
    {"two imports with one definition each way",
     {"BD", "CE", "AB", "AC"},
     "DE",
     s_ambiguous,
     s_ambiguous},
    {"three imports, one definition", {"BE", "CE", "DE", "AB", "AC", "AD"}, "E", "E", "E"},
    {"long way", {"DE", "CD", "BC", "AB"}, "E", "E", "E"},
};

/// Looks x up in a graph whose files lie in memory in the given order.
void TryOrder(const Graph& graph, const std::array<size_t, 5>& order)
{
    std::array<FileScopeVarFrame, 5> frames;
    const auto file = [&](char letter) -> FileScopeVarFrame&
    { return frames[order[static_cast<size_t>(letter - 'A')]]; };
    for (const std::string& import : graph.m_imports)
        file(import[0]).AddImport(&file(import[1]));
    for (char letter : graph.m_definitions)
        Define(file(letter), "x", std::string(1, letter).c_str());

    FileScopeVarFrame& a = file('A');
    EXPECT_EQ(Find(a, "x"), graph.m_found);
    EXPECT_EQ(FindLocal(a, "x"), graph.m_found);
    EXPECT_EQ(Found([&] { return a.FindInDirectImports("x", nullptr); }), graph.m_amongDirect);
    VarFrame child(&a);
    VarFrame grandchild(&child);
    EXPECT_EQ(Find(grandchild, "x"), graph.m_found);
    {
        const Counting counting;
        EXPECT_EQ(Find(grandchild, "x"), graph.m_found) << "while counting";
    }
    Define(child, "x", "child");
    EXPECT_EQ(Find(grandchild, "x"), "child");
}

} // namespace

TEST(VarFrame, ImportGraphs)
{
    for (const Graph& graph : s_graphs)
    {
        SCOPED_TRACE(graph.m_name);
        std::array<size_t, 5> order = {0, 1, 2, 3, 4};
        do
            TryOrder(graph, order);
        while (std::next_permutation(order.begin(), order.end()));
    }
}

TEST(VarFrame, LadderOfImportsIsLinear)
{
    // Each pair of files imports both of the next: 2^40 ways to the last ones.
    std::array<std::array<FileScopeVarFrame, 2>, 40> ladder;
    for (size_t i = ladder.size() - 1; i-- > 0;)
    {
        for (FileScopeVarFrame& upper : ladder[i])
        {
            for (FileScopeVarFrame& lower : ladder[i + 1])
                upper.AddImport(&lower);
        }
    }
    FileScopeVarFrame& top = ladder[0][0];
    EXPECT_EQ(Find(top, "x"), "none");
    Define(ladder.back()[0], "x", "last");
    EXPECT_EQ(Find(top, "x"), "last");
    Define(ladder.back()[1], "x", "other");
    EXPECT_EQ(Find(top, "x"), s_ambiguous);
    EXPECT_EQ(top.FindDollarMacro("NOPE"), nullptr);
    const Counting counting;
    EXPECT_EQ(Find(top, "x"), s_ambiguous);
}

} // namespace telv::expander
