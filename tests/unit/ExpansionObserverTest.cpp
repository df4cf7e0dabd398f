// SPDX-License-Identifier: MIT
// What an observer is told: each event for each construct of the language, in order, and what comes
// of one that throws.
#include "tlMacroExpander/ExpansionObserver.h"
#include "ExpanderSupport.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include <gtest/gtest.h>

namespace telv::expander
{

namespace
{

/// Writes a line for each event, indented by what has begun. Places are offsets in the text, or
/// "made" for text that was made while expanding.
class Log final : public ExpansionObserver
{
public:
    explicit Log(SubString source) : m_source(source) {}

    void ExpansionBegins(const ObservedExpansion& e) override
    {
        Begin("expand " + Quoted(e.m_text) + (IsMain(e.m_output) ? "" : " into a string"));
    }
    void ExpansionEnds() noexcept override { --m_depth; }
    void InvocationBegins(const ObservedInvocation& e) override
    {
        std::string line = "invoke " + Str(e.m_variable.m_name) + At(e.m_place);
        if (e.m_call != e.m_place)
            line += " " + Quoted(e.m_call);
        for (const ObservedArgument& arg : e.m_args)
            line +=
                " " + Str(arg.m_name) + ":" + std::to_string(arg.m_type) + "=" + Str(arg.m_value);
        Begin(line);
    }
    void InvocationEnds() noexcept override { --m_depth; }
    void RoundBegins(const ObservedRound& e) override
    {
        Begin("round " + std::to_string(e.m_round) + " of " + Str(e.m_loop) + At(e.m_place) + " " +
              Str(e.m_element));
    }
    void RoundEnds() noexcept override { --m_depth; }
    void DirectiveBegins(const ObservedDirective& e) override
    {
        Begin("directive " + Str(e.m_name) + At(e.m_place));
    }
    void DirectiveEnds() noexcept override { --m_depth; }
    void ImportBegins(const ObservedImport& e) override
    {
        Begin("import " + Str(e.m_path) + At(e.m_place));
    }
    void ImportEnds() noexcept override { --m_depth; }
    void Defined(const ObservedDefinition& e) override
    {
        static const char* const kinds[] = {"macro", "value", "assigned", "dollar"};
        Line(std::string("defined ") + kinds[e.m_kind] + At(e.m_place) + " = " + Str(e.m_value));
        EXPECT_EQ(e.m_variable == nullptr, e.m_kind == ObservedDefinition::DEFINED_DOLLAR);
    }
    void PieceWritten(const ObservedPiece& e) override
    {
        OutputPieces one;
        one.m_pieces.push_back(e.m_piece);
        const std::string kind = e.m_piece.out == 0                ? "copied"
                                 : e.m_piece.in.begin() == nullptr ? "indent"
                                                                   : "calculated";
        Line("piece " + std::string(IsMain(e.m_output) ? "" : "of a string ") +
             std::to_string(e.m_offset) + "+" + std::to_string(e.m_piece.size()) + " " + kind +
             (kind == "indent" ? "" : At(e.m_piece.in)));
    }

    /// Only the lines that begin with one of these words; all when there is none.
    std::string Text(const std::vector<std::string>& words = {}) const
    {
        std::string text;
        for (const std::string& line : m_lines)
        {
            const std::string rest = line.substr(line.find_first_not_of(' '));
            bool isWanted = words.empty();
            for (const std::string& word : words)
                isWanted = isWanted || rest.rfind(word + " ", 0) == 0;
            if (isWanted)
                text += line + "\n";
        }
        return text;
    }

    int Depth() const { return m_depth; }

private:
    bool IsMain(const ExpandedOutput& output)
    {
        if (m_main == nullptr)
            m_main = &output;
        return m_main == &output;
    }

    static std::string Quoted(SubString s) { return "<" + Str(s) + ">"; }

    std::string At(SubString place) const
    {
        if (!IsWithin(place, m_source))
            return " @made";
        return " @" + std::to_string(place.begin() - m_source.begin()) + "+" +
               std::to_string(place.size());
    }

