// SPDX-License-Identifier: MIT
// The import handler: what it is asked, when, and what becomes of its answers and errors.
#include "ExpanderSupport.h"
#include "tlMacroExpander/MacroExpand.h"
#include <gtest/gtest.h>

namespace telv::expander
{

namespace
{

/// Notes what it is asked and answers as it is told.
class RecordingHandler : public ImportHandler
{
public:
    bool HandleImportPath(const xstring& path, const char* pos) override
    {
        m_calls += "path " + Str(path) + "; ";
        m_pos = pos;
        return m_answer;
    }

    bool HandleImport(VarFrame* vf, const xstring& path, const char* pos) override
    {
        m_calls += "import " + Str(path) + "; ";
        m_pos = pos;
        m_vf = vf;
        if (m_imported != nullptr)
            static_cast<FileScopeVarFrame*>(vf)->AddImport(m_imported);
        if (m_error != nullptr)
            throw LexScannerException(m_error, pos);
        return m_answer;
    }

    std::string m_calls;
    const char* m_pos = nullptr;
    VarFrame* m_vf = nullptr;
    FileScopeVarFrame* m_imported = nullptr;
    const char* m_error = nullptr;
    bool m_answer = true;
};

/// Only what has to be implemented.
class SmallHandler : public ImportHandler
{
public:
    bool HandleImport(VarFrame*, const xstring&, const char*) override { return true; }
};

struct Row
{
    std::string m_text;
    std::string m_result;
};

} // namespace

TEST(ImportHandler, NoneIsAnErrorForImports)
{
    const Row rows[] = {
        {"a @import \"x\"", "error: @import statement not allowed here @3"},
        {"@ importpath \"x\"", "error: @importpath statement not allowed here @2"},
        {"a @$A = \"x\" b", "a @$A = \"x\" b"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ExpansionOf(row.m_text), row.m_result);
}

TEST(ImportHandler, IsNotPassedToNestedText)
{
    const Row rows[] = {
        {"@scope{@import \"x\"}", "error: @import statement not allowed here @8"},
        {"@if(true){@import \"x\"}", "error: @import statement not allowed here @11"},
        {"@scope{@$A = \"x\"}", "@$A = \"x\""},
        {"@def m = {@$A = \"x\"}\nm", "@$A = \"x\""},
        {"@[@$A = \"x\"]", "@$A = \"x\""},
        {"@def m = {@import \"x\"}\nm",
         "error: @import statement not allowed here\n    invoking macro m @11"},
        {"@for(i in [1]){@import \"x\"}",
         "error: @import statement not allowed here\n    in @for directive when i = 1 @16"},
    };
    for (const Row& row : rows)
    {
        RecordingHandler handler;
        EXPECT_EQ(Session(&handler).Expand(row.m_text), row.m_result);
        EXPECT_EQ(handler.m_calls, "");
    }
}

TEST(ImportHandler, IsAskedForWhatTheDirectiveNames)
{
    const struct
    {
        const char* m_text;
        const char* m_result;
        const char* m_calls;
        ssize_t m_offset;
    } rows[] = {
        {"a @import \"f.tl\" b", "a @import \"f.tl\" b", "import f.tl; ", 10},
        {"@import(\"a\" + \"b\") c", "@import \"ab\" c", "import ab; ", 7},
        {"@import \"a\\tb\"", "@import \"a\\tb\"", "import a\tb; ", 8},
        {"a @importpath \"dir\" b", "a b", "path dir; ", 14},
        {"@importpath(\"d\" + \"ir\")", "", "path dir; ", 11},
    };
    for (const auto& row : rows)
    {
        RecordingHandler handler;
        Session session(&handler);
        EXPECT_EQ(session.Expand(row.m_text), row.m_result);
        EXPECT_EQ(handler.m_calls, row.m_calls);
        EXPECT_EQ(session.Place(handler.m_pos), std::to_string(row.m_offset));
        EXPECT_TRUE(handler.m_vf == nullptr || handler.m_vf == &session.m_frame);
    }
}

TEST(ImportHandler, FalseIsAnError)
{
    RecordingHandler handler;
    handler.m_answer = false;
    Session session(&handler);
    EXPECT_EQ(session.Expand("@import \"n\""), "error: Can't import file: n @8");
    EXPECT_EQ(session.Expand("@import(\"n\" + \"m\")"), "error: Can't import file: nm @7");
    EXPECT_EQ(session.Expand("@importpath \"d\""),
              "error: @importpath directive not supported @12");
}

TEST(ImportHandler, BaseDoesNotSupportImportPaths)
{
    SmallHandler handler;
    EXPECT_FALSE(handler.HandleImportPath("dir", nullptr));
    EXPECT_EQ(Session(&handler).Expand("@importpath \"dir\""),
              "error: @importpath directive not supported @12");
    EXPECT_EQ(Session(&handler).Expand("@import \"x\""), "@import \"x\"");
}

TEST(ImportHandler, ErrorsPassThroughUnchanged)
{
    RecordingHandler handler;
    handler.m_error = "the handler's own";
    EXPECT_EQ(Session(&handler).Expand("  @import \"x\""), "error: the handler's own @10");
}

TEST(ImportHandler, Operands)
{
    const Row rows[] = {
        {"@import 'x'", "error: Quoted string expected after 'import' when read 'x' @8"},
        {"@import x", "error: Quoted string expected after 'import' when read x @8"},
        {"@import", "error: Quoted string expected after 'import' when read EOS @7"},
        {"@importpath 1", "error: Quoted string expected after 'importpath' when read 1 @12"},
        {"@import(\"a\" \"b\")",
         "error: Expected ) after \"a\" when read \"b\" in expression\n    in @import(\"a\" \"b\") @0"},
    };
    for (const Row& row : rows)
    {
        RecordingHandler handler;
        EXPECT_EQ(Session(&handler).Expand(row.m_text), row.m_result);
        EXPECT_EQ(handler.m_calls, "");
    }
}

TEST(ImportHandler, DefinitionsThatItMakesVisibleAreFound)
{
    Session library;
    library.Expand("@def m = {imported}");
    RecordingHandler handler;
    handler.m_imported = &library.m_frame;
    EXPECT_EQ(Session(&handler).Expand("m @import \"x\" m"), "m @import \"x\" imported");
}

TEST(ImportHandler, DollarDefinitionsNeedIt)
{
    SmallHandler handler;
    Session session(&handler);
    EXPECT_EQ(session.Expand("a@$ROOT = \"/usr\" \"$(ROOT)\" _ROOT_"), "a \"/usr\" /usr");
    EXPECT_EQ(session.Expand("@$A = (\"x\" + \"y\")\"$(A)\""), "\"xy\"");
    EXPECT_EQ(session.Expand("@$ = \"x\""), "error: Identifier expected after @let when read = @3");
    EXPECT_EQ(session.Expand("@$A := \"x\""),
              "error: = expected in definition of macro A when read : @4");
    EXPECT_EQ(session.Expand("@$A = x"),
              "error: Quoted string expected after $A definition when read x @6");
}

} // namespace telv::expander
