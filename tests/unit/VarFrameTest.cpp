// SPDX-License-Identifier: MIT
// Frames and their parents: where names are found, how long definitions live, and dumps.
#include "FrameSupport.h"
#include <algorithm>
#include <array>
#include <memory>

namespace telv::expander
{

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

TEST(VarFrame, ThatJoinsAFileLateTakesNothingOfItAlong)
{
    FileScopeVarFrame file;
    {
        VarFrame first(nullptr);
        Define(first, "x", "late");
        first.m_fileScopeFrame = &file; // which knows no name at all
    }
    Define(file, "x", "of the file");
    for (const char* const name : {"other", "x"})
    {
        VarFrame late(nullptr);
        Define(late, name, "late");
        late.m_fileScopeFrame = &file;
    }
    EXPECT_EQ(Find(file, "x"), "of the file");
    EXPECT_EQ(Find(file, "other"), "none");
}

} // namespace telv::expander
