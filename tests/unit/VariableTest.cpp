// SPDX-License-Identifier: MIT
// Variables: what they hold, what they own, and their written forms.
#include "ExpanderSupport.h"
#include <gtest/gtest.h>
#include <memory>

namespace telv::expander
{

namespace
{

std::string Described(const LSVariable& v)
{
    return Written([&](xostream& os) { v.WriteToStream(os); });
}

std::string ValueOf(const LSVariable& v)
{
    return Written([&](xostream& os) { v.WriteValue(os); });
}

std::string Signature(const LSMacroVariable& v)
{
    return Written([&](xostream& os) { v.WriteNameAndFormalParameterList(os); });
}

LSMacroVariable& AddArgs(LSMacroVariable& macroVar, std::initializer_list<const char*> names)
{
    for (const char* name : names)
        macroVar.m_argNames.push_back(LSFormalArg{name, LSV_MACRO, false});
    return macroVar;
}

} // namespace

TEST(Variable, NewValueVariable)
{
    const std::string name = "count";
    const std::string value = "42";
    const LSValueVariable v(LSV_INT, View(name), View(value));
    EXPECT_EQ(v.m_name.begin(), name.data());
    EXPECT_EQ(v.m_name.end(), name.data() + name.size());
    EXPECT_EQ(v.m_next, nullptr);
    EXPECT_EQ(v.m_type, LSV_INT);
    EXPECT_EQ(Str(v.m_value), "42");
    EXPECT_NE(v.m_value.begin(), value.data());
}

TEST(Variable, TypeOfAValueIsItsOwn)
{
    for (ELSVariable type : {LSV_BOOL, LSV_INT, LSV_DOUBLE, LSV_CHAR, LSV_STRING})
        EXPECT_EQ(LSValueVariable(type, "x", "").GetType(), type);
}

TEST(Variable, WrittenFormsOfAValue)
{
    const LSValueVariable v(LSV_STRING, "title", "a \"b\"\nc");
    EXPECT_EQ(Described(v), "title = a \"b\"\nc");
    EXPECT_EQ(ValueOf(v), "a \"b\"\nc");
    const LSValueVariable empty(LSV_STRING, "none", "");
    EXPECT_EQ(Described(empty), "none = ");
    EXPECT_EQ(ValueOf(empty), "");
}

TEST(Variable, ValueIsCopiedAndStays)
{
    auto text = std::make_unique<std::string>("a value long enough to be on the heap");
    const LSValueVariable v(LSV_STRING, "v", View(*text));
    text.reset();
    EXPECT_EQ(ValueOf(v), "a value long enough to be on the heap");
}

TEST(Variable, StringVariableOwnsItsName)
{
    auto name = std::make_unique<std::string>("a_name_long_enough_to_be_on_the_heap");
    auto value = std::make_unique<std::string>("value");
    const LSVar v(View(*name), View(*value));
    name.reset();
    value.reset();
    EXPECT_EQ(Str(v.m_name), "a_name_long_enough_to_be_on_the_heap");
    EXPECT_EQ(v.m_name.begin(), v.m_nameStr.begin());
    EXPECT_EQ(v.m_name.end(), v.m_nameStr.end());
    EXPECT_EQ(v.GetType(), LSV_STRING);
    EXPECT_EQ(v.m_next, nullptr);
    EXPECT_EQ(Described(v), "a_name_long_enough_to_be_on_the_heap = value");
}

TEST(Variable, NewMacro)
{
    FileScopeVarFrame frame;
    const LSMacroVariable v(LSV_DOUBLE, "f", &frame, true, false, true);
    EXPECT_EQ(Str(v.m_name), "f");
    EXPECT_EQ(v.m_next, nullptr);
    EXPECT_EQ(v.m_returnType, LSV_DOUBLE);
    EXPECT_EQ(v.m_context, &frame);
    EXPECT_TRUE(v.m_isPython && v.IsPython());
    EXPECT_FALSE(v.m_naked || v.IsNaked());
    EXPECT_TRUE(v.m_isFnArg);
    EXPECT_TRUE(v.m_argNames.empty());
    EXPECT_EQ(v.GetNumArgs(), 0);
    EXPECT_EQ(v.m_indentation, -1);
    EXPECT_TRUE(v.GetSubstitutionString().empty());
    const LSMacroVariable naked(LSV_MACRO, "g", nullptr, false, true, false);
    EXPECT_FALSE(naked.m_isPython || naked.IsPython());
    EXPECT_TRUE(naked.m_naked && naked.IsNaked());
    EXPECT_FALSE(naked.m_isFnArg);
    EXPECT_EQ(naked.m_context, nullptr);
}

TEST(Variable, TypeOfAMacroIsMacroWhateverItReturns)
{
    for (ELSVariable type : {LSV_MACRO, LSV_BOOL, LSV_INT, LSV_STRING})
        EXPECT_EQ(LSMacroVariable(type, "f", nullptr, false, false, false).GetType(), LSV_MACRO);
}

TEST(Variable, WrittenFormsOfAMacro)
{
    LSMacroVariable plain(LSV_MACRO, "m", nullptr, false, false, false);
    plain.SetSubstitutionString("body", false, 0);
    EXPECT_EQ(Signature(plain), "m");
    EXPECT_EQ(Described(plain), "m = body");
    EXPECT_EQ(ValueOf(plain), "body");

    LSMacroVariable withArgs(LSV_INT, "name", nullptr, false, false, false);
    AddArgs(withArgs, {"a", "b"});
    withArgs.m_argNames[0].m_type = LSV_INT;
    withArgs.m_argNames[1].m_isFnArg = true;
    withArgs.SetSubstitutionString("a + b", false, 0);
    EXPECT_EQ(Signature(withArgs), "name(a,b)");
    EXPECT_EQ(Described(withArgs), "name(a,b) = a + b");
    EXPECT_EQ(ValueOf(withArgs), "a + b");

    LSMacroVariable one(LSV_MACRO, "f", nullptr, false, false, false);
    EXPECT_EQ(Described(AddArgs(one, {"x"})), "f(x) = ");
}

TEST(Variable, BodyIsViewedOrCopied)
{
    const std::string body = "text";
    LSMacroVariable v(LSV_MACRO, "m", nullptr, false, false, false);
    v.SetSubstitutionString(View(body), /*copy=*/false, 4);
    EXPECT_EQ(v.GetSubstitutionString().begin(), body.data());
    EXPECT_EQ(v.m_indentation, 4);
    auto temporary = std::make_unique<std::string>("a body long enough to be on the heap");
    v.SetSubstitutionString(View(*temporary), /*copy=*/true, 8);
    temporary.reset();
    EXPECT_EQ(ValueOf(v), "a body long enough to be on the heap");
    EXPECT_EQ(v.m_indentation, 8);
    v.SetSubstitutionString(View(body), /*copy=*/false, 0);
    EXPECT_EQ(v.GetSubstitutionString().begin(), body.data());
    EXPECT_EQ(v.m_indentation, 0);
}

TEST(Variable, FindArgName)
{
    LSMacroVariable v(LSV_MACRO, "f", nullptr, false, false, false);
    EXPECT_EQ(v.FindArgName("x"), -1);
    AddArgs(v, {"x", "yy", "x", "z"});
    const struct
    {
        const char* m_name;
        ssize_t m_index;
    } rows[] = {{"x", 0}, {"yy", 1}, {"z", 3}, {"y", -1}, {"X", -1}, {"xx", -1}, {"", -1}};
    for (const auto& row : rows)
        EXPECT_EQ(v.FindArgName(row.m_name), row.m_index) << row.m_name;
}

TEST(Variable, DestroyedThroughItsBase)
{
    struct Counting : LSVariable
    {
        explicit Counting(int& count) : LSVariable("c"), m_count(count) {}
        ~Counting() override { ++m_count; }
        ELSVariable GetType() const override { return LSV_UNDEF; }
        void WriteToStream(xostream&) const override {}
        void WriteValue(xostream&) const override {}
        int& m_count;
    };
    int count = 0;
    std::unique_ptr<LSVariable> v = std::make_unique<Counting>(count);
    EXPECT_EQ(v->GetType(), LSV_UNDEF);
    v.reset();
    EXPECT_EQ(count, 1);
}

} // namespace telv::expander