    void Begin(const std::string& line)
    {
        Line(line);
        ++m_depth;
    }

    void Line(const std::string& line) { m_lines.push_back(std::string(2 * m_depth, ' ') + line); }

    SubString m_source;
    const ExpandedOutput* m_main = nullptr; ///< That of the first expansion.
    int m_depth = 0;
    std::vector<std::string> m_lines;
};

/// Imports nothing from everywhere, and expands what it imports.
class TextHandler final : public ImportHandler
{
public:
    bool HandleImport(VarFrame* vf, const xstring&, const char*) override
    {
        xstring dropped;
        MacroExpand(nullptr, vf, m_imported, 0, 0, dropped);
        return true;
    }

    xstring m_imported = "@def lib = {L}";
};

struct Observed
{
    std::string m_events;
    std::string m_output; ///< Or "error: DESCRIPTION".
    int m_depth = 0;      ///< What had begun and not ended at the end.
};

/// Expands `text` with its pieces recorded or not; with events of these kinds, or all.
Observed Observe(const std::string& text, const std::vector<std::string>& words = {},
                 bool isRecorded = false)
{
    const xstring source(text.c_str());
    TextHandler handler;
    FileScopeVarFrame frame;
    Log log(source);
    ExpansionRun run;
    run.SetObserver(&log);
    const ExpansionRunScope scope(run);
    Observed observed;
    xstring output;
    OutputPieces pieces;
    try
    {
        if (isRecorded)
            MacroExpand(&handler, &frame, source, 0, 0, output, pieces);
        else
            MacroExpand(&handler, &frame, source, 0, 0, output);
        observed.m_output = Str(output);
    }
    catch (const LexScannerException& e)
    {
        observed.m_output = "error: " + Str(e.m_description);
    }
    observed.m_events = log.Text(words);
    observed.m_depth = log.Depth();
    return observed;
}

TEST(ExpansionObserver, PlainText)
{
    const Observed observed = Observe("ab cd\n");
    EXPECT_EQ(observed.m_events, "expand <ab cd\n>\n"
                                 "  piece 0+2 copied @0+2\n"
                                 "  piece 2+3 copied @2+3\n"
                                 "  piece 5+1 copied @5+1\n");
    EXPECT_EQ(observed.m_output, "ab cd\n");
    EXPECT_EQ(observed.m_depth, 0);
}

TEST(ExpansionObserver, MacroWithArgumentsByName)
{
    const Observed observed = Observe("@def f(x, y) = {x}f(a, `b,c`)");
    EXPECT_EQ(observed.m_events, "expand <@def f(x, y) = {x}f(a, `b,c`)>\n"
                                 "  directive def @0+4\n"
                                 "    defined macro @5+1 = x\n"
                                 "  invoke f @18+1 <f(a, `b,c`)> x:1=a y:1=b,c\n"
                                 "    expand <x>\n"
                                 "      invoke x @16+1\n"
                                 "        expand <a>\n"
                                 "          piece 0+1 copied @20+1\n");
    EXPECT_EQ(observed.m_output, "a");
}

TEST(ExpansionObserver, TypedArgumentsAreEvaluatedBeforeTheInvocation)
{
    const Observed observed =
        Observe("@def f(int n) = {n}@def int g = {2}f(g + 1)", {"invoke", "expand", "piece"});
    EXPECT_EQ(observed.m_events, "expand <@def f(int n) = {n}@def int g = {2}f(g + 1)>\n"
                                 "  expand <g + 1> into a string\n"
                                 "    invoke g @37+1\n"
                                 "      expand <2> into a string\n"
                                 "        piece of a string 0+1 copied @33+1\n"
                                 "      piece of a string 0+1 calculated @37+1\n"
                                 "    piece of a string 1+2 copied @38+2\n"
                                 "    piece of a string 3+2 copied @40+2\n"
                                 "  invoke f @35+1 <f(g + 1)> n:3=3\n"
                                 "    expand <n>\n"
                                 "      invoke n @17+1\n"
                                 "        piece 0+1 calculated @17+1\n");
    EXPECT_EQ(observed.m_output, "3");
}

TEST(ExpansionObserver, ArgumentThatIsCalled)
{
    const Observed observed =
        Observe("@def twice(m()) = {m(x)}@def b(t) = {<t>}twice(b)", {"invoke", "expand", "piece"});
    EXPECT_EQ(observed.m_events, "expand <@def twice(m()) = {m(x)}@def b(t) = {<t>}twice(b)>\n"
                                 "  invoke twice @41+5 <twice(b)> m:1=b\n"
                                 "    expand <m(x)>\n"
                                 "      invoke m @19+1 <m(x)>\n"
                                 "        expand <x> into a string\n"
                                 "          piece of a string 0+1 copied @21+1\n"
                                 "        expand <b(x)>\n"
                                 "          invoke b @made <b(x)> t:1=x\n"
                                 "            expand <<t>>\n"
                                 "              piece 0+1 copied @37+1\n"
                                 "              invoke t @38+1\n"
                                 "                expand <x>\n"
                                 "                  piece 1+1 copied @made\n"
                                 "              piece 2+1 copied @39+1\n");
    EXPECT_EQ(observed.m_output, "<x>");
}

TEST(ExpansionObserver, TextThatIsExpandedTwice)
{
    const Observed observed =
        Observe("@def ab = {Z}@[a@@b]", {"invoke", "expand", "piece", "directive"});
    EXPECT_EQ(observed.m_events, "expand <@def ab = {Z}@[a@@b]>\n"
                                 "  directive def @0+4\n"
                                 "  directive [ @13+2\n"
                                 "    expand <a@@b> into a string\n"
                                 "      piece of a string 0+1 copied @15+1\n"
                                 "      piece of a string 1+1 copied @18+1\n"
                                 "    expand <ab> into a string\n"
                                 "      invoke ab @made\n"
                                 "        expand <Z> into a string\n"
                                 "          piece of a string 0+1 copied @11+1\n"
                                 "    piece 0+1 calculated @13+1\n");
    EXPECT_EQ(observed.m_output, "Z");
}

TEST(ExpansionObserver, Loops)
{
    const Observed observed =
        Observe("@for((a, b) in [(1,2),(3,4)]){b}@let int i = {0}@while(i < 2){@let i = {i + 1}}",
                {"round", "defined", "directive"});
    EXPECT_EQ(observed.m_events, "  directive for @0+4\n"
                                 "    round 1 of for @0+1 (1,2)\n"
                                 "    round 2 of for @0+1 (3,4)\n"
                                 "  directive let @32+4\n"
                                 "    defined value @41+1 = 0\n"
                                 "  directive while @48+6\n"
                                 "    round 1 of while @48+1 \n"
                                 "        directive let @62+4\n"
                                 "          defined assigned @67+1 = 1\n"
                                 "    round 2 of while @48+1 \n"
                                 "        directive let @62+4\n"
                                 "          defined assigned @67+1 = 2\n");
    EXPECT_EQ(observed.m_output, "24");
}

TEST(ExpansionObserver, RoundsWithNothingInThem)
{
    EXPECT_EQ(Observe("@for(a in [1,,2]){}", {"round"}).m_events, "    round 1 of for @0+1 1\n"
                                                                  "    round 2 of for @0+1 \n"
                                                                  "    round 3 of for @0+1 2\n");
    // A condition that ends by a limit: the rounds before it are told all the same.
    const xstring source("@while(true){}");
    Log log(source);
    ExpansionRun run;
    run.m_limits.m_maxSteps = 5;
    run.SetObserver(&log);
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    xstring output;
    EXPECT_THROW(MacroExpand(nullptr, &frame, source, 0, 0, output), ExpansionLimitException);
    EXPECT_EQ(log.Text({"round"}), "    round 1 of while @0+1 \n"
                                   "    round 2 of while @0+1 \n");
    EXPECT_EQ(log.Depth(), 0);
}

TEST(ExpansionObserver, ConditionsAreStrings)
{
    const Observed observed = Observe("@let int n = {1}@if(n > 1){a}@elseif(n == 1){b}@else{c}",
                                      {"directive", "expand", "invoke", "piece"});
    EXPECT_EQ(observed.m_events,
              "expand <@let int n = {1}@if(n > 1){a}@elseif(n == 1){b}@else{c}>\n"
              "  directive let @0+4\n"
              "    expand <1> into a string\n"
              "      piece of a string 0+1 copied @14+1\n"
              "  directive if @16+3\n"
              "    expand <n > 1> into a string\n"
              "      invoke n @20+1\n"
              "        piece of a string 0+1 calculated @20+1\n"
              "      piece of a string 1+2 copied @21+2\n"
              "      piece of a string 3+2 copied @23+2\n"
              "    expand <n == 1> into a string\n"
              "      invoke n @37+1\n"
              "        piece of a string 0+1 calculated @37+1\n"
              "      piece of a string 1+3 copied @38+3\n"
              "      piece of a string 4+2 copied @41+2\n"
              "    expand <b>\n"
              "      piece 0+1 copied @45+1\n");
    EXPECT_EQ(observed.m_output, "b");
}

TEST(ExpansionObserver, Expressions)
{
    EXPECT_EQ(Observe("@let int n = {1}@(n + 1)", {"invoke"}).m_events, "      invoke n @18+1\n");
}

TEST(ExpansionObserver, IndentationIsAPiece)
{
    const Observed observed = Observe("@def f =\n{\n    a\n    b\n}\n  f", {"piece"});
    EXPECT_EQ(observed.m_output, "  a\n  b");
    EXPECT_EQ(observed.m_events, "  piece 0+2 copied @25+2\n"
                                 "      piece 2+1 copied @15+1\n"
                                 "      piece 3+1 copied @16+1\n"
                                 "      piece 4+2 indent\n"
                                 "      piece 6+1 copied @21+1\n");
}

TEST(ExpansionObserver, DollarMacrosAndStringVariables)
{
    const Observed observed = Observe("@$N = \"v\" \"$(N)\" _N_", {"defined", "invoke", "piece"});
    EXPECT_EQ(observed.m_output, " \"v\" v");
    EXPECT_EQ(observed.m_events, "    defined dollar @2+1 = v\n"
                                 "  piece 0+1 copied @9+1\n"
                                 "  piece 1+3 calculated @10+6\n"
                                 "  piece 4+1 copied @16+1\n"
                                 "  invoke _N_ @17+3\n"
                                 "    piece 5+1 calculated @17+3\n");
}

TEST(ExpansionObserver, ADollarSignIsTextInABlock)
{
    EXPECT_EQ(Observe("@scope{@$N = 1}", {"directive"}).m_events, "  directive scope @0+6\n");
}

TEST(ExpansionObserver, AStringVariableWithTheSignOfADirective)
{
    const xstring source("[@name]");
    FileScopeVarFrame frame;
    frame.m_localVariables.Add(new LSValueVariable(LSV_STRING, "@name", "v"));
    Log log(source);
    ExpansionRun run;
    run.SetObserver(&log);
    const ExpansionRunScope scope(run);
    xstring output;
    MacroExpand(nullptr, &frame, source, 0, 0, output);
    EXPECT_EQ(Str(output), "[v]");
    EXPECT_EQ(log.Text({"invoke"}), "  invoke @name @1+5\n");
}

TEST(ExpansionObserver, Imports)
{
    const Observed observed =
        Observe("@import \"x\"\nlib", {"directive", "import", "defined", "invoke", "expand"});
    EXPECT_EQ(observed.m_events, "expand <@import \"x\"\nlib>\n"
                                 "  directive import @0+7\n"
                                 "    import x @8+3\n"
                                 "      expand <@def lib = {L}> into a string\n"
                                 "        directive def @made\n"
                                 "          defined macro @made = L\n"
                                 "  invoke lib @12+3\n"
                                 "    expand <L>\n");
    EXPECT_EQ(Observe("@import(\"x\" + \"y\")", {"import"}).m_events, "    import xy @7+11\n");
}

TEST(ExpansionObserver, Strings)
{
    EXPECT_EQ(Observe("@def w = {a}@str(w b)", {"invoke", "piece"}).m_events,
              "      invoke w @17+1\n"
              "          piece of a string 0+1 copied @10+1\n"
              "      piece of a string 1+2 copied @18+2\n"
              "    piece 0+5 calculated @12+1\n");
}

TEST(ExpansionObserver, NakedMacrosNameTheirArguments)
{
    EXPECT_EQ(Observe("@nakeddef f(x) = {@def y = {x}}f(1)y", {"invoke", "defined"}).m_events,
              "    defined macro @10+1 = @def y = {x}\n"
              "  invoke f @31+1 <f(1)> x:1=1\n"
              "        defined macro @23+1 = x\n"
              "  invoke y @35+1\n"
              "      invoke x @28+1\n");
}

#if TELV_HAS_PYTHON
TEST(ExpansionObserver, PythonMacros)
{
    const Observed observed = Observe("@defpython p(a) = {str(a) * 2}@runpython{x = 1}p(7)",
                                      {"directive", "invoke", "piece"});
    EXPECT_EQ(observed.m_output, "77");
    EXPECT_EQ(observed.m_events, "  directive defpython @0+10\n"
                                 "  directive runpython @30+10\n"
                                 "      piece of a string 0+1 copied @41+1\n"
                                 "      piece of a string 1+2 copied @42+2\n"
                                 "      piece of a string 3+2 copied @44+2\n"
                                 "  invoke p @47+1 <p(7)> a:1=7\n"
                                 "      piece of a string 0+3 copied @19+3\n"
                                 "      piece of a string 3+1 copied @22+1\n"
                                 "      invoke a @23+1\n"
                                 "          piece of a string 4+1 copied @49+1\n"
                                 "      piece of a string 5+1 copied @24+1\n"
                                 "      piece of a string 6+2 copied @25+2\n"
                                 "      piece of a string 8+2 copied @27+2\n"
                                 "    piece 0+2 calculated @47+1\n");
}
#endif

TEST(ExpansionObserver, PiecesAreThoseOfTheMap)
{
    const std::string text = "@def f(x) = {\n  <x\n  @(1 + 1)>\n}a f(b c)\n@for(i in [1,2]){ i}";
    const xstring source(text.c_str());
    class Pieces final : public ExpansionObserver
    {
    public:
        void PieceWritten(const ObservedPiece& piece) override
        {
            if (&piece.m_output != m_output)
                return;
            EXPECT_EQ(piece.m_offset, m_size);
            m_size += piece.m_piece.size();
            m_pieces.m_pieces.push_back(piece.m_piece);
        }
        void ExpansionBegins(const ObservedExpansion& expansion) override
        {
            if (m_output == nullptr)
                m_output = &expansion.m_output;
        }

        const ExpandedOutput* m_output = nullptr;
        OutputPieces m_pieces;
        ssize_t m_size = 0;
    };
    Pieces observer;
    ExpansionRun run;
    run.SetObserver(&observer);
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    xstring output;
    OutputPieces pieces;
    MacroExpand(nullptr, &frame, source, 0, 0, output, pieces);
    EXPECT_EQ(Str(output), ExpansionOf(text));
    EXPECT_EQ(PiecesText(observer.m_pieces, source), PiecesText(pieces, source));
    EXPECT_EQ(observer.m_size, output.size());
}

TEST(ExpansionObserver, OutputsThatRecordNothingStayEmpty)
{
    const xstring source("a @(1) b");
    ExpansionObserverGroup nobody;
    ExpansionRun run;
    run.m_recordPieces = false;
    run.SetObserver(&nobody);
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    StringStream os(64);
    ExpandedOutput output(&os);
    MacroExpand(nullptr, &frame, source, 0, 0, output);
    EXPECT_EQ(output.size(), 0);
    EXPECT_EQ(output.m_size, 5);
    EXPECT_EQ(Str(os.GetString()), "a 1 b");
}

TEST(ExpansionObserver, WhatBeganEndsUnderAnError)
{
    for (const char* const text :
         {"@def f = {@(1 / 0)}f", "@for(i in [1]){@fail(\"x\")}", "@while(true){@fail(\"x\")}",
          "@def m(a()) = {a(1)}@def g(x, y) = {}m(g)", "@[@(1 / 0)]", "@import(1)",
          "@str(@if(1){})", "@def f(int n) = {}f(x)", "\"a"})
    {
        const Observed observed = Observe(text);
        EXPECT_EQ(observed.m_output.substr(0, 7), "error: ") << text;
        TextHandler handler;
        const std::string unobserved = Session(&handler).Expand(text);
        EXPECT_EQ(observed.m_output, unobserved.substr(0, unobserved.rfind(" @"))) << text;
        EXPECT_EQ(observed.m_depth, 0) << text;
    }
}

TEST(ExpansionObserver, SwallowedErrorsEndToo)
{
    const Observed observed =
        Observe("@assertfails(@def f = {@(1 / 0)}f)a", {"directive", "invoke"});
    EXPECT_EQ(observed.m_output, "a");
    EXPECT_EQ(observed.m_events, "  directive assertfails @0+12\n"
                                 "      directive def @13+4\n"
                                 "      invoke f @32+1\n"
                                 "          directive ( @23+2\n");
    EXPECT_EQ(observed.m_depth, 0);
}

/// Throws when the counted event comes.
class Thrower final : public ExpansionObserver
{
public:
    explicit Thrower(int left, std::function<void()> thrown)
        : m_left(left), m_throw(std::move(thrown))
    {
    }

