// SPDX-License-Identifier: MIT
// Invoking variables through the interface: assertions, naked macros, and how long what lives.
#include "ExpanderSupport.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include <gtest/gtest.h>
#include <memory>

namespace telv::expander
{

namespace
{

/// An expander over a text, at its beginning, in a frame of its own.
struct Direct
{
    explicit Direct(const std::string& text)
        : m_text(text), m_output(&m_os), m_expander(nullptr, &m_frame, View(m_text), 0, 0, m_output)
    {
    }

    std::string Output() const { return Str(m_os.GetString()); }

    /// As the main loop does for an identifier: scanned, and the text before it written.
    LSVariable* ScanName()
    {
        const LSToken token = LsScanToken(m_expander.m_str, true);
        m_expander.m_startDirectivePos = token.m_str.begin();
        m_expander.m_endDirectivePos = token.m_str.end();
        m_expander.AdvanceWritePos(token.m_str.begin(), true);
        return m_expander.FindVariable(token.m_str);
    }

    const std::string m_text;
    FileScopeVarFrame m_frame;
    StringStream m_os{4096};
    ExpandedOutput m_output;
    MacroExpander m_expander;
};

std::unique_ptr<LSMacroVariable> MakeMacro(const char* name, const char* body)
{
    auto macroVar =
        std::make_unique<LSMacroVariable>(LSV_MACRO, name, nullptr, false, false, false);
    macroVar->SetSubstitutionString(body, false, 0);
    return macroVar;
}

} // namespace

TEST(Invocation, AssertionsOfInvokeVariable)
{
    Direct direct("x");
    EXPECT_EQ(FailedAssertion([&] { direct.m_expander.InvokeVariable(nullptr); }),
              AssertionIn("MacroExpander", "var"));
}

TEST(Invocation, AssertionsOfInvokeMacroFunction)
{
    const auto failed = [](bool isPython, bool naked, bool withArg)
    {
        Direct direct("(1)");
        LSMacroVariable f(LSV_MACRO, "f", nullptr, isPython, naked, true);
        if (withArg)
            f.m_argNames.push_back(LSFormalArg{"x", LSV_MACRO, false});
        return FailedAssertion([&] { direct.m_expander.InvokeMacroFunction(&f); });
    };
    EXPECT_EQ(failed(true, false, false), AssertionIn("MacroExpander", "!macroVar->IsPython()"));
    EXPECT_EQ(failed(false, true, false), AssertionIn("MacroExpander", "!macroVar->IsNaked()"));
    EXPECT_EQ(failed(false, false, true),
              AssertionIn("MacroExpander", "macroVar->GetNumArgs() == 0"));
    Direct direct("(1)");
    EXPECT_EQ(FailedAssertion([&] { direct.m_expander.InvokeMacroFunction(nullptr); }),
              AssertionIn("MacroExpander", "macroVar"));
    EXPECT_EQ(FailedAssertion([&] { direct.m_expander.ReadMacroVariableDefn("m", nullptr); }),
              AssertionIn("MacroExpander", "macroVar"));
}

TEST(Invocation, ValueWithoutAnExpansionInProgress)
{
    Direct direct("  n rest");
    direct.m_frame.m_localVariables.Add(new LSValueVariable(LSV_INT, "n", "42"));
    direct.m_expander.InvokeVariable(direct.ScanName());
    EXPECT_EQ(direct.Output(), "  42");
    EXPECT_EQ(direct.m_expander.m_writePos, direct.m_text.data() + 3);
    EXPECT_EQ(PiecesText(direct.m_output.m_pieces, View(direct.m_text)),
              "source 0+2, calculated 2 from 2+1");
}

TEST(Invocation, MacroWithoutAnExpansionInProgress)
{
    Direct direct("f(a, b) rest");
    auto f = MakeMacro("f", "<x|y>");
    f->m_argNames.push_back(LSFormalArg{"x", LSV_MACRO, false});
    f->m_argNames.push_back(LSFormalArg{"y", LSV_MACRO, false});
    direct.m_frame.m_localVariables.Add(f.release());
    direct.m_expander.InvokeVariable(direct.ScanName());
    EXPECT_EQ(direct.Output(), "<a|b>");
    EXPECT_EQ(Str(direct.m_expander.m_str), " rest");
}

TEST(Invocation, MacroFunctionWithoutAnExpansionInProgress)
{
    Direct direct("f(@(1+1)) rest");
    direct.m_frame.m_localVariables.Add(MakeMacro("twice", "").release());
    auto twice = MakeMacro("g", "[n]");
    twice->m_argNames.push_back(LSFormalArg{"n", LSV_MACRO, false});
    direct.m_frame.m_localVariables.Add(twice.release());
    auto f = MakeMacro("f", "g");
    f->m_isFnArg = true;
    direct.m_frame.m_localVariables.Add(f.release());
    direct.m_expander.InvokeVariable(direct.ScanName());
    EXPECT_EQ(direct.Output(), "[2]");
    EXPECT_EQ(Str(direct.m_expander.m_str), " rest");
}

TEST(Invocation, MacroFunctionWithAReturnType)
{
    Direct direct("f(4) rest");
    auto g = MakeMacro("g", "n");
    g->m_argNames.push_back(LSFormalArg{"n", LSV_MACRO, false});
    direct.m_frame.m_localVariables.Add(g.release());
    auto f = std::make_unique<LSMacroVariable>(LSV_INT, "f", nullptr, false, false, true);
    f->SetSubstitutionString("1 + g", false, 0);
    direct.m_frame.m_localVariables.Add(f.release());
    direct.m_expander.InvokeVariable(direct.ScanName());
    EXPECT_EQ(direct.Output(), "5");
}

TEST(Invocation, BodyIsFoundInTheContextThatIsSet)
{
    FileScopeVarFrame other;
    other.m_localVariables.Add(new LSVar("who", "other"));
    Direct direct("m who");
    direct.m_frame.m_localVariables.Add(new LSVar("who", "caller"));
    auto m = std::make_unique<LSMacroVariable>(LSV_MACRO, "m", &other, false, false, false);
    m->SetSubstitutionString("<who>", false, 0);
    direct.m_frame.m_localVariables.Add(m.release());
    direct.m_expander.Expand();
    EXPECT_EQ(direct.Output(), "<other> caller");
}

TEST(Invocation, VariableOfAnotherKindWritesItsValue)
{
    struct Own : LSVariable
    {
        Own() : LSVariable("own") {}
        ELSVariable GetType() const override { return LSV_UNDEF; }
        void WriteToStream(xostream&) const override {}
        void WriteValue(xostream& os) const override { os << "its own value"; }
    };
    Session session;
    session.m_frame.m_localVariables.Add(new Own());
    EXPECT_EQ(session.Expand("<own>"), "<its own value>");
}

TEST(Invocation, NakedMacroLeavesItsArgumentsAndDefinitionsInTheCallersFrame)
{
    Session session;
    EXPECT_EQ(session.Expand("@nakeddef n(a, int b) = {@def made = {m}a b}\n@scope{n(x, 1+1) a b "
                             "made} a b made"),
              "x 2 x 2 m a b made");
    EXPECT_EQ(session.Expand("n(y, 3)"), "y 3");
    EXPECT_EQ(session.Expand("a b made"), "y 3 m");
}

TEST(Invocation, PlainMacroLeavesNothing)
{
    Session session;
    EXPECT_EQ(session.Expand("@def p(a) = {@def made = {m}a made}\np(x) a made"), "x m a made");
    EXPECT_EQ(session.m_frame.Find("a", nullptr), nullptr);
    EXPECT_EQ(session.m_frame.Find("made", nullptr), nullptr);
}

TEST(Invocation, BindingsOfAnInvocationAreDestroyedWithIt)
{
    Session session;
    session.Expand("@def p(a, int b) = {a b}\np(x, 1)");
    const LSVariable* const newest = session.m_frame.m_localVariables.m_first;
    ASSERT_NE(newest, nullptr);
    EXPECT_EQ(Str(newest->m_name), "p");
    EXPECT_EQ(newest->m_next, nullptr);
}

TEST(Invocation, DefinedMacroHasTheFieldsOfItsDefinition)
{
    Session session;
    const SubString source =
        session.Keep("@nakeddef int f(a, string b, c()) =\n    {\n        one\n    }\n");
    xstring output;
    MacroExpand(nullptr, &session.m_frame, source, 0, 0, output);
    const auto* const f = dynamic_cast<const LSMacroVariable*>(session.m_frame.Find("f", nullptr));
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->m_returnType, LSV_INT);
    EXPECT_TRUE(f->m_naked);
    EXPECT_FALSE(f->m_isPython);
    EXPECT_FALSE(f->m_isFnArg);
    EXPECT_EQ(f->m_context, nullptr);
    EXPECT_EQ(f->m_indentation, 8);
    EXPECT_EQ(Str(f->GetSubstitutionString()), "one");
    EXPECT_TRUE(IsWithin(f->GetSubstitutionString(), source));
    EXPECT_TRUE(IsWithin(f->m_name, source));
    ASSERT_EQ(f->m_argNames.size(), 3);
    const ELSVariable types[] = {LSV_MACRO, LSV_STRING, LSV_MACRO};
    const char* const names[] = {"a", "b", "c"};
    for (ssize_t i = 0; i < 3; ++i)
    {
        EXPECT_EQ(Str(f->m_argNames[i].m_name), names[i]);
        EXPECT_EQ(f->m_argNames[i].m_type, types[i]);
        EXPECT_EQ(f->m_argNames[i].m_isFnArg, i == 2);
        EXPECT_TRUE(IsWithin(f->m_argNames[i].m_name, source));
    }
}

