// SPDX-License-Identifier: MIT
// One small expansion: a text of 1 KB with ten calls, as a program that generates messages or code
// piece by piece does it. Beside it, what it costs to scan the text alone, and the same with the
// pieces of the map.
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include <benchmark/benchmark.h>
#include <string>

namespace
{

using namespace telv;

constexpr const char* s_definitions = "@def field(type, name) = {type m_@@name;}\n"
                                      "@def check(int low, int high) = {@(high - low)}\n";

const std::string& SmallText()
{
    static const std::string text = []
    {
        std::string result;
        for (int i = 0; i < 5; ++i)
            result += "// Part " + std::to_string(i) +
                      " of the record.\n"
                      "struct Part\n{\n    field(std::string, title)\n"
                      "    static constexpr int s_width = check(12, 20 + 4);\n"
                      "    int Width() const { return s_width * scale + margin; }\n};\n";
        result.resize(1024, '-');
        return result;
    }();
    return text;
}

SubString View(const std::string& text)
{
    return SubString(text.data(), text.data() + text.size());
}

/// A frame with the definitions, as a caller keeps it.
struct Definitions
{
    FileScopeVarFrame m_frame;

    Definitions()
    {
        xstring output;
        MacroExpand(nullptr, &m_frame, SubString(s_definitions), 0, 0, output);
    }
};

void ScanSmallText(benchmark::State& state)
{
    for (auto _ : state)
    {
        SubString rest = View(SmallText());
        while (LsScanToken(rest, /*returnComments=*/true))
        {
        }
        benchmark::DoNotOptimize(rest);
    }
}
BENCHMARK(ScanSmallText);

void ExpandSmallText(benchmark::State& state)
{
    Definitions definitions;
    for (auto _ : state)
    {
        xstring output;
        MacroExpand(nullptr, &definitions.m_frame, View(SmallText()), 0, 0, output);
        benchmark::DoNotOptimize(output);
    }
}
BENCHMARK(ExpandSmallText);

/// In a child frame of its own, as definitions of the text itself need it.
void ExpandSmallTextInChildFrame(benchmark::State& state)
{
    Definitions definitions;
    for (auto _ : state)
    {
        VarFrame frame(&definitions.m_frame);
        xstring output;
        MacroExpand(nullptr, &frame, View(SmallText()), 0, 0, output);
        benchmark::DoNotOptimize(output);
    }
}
BENCHMARK(ExpandSmallTextInChildFrame);

void ExpandSmallTextWithPieces(benchmark::State& state)
{
    Definitions definitions;
    for (auto _ : state)
    {
        xstring output;
        OutputPieces pieces;
        MacroExpand(nullptr, &definitions.m_frame, View(SmallText()), 0, 0, output, pieces);
        benchmark::DoNotOptimize(output);
    }
}
BENCHMARK(ExpandSmallTextWithPieces);

} // namespace