    void ExpansionBegins(const ObservedExpansion&) override { Begin(); }
    void ExpansionEnds() noexcept override { --m_depth; }
    void InvocationBegins(const ObservedInvocation&) override { Begin(); }
    void InvocationEnds() noexcept override { --m_depth; }
    void RoundBegins(const ObservedRound&) override { Begin(); }
    void RoundEnds() noexcept override { --m_depth; }
    void DirectiveBegins(const ObservedDirective&) override { Begin(); }
    void DirectiveEnds() noexcept override { --m_depth; }
    void ImportBegins(const ObservedImport&) override { Begin(); }
    void ImportEnds() noexcept override { --m_depth; }
    void Defined(const ObservedDefinition&) override { Count(); }
    void PieceWritten(const ObservedPiece&) override { Count(); }

    int m_depth = 0;
    bool m_hasThrown = false;

private:
    void Count()
    {
        if (m_left-- != 0)
            return;
        m_hasThrown = true;
        m_throw();
    }
    void Begin()
    {
        Count();
        ++m_depth;
    }

    int m_left;
    std::function<void()> m_throw;
};

struct Stop
{
};

TEST(ExpansionObserver, ExceptionsReachTheCaller)
{
    const xstring source(
        "@import \"x\"\n@$D = \"1\"@def f(int n) = {n @(n)}@for(i in [1,2]){f(i) @[i]}"
        "@let int k = {0}@while(k < 1){@let k = {1}}@def m(a()) = {a(1)}m(f)");
    int thrown = 0;
    for (int left = 0;; ++left)
    {
        Thrower thrower(left, [] { throw Stop(); });
        ExpansionRun run;
        run.SetObserver(&thrower);
        const ExpansionRunScope scope(run);
        TextHandler handler;
        FileScopeVarFrame frame;
        xstring output("as before");
        try
        {
            MacroExpand(&handler, &frame, source, 0, 0, output);
            break;
        }
        catch (const Stop&)
        {
            ++thrown;
        }
        EXPECT_EQ(Str(output), "as before");
        EXPECT_EQ(thrower.m_depth, 0) << left;
        // The run is as good as new.
        run.SetObserver(nullptr);
        FileScopeVarFrame other;
        MacroExpand(&handler, &other, source, 0, 0, output);
        EXPECT_EQ(Str(output).substr(0, 11), "@import \"x\"") << left;
    }
    EXPECT_GT(thrown, 60);
}

TEST(ExpansionObserver, AnErrorOfTheTextCollectsContext)
{
    const xstring source("@def f = {a}f");
    Thrower thrower(5, [&] { throw LexScannerException("stopped", source.begin()); });
    ExpansionRun run;
    run.SetObserver(&thrower);
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    xstring output;
    try
    {
        MacroExpand(nullptr, &frame, source, 0, 0, output);
        FAIL() << "nothing was thrown";
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(Str(e.m_description), "stopped\n    invoking macro f");
        EXPECT_EQ(e.m_pos, source.begin());
    }
    EXPECT_EQ(thrower.m_depth, 0);
}

TEST(ExpansionObserver, SwallowedExceptions)
{
    const xstring source("@assertfails(a)b");
    const auto expand = [&](const std::function<void()>& thrown) -> std::string
    {
        Thrower thrower(3, thrown);
        ExpansionRun run;
        run.SetObserver(&thrower);
        const ExpansionRunScope scope(run);
        FileScopeVarFrame frame;
        xstring output;
        MacroExpand(nullptr, &frame, source, 0, 0, output);
        return Str(output);
    };
    EXPECT_EQ(expand([] { throw LexScannerException("x", nullptr); }), "b");
    EXPECT_THROW(expand([] { throw ExpansionLimitException("x", nullptr); }),
                 ExpansionLimitException);
    EXPECT_THROW(expand([] { throw Stop(); }), Stop);
}

TEST(ExpansionObserver, GroupTellsAllAndEndsWhatItBegan)
{
    const xstring source("@def f = {a @(1)}f");
    for (int left = 0; left < 11; ++left)
    {
        Thrower first(1000, [] {});
        Thrower second(left, [] { throw Stop(); });
        Thrower third(1000, [] {});
        ExpansionObserverGroup group;
        EXPECT_TRUE(group.IsEmpty());
        for (Thrower* const one : {&first, &second, &third})
            group.Add(*one);
        EXPECT_FALSE(group.IsEmpty());
        ExpansionRun run;
        run.SetObserver(&group);
        const ExpansionRunScope scope(run);
        FileScopeVarFrame frame;
        xstring output;
        EXPECT_THROW(MacroExpand(nullptr, &frame, source, 0, 0, output), Stop) << left;
        EXPECT_EQ(first.m_depth, 0) << left;
        EXPECT_EQ(second.m_depth, 0) << left;
        EXPECT_EQ(third.m_depth, 0) << left;
    }
}

TEST(ExpansionObserver, IsSetBetweenExpansions)
{
    ExpansionRun run;
    EXPECT_EQ(run.Observer(), nullptr);
    class Changer final : public ExpansionObserver
    {
    public:
        explicit Changer(ExpansionRun& run) : m_run(run) {}
        void ExpansionBegins(const ObservedExpansion&) override { m_run.SetObserver(nullptr); }

    private:
        ExpansionRun& m_run;
    };
    Changer changer(run);
    run.SetObserver(&changer);
    EXPECT_EQ(run.Observer(), &changer);
    const ExpansionRunScope scope(run);
    EXPECT_EQ(FailedAssertion([] { ExpansionOf("a"); }),
              AssertionIn("Run/ExpansionRun", "m_state->m_level == nullptr"));
}

} // namespace

} // namespace telv::expander
