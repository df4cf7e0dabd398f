// SPDX-License-Identifier: MIT
// A family is a function from n to a text. The text is expanded with its pieces; an error at its
// end is part of the program.
#include "Families.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/src/LSToken.h"
#include <memory>
#include <string>

namespace telv::bench
{

namespace
{

/// Allows dollar macros.
class NoFiles final : public ImportHandler
{
public:
    bool HandleImport(VarFrame*, const xstring&, const char*) override { return false; }
};

void Expand(SubString text)
{
    NoFiles files;
    FileScopeVarFrame frame;
    xstring output;
    OutputPieces pieces;
    try
    {
        MacroExpand(&files, &frame, text, 0, 0, output, pieces);
    }
    catch (const LexScannerException&)
    {
    }
}

Work ExpansionOf(const std::string& text)
{
    const auto kept = std::make_shared<std::string>(text);
    return [kept] { Expand(SubString(kept->data(), kept->data() + kept->size())); };
}

std::string Times(size_t n, const std::string& text)
{
    std::string result;
    result.reserve(n * text.size());
    for (size_t i = 0; i < n; ++i)
        result += text;
    return result;
}

/// `make` called with "0" to "n-1", joined by `separator`.
template <class Make>
std::string Join(size_t n, const std::string& separator, Make make)
{
    std::string result;
    for (size_t i = 0; i < n; ++i)
        result += (i == 0 ? "" : separator) + make(std::to_string(i));
    return result;
}

std::string Nested(size_t n, const std::string& open, const std::string& inside,
                   const std::string& close)
{
    return Times(n, open) + inside + Times(n, close);
}

Work NestedScope(size_t n)
{
    return ExpansionOf(Nested(n, "@scope{", "x", "}"));
}
Work NestedIf(size_t n)
{
    return ExpansionOf(Nested(n, "@if(true){", "x", "}"));
}
Work NestedElse(size_t n)
{
    return ExpansionOf(Nested(n, "@if(false){}@else{", "x", "}"));
}
Work NestedFor(size_t n)
{
    return ExpansionOf(Nested(n, "@for(i in [1]){", "i", "}"));
}
Work NestedTwice(size_t n)
{
    return ExpansionOf(Nested(n, "@[", "x", "]"));
}

Work NestedDefinitions(size_t n)
{
    return ExpansionOf(Nested(n, "@def m = {", "x", "}m"));
}

Work Recursion(size_t n)
{
    return ExpansionOf("@def r(int n) = {@if(n>0){r(n-1)}}r(" + std::to_string(n) + ")");
}

/// Each level names the argument of the level before.
Work PassedOn(size_t n)
{
    return ExpansionOf("@def r(int n, t) = {@if(n>0){t r(n-1, t)}}r(" + std::to_string(n) +
                       ", word)r(" + std::to_string(n) + ", a text)");
}

Work Chain(size_t n)
{
    return ExpansionOf(
        "@def m0 = {x}\n" +
        Join(n, "",
             [](const std::string& i)
             { return "@def m" + std::to_string(std::stoul(i) + 1) + " = {m" + i + "}\n"; }) +
        "m" + std::to_string(n));
}

Work Formals(size_t n)
{
    const auto name = [](const std::string& i) { return "a" + i; };
    const auto value = [](const std::string& i) { return i; };
    return ExpansionOf("@def f(" + Join(n, ",", name) + ") = {a0}f(" + Join(n, ",", value) + ")");
}

Work NestedCalls(size_t n)
{
    return ExpansionOf("@def f(x) = {x}" + Nested(n, "f(", "1", ")"));
}

Work NestedFunctionArguments(size_t n)
{
    return ExpansionOf("@def id(x) = {x}@def call(f()) = {f(1)}" + Times(n, "call(id) "));
}

Work List(size_t n)
{
    return ExpansionOf("@for(i in [" + Join(n, ",", [](const std::string& i) { return i; }) +
                       "]){i;}");
}

Work While(size_t n)
{
    return ExpansionOf("@let int i = {0}@while(i<" + std::to_string(n) + "){x@let i = {i+1}}");
}

Work Definitions(size_t n)
{
    return ExpansionOf(
        Join(n, "", [](const std::string& i) { return "@def d" + i + " = {" + i + "}\n"; }) +
        Join(n, " ", [](const std::string& i) { return "d" + i; }));
}

Work Redefinitions(size_t n)
{
    return ExpansionOf(Times(n, "@def m = {x}m\n"));
}

Work LongString(size_t n)
{
    return ExpansionOf("@str(" + Times(n, "word \"\\n\" ") + ")");
}
Work ManyStringLines(size_t n)
{
    return ExpansionOf("@strx(" + Times(n, "line\n") + ")");
}

Work Assignments(size_t n)
{
    return ExpansionOf("@let string s := {}\n" + Times(n, "@let s := {text}\n") + "s");
}

Work Appends(size_t n)
{
    return ExpansionOf("@let string s := {}\n" + Times(n, "@let s := {s@@x}\n") + "s");
}

Work WideExpression(size_t n)
{
    return ExpansionOf("@(" + Times(n, "1 + ") + "1)");
}
Work NestedParentheses(size_t n)
{
    return ExpansionOf("@" + Nested(n, "(", "1", ")"));
}
Work PrefixOperators(size_t n)
{
    return ExpansionOf("@(" + Times(n, "- ") + "1)");
}
Work Alternatives(size_t n)
{
    return ExpansionOf("@(" + Times(n, "false ? 1 : ") + "2)");
}
Work LongLine(size_t n)
{
    return ExpansionOf(Times(n, "word , 1.5 "));
}
Work ShortLines(size_t n)
{
    return ExpansionOf(Times(n, "    x\n"));
}
Work Comments(size_t n)
{
    return ExpansionOf(Times(n, "// note\n@// gone\n"));
}
/// In a lenient run they are text.
/// In a lenient run, where a comment that never ends is none.
Work LenientExpansionOf(const std::string& text)
{
    const auto kept = std::make_shared<std::string>(text);
    return [kept]
    {
        ExpansionRun run;
        run.m_lenient = true;
        const ExpansionRunScope scope(run);
        Expand(SubString(kept->data(), kept->data() + kept->size()));
    };
}

Work OpenComments(size_t n)
{
    return LenientExpansionOf(Times(n, "dir/*.c @(1)\n"));
}
Work OpenCommentsInBlocks(size_t n)
{
    return LenientExpansionOf(Nested(n, "@if(true){dir/*.c ", "x", "}"));
}
Work OpenCommentsInArguments(size_t n)
{
    return LenientExpansionOf("@def f(x) = {x}" + Nested(n, "f(dir/*.c ", "x", ")"));
}

Work Quote(size_t n)
{
    return ExpansionOf("  @quote(" + Times(n, "    word\n") + ")");
}

Work ExpectedErrors(size_t n)
{
    return ExpansionOf(Times(n, "@assertfails(@fail(\"x\"))\n"));
}

Work NestedExpectedErrors(size_t n)
{
    return ExpansionOf(Nested(n, "@assertfails(", "@fail(\"x\")", ")"));
}

Work ExpectedErrorsInMacros(size_t n)
{
    return ExpansionOf("@def r(int n) = {@assertfails(@if(n>0){r(n-1)}@else{@fail(\"x\")})}r(" +
                       std::to_string(n) + ")");
}

/// Errors are counted out by the limit of levels instead of the stack, whose size is not n.
Work EndlessRecursion(size_t n)
{
    const auto run = std::make_shared<ExpansionRun>();
    run->m_limits.m_maxDepth = static_cast<ssize_t>(n);
    const Work work = ExpansionOf("@def r = {r}r");
    return [run, work]
    {
        const ExpansionRunScope scope(*run);
        work();
    };
}

/// The names of frames that are alive beside the path to the root are looked for.
Work ArgumentsInArguments(size_t n)
{
    return ExpansionOf("@def f(k)={k}@def r(int n)={k @if(n>0){f(r(n-1))}k }r(" +
                       std::to_string(n) + ")");
}

Work FunctionsInArguments(size_t n)
{
    return ExpansionOf("@def f(k(),int m)={k(m)}@def r(int n)={k @if(n>0){f(r,n-1)}k }r(" +
                       std::to_string(n) + ")");
}

Work ArgumentsInTheSameFrame(size_t n)
{
    return ExpansionOf("@def f(k())={k(1)}" +
                       Join(n, "",
                            [](const std::string& i)
                            {
                                const std::string next = std::to_string(std::stoul(i) + 1);
                                return "@nakeddef r" + i + "(n)={k f(r" + next + ")}\n";
                            }) +
                       "@nakeddef r" + std::to_string(n) + "(n)={}r0(1)");
}

/// The argument is expanded in the file's frame, each time below n frames that bind n too.
Work ArgumentAboveManyBindings(size_t n)
{
    return ExpansionOf("@def g(n)={}@def r(int n)={k @if(n>0){r(n-1)}}@def start(k)={r(" +
                       std::to_string(n) + ")}start(g(1))");
}

/// The same, and the name is looked for where it is not bound.
Work WordAboveManyBindings(size_t n)
{
    return ExpansionOf("@def g(x)={n @if(true){n}}@def r(int n)={k @if(n>0){r(n-1)}}"
                       "@def start(k)={r(" +
                       std::to_string(n) + ")}start(g(1))");
}

/// Arguments in arguments, while a frame further up binds their name again and again.
Work ArgumentsBelowAChange(size_t n)
{
    return ExpansionOf("@def f(k)={k}@def g(k)={}@def r(int n)={s k @if(n>0){f(r(n-1))}k }"
                       "@def start(s)={r(" +
                       std::to_string(n) + ")}start(g(1))");
}

Work ManyAlternatives(size_t n)
{
    return ExpansionOf(
        "@if(false){a}" +
        Join(n, "", [](const std::string& i) { return "@elseif(" + i + " < 0){b" + i + "}"; }) +
        "@else{c}");
}

Work Escapes(size_t n)
{
    return ExpansionOf("@(\"" + Times(n, "\\t") + "\" == \"\")");
}

Work SeveralNames(size_t n)
{
    return ExpansionOf("@for((a, b, c) in [" +
                       Join(n, ",", [](const std::string& i) { return "(" + i + ", x, y)"; }) +
                       "]){a b c\n}");
}

Work CarriageReturns(size_t n)
{
    return ExpansionOf("@def m =\r\n{\r\n" + Times(n, "  a b\r\n") + "}\r\nm\r\n");
}

Work DeepError(size_t n)
{
    return ExpansionOf("@def r(int n) = {@if(n>0){r(n-1)}@else{@fail(\"x\")}}r(" +
                       std::to_string(n) + ")");
}

Work DeepErrorInExpressions(size_t n)
{
    return ExpansionOf(Nested(n, "@(", "1 +", ")"));
}

Work DollarMacros(size_t n)
{
    return ExpansionOf(
        Join(n, "", [](const std::string& i) { return "@$A" + i + " = \"" + i + "\"\n"; }) + "\"" +
        Join(n, "/", [](const std::string& i) { return "$(A" + i + ")"; }) + "\"");
}

Work ChainOfDollarMacros(size_t n)
{
    return ExpansionOf(
        "@$A0 = \"x\"\n" +
        Join(n, "",
             [](const std::string& i)
             { return "@$A" + std::to_string(std::stoul(i) + 1) + " = \"$(A" + i + ")\"\n"; }) +
        "\"$(A" + std::to_string(n) + ")\"");
}

/// Each substitution makes the next reference, with one of the given brackets.
Work ReferencesPutTogether(size_t n)
{
    return ExpansionOf("@$A = \"$(A\"\n\"$(A)" + Times(n, ")") + "\"");
}

/// The hint at the error looks for a name that is near.
Work LongUnknownName(size_t n)
{
    const std::string letters(n, 'b');
    return ExpansionOf("@def a" + letters + " = {1}@(x" + letters + ")");
}

/// Expands with all warnings.
Work WatchedExpansionOf(const std::string& text)
{
    const auto kept = std::make_shared<std::string>(text);
    return [kept]
    {
        ExpansionRun run;
        run.m_warnings = WARN_ALL;
        run.m_warningSink = [](const ExpansionWarning&) {};
        const ExpansionRunScope scope(run);
        Expand(SubString(kept->data(), kept->data() + kept->size()));
    };
}

/// Words that name nothing, beside as many names: near ones are looked for.
Work WatchedWords(size_t n)
{
    const auto define = [](const std::string& i) { return "@def some" + i + "name(x) = {}\n"; };
    const auto call = [](const std::string& i) { return "other" + i + "word()\n"; };
    return WatchedExpansionOf(Join(n, "", define) + Join(n, "", call));
}

/// Tabs are looked for in the lines of each.
Work WatchedBlocks(size_t n)
{
    return WatchedExpansionOf(Nested(n, " @scope\n {\n", "x\n", " }\n"));
}

/// Every position of an output is mapped back, in order.
Work Mapping(size_t n)
{
    struct Expanded
    {
        std::string m_text;
        FileScopeVarFrame m_frame;
        xstring m_output;
        OutputPieces m_pieces;
    };
    const auto expanded = std::make_shared<Expanded>();
    expanded->m_text = "@def m = {one, two}\n" + Times(n, "m and ");
    const std::string& text = expanded->m_text;
    MacroExpand(nullptr, &expanded->m_frame, SubString(text.data(), text.data() + text.size()), 0,
                0, expanded->m_output, expanded->m_pieces);
    return [expanded]
    {
        OutputPiecesMonotonePosMapper mapper(expanded->m_pieces);
        for (ssize_t pos = 0; pos < expanded->m_output.size(); ++pos)
            mapper.MapOutputPositionToAddress(pos);
    };
}

} // namespace

std::vector<Family> TextFamilies()
{
    return {
        {"nested @scope", 25'000, NestedScope, nullptr},
        {"nested @if", 25'000, NestedIf, nullptr},
        {"nested @else", 25'000, NestedElse, nullptr},
        {"nested @for", 20'000, NestedFor, nullptr},
        {"nested @[", 20'000, NestedTwice, nullptr},
        {"nested definitions", 40'000, NestedDefinitions, nullptr},
        {"deep recursion", 10'000, Recursion, nullptr},
        {"arguments that are passed on", 4'000, PassedOn, nullptr},
        {"chain of macros", 4'000, Chain, nullptr},
        {"many formal arguments", 4'000, Formals, nullptr},
        {"nested calls", 25'000, NestedCalls, nullptr},
        {"function arguments", 25'000, NestedFunctionArguments, nullptr},
        {"long list of @for", 50'000, List, nullptr},
        {"long @while", 25'000, While, nullptr},
        {"many definitions", 4'000, Definitions, nullptr},
        {"redefinitions", 80'000, Redefinitions, nullptr},
        {"long @str", 150'000, LongString, nullptr},
        {"long @strx", 150'000, ManyStringLines, nullptr},
        {"@quote of many lines", 400'000, Quote, nullptr},
        {"many assignments by @let", 50'000, Assignments, nullptr},
        {"appending by @let", 8'000, Appends, "time: the values, one byte longer each, are made"},
        {"wide expression", 150'000, WideExpression, nullptr},
        {"nested parentheses", 50'000, NestedParentheses, nullptr},
        {"prefix operators", 200'000, PrefixOperators, nullptr},
        {"chain of ?:", 50'000, Alternatives, nullptr},
        {"long line", 100'000, LongLine, nullptr},
        {"many short lines", 200'000, ShortLines, nullptr},
        {"many comments", 200'000, Comments, nullptr},
        {"comments without an end", 200'000, OpenComments, nullptr},
        {"the same in nested blocks", 10'000, OpenCommentsInBlocks, nullptr},
        {"the same in nested arguments", 10'000, OpenCommentsInArguments, nullptr},
        {"many expected errors", 20'000, ExpectedErrors, nullptr},
        {"nested @assertfails", 25'000, NestedExpectedErrors, nullptr},
        {"@assertfails in deep recursion", 10'000, ExpectedErrorsInMacros, nullptr},
        {"endless recursion", 50'000, EndlessRecursion, nullptr},
        {"arguments in arguments", 10'000, ArgumentsInArguments, nullptr},
        {"functions in arguments", 10'000, FunctionsInArguments, nullptr},
        {"arguments in the same frame", 5'000, ArgumentsInTheSameFrame, nullptr},
        {"argument above many bindings", 5'000, ArgumentAboveManyBindings, nullptr},
        {"word above many bindings", 5'000, WordAboveManyBindings, nullptr},
        {"arguments below a change", 5'000, ArgumentsBelowAChange, nullptr},
        {"many @elseif", 40'000, ManyAlternatives, nullptr},
        {"many escapes", 200'000, Escapes, nullptr},
        {"@for with several names", 20'000, SeveralNames, nullptr},
        {"CR LF", 200'000, CarriageReturns, nullptr},
        {"deep error in macros", 5'000, DeepError, nullptr},
        {"deep error in expressions", 5'000, DeepErrorInExpressions, nullptr},
        {"many dollar macros", 4'000, DollarMacros, nullptr},
        {"chain of dollar macros", 4'000, ChainOfDollarMacros, nullptr},
        {"references put together", 4'000, ReferencesPutTogether, nullptr},
        {"long unknown name", 500'000, LongUnknownName, nullptr},
        {"unknown words, with warnings", 4'000, WatchedWords, nullptr},
        {"nested blocks, with warnings", 10'000, WatchedBlocks, nullptr},
        {"mapping every position", 400'000, Mapping, nullptr},
    };
}

} // namespace telv::bench