TEST(Invocation, ErrorsNameTheCall)
{
    const char* const definitions = "@def two(a, b) = {a@fail(\"no\")b}\n"
                                    "@def one(x) = {two(x, 2)}\n"
                                    "@def typed(int i) = {i}\n"
                                    "@def int number(x) = {x}\n"
                                    "@def call(f()) = {f(1)}\n";
    const struct
    {
        const char* m_text;
        const char* m_result;
    } rows[] = {
        {"two(1)", "error: Insufficient arguments provided for macro two(a,b) @5"},
        {"two(1, 2, 3)", "error: Too many arguments provided for macro two(a,b) @8"},
        {"two x", "error: ( expected to begin argument list for macro two(a,b) when read x @4"},
        {"two", "error: ( expected to begin argument list for macro two(a,b) when read EOS @3"},
        {"two(1, 2", "error: Met EOS while reading argument 2 @7"},
        {"two(`1`2, 3)", "error: Comma or right parenthesis expected when read 2 @7"},
        {"two(p, q)", "error: no\n    invoking macro two(a,b) with a=p, b=q @#0:24"},
        {"one(z)",
         "error: no\n    invoking macro two(a,b) with a=x, b=2\n    invoking macro one(x) "
         "with x=z @#0:24"},
        {"typed(1 2)", "error: Read 2 in middle of expression\n    expression: 1 2\n    passing "
                       "formal argument i to macro typed @0"},
        {"number(1 2)", "error: Read 2 in middle of expression\n    expression: 1 2\n    invoking "
                        "macro number(x) with x=1 2 @0"},
        {"call(two)", "error: Insufficient arguments provided for macro two(a,b)\n    invoking "
                      "macro f\n    invoking macro call(f) with f=two @#0:126"},
    };
    for (const auto& row : rows)
    {
        Session session;
        EXPECT_EQ(session.Expand(definitions), "");
        EXPECT_EQ(session.Expand(row.m_text), row.m_result);
    }
}

} // namespace telv::expander
