// SPDX-License-Identifier: MIT
// Evaluating an expression whose names are replaced already, and the same through @( ) with them.
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/ExpressionParser.h"
#include <benchmark/benchmark.h>

namespace
{

using namespace telv;

void Evaluate(benchmark::State& state, const char* text)
{
    for (auto _ : state)
    {
        ExpressionParser parser;
        parser.Init(SubString(text));
        LSLiteral literal;
        parser.ParseExpression(literal);
        benchmark::DoNotOptimize(literal);
    }
}
BENCHMARK_CAPTURE(Evaluate, number, "12");
BENCHMARK_CAPTURE(Evaluate, integers, "(12 + 3) * 4 % 7 << 2 | 1");
BENCHMARK_CAPTURE(Evaluate, condition, "12 < 200 && 12 % 3 == 0 ? 1 : 2");
BENCHMARK_CAPTURE(Evaluate, doubles, "2.5 * 12 / 3.25 - 0.5 ^^ 2");
BENCHMARK_CAPTURE(Evaluate, strings, "len(\"item\" + string(12)) > 3 && \"a\" < \"b\"");

void Expand(benchmark::State& state, const char* text)
{
    FileScopeVarFrame frame;
    xstring output;
    MacroExpand(nullptr, &frame, SubString("@let int i = {12}@let string s = {\"item\"}"), 0, 0,
                output);
    for (auto _ : state)
    {
        MacroExpand(nullptr, &frame, SubString(text), 0, 0, output);
        benchmark::DoNotOptimize(output);
    }
}
BENCHMARK_CAPTURE(Expand, number, "@(i)");
BENCHMARK_CAPTURE(Expand, integers, "@((i + 3) * 4 % 7 << 2 | 1)");
BENCHMARK_CAPTURE(Expand, condition, "@(i < 200 && i % 3 == 0 ? 1 : 2)");
BENCHMARK_CAPTURE(Expand, strings, "@(len(@str(s) + string(i)) > 3 && \"a\" < @str(s))");
BENCHMARK_CAPTURE(Expand, if_block, "@if(i < 200){yes}@else{no}");

} // namespace
