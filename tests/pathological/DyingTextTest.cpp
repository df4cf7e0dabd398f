// SPDX-License-Identifier: MIT
// Texts that exist only while they are expanded, and what may outlive them: definitions, bound
// arguments, error positions, pieces of the map. A stale view is found by the address sanitizer and
// by builds with guarded texts; here its effects are.
#include "HostileTest.h"

namespace telv::test
{
namespace
{

class DyingTextTest : public HostileTest
{
};

struct Row
{
    const char* name;
    const char* source;
    const char* out;
};

const Row s_escapes[] = {
    {"definition from a twice expanded text", "@[@quote(@def + m = {body})]m", "body"},
    {"its formal names", "@[@quote(@def + m(aa,bb) = {<bb|aa>})]m(1,2)", "<2|1>"},
    {"redefined many times", "@for(i in [1,2,3,4,5,6,7,8]){@[@quote(@def + m = {body})i]}m",
     "12345678body"},
    {"exported", "@scope{@[@quote(@exportdef m = {body})]m}", "body"},
    {"naked macro from a dead text", "@[@quote(@nakeddef + n(a) = {<a>})]n(1) a", "<1> 1"},
    {"definition in the text of a function argument",
     "@def call(f()) = {f(zzz)}\n@def apply = {call(@def q = {body}) q}\napply", "(zzz) body"},
    {"at the outermost level", "@def call(f()) = {f(zzz)}\ncall(@def q = {body}) q", "(zzz) body"},
    {"argument of a naked macro", "@nakeddef n(x) = {[x]}\n@def call(f()) = {f(text)}\ncall(n) x",
     "[text] text"},
    {"definition in a list", "@for(x in [@quote(@def + m = {body})]){x}m", "body"},
    {"definition in a list's element, used in the next round",
     "@for(x in [@quote(@def + m = {body}),m,m]){x}", "bodybody"},
    {"redefinition while it is expanded", "@def + m = {one @def + m = {two} m}\nm m", "onetwo two"},
    {"value that is doubled while it is replaced", "@let string s := {a}\n@let s := {s@@s}\ns",
     "aa"},
    {"value that is assigned inside its own new value",
     "@let string s := {a}\n@let s := {s@let s := {b}s}\ns", "ab"},
    {"value that is assigned in a loop over a list made from it",
     "@let string s := {1,2}\n@for(i in [s]){@let s := {i@@s}}\ns", "\n211,2"},
    {"texts in texts", "@[@quote(@[@quote(@def + m = {body})])]m", "body"},
};

TEST_F(DyingTextTest, WhatEscapesStaysReadable)
{
    for (const Row& row : s_escapes)
    {
        SCOPED_TRACE(row.name);
        ExpectText(Expand(row.source), row.out);
        ExpectText(Expand(row.source, {"--map", "map.json"}), row.out);
    }
    Expect("map.json");
}

/// The same from wherever a text can come: what is viewed there dies at other times.
TEST_F(DyingTextTest, WhatEscapesStaysReadableWhereverTheTextStands)
{
    for (const Row& row : s_escapes)
    {
        SCOPED_TRACE(row.name);
        const std::string source = row.source;
        const std::string out = row.out;
        ExpectText(Expand("@[@quote(" + source + ")]"), out);
        ExpectText(Expand("@[@quote(" + source + ")]", {"--map", "map.json"}), out);
        ExpectText(Expand("@for(z in [1]){" + source + "}"), out);
        ExpectText(Expand("@def wrapped = {" + source + "}\nwrapped\nwrapped"), out + '\n' + out);
        ExpectText(Expand("@assertfails{" + source + "@fail(\"x\")}" + source), out);
        ExpectText(Expand("-", {"-E", source, "-E", "@scope{" + source + "}"}), "-");
        Write("lib.tl", source);
        ExpectText(Expand("@import \"lib.tl\"\n@scope{" + source + "}"), out);
    }
    Expect("map.json");
}

TEST_F(DyingTextTest, WhatEscapesFromOtherTextsIsVisible)
{
    const std::string definitions = "@[@quote(@def + m(aa,bb) = {<bb|aa>})]"
                                    "@[@quote(@[@quote(@def + k = {deep})])]"
                                    "@for(x in [@quote(@let string v := {value})]){}"
                                    "@$D=\"dollar\"\n";
    const std::string use = "m(1,2) k \"$(D)\" _D_";
    const std::string out = "<2|1> deep \"dollar\" dollar";
    Write("lib.tl", definitions);
    Write("outer.tl", "@import \"lib.tl\"\n");
    ExpectText(Expand("@import \"lib.tl\"\n" + use), out);
    ExpectText(Expand("@import \"outer.tl\"\n" + use), out);
    ExpectText(Expand(use, {"-E", definitions}), out);
    ExpectText(Expand(use, {"-E", "@import \"outer.tl\""}), out);
    ExpectText(Expand("@import \"outer.tl\"\n@[@quote(" + use + ")]", {"--map", "map.json"}), out);
    Expect("map.json");
}

TEST_F(DyingTextTest, LineEndsOfTheOtherKind)
{
    ExpectText(Expand("@[@quote(@def + m =\r\n{\r\n    body\r\n})]\r\nm\r\nm"), "\r\nbody\r\nbody");
    ExpectError(Expand("x\r\n@[@quote(@let int i = {1 2})]\r\n"),
                "main.tl(2) : error : Read 2 in middle of expression\n    expression: 1 2\n"
                "    in @[@let int i = {1 2}]\n 2 | @[@quote(@let int i = {1 2})]\n   | ^\n");
}

struct ErrorRow
{
    const char* source;
    const char* err;
};

const ErrorRow s_errors[] = {
    {"@let int i = {1 2}",
     "main.tl(1) : error : Read 2 in middle of expression\n    expression: 1 2\n 1 "
     "| @let int i = {1 2}\n   | ^\n"},
    {"x\n@def f(int i) = {i}\nf(1 2)",
     "main.tl(3) : error : Read 2 in middle of expression\n    expression: 1 2\n    passing formal "
     "argument i to macro f\n 3 | f(1 2)\n   | ^\n"},
    {"\n@[@quote(@fail(\"no\"))]", "main.tl(2) : error : no\n    in @[@fail(\"no\")]\n"},
    {"\n@for(x in [@quote(@fail(\"no\"))]){x}", "main.tl(2) : error : no\n"},
    {"@def call(f()) = {f(zzz)}\n\ncall(@fail)",
     "main.tl(1) : error : Unexpected zzz after ( in expression\n    in @fail(zzz)\n"},
    {"@[@quote(@def + m = {@fail(\"late\")})]\n\nm",
     "main.tl(1) : error : late\n    invoking macro m\n"},
    // The outer text is long dead when the inner one dies, with the block that kept it.
    {"\n@scope{\n@[@quote(@def call(f()) = {f(zzz)} call(@exportdef q = {@fail(\"late\")}))] q}",
     "main.tl(3) : error : late\n    invoking macro q\n"},
};

TEST_F(DyingTextTest, ErrorsStandAtWhatMadeTheText)
{
    for (const ErrorRow& row : s_errors)
    {
        SCOPED_TRACE(row.source);
        ExpectError(Expand(row.source), row.err);
    }
}

TEST_F(DyingTextTest, ErrorsInImportedAndGivenTextStandThere)
{
    for (const ErrorRow& row : s_errors)
    {
        SCOPED_TRACE(row.source);
        const std::string place = std::string(row.err).substr(sizeof "main.tl" - 1);
        Write("lib.tl", row.source);
        const ProgramResult imported = Expand("\n\n@import \"lib.tl\"");
        ExpectError(imported, "lib.tl" + place);
        EXPECT_TRUE(imported.err.find("\nimported from main.tl(3)\n") != std::string::npos)
            << imported.err;
        ExpectError(Expand("x", {"-E", row.source}), "<command line>" + place);
        ExpectText(Expand("@assertfails{" + std::string(row.source) + "}x"), "x");
    }
}

TEST_F(DyingTextTest, TextsGivenFromOutsideLiveAsLongAsTheRun)
{
    Write("lib.tl", "@def fromFile = {file}\n");
    ExpectText(Expand("@import \"lib.tl\"\nfromText fromFile again",
                      {"-E", "@def fromText = {text}", "-E", "@[@quote(@def + again = {twice})]",
                       "-D", "NAME=value"}),
               "text file twice");
    LimitedOptions options;
    options.input = "@def m = {input}\nm \"$(NAME)\"";
    ExpectText(Run({"-D", "NAME=value", "-"}, options), "input \"value\"");
}

TEST_F(DyingTextTest, FramesGoWhileTheirImportersLive)
{
    const size_t n = 200;
    std::string main;
    for (size_t i = 0; i < n; ++i)
    {
        const std::string name = "f" + std::to_string(i);
        Write(name + ".tl", "@import \"f" + std::to_string(i == 0 ? 0 : i / 2) + "x.tl\"\n@def " +
                                name + " = {<" + std::to_string(i) + ">}\n");
        Write(name + "x.tl", "@def x" + std::to_string(i) + " = {y}\n");
        main += "@import \"" + name + ".tl\"\n";
    }
    ExpectText(Expand(main + "f0 f199 x50"), "<0> <199> y");
}

} // namespace
} // namespace telv::test
