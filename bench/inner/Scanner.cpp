// SPDX-License-Identifier: MIT
// The scanner over C++ text in which nothing is to be replaced, in bytes per second: token by token
// as blocks and expressions are read, and as the main loop passes through text.
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include <benchmark/benchmark.h>
#include <string>

namespace
{

using namespace telv;

const std::string& PlainText()
{
    static const std::string text = []
    {
        std::string result;
        for (int i = 0; result.size() < 1000000; ++i)
            result += "int rowCount" + std::to_string(i) +
                      "(const Table& table, size_t limit)\n"
                      "{\n"
                      "    // The first row that is not empty, \"limit\" included.\n"
                      "    for (size_t i = 0; i < limit && !table.rows[i].empty(); ++i)\n"
                      "        print(\"row %d: \\\"%s\\\"\\n\", i, table.rows[i]->name, 'x');\n"
                      "    return table.size() >= 0x1f ? table.begin : limit * 2.5;\n"
                      "}\n\n";
        return result;
    }();
    return text;
}

void ScanTokens(benchmark::State& state)
{
    const std::string& text = PlainText();
    size_t tokens = 0;
    for (auto _ : state)
    {
        SubString rest(text.data(), text.data() + text.size());
        tokens = 0;
        while (LsScanToken(rest, /*returnComments=*/true))
            ++tokens;
        benchmark::DoNotOptimize(tokens);
    }
    if (tokens == 0)
        state.SkipWithError("no token");
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(ScanTokens);

void ExpandPlainText(benchmark::State& state)
{
    const std::string& text = PlainText();
    FileScopeVarFrame frame;
    xstring output;
    for (auto _ : state)
        MacroExpand(nullptr, &frame, SubString(text.data(), text.data() + text.size()), 0, 0,
                    output);
    if (static_cast<size_t>(output.size()) != text.size())
        state.SkipWithError("the text was changed");
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(ExpandPlainText);

} // namespace
