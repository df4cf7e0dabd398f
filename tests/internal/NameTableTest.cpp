// SPDX-License-Identifier: MIT
// The table of names: entries that are found again, kept and dropped; what they know of bindings
// and imports. That look-ups by entry find the right variable is compared with a model elsewhere.
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "FrameSupport.h"
#include <set>

namespace telv::expander
{

namespace
{

NameEntry* Intern(NameTable& names, const std::string& name)
{
    return names.Intern(View(name), NameTable::HashOf(View(name)));
}

NameEntry* Lookup(NameTable& names, const std::string& name)
{
    return names.Lookup(View(name), NameTable::HashOf(View(name)));
}

bool MayBeBound(VarFrame& frame, const std::string& name)
{
    NameTable& names = FrameTree::Names(frame);
    return names.MayBeBound(*Intern(names, name));
}

/// The value of what an entry stands for in `frame`.
std::string FindByEntry(VarFrame& frame, const std::string& name)
{
    NameTable& names = FrameTree::Names(frame);
    return Found([&] { return names.Find(&frame, *Intern(names, name), nullptr); });
}

/// Names of all lengths around the limits of comparison and storage, that differ in one place.
std::vector<std::string> SimilarNames()
{
    std::vector<std::string> names;
    for (const size_t length : {1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 20, 24, 25, 40, 300})
    {
        names.push_back(std::string(length, 'x'));
        for (size_t i = 0; i < length; ++i)
        {
            names.push_back(std::string(length, 'x'));
            names.back()[i] = 'y';
        }
    }
    return names;
}

} // namespace

TEST(NameTable, FindsEachNameAgain)
{
    FileScopeVarFrame file;
    NameTable& names = FrameTree::Names(file);
    std::set<NameEntry*> entries;
    const std::vector<std::string> words = SimilarNames();
    for (const std::string& word : words)
        EXPECT_EQ(Lookup(names, word), nullptr) << word;
    for (const std::string& word : words)
    {
        NameEntry* const entry = Intern(names, word);
        NameTable::AddRef(*entry);
        EXPECT_TRUE(entries.insert(entry).second) << word;
        EXPECT_EQ(entry->Hash(), NameTable::HashOf(View(word)));
    }
    for (const std::string& word : words)
    {
        const NameEntry* const entry = Intern(names, word);
        EXPECT_EQ(Str(entry->Name()), word);
        EXPECT_EQ(Lookup(names, word), entry);
    }
}

TEST(NameTable, KeepsTheCharactersOfNames)
{
    FileScopeVarFrame file;
    NameTable& names = FrameTree::Names(file);
    for (std::string word : {std::string("short"), std::string(100, 'l')})
    {
        const NameEntry* const entry = Intern(names, word);
        const std::string copy = word;
        word.assign(word.size(), '?');
        EXPECT_EQ(Str(entry->Name()), copy);
        EXPECT_EQ(Lookup(names, copy), entry);
    }
}

TEST(NameTable, KeepsWhatIsHeldOrBoundAndDropsTheRest)
{
    FileScopeVarFrame file;
    Define(file, "of_the_file", "1");
    VarFrame child(&file);
    Define(child, "of_the_child", "2");
    NameTable& names = FrameTree::Names(file);
    NameEntry* const held = Intern(names, "held");
    NameTable::AddRef(*held);
    NameEntry* const ofTheFile = Lookup(names, "of_the_file");
    NameEntry* const ofTheChild = Lookup(names, "of_the_child");
    for (int i = 0; i < 20'000; ++i)
        Intern(names,
               "passing" + std::to_string(i) + std::string(static_cast<size_t>(i % 40), 'x'));
    EXPECT_EQ(Lookup(names, "held"), held);
    EXPECT_EQ(Lookup(names, "of_the_file"), ofTheFile);
    EXPECT_EQ(Lookup(names, "of_the_child"), ofTheChild);
    int kept = 0;
    for (int i = 0; i < 20'000; ++i)
        kept += Lookup(names, "passing" + std::to_string(i) +
                                  std::string(static_cast<size_t>(i % 40), 'x')) != nullptr;
    EXPECT_LT(kept, 100);
    NameTable::Release(*held);
    for (int i = 0; i < 1'000; ++i)
        Intern(names, "passing" + std::to_string(i));
    EXPECT_EQ(Lookup(names, "held"), nullptr);
}

TEST(NameTable, HasASerialOfItsOwn)
{
    std::set<uint64> serials;
    for (int i = 0; i < 100; ++i)
    {
        const FileScopeVarFrame file;
        EXPECT_TRUE(serials.insert(FrameTree::Names(file).Serial()).second);
    }
}

TEST(NameTable, IsSharedByATree)
{
    FileScopeVarFrame file;
    FileScopeVarFrame other;
    VarFrame child(&file);
    VarFrame grandchild(&child);
    EXPECT_EQ(&FrameTree::Names(child), &FrameTree::Names(file));
    EXPECT_EQ(&FrameTree::Names(grandchild), &FrameTree::Names(file));
    EXPECT_NE(&FrameTree::Names(other), &FrameTree::Names(file));
}

TEST(NameTable, KnowsWhatNoFrameBinds)
{
    FileScopeVarFrame file;
    EXPECT_FALSE(MayBeBound(file, "x"));
    {
        VarFrame child(&file);
        Define(child, "x", "child");
        EXPECT_TRUE(MayBeBound(file, "x"));
        EXPECT_EQ(FindByEntry(file, "x"), "none");
        EXPECT_EQ(FindByEntry(child, "x"), "child");
    }
    EXPECT_FALSE(MayBeBound(file, "x"));
    Define(file, "x", "file");
    EXPECT_TRUE(MayBeBound(file, "x"));
    EXPECT_EQ(FindByEntry(file, "x"), "file");
    EXPECT_FALSE(MayBeBound(file, "y"));
}

TEST(NameTable, KnowsWhatNoImportProvides)
{
    FileScopeVarFrame imported;
    Define(imported, "x", "imported");
    FileScopeVarFrame file;
    file.AddImport(&imported);
    // Asking makes the index worth its while.
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(FindByEntry(file, "y"), "none");
    EXPECT_FALSE(MayBeBound(file, "y"));
    EXPECT_TRUE(MayBeBound(file, "x"));
    EXPECT_EQ(FindByEntry(file, "x"), "imported");
    Define(imported, "y", "later");
    EXPECT_TRUE(MayBeBound(file, "y"));
    EXPECT_EQ(FindByEntry(file, "y"), "later");
    Define(imported, "y", "again");
    EXPECT_EQ(FindByEntry(file, "y"), "again");
    Define(file, "y", "file");
    EXPECT_EQ(FindByEntry(file, "y"), "file");
}

TEST(NameTable, BindsByEntry)
{
    FileScopeVarFrame file;
    NameTable& names = FrameTree::Names(file);
    NameEntry* const entry = Intern(names, "x");
    NameTable::AddRef(*entry);
    FrameTree::AddBound(file, new LSVar("x", "file"), *entry);
    for (int i = 0; i < 3; ++i)
    {
        VarFrame child(&file);
        FrameTree::AddBound(child, new LSVar("x", "old"), *entry);
        FrameTree::AddBound(child, new LSVar("x", "new"), *entry);
        EXPECT_EQ(Find(child, "x"), "new");
        EXPECT_EQ(Find(file, "x"), "file");
        EXPECT_EQ(child.m_localVariables.m_map.size(), 1);
        EXPECT_EQ(child.m_localVariables.m_first->m_next->m_next, nullptr);
    }
    EXPECT_EQ(Find(file, "x"), "file");
    NameTable::Release(*entry);
}

/// Frames whose names are elsewhere in the tree, far from those that look names up.
TEST(NameTable, BranchesDoNotSeeEachOtherHoweverDeep)
{
    FileScopeVarFrame file;
    std::vector<std::unique_ptr<VarFrame>> frames;
    std::vector<VarFrame*> spine{&file};
    for (int i = 0; i < 300; ++i)
    {
        // A frame of the spine, and beside it a branch of two that binds the name.
        frames.push_back(std::make_unique<VarFrame>(spine.back()));
        spine.push_back(frames.back().get());
        frames.push_back(std::make_unique<VarFrame>(spine.back()));
        Define(*frames.back(), "k", std::to_string(i).c_str());
        frames.push_back(std::make_unique<VarFrame>(frames.back().get()));
        EXPECT_EQ(Find(*frames.back(), "k"), std::to_string(i));
        EXPECT_EQ(Find(*spine.back(), "k"), "none");
    }
    Define(*spine[100], "k", "spine"); // older than most that bind the name
    for (size_t i = 1; i < spine.size(); ++i)
        EXPECT_EQ(Find(*spine[i], "k"), i < 100 ? "none" : "spine") << i;
    while (frames.size() > 200)
    {
        EXPECT_EQ(Find(*frames.back(), "k"), std::to_string(frames.size() / 3 - 1));
        frames.resize(frames.size() - 3);
        EXPECT_EQ(Find(*frames[frames.size() - 3], "k"), frames.size() >= 300 ? "spine" : "none")
            << frames.size();
    }
    while (!frames.empty())
        frames.pop_back();
}

} // namespace telv::expander
