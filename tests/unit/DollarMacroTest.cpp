// SPDX-License-Identifier: MIT
// Dollar macros: their form, substitution pass by pass, the import graph, and what would not end.
#include "ExpanderSupport.h"
#include <array>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>

namespace telv::expander
{

namespace
{

/// "NAME REST", or "none".
std::string Scanned(const std::string& text)
{
    SubString name("untouched");
    const char* const behind = ScanDollarMacro(View(text), name);
    if (behind == nullptr)
        return "none";
    return Str(name) + " " + Str(SubString(behind, View(text).end()));
}

using Definitions = std::vector<std::pair<std::string, std::string>>;

void Insert(FileScopeVarFrame& frame, const Definitions& macros)
{
    for (const auto& [name, value] : macros)
        frame.InsertDollarMacro(View(name), View(value));
}

/// What becomes of `text`; the message of an error.
std::string Applied(const FileScopeVarFrame& frame, const std::string& text)
{
    xstring s(View(text));
    try
    {
        const bool changed = frame.ApplyDollarMacros(s);
        EXPECT_EQ(changed, Str(s) != text) << text;
    }
    catch (const ExpansionLimitException& e)
    {
        EXPECT_EQ(e.m_pos, nullptr);
        return "error: " + Str(e.m_description);
    }
    return Str(s);
}

std::string Applied(const Definitions& macros, const std::string& text)
{
    FileScopeVarFrame frame;
    Insert(frame, macros);
    return Applied(frame, text);
}

std::string OnePass(const FileScopeVarFrame& frame, const std::string& text, bool replaced)
{
    return Written([&](xostream& os)
                   { EXPECT_EQ(frame.ApplyDollarMacros(os, View(text)), replaced) << text; });
}

std::string ValueIn(const FileScopeVarFrame& frame, const char* name)
{
    const xstring* const value = frame.FindDollarMacro(name);
    return value == nullptr ? "none" : Str(*value);
}

} // namespace

TEST(DollarMacro, Form)
{
    const struct
    {
        const char* m_text;
        const char* m_scanned;
    } rows[] = {
        {"$(A)", "A "},
        {"$(ROOT)/lib", "ROOT /lib"},
        {"$(_a1)$(b)", "_a1 $(b)"},
        {"$(\xc3\xa9)", "\xc3\xa9 "},
        {"", "none"},
        {"$", "none"},
        {"$(A", "none"},
        {"$()", "none"},
        {"$()x", "none"},
        {"$(A]", "none"},
        {"$(1x)", "none"},
        {"$(ROOT )", "none"},
        {"$( ROOT)", "none"},
        {"$ (ROOT)", "none"},
        {" $(ROOT)", "none"},
        {"$$(A)", "none"},
        {"$[A]", "none"},
        {"$(A.B)", "none"},
        {"$($(A))", "none"},
        {"x(A)", "none"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Scanned(row.m_text), row.m_scanned) << row.m_text;
}

TEST(DollarMacro, NameIsLeftAloneWhenThereIsNone)
{
    SubString name("untouched");
    EXPECT_EQ(ScanDollarMacro("$(1)", name), nullptr);
    EXPECT_EQ(Str(name), "untouched");
}

TEST(DollarMacro, InsertedMacroIsAStringVariableToo)
{
    FileScopeVarFrame frame;
    frame.InsertDollarMacro("ROOT", "/usr");
    EXPECT_EQ(ValueIn(frame, "ROOT"), "/usr");
    const LSVariable* const v = frame.Find("_ROOT_", nullptr);
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->GetType(), LSV_STRING);
    EXPECT_EQ(Written([&](xostream& os) { v->WriteToStream(os); }), "_ROOT_ = /usr");
    EXPECT_EQ(frame.Find("ROOT", nullptr), nullptr);
    EXPECT_EQ(ValueIn(frame, "_ROOT_"), "none");
}

TEST(DollarMacro, LaterValueReplacesTheEarlier)
{
    FileScopeVarFrame frame;
    frame.InsertDollarMacro("A", "1");
    const LSVariable* const older = frame.Find("_A_", nullptr);
    frame.InsertDollarMacro("A", "2");
    EXPECT_EQ(ValueIn(frame, "A"), "2");
    EXPECT_EQ(frame.m_dollarMacrosMap.size(), 1u);
    const LSVariable* const newer = frame.Find("_A_", nullptr);
    EXPECT_EQ(Written([&](xostream& os) { newer->WriteValue(os); }), "2");
    EXPECT_EQ(newer->m_next, older);
}

TEST(DollarMacro, NamesAndValuesAreCopied)
{
    FileScopeVarFrame frame;
    {
        const xstring name("A_NAME_LONG_ENOUGH_FOR_THE_HEAP");
        const xstring value("a value that is long enough for the heap");
        frame.InsertDollarMacro(name, value);
    }
    EXPECT_EQ(Applied(frame, "$(A_NAME_LONG_ENOUGH_FOR_THE_HEAP)"),
              "a value that is long enough for the heap");
    EXPECT_NE(frame.Find("_A_NAME_LONG_ENOUGH_FOR_THE_HEAP_", nullptr), nullptr);
}

TEST(DollarMacro, OnePassReplacesOnce)
{
    FileScopeVarFrame frame;
    Insert(frame, {{"A", "$(B)"}, {"B", "b"}, {"E", ""}});
    EXPECT_EQ(OnePass(frame, "", false), "");
    EXPECT_EQ(OnePass(frame, "text", false), "text");
    EXPECT_EQ(OnePass(frame, "$(X) $(B )$", false), "$(X) $(B )$");
    EXPECT_EQ(OnePass(frame, "$(A)", true), "$(B)");
    EXPECT_EQ(OnePass(frame, "<$(B)$(X)$(A)>", true), "<b$(X)$(B)>");
    EXPECT_EQ(OnePass(frame, "$$(B)$", true), "$b$");
    EXPECT_EQ(OnePass(frame, "$($(B))", true), "$(b)");
    EXPECT_EQ(OnePass(frame, "[$(E)]", true), "[]");
}

TEST(DollarMacro, Substitution)
{
    const Definitions macros = {
        {"ROOT", "/usr"}, {"LIB", "$(ROOT)/lib"}, {"SO", "$(LIB)/x.so"}, {"E", ""},
        {"N", "ROOT"},    {"OPEN", "$("},         {"UNKNOWN", "$(NOPE)"}};
    const struct
    {
        const char* m_text;
        const char* m_result;
    } rows[] = {
        {"", ""},
        {"no macro", "no macro"},
        {"$(ROOT)/lib", "/usr/lib"},
        {"$(ROOT )", "$(ROOT )"},
        {"$(1x)", "$(1x)"},
        {"$(NOPE)", "$(NOPE)"},
        {"$(LIB)", "/usr/lib"},
        {"$(SO):$(ROOT):$(NOPE)", "/usr/lib/x.so:/usr:$(NOPE)"},
        {"a$(E)b", "ab"},
        {"$(UNKNOWN)", "$(NOPE)"},
        {"$($(N))", "/usr"},
        {"$(OPEN)ROOT)", "/usr"},
        {"$$(ROOT)", "$/usr"},
        {"\"$(ROOT)\\n\"", "\"/usr\\n\""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Applied(macros, row.m_text), row.m_result) << row.m_text;
}

TEST(DollarMacro, ValueThatChangesNothingVisibleIsNoChangeOfText)
{
    FileScopeVarFrame frame;
    frame.InsertDollarMacro("E", "");
    xstring s("$(E)");
    EXPECT_TRUE(frame.ApplyDollarMacros(s));
    EXPECT_TRUE(s.empty());
    EXPECT_FALSE(frame.ApplyDollarMacros(s));
}

TEST(DollarMacro, LongChain)
{
    FileScopeVarFrame frame;
    constexpr int last = 2000;
    for (int i = 0; i < last; ++i)
        frame.InsertDollarMacro(View("M" + std::to_string(i)),
                                View("<$(M" + std::to_string(i + 1) + ")>"));
    frame.InsertDollarMacro(View("M" + std::to_string(last)), "end");
    EXPECT_EQ(Applied(frame, "$(M0)"), std::string(last, '<') + "end" + std::string(last, '>'));
}

TEST(DollarMacro, ChainOfReferencesThatAreEachPutTogether)
{
    FileScopeVarFrame frame;
    constexpr int last = 50;
    frame.InsertDollarMacro("D", "$");
    for (int i = 0; i < last; ++i)
        frame.InsertDollarMacro(View("A" + std::to_string(i)),
                                View("x$(D)(A" + std::to_string(i + 1) + ")"));
    frame.InsertDollarMacro(View("A" + std::to_string(last)), "end");
    EXPECT_EQ(Applied(frame, "$(A0)"), std::string(last, 'x') + "end");
}

TEST(DollarMacro, ChainPutTogetherFromLongerText)
{
    FileScopeVarFrame frame;
    constexpr int last = 50;
    frame.InsertDollarMacro("D", "some more text$");
    for (int i = 0; i < last; ++i)
        frame.InsertDollarMacro(View("A" + std::to_string(i)),
                                View("$(D)(A" + std::to_string(i + 1) + ")"));
    frame.InsertDollarMacro(View("A" + std::to_string(last)), "end");
    std::string expected;
    for (int i = 0; i < last; ++i)
        expected += "some more text";
    EXPECT_EQ(Applied(frame, "$(A0)"), expected + "end");
}

TEST(DollarMacro, ValueThatHelpsToReferToItselfWhileTheTextGetsShorter)
{
    EXPECT_EQ(Applied({{"P", "$("}, {"X", "X)"}}, "$(P)$(P)$(P)$(X)"), "X)");
}

TEST(DollarMacro, GrowthIsNoticedAmongManyMacros)
{
    FileScopeVarFrame frame;
    for (int i = 0; i < 200; ++i)
        frame.InsertDollarMacro(View("UNUSED" + std::to_string(i)), "x");
    Insert(frame, {{"A", "$(D)(A)$(D)(A)"}, {"D", "$"}, {"V", "))$(V$(V"}});
    EXPECT_EQ(Applied(frame, "$(A)"), "error: Dollar macro A contains itself");
    EXPECT_EQ(Applied(frame, "$(V$(V))"), "error: Dollar macro V contains itself");
}

TEST(DollarMacro, UsedManyTimesIsNoRing)
{
    std::string uses;
    std::string values;
    for (int i = 0; i < 1000; ++i)
    {
        uses += "$(A)$(B)";
        values += "bb";
    }
    EXPECT_EQ(Applied({{"A", "$(B)"}, {"B", "b"}}, uses), values);
}

TEST(DollarMacro, Rings)
{
    const struct
    {
        const char* m_name;
        Definitions m_macros;
        const char* m_text;
        const char* m_first;
    } rows[] = {
        {"itself", {{"A", "$(A)"}}, "$(A)", "A"},
        {"itself and more", {{"A", "<$(A)>"}}, "x$(A)", "A"},
        {"itself twice", {{"A", "$(A)$(A)"}}, "$(A)", "A"},
        {"two", {{"A", "$(B)"}, {"B", "$(A)"}}, "$(A)", "A"},
        {"two, from the other", {{"A", "$(B)"}, {"B", "$(A)"}}, "$(B)", "B"},
        {"two, both used", {{"A", "$(B)"}, {"B", "$(A)"}}, "$(B)$(A)", "B"},
        {"three", {{"A", "1$(B)"}, {"B", "2$(C)"}, {"C", "3$(A)"}}, "$(C)", "C"},
        {"put together by two", {{"A", "$(D)(A)"}, {"D", "$"}}, "$(A)", "A"},
        {"put together, growing", {{"A", "$(D)(A)$(D)(A)x"}, {"D", "$"}}, "$(A)", "A"},
        {"put together by three", {{"A", "$(D)$(P)A)x"}, {"D", "$"}, {"P", "("}}, "$(A)", "A"},
        {"put together from the name", {{"A", "x$($(N))"}, {"N", "A"}}, "$(A)", "A"},
        {"values side by side", {{"V", "))$(V$(V"}}, "$(V$(V))", "V"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Applied(row.m_macros, row.m_text),
                  std::string("error: Dollar macro ") + row.m_first + " contains itself")
            << row.m_name;
}

TEST(DollarMacro, RingThatIsNotUsed)
{
    EXPECT_EQ(Applied({{"A", "$(A)"}, {"B", "b"}}, "$(B) $(A"), "b $(A");
}

TEST(DollarMacro, TextIsUnchangedAfterAnError)
{
    FileScopeVarFrame frame;
    Insert(frame, {{"A", "<$(A)>"}});
    xstring s("x $(A)");
    EXPECT_THROW(frame.ApplyDollarMacros(s), LexScannerException);
    EXPECT_EQ(Str(s), "x $(A)");
}

TEST(DollarMacro, ImportsAreAskedInOrderAndDepthFirst)
{
    std::array<FileScopeVarFrame, 5> f;
    f[0].AddImport(&f[1]);
    f[0].AddImport(&f[2]);
    f[1].AddImport(&f[3]);
    f[2].AddImport(&f[4]);
    f[4].InsertDollarMacro("A", "4");
    EXPECT_EQ(ValueIn(f[0], "A"), "4");
    f[2].InsertDollarMacro("A", "2");
    EXPECT_EQ(ValueIn(f[0], "A"), "2");
    f[3].InsertDollarMacro("A", "3");
    EXPECT_EQ(ValueIn(f[0], "A"), "3");
    f[1].InsertDollarMacro("A", "1");
    EXPECT_EQ(ValueIn(f[0], "A"), "1");
    f[0].InsertDollarMacro("A", "0");
    EXPECT_EQ(ValueIn(f[0], "A"), "0");
    EXPECT_EQ(ValueIn(f[2], "A"), "2");
    EXPECT_EQ(ValueIn(f[0], "B"), "none");
}

TEST(DollarMacro, OrderOfImportAndNotOfAddressesDecides)
{
    for (const bool isSwapped : {false, true})
    {
        std::array<FileScopeVarFrame, 3> f;
        FileScopeVarFrame& first = f[isSwapped ? 2 : 1];
        FileScopeVarFrame& second = f[isSwapped ? 1 : 2];
        first.InsertDollarMacro("A", "first");
        second.InsertDollarMacro("A", "second");
        f[0].AddImport(&first);
        f[0].AddImport(&second);
        EXPECT_EQ(ValueIn(f[0], "A"), "first");
    }
}

TEST(DollarMacro, FrameImportedWithoutItsFileIsNotAsked)
{
    FileScopeVarFrame imported;
    imported.InsertDollarMacro("A", "1");
    FileScopeVarFrame frame;
    frame.ImportFrame(&imported);
    EXPECT_EQ(ValueIn(frame, "A"), "none");
    EXPECT_NE(frame.Find("_A_", nullptr), nullptr);
}

TEST(DollarMacro, FilesThatImportEachOther)
{
    FileScopeVarFrame a;
    FileScopeVarFrame b;
    a.AddImport(&b);
    b.AddImport(&a);
    b.InsertDollarMacro("B", "b");
    EXPECT_EQ(ValueIn(a, "B"), "b");
    EXPECT_EQ(ValueIn(b, "NOPE"), "none");
}

TEST(DollarMacro, ImportedValueUsesTheImportersMacros)
{
    FileScopeVarFrame imported;
    imported.InsertDollarMacro("LIB", "$(ROOT)/lib");
    FileScopeVarFrame frame;
    frame.AddImport(&imported);
    frame.InsertDollarMacro("ROOT", "/opt");
    EXPECT_EQ(Applied(frame, "$(LIB)"), "/opt/lib");
    EXPECT_EQ(Applied(imported, "$(LIB)"), "$(ROOT)/lib");
}

TEST(DollarMacro, RingThroughAnImport)
{
    FileScopeVarFrame imported;
    imported.InsertDollarMacro("A", "$(B)");
    FileScopeVarFrame frame;
    frame.AddImport(&imported);
    frame.InsertDollarMacro("B", "$(A)");
    EXPECT_EQ(Applied(frame, "$(A)"), "error: Dollar macro A contains itself");
    EXPECT_EQ(Applied(imported, "$(A)"), "$(B)");
}

TEST(DollarMacro, WhatImportsKnowIsKeptUntilItChanges)
{
    FileScopeVarFrame deep;
    FileScopeVarFrame near;
    FileScopeVarFrame second;
    FileScopeVarFrame frame;
    near.AddImport(&deep);
    frame.AddImport(&near);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ValueIn(frame, "A"), "none");
    deep.InsertDollarMacro("A", "deep");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ValueIn(frame, "A"), "deep");
    deep.InsertDollarMacro("A", "changed");
    EXPECT_EQ(ValueIn(frame, "A"), "changed");
    second.InsertDollarMacro("A", "second");
    second.InsertDollarMacro("B", "second");
    frame.AddImport(&second);
    EXPECT_EQ(ValueIn(frame, "A"), "changed");
    EXPECT_EQ(ValueIn(frame, "B"), "second");
    near.InsertDollarMacro("B", "near");
    EXPECT_EQ(ValueIn(frame, "B"), "near");
    FileScopeVarFrame late;
    late.InsertDollarMacro("C", "late");
    deep.AddImport(&late);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ValueIn(frame, "C"), "late");
    frame.InsertDollarMacro("A", "own");
    EXPECT_EQ(ValueIn(frame, "A"), "own");
}

