// SPDX-License-Identifier: MIT
// Definitions that files are given: what is seen of them is what copies made at the start would
// show, and a file holds no more of them than it asks for.
#include "tlMacroExpander/src/Frames/GivenNames.h"
#include "FrameSupport.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/Hints/NearName.h"
#include <random>
#include <set>

namespace telv::expander
{

namespace
{

void DefineMacro(VarFrame& frame, SubString name, SubString body)
{
    auto macro = std::make_unique<LSMacroVariable>(LSV_MACRO, name, nullptr, /*isPython=*/false,
                                                   /*naked=*/false, /*isFnArg=*/false);
    macro->SetSubstitutionString(body, /*copy=*/false, 0);
    frame.m_localVariables.Add(macro.release());
}

/// "null", or what kind of variable it is and its value.
std::string Shown(LSVariable* v)
{
    if (v == nullptr)
        return "null";
    StringStream os(64);
    os << (v->GetType() == LSV_MACRO ? "macro " : "value ");
    v->WriteValue(os);
    const xstring text = os.GetString();
    return std::string(text.begin(), text.end());
}

std::string FindIn(VarFrame& frame, SubString name)
{
    try
    {
        return Shown(frame.Find(name, name.begin()));
    }
    catch (const LexScannerException&)
    {
        return "ambiguous";
    }
}

std::string DollarIn(const FileScopeVarFrame& frame, SubString name)
{
    const xstring* const value = frame.FindDollarMacro(xstring(name));
    return value == nullptr ? "null" : std::string(value->begin(), value->end());
}

ssize_t CountVariables(const VarFrame& frame)
{
    ssize_t n = 0;
    for (const LSVariable* v = frame.m_localVariables.m_first; v != nullptr; v = v->m_next)
        ++n;
    return n;
}

/// What a frame is given, literally: copies of all, macros first.
void CopyAll(const FileScopeVarFrame& from, FileScopeVarFrame& to)
{
    for (const auto& [name, variable] : from.m_localVariables.m_map)
        if (variable->GetType() == LSV_MACRO)
            DefineMacro(to, name,
                        static_cast<const LSMacroVariable*>(variable)->GetSubstitutionString());
    for (const auto& [name, value] : from.m_dollarMacrosMap)
        to.InsertDollarMacro(name, value);
}

} // namespace

TEST(GivenNames, AreCopiedWhenTheyAreAskedFor)
{
    FileScopeVarFrame prelude;
    DefineMacro(prelude, "m", "body");
    DefineMacro(prelude, "other", "x");
    prelude.InsertDollarMacro("A", "1");
    GivenNames given;
    given.Give(prelude);
    FileScopeVarFrame file;
    given.MakeVisibleIn(file);
    EXPECT_EQ(CountVariables(file), 0);
    EXPECT_EQ(FindIn(file, "unknown"), "null");
    EXPECT_EQ(DollarIn(file, "A"), "1");
    EXPECT_EQ(DollarIn(file, "B"), "null");
    EXPECT_EQ(CountVariables(file), 0);
    EXPECT_EQ(FindIn(file, "m"), "macro body");
    EXPECT_EQ(FindIn(file, "m"), "macro body");
    EXPECT_EQ(CountVariables(file), 1);
    EXPECT_EQ(FindIn(file, "_A_"), "value 1");
    EXPECT_EQ(CountVariables(file), 2);
    EXPECT_EQ(file.m_localVariables.m_map.size(), 2);
    EXPECT_NE(file.m_localVariables.m_map.Lookup("m"), prelude.m_localVariables.m_map.Lookup("m"));
    std::set<std::string> names;
    FrameTree::Names(file).ForEachGivenName([&](SubString name)
                                            { names.emplace(name.begin(), name.end()); });
    EXPECT_EQ(names, (std::set<std::string>{"_A_", "m", "other"}));
    EXPECT_EQ(CountVariables(file), 2);
}

// Names that are given compete with a file's own, in one order; only what is meant is copied.
TEST(GivenNames, AreOfferedAsTheNearestName)
{
    FileScopeVarFrame prelude;
    DefineMacro(prelude, "lengtha", "x");
    DefineMacro(prelude, "lengthc", "x");
    DefineMacro(prelude, "other", "x");
    prelude.InsertDollarMacro("WIDTH", "x");
    GivenNames given;
    given.Give(prelude);
    FileScopeVarFrame file;
    given.MakeVisibleIn(file);
    file.AddImport(&prelude);
    const auto nearest = [&](const char* word)
    {
        NearName near{SubString(word)};
        near.OfferVisible(file);
        return std::string(near.Best().begin(), near.Best().end());
    };
    EXPECT_EQ(nearest("_WIDHT_"), "_WIDTH_");
    EXPECT_EQ(nearest("lengthx"), "lengtha");
    EXPECT_EQ(CountVariables(file), 2);
    DefineMacro(file, "lengthb", "x");
    EXPECT_EQ(nearest("lengthx"), "lengtha");
    DefineMacro(file, "length", "x");
    EXPECT_EQ(nearest("lengthx"), "length");
    EXPECT_EQ(nearest("nothing_like_it"), "");
}

TEST(GivenNames, AreSeenByListsChildrenAndEntries)
{
    FileScopeVarFrame prelude;
    DefineMacro(prelude, "m", "body");
    GivenNames given;
    given.Give(prelude);
    {
        FileScopeVarFrame file;
        given.MakeVisibleIn(file);
        EXPECT_EQ(Shown(file.m_localVariables.Find("m")), "macro body");
    }
    {
        FileScopeVarFrame file;
        given.MakeVisibleIn(file);
        VarFrame child(&file);
        EXPECT_EQ(Shown(child.m_localVariables.Find("m")), "null");
        EXPECT_EQ(Shown(child.Find2("m")), "macro body");
    }
    {
        FileScopeVarFrame file;
        given.MakeVisibleIn(file);
        NameTable& names = FrameTree::Names(file);
        EXPECT_TRUE(names.BindsAny());
        EXPECT_TRUE(names.MayBeBound(SubString("m")));
        NameEntry* const entry = names.Intern("m", NameTable::HashOf("m"));
        EXPECT_TRUE(names.MayBeBound(*entry));
        EXPECT_EQ(Shown(names.Find(&file, *entry, nullptr)), "macro body");
    }
    {
        FileScopeVarFrame file;
        given.MakeVisibleIn(file);
        FileScopeVarFrame importer;
        given.MakeVisibleIn(importer);
        importer.AddImport(&file);
        EXPECT_EQ(FindIn(importer, "m"), "macro body");
    }
}

TEST(GivenNames, StayWhenTheTableForgetsWhatNobodyNeeds)
{
    FileScopeVarFrame prelude;
    DefineMacro(prelude, "given", "body");
    GivenNames given;
    given.Give(prelude);
    FileScopeVarFrame file;
    given.MakeVisibleIn(file);
    NameTable& names = FrameTree::Names(file);
    for (int i = 0; i < 1000; ++i)
    {
        const std::string word = "word" + std::to_string(i);
        names.Intern(View(word), NameTable::HashOf(View(word)));
    }
    EXPECT_TRUE(names.MayBeBound(SubString("given")));
    EXPECT_EQ(FindIn(file, "given"), "macro body");
}

TEST(GivenNames, AFileSeesWhatWasGivenBeforeItBegan)
{
    FileScopeVarFrame first;
    DefineMacro(first, "m", "1");
    DefineMacro(first, "n", "1");
    first.InsertDollarMacro("A", "1");
    GivenNames given;
    given.Give(first);
    FileScopeVarFrame early;
    given.MakeVisibleIn(early);
    FileScopeVarFrame second;
    given.MakeVisibleIn(second);
    DefineMacro(second, "m", "2");
    second.m_localVariables.Add(new LSVar("n", "2"));
    second.InsertDollarMacro("A", "2");
    second.InsertDollarMacro("B", "2");
    given.Give(second);
    FileScopeVarFrame late;
    given.MakeVisibleIn(late);
    EXPECT_EQ(FindIn(early, "m") + FindIn(early, "n") + DollarIn(early, "A") + DollarIn(early, "B"),
              "macro 1macro 11null");
    EXPECT_EQ(FindIn(late, "m") + FindIn(late, "n") + DollarIn(late, "A") + DollarIn(late, "B"),
              "macro 2null22");
}

// Preludes, files that import one another, definitions and look-ups, against literal copies.
TEST(GivenNames, AreWhatCopiesWouldBe)
{
    const std::vector<SubString> names = {"a", "b", "c", "_X_", "_Y_", "d"};
    const std::vector<SubString> bodies = {"1", "2", "3"};
    for (unsigned seed = 0; seed < 300; ++seed)
    {
        std::mt19937 random(seed);
        const auto pick = [&](const std::vector<SubString>& of)
        { return of[random() % of.size()]; };
        const auto define = [&](FileScopeVarFrame& a, FileScopeVarFrame& b)
        {
            const SubString name = pick(names);
            const SubString body = pick(bodies);
            const auto kind = random() % 3;
            for (FileScopeVarFrame* frame : {&a, &b})
            {
                if (kind == 0)
                    DefineMacro(*frame, name, body);
                else if (kind == 1)
                    frame->m_localVariables.Add(new LSVar(name, body));
                else
                    frame->InsertDollarMacro(name == SubString("a") ? "X" : "Y", xstring(body));
            }
        };
        std::vector<std::unique_ptr<FileScopeVarFrame>> real;
        std::vector<std::unique_ptr<FileScopeVarFrame>> literal;
        GivenNames given;
        size_t prelude = 0;
        for (size_t i = 0; i < 8; ++i)
        {
            FileScopeVarFrame& r = *real.emplace_back(std::make_unique<FileScopeVarFrame>());
            FileScopeVarFrame& l = *literal.emplace_back(std::make_unique<FileScopeVarFrame>());
            if (i > 0)
            {
                given.MakeVisibleIn(r);
                r.AddImport(real[prelude].get());
                CopyAll(*literal[prelude], l);
                l.AddImport(literal[prelude].get());
            }
            for (size_t step = 0; step < 12; ++step)
            {
                if (random() % 3 == 0)
                    define(r, l);
                if (i > 0 && random() % 4 == 0)
                {
                    const size_t other = random() % i;
                    r.AddImport(real[other].get());
                    l.AddImport(literal[other].get());
                }
                const SubString name = pick(names);
                ASSERT_EQ(FindIn(r, name), FindIn(l, name)) << seed;
                ASSERT_EQ(Shown(r.m_localVariables.Find(name)),
                          Shown(l.m_localVariables.Find(name)));
                ASSERT_EQ(DollarIn(r, "X"), DollarIn(l, "X")) << seed;
                ASSERT_EQ(DollarIn(r, "Y"), DollarIn(l, "Y")) << seed;
            }
            if (i == 0 || random() % 3 == 0)
            {
                given.Give(r);
                prelude = i;
            }
        }
    }
}

} // namespace telv::expander
