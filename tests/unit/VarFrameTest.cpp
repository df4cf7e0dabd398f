// Frames: ownership, look-ups through imports and parents, ambiguity, dumps. The answers must not
// depend on where frames lie in memory, so import graphs are tried in every order of addresses.
#include "ExpanderSupport.h"
#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <memory>

namespace telv::expander
{

namespace
{

/// Adds a string variable to `frame`. The value says where it was found.
LSVariable* Define(VarFrame& frame, const char* name, const char* value)
{
    auto* const v = new LSVar(name, value);
    frame.m_localVariables.Add(v);
    return v;
}

/// The value of what was found, "none", or the message of the error with its place in `name`.
template <class Operation>
std::string Found(Operation operation)
{
    try
    {
        const LSVariable* const v = operation();
        return v == nullptr ? "none" : Written([&](xostream& os) { v->WriteValue(os); });
    }
    catch (const LexScannerException& e)
    {
        return "error: " + Str(e.m_description);
    }
}

std::string Find(VarFrame& frame, const char* name)
{
    return Found([&] { return frame.Find(name, name); });
}

std::string FindLocal(VarFrame& frame, const char* name)
{
    return Found([&] { return frame.FindLocal(name, name); });
}

std::string Dump(const VarFrame& frame)
{
    return Written([&](xostream& os) { frame.WriteToStream(os); });
}

/// Destruction is counted.
struct Counted : LSVar
{
    Counted(const char* name, int& count) : LSVar(name, ""), m_count(count) {}
    ~Counted() override { ++m_count; }
    int& m_count;
};

/// Counts look-ups of a scope.
class Counting
{
public:
    Counting() : m_before(s_count) { SetStarted(); }
    ~Counting() { s_started = false; }
    long Count() const { return s_count - m_before; }

private:
    long m_before;
};

} // namespace

// Lists

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

// Frames and their parents

TEST(VarFrame, NewFrames)
{
    VarFrame alone(nullptr);
    EXPECT_EQ(alone.m_parent, nullptr);
    EXPECT_EQ(alone.m_fileScopeFrame, nullptr);
    FileScopeVarFrame file;
    EXPECT_EQ(file.m_parent, nullptr);
    EXPECT_EQ(file.m_fileScopeFrame, &file);
    EXPECT_TRUE(file.m_setOfFrames.empty());
    EXPECT_TRUE(file.m_setOfDirectFrames.empty());
    EXPECT_TRUE(file.m_imports.empty());
    EXPECT_TRUE(file.m_dollarMacrosMap.empty());
    VarFrame child(&file);
    VarFrame grandchild(&child);
    EXPECT_EQ(child.m_parent, &file);
    EXPECT_EQ(grandchild.m_parent, &child);
    EXPECT_EQ(child.m_fileScopeFrame, &file);
    EXPECT_EQ(grandchild.m_fileScopeFrame, &file);
    EXPECT_EQ(grandchild.m_localVariables.m_first, nullptr);
}

TEST(VarFrame, Assertions)
{
    FileScopeVarFrame file;
    VarFrame alone(nullptr);
    alignas(VarFrame) unsigned char room[sizeof(VarFrame)] = {};
    auto* const itself = reinterpret_cast<VarFrame*>(room);
    const struct
    {
        std::function<void()> m_operation;
        const char* m_condition;
    } rows[] = {
        {[&] { file.Find(SubString(), nullptr); }, "!name.empty()"},
        {[&] { file.Find2(SubString()); }, "!name.empty()"},
        {[&] { file.FindLocal(SubString(), nullptr); }, "!name.empty()"},
        {[&] { file.ImportFrame(nullptr); }, "vf"},
        {[&] { file.AddImport(nullptr); }, "md"},
        {[&] { VarFrame child(&alone); }, "m_fileScopeFrame"},
        {[&] { new (room) VarFrame(itself); }, "parent != this"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FailedAssertion(row.m_operation), AssertionIn("LSVariable", row.m_condition));
    EXPECT_TRUE(file.m_imports.empty());
}

TEST(VarFrame, OwnDefinitionHidesTheParents)
{
    FileScopeVarFrame file;
    Define(file, "x", "file");
    Define(file, "y", "file");
    VarFrame child(&file);
    VarFrame grandchild(&child);
    EXPECT_EQ(Find(grandchild, "x"), "file");
    Define(child, "x", "child");
    EXPECT_EQ(Find(grandchild, "x"), "child");
    EXPECT_EQ(Find(child, "x"), "child");
    EXPECT_EQ(Find(file, "x"), "file");
    EXPECT_EQ(Find(grandchild, "y"), "file");
    EXPECT_EQ(Find(grandchild, "z"), "none");
    Define(grandchild, "x", "grandchild");
    EXPECT_EQ(Find(grandchild, "x"), "grandchild");
    EXPECT_EQ(Str(SubString("x")), "x");
}

TEST(VarFrame, DefinitionsVanishWithTheirFrame)
{
    FileScopeVarFrame file;
    Define(file, "x", "file");
    int destroyed = 0;
    {
        VarFrame child(&file);
        child.m_localVariables.Add(new Counted("x", destroyed));
        child.m_localVariables.Add(new Counted("x", destroyed));
        child.m_localVariables.Add(new Counted("y", destroyed));
        EXPECT_EQ(Find(child, "y"), "");
    }
    EXPECT_EQ(destroyed, 3);
    EXPECT_EQ(Find(file, "x"), "file");
    VarFrame next(&file);
    EXPECT_EQ(Find(next, "x"), "file");
    EXPECT_EQ(Find(next, "y"), "none");
}

TEST(VarFrame, SiblingsAliveAtTheSameTimeDoNotSeeEachOther)
{
    FileScopeVarFrame file;
    VarFrame caller(&file);
    VarFrame callee(&caller);
    VarFrame argument(&caller);
    Define(callee, "a", "callee");
    EXPECT_EQ(Find(argument, "a"), "none");
    Define(argument, "a", "argument");
    VarFrame inner(&argument);
    EXPECT_EQ(Find(inner, "a"), "argument");
    EXPECT_EQ(Find(callee, "a"), "callee");
    EXPECT_EQ(Find(caller, "a"), "none");
    Define(caller, "a", "caller");
    EXPECT_EQ(Find(inner, "a"), "argument");
    EXPECT_EQ(Find(callee, "a"), "callee");
    EXPECT_EQ(Find(caller, "a"), "caller");
}

TEST(VarFrame, FrameWithoutAFile)
{
    VarFrame alone(nullptr);
    Define(alone, "x", "alone");
    FileScopeVarFrame file;
    Define(file, "y", "file");
    EXPECT_EQ(Find(alone, "x"), "alone");
    EXPECT_EQ(Find(alone, "y"), "none");
    alone.ImportFrame(&file);
    EXPECT_EQ(Find(alone, "y"), "file");
    EXPECT_EQ(Found([&] { return alone.Find2("y"); }), "none");
}

TEST(VarFrame, Find2LooksInParentsButNotInImports)
{
    FileScopeVarFrame imported;
    Define(imported, "i", "imported");
    Define(imported, "x", "imported");
    FileScopeVarFrame file;
    file.AddImport(&imported);
    Define(file, "x", "file");
    VarFrame child(&file);
    EXPECT_EQ(Found([&] { return child.Find2("x"); }), "file");
    EXPECT_EQ(Found([&] { return child.Find2("i"); }), "none");
    EXPECT_EQ(Find(child, "i"), "imported");
    Define(child, "x", "child");
    EXPECT_EQ(Found([&] { return child.Find2("x"); }), "child");
}

TEST(VarFrame, FindLocalLooksInImportsButNotInParents)
{
    FileScopeVarFrame imported;
    Define(imported, "i", "imported");
    FileScopeVarFrame file;
    file.AddImport(&imported);
    Define(file, "x", "file");
    VarFrame child(&file);
    EXPECT_EQ(FindLocal(file, "i"), "imported");
    EXPECT_EQ(FindLocal(file, "x"), "file");
    EXPECT_EQ(FindLocal(child, "i"), "none");
    EXPECT_EQ(FindLocal(child, "x"), "none");
}

TEST(VarFrame, CountsEveryListThatIsAsked)
{
    FileScopeVarFrame imported;
    Define(imported, "i", "imported");
    FileScopeVarFrame file;
    file.AddImport(&imported);
    VarFrame child(&file);
    VarFrame grandchild(&child);
    const struct
    {
        std::function<LSVariable*()> m_operation;
        long m_lists;
    } rows[] = {
        {[&] { return grandchild.Find2("none"); }, 3}, // its own, child, file
        {[&] { return grandchild.Find("none", nullptr); }, 4},
        {[&] { return grandchild.Find("i", nullptr); }, 4},
        {[&] { return grandchild.FindLocal("i", nullptr); }, 1},
        {[&] { return file.FindLocal("i", nullptr); }, 2},
        {[&] { return imported.Find("i", nullptr); }, 1},
    };
    for (const auto& row : rows)
    {
        const Counting counting;
        row.m_operation();
        EXPECT_EQ(counting.Count(), row.m_lists) << &row - rows;
    }
}

// Imports

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

// Dumps

TEST(VarFrame, Dump)
{
    FileScopeVarFrame imported;
    Define(imported, "i", "1");
    FileScopeVarFrame file;
    EXPECT_EQ(Dump(file), "{\n    Local vars\n    {\n    }\n    Parent frame\n}\n");
    file.AddImport(&imported);
    Define(file, "x", "1");
    Define(file, "x", "2");
    EXPECT_EQ(Dump(file), "{\n"
                          "    Local vars\n"
                          "    {\n"
                          "        x = 2\n"
                          "        x = 1\n"
                          "    }\n"
                          "    Parent frame\n"
                          "}\n");
    VarFrame child(&file);
    Define(child, "y", "3");
    EXPECT_EQ(Dump(child), "{\n"
                           "    Local vars\n"
                           "    {\n"
                           "        y = 3\n"
                           "    }\n"
                           "    Parent frame\n"
                           "    {\n"
                           "        Local vars\n"
                           "        {\n"
                           "            x = 2\n"
                           "            x = 1\n"
                           "        }\n"
                           "        Parent frame\n"
                           "    }\n"
                           "}\n");
}

TEST(VarFrame, DeepChainOfParents)
{
    FileScopeVarFrame file;
    Define(file, "x", "file");
    std::vector<std::unique_ptr<VarFrame>> chain;
    VarFrame* frame = &file;
    for (int i = 0; i < 20000; ++i)
    {
        chain.push_back(std::make_unique<VarFrame>(frame));
        frame = chain.back().get();
        if (i % 1000 == 0)
            Define(*frame, "x", std::to_string(i).c_str());
        Define(*frame, "local", std::to_string(i).c_str());
    }
    EXPECT_EQ(Find(*frame, "x"), "19000");
    EXPECT_EQ(Find(*chain[18500], "x"), "18000");
    EXPECT_EQ(Find(*chain[12345], "local"), "12345");
    while (!chain.empty())
        chain.pop_back();
    EXPECT_EQ(Find(file, "x"), "file");
    EXPECT_EQ(Find(file, "local"), "none");
}

} // namespace telv::expander