TEST(DollarMacro, AValueThatNeedsEachClosingBracket)
{
    const Definitions macros{{"A", "$(A"}};
    EXPECT_EQ(Applied(macros, "$(A)"), "$(A");
    EXPECT_EQ(Applied(macros, "$(A))"), "$(A");
    EXPECT_EQ(Applied(macros, "x$(A" + std::string(5'000, ')') + "y"), "x$(Ay");
    EXPECT_EQ(Applied({{"A", ""}}, "$(" + std::string(3, 'A') + ")$(A)$($(A)A)"), "$(AAA)");
}

/// Random values made of pieces of references, against passes that are run one by one.
TEST(DollarMacro, AllPassesGiveWhatTheSinglePassesGive)
{
    static constexpr const char* s_pieces[] = {"$(A)", "$(B)", "$(C)", "$", "(",
                                               ")",    "A",    "B",    "x"};
    std::minstd_rand random(1);
    const auto make = [&](size_t most)
    {
        std::string text;
        for (size_t left = random() % (most + 1); left > 0; --left)
            text += s_pieces[random() % std::size(s_pieces)];
        return text;
    };
    int ended = 0;
    for (int round = 0; round < 5'000; ++round)
    {
        FileScopeVarFrame frame;
        Insert(frame, {{"A", make(3)}, {"B", make(3)}, {"C", make(2)}});
        const std::string given = make(10);
        std::string plain = given;
        bool changes = true;
        for (int pass = 0; changes && pass < 50 && plain.size() < 10'000; ++pass)
            plain =
                Written([&](xostream& os) { changes = frame.ApplyDollarMacros(os, View(plain)); });
        if (changes)
            continue; // most likely for ever
        ++ended;
        EXPECT_EQ(Applied(frame, given), plain) << given;
    }
    EXPECT_GT(ended, 1'000);
}

TEST(DollarMacro, ErrorOfAnExpansionStandsAtTheString)
{
    Session session;
    session.m_frame.InsertDollarMacro("A", "<$(A)>");
    EXPECT_EQ(session.Expand("text \"x $(A)\""), "error: Dollar macro A contains itself @5");
    EXPECT_EQ(session.Expand("@assertfails(\"$(A)\")"),
              "error: Dollar macro A contains itself @13");
}

TEST(DollarMacro, OnlyDoubleQuotedStringsOfAnExpansion)
{
    Session session;
    session.m_frame.InsertDollarMacro("A", "a");
    EXPECT_EQ(session.Expand("$(A) '$(A)' \"$(A)\" \"$(B)\" // \"$(A)\""),
              "$(A) '$(A)' \"a\" \"$(B)\" // \"$(A)\"");
    EXPECT_EQ(session.Expand("@scope{\"$(A)\"} @quote(\"$(A)\")"), "\"a\" \"$(A)\"");
}

} // namespace telv::expander
